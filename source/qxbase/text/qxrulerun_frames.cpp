// SPDX-License-Identifier: see LICENSE

#include "text/qxrulerun.h"

#include "text/qxtextpiece.h"

#include <algorithm>
#include <utility>

/// As evaluate, with every call of a function seen.
qxRuleRun::Outcome qxRuleRun::evaluateTraced(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (!element.isRepeated()) return evaluateOnce(node);
    if (m_operations[node].isOptional && element.kind == qxRuleNode::GROUP)
        return enterOnce(element.value, node, false, true);
    return openRepetition(node);
}

/// The element without its suffix.
qxRuleRun::Outcome qxRuleRun::evaluateOnce(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    switch (element.kind) {
    case qxRuleNode::MARK:
    case qxRuleNode::MATCH_MARK:
        return evaluateMark(element.kind == qxRuleNode::MARK ? 0 : 1);
    case qxRuleNode::CALL: {
        const qxRuleTarget& target = m_program->getTarget(element.value);
        if (target.kind == qxRuleTarget::RULE)
            return enterOnce(m_code->rules[target.index].body, node, true, false);
        return callFunction(target, m_code->names[element.value], node);
    }
    case qxRuleNode::GROUP:
        return enterOnce(element.value, node, false, false);
    case qxRuleNode::FAULT:
        return evaluateFault(node);
    case qxRuleNode::EXCLUSION:
        if (!m_program->isSimple(node) || m_isTracing) {
            pushFrame(Frame::EXCLUSION, node);
            return OPENED;
        }
        break;
    default:
        break;
    }
    const Outcome outcome = matchOnce(element);
    if (outcome == NO_MATCH) noteFailure(node);
    return outcome;
}

/// Calls a function, the unknown one when it is null.
qxRuleRun::Outcome qxRuleRun::callFunction(const qxRuleTarget& target, std::string_view name,
                                           unsigned int node)
{
    if (m_isTracing) trace("Parsing Function : %s%s(Line:%d,Col:%d)", name);
    const bool isBuiltin = target.kind == qxRuleTarget::SET || target.kind == qxRuleTarget::BUILTIN;
    const Outcome outcome = isBuiltin ? matchBuiltin(target.function) : callOwner(target.function, name);
    if (m_isTracing) traceExit("Exit Function    : %s%s(Line:%d,Col:%d)\tResult:%s", name, outcome);
    if (outcome == NO_MATCH && node != NONE) noteFailure(node);
    if (outcome == ERROR && node != NONE) wrapError(node);
    return outcome;
}

/// The next alternative behind one that matched; only those count that call functions. NONE when there is no more.
unsigned int qxRuleRun::findLaterAlternative(const Frame& frame, unsigned int alternative) const
{
    const qxTokenView& view = m_parser.m_view;
    const bool isSeen = frame.start >= view.bufferPos && frame.start < m_parser.positionOf(view.end);
    for (; alternative != NONE && !m_isTracing; alternative = m_alternatives[alternative].next) {
        const qxRuleStart& start = m_starts[alternative];
        if (!start.isImpure) continue;
        if (start.mustRun || start.isNullable || !isSeen || start.admits(*m_parser.tokenAt(frame.start)))
            break;
    }
    return alternative;
}

/// An alternative behind the one that matched is through; nothing of it counts.
qxRuleRun::Outcome qxRuleRun::endLaterAlternative(Frame& frame)
{
    const Winner& winner = m_winners[frame.winner];
    const unsigned int next = findLaterAlternative(frame, m_alternatives[frame.alternative].next);
    if (next == NONE) return bringWinnerBack(frame) ? finishBody(OK) : ERROR;
    m_marks.undo(winner.isAside ? frame.marks : winner.marks);
    if (winner.isAside && frame.calls != m_calls) m_parser.restoreState(frame.state, false);
    startAlternative(frame, next);
    return rewind(frame.start) ? OPENED : ERROR;
}

/// For the rule in the frame on top, which may have called itself before anything was taken.
qxRuleRun::Outcome qxRuleRun::enterCircle()
{
    Frame& frame = m_frames.back();
    const unsigned int rule = m_bodies[frame.index].rule;
    const Activation now{frame.start, m_calls};
    const Activation before = std::exchange(m_activations[rule], now);
    m_reentries.push_back({rule, before});
    frame.isCircle = true;
    // Nothing has happened since that would make it go another way this time.
    const bool isEndless = before.position == now.position && before.calls == now.calls;
    return isEndless ? raiseLimit("Left recursion in rule '%s' at (Line:%d,Col:%d) -> %s") : OPENED;
}

qxRuleRun::Outcome qxRuleRun::openRepetition(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (element.max == 0) return OK;
    if (element.isCounted && !m_parser.hasData()) return element.min == 0 ? OK : NO_MATCH;
    if (!m_isTracing && isSureToFail(element)) {
        noteFailure(node);
        return element.min == 0 ? OK : NO_MATCH;
    }
    Frame& frame = pushFrame(Frame::REPETITION, node);
    frame.count = 0;
    frame.middle = position();
    return OPENED;
}

