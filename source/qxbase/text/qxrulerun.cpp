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
    Entry entry{m_code->rules[target.index].body, NONE, true, false, false, NONE, depthOfRules()};
    Outcome outcome = enterBody(entry);
    if (outcome == OPENED) outcome = runFrames();
    return static_cast<qxParseResult>(outcome);
}

/// Runs until the frames of this run are finished.
qxRuleRun::Outcome qxRuleRun::runFrames()
{
    for (;;) {
        Outcome outcome = evaluateTop();
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

/// Evaluates in the frame on top until something opens, or something is there that must be delivered.
inline qxRuleRun::Outcome qxRuleRun::evaluateTop()
{
    const bool isPlain = m_frames.back().kind == Frame::BODY && !m_isTracing;
    for (;;) {
        if (m_stepsLeft <= 1 && !isStepAllowed())
            return raiseLimit("Too many steps in rule '%s' at (Line:%d,Col:%d) -> %s");
        --m_stepsLeft;
        if (!isPlain) return evaluateFactor(m_frames.back());
        const unsigned int node = m_frames.back().node;
        const unsigned int next = m_operations[node].next;
        const Outcome outcome = evaluate(node);
        if (outcome != OK || next == NONE) return outcome;
        m_frames.back().node = next; // it is the same frame, though a function may have moved it
    }
}

/// What stands next in the frame on top, where that is not just the next element of a body.
qxRuleRun::Outcome qxRuleRun::evaluateFactor(const Frame& frame)
{
    if (frame.kind == Frame::REPETITION) return evaluateOnce(frame.index);
    unsigned int node = frame.node;
    if (frame.kind == Frame::EXCLUSION)
        node = frame.isSecond ? nodeAt(frame.index).other : nodeAt(frame.index).value;
    return m_isTracing ? evaluateTraced(node) : evaluate(node);
}

inline qxRuleRun::Outcome qxRuleRun::evaluate(unsigned int node)
{
    typedef qxRuleOperation Operation;
    const Operation& operation = m_operations[node];
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
        outcome = matchLiteral(*operation.literal);
        break;
    case Operation::SET:
        outcome = matchSet(*operation.set);
        break;
    case Operation::SETS:
        if (view.current != view.end && *view.current < qxCharSet::BITS &&
            !operation.set->hasBit(*view.current))
            outcome = operation.isOptional ? OK : NO_MATCH;
        else
            outcome = matchSets(*operation.set, nodeAt(node));
        break;
    case Operation::BUILTIN:
        outcome = matchBuiltin(operation.function);
        if (outcome == ERROR) wrapError(node);
        break;
    case Operation::SIMPLE:
        outcome = matchSimple(nodeAt(node));
        break;
    case Operation::MARK:
        return evaluateMark(0);
    case Operation::MATCH_MARK:
        return evaluateMark(1); // what stands behind an element that failed is only read past
    case Operation::FUNCTION:
        outcome = callOwner(operation.function, operation.function ? "" : m_code->names[operation.index]);
        if (outcome == ERROR) wrapError(node);
        break;
    case Operation::RULE:
    case Operation::GROUP:
        return operation.isLast ? enterLast(operation, node) : enter(operation, node);
    case Operation::REPETITION:
        return openRepetition(node);
    case Operation::EXCLUSION:
        pushFrame(Frame::EXCLUSION, node);
        return OPENED;
    case Operation::FAULT:
        return evaluateFault(node);
    }
    if (outcome == NO_MATCH) noteFailure(node);
    return outcome;
}

/// As evaluate, with every call of a function seen.
qxRuleRun::Outcome qxRuleRun::evaluateTraced(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (!element.isRepeated()) return evaluateOnce(node);
    if (m_operations[node].isOptional && element.kind == qxRuleNode::GROUP)
        return enter(m_operations[node], node);
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
        if (target.kind == qxRuleTarget::RULE) return enterOnce(m_code->rules[target.index].body, node, true);
        return callFunction(target, m_code->names[element.value], node);
    }
    case qxRuleNode::GROUP:
        return enterOnce(element.value, node, false);
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

qxRuleRun::Outcome qxRuleRun::evaluateMark(unsigned char flag)
{
    if (m_marks.getCount() >= m_maxDepth)
        return raiseLimit("Too many marks in rule '%s' at (Line:%d,Col:%d) -> %s");
    setMark(flag);
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
    switch (m_frames.back().kind) {
    case Frame::BODY:
        return deliverToBody(outcome);
    case Frame::REPETITION:
        return deliverToRepetition(outcome);
    default:
        return deliverToExclusion(outcome);
    }
}

inline qxRuleRun::Outcome qxRuleRun::deliverToBody(Outcome outcome)
{
    Frame& frame = m_frames.back();
    if (outcome == OK) {
        const unsigned int next = m_operations[frame.node].next;
        if (next != NONE) {
            frame.node = next;
            return OPENED;
        }
        if (frame.isAlone) return finishBody(OK);
        if (frame.winner != NONE) return endLaterAlternative(frame);
        return endMatch(m_alternatives[frame.alternative].next);
    }
    const qxRuleAlternative& alternative = m_alternatives[frame.alternative];
    if (alternative.holdsFault) // it stands in what is read past now
        return evaluateFault(m_code->rules[m_bodies[frame.index].rule].fault);
    if (frame.winner != NONE) return endLaterAlternative(frame);
    if (!takeBack(frame)) return ERROR;
    if (frame.isAlone) return finishBody(NO_MATCH);
    frame.alternative = findAlternative(alternative.next);
    noteAlternatives(alternative.next, frame.alternative);
    if (frame.alternative == NONE) return finishBody(NO_MATCH);
    frame.node = m_alternatives[frame.alternative].first;
    return OPENED;
}

/// What the frame on top did counts, unless something that is run now makes it void.
inline void qxRuleRun::addWinner(Frame& frame)
{
    frame.winner = static_cast<unsigned int>(m_winners.size());
    m_winners.push_back({static_cast<unsigned int>(m_frames.size() - 1),
                         static_cast<unsigned int>(m_marks.getHeight()), m_calls, false, 0, position(), 0});
}

/// An alternative matched, the first one; those from `next` on are to be run all the same.
inline qxRuleRun::Outcome qxRuleRun::endMatch(unsigned int next)
{
    Frame& frame = m_frames.back();
    if (next != NONE) next = findLaterAlternative(frame, next);
    if (next == NONE) return finishBody(OK);
    addWinner(frame);
    frame.alternative = next;
    frame.node = m_alternatives[next].first;
    return rewind(frame.start) ? OPENED : ERROR;
}

/// An alternative behind the one that matched is through; nothing of it counts.
qxRuleRun::Outcome qxRuleRun::endLaterAlternative(Frame& frame)
{
    const Winner& winner = m_winners[frame.winner];
    const unsigned int next = findLaterAlternative(frame, m_alternatives[frame.alternative].next);
    if (next == NONE) return bringWinnerBack(frame) ? finishBody(OK) : ERROR;
    m_marks.undo(winner.isAside ? frame.marks : winner.marks);
    if (winner.isAside && frame.calls != m_calls) m_parser.restoreState(frame.state, false);
    frame.alternative = next;
    frame.node = m_alternatives[next].first;
    return rewind(frame.start) ? OPENED : ERROR;
}

/// The first alternative of a body that may match here, NONE without any. `isAlone` receives whether no other may.
inline unsigned int qxRuleRun::chooseAlternative(unsigned int body, bool& isAlone)
{
    const qxRuleEntrance& entrance = m_entrances[body];
    isAlone = entrance.only != nullptr;
    if (m_isTracing) return *entrance.alternatives;
    if (isAlone) {
        const qxRuleStart& start = *entrance.only;
        if (start.mustRun || start.isNullable ||
            (m_parser.hasData() && start.admits(*m_parser.m_view.current)))
            return *entrance.alternatives;
        return NONE;
    }
    if (!entrance.choice || !m_parser.hasData() || *m_parser.m_view.current >= qxCharSet::BITS)
        return findAlternative(*entrance.alternatives);
    const unsigned char first = entrance.choice->first[*m_parser.m_view.current];
    isAlone = (first & qxRuleChoice::MORE) == 0;
    return first == qxRuleChoice::NONE ? NONE : entrance.alternatives[first & qxRuleChoice::NONE];
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

/// The same behind an alternative that matched, where only those count that call functions.
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

/// Enters the rule or group that an element names, whatever its suffix.
qxRuleRun::Outcome qxRuleRun::enterOnce(unsigned int body, unsigned int node, bool isRule)
{
    Entry entry{body, node, isRule, false, false, NONE, depthOfRules()};
    return enterBody(entry);
}

inline qxRuleRun::Outcome qxRuleRun::enter(const qxRuleOperation& operation, unsigned int node)
{
    const bool isRule = operation.kind == qxRuleOperation::RULE;
    Entry entry{operation.index, node, isRule, operation.isOptional, false, NONE, depthOfRules()};
    return enterBody(entry);
}

inline qxRuleRun::Outcome qxRuleRun::enterBody(Entry& entry)
{
    return chooseBody(entry) ? openBody(entry) : refuseBody(entry);
}

/// The same for the last element of an alternative, whose result is that of the body.
inline qxRuleRun::Outcome qxRuleRun::enterLast(const qxRuleOperation& operation, unsigned int node)
{
    const bool isRule = operation.kind == qxRuleOperation::RULE;
    Entry entry{operation.index, node, isRule, operation.isOptional, false, NONE, depthOfRules()};
    if (!chooseBody(entry)) return refuseBody(entry);
    if (m_isTracing || !isCertain(m_frames.back())) return openBody(entry);
    if (entry.isOptional) {
        entry.depth = dropCertainFrames();
        return openBody(entry);
    }
    if (!entry.isAlone) return openBody(entry);
    Frame& frame = m_frames.back(); // when the call fails, so does this body
    frame.index = entry.body;
    frame.alternative = entry.alternative;
    frame.node = m_alternatives[entry.alternative].first;
    return m_callers.size() > m_maxDepth ? raiseDepth() : OPENED;
}

/// Whether the result of the frame is that of the element which it waits for, when that matches.
inline bool qxRuleRun::isCertain(const Frame& frame) const
{
    return frame.kind == Frame::BODY && frame.isAlone && frame.winner == NONE &&
           m_operations[frame.node].isLast;
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
        entry.alternative = chooseAlternative(entry.body, entry.isAlone);
        if (entry.alternative == NONE) {
            m_callers.cut(entry.depth);
            return false;
        }
        const unsigned int first = m_alternatives[entry.alternative].first;
        const qxRuleOperation& operation = m_operations[first];
        if (!operation.isAll || !entry.isAlone || m_isTracing) return true;
        spendSteps(1);
        entry.node = first;
        entry.isRule = operation.kind == qxRuleOperation::RULE;
        entry.isOptional |= operation.isOptional;
        entry.body = operation.index;
    }
}

inline qxRuleRun::Outcome qxRuleRun::openBody(const Entry& entry)
{
    Frame& frame = pushFrame(Frame::BODY, entry.body);
    frame.isRule = entry.isRule;
    frame.isOptional = entry.isOptional;
    frame.isAlone = entry.isAlone;
    frame.depth = entry.depth;
    frame.alternative = entry.alternative;
    frame.node = m_alternatives[entry.alternative].first;
    if (std::max(m_frames.size(), m_callers.size()) > m_maxDepth) return raiseDepth();
    return entry.isRule && m_entrances[entry.body].closesCircle ? enterCircle(m_bodies[entry.body].rule)
                                                                : OPENED;
}

/// For the rule in the frame on top, which may have called itself before anything was taken.
qxRuleRun::Outcome qxRuleRun::enterCircle(unsigned int rule)
{
    Frame& frame = m_frames.back();
    Activation& activation = m_activations[rule];
    // Nothing has happened since that would make it go another way this time.
    const bool isEndless = activation.position == frame.start && activation.calls == m_calls;
    frame.middle = std::exchange(activation.position, frame.start);
    frame.count = std::exchange(activation.calls, m_calls);
    return isEndless ? raiseLimit("Left recursion in rule '%s' at (Line:%d,Col:%d) -> %s") : OPENED;
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

qxRuleRun::Outcome qxRuleRun::openRepetition(unsigned int node)
{
    const qxRuleNode& element = nodeAt(node);
    if (element.max == 0) return OK;
    if (element.isCounted && !m_parser.hasData()) return element.min == 0 ? OK : NO_MATCH;
    if (!m_isTracing && isSureToFail(element)) {
        noteFailure(node);
        return element.min == 0 ? OK : NO_MATCH;
    }
    pushFrame(Frame::REPETITION, node).middle = position();
    return OPENED;
}

inline qxRuleRun::Outcome qxRuleRun::finishBody(Outcome outcome)
{
    const Frame& frame = m_frames.back();
    if (outcome == NO_MATCH && frame.isOptional) outcome = OK;
    if (frame.isRule) {
        if (m_isTracing)
            traceExit("Exit Rule        : %s%s(Line:%d,Col:%d)\tResult:%s",
                      ruleName(m_bodies[frame.index].rule), outcome);
        m_parser.reportProgress();
    }
    popFrame();
    settleMarks();
    return outcome;
}

/// Lets the queue forget marks that were set and taken since the place that the frame on top may go back to.
inline void qxRuleRun::settleMarks()
{
    if (m_frames.size() == 0) return m_marks.settle(0);
    const Frame& top = m_frames.back();
    const bool isWaiting = top.winner != NONE && !m_winners[top.winner].isAside;
    m_marks.settle(isWaiting ? m_winners[top.winner].marks : top.marks);
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

/// What a function did that did not match is taken back, whatever it said.
inline qxRuleRun::Outcome qxRuleRun::callOwner(qxParserFunction function, std::string_view name)
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

inline qxRuleRun::Frame& qxRuleRun::pushFrame(Frame::Kind kind, unsigned int index)
{
    Frame& frame = m_frames.push();
    frame.kind = kind;
    frame.isRule = frame.isOptional = frame.isAlone = frame.isSecond = false;
    frame.index = index;
    frame.depth = depthOfRules();
    frame.count = 0;
    frame.marks = static_cast<unsigned int>(m_marks.getHeight());
    frame.calls = m_calls;
    frame.winner = NONE;
    frame.start = position();
    return frame;
}

inline void qxRuleRun::popFrame()
{
    const Frame& frame = m_frames.back();
    if (frame.isRule && m_entrances[frame.index].closesCircle)
        m_activations[m_bodies[frame.index].rule] = {frame.middle, frame.count};
    m_callers.cut(frame.depth);
    m_frames.pop_back();
    m_stated = std::min(m_stated, m_frames.size());
}

/// Goes back to where the input, the marks and what functions keep stood when the frame began.
inline bool qxRuleRun::takeBack(Frame& frame)
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

/// Makes everything as functions must find it, and remembers the owner's state for all that may go back to it.
inline qxUInt64 qxRuleRun::prepareCall()
{
    if (m_firstWaiting < m_winners.size()) putWinnersAside();
    const qxUInt64 state = m_parser.saveState();
    for (; m_stated < m_frames.size(); ++m_stated) m_frames[m_stated].state = state;
    ++m_calls;
    return state;
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
