// SPDX-License-Identifier: see LICENSE

#include "text/qxrulebody.h"

#include "core/qxascii.h"
#include "text/qxrulescanner.h"
#include "text/qxtokencodec.h"

#include <algorithm>

namespace
{

constexpr unsigned int NONE = qxRuleNode::NONE;

constexpr char MISMATCH[] = "Expression mismatch in rule '%s' at (Line:%d,Col:%d) -> %s";

/// The bytes of a literal's text with its escapes read: \n \r \t \a \b \f \v \0 \\ \" \' and \x with two digits.
std::string convertEscapes(std::string_view text)
{
    constexpr std::string_view LETTERS = "nrtabfv0\\\"'";
    constexpr std::string_view CONTROLS("\n\r\t\a\b\f\v\0\\\"'", 11);
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
            continue;
        }
        const std::size_t letter = LETTERS.find(text[i + 1]);
        if (letter != std::string_view::npos) {
            bytes += CONTROLS[letter];
            ++i;
        } else if (text[i + 1] == 'x' && i + 3 < text.size() && qxHexValue(text[i + 2]) >= 0 &&
                   qxHexValue(text[i + 3]) >= 0) {
            bytes += static_cast<char>(qxHexValue(text[i + 2]) * 16 + qxHexValue(text[i + 3]));
            i += 3;
        } else {
            bytes += text[i]; // what is no escape stays as it is
        }
    }
    return bytes;
}

/// The tokens of UTF-8; a byte that is no character becomes the token of its value.
std::u16string toTokens(std::string_view bytes)
{
    std::u16string tokens;
    std::vector<char16_t> room(bytes.size() + 2);
    while (!bytes.empty()) {
        const auto* const from = reinterpret_cast<const unsigned char*>(bytes.data());
        const qxDecodeResult result =
            qxDecodeTokens(qxTokenForm::UTF8, from, bytes.size(), room.data(), room.size());
        tokens.append(room.data(), result.tokens);
        bytes.remove_prefix(result.bytes);
        if (bytes.empty() || result.tokens > 0) continue;
        tokens += static_cast<char16_t>(static_cast<unsigned char>(bytes[0]));
        bytes.remove_prefix(1);
    }
    return tokens;
}

} // namespace

unsigned int qxRulePools::addLiteral(std::string_view text)
{
    const auto [entry, isNew] =
        m_literals.emplace(toTokens(convertEscapes(text)), static_cast<unsigned int>(m_code.literals.size()));
    if (isNew) m_code.literals.push_back(entry->first);
    return entry->second;
}

unsigned int qxRulePools::addSet(std::string_view text)
{
    const auto [entry, isNew] = m_sets.emplace(text, static_cast<unsigned int>(m_code.sets.size()));
    if (isNew) m_code.sets.push_back(qxCharSet::fromText(text.substr(1, text.size() - 2)));
    return entry->second;
}

unsigned int qxRulePools::addCharacter(std::string_view text, char32_t code)
{
    const auto [entry, isNew] = m_sets.emplace(text, static_cast<unsigned int>(m_code.sets.size()));
    if (isNew) m_code.sets.push_back(qxCharSet::ofCharacter(code));
    return entry->second;
}

unsigned int qxRulePools::addName(std::string_view name)
{
    const auto [entry, isNew] =
        m_code.nameIndex.emplace(name, static_cast<unsigned int>(m_code.names.size()));
    if (isNew) {
        m_code.names.push_back(name);
        m_code.ruleOfName.push_back(NONE);
    }
    return entry->second;
}

qxRuleBodyCompiler::qxRuleBodyCompiler(qxRuleCode& code, qxRulePools& pools, unsigned int rule)
    : m_code(code), m_pools(pools), m_rule(rule), m_place(code.rules[rule].begin), m_end(code.rules[rule].end)
{}

void qxRuleBodyCompiler::compile()
{
    openBody(m_place);
    m_code.rules[m_rule].body = m_levels.back().body;
    while (skipBlanks()) {
        if (!isAtEnd()) {
            if (!readElement()) break;
        } else if (m_levels.size() > 1) {
            fail("Missing right ')' in rule '%s' at (Line:%d,Col:%d) -> %s", m_levels.back().opener);
            break;
        } else {
            if (!mayEnd()) fail(MISMATCH, m_end);
            break;
        }
    }
    if (m_fault.format) addFault();
}

