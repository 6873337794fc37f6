// SPDX-License-Identifier: see LICENSE

#include "text/qxrulerun.h"

#include "qxmessage.h"
#include "text/qxtextpiece.h"

#include <algorithm>

namespace
{

constexpr qxUInt64 STEPS_A_TOKEN = 1000;    // that are allowed for each token reached
constexpr qxUInt64 STEPS_AT_ONCE = 1048576; // before the next look
constexpr unsigned int LONGEST_NAME = 255;  // bytes of what is quoted in errors
constexpr unsigned int LONGEST_REST = 1000;
constexpr unsigned int LONGEST_ERROR = 4000; // around which no other is put
constexpr unsigned int LONGEST_ELEMENT = 60;
constexpr unsigned int DEEPEST_INDENT = 40;

} // namespace

qxString qxRuleRun::getExpected() const
{
    std::vector<std::string_view> texts;
    std::vector<unsigned int> open(m_expected, m_expected + m_expectedCount);
    std::reverse(open.begin(), open.end());
    while (!open.empty() && texts.size() < MOST_EXPECTED) {
        const qxRuleNode& node = nodeAt(open.back());
        open.pop_back();
        if (node.kind == qxRuleNode::GROUP) { // say what it begins with
            const std::size_t count = open.size();
            for (unsigned int a = m_code->bodies[node.value].first;
                 a != NONE && open.size() < count + MOST_EXPECTED; a = m_code->alternatives[a].next)
                open.push_back(firstOf(a));
            std::reverse(open.begin() + static_cast<std::ptrdiff_t>(count), open.end());
            continue;
        }
        const std::string_view text = m_code->textOf(node);
        if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
    }
    qxString expected;
    for (const std::string_view text : texts) {
        if (!expected.isEmpty()) expected += ", ";
        expected += qxPieceOf(text, LONGEST_ELEMENT);
        if (text.size() > LONGEST_ELEMENT) expected += "...";
    }
    return expected;
}

void qxRuleRun::setMark(unsigned char flag)
{
    m_marks.add({static_cast<unsigned int>(position()), depthOfRules(), flag});
}

bool qxRuleRun::takeMark(qxParserMark& mark)
{
    return m_marks.take(m_takesOldest, mark);
}

/// Called when the steps that were allowed are used up: allows more, as long as the run gets on in its input.
bool qxRuleRun::isStepAllowed()
{
    m_reached = std::max({m_reached, position() - std::min(m_start, position()), m_farthest - m_start});
    const qxUInt64 allowed = m_maxSteps + m_reached * STEPS_A_TOKEN;
    if (m_steps >= allowed) return false;
    m_stepsLeft = std::min(allowed - m_steps, STEPS_AT_ONCE) + 1;
    m_steps += m_stepsLeft - 1;
    return true;
}

void qxRuleRun::noteFailureHere(unsigned int node)
{
    if (position() > m_farthest) {
        m_farthest = position();
        m_expectedCount = 0;
    }
    unsigned int* const end = m_expected + m_expectedCount;
    if (m_expectedCount == MOST_EXPECTED || std::find(m_expected, end, node) != end) return;
    m_expected[m_expectedCount++] = node;
}

/// Notes what the alternatives begin with that were left out.
void qxRuleRun::noteAlternativesHere(unsigned int first, unsigned int end)
{
    for (; first != end; first = m_code->alternatives[first].next) noteFailureHere(firstOf(first));
}

/// The first element of an alternative that looks at the input.
unsigned int qxRuleRun::firstOf(unsigned int alternative) const
{
    unsigned int node = m_code->alternatives[alternative].first;
    while (nodeAt(node).next != NONE &&
           (nodeAt(node).kind == qxRuleNode::MARK || nodeAt(node).kind == qxRuleNode::MATCH_MARK))
        node = nodeAt(node).next;
    return node;
}

/// Sets an error of the text of a rule.
qxRuleRun::Outcome qxRuleRun::raise(const char* format, unsigned int rule, unsigned int place)
{
    const qxRulePlace found = m_code->placeIn(m_code->rules[rule], place);
    m_errorPlace = place;
    m_parser.setErrorText(qxString::str(format, qxPieceOf(ruleName(rule), LONGEST_NAME), found.line,
                                        found.column, qxPieceOf(found.rest, LONGEST_REST)));
    return ERROR;
}

/// Ends a run that would take too much, at the current element of the innermost body.
qxRuleRun::Outcome qxRuleRun::raiseLimit(const char* format)
{
    m_hasReachedLimit = true;
    std::size_t i = m_frames.size() - 1;
    while (m_frames[i].kind != Frame::BODY) --i; // there is one under all others
    return raise(format, m_code->bodies[m_frames[i].index].rule,
                 nodeAt(indexOf(*m_frames[i].operation)).begin);
}

qxRuleRun::Outcome qxRuleRun::raiseSteps()
{
    return raiseLimit("Too many steps in rule '%s' at (Line:%d,Col:%d) -> %s");
}

qxRuleRun::Outcome qxRuleRun::raiseDepth()
{
    return raiseLimit("Rules nested too deeply in rule '%s' at (Line:%d,Col:%d) -> %s");
}

/// Closes the frames of this run after an error, which gets the place of each call that it passes through.
void qxRuleRun::unwind()
{
    while (m_frames.size() > m_base) {
        const Frame frame = m_frames.back();
        if (frame.isRule && m_isTracing)
            traceExit("Exit Rule        : %s%s(Line:%d,Col:%d)\tResult:%s",
                      ruleName(m_code->bodies[frame.index].rule), ERROR);
        for (; m_callers.size() > frame.depth; m_callers.pop_back()) wrapError(m_callers.back());
        dropFrames(m_frames.size() - 1);
    }
}

/// A function or rule that was called at `node` returned an error: says where.
void qxRuleRun::wrapError(unsigned int node)
{
    if (node == NONE) return;
    const unsigned int begin = nodeAt(node).begin;
    if (m_errorPlace == NONE) m_errorPlace = begin;
    const qxString inner = m_parser.getErrorText();
    if (m_hasReachedLimit || inner.length() > LONGEST_ERROR) return;
    const qxRuleEntry& rule = m_code->ruleAt(begin);
    const qxRulePlace found = m_code->placeIn(rule, begin);
    const qxString error = qxString::str("Parse Error:'%s' in rule '%s' at (Line:%d,Col:%d) -> %s", inner,
                                         qxPieceOf(m_code->names[rule.name], LONGEST_NAME), found.line,
                                         found.column, qxPieceOf(found.rest, LONGEST_REST));
    if (error.length() <= LONGEST_ERROR) m_parser.setErrorText(error);
}

void qxRuleRun::trace(const char* format, std::string_view name)
{
    qxMessage::message(QX_LEVEL_DEBUG, format, qxString::spaces(std::min(2 * depthOfRules(), DEEPEST_INDENT)),
                       qxPieceOf(name, LONGEST_NAME), m_parser.getLine(), m_parser.getColumn());
}

void qxRuleRun::traceExit(const char* format, std::string_view name, Outcome outcome)
{
    const auto result = static_cast<qxParseResult>(outcome);
    const unsigned int open = depthOfRules();
    const unsigned int depth = open - std::min(open, format[5] == 'R' ? 1U : 0U); // as at the entry
    qxMessage::message(QX_LEVEL_DEBUG, format, qxString::spaces(std::min(2 * depth, DEEPEST_INDENT)),
                       qxPieceOf(name, LONGEST_NAME), m_parser.getLine(), m_parser.getColumn(),
                       qxBasicParser::parseResultString(result));
}
