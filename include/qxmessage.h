// The one channel for diagnostics.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"
#include "qxforward.h"
#include "qxstring.h"

#include <atomic>

// Levels
constexpr qxMessageLevel QX_LEVEL_MEMORY = 0x1000;
constexpr qxMessageLevel QX_LEVEL_PERF = 0x1001;
constexpr qxMessageLevel QX_LEVEL_DEBUG = 0x2000;
constexpr qxMessageLevel QX_LEVEL_NOTICE = 0x3000;
constexpr qxMessageLevel QX_LEVEL_WARNING = 0x4000;
constexpr qxMessageLevel QX_LEVEL_FATAL = 0x5000;
constexpr qxMessageLevel QX_LEVEL_ASSERT = 0x6000;
constexpr qxMessageLevel QX_LEVEL_ALWAYS = 0x7000;

// Flags of levels and of error encodings
constexpr qxMessageLevel QX_FLAG_UNTRANSLATED = 0x200; ///< the translator is skipped
constexpr qxMessageLevel QX_FLAG_LITERAL = 0x400;      ///< the text is sent as it stands, without formatting
constexpr qxMessageLevel QX_FLAG_INTERNAL = 0x800;     ///< shown only when the level setting has the flag too

/// What is to happen after a message of the level Assert.
enum qxAssertAnswer : unsigned int {
    QX_ASSERT_ABORT, ///< the process ends with the abort signal
    QX_ASSERT_RETRY, ///< qxFatalError "breakpoint" with the code 9999 is raised out of the message
    QX_ASSERT_IGNORE ///< execution goes on
};

/// Receives every message that passes the level.
///
/// Lifetime: must stay alive while it is registered; the destructor removes it from the channel, but a class
///           whose messages come from several threads removes itself at the start of its own destructor.
/// Threads:  called with the message lock held: a receiver may send messages, but must not wait for another
///           thread that sends, nor ask a thread with its watchdog whether it runs.
/// Errors:   what a receiver raises leaves the message at once; receivers behind it do not get it.
class QX_API qxMessageReceiverInterface
{
public:
    qxMessageReceiverInterface() = default;
    virtual ~qxMessageReceiverInterface();

    /// `level` has its flags; `text` is finished and valid only during the call.
    virtual void onMessage(const qxString& sender, qxMessageLevel level, const char* text) = 0;

    qxMessageReceiverInterface(const qxMessageReceiverInterface&) = delete;
    qxMessageReceiverInterface& operator=(const qxMessageReceiverInterface&) = delete;
};

/// Replaces the formats of messages and errors before they are filled in.
///
/// Lifetime: must stay alive while it is installed. It has no virtual destructor: derived classes are final,
///           or give themselves one.
/// Threads:  called with the message lock held.
class QX_API qxMessageTranslatorInterface
{
public:
    /// The text to use for `format`; an empty one suppresses a message and leaves an error its own text.
    /// `level` is the message's with its flags; for errors and labels it is Always.
    virtual qxString onTranslate(const qxString& sender, qxMessageLevel level, const qxString& format) = 0;

    /// The language of translations; at first the user key "QUAXO_LANGUAGE", which is asked on first use.
    static qxString getCurrentLanguage();

    /// The default translator reads its language file again before its next translation.
    static void setCurrentLanguage(const qxString& language);

    /// Installs the default translator, or with false removes it when it is the installed one.
    static void useDefaultTranslator(bool on);

protected:
    qxMessageTranslatorInterface() = default;
    ~qxMessageTranslatorInterface() = default; // onTranslate is the interface's one virtual operation
};

/// One row of a table of translations.
struct QX_API qxTranslation {
    qxString sender; ///< empty: any sender
    qxString text;
    qxString translation;
};

/// Sends diagnostics to the receivers.
///
/// With no receiver registered when the first message comes, the default receiver is installed: it writes to
/// standard output and to the platform's debug output and shows a dialog for assertions.
///
/// A message passes through the level, the translator (levels from Notice on, without the flag 0x200), the
/// formatting (without the flag 0x400) and then to the receivers.
///
/// Lifetime: usable before main and after exit; while the library is unloaded messages are dropped.
/// Threads:  any. One process-wide lock is held while receivers run; a thread inside it may send again.
/// Errors:   raised by wrong formats, as in qxString::format, and by what receivers raise; the channel stays
///           usable.
class QX_API qxMessage
{
public:
    /// Sends `format`, filled in with up to sixteen arguments, for the library itself.
    template <class... Arguments>
    static void message(qxMessageLevel level, const char* format, const Arguments&... arguments)
    {
        if (isDropped(level)) return;
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        send(nullptr, level, format, list.values, list.count);
    }
    template <class... Arguments>
    static void message(qxMessageLevel level, const wchar_t* format, const Arguments&... arguments)
    {
        if (isDropped(level)) return;
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        send(nullptr, level, format, list.values, list.count);
    }

