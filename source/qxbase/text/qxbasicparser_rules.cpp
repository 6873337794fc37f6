// SPDX-License-Identifier: see LICENSE

#include "qxbasicparser.h"

#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "text/qxnumberscanner.h"
#include "text/qxrulecheck.h"
#include "text/qxrulerun.h"
#include "text/qxtokenwindow.h"

#include <limits>

void qxBasicParser::setRules(qxRuleSet* rules)
{
    if (!refuseWhenRunning()) this->rules().setRules(rules);
}

qxRefPointer<qxRuleSet> qxBasicParser::getRules() const
{
    return m_rules ? m_rules->getRules() : nullptr;
}

bool qxBasicParser::loadRules(const char* text, std::size_t length)
{
    if (refuseWhenRunning()) return false;
    qxString malformed;
    const qxRefPointer<qxRuleSet> loaded = qxRuleSet::load(text, length, nullptr, &malformed);
    if (!loaded) {
        qxMessage::message(QX_LEVEL_WARNING, "Malformed rule in parser -> '%s'", malformed);
        return false;
    }
    rules().setRules(loaded);
    return true;
}

void qxBasicParser::addFunction(const char* name, qxParseResult (qxBasicParser::*function)())
{
    if (!refuseWhenRunning()) rules().addFunction(name, function);
}

qxParseResult qxBasicParser::parseRule(const char* name)
{
    if (m_adapter) return rules().run(name);
    setErrorText("Adapter out of Data");
    return QX_PARSE_ERROR;
}

qxParseResult qxBasicParser::parseBytes(const char* text, std::size_t length, const char* rule,
                                        std::size_t& taken)
{
    taken = 0;
    if (length > std::numeric_limits<unsigned int>::max()) {
        setErrorText("The text is too long");
        return QX_PARSE_ERROR;
    }
    qxSerializeAdapterMemory memory(const_cast<char*>(text), static_cast<unsigned int>(length)); // only read
    qxParseResult result = QX_PARSE_ERROR;
    setAdapter(&memory);
    try {
        result = parseRule(rule);
    } catch (...) { // out of a function
        setAdapter(nullptr);
        throw;
    }
    setAdapter(nullptr);
    taken = length - static_cast<std::size_t>(memory.length()); // what was given back lies before the memory
    return result;
}

void qxBasicParser::useFirstInFirstOut(unsigned char on)
{
    rules().useFirstInFirstOut(on != 0);
}

void qxBasicParser::setMark(unsigned char flag)
{
    rules().setMark(flag);
}

bool qxBasicParser::takeMark(qxParserMark& mark)
{
    return rules().takeMark(mark);
}

/// The tokens from a mark to the next token; false when they are not held.
bool qxBasicParser::takeMarkedTokens(qxUInt64& position, unsigned int& count)
{
    qxParserMark mark;
    const qxUInt64 end = getTokenPos();
    qxUInt64 size = end;
    if (takeMark(mark)) size = static_cast<unsigned int>(end) - mark.position; // modulo 2^32, as marks are
    if (size > m_maxBufferSize) {
        setErrorText("Too Large Pushback in basic parser");
        return false;
    }
    position = end - size;
    count = static_cast<unsigned int>(size);
    return isHeld(position, count);
}

bool qxBasicParser::takeMarkedText(qxString& text)
{
    qxUInt64 position = 0;
    unsigned int count = 0;
    return takeMarkedTokens(position, count) && readTokenData(position, count, text);
}

bool qxBasicParser::takeMarkedNumber(double& number)
{
    constexpr unsigned int SHORT = 64; // tokens that need no string
    qxUInt64 position = 0;
    unsigned int count = 0;
    if (!takeMarkedTokens(position, count)) return false;
    if (count > SHORT) {
        qxString text;
        if (!readTokenData(position, count, text)) return false;
        number = text.real();
        return true;
    }
    char room[SHORT];
    const char16_t* const tokens = tokenAt(position);
    for (unsigned int i = 0; i < count; ++i) room[i] = tokens[i] < 128 ? static_cast<char>(tokens[i]) : '?';
    number = qxDoubleOf(qxScanNumber(room, room + count, '.'));
    return true;
}

void qxBasicParser::setMaxSteps(qxUInt64 count)
{
    rules().setMaxSteps(count);
}

void qxBasicParser::setMaxDepth(unsigned int count)
{
    rules().setMaxDepth(count);
}

bool qxBasicParser::hasReachedLimit() const
{
    return m_rules && m_rules->hasReachedLimit();
}

bool qxBasicParser::getErrorRulePlace(unsigned int& line, unsigned int& column) const
{
    if (!m_rules || m_rules->getErrorPlace() == qxRuleNode::NONE) return false;
    const qxRuleCode& code = *m_rules->getCode();
    const qxRulePlace place =
        code.placeOf(0, m_rules->getErrorPlace(), static_cast<unsigned int>(code.text.size()));
    line = place.line;
    column = place.column;
    return true;
}

qxArray<qxRuleFinding> qxBasicParser::checkRules() const
{
    const qxRefPointer<qxRuleSet> rules = getRules();
    return rules ? qxCheckRules(rules->getCode(), m_rules->getFunctions()) : qxArray<qxRuleFinding>();
}

qxUInt64 qxBasicParser::getFarthestPosition() const
{
    return m_rules ? m_rules->getFarthestPosition() : 0;
}

qxString qxBasicParser::getExpected() const
{
    return m_rules ? m_rules->getExpected() : qxString();
}

void qxBasicParser::useTrace(unsigned char on)
{
    rules().useTrace(on != 0);
}

qxUInt64 qxBasicParser::saveState()
{
    return 0;
}

void qxBasicParser::restoreState(qxUInt64, bool) {}

/// Sets the error "Parser is busy reading" and returns true while a rule runs.
bool qxBasicParser::refuseWhenRunning()
{
    const bool isRunning = m_rules && m_rules->isRunning();
    if (isRunning) setErrorText("Parser is busy reading");
    return isRunning;
}

/// Goes back, or forward again, to a position that is held.
bool qxBasicParser::rewindTo(qxUInt64 position)
{
    const qxUInt64 end = positionOf(m_view.end);
    const bool isNear =
        position >= m_view.bufferPos && position <= end &&
        (end - position <= m_maxBufferSize || m_window->reached(m_view) - position <= m_maxBufferSize);
    if (isNear)
        m_view.current = tokenAt(position);
    else
        setErrorText("Too Large Pushback in basic parser");
    return isNear;
}

qxRuleRun& qxBasicParser::rules()
{
    if (!m_rules) m_rules = std::make_unique<qxRuleRun>(*this);
    return *m_rules;
}
