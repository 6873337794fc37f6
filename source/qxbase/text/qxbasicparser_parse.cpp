// SPDX-License-Identifier: see LICENSE

#include "qxbasicparser.h"

#include "text/qxtokenkinds.h"

using namespace qxTokenKinds;

namespace
{

bool isHighSurrogate(char16_t token)
{
    return (token & 0xFC00) == 0xD800;
}

bool isLowSurrogate(char16_t token)
{
    return (token & 0xFC00) == 0xDC00;
}

} // namespace

/// One token of the given kinds.
qxParseResult qxBasicParser::parseOne(unsigned int kinds)
{
    if (!hasData() || !isOfKind(*m_view.current, kinds)) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

/// One token of the kinds `first`, then any number of `rest`.
qxParseResult qxBasicParser::parseOne(unsigned int first, unsigned int rest)
{
    if (parseOne(first) != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    skip(rest);
    return QX_PARSE_OK;
}

/// Takes tokens of the given kinds; true when there was one.
bool qxBasicParser::skip(unsigned int kinds)
{
    bool found = false;
    for (;;) {
        const char16_t* place = m_view.current;
        while (place != m_view.end && isOfKind(*place, kinds)) ++place;
        found = found || place != m_view.current;
        m_view.current = place;
        if (place != m_view.end || !fill()) return found;
    }
}

/// Takes tokens up to one of the given kinds, or to the end of the input.
void qxBasicParser::skipUpTo(unsigned int kinds)
{
    do {
        while (m_view.current != m_view.end && !isOfKind(*m_view.current, kinds)) ++m_view.current;
    } while (m_view.current == m_view.end && fill());
}

bool qxBasicParser::isNext(char16_t token)
{
    return hasData() && *m_view.current == token;
}

/// From `open` to the next `close`; with `escape` a backslash hides the token behind it.
qxParseResult qxBasicParser::parseEnclosed(char16_t open, char16_t close, bool escape)
{
    if (!isNext(open)) return QX_PARSE_NO_MATCH;
    Hold hold(*this);
    ++m_view.current;
    while (hasData()) {
        const char16_t token = *m_view.current++;
        if (token == close) return QX_PARSE_OK;
        if (escape && token == u'\\' && hasData()) ++m_view.current;
        if (getTokenPos() - hold.getStart() > m_maxBufferSize) { // more than could be given back
            setErrorText("Too Large Pushback in basic parser");
            return QX_PARSE_ERROR;
        }
    }
    hold.rewind();
    return QX_PARSE_NO_MATCH;
}

qxParseResult qxBasicParser::parseAllExceptCREOL()
{
    if (!hasData()) return QX_PARSE_NO_MATCH;
    skipUpTo(CR | LF);
    return QX_PARSE_OK;
}

qxParseResult qxBasicParser::parseAllWS()
{
    return parseOne(WHITE_SPACE, WHITE_SPACE);
}

qxParseResult qxBasicParser::parseAlpha()
{
    return parseOne(LETTER);
}

qxParseResult qxBasicParser::parseAlphaNum()
{
    return parseOne(LETTER | DIGIT);
}

qxParseResult qxBasicParser::parseCR()
{
    return parseOne(CR);
}

qxParseResult qxBasicParser::parseCRLF()
{
    return checkTokens(u"\r\n", 2) ? QX_PARSE_OK : QX_PARSE_NO_MATCH;
}

qxParseResult qxBasicParser::parseCTL()
{
    return parseOne(CONTROL);
}

qxParseResult qxBasicParser::parseChar()
{
    if (!hasData()) return QX_PARSE_NO_MATCH;
    const bool isHigh = isHighSurrogate(*m_view.current++);
    if (isHigh && hasData() && isLowSurrogate(*m_view.current)) ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxBasicParser::parseDigit()
{
    return parseOne(DIGIT);
}

qxParseResult qxBasicParser::parseHT()
{
    return parseOne(TAB);
}

qxParseResult qxBasicParser::parseHex()
{
    return parseOne(HEX);
}

qxParseResult qxBasicParser::parseIdentifier()
{
    return parseOne(IDENTIFIER_START, IDENTIFIER);
}

qxParseResult qxBasicParser::parseInteger()
{
    Hold hold(*this);
    parseOne(SIGN);
    if (skip(DIGIT)) return QX_PARSE_OK;
    hold.rewind();
    return QX_PARSE_NO_MATCH;
}

qxParseResult qxBasicParser::parseLF()
{
    return parseOne(LF);
}

qxParseResult qxBasicParser::parseLoAlpha()
{
    return parseOne(LOWER);
}

qxParseResult qxBasicParser::parseNumber()
{
    if (parseInteger() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    if (isNext(u'.')) {
        ++m_view.current;
        skip(DIGIT); // none is needed
    }
    if (isNext(u'e') || isNext(u'E')) {
        Hold exponent(*this);
        ++m_view.current;
        if (parseInteger() != QX_PARSE_OK) exponent.rewind();
    }
    return QX_PARSE_OK;
}

qxParseResult qxBasicParser::parsePlainIdentifier()
{
    return parseOne(PLAIN_START, PLAIN_IDENTIFIER);
}

qxParseResult qxBasicParser::parseQuoteToken()
{
    return parseEnclosed(u'"', u'"', false);
}

qxParseResult qxBasicParser::parseQuoteTokenEscape()
{
    return parseEnclosed(u'"', u'"', true);
}

qxParseResult qxBasicParser::parseSP()
{
    return parseOne(SPACE);
}

qxParseResult qxBasicParser::parseSetToken()
{
    return parseEnclosed(u'[', u']', false);
}

qxParseResult qxBasicParser::parseSetTokenEscape()
{
    return parseEnclosed(u'[', u']', true);
}

qxParseResult qxBasicParser::parseSingleQuoteToken()
{
    return parseEnclosed(u'\'', u'\'', false);
}

qxParseResult qxBasicParser::parseSingleQuoteTokenEscape()
{
    return parseEnclosed(u'\'', u'\'', true);
}

qxParseResult qxBasicParser::parseToCREOL()
{
    return parseAllExceptCREOL();
}

qxParseResult qxBasicParser::parseToEOL()
{
    if (!hasData()) return QX_PARSE_NO_MATCH;
    skipUpTo(LF);
    return QX_PARSE_OK;
}

qxParseResult qxBasicParser::parseUpAlpha()
{
    return parseOne(UPPER);
}

qxParseResult qxBasicParser::parseWS()
{
    return parseOne(SPACE | TAB, SPACE | TAB);
}

void qxBasicParser::skipWS()
{
    skip(SPACE | TAB);
}

void qxBasicParser::skipAllWS()
{
    skip(WHITE_SPACE);
}

void qxBasicParser::skipToEOL()
{
    parseToEOL();
}

void qxBasicParser::skipToCREOL()
{
    parseToCREOL();
}

void qxBasicParser::skipAllExceptCREOL()
{
    parseAllExceptCREOL();
}
