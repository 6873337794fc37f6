// SPDX-License-Identifier: see LICENSE

#include "qxstringparser.h"

#include "core/qxprocessguard.h"
#include "qxmessage.h"
#include "text/qxpattern.h"
#include "text/qxpatternparsers.h"
#include "text/qxrulerun.h"
#include "text/qxtextpiece.h"

#include <string>

namespace
{

constexpr unsigned int LONGEST_SHOWN = 1000; // bytes of a pattern in a message

} // namespace

qxPatternParsers& qxPatternParsers::get()
{
    static qxPatternParsers& parsers = *new qxPatternParsers; // never destroyed: threads may parse to the end
    return parsers;
}

qxPatternParsers::qxPatternParsers()
{
    const qxStringParser parser;
    m_functions = parser.m_rules->getFunctions();
}

std::unique_ptr<qxStringParser> qxPatternParsers::take(std::string_view pattern, char16_t decimal,
                                                       qxTranslatedPattern& translated)
{
    std::unique_ptr<qxStringParser> parser;
    bool isKnown = false;
    {
        const qxProcessGuard guard(m_lock);
        Patterns& patterns = m_patterns[decimal];
        const auto found = patterns.find(pattern);
        isKnown = found != patterns.end();
        if (isKnown) translated = found->second;
        if (!m_parsers.empty()) {
            parser = std::move(m_parsers.back());
            m_parsers.pop_back();
        }
    }
    if (!isKnown) {
        translated = translate(pattern, decimal);
        const qxProcessGuard guard(m_lock);
        if (m_patterns[decimal].size() >= MOST_PATTERNS) m_patterns.clear();
        m_patterns[decimal].emplace(pattern, translated);
    }
    if (!translated.program) return nullptr;
    if (!parser) parser.reset(new qxStringParser(qxStringParser::ForProgram()));
    parser->rules().setProgram(translated.program);
    return parser;
}

void qxPatternParsers::giveBack(std::unique_ptr<qxStringParser> parser)
{
    parser->clearStrings();
    const qxProcessGuard guard(m_lock);
    if (m_parsers.size() < MOST_PARSERS) m_parsers.push_back(std::move(parser));
}

void qxPatternParsers::clear()
{
    std::unordered_map<char16_t, Patterns> patterns; // these go when the lock is free
    std::vector<std::unique_ptr<qxStringParser>> parsers;
    const qxProcessGuard guard(m_lock);
    patterns.swap(m_patterns);
    parsers.swap(m_parsers);
}

qxTranslatedPattern qxPatternParsers::translate(std::string_view pattern, char16_t decimal) const
{
    const std::string rules = std::string(qxStringParserRules) + qxTranslatePattern(pattern, decimal);
    constexpr unsigned int LIBRARY_RULES = 4; // of all string parsers
    qxTranslatedPattern translated;
    const qxRefPointer<qxRuleSet> set =
        qxRuleSet::load(rules.data(), rules.size(), &translated.malformedRule);
    if (set)
        translated.program = qxMakeRuleProgram(set, m_functions);
    else
        translated.malformedRule -= LIBRARY_RULES;
    return translated;
}

qxArray<qxString> qxStringParser::parseArguments(const qxString& pattern, const qxString& text, bool& ok,
                                                 char16_t decimal, bool isURL)
{
    qxArray<qxString> strings;
    ok = parseArguments(pattern, text.getString(), text.length(), strings, decimal, nullptr, isURL) ==
         QX_PARSE_OK;
    return strings;
}

qxParseResult qxStringParser::parseArguments(const qxString& pattern, const char* text, std::size_t length,
                                             qxArray<qxString>& strings, char16_t decimal, qxString* error,
                                             bool isURL)
{
    const std::string_view patternText(pattern.getString(), pattern.length());
    qxTranslatedPattern translated;
    std::unique_ptr<qxStringParser> parser = qxPatternParsers::get().take(patternText, decimal, translated);
    if (!parser) {
        const qxString malformed =
            qxString::str(isURL ? "Malformed rule in parser url:%s rule nr:%d"
                                : "Malformed rule in parser string:%s rule nr:%d",
                          qxPieceOf(patternText, LONGEST_SHOWN), translated.malformedRule);
        qxMessage::message(QX_LEVEL_WARNING, "%s", malformed);
        if (error) *error = malformed;
        return QX_PARSE_ERROR;
    }
    qxParseResult result = parser->parseText(text, length);
    parser->moveStrings(strings);
    qxString trouble = parser->getError();
    if (result == QX_PARSE_ERROR) {
        trouble = qxString::str("Error:%s", trouble);
        qxMessage::message(QX_LEVEL_WARNING, "%s", trouble);
    } else if (result == QX_PARSE_OK && parser->getTakenBytes() < length) {
        trouble = "Not All arguments were parsed";
        qxMessage::message(QX_LEVEL_DEBUG, "%s", trouble);
        result = QX_PARSE_NO_MATCH;
    }
    if (error) *error = trouble;
    qxPatternParsers::get().giveBack(std::move(parser));
    return result;
}

qxString qxStringParser::translatePattern(const qxString& pattern, char16_t decimal)
{
    const std::string rules = qxTranslatePattern({pattern.getString(), pattern.length()}, decimal);
    return qxPieceOf(rules, qxString::MAX_LENGTH);
}

void qxStringParser::cleanUpParsers()
{
    qxPatternParsers::get().clear();
}

qxArray<qxString> parse(const qxString& pattern, const qxString& text, bool& ok, char16_t decimal)
{
    return qxStringParser::parseArguments(pattern, text, ok, decimal);
}