/// White space and comments; false at a comment without end.
bool qxRuleBodyCompiler::skipBlanks()
{
    while (!isAtEnd()) {
        if (qxIsWhiteSpace(here())) {
            ++m_place;
        } else if (qxRuleScan::isComment(m_code.text, m_place, m_end)) {
            const std::size_t behind = qxRuleScan::behindComment(m_code.text, m_place, m_end);
            if (behind == qxRuleScan::NOWHERE)
                return fail("Unbalansed comment in rule '%s' at (Line:%d,Col:%d) -> %s", m_place);
            m_place = static_cast<unsigned int>(behind);
        } else {
            break;
        }
    }
    return true;
}

bool qxRuleBodyCompiler::readElement()
{
    switch (here()) {
    case '"':
    case '\'':
        return readLiteral();
    case '[':
        return readSet();
    case '(':
        return openGroup();
    case ')':
        return closeGroup();
    case '|':
        return startAlternative();
    case '-':
        return startExclusion();
    case '#':
        return readCharacter();
    default:
        break;
    }
    qxRuleNode node;
    node.begin = m_place;
    if (here() == '$' || here() == '@') {
        node.kind = here() == '$' ? qxRuleNode::MARK : qxRuleNode::MATCH_MARK;
        node.end = ++m_place;
        return finishFactor(node);
    }
    const std::size_t behind = qxRuleScan::behindName(m_code.text, m_place, m_end);
    if (behind == m_place) return fail(MISMATCH, m_place);
    node.kind = qxRuleNode::CALL;
    node.end = m_place = static_cast<unsigned int>(behind);
    node.value = m_pools.addName(m_code.textOf(node));
    return finishFactor(node);
}

bool qxRuleBodyCompiler::readLiteral()
{
    const std::size_t behind = qxRuleScan::behindLiteral(m_code.text, m_place, m_end);
    if (behind == qxRuleScan::NOWHERE) {
        return fail(here() == '"' ? "Unbalansed quote string in rule '%s' at (Line:%d,Col:%d) -> %s"
                                  : "Unbalansed single quoted string in rule '%s' at (Line:%d,Col:%d) -> %s",
                    m_place);
    }
    qxRuleNode node;
    node.kind = qxRuleNode::LITERAL;
    node.begin = m_place;
    node.end = m_place = static_cast<unsigned int>(behind);
    const std::string_view text = m_code.textOf(node);
    node.value = m_pools.addLiteral(text.substr(1, text.size() - 2));
    return finishFactor(node);
}

bool qxRuleBodyCompiler::readSet()
{
    const std::size_t behind = qxRuleScan::behindSet(m_code.text, m_place, m_end);
    if (behind == qxRuleScan::NOWHERE)
        return fail("Unbalansed Set [] in rule '%s' at (Line:%d,Col:%d) -> %s", m_place);
    qxRuleNode node;
    node.kind = qxRuleNode::SET;
    node.begin = m_place;
    node.end = m_place = static_cast<unsigned int>(behind);
    node.value = m_pools.addSet(m_code.textOf(node));
    return finishFactor(node);
}

/// "#x" and hexadecimal digits.
bool qxRuleBodyCompiler::readCharacter()
{
    constexpr char32_t BEYOND = 0x110000;
    qxRuleNode node;
    node.kind = qxRuleNode::SET;
    node.begin = node.end = m_place;
    char32_t code = 0;
    if (m_end - m_place > 2 && m_code.text[m_place + 1] == 'x') node.end += 2;
    const unsigned int digits = node.end;
    for (; node.end != node.begin && node.end < m_end && qxHexValue(m_code.text[node.end]) >= 0; ++node.end)
        code = std::min<char32_t>(code * 16 + static_cast<unsigned int>(qxHexValue(m_code.text[node.end])),
                                  BEYOND);
    if (node.end == digits) return fail(MISMATCH, m_place);
    m_place = node.end;
    node.value = m_pools.addCharacter(m_code.textOf(node), code);
    return finishFactor(node);
}

bool qxRuleBodyCompiler::openGroup()
{
    openBody(m_place++);
    return true;
}