    /// The same for `sender`.
    template <class... Arguments>
    static void message(const qxString& sender, qxMessageLevel level, const char* format,
                        const Arguments&... arguments)
    {
        if (isDropped(level)) return;
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        send(&sender, level, format, list.values, list.count);
    }
    template <class... Arguments>
    static void message(const qxString& sender, qxMessageLevel level, const wchar_t* format,
                        const Arguments&... arguments)
    {
        if (isDropped(level)) return;
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        send(&sender, level, format, list.values, list.count);
    }

    /// Sends a finished text: it is not formatted, whatever it holds, and receivers see exactly `level`.
    static void messageText(const qxString& sender, qxMessageLevel level, const char* text);

    /// Messages below `level` are dropped from now on; the start is Notice. A level above Always is ignored.
    static void setMessageLevel(qxMessageLevel level);
    static qxMessageLevel getMessageLevel();

    /// The receiver is called from the next message on, behind those already there; a second entry changes
    /// nothing.
    static void addMessageReceiver(qxMessageReceiverInterface* receiver);

    /// The receiver is not called any more, not even for a message that is under way on this thread.
    static void removeMessageReceiver(qxMessageReceiverInterface* receiver);

    /// The receiver that is installed when nobody registered another.
    static qxMessageReceiverInterface* getDefaultMessageReceiver();

    /// Null removes the translator. It stays the caller's.
    static void setMessageTranslator(qxMessageTranslatorInterface* translator);
    static qxMessageTranslatorInterface* getMessageTranslator();

    /// The translator that reads the language file.
    static qxMessageTranslatorInterface* getDefaultMessageTranslator();

    /// Enters a translation of the default translator, before those of its language file; an empty `sender`
    /// stands for all that have none of their own, and an empty `translation` suppresses messages.
    static void setTranslation(const qxString& sender, const qxString& text, const qxString& translation);

    /// `text` as the installed translator gives it for an error; without one, and where its answer is empty,
    /// `text` itself. Takes no lock when no translator is installed.
    static qxString translate(const qxString& sender, const qxString& text);

    /// The built-in table: the labels of the levels in the library's own language, as the start of a language
    /// file. It translates each to itself.
    static qxArray<qxTranslation> getDefaultTranslations();

    /// The name under which the library itself sends: "QuaxoSDK".
    static const qxString& getDefaultSender();

    /// Holds the message lock, so that no other thread's messages come in between. A thread may take it
    /// several times and gives it back as often.
    static void waitLock();
    static void unLock();

    /// Replaces where the default receiver sends the whole message besides standard output: header, text and
    /// a line feed. Null is the debug output of the platform.
    static void setDebugOutput(void (*output)(const char* line));

    /// Replaces how the default receiver asks about assertions, with the message lock held. Null is the
    /// dialog of the platform.
    static void setAssertDialog(qxAssertAnswer (*dialog)(const char* title, const char* body));

private:
    friend class qxMessageState;

    /// True when the level drops the message and no default receiver can be due: then nobody can tell whether
    /// the lock was taken.
    static bool isDropped(qxMessageLevel level)
    {
        const unsigned int gate = s_gate.load(std::memory_order_relaxed);
        if (gate & GATE_CLOSED_TO_SHORTCUT) return false;
        return level < (gate & 0xF07F) || (level & ~gate & QX_FLAG_INTERNAL) != 0;
    }

    // A null `sender` is the default one.
    static void send(const qxString* sender, qxMessageLevel level, const char* format,
                     const qxArgument* arguments, unsigned int count);
    static void send(const qxString* sender, qxMessageLevel level, const wchar_t* format,
                     const qxArgument* arguments, unsigned int count);

    static constexpr unsigned int GATE_CLOSED_TO_SHORTCUT = 0x80000000;

    // The level setting, and whether every message must take the lock; written with the lock held.
    static std::atomic<unsigned int> s_gate;
};
