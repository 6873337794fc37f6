// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypeargumentparser.h"

#include "core/qxascii.h"
#include "qxdynamictypes.h"
#include "qxserializeadaptermemory.h"
#include "text/qxnumberscanner.h"
#include "text/qxresultchain.h"
#include "text/qxrulerun.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace
{

constexpr char RULES[] = "array ::= '[' fArrayBegin arg_list? SP* ']' fArrayEnd ;\n"
                         "boolean ::= $ [yesYESnoNOtruTRUfalFAL]+ fBool ;\n"
                         "string ::= $ (('\"' [^\"]* '\"')|(\"'\" [^']* \"'\")) fString ;\n"
                         "number ::= $ float fNum ;\n"
                         "guid ::= $ '{' (X)8 '-' (X)4 '-' (X)4 '-' (X)4 '-' (X)12 '}' fGUID ;\n"
                         "argument ::= number | string | boolean | array | guid ;\n"
                         "arg_list ::= SP* argument SP* (separator arg_list)? ;\n"
                         "main ::= arg_list | SP* ;\n";

/// The bytes of a text in which a backslash is doubled and others may be \xHH.
std::string readEscapes(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view rest = text.substr(i);
        if (rest.starts_with("\\\\")) {
            ++i;
        } else if (rest.starts_with("\\x") && rest.size() > 3 && qxHexValue(rest[2]) >= 0 &&
                   qxHexValue(rest[3]) >= 0) {
            bytes += static_cast<char>(qxHexValue(rest[2]) * 16 + qxHexValue(rest[3]));
            i += 3;
            continue;
        }
        bytes += text[i];
    }
    return bytes;
}

/// A literal of rules.
std::string quote(const qxString& text)
{
    std::string quoted = "'";
    for (const char c : std::string_view(text.getString(), text.length())) {
        if (c == '\'' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

} // namespace

struct qxDynamicTypeArgumentParser::Values {
    struct Value {
        qxDynamicType value;
        bool isOpener; // of an array that is not closed yet
    };
    qxResultChain<Value> chain;
    qxUInt64 opened = 0; // brackets, each met once, whatever became of it
    qxUInt64 closed = 0;

    static std::shared_ptr<const qxRuleProgram> makeProgram(const qxString& separator)
    {
        const qxParserFunctions functions = {
            {"SP", &qxBasicParser::parseSP},
            {"X", &qxBasicParser::parseHex},
            {"float", &qxBasicParser::parseNumber},
            {"fNum", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fNum)},
            {"fString", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fString)},
            {"fBool", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fBool)},
            {"fGUID", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fGUID)},
            {"fArrayBegin", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fArrayBegin)},
            {"fArrayEnd", static_cast<qxParserFunction>(&qxDynamicTypeArgumentParser::fArrayEnd)}};
        const std::string rules = RULES + ("separator ::= " + quote(separator)) + ";";
        return qxMakeRuleProgram(qxRuleSet::load(rules.data(), rules.size()), functions);
    }
};

qxDynamicTypeArgumentParser::qxDynamicTypeArgumentParser(const qxString& separator, bool hasEscapes)
    : m_values(std::make_unique<Values>()), m_hasEscapes(hasEscapes)
{
    static const std::shared_ptr<const qxRuleProgram>& forCommas = *new std::shared_ptr<const qxRuleProgram>(
        Values::makeProgram(",")); // never destroyed: threads may go on
    useUtf8(1);
    rules().setProgram(separator == "," ? forCommas : Values::makeProgram(separator));
}

qxDynamicTypeArgumentParser::~qxDynamicTypeArgumentParser() noexcept(false) = default;

qxArray<qxDynamicType> qxDynamicTypeArgumentParser::parseArguments(const char* text, std::size_t length)
{
    m_values->chain.clear();
    m_values->opened = m_values->closed = 0;
    std::size_t taken = 0;
    const qxParseResult result = parseBytes(text, length, "main", taken);
    if (result != QX_PARSE_ERROR && taken < length) {
        setErrorText(m_values->opened > m_values->closed ? "Array not properly closed"
                                                         : "Not All arguments were parsed");
    }
    return takeValues(Values().chain.NONE);
}

qxUInt64 qxDynamicTypeArgumentParser::saveState()
{
    return m_values->chain.save();
}

void qxDynamicTypeArgumentParser::restoreState(qxUInt64 state, bool isFinal)
{
    m_values->chain.restore(state, isFinal);
}

qxParseResult qxDynamicTypeArgumentParser::fNum()
{
    constexpr double LARGEST = 4294967295.0; // of those that stay numbers though they are whole
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    const qxNumberParts parts = qxScanNumber(text.getString(), text.getString() + text.length(), '.');
    const double number = qxDoubleOf(parts);
    const bool isWhole =
        text.find('.') == text.length() && text.find('e') == text.length() && text.find('E') == text.length();
    if (isWhole && std::abs(number) > LARGEST)
        m_values->chain.push({qxDynamicTypeInt64(qxIntegerOf(parts)), false});
    else
        m_values->chain.push({qxDynamicType(number == 0.0 && isWhole ? 0.0 : number), false});
    return QX_PARSE_OK;
}

qxParseResult qxDynamicTypeArgumentParser::fString()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    const std::string_view inside(text.getString() + 1, text.length() - 2U);
    const std::string bytes = m_hasEscapes ? readEscapes(inside) : std::string(inside);
    m_values->chain.push({qxDynamicType(qxString(bytes.data(), bytes.size())), false});
    return QX_PARSE_OK;
}

/// The rule takes any word of the letters of the four.
qxParseResult qxDynamicTypeArgumentParser::fBool()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    text.toLower();
    const bool isTrue = text == "yes" || text == "true";
    if (!isTrue && text != "no" && text != "false") return QX_PARSE_NO_MATCH;
    m_values->chain.push({qxDynamicType(isTrue ? 1.0 : 0.0), false});
    return QX_PARSE_OK;
}

qxParseResult qxDynamicTypeArgumentParser::fGUID()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    m_values->chain.push({qxDynamicType(qxGUID(text)), false});
    return QX_PARSE_OK;
}

qxParseResult qxDynamicTypeArgumentParser::fArrayBegin()
{
    ++m_values->opened;
    m_values->chain.push({qxDynamicType(), true});
    return QX_PARSE_OK;
}

/// What stands behind the innermost opener becomes an array in its place.
qxParseResult qxDynamicTypeArgumentParser::fArrayEnd()
{
    ++m_values->closed;
    unsigned int opener = m_values->chain.getLast();
    while (!m_values->chain[opener].isOpener) opener = m_values->chain.getPrevious(opener);
    const qxDynamicTypeArray array(takeValues(opener));
    m_values->chain.cut(m_values->chain.getPrevious(opener));
    m_values->chain.push({array, false});
    return QX_PARSE_OK;
}

/// The values behind the one of this index.
qxArray<qxDynamicType> qxDynamicTypeArgumentParser::takeValues(unsigned int before)
{
    const qxResultChain<Values::Value>& chain = m_values->chain;
    qxArray<qxDynamicType> values(chain.countBehind(before));
    unsigned int place = values.entries();
    for (unsigned int i = chain.getLast(); i != before; i = chain.getPrevious(i))
        values[--place] = chain[i].value;
    return values;
}
