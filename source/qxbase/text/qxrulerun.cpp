// SPDX-License-Identifier: see LICENSE

#include "text/qxrulerun.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t FRAMES_KEPT = 4096; // for the next run

} // namespace

void qxRuleRun::setRules(const qxRefPointer<qxRuleSet>& rules)
{
    m_ruleSet = rules;
    m_program.reset();
}

void qxRuleRun::addFunction(const char* name, qxParserFunction function)
{
    m_functions[name] = function;
    m_program.reset();
}

void qxRuleRun::setProgram(std::shared_ptr<const qxRuleProgram> program)
{
    m_program = std::move(program);
    m_code = &m_program->getCode();
    m_activations.assign(m_code->rules.size(), Activation());
}

void qxRuleRun::reset()
{
    m_marks.clear();
    m_farthest = 0;
    m_expectedCount = 0;
    m_hasReachedLimit = false;
}

qxParseResult qxRuleRun::run(const char* name)
{
    // Whatever a function raises, the stack is as it was.
    struct Guard {
        qxRuleRun& run;
        const std::size_t base;
        explicit Guard(qxRuleRun& owner) : run(owner), base(owner.m_frames.size()) { ++run.m_runs; }
        ~Guard()
        {
            run.dropFrames(base);
            if (--run.m_runs == 0 && run.m_frames.capacity() > FRAMES_KEPT)
                std::vector<Frame>().swap(run.m_frames);
        }
    };
    if (m_runs == 0) {
        reset();
        m_start = m_farthest = position();
        m_steps = m_stepsLeft = m_reached = 0;
        m_calls = 0;
        m_parser.setErrorText(qxString());
        if (!m_program) {
            if (!m_ruleSet) m_ruleSet = qxRuleSet::load("", 0);
            setProgram(qxMakeRuleProgram(m_ruleSet, m_functions));
        }
    }
    const Guard guard(*this);
    return runTarget(name);
}

qxParseResult qxRuleRun::runTarget(const char* name)
{
    const std::size_t base = m_frames.size();
    const qxRuleTarget target = m_program->find(name);
    Outcome outcome = OPENED;
    if (target.kind == qxRuleTarget::RULE)
        outcome = enterRule(target.index, NONE, false);
    else
        outcome = callFunction(target, name, NONE);
    if (outcome == OPENED) outcome = runFrames(base);
    return static_cast<qxParseResult>(outcome);
}

/// Runs until the frames above `base` are finished.
qxRuleRun::Outcome qxRuleRun::runFrames(std::size_t base)
{
    Outcome outcome = OPENED;
    for (;;) {
        if (outcome == OPENED) outcome = evaluateTop();
        if (outcome == OPENED) continue;
        if (outcome != ERROR) outcome = deliver(outcome);
        if (outcome == ERROR) {
            unwind(base);
            return ERROR;
        }
        if (m_frames.size() == base) return outcome;
    }
}

qxRuleRun::Outcome qxRuleRun::evaluateTop()
{
    const Frame& frame = m_frames.back();
    switch (frame.kind) {
    case Frame::BODY:
        return evaluate(frame.node);
    case Frame::REPETITION:
        return evaluateOnce(frame.index);
    default:
        return evaluate(frame.isSecond ? nodeAt(frame.index).other : nodeAt(frame.index).value);
    }
}

qxRuleRun::Outcome qxRuleRun::evaluate(unsigned int node)
{
    if (m_stepsLeft <= 1 && !isStepAllowed())
        return raiseLimit("Too many steps in rule '%s' at (Line:%d,Col:%d) -> %s");
    --m_stepsLeft;
    const qxRuleNode& element = nodeAt(node);
    if (m_program->isSimple(node) && !m_isTracing) {
        const Outcome outcome = matchSimple(element);
        if (outcome == NO_MATCH) noteFailure(node);
        return outcome;
    }
    if (!element.isRepeated()) return evaluateOnce(node);
    if (!m_isTracing && isSureToFail(node)) {
        noteFailure(node);
        return element.min == 0 ? OK : NO_MATCH;
    }
    if (element.max == 1 && !element.isCounted &&
        (element.kind == qxRuleNode::GROUP || element.kind == qxRuleNode::CALL))
        return evaluateOnce(node, true);
    return openRepetition(node);
}

