// Running rules on the input of a parser.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "text/qxmarkqueue.h"
#include "text/qxruleprogram.h"
#include "text/qxrulestack.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

/// What a parser knows of rules, and the state of a run.
///
/// What is open in a run lies in frames on a stack of its own, so that neither deep rules nor long lists use up the
/// stack of the thread. A frame remembers where the input, the marks and what functions keep stood when it began; going
/// back there costs what has changed since. Frames that have nothing left to do but pass a result on are not kept: a
/// body that consists of a call is never opened, the last call of a body takes over its frame, and when such a call is
/// optional, all frames go that wait for nothing else. Of them remain the places of the calls, for errors.
///
/// All alternatives are run, in order, and the first one that matched counts. The others can only be told from what
/// functions of the owner do, so that
/// - an alternative is left out when the next token shows that it fails before it calls a function;
/// - behind one that matched, those that call no function are left out;
/// - what the one that matched did is only taken back, for the time of a later alternative, when that comes to call a
///   function.
class qxRuleRun
{
public:
    explicit qxRuleRun(qxBasicParser& parser) : m_parser(parser) {}

    // What is run

    void setRules(const qxRefPointer<qxRuleSet>& rules);
    const qxRefPointer<qxRuleSet>& getRules() const { return m_ruleSet; }
    void addFunction(const char* name, qxParserFunction function);
    const qxParserFunctions& getFunctions() const { return m_functions; }

    /// Takes a program that others share, in place of rules and functions of its own.
    void setProgram(std::shared_ptr<const qxRuleProgram> program);

    qxParseResult run(const char* name);
    bool isRunning() const { return m_runs > 0; }
    void reset();

    // Marks

    void setMark(unsigned char flag);
    bool takeMark(qxParserMark& mark);
    void useFirstInFirstOut(bool on) { m_takesOldest = on; }

    // Limits and reports

    void setMaxSteps(qxUInt64 count) { m_maxSteps = count; }
    void setMaxDepth(unsigned int count) { m_maxDepth = count; }
    bool hasReachedLimit() const { return m_hasReachedLimit; }
    qxUInt64 getFarthestPosition() const { return m_farthest; }
    qxString getExpected() const;

    /// The place in the text of the rules where the run met its error; NONE when it met none there.
    unsigned int getErrorPlace() const { return m_errorPlace; }
    const qxRuleCode* getCode() const { return m_code; }
    void useTrace(bool on) { m_isTracing = on; }

private:
    static constexpr unsigned int NONE = qxRuleNode::NONE;
    static constexpr unsigned int MOST_EXPECTED = 8;
    static constexpr qxUInt64 NOWHERE = ~0ULL;
    static constexpr qxUInt64 TOKENS_A_STEP = 8; // that a scan takes

    /// Something open. What it waits for is delivered to it when that is finished.
    struct alignas(64) Frame {
        enum Kind : unsigned char { BODY, REPETITION, EXCLUSION };
        Kind kind;
        bool isRule;         // BODY: of a rule, not of a group
        bool isOptional;     // BODY: no match is a match of nothing
        bool isAlone;        // BODY: no other alternative can match here
        bool isPlain;        // BODY: none behind the first one to run could match here and call functions
        bool isCircle;       // BODY: of a rule that remembers where it was entered
        bool isSecond;       // EXCLUSION: its second factor is running
        unsigned int index;  // BODY: of the body; else of the node
        unsigned int depth;  // calls of rules around it
        unsigned int marks;  // height of the queue when it began
        unsigned int calls;  // of functions of the owner when it began
        unsigned int winner; // which of the winners is its own, when an alternative or first factor matched
        qxUInt64 start;      // position in the input
        qxUInt64 state;      // of the owner, when it began
        union {
            unsigned int alternative; // BODY
            unsigned int count;       // REPETITION: matches
        };
        union {
            const qxRuleOperation* operation; // BODY: the current one
            qxUInt64 middle;                  // REPETITION: position of the last attempt
        };
    };

    /// An alternative that matched, while later ones are run, or a first factor, while the second one is.
    struct Winner {
        unsigned int frame;
        unsigned int marks; // height of the queue behind it
        unsigned int calls;
        bool isAside;       // what it did is taken back for the time being
        unsigned int aside; // where the changes that were put aside begin
        qxUInt64 end;       // position in the input
        qxUInt64 state;     // of the owner
    };

    /// A body that is about to be opened.
    struct Entry {
        unsigned int body;
        unsigned int node; // which names it; NONE for nobody
        bool isRule;
        bool isOptional;
        bool isAlone;
        bool isPlain;
        const qxRuleWay* way; // the first alternative to run
        unsigned int depth;   // calls of rules around it
    };

    /// A rule that is being run: where it was entered last.
    struct Activation {
        qxUInt64 position = NOWHERE;
        unsigned int calls = 0;
    };

