// SPDX-License-Identifier: see LICENSE

#include "text/qxrulerun.h"

#include "text/qxtextpiece.h"

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
    m_operations = m_program->getOperations();
    m_starts = m_program->getStarts();
    m_alternatives = m_code->alternatives.data();
    m_bodies = m_code->bodies.data();
    m_entrances = m_program->getEntrances();
    m_activations.assign(m_code->rules.size(), Activation());
}

void qxRuleRun::reset()
{
    m_marks.clear();
    m_farthest = 0;
    m_expectedCount = 0;
    m_errorPlace = NONE;
    m_hasReachedLimit = false;
}

qxParseResult qxRuleRun::run(const char* name)
{
    // Whatever a function raises, the stack is as it was.
    struct Guard {
        qxRuleRun& run;
        const std::size_t outerBase;
        explicit Guard(qxRuleRun& owner)
            : run(owner), outerBase(std::exchange(owner.m_base, owner.m_frames.size()))
        {
            ++run.m_runs;
        }
        ~Guard()
        {
            run.dropFrames(run.m_base);
            run.m_base = outerBase;
            if (--run.m_runs > 0) return;
            run.m_frames.shrink(FRAMES_KEPT);
            run.m_callers.shrink(FRAMES_KEPT);
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
    const qxRuleTarget target = m_program->find(name);
    if (target.kind != qxRuleTarget::RULE)
        return static_cast<qxParseResult>(callFunction(target, name, NONE));
    Outcome outcome = enterOnce(m_code->rules[target.index].body, NONE, true, false);
    if (outcome == OPENED) outcome = runFrames();
    return static_cast<qxParseResult>(outcome);
}

/// Runs until the frames of this run are finished.
qxRuleRun::Outcome qxRuleRun::runFrames()
{
    for (;;) {
        const bool isPlain = m_frames.back().kind == Frame::BODY && !m_isTracing;
        Outcome outcome = isPlain ? runBody() : runFactor();
        while (outcome != OPENED) {
            if (outcome == ERROR) {
                unwind();
                return ERROR;
            }
            if (m_frames.size() == m_base) return outcome;
            outcome = deliver(outcome);
        }
    }
}

/// Evaluates the elements of the body on top until one opens, or the body is finished.
inline qxRuleRun::Outcome qxRuleRun::runBody()
{
    for (;;) {
        if (m_stepsLeft <= 1 && !isStepAllowed()) return raiseSteps();
        --m_stepsLeft;
        const qxRuleOperation* const operation = m_frames.back().operation;
        const Outcome outcome = evaluate(*operation);
        if (outcome == NO_MATCH) return endNoMatch();
        if (outcome != OK) return outcome;
        if (!operation->next) return endMatch();
        m_frames.back().operation =
            operation->next; // it is the same frame, though a function may have moved it
    }
}

/// Evaluates what stands next in the frame on top, where that is not just the next element of a body.
qxRuleRun::Outcome qxRuleRun::runFactor()
{
    if (m_stepsLeft <= 1 && !isStepAllowed()) return raiseSteps();
    --m_stepsLeft;
    const Frame& frame = m_frames.back();
    if (frame.kind == Frame::REPETITION) return evaluateOnce(frame.index);
    if (frame.kind == Frame::BODY) return evaluateTraced(indexOf(*frame.operation));
    const unsigned int factor = frame.isSecond ? nodeAt(frame.index).other : nodeAt(frame.index).value;
    return m_isTracing ? evaluateTraced(factor) : evaluate(m_operations[factor]);
}

[[gnu::always_inline]] inline qxRuleRun::Outcome qxRuleRun::evaluate(const qxRuleOperation& operation)
{
    typedef qxRuleOperation Operation;
    qxTokenView& view = m_parser.m_view;
    Outcome outcome = OK;
    switch (operation.kind) {
    case Operation::TOKEN:
        if (m_parser.hasData() && *view.current == operation.token)
            ++view.current;
        else
            outcome = NO_MATCH;
        break;
    case Operation::LITERAL:
        outcome = matchLiteral(operation.literal());
        break;
    case Operation::SET:
        outcome = matchSet(operation.set());
        break;
    case Operation::SETS:
        return matchSets(operation);
    case Operation::BUILTIN:
        outcome = matchBuiltin(operation.function);
        if (outcome == ERROR) wrapError(indexOf(operation));
        break;
    case Operation::SIMPLE:
        outcome = matchSimple(nodeAt(indexOf(operation)));
        break;
    case Operation::MARK:
        return evaluateMark(0);
    case Operation::MATCH_MARK:
        return evaluateMark(1); // what stands behind an element that failed is only read past
    case Operation::FUNCTION:
        outcome = callOwner(operation);
        break;
    case Operation::RULE:
    case Operation::GROUP:
        return operation.isLast ? enterLast(operation) : enter(operation);
    case Operation::REPETITION:
        return openRepetition(indexOf(operation));
    case Operation::EXCLUSION:
        pushFrame(Frame::EXCLUSION, indexOf(operation));
        return OPENED;
    case Operation::FAULT:
        return evaluateFault(indexOf(operation));
    }
    if (outcome == NO_MATCH) noteFailure(indexOf(operation));
    return outcome;
}

/// A set with a suffix, in one scan where that is all in memory.
inline qxRuleRun::Outcome qxRuleRun::matchSets(const qxRuleOperation& operation)
{
    qxTokenView& view = m_parser.m_view;
    const qxCharSet& set = operation.set();
    const char16_t* place = view.current;
    if (operation.max == qxRuleNode::UNLIMITED) {
        while (place != view.end && *place < qxCharSet::BITS && set.hasBit(*place)) ++place;
        const auto count = static_cast<std::size_t>(place - view.current);
        if (place != view.end && *place < qxCharSet::BITS && count >= operation.min) {
            view.current = place;
            spendSteps(count / TOKENS_A_STEP);
            return OK;
        }
    } else if (operation.isOptional && place != view.end && *place < qxCharSet::BITS && !set.hasBit(*place)) {
        return OK;
    }
    const Outcome outcome = matchSets(set, nodeAt(indexOf(operation)));
    if (outcome == NO_MATCH) noteFailure(indexOf(operation));
    return outcome;
}

qxRuleRun::Outcome qxRuleRun::evaluateMark(unsigned char flag)
{
    if (m_marks.getCount() >= m_maxDepth)
        return raiseLimit("Too many marks in rule '%s' at (Line:%d,Col:%d) -> %s");
    m_marks.add({static_cast<unsigned int>(position()), depthOfRules(), flag});
    return OK;
}

qxRuleRun::Outcome qxRuleRun::evaluateFault(unsigned int node)
{
    const qxRuleFault& fault = m_code->faults[nodeAt(node).value];
    return raise(fault.format, m_bodies[m_frames.back().index].rule, fault.place);
}

/// What the frame on top waited for has come.
inline qxRuleRun::Outcome qxRuleRun::deliver(Outcome outcome)
{
    Frame& frame = m_frames.back();
    if (frame.kind != Frame::BODY)
        return frame.kind == Frame::REPETITION ? deliverToRepetition(outcome) : deliverToExclusion(outcome);
    if (outcome != OK) return endNoMatch();
    if (!frame.operation->next) return endMatch();
    frame.operation = frame.operation->next;
    return OPENED;
}

/// The alternative that was run in the frame on top matched.
inline qxRuleRun::Outcome qxRuleRun::endMatch()
{
    Frame& frame = m_frames.back();
    if (frame.isPlain) return finishBody(OK);
    if (frame.winner != NONE) return endLaterAlternative(frame);
    unsigned int next = m_alternatives[frame.alternative].next;
    if (next != NONE) next = findLaterAlternative(frame, next);
    if (next == NONE) return finishBody(OK);
    addWinner(frame); // it is the first one, but those that call functions are to be run all the same
    startAlternative(frame, next);
    return rewind(frame.start) ? OPENED : ERROR;
}

/// The alternative that was run in the frame on top did not match.
inline qxRuleRun::Outcome qxRuleRun::endNoMatch()
{
    Frame& frame = m_frames.back();
    const qxRuleAlternative& alternative = m_alternatives[frame.alternative];
    if (alternative.holdsFault) // it stands in what is read past now
        return evaluateFault(m_code->rules[m_bodies[frame.index].rule].fault);
    if (frame.winner != NONE) return endLaterAlternative(frame);
    if (!takeBack(frame)) return ERROR;
    if (frame.isAlone) return finishBody(NO_MATCH);
    const unsigned int next = findAlternative(alternative.next);
    noteAlternatives(alternative.next, next);
    if (next == NONE) return finishBody(NO_MATCH);
    startAlternative(frame, next);
    return OPENED;
}

/// Finds the first alternative that may match here, and what is known of the others; false without any.
inline bool qxRuleRun::chooseWay(Entry& entry)
{
    const qxRuleEntrance& entrance = m_entrances[entry.body];
    const qxTokenView& view = m_parser.m_view;
    entry.isAlone = entry.isPlain = entrance.isOnly;
    entry.way = entrance.ways;
    if (entrance.isOpen || m_isTracing) return true;
    if (!entrance.choice || !m_parser.hasData() || *view.current >= qxCharSet::BITS) {
        const unsigned int first = findAlternative(entrance.ways->alternative);
        while (first != NONE && entry.way->alternative != first) ++entry.way;
        return first != NONE;
    }
    const unsigned char first = entrance.choice->first[*view.current];
    entry.way += first & qxRuleChoice::NONE;
    entry.isAlone = (first & qxRuleChoice::MORE) == 0;
    entry.isPlain = (first & qxRuleChoice::MORE_IMPURE) == 0;
    return first != qxRuleChoice::NONE;
}

/// The first alternative from `alternative` on that does not fail before the next token in a way that nobody can tell;
/// NONE when there is no more.
unsigned int qxRuleRun::findAlternative(unsigned int alternative)
{
    for (; alternative != NONE && !m_isTracing; alternative = m_alternatives[alternative].next) {
        const qxRuleStart& start = m_starts[alternative];
        if (start.mustRun || start.isNullable) break;
        if (m_parser.hasData() && start.admits(*m_parser.m_view.current)) break;
    }
    return alternative;
}

inline qxRuleRun::Outcome qxRuleRun::enter(const qxRuleOperation& operation)
{
    Entry entry = entryOf(operation);
    return chooseBody(entry) ? openBody(entry) : refuseBody(entry);
}

/// The same for the last element of an alternative, whose result is that of the body.
inline qxRuleRun::Outcome qxRuleRun::enterLast(const qxRuleOperation& operation)
{
    Entry entry = entryOf(operation);
    if (!chooseBody(entry)) return refuseBody(entry);
    Frame& frame = m_frames.back();
    const bool canTakeOver = isCertain(frame) && !m_isTracing;
    if (canTakeOver && entry.isOptional) {
        entry.depth = dropCertainFrames();
    } else if (canTakeOver && frame.isAlone && entry.isAlone) { // when the call fails, so does this body
        frame.index = entry.body;
        startWay(frame, *entry.way);
        return m_callers.size() > m_maxDepth ? raiseDepth() : OPENED;
    }
    return openBody(entry);
}

/// Whether the frame matches when that matches which it waits for.
inline bool qxRuleRun::isCertain(const Frame& frame) const
{
    return frame.kind == Frame::BODY && frame.isPlain && frame.operation->isLast;
}

/// Drops the frame on top, which is certain to match, and those below that wait for nothing else. Returns how many
/// calls of rules were around them.
inline unsigned int qxRuleRun::dropCertainFrames()
{
    unsigned int depth = 0;
    do {
        depth = m_frames.back().depth;
        m_frames.pop_back();
    } while (m_frames.size() > m_base && isCertain(m_frames.back()));
    m_stated = std::min(m_stated, m_frames.size());
    return depth;
}

inline qxRuleRun::Entry qxRuleRun::entryOf(const qxRuleOperation& operation) const
{
    const bool isRule = operation.kind == qxRuleOperation::RULE;
    return {operation.index, indexOf(operation), isRule, operation.isOptional, false, false,
            nullptr,         depthOfRules()};
}

/// Finds where the body begins to run; passes through bodies that do nothing but enter another one. False when no
/// alternative can match.
inline bool qxRuleRun::chooseBody(Entry& entry)
{
    for (;;) {
        if (entry.isRule) {
            if (m_isTracing)
                trace("Parsing Rule     : %s%s(Line:%d,Col:%d)", ruleName(m_bodies[entry.body].rule));
            m_callers.push() = entry.node;
        }
        if (!chooseWay(entry)) {
            m_callers.cut(entry.depth);
            return false;
        }
        const qxRuleOperation& first = *entry.way->first;
        if (!first.isLast || !entry.isAlone || m_isTracing) return true;
        spendSteps(1);
        entry.node = indexOf(first);
        entry.isRule = first.kind == qxRuleOperation::RULE;
        entry.isOptional |= first.isOptional;
        entry.body = first.index;
    }
}

inline qxRuleRun::Outcome qxRuleRun::openBody(const Entry& entry)
{
    Frame& frame = pushFrame(Frame::BODY, entry.body);
    frame.isRule = entry.isRule;
    frame.isOptional = entry.isOptional;
    frame.isAlone = entry.isAlone;
    frame.isPlain = entry.isPlain;
    frame.depth = entry.depth;
    startWay(frame, *entry.way);
    if (std::max(m_frames.size(), m_callers.size()) > m_maxDepth) return raiseDepth();
    return entry.isRule && m_entrances[entry.body].closesCircle ? enterCircle() : OPENED;
}

/// A body of which no alternative can match.
qxRuleRun::Outcome qxRuleRun::refuseBody(const Entry& entry)
{
    if (entry.node != NONE)
        noteFailure(entry.node);
    else
        noteAlternatives(m_bodies[entry.body].first, NONE);
    return entry.isOptional ? OK : NO_MATCH;
}

/// Enters the rule or group that an element names, whatever its suffix.
qxRuleRun::Outcome qxRuleRun::enterOnce(unsigned int body, unsigned int node, bool isRule, bool isOptional)
{
    Entry entry{body, node, isRule, isOptional, false, false, nullptr, depthOfRules()};
    return chooseBody(entry) ? openBody(entry) : refuseBody(entry);
}

/// What a function did that did not match is taken back, whatever it said.
inline qxRuleRun::Outcome qxRuleRun::callOwner(const qxRuleOperation& operation)
{
    const std::string_view name = operation.function ? std::string_view() : m_code->names[operation.index];
    const Outcome outcome = callOwner(operation.function, name);
    if (outcome == ERROR) wrapError(indexOf(operation));
    return outcome;
}

qxRuleRun::Outcome qxRuleRun::callOwner(qxParserFunction function, std::string_view name)
{
    const qxUInt64 state = prepareCall();
    const qxUInt64 start = position();
    const std::size_t marks = m_marks.getHeight();
    qxParseResult result = QX_PARSE_ERROR;
    if (function)
        result = (m_parser.*function)();
    else
        result = m_parser.parseFunction(qxPieceOf(name, qxString::MAX_LENGTH));
    if (result == QX_PARSE_OK) {
        settleMarks();
        return OK;
    }
    if (result != QX_PARSE_NO_MATCH) return ERROR;
    m_marks.undo(std::min(marks, m_marks.getHeight()));
    m_parser.restoreState(state, true);
    return position() == start || rewind(start) ? NO_MATCH : ERROR;
}

/// Makes everything as functions must find it, and remembers the owner's state for all that may go back to it.
inline qxUInt64 qxRuleRun::prepareCall()
{
    if (m_firstWaiting < m_winners.size()) putWinnersAside();
    const qxUInt64 state = m_parser.saveState();
    for (; m_stated < m_frames.size(); ++m_stated) m_frames[m_stated].state = state;
    ++m_calls;
    return state;
}