qxRuleRun::Outcome qxRuleRun::deliverToRepetition(Outcome outcome)
{
    Frame& frame = m_frames.back();
    const qxRuleNode& element = nodeAt(frame.index);
    if (outcome != OK) return finishRepetition(frame.count >= element.min);
    const bool tookNothing = position() == frame.middle;
    ++frame.count;
    if (frame.count == element.max) return finishRepetition(true);
    if (tookNothing && frame.count >= element.min) return finishRepetition(true);
    const bool didNothing = tookNothing && isPure(element) && m_marks.getHeight() == frame.marks;
    if (didNothing) return finishRepetition(true); // and so it would go on
    if (!m_parser.hasData()) return finishRepetition(frame.count >= element.min);
    frame.middle = position();
    return OPENED;
}

qxRuleRun::Outcome qxRuleRun::finishRepetition(bool isMatch)
{
    if (!isMatch && !takeBack(m_frames.back())) return ERROR;
    popFrame();
    return isMatch ? OK : NO_MATCH;
}

qxRuleRun::Outcome qxRuleRun::deliverToExclusion(Outcome outcome)
{
    Frame& frame = m_frames.back();
    if (!frame.isSecond && outcome == OK) {
        addWinner(frame); // the second one must find everything as the first one did
        frame.isSecond = true;
        return rewind(frame.start) ? OPENED : ERROR;
    }
    const bool isMatch = frame.isSecond && outcome == NO_MATCH;
    if (frame.isSecond && !isMatch) {
        dropWinner();
        frame.winner = NONE;
    }
    if (!(isMatch ? bringWinnerBack(frame) : takeBack(frame))) return ERROR;
    popFrame();
    return isMatch ? OK : NO_MATCH;
}

/// What a rule or group begins with; null for other elements.
const qxRuleStart* qxRuleRun::startOf(const qxRuleNode& element) const
{
    if (element.kind == qxRuleNode::GROUP) return &m_program->getBodyStart(element.value);
    if (element.kind != qxRuleNode::CALL) return nullptr;
    const qxRuleTarget& target = m_program->getTarget(element.value);
    if (target.kind != qxRuleTarget::RULE) return nullptr;
    return &m_program->getBodyStart(m_code->rules[target.index].body);
}

/// True when the element does the same each time as long as the input stays where it is.
bool qxRuleRun::isPure(const qxRuleNode& element) const
{
    const qxRuleStart* const start = startOf(element);
    return start && !start->isImpure;
}

/// True when the element cannot match and does nothing before it finds out.
bool qxRuleRun::isSureToFail(const qxRuleNode& element)
{
    const qxRuleStart* const start = startOf(element);
    if (!start || start->mustRun || start->isNullable) return false;
    return !m_parser.hasData() || !start->admits(*m_parser.m_view.current);
}

void qxRuleRun::dropFrames(std::size_t base)
{
    while (m_frames.size() > base) {
        if (m_frames.back().winner != NONE) dropWinner();
        popFrame();
    }
}

/// Forgets the winner on top.
void qxRuleRun::dropWinner()
{
    if (m_winners.back().isAside) m_aside.resize(m_winners.back().aside);
    m_winners.pop_back();
    m_firstWaiting = std::min(m_firstWaiting, m_winners.size());
}

/// Takes back what the alternatives did that matched in the frames that wait; marks that were set since stay.
void qxRuleRun::putWinnersAside()
{
    std::size_t waiting = m_firstWaiting;
    const std::size_t lowest = m_winners[waiting].frame;
    const std::size_t base = m_frames[lowest].marks;
    std::vector<qxMarkQueue::Change> changes;
    m_marks.undo(base, changes);
    std::size_t removed = 0; // changes of winners in the frames below
    std::size_t next = 0;    // the first change that was not looked at
    const auto keepUntil = [&](std::size_t end) {
        for (; next < end; ++next) m_marks.apply(changes[next]);
    };
    for (std::size_t i = lowest; i < m_frames.size(); ++i) {
        Frame& frame = m_frames[i];
        const std::size_t begin = frame.marks - base;
        frame.marks -= static_cast<unsigned int>(removed);
        if (waiting == m_winners.size() || m_winners[waiting].frame != i) continue;
        Winner& winner = m_winners[waiting++];
        const std::size_t end = winner.marks - base;
        keepUntil(begin);
        winner.aside = static_cast<unsigned int>(m_aside.size());
        winner.isAside = true;
        for (; next < end; ++next) m_aside.push_back(changes[next]);
        removed += end - begin;
        if (winner.calls == frame.calls) continue;
        winner.state = m_parser.saveState();
        m_parser.restoreState(frame.state, false);
    }
    keepUntil(changes.size());
    m_firstWaiting = m_winners.size();
}

/// The alternative that matched counts, and none of the others; false when the input cannot go to its end.
bool qxRuleRun::bringWinnerBack(Frame& frame)
{
    const Winner winner = m_winners.back();
    m_marks.undo(winner.isAside ? frame.marks : winner.marks);
    if (winner.isAside) {
        for (std::size_t i = winner.aside; i < m_aside.size(); ++i) m_marks.apply(m_aside[i]);
        if (winner.calls != frame.calls)
            m_parser.restoreState(winner.state, true);
        else if (frame.calls != m_calls)
            m_parser.restoreState(frame.state, true);
    }
    dropWinner();
    frame.winner = NONE;
    return rewind(winner.end);
}
