// SPDX-License-Identifier: see LICENSE

#include "text/qxrulerun.h"

#include <algorithm>

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

/// An element that calls nobody but built-in parsers, with its suffix.
qxRuleRun::Outcome qxRuleRun::matchSimple(const qxRuleNode& node)
{
    if (!node.isRepeated()) return matchOnce(node);
    if (const qxCharSet* const set = setOf(node)) return matchSets(*set, node);
    return matchRepeated(node);
}

qxRuleRun::Outcome qxRuleRun::matchOnce(const qxRuleNode& node)
{
    switch (node.kind) {
    case qxRuleNode::LITERAL:
        return matchLiteral(m_code->literals[node.value]);
    case qxRuleNode::EXCLUSION:
        return matchExclusion(node);
    default:
        break;
    }
    if (const qxCharSet* const set = setOf(node)) return matchSet(*set);
    return matchBuiltin(m_program->getTarget(node.value).function);
}

/// The set of an element that matches one character; null for others.
const qxCharSet* qxRuleRun::setOf(const qxRuleNode& node) const
{
    if (node.kind == qxRuleNode::SET) return &m_code->sets[node.value];
    if (node.kind != qxRuleNode::CALL) return nullptr;
    const qxRuleTarget& target = m_program->getTarget(node.value);
    return target.kind == qxRuleTarget::SET ? &m_program->getSet(target.index) : nullptr;
}

qxRuleRun::Outcome qxRuleRun::matchSet(const qxCharSet& set)
{
    qxTokenView& view = m_parser.m_view;
    if (view.current != view.end && *view.current < qxCharSet::BITS) {
        if (!set.hasBit(*view.current)) return NO_MATCH;
        ++view.current;
        return OK;
    }
    return scanSet(set, 1) == 1 ? OK : NO_MATCH;
}

/// Takes up to `most` characters of the set and returns how many. A pair of surrogates is one character.
unsigned int qxRuleRun::scanSet(const qxCharSet& set, unsigned int most)
{
    qxTokenView& view = m_parser.m_view;
    unsigned int count = 0;
    while (count < most) {
        if (view.current == view.end && !m_parser.hasData()) break;
        const char16_t* const end = view.end - view.current > static_cast<std::ptrdiff_t>(most - count)
                                        ? view.current + (most - count)
                                        : view.end;
        const char16_t* place = view.current;
        while (place != end && *place < qxCharSet::BITS && set.hasBit(*place)) ++place;
        count += static_cast<unsigned int>(place - view.current);
        view.current = place;
        if (place == end) continue;
        if (*place < qxCharSet::BITS) break;
        char32_t code = *place;
        unsigned int size = 1;
        if (isHighSurrogate(*place)) {
            const char16_t low = m_parser.peek(1); // may move what is in memory
            if (isLowSurrogate(low)) {
                code = 0x10000 + ((code & 0x3FF) << 10) + (low & 0x3FFU);
                size = 2;
            }
        }
        if (!set.has(code)) break;
        for (; size > 0; --size) m_parser.getNextToken();
        ++count;
    }
    return count;
}

/// The same wherever it is.
qxRuleRun::Outcome qxRuleRun::matchSets(const qxCharSet& set, const qxRuleNode& node)
{
    const qxUInt64 start = position();
    const unsigned int count = scanSet(set, node.max);
    spendSteps((position() - start) / TOKENS_A_STEP);
    return count >= node.min ? OK : giveUp(node, start);
}

/// Too few were found: the one that is missing was expected where the last one ended.
qxRuleRun::Outcome qxRuleRun::giveUp(const qxRuleNode& node, qxUInt64 start)
{
    noteFailure(static_cast<unsigned int>(&node - m_code->nodes.data()));
    return position() == start || rewind(start) ? NO_MATCH : ERROR;
}

qxRuleRun::Outcome qxRuleRun::matchLiteral(const std::u16string& literal)
{
    qxTokenView& view = m_parser.m_view;
    if (view.end - view.current < static_cast<std::ptrdiff_t>(literal.size()))
        return matchLiteralSlowly(literal);
    const char16_t* place = view.current;
    for (const char16_t token : literal) // most differ in their first tokens
        if (*place++ != token) return NO_MATCH;
    view.current = place;
    return OK;
}

/// Compares tokens as they come, so that nobody waits for more than it takes to see a difference.
qxRuleRun::Outcome qxRuleRun::matchLiteralSlowly(const std::u16string& literal)
{
    return m_parser.checkTokens(literal.data(), static_cast<unsigned int>(literal.size())) ? OK : NO_MATCH;
}

/// The first factor, unless the second one matches where it began.
qxRuleRun::Outcome qxRuleRun::matchExclusion(const qxRuleNode& node)
{
    const qxUInt64 start = position();
    const Outcome outcome = matchSimple(nodeAt(node.value));
    if (outcome != OK) return outcome;
    const qxUInt64 end = position();
    if (!rewind(start)) return ERROR;
    const Outcome excluded = matchSimple(nodeAt(node.other));
    if (excluded == NO_MATCH) return rewind(end) ? OK : ERROR;
    return excluded == ERROR || !rewind(start) ? ERROR : NO_MATCH;
}

qxRuleRun::Outcome qxRuleRun::matchRepeated(const qxRuleNode& node)
{
    const qxUInt64 start = position();
    unsigned int count = 0;
    while (count < node.max) {
        if ((count > 0 || node.isCounted) && !m_parser.hasData()) break;
        if (m_stepsLeft <= 1 && !isStepAllowed()) return raiseSteps();
        --m_stepsLeft;
        const qxUInt64 before = position();
        const Outcome outcome = matchOnce(node);
        if (outcome == ERROR) return ERROR;
        if (outcome == NO_MATCH) break;
        ++count;
        if (position() != before) continue;
        count = std::max(count, node.min); // nothing was taken, and so it would go on
        break;
    }
    return count >= node.min ? OK : giveUp(node, start);
}

qxRuleRun::Outcome qxRuleRun::matchBuiltin(qxParserFunction function)
{
    const qxUInt64 start = position();
    const qxParseResult result = (m_parser.*function)();
    spendSteps((position() - start) / TOKENS_A_STEP);
    return static_cast<Outcome>(result);
}