    /// What a rule remembered before it was entered once more.
    struct Reentry {
        unsigned int rule;
        Activation before;
    };

    /// Two answers besides the results of parsers.
    enum Outcome : unsigned char {
        ERROR = QX_PARSE_ERROR,
        OK = QX_PARSE_OK,
        NO_MATCH = QX_PARSE_NO_MATCH,
        OPENED
    };

    // The loop
    qxParseResult runTarget(const char* name);
    Outcome runFrames();
    Outcome runBody();
    Outcome evaluate(const qxRuleOperation& operation);
    Outcome evaluateMark(unsigned char flag);
    Outcome evaluateFault(unsigned int node);
    Outcome deliver(Outcome outcome);
    Outcome endMatch();
    Outcome endNoMatch();
    Outcome finishBody(Outcome outcome);

    // Rules and groups
    bool chooseWay(Entry& entry);
    unsigned int findAlternative(unsigned int alternative);
    Entry entryOf(const qxRuleOperation& operation) const;
    Outcome enter(const qxRuleOperation& operation);
    Outcome enterLast(const qxRuleOperation& operation);
    Outcome enterOnce(unsigned int body, unsigned int node, bool isRule, bool isOptional);
    bool chooseBody(Entry& entry);
    Outcome openBody(const Entry& entry);
    Outcome refuseBody(const Entry& entry);
    unsigned int dropCertainFrames();
    bool isCertain(const Frame& frame) const;

    // What is seldom
    Outcome runFactor();
    Outcome evaluateTraced(unsigned int node);
    Outcome evaluateOnce(unsigned int node);
    unsigned int findLaterAlternative(const Frame& frame, unsigned int alternative) const;
    Outcome endLaterAlternative(Frame& frame);
    Outcome enterCircle();
    Outcome openRepetition(unsigned int node);
    Outcome deliverToRepetition(Outcome outcome);
    Outcome finishRepetition(bool isMatch);
    Outcome deliverToExclusion(Outcome outcome);
    bool isSureToFail(const qxRuleNode& element);
    bool isPure(const qxRuleNode& element) const;
    const qxRuleStart* startOf(const qxRuleNode& element) const;

    // Frames
    Frame& pushFrame(Frame::Kind kind, unsigned int index);
    void popFrame();
    void startWay(Frame& frame, const qxRuleWay& way);
    void startAlternative(Frame& frame, unsigned int alternative);
    bool takeBack(Frame& frame);
    bool rewind(qxUInt64 position) { return m_parser.rewindTo(position); }
    void dropFrames(std::size_t base);

    // Functions, and what they can see
    Outcome callFunction(const qxRuleTarget& target, std::string_view name, unsigned int node);
    Outcome callOwner(const qxRuleOperation& operation);
    Outcome callOwner(qxParserFunction function, std::string_view name);
    void settleMarks();
    qxUInt64 prepareCall();
    void putWinnersAside();
    void dropWinner();
    void addWinner(Frame& frame);
    bool bringWinnerBack(Frame& frame);

    // What needs no frame
    Outcome matchSimple(const qxRuleNode& node);
    Outcome matchOnce(const qxRuleNode& node);
    Outcome matchSet(const qxCharSet& set);
    Outcome matchSets(const qxRuleOperation& operation);
    Outcome matchSets(const qxCharSet& set, const qxRuleNode& node);
    unsigned int scanSet(const qxCharSet& set, unsigned int most);
    Outcome giveUp(const qxRuleNode& node, qxUInt64 start);
    Outcome matchLiteral(const std::u16string& literal);
    Outcome matchLiteralSlowly(const std::u16string& literal);
    Outcome matchExclusion(const qxRuleNode& node);
    Outcome matchRepeated(const qxRuleNode& node);
    Outcome matchBuiltin(qxParserFunction function);
    const qxCharSet* setOf(const qxRuleNode& node) const;

    // Reports
    bool isStepAllowed();
    void spendSteps(qxUInt64 count) { m_stepsLeft = m_stepsLeft > count ? m_stepsLeft - count : 1; }
    void noteFailure(unsigned int node)
    {
        if (position() >= m_farthest) noteFailureHere(node);
    }
    void noteFailureHere(unsigned int node);
    void noteAlternatives(unsigned int first, unsigned int end)
    {
        if (first != end && position() >= m_farthest) noteAlternativesHere(first, end);
    }
    void noteAlternativesHere(unsigned int first, unsigned int end);
    unsigned int firstOf(unsigned int alternative) const;
    Outcome raise(const char* format, unsigned int rule, unsigned int place);
    Outcome raiseLimit(const char* format);
    Outcome raiseDepth();
    Outcome raiseSteps();
    void unwind();
    void wrapError(unsigned int node);
    void trace(const char* format, std::string_view name);
    void traceExit(const char* format, std::string_view name, Outcome outcome);
    unsigned int depthOfRules() const { return static_cast<unsigned int>(m_callers.size()); }
    std::string_view ruleName(unsigned int rule) const { return m_code->names[m_code->rules[rule].name]; }
    qxUInt64 position() const { return m_parser.getTokenPos(); }
    unsigned int indexOf(const qxRuleOperation& operation) const
    {
        return static_cast<unsigned int>(&operation - m_operations);
    }
    const qxRuleNode& nodeAt(unsigned int index) const { return m_code->nodes[index]; }

