// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlsax_scan.h"

#include "xml/qxxmlchecks.h"

#include <algorithm>

namespace
{

constexpr unsigned int LONGEST_TEXT = qxString::MAX_LENGTH; // a token takes a byte or more in a string

constexpr unsigned int CHECK_CHAR = 201;
constexpr unsigned int CHECK_FAULT = 202;
constexpr unsigned int CHECK_LONG_NAME = 502;

} // namespace

/// Stores the error of the check that failed at the next token.
void qxXmlSax::failCheck(unsigned int check)
{
    // Where the next token is no character at all, that says more than what was expected instead.
    if (hasData() && isFault(getTokenPos())) {
        check = CHECK_FAULT;
    } else if (hasData() && !qxIsXmlChar(*m_view.current)) {
        const bool isPair = qxIsHighSurrogate(*m_view.current) && qxIsLowSurrogate(peek(1));
        if (!isPair) check = CHECK_CHAR;
    }
    const char* const text = qxXmlCheckOwnText(check);
    m_errorCheck = text ? 0 : check;
    setErrorText(text ? text : qxGenerateDebugString("qxxml", static_cast<int>(check), QX_VERSION));
    throw qxParserException(getError(), qxParserException::SYNTAX);
}

/// The same for what begins at `position` and is refused as a whole.
void qxXmlSax::failCheckAt(qxUInt64 position, unsigned int check)
{
    m_view.current = tokenAt(position);
    failCheck(check);
}

/// Fails where the markup that stands next stops making sense.
void qxXmlSax::failMarkup(unsigned int check)
{
    const char16_t second = peek(1);
    if (!hasData() || *m_view.current != u'<' || startsName(1)) failCheck(check);
    if (second == u'!' && (peek(2) == u'D' || peek(2) == u'[')) failCheck(check); // refused as a whole
    m_view.current += second == u'!' ? 2 : 1;
    failCheck(check);
}

void qxXmlSax::stop()
{
    throw qxParserException(qxString(), qxParserException::REFUSED);
}

/// Takes a name that has other letters than those of ASCII or stands at the end of the window; it is a name up
/// to `from`.
qxXmlSax::Name qxXmlSax::scanNameSlowly(const char16_t* from)
{
    const Hold hold(*this);
    m_view.current = from;
    while (hasData()) {
        if (qxIsInXmlSet(QX_XML_NAME_TOKENS, *m_view.current))
            ++m_view.current;
        else if (qxIsXmlNameHighSurrogate(*m_view.current) && qxIsLowSurrogate(peek(1)))
            m_view.current += 2;
        else
            break;
        if (getTokenPos() - hold.getStart() > LONGEST_TEXT) failCheckAt(hold.getStart(), CHECK_LONG_NAME);
    }
    const Name name = {hold.begin(), static_cast<std::size_t>(getTokenPos() - hold.getStart())};
    if (!reader().textOf(name.tokens, name.length)) failCheckAt(hold.getStart(), CHECK_LONG_NAME);
    return name;
}

/// Takes characters up to one of `stop`; false when it stops before the end of the input or something that is no
/// character. Fails when the run gets too long for a text.
bool qxXmlSax::skipTo(const Run& run, const qxXmlStop& stop)
{
    while (hasData()) {
        m_view.current = qxSkipXmlText(m_view.current, stop);
        if (m_view.current >= m_view.end) {
            m_view.current = m_view.end;
            if (run.check != 0 && getTokenPos() - run.body > LONGEST_TEXT) failCheckAt(run.begin, run.check);
            if (getTokenPos() > reader().tryEnd) qxXmlSax::stop();
            continue;
        }
        const char16_t token = *m_view.current;
        if (stop.has(token)) return true;
        if (qxIsXmlChar(token))
            ++m_view.current; // from U+E000 on
        else if (!skipPair())
            return false;
    }
    return false;
}

/// The same, and appends the characters to `text`, in which the run's own begin at `begin`.
bool qxXmlSax::copyTo(const Run& run, const qxXmlStop& stop, qxXmlBytes& text, std::size_t begin)
{
    constexpr std::ptrdiff_t PIECE = 4096; // tokens
    while (hasData()) {
        const char16_t* const limit = m_view.current + std::min(m_view.end - m_view.current, PIECE);
        char* const out = text.reserve(3 * PIECE + 16);
        char* outEnd = out;
        m_view.current = qxCopyXmlText(m_view.current, limit, stop, outEnd);
        text.add(static_cast<std::size_t>(outEnd - out));
        if (text.size() - begin > LONGEST_TEXT) failCheckAt(run.begin, run.check);
        if (m_view.current == limit) continue;
        if (stop.has(*m_view.current)) return true;
        if (!skipPair()) return false; // cut apart by the end of the window
        text.add(qxTokensToUTF8(m_view.current - 2, 2, text.reserve(6)));
    }
    return false;
}

bool qxXmlSax::skipPair()
{
    if (!qxIsHighSurrogate(*m_view.current) || !qxIsLowSurrogate(peek(1))) return false;
    m_view.current += 2;
    return true;
}

bool qxXmlSax::isNextText(const char16_t* text)
{
    for (unsigned int i = 0; text[i] != 0; ++i) {
        if (peek(i) != text[i]) return false;
    }
    return true;
}

void qxXmlSax::expectText(const char16_t* text, unsigned int check)
{
    for (; *text != 0; ++text) expect(*text, check);
}

void qxXmlSax::expectSpace(unsigned int check)
{
    if (!skipSpace()) failCheck(check);
}

void qxXmlSax::expectName(unsigned int check)
{
    if (XML_read_05() != QX_PARSE_OK) failCheck(check);
}

/// Takes a quotation mark or an apostrophe and returns it.
char16_t qxXmlSax::expectQuote(unsigned int check)
{
    const char16_t quote = peek(0);
    if (quote != u'"' && quote != u'\'') failCheck(check);
    ++m_view.current;
    return quote;
}

/// What was taken since the run's text began.
const qxString& qxXmlSax::textSince(const Run& run)
{
    const auto length = static_cast<std::size_t>(getTokenPos() - run.body);
    const qxString* const text = reader().textOf(tokenAt(run.body), length);
    if (!text) failCheckAt(run.begin, run.check);
    return *text;
}