/// The element without its suffix; with `isOptional` a match of nothing in place of none.
qxRuleRun::Outcome qxRuleRun::evaluateOnce(unsigned int node, bool isOptional)
{
    const qxRuleNode& element = nodeAt(node);
    Outcome outcome = OK;
    switch (element.kind) {
    case qxRuleNode::MARK:
        setMark(0);
        break;
    case qxRuleNode::MATCH_MARK:
        setMark(1); // what stands behind a term that failed is only read past
        break;
    case qxRuleNode::CALL:
        return evaluateCall(node, isOptional);
    case qxRuleNode::GROUP:
        return openBody(element.value, isOptional);
    case qxRuleNode::EXCLUSION:
        if (!m_program->isSimple(node) || m_isTracing) {
            pushFrame(Frame::EXCLUSION, node);
            return OPENED;
        }
        [[fallthrough]];
    case qxRuleNode::LITERAL:
    case qxRuleNode::SET:
        outcome = matchOnce(element);
        if (outcome == NO_MATCH) noteFailure(node);
        break;
    case qxRuleNode::FAULT: {
        const qxRuleFault& fault = m_code->faults[element.value];
        return raise(fault.format, m_code->bodies[m_frames.back().index].rule, fault.place);
    }
    }
    return outcome;
}

qxRuleRun::Outcome qxRuleRun::evaluateCall(unsigned int node, bool isOptional)
{
    const unsigned int name = nodeAt(node).value;
    const qxRuleTarget& target = m_program->getTarget(name);
    if (target.kind == qxRuleTarget::RULE) return enterRule(target.index, node, isOptional);
    const Outcome outcome = callFunction(target, m_code->names[name], node);
    return outcome == NO_MATCH && isOptional ? OK : outcome;
}

/// What the frame on top waited for has come.
qxRuleRun::Outcome qxRuleRun::deliver(Outcome outcome)
{
    switch (m_frames.back().kind) {
    case Frame::BODY:
        return deliverToBody(outcome);
    case Frame::REPETITION:
        return deliverToRepetition(outcome);
    default:
        return deliverToExclusion(outcome);
    }
}

qxRuleRun::Outcome qxRuleRun::deliverToBody(Outcome outcome)
{
    Frame& frame = m_frames.back();
    if (outcome == OK) {
        frame.node = nodeAt(frame.node).next;
        if (frame.node != NONE) return OPENED;
    } else if (m_code->alternatives[frame.alternative].holdsFault) { // it stands in what is read past now
        return evaluateOnce(m_code->rules[m_code->bodies[frame.index].rule].fault);
    }
    if (!endAlternative(frame, outcome == OK)) return ERROR;
    return startAlternative(m_code->alternatives[frame.alternative].next);
}

/// Goes back to the start of the body, or notes that an alternative matched; false when that cannot be.
bool qxRuleRun::endAlternative(Frame& frame, bool isMatch)
{
    if (isMatch && !frame.hasWinner) {
        frame.hasWinner = true;
        frame.middle = position();
        frame.winnerMarks = static_cast<unsigned int>(m_marks.getHeight());
        frame.winnerCalls = m_calls;
        return true;
    }
    if (!frame.hasWinner) return takeBack(frame);
    m_marks.undo(frame.isWinnerAside ? frame.marks : frame.winnerMarks);
    if (frame.isWinnerAside && frame.calls != m_calls) m_parser.restoreState(frame.state, false);
    return true;
}

/// The first from `alternative` on that has to be run; NONE when there is no more.
unsigned int qxRuleRun::findAlternative(const Frame& frame, unsigned int alternative)
{
    for (; alternative != NONE && !m_isTracing; alternative = m_code->alternatives[alternative].next) {
        const qxRuleStart& start = m_program->getStart(alternative);
        if (frame.hasWinner && !start.isImpure) continue;
        if (start.mustRun || start.isNullable) break;
        if (frame.hasWinner && !rewind(frame.start)) break; // the error is met again where it is run
        if (!isSureToFail(start)) break;
        noteAlternative(alternative);
    }
    return alternative;
}

qxRuleRun::Outcome qxRuleRun::startAlternative(unsigned int alternative)
{
    Frame& frame = m_frames.back();
    frame.alternative = findAlternative(frame, alternative);
    if (frame.alternative == NONE) return finishBody();
    frame.node = m_code->alternatives[frame.alternative].first;
    if (!frame.hasWinner) return OPENED;
    if (!frame.isWaiting && !frame.isWinnerAside) {
        frame.isWaiting = true;
        m_waiting.push_back(static_cast<unsigned int>(m_frames.size() - 1));
    }
    return rewind(frame.start) ? OPENED : ERROR;
}

qxRuleRun::Outcome qxRuleRun::finishBody()
{
    Frame& frame = m_frames.back();
    Outcome outcome = frame.hasWinner ? OK : NO_MATCH;
    if (frame.hasWinner && position() != frame.middle && !rewind(frame.middle)) return ERROR;
    if (frame.isWinnerAside) bringWinnerBack(frame);
    if (frame.isRule && m_isTracing)
        traceExit("Exit Rule        : %s%s(Line:%d,Col:%d)\tResult:%s",
                  ruleName(m_code->bodies[frame.index].rule), outcome);
    if (frame.isOptional) outcome = OK;
    popFrame();
    m_parser.reportProgress();
    return outcome;
}