    qxBasicParser& m_parser;
    qxRefPointer<qxRuleSet> m_ruleSet;
    qxParserFunctions m_functions;
    std::shared_ptr<const qxRuleProgram> m_program; // null until it is made of the two
    const qxRuleCode* m_code = nullptr;
    const qxRuleOperation* m_operations = nullptr; // of the program, and so on
    const qxRuleStart* m_starts = nullptr;
    const qxRuleAlternative* m_alternatives = nullptr;
    const qxRuleBody* m_bodies = nullptr;
    const qxRuleEntrance* m_entrances = nullptr;

    qxRuleStack<Frame> m_frames;
    std::vector<Activation> m_activations; // one a rule
    std::vector<Reentry> m_reentries;      // of the frames that are circles
    qxRuleStack<unsigned int> m_callers;   // nodes that called the rules that are open; NONE for nobody
    std::size_t m_base = 0;                // of the frames of the innermost run
    unsigned int m_runs = 0;               // that are under way, one inside the other

    qxMarkQueue m_marks;
    bool m_takesOldest = false;
    std::vector<qxMarkQueue::Change> m_aside; // of winners, frame by frame
    unsigned int m_calls = 0;                 // of functions of the owner, all in all
    std::size_t m_stated = 0;                 // the frames whose `state` is known: the lowest ones
    std::vector<Winner> m_winners;            // in the order of their frames
    std::size_t m_firstWaiting = 0; // the first of them that is not put aside; all behind it are neither

    qxUInt64 m_maxSteps = 100000000;
    unsigned int m_maxDepth = 1000000;
    qxUInt64 m_steps = 0;     // that this run was allowed so far
    qxUInt64 m_stepsLeft = 0; // of them
    qxUInt64 m_start = 0;     // of the run
    qxUInt64 m_reached = 0;   // from there, at the last look
    bool m_hasReachedLimit = false;
    bool m_isTracing = false;

    unsigned int m_errorPlace = NONE; // the innermost, in the text of the rules
    qxUInt64 m_farthest = 0;
    unsigned int m_expected[MOST_EXPECTED] = {}; // nodes
    unsigned int m_expectedCount = 0;
};

inline qxRuleRun::Frame& qxRuleRun::pushFrame(Frame::Kind kind, unsigned int index)
{
    Frame& frame = m_frames.push();
    frame.kind = kind;
    frame.isRule = frame.isOptional = frame.isAlone = frame.isPlain = frame.isCircle = frame.isSecond = false;
    frame.index = index;
    frame.depth = depthOfRules();
    frame.marks = static_cast<unsigned int>(m_marks.getHeight());
    frame.calls = m_calls;
    frame.winner = NONE;
    frame.start = position();
    return frame;
}

inline void qxRuleRun::popFrame()
{
    const Frame& frame = m_frames.back();
    if (frame.isCircle) {
        m_activations[m_reentries.back().rule] = m_reentries.back().before;
        m_reentries.pop_back();
    }
    m_callers.cut(frame.depth);
    m_frames.pop_back();
    m_stated = std::min(m_stated, m_frames.size());
}

inline void qxRuleRun::startWay(Frame& frame, const qxRuleWay& way)
{
    frame.alternative = way.alternative;
    frame.operation = way.first;
}

inline void qxRuleRun::startAlternative(Frame& frame, unsigned int alternative)
{
    startWay(frame, {alternative, &m_operations[m_alternatives[alternative].first]});
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

/// What the frame on top did counts, unless something that is run now makes it void.
inline void qxRuleRun::addWinner(Frame& frame)
{
    frame.winner = static_cast<unsigned int>(m_winners.size());
    m_winners.push_back({static_cast<unsigned int>(m_frames.size() - 1),
                         static_cast<unsigned int>(m_marks.getHeight()), m_calls, false, 0, position(), 0});
}

/// Lets the queue forget marks that were set and taken since the place that the frame on top may go back to.
inline void qxRuleRun::settleMarks()
{
    if (!m_marks.canSettle()) return;
    if (m_frames.size() == 0) return m_marks.settle(0);
    const Frame& top = m_frames.back();
    const bool isWaiting = top.winner != NONE && !m_winners[top.winner].isAside;
    m_marks.settle(isWaiting ? m_winners[top.winner].marks : top.marks);
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