bool qxRuleBodyCompiler::closeGroup()
{
    if (m_levels.size() == 1 || !mayEnd()) return fail(MISMATCH, m_place);
    qxRuleNode node;
    node.kind = qxRuleNode::GROUP;
    node.begin = m_levels.back().opener;
    node.end = ++m_place;
    node.value = m_levels.back().body;
    m_levels.pop_back();
    return finishFactor(node);
}

bool qxRuleBodyCompiler::startAlternative()
{
    if (!mayEnd()) return fail(MISMATCH, m_place);
    ++m_place;
    addAlternative();
    m_levels.back().canExclude = false;
    return true;
}

bool qxRuleBodyCompiler::startExclusion()
{
    Level& level = m_levels.back();
    if (!level.canExclude) return fail(MISMATCH, m_place);
    ++m_place;
    level.isExcluding = true;
    level.canExclude = false;
    return true;
}

/// True where an alternative may end: it has an element, and no "-" waits for its second factor.
bool qxRuleBodyCompiler::mayEnd() const
{
    const Level& level = m_levels.back();
    return !level.isExcluding && m_code.alternatives[m_code.bodies[level.body].last].first != NONE;
}

/// Reads the suffix of a factor and adds both to the alternative; the factor also where the suffix is faulty, since
/// it is matched before that is read.
bool qxRuleBodyCompiler::finishFactor(qxRuleNode node)
{
    const bool isRead = skipBlanks() && readSuffix(node) && skipBlanks();
    const bool isExcluded = isRead && !isAtEnd() && here() == '-';
    if (node.kind == qxRuleNode::GROUP) joinSingle(node);
    if (m_levels.back().isExcluding)
        addExclusion(node);
    else if (isExcluded || !splice(node))
        append(addNode(node));
    m_levels.back().canExclude = isExcluded && !m_levels.back().isExcluding;
    m_levels.back().isExcluding = false;
    return isRead;
}

bool qxRuleBodyCompiler::readSuffix(qxRuleNode& node)
{
    if (isAtEnd()) return true;
    const char c = here();
    if (c == '?' || c == '*' || c == '+') {
        ++m_place;
        node.min = c == '+' ? 1 : 0;
        node.max = c == '?' ? 1 : qxRuleNode::UNLIMITED;
    } else if (qxIsDigit(c)) {
        readNumber(node.min);
        node.max = node.min;
        node.isCounted = true;
    } else if (c == '{') {
        return readRange(node);
    } else {
        return true;
    }
    return true;
}

/// "{Min,Max}".
bool qxRuleBodyCompiler::readRange(qxRuleNode& node)
{
    const unsigned int opener = m_place++;
    unsigned int min = 0;
    unsigned int max = 0;
    if (!skipBlanks()) return false;
    if (!readNumber(min))
        return fail("Missing Min number in set {Min,Max} in rule '%s' at (Line:%d,Col:%d) -> %s", m_place);
    if (!skipBlanks()) return false;
    if (isAtEnd() || here() != ',')
        return fail("Missing ',' in set {Min,Max} in rule '%s' at (Line:%d,Col:%d) -> %s", m_place);
    ++m_place;
    if (!skipBlanks()) return false;
    if (!readNumber(max))
        return fail("Missing Max number in set {Min,Max} in rule '%s' at (Line:%d,Col:%d) -> %s", m_place);
    if (!skipBlanks()) return false;
    if (isAtEnd() || here() != '}')
        return fail("Missing right '}' in set {Min,Max} in rule '%s' at (Line:%d,Col:%d) -> %s", opener);
    ++m_place;
    if (min > max) return fail("Min>Max in set {Min,Max} in rule '%s' at (Line:%d,Col:%d) -> %s", opener);
    node.min = min;
    node.max = max;
    node.isCounted = true;
    return true;
}

/// A decimal number; one that is too large becomes the largest there is.
bool qxRuleBodyCompiler::readNumber(unsigned int& number)
{
    const unsigned int begin = m_place;
    qxUInt64 value = 0;
    for (; !isAtEnd() && qxIsDigit(here()); ++m_place)
        value = std::min<qxUInt64>(value * 10 + static_cast<unsigned int>(here() - '0'),
                                   qxRuleNode::UNLIMITED - 1);
    number = static_cast<unsigned int>(value);
    return m_place != begin;
}

