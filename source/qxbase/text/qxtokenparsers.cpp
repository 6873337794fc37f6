// SPDX-License-Identifier: see LICENSE

#include "text/qxtokenparsers.h"

#include <algorithm>

namespace
{

const qxTokenParser PARSERS[] = {
    {"parseAllExceptCREOL", &qxBasicParser::parseAllExceptCREOL, "^", false},
    {"parseAllWS", &qxBasicParser::parseAllWS, " #x9#xD#xA", false},
    {"parseAlpha", &qxBasicParser::parseAlpha, "a-zA-Z", true},
    {"parseAlphaNum", &qxBasicParser::parseAlphaNum, "a-zA-Z0-9", true},
    {"parseCR", &qxBasicParser::parseCR, "#xD", true},
    {"parseCRLF", &qxBasicParser::parseCRLF, "#xD", false},
    {"parseCTL", &qxBasicParser::parseCTL, "#x0-#x1F#x7F", true},
    {"parseChar", &qxBasicParser::parseChar, "^", true},
    {"parseDigit", &qxBasicParser::parseDigit, "0-9", true},
    {"parseHT", &qxBasicParser::parseHT, "#x9", true},
    {"parseHex", &qxBasicParser::parseHex, "0-9a-fA-F", true},
    {"parseIdentifier", &qxBasicParser::parseIdentifier, "a-zA-Z_", false},
    {"parseInteger", &qxBasicParser::parseInteger, "0-9+-", false},
    {"parseLF", &qxBasicParser::parseLF, "#xA", true},
    {"parseLoAlpha", &qxBasicParser::parseLoAlpha, "a-z", true},
    {"parseNumber", &qxBasicParser::parseNumber, "0-9+-", false},
    {"parsePlainIdentifier", &qxBasicParser::parsePlainIdentifier, "a-zA-Z_#x80-#x10FFFF", false},
    {"parseQuoteToken", &qxBasicParser::parseQuoteToken, "\"", false},
    {"parseQuoteTokenEscape", &qxBasicParser::parseQuoteTokenEscape, "\"", false},
    {"parseSP", &qxBasicParser::parseSP, " ", true},
    {"parseSetToken", &qxBasicParser::parseSetToken, "[", false},
    {"parseSetTokenEscape", &qxBasicParser::parseSetTokenEscape, "[", false},
    {"parseSingleQuoteToken", &qxBasicParser::parseSingleQuoteToken, "'", false},
    {"parseSingleQuoteTokenEscape", &qxBasicParser::parseSingleQuoteTokenEscape, "'", false},
    {"parseToCREOL", &qxBasicParser::parseToCREOL, "^", false},
    {"parseToEOL", &qxBasicParser::parseToEOL, "^", false},
    {"parseUpAlpha", &qxBasicParser::parseUpAlpha, "A-Z", true},
    {"parseWS", &qxBasicParser::parseWS, " #x9", false},
};

template <class Test>
const qxTokenParser* find(Test&& test)
{
    const qxTokenParser* const found = std::find_if(std::begin(PARSERS), std::end(PARSERS), test);
    return found == std::end(PARSERS) ? nullptr : found;
}

} // namespace

const qxTokenParser* qxFindTokenParser(std::string_view name)
{
    return find([name](const qxTokenParser& parser) { return parser.name == name; });
}

const qxTokenParser* qxFindTokenParser(qxParserFunction function)
{
    return find([function](const qxTokenParser& parser) { return parser.function == function; });
}
