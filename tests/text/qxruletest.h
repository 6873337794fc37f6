// A parser whose functions say that they were called.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstringparser.h"

#include "qxserializeadaptermemory.h"
#include "qxtestrows.h"

#include <memory>
#include <string>
#include <vector>

/// Knows, besides the functions of string parsers, SP, EOL, CRLF, X and float; every other name is a function that pushes
/// its name and the text from its mark. fNo answers "no match" after that, and fFail sets an error.
class RuleParser : public qxStringParser
{
public:
    RuleParser()
    {
        registerFunction("SP", &qxBasicParser::parseSP);
        registerFunction("EOL", &qxBasicParser::parseAllExceptCREOL);
        registerFunction("CRLF", &qxBasicParser::parseCRLF);
        registerFunction("X", &qxBasicParser::parseHex);
        registerFunction("float", &qxBasicParser::parseNumber);
    }

    qxParseResult parseFunction(const qxString& name) override
    {
        if (!name.isFirst('f')) return qxStringParser::parseFunction(name);
        qxString text;
        if (!takeMarkedText(text)) return QX_PARSE_ERROR;
        m_calls += std::string(m_calls.empty() ? "" : " ") + name.getString();
        pushString(name + ":" + text);
        if (name == "fFail") setError("no %s", "luck");
        return name == "fFail" ? QX_PARSE_ERROR : name == "fNo" ? QX_PARSE_NO_MATCH : QX_PARSE_OK;
    }

    /// The names of the functions that were called, also of those whose doings were taken back.
    std::string takeCalls() { return std::move(m_calls); }

private:
    std::string m_calls;
};

/// What `parser` makes of `text`: the result, what was pushed in brackets, and what is left behind a bar; of an error its
/// text alone.
inline std::string outcomeOf(qxStringParser& parser, const std::string& text)
{
    const qxParseResult result = parser.parseText(text.data(), text.size());
    if (result == QX_PARSE_ERROR) return parser.getError().getString();
    std::string outcome = qxBasicParser::parseResultString(result);
    for (const qxString& pushed : parser.getStrings())
        outcome += std::string(" [") + pushed.getString() + "]";
    return outcome + " |" + text.substr(parser.getTakenBytes());
}

/// Answers rows of "RULES ~ INPUT"; rules without a name are the rule main.
class RuleRows
{
public:
    std::string operator()(const std::string& question) const
    {
        RuleParser parser;
        if (takesOldest) parser.useFirstInFirstOut(1);
        const std::size_t middle = question.find(" ~ ");
        std::string rules = question.substr(0, middle);
        if (rules.find("::=") == std::string::npos) rules = "main ::= " + rules + ";";
        if (!parser.setParserString(rules.data(), rules.size())) return "malformed";
        const std::string outcome = outcomeOf(parser, question.substr(middle + 3));
        const std::string calls = parser.takeCalls();
        return showsCalls ? calls + ": " + outcome : outcome;
    }

    bool takesOldest = false;
    bool showsCalls = false;
};