/// A group of one element is that element, with the suffix of either.
void qxRuleBodyCompiler::joinSingle(qxRuleNode& group) const
{
    const qxRuleBody& body = m_code.bodies[group.value];
    const qxRuleAlternative& only = m_code.alternatives[body.first];
    if (body.first != body.last || only.first != only.last) return;
    qxRuleNode element = m_code.nodes[only.first];
    if (element.isRepeated() && group.isRepeated()) return;
    if (!element.isRepeated()) {
        element.min = group.min;
        element.max = group.max;
        element.isCounted = group.isCounted;
    }
    group = element;
}

/// The elements of a group that has no alternatives and no suffix may as well stand without it.
bool qxRuleBodyCompiler::splice(const qxRuleNode& group)
{
    if (group.kind != qxRuleNode::GROUP || group.isRepeated()) return false;
    const qxRuleBody& body = m_code.bodies[group.value];
    if (body.first != body.last) return false;
    const qxRuleAlternative& only = m_code.alternatives[body.first];
    append(only.first);
    currentAlternative().last = only.last;
    return true;
}

/// The last factor of the alternative becomes the one from which `excluded` is taken away.
void qxRuleBodyCompiler::addExclusion(const qxRuleNode& excluded)
{
    const unsigned int place = currentAlternative().last;
    qxRuleNode node = m_code.nodes[place];
    qxRuleNode exclusion;
    exclusion.kind = qxRuleNode::EXCLUSION;
    exclusion.begin = node.begin;
    exclusion.end = excluded.end;
    exclusion.depth = static_cast<unsigned char>(std::min(1 + std::max(node.depth, excluded.depth), 255));
    exclusion.value = addNode(node);
    exclusion.other = addNode(excluded);
    m_code.nodes[place] = exclusion;
}

void qxRuleBodyCompiler::append(unsigned int node)
{
    qxRuleAlternative& alternative = currentAlternative();
    if (alternative.first == NONE)
        alternative.first = node;
    else
        m_code.nodes[alternative.last].next = node;
    alternative.last = node;
}

unsigned int qxRuleBodyCompiler::addNode(const qxRuleNode& node)
{
    m_code.nodes.push_back(node);
    return static_cast<unsigned int>(m_code.nodes.size() - 1);
}

void qxRuleBodyCompiler::openBody(unsigned int opener)
{
    m_levels.push_back({static_cast<unsigned int>(m_code.bodies.size()), opener});
    qxRuleBody body;
    body.rule = m_rule;
    m_code.bodies.push_back(body);
    addAlternative();
}

void qxRuleBodyCompiler::addAlternative()
{
    qxRuleBody& body = m_code.bodies[m_levels.back().body];
    const auto index = static_cast<unsigned int>(m_code.alternatives.size());
    if (body.first == NONE)
        body.first = index;
    else
        m_code.alternatives[body.last].next = index;
    body.last = index;
    qxRuleAlternative alternative;
    alternative.begin = m_place;
    m_code.alternatives.push_back(alternative);
}

qxRuleAlternative& qxRuleBodyCompiler::currentAlternative()
{
    return m_code.alternatives[m_code.bodies[m_levels.back().body].last];
}

bool qxRuleBodyCompiler::fail(const char* format, unsigned int place)
{
    m_fault = {format, place};
    return false;
}

/// Puts the fault behind what was read, and closes what is open around it.
void qxRuleBodyCompiler::addFault()
{
    qxRuleNode fault;
    fault.kind = qxRuleNode::FAULT;
    fault.begin = fault.end = m_fault.place;
    fault.value = static_cast<unsigned int>(m_code.faults.size());
    m_code.faults.push_back(m_fault);
    m_code.rules[m_rule].fault = addNode(fault);
    append(m_code.rules[m_rule].fault);
    for (;;) {
        currentAlternative().holdsFault = true;
        if (m_levels.size() == 1) return;
        qxRuleNode group;
        group.kind = qxRuleNode::GROUP;
        group.begin = m_levels.back().opener;
        group.end = m_end;
        group.value = m_levels.back().body;
        m_levels.pop_back();
        if (m_levels.back().isExcluding)
            addExclusion(group);
        else
            append(addNode(group));
    }
}
