// SPDX-License-Identifier: see LICENSE

#include "qxbasicparser.h"

#include "qxarray.h"
#include "qxprogress.h"
#include "qxserializeadapter.h"
#include "text/qxrulerun.h"
#include "text/qxtokenwindow.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace
{

/// The end of `text` cut to at most `length` bytes between two characters.
unsigned int cutLength(const qxString& text, unsigned int length)
{
    if (text.length() <= length) return text.length();
    while (length > 0 && (static_cast<unsigned char>(text.getString()[length]) & 0xC0) == 0x80) --length;
    return length;
}

} // namespace

qxParserException::qxParserException(const qxString& text, Code code)
    : qxBaseError(text.getString(), code, QX_FLAG_LITERAL)
{}

qxParserException::~qxParserException() = default;

qxBasicParser::qxBasicParser()
    : m_view(qxTokenWindow::emptyView()), m_window(std::make_unique<qxTokenWindow>())
{}

qxBasicParser::~qxBasicParser() noexcept(false)
{
    detach();
}

void qxBasicParser::setAdapter(qxSerializeAdapter* adapter)
{
    if (refuseWhenBusy() || refuseWhenRunning()) return;
    detach();
    startInput();
    attach(adapter, adapter && adapter->getRef() > 0);
}

void qxBasicParser::attach(qxSerializeAdapter* adapter, bool isShared)
{
    if (!adapter) return;
    m_isAdapterShared = isShared;
    adapter->ref();
    m_adapter = adapter;
}

void qxBasicParser::detach()
{
    if (!m_adapter) return;
    qxSerializeAdapter* const adapter = std::exchange(m_adapter, nullptr);
    m_window->release(*adapter, m_view);
    if (m_isAdapterShared)
        adapter->unref();
    else
        adapter->unrefNoDelete(); // it may stand on the stack
}

bool qxBasicParser::refuseWhenBusy()
{
    if (m_busy) setErrorText("Parser is busy reading");
    return m_busy;
}

void qxBasicParser::startInput()
{
    m_window->start(m_view);
    m_percent = 0;
    applyEncoding();
}

void qxBasicParser::useUnicode(unsigned char unicode, unsigned char bigEndian)
{
    m_unicode = unicode;
    m_bigEndian = bigEndian;
    applyEncoding();
}

void qxBasicParser::useUtf8(unsigned char on)
{
    m_utf8 = on;
    applyEncoding();
}

void qxBasicParser::applyEncoding()
{
    qxTokenForm form = m_utf8 ? qxTokenForm::UTF8 : qxTokenForm::BYTE;
    if (m_unicode) form = m_bigEndian ? qxTokenForm::UTF16_BIG : qxTokenForm::UTF16_LITTLE;
    m_window->setForm(m_adapter, m_view, form, m_utf8 || m_unicode);
}

void qxBasicParser::continueParsingFrom(qxBasicParser& other)
{
    if (&other == this || refuseWhenBusy() || other.refuseWhenBusy()) return;
    detach();
    attach(other.m_adapter, other.m_isAdapterShared); // parsers alone do not make it shared
    std::swap(m_window, other.m_window);
    m_view = other.m_view;
    m_unicode = other.m_unicode;
    m_bigEndian = other.m_bigEndian;
    m_utf8 = other.m_utf8;
    other.startInput();
    setMaxBufferSize(m_maxBufferSize);
    other.setMaxBufferSize(other.m_maxBufferSize);
}

void qxBasicParser::reset()
{
    if (refuseWhenBusy() || refuseWhenRunning()) return;
    if (m_adapter) m_window->release(*m_adapter, m_view);
    startInput();
    if (m_rules) m_rules->reset();
    m_hasError = false;
    m_error.clear();
    m_errorText.clear();
    m_errorLine = m_errorColumn = 0;
}

unsigned int qxBasicParser::getLine() const
{
    return m_window->getLine(m_view);
}

void qxBasicParser::setLine(unsigned int line)
{
    m_window->setLine(m_view, line);
}

unsigned int qxBasicParser::getColumn() const
{
    return m_window->getColumn(m_view);
}

void qxBasicParser::setColumn(unsigned int column)
{
    m_window->setColumn(m_view, column);
}

bool qxBasicParser::getPlaceOf(qxUInt64 position, unsigned int& line, unsigned int& column)
{
    if (position < m_view.bufferPos || position > positionOf(m_view.end)) return false;
    const char16_t* const current = m_view.current;
    m_view.current = tokenAt(position);
    line = getLine();
    column = getColumn();
    m_view.current = current;
    return true;
}

bool qxBasicParser::fill()
{
    if (m_view.current != m_view.end) return true;
    if (!m_adapter || !m_window->fill(*m_adapter, m_view)) return false;
    m_isProgressDue = m_useProgress;
    return true;
}

char16_t qxBasicParser::getNextTokenSlowly(bool skipWhiteSpace)
{
    if (skipWhiteSpace) skipAllWS();
    if (hasData()) return *m_view.current++;
    setErrorText("Adapter out of Data");
    return 0;
}

char16_t qxBasicParser::peekSlowly(unsigned int offset)
{
    Hold hold(*this);
    char16_t token = 0;
    for (unsigned int i = 0; i <= offset; ++i) {
        if (!hasData()) break;
        if (i == offset) token = *m_view.current;
        ++m_view.current;
    }
    hold.rewind();
    return token;
}

