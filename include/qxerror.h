// Errors that are raised, and how they are raised.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"
#include "qxforward.h"
#include "qxmessage.h"
#include "qxstring.h"

#include <concepts>

/// What a raised error carries: a finished text, a code, and message flags for its report.
///
/// It is no standard exception: one that nobody catches ends the program without its text.
///
/// Lifetime: a value, thrown by value.
class QX_API qxBaseError
{
public:
    qxBaseError(const char* text, int code, qxMessageEncoding encoding);
    qxBaseError(const qxBaseError&) = default;
    qxBaseError& operator=(const qxBaseError&) = default;
    virtual ~qxBaseError();

    /// Hands the error to the report function of its class; the base sends nothing.
    virtual void reportError() const;

    int getErrorCode() const { return m_code; }
    qxString getErrorString() const { return m_text; }
    qxMessageEncoding getMessageEncoding() const { return m_encoding; }

private:
    int m_code;
    qxString m_text;
    qxMessageEncoding m_encoding;
};

/// A broken invariant or misuse.
class QX_API qxFatalError : public qxBaseError
{
public:
    using qxBaseError::qxBaseError;
    ~qxFatalError() override;
    void reportError() const override;

    /// Sets what reportError calls, for the whole process and best at its start; null is the default handler.
    static void setReportFunction(void (*report)(const qxFatalError&));
};

/// A condition that a caller may go on from.
class QX_API qxWarningError : public qxBaseError
{
public:
    using qxBaseError::qxBaseError;
    ~qxWarningError() override;
    void reportError() const override;

    /// As qxFatalError::setReportFunction.
    static void setReportFunction(void (*report)(const qxWarningError&));
};

/// Sends the error's text as a message at level Fatal plus the error's encoding.
QX_API void qxDefaultFatalHandler(const qxFatalError& error);

/// Sends the error's text as a message at level Warning plus the error's encoding.
QX_API void qxDefaultWarningHandler(const qxWarningError& error);

/// A literal encoding may be written as any integer.
template <class Encoding>
concept qxIsMessageEncoding = std::integral<Encoding>;

/// Raises errors: the format is translated, filled in with up to sixteen arguments, and thrown.
///
/// The forms without an encoding give the error the code 0 and the encoding 512. The others keep the given
/// encoding and do not translate when it has the flag 0x200.
///
/// Threads: any. A caller that holds a process-wide lock gives it back first.
class QX_API qxExceptionThrows
{
public:
    template <class... Arguments>
    [[noreturn]] static void qxThrowFatal(const char* format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        raiseFatal(QX_FLAG_UNTRANSLATED, true, format, list.values, list.count);
    }
    template <class... Arguments>
    [[noreturn]] static void qxThrowFatal(const wchar_t* format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        raiseFatal(QX_FLAG_UNTRANSLATED, true, qxString(format).getString(), list.values, list.count);
    }
    template <qxIsMessageEncoding Encoding, class... Arguments>
    [[noreturn]] static void qxThrowFatal(Encoding encoding, const char* format,
                                          const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        const auto flags = static_cast<qxMessageEncoding>(encoding);
        raiseFatal(flags, (flags & QX_FLAG_UNTRANSLATED) == 0, format, list.values, list.count);
    }
    template <qxIsMessageEncoding Encoding, class... Arguments>
    [[noreturn]] static void qxThrowFatal(Encoding encoding, const wchar_t* format,
                                          const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        const auto flags = static_cast<qxMessageEncoding>(encoding);
        raiseFatal(flags, (flags & QX_FLAG_UNTRANSLATED) == 0, qxString(format).getString(), list.values,
                   list.count);
    }

    template <class... Arguments>
    [[noreturn]] static void qxThrowWarning(const char* format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        raiseWarning(QX_FLAG_UNTRANSLATED, true, format, list.values, list.count);
    }
    template <class... Arguments>
    [[noreturn]] static void qxThrowWarning(const wchar_t* format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        raiseWarning(QX_FLAG_UNTRANSLATED, true, qxString(format).getString(), list.values, list.count);
    }
    template <qxIsMessageEncoding Encoding, class... Arguments>
    [[noreturn]] static void qxThrowWarning(Encoding encoding, const char* format,
                                            const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        const auto flags = static_cast<qxMessageEncoding>(encoding);
        raiseWarning(flags, (flags & QX_FLAG_UNTRANSLATED) == 0, format, list.values, list.count);
    }
    template <qxIsMessageEncoding Encoding, class... Arguments>
    [[noreturn]] static void qxThrowWarning(Encoding encoding, const wchar_t* format,
                                            const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        const auto flags = static_cast<qxMessageEncoding>(encoding);
        raiseWarning(flags, (flags & QX_FLAG_UNTRANSLATED) == 0, qxString(format).getString(), list.values,
                     list.count);
    }

private:
    [[noreturn]] static void raiseFatal(qxMessageEncoding encoding, bool isTranslated, const char* format,
                                        const qxArgument* arguments, unsigned int count);
    [[noreturn]] static void raiseWarning(qxMessageEncoding encoding, bool isTranslated, const char* format,
                                          const qxArgument* arguments, unsigned int count);
};

/// "File: %s  Line: %d  Ver: %s" in the next of 300 slots of a process-wide ring: the text stays valid for
/// 300 further calls. Uses no heap; a longer text is cut at 511 bytes.
///
/// Threads: any.
QX_API const char* qxGenerateDebugString(const char* file, int line, const char* version);

/// Sends an Assert message with the condition and its place when the condition is false; nothing in builds
/// with NDEBUG.
#if defined(NDEBUG)
#define QX_ASSERT(CONDITION) static_cast<void>(0)
#else
#define QX_ASSERT(CONDITION)                                                                                 \
    ((CONDITION) ? static_cast<void>(0)                                                                      \
                 : qxMessage::message(QX_LEVEL_ASSERT, "%s\n%s", #CONDITION,                                 \
                                      qxGenerateDebugString(__FILE__, __LINE__, QX_VERSION)))
#endif
