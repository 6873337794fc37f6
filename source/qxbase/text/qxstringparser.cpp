// SPDX-License-Identifier: see LICENSE

#include "qxstringparser.h"

#include "qxmessage.h"
#include "text/qxpattern.h"
#include "text/qxresultchain.h"
#include "text/qxtextpiece.h"

#include <string>

namespace
{

constexpr unsigned int LONGEST_SHOWN = 1000; // bytes of rules in a message

/// Bytes of the character that `text`, which is not empty, begins or ends with.
unsigned int sizeOfFirst(const qxString& text)
{
    unsigned int size = 1;
    while (size < text.length() && (text.getString()[size] & 0xC0) == 0x80) ++size;
    return size;
}

unsigned int sizeOfLast(const qxString& text)
{
    unsigned int size = 1;
    while (size < text.length() && (text.getString()[text.length() - size] & 0xC0) == 0x80) ++size;
    return size;
}

} // namespace

struct qxStringParser::Strings {
    qxResultChain<qxString> chain;
};

qxStringParser::qxStringParser() : qxStringParser(ForProgram())
{
    registerFunction("fPush", &qxStringParser::fPush);
    registerFunction("fPushStr", &qxStringParser::fPushStr);
    registerFunction("fWS", &qxBasicParser::parseAllWS);
    registerFunction("fIdent", &qxBasicParser::parseIdentifier);
    registerFunction("fPlain", &qxBasicParser::parsePlainIdentifier);
    registerFunction("fInt", &qxBasicParser::parseInteger);
    registerFunction("fNum", &qxBasicParser::parseNumber);
    registerFunction("fHexS", &qxBasicParser::parseHex);
    registerFunction("digit", &qxBasicParser::parseDigit);
}

qxStringParser::qxStringParser(ForProgram) : m_strings(std::make_unique<Strings>())
{
    useUtf8(1);
}

qxStringParser::~qxStringParser() noexcept(false) = default;

bool qxStringParser::setParserString(const char* rules, std::size_t length)
{
    unsigned int malformed = 0;
    if (!qxRuleSet::load(rules, length, &malformed)) {
        qxMessage::message(QX_LEVEL_WARNING, "Malformed rule in parser string:%s rule nr:%d",
                           qxPieceOf({rules, length}, LONGEST_SHOWN), malformed);
        return false;
    }
    // The library's rules come first, so that an owner's rule of the same name counts.
    const std::string all = std::string(qxStringParserRules).append(rules, length);
    return loadRules(all.data(), all.size());
}

qxParseResult qxStringParser::parseText(const char* text, std::size_t length)
{
    clearStrings();
    return parseBytes(text, length, "main", m_takenBytes);
}

qxArray<qxString> qxStringParser::getStrings() const
{
    const qxResultChain<qxString>& chain = m_strings->chain;
    qxArray<qxString> strings(chain.countBehind(chain.NONE));
    unsigned int place = strings.entries();
    for (unsigned int i = chain.getLast(); i != chain.NONE; i = chain.getPrevious(i))
        strings[--place] = chain[i];
    return strings;
}

/// As getStrings, which are gone afterwards.
void qxStringParser::moveStrings(qxArray<qxString>& strings)
{
    qxResultChain<qxString>& chain = m_strings->chain;
    unsigned int place = getStringCount();
    strings = qxArray<qxString>(place);
    for (unsigned int i = chain.getLast(); i != chain.NONE; i = chain.getPrevious(i))
        strings[--place] = std::move(chain[i]);
    chain.clear();
}

unsigned int qxStringParser::getStringCount() const
{
    return static_cast<unsigned int>(m_strings->chain.countBehind(m_strings->chain.NONE));
}

void qxStringParser::clearStrings()
{
    m_strings->chain.clear();
}

void qxStringParser::pushString(const qxString& text)
{
    m_strings->chain.push(text);
}

qxUInt64 qxStringParser::saveState()
{
    return m_strings->chain.save();
}

void qxStringParser::restoreState(qxUInt64 state, bool isFinal)
{
    m_strings->chain.restore(state, isFinal);
}

qxParseResult qxStringParser::fPush()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    m_strings->chain.push(std::move(text));
    return QX_PARSE_OK;
}

qxParseResult qxStringParser::fPushStr()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    if (!text.isEmpty()) text = text.left(sizeOfFirst(text), true);
    if (!text.isEmpty()) text = text.left(text.length() - sizeOfLast(text));
    m_strings->chain.push(std::move(text));
    return QX_PARSE_OK;
}