qxRuleRun::Outcome qxRuleRun::deliverToRepetition(Outcome outcome)
{
    Frame& frame = m_frames.back();
    const qxRuleNode& element = nodeAt(frame.index);
    if (outcome != OK) return finishRepetition(frame.count >= element.min);
    const bool tookNothing = position() == frame.middle;
    ++frame.count;
    if (frame.count == element.max) return finishRepetition(true);
    if (tookNothing && (frame.count >= element.min || isPure(element))) return finishRepetition(true);
    if (!m_parser.hasData()) return finishRepetition(frame.count >= element.min);
    if (m_stepsLeft <= 1 && !isStepAllowed())
        return raiseLimit("Too many steps in rule '%s' at (Line:%d,Col:%d) -> %s");
    --m_stepsLeft;
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
        frame.middle = position();
        frame.isSecond = true;
        return rewind(frame.start) ? OPENED : ERROR;
    }
    const bool isMatch = frame.isSecond && outcome == NO_MATCH;
    if (!(isMatch ? rewind(frame.middle) : takeBack(frame))) return ERROR;
    popFrame();
    return isMatch ? OK : NO_MATCH;
}

qxRuleRun::Outcome qxRuleRun::enterRule(unsigned int rule, unsigned int caller, bool isOptional)
{
    const unsigned int body = m_code->rules[rule].body;
    if (!m_isTracing && isSureToFail(m_program->getBodyStart(body))) {
        if (caller != NONE) noteFailure(caller);
        return isOptional ? OK : NO_MATCH;
    }
    if (m_isTracing) trace("Parsing Rule     : %s%s(Line:%d,Col:%d)", ruleName(rule));
    Activation& activation = m_activations[rule];
    // Nothing has happened since that would make it go another way this time.
    const bool isEndless = activation.position == position() && activation.calls == m_calls;
    Frame& frame = pushFrame(Frame::BODY, body);
    frame.isRule = true;
    frame.isOptional = isOptional;
    frame.caller = caller;
    frame.outerPosition = std::exchange(activation.position, position());
    frame.outerCalls = std::exchange(activation.calls, m_calls);
    frame.node = m_code->alternatives[m_code->bodies[body].first].first;
    ++m_depth;
    if (isEndless) return raiseLimit("Left recursion in rule '%s' at (Line:%d,Col:%d) -> %s");
    if (m_frames.size() > m_maxDepth)
        return raiseLimit("Rules nested too deeply in rule '%s' at (Line:%d,Col:%d) -> %s");
    return startAlternative(m_code->bodies[body].first);
}

qxRuleRun::Outcome qxRuleRun::openBody(unsigned int body, bool isOptional)
{
    Frame& frame = pushFrame(Frame::BODY, body);
    frame.isOptional = isOptional;
    return startAlternative(m_code->bodies[body].first);
}

qxRuleRun::Outcome qxRuleRun::openRepetition(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (element.max == 0) return OK;
    if (element.isCounted && !m_parser.hasData()) return element.min == 0 ? OK : NO_MATCH;
    pushFrame(Frame::REPETITION, node).middle = position();
    return OPENED;
}

/// True when the node does the same each time as long as the input stays where it is.
bool qxRuleRun::isPure(const qxRuleNode& element) const
{
    if (element.kind == qxRuleNode::GROUP) return !m_program->getBodyStart(element.value).isImpure;
    if (element.kind != qxRuleNode::CALL) return false;
    const qxRuleTarget& target = m_program->getTarget(element.value);
    return target.kind == qxRuleTarget::RULE &&
           !m_program->getBodyStart(m_code->rules[target.index].body).isImpure;
}

/// True when the node, which calls or groups, cannot match and does nothing before it finds out.
bool qxRuleRun::isSureToFail(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (element.kind == qxRuleNode::GROUP) return isSureToFail(m_program->getBodyStart(element.value));
    if (element.kind != qxRuleNode::CALL) return false;
    const qxRuleTarget& target = m_program->getTarget(element.value);
    return target.kind == qxRuleTarget::RULE &&
           isSureToFail(m_program->getBodyStart(m_code->rules[target.index].body));
}

bool qxRuleRun::isSureToFail(const qxRuleStart& start)
{
    if (start.mustRun || start.isNullable) return false;
    return !m_parser.hasData() || !start.admits(*m_parser.m_view.current);
}

