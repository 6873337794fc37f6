// SPDX-License-Identifier: see LICENSE

#include "qxerror.h"

#include "core/qxneverdestroyed.h"
#include "core/qxprocessguard.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <string>

namespace
{

std::atomic<void (*)(const qxFatalError&)> s_reportFatal{&qxDefaultFatalHandler};
std::atomic<void (*)(const qxWarningError&)> s_reportWarning{&qxDefaultWarningHandler};

// How many errors this thread is raising inside one another: the format of an error or of its translation may
// be wrong, which raises an error.
thread_local unsigned int t_raising = 0;

struct Raising {
    Raising() { ++t_raising; }
    ~Raising() { --t_raising; }
};

// Fills `format` in; false, and `text` empty, when that raises an error.
bool formatText(qxString& text, const qxString& format, const qxArgument* arguments, unsigned int count)
{
    try {
        text.formatArguments(format.getString(), arguments, count);
        return true;
    } catch (const qxBaseError&) {
        text.clear();
        return false;
    }
}

qxString translated(const qxString& format)
{
    try {
        return qxMessage::translate(qxMessage::getDefaultSender(), format);
    } catch (const qxBaseError&) { // the translator's own: the error that is under way counts
        return format;
    }
}

// The finished text of an error. Where a translation cannot be filled in its original is, and where that
// fails as well the format itself is the text.
qxString textOf(const char* format, bool isTranslated, const qxArgument* arguments, unsigned int count)
{
    const qxString original(format);
    if (t_raising > 1) return original;

    const Raising raising;
    qxString text;
    if (isTranslated && t_raising == 1 && formatText(text, translated(original), arguments, count))
        return text;
    return formatText(text, original, arguments, count) ? text : original;
}

// The next slot's text is put together here, without the heap: this serves reports of missing memory.
class FixedText
{
public:
    explicit FixedText(char* text) : m_end(text) { *m_end = 0; }

    void append(const char* text)
    {
        std::size_t count = std::min(std::strlen(text), m_room);
        const bool isCut = text[count] != 0;
        // Without the half of a character at the end.
        while (isCut && count > 0 && (static_cast<unsigned char>(text[count]) & 0xC0) == 0x80) --count;
        std::memcpy(m_end, text, count);
        m_end += count;
        *m_end = 0;
        m_room = isCut ? 0 : m_room - count;
    }

    void append(int number)
    {
        char digits[16];
        *std::to_chars(digits, digits + sizeof(digits) - 1, number).ptr = 0;
        append(digits);
    }

    static constexpr std::size_t MOST_BYTES = 511;

private:
    char* m_end;
    std::size_t m_room = MOST_BYTES; // none is left behind a text that was cut
};

constexpr unsigned int SLOTS = 300;

} // namespace

qxBaseError::qxBaseError(const char* text, int code, qxMessageEncoding encoding)
    : m_code(code), m_text(text), m_encoding(encoding)
{}

qxBaseError::~qxBaseError() = default;

void qxBaseError::reportError() const {}

qxFatalError::~qxFatalError() = default;

void qxFatalError::reportError() const
{
    s_reportFatal.load()(*this);
}

void qxFatalError::setReportFunction(void (*report)(const qxFatalError&))
{
    s_reportFatal.store(report ? report : &qxDefaultFatalHandler);
}

qxWarningError::~qxWarningError() = default;

void qxWarningError::reportError() const
{
    s_reportWarning.load()(*this);
}

void qxWarningError::setReportFunction(void (*report)(const qxWarningError&))
{
    s_reportWarning.store(report ? report : &qxDefaultWarningHandler);
}

// The text of an error may hold anything: it is never a format.

void qxDefaultFatalHandler(const qxFatalError& error)
{
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_FATAL + error.getMessageEncoding(),
                           error.getErrorString().getString());
}

void qxDefaultWarningHandler(const qxWarningError& error)
{
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING + error.getMessageEncoding(),
                           error.getErrorString().getString());
}

void qxExceptionThrows::raiseFatal(qxMessageEncoding encoding, bool isTranslated, const char* format,
                                   const qxArgument* arguments, unsigned int count)
{
    throw qxFatalError(textOf(format, isTranslated, arguments, count).getString(), 0, encoding);
}

void qxExceptionThrows::raiseWarning(qxMessageEncoding encoding, bool isTranslated, const char* format,
                                     const qxArgument* arguments, unsigned int count)
{
    throw qxWarningError(textOf(format, isTranslated, arguments, count).getString(), 0, encoding);
}

void throwFatalTemplateError(const char* text)
{
    qxExceptionThrows::qxThrowFatal((std::string("Template-") + text).c_str());
}

const char* qxGenerateDebugString(const char* file, int line, const char* version)
{
    static qxNeverDestroyed<qxMutex> s_lock; // guards the ring
    static char s_ring[SLOTS][FixedText::MOST_BYTES + 1];
    static unsigned int s_next = 0;

    const qxProcessGuard guard(s_lock.get());
    char* const slot = s_ring[s_next];
    s_next = (s_next + 1) % SLOTS;

    FixedText text(slot);
    text.append("File: ");
    text.append(file);
    text.append("  Line: ");
    text.append(line);
    text.append("  Ver: ");
    text.append(version);
    return slot;
}