void qxBasicParser::pushBackTokens(unsigned int count)
{
    const qxUInt64 position = getTokenPos();
    const qxUInt64 reached = m_window->reached(m_view);
    if (count > position - m_view.bufferPos || reached - (position - count) > m_maxBufferSize)
        setErrorText("Too Large Pushback in basic parser");
    else
        m_view.current -= count;
}

void qxBasicParser::setMaxBufferSize(unsigned int count)
{
    m_maxBufferSize = count;
    m_window->setHistory(count);
}

void qxBasicParser::setHistory(unsigned int count)
{
    m_window->setHistory(count);
}

void qxBasicParser::setFaultWarning(bool on)
{
    m_window->setFaultWarning(on);
}

bool qxBasicParser::isFault(qxUInt64 position) const
{
    return m_window->isFault(position);
}

bool qxBasicParser::checkTokens(const char16_t* text, unsigned int count, bool skipWhiteSpace)
{
    Hold hold(*this);
    if (skipWhiteSpace) skipAllWS();
    for (unsigned int i = 0; i < count; ++i) {
        if (hasData() && *m_view.current == text[i]) {
            ++m_view.current;
            continue;
        }
        hold.rewind();
        return false;
    }
    return true;
}

bool qxBasicParser::checkTokens(const wchar_t* text, unsigned int count, bool skipWhiteSpace)
{
    std::vector<char16_t> tokens;
    for (unsigned int i = 0; i < count; ++i) {
        const auto code = static_cast<char32_t>(text[i]);
        if (code < 0x10000) {
            tokens.push_back(static_cast<char16_t>(code));
        } else {
            tokens.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
            tokens.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        }
    }
    return checkTokens(tokens.data(), static_cast<unsigned int>(tokens.size()), skipWhiteSpace);
}

bool qxBasicParser::isHeld(qxUInt64 position, unsigned int count)
{
    if (position >= m_view.bufferPos && position <= m_window->reached(m_view) &&
        count <= m_window->reached(m_view) - position)
        return true;
    setErrorText("Too Large Pushback in basic parser");
    return false;
}

qxString qxBasicParser::getTokenData(qxUInt64 position, unsigned int count)
{
    qxString text;
    if (isHeld(position, count)) readTokenData(position, count, text);
    return text;
}

/// The text of tokens that are held. Leaves `text` as it is when there is an error.
bool qxBasicParser::readTokenData(qxUInt64 position, unsigned int count, qxString& text)
{
    constexpr unsigned int SHORT = 256; // tokens whose text needs no memory of its own on the way
    char room[3 * SHORT];
    if (count <= SHORT) {
        text = qxString(room, qxTokensToUTF8(tokenAt(position), count, room));
        return true;
    }
    if (count <= qxString::MAX_LENGTH) {
        std::vector<char> bytes(std::size_t{3} * count);
        const std::size_t length = qxTokensToUTF8(tokenAt(position), count, bytes.data());
        if (length <= qxString::MAX_LENGTH) {
            text = qxString(bytes.data(), length);
            return true;
        }
    }
    setErrorText("Too many characters in qxString");
    return false;
}

bool qxBasicParser::getTokenData(qxUInt64 position, unsigned int count, qxArray<unsigned char>& bytes)
{
    if (!isHeld(position, count)) return false;
    std::vector<char> text(std::size_t{3} * count);
    const std::size_t length = qxTokensToUTF8(tokenAt(position), count, text.data());
    bytes = qxArray<unsigned char>(reinterpret_cast<const unsigned char*>(text.data()), length);
    return true;
}

qxParseResult qxBasicParser::parseFunction(const qxString& name)
{
    setError("Unknow parse function '%s'", name.left(cutLength(name, 65000)));
    return QX_PARSE_ERROR;
}

const char* qxBasicParser::parseResultString(qxParseResult result)
{
    switch (static_cast<unsigned int>(result)) {
    case QX_PARSE_ERROR:
        return "Error";
    case QX_PARSE_OK:
        return "OK";
    case QX_PARSE_NO_MATCH:
        return "No Match";
    default:
        return "Unknown Error";
    }
}

void qxBasicParser::setErrorText(const qxString& text)
{
    if (text.isEmpty() && !m_hasError) return;
    m_hasError = !text.isEmpty();
    m_errorLine = m_hasError ? getLine() : 0;
    m_errorColumn = m_hasError ? getColumn() : 0;
    m_errorText = text;
    m_error = text;
    if (!m_useErrorPlace || !m_hasError) return;
    const qxString place = qxString::str(" at (Line:%d,Col:%d)", m_errorLine, m_errorColumn);
    m_error = text.left(cutLength(text, qxString::MAX_LENGTH - place.length())) + place;
}

void qxBasicParser::reportProgressNow()
{
    m_isProgressDue = false;
    if (!m_useProgress || !m_adapter || !qxProgress::getReceiver()) return;
    const qxUInt64 used = m_window->getUsedBytes();
    const qxUInt64 all = used + m_window->getTakenBytes() + m_adapter->length();
    const auto percent =
        all == 0 ? 0U
                 : static_cast<unsigned int>(static_cast<double>(used) * 100.0 / static_cast<double>(all));
    if (percent == m_percent) return;
    m_percent = percent;
    qxProgress::report(m_progressMessage, percent);
}

void qxBasicParser::reportProgressComplete()
{
    if (!m_useProgress || m_percent == 100 || !qxProgress::getReceiver()) return;
    m_percent = 100;
    qxProgress::report(m_progressMessage, 100);
}