qxRuleRun::Outcome qxRuleRun::callFunction(const qxRuleTarget& target, std::string_view name,
                                           unsigned int node)
{
    if (m_isTracing) trace("Parsing Function : %s%s(Line:%d,Col:%d)", name);
    const bool isBuiltin = target.kind == qxRuleTarget::SET || target.kind == qxRuleTarget::BUILTIN;
    const Outcome outcome = isBuiltin ? matchBuiltin(target.function) : callOwner(target.function, name);
    if (m_isTracing) traceExit("Exit Function    : %s%s(Line:%d,Col:%d)\tResult:%s", name, outcome);
    if (outcome == NO_MATCH && node != NONE) noteFailure(node);
    if (outcome == ERROR && node != NONE) wrapError(m_frames.size(), node);
    return outcome;
}

/// What a function did that did not match is taken back, whatever it said.
qxRuleRun::Outcome qxRuleRun::callOwner(qxParserFunction function, std::string_view name)
{
    const qxUInt64 state = prepareCall();
    const qxUInt64 start = position();
    const std::size_t marks = m_marks.getHeight();
    qxParseResult result = QX_PARSE_ERROR;
    if (function)
        result = (m_parser.*function)();
    else
        result = m_parser.parseFunction(
            qxString(name.data(), std::min<std::size_t>(name.size(), qxString::MAX_LENGTH)));
    if (result == QX_PARSE_OK) {
        m_marks.settle(m_frames.empty() ? 0 : m_frames.back().marks);
        return OK;
    }
    if (result != QX_PARSE_NO_MATCH) return ERROR;
    m_marks.undo(std::min(marks, m_marks.getHeight()));
    m_parser.restoreState(state, true);
    return position() == start || rewind(start) ? NO_MATCH : ERROR;
}

qxRuleRun::Frame& qxRuleRun::pushFrame(Frame::Kind kind, unsigned int index)
{
    Frame& frame = m_frames.emplace_back();
    frame.kind = kind;
    frame.index = index;
    frame.start = position();
    frame.marks = static_cast<unsigned int>(m_marks.getHeight());
    frame.calls = m_calls;
    return frame;
}

void qxRuleRun::popFrame()
{
    const Frame& frame = m_frames.back();
    if (frame.isWaiting) m_waiting.pop_back();
    if (frame.isRule) {
        m_activations[m_code->bodies[frame.index].rule] = {frame.outerPosition, frame.outerCalls};
        --m_depth;
    }
    m_frames.pop_back();
    m_stated = std::min(m_stated, m_frames.size());
}

/// Goes back to where the input, the marks and what functions keep stood when the frame began.
bool qxRuleRun::takeBack(Frame& frame)
{
    m_marks.undo(frame.marks);
    if (frame.calls != m_calls) {
        m_parser.restoreState(frame.state, true);
        frame.calls = m_calls;
    }
    return position() == frame.start || rewind(frame.start);
}

void qxRuleRun::dropFrames(std::size_t base)
{
    while (m_frames.size() > base) {
        if (m_frames.back().isWinnerAside) m_aside.resize(m_frames.back().aside);
        popFrame();
    }
}

/// Makes everything as functions must find it, and remembers the owner's state for all that may go back to it.
qxUInt64 qxRuleRun::prepareCall()
{
    if (!m_waiting.empty()) putWinnersAside();
    const qxUInt64 state = m_parser.saveState();
    for (; m_stated < m_frames.size(); ++m_stated) m_frames[m_stated].state = state;
    ++m_calls;
    return state;
}

/// Takes back what the alternatives did that matched in the frames that wait; marks that were set since stay.
void qxRuleRun::putWinnersAside()
{
    const std::size_t lowest = m_waiting.front();
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
        if (!frame.isWaiting) continue;
        const std::size_t end = frame.winnerMarks - base;
        keepUntil(begin);
        frame.aside = static_cast<unsigned int>(m_aside.size());
        for (; next < end; ++next) m_aside.push_back(changes[next]);
        removed += end - begin;
        frame.isWaiting = false;
        frame.isWinnerAside = true;
        if (frame.winnerCalls == frame.calls) continue;
        frame.winnerState = m_parser.saveState();
        m_parser.restoreState(frame.state, false);
    }
    keepUntil(changes.size());
    m_waiting.clear();
}

/// The alternative that matched counts, and none of the others.
void qxRuleRun::bringWinnerBack(Frame& frame)
{
    m_marks.undo(frame.marks);
    for (std::size_t i = frame.aside; i < m_aside.size(); ++i) m_marks.apply(m_aside[i]);
    m_aside.resize(frame.aside);
    frame.isWinnerAside = false;
    if (frame.winnerCalls != frame.calls)
        m_parser.restoreState(frame.winnerState, true);
    else if (frame.calls != m_calls)
        m_parser.restoreState(frame.state, true);
}
