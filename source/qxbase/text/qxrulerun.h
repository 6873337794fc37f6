// Running rules on the input of a parser.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "text/qxmarkqueue.h"
#include "text/qxruleprogram.h"
#include "text/qxrulestack.h"

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

    /// Something open. What its node waits for is delivered to it when that is finished.
    struct Frame {
        enum Kind : unsigned char { BODY, REPETITION, EXCLUSION };
        Kind kind;
        bool isRule;        // BODY: of a rule, not of a group
        bool isOptional;    // BODY: no match is a match of nothing
        bool isAlone;       // BODY: no other alternative can match here
        bool isSecond;      // EXCLUSION: its second factor is running
        unsigned int index; // BODY: of the body; else of the node
        unsigned int node;  // BODY: the current one
        unsigned int alternative;
        unsigned int depth;  // calls of rules around it
        unsigned int count;  // REPETITION: matches; BODY of a rule: calls at its activation around this one
        unsigned int marks;  // height of the queue when it began
        unsigned int calls;  // of functions of the owner when it began
        unsigned int winner; // which of the winners is its own, when an alternative or first factor matched
        qxUInt64 start;      // position in the input
        qxUInt64 middle;     // REPETITION: of the last attempt; BODY of a rule: of its
                             // activation around this one
        qxUInt64 state;      // of the owner, when it began
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
        unsigned int alternative; // the first one to run
        unsigned int depth;       // calls of rules around it
    };

    /// A rule that is being run: where it was entered last.
    struct Activation {
        qxUInt64 position = NOWHERE;
        unsigned int calls = 0;
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
    Outcome evaluate(unsigned int node);
    Outcome evaluateTop();
    Outcome evaluateFactor(const Frame& frame);
    Outcome evaluateTraced(unsigned int node);
    Outcome evaluateOnce(unsigned int node);
    Outcome evaluateMark(unsigned char flag);
    Outcome evaluateFault(unsigned int node);
    Outcome deliver(Outcome outcome);
    Outcome deliverToBody(Outcome outcome);
    Outcome deliverToRepetition(Outcome outcome);
    Outcome deliverToExclusion(Outcome outcome);
    Outcome endMatch(unsigned int next);
    Outcome endLaterAlternative(Frame& frame);
    unsigned int chooseAlternative(unsigned int body, bool& isAlone);
    unsigned int findAlternative(unsigned int alternative);
    unsigned int findLaterAlternative(const Frame& frame, unsigned int alternative) const;
    Outcome enter(const qxRuleOperation& operation, unsigned int node);
    Outcome enterOnce(unsigned int body, unsigned int node, bool isRule);
    Outcome enterLast(const qxRuleOperation& operation, unsigned int node);
    Outcome enterBody(Entry& entry);
    bool chooseBody(Entry& entry);
    unsigned int dropCertainFrames();
    bool isCertain(const Frame& frame) const;
    Outcome openRepetition(unsigned int node);
    Outcome finishBody(Outcome outcome);
    Outcome finishRepetition(bool isMatch);
    bool isSureToFail(const qxRuleNode& element);
    bool isPure(const qxRuleNode& element) const;
    const qxRuleStart* startOf(const qxRuleNode& element) const;
    Outcome callFunction(const qxRuleTarget& target, std::string_view name, unsigned int node);
    Outcome callOwner(qxParserFunction function, std::string_view name);
    Outcome refuseBody(const Entry& entry);
    Outcome openBody(const Entry& entry);
    Outcome enterCircle(unsigned int rule);
    Frame& pushFrame(Frame::Kind kind, unsigned int index);
    void popFrame();
    bool rewind(qxUInt64 position) { return m_parser.rewindTo(position); }
    bool takeBack(Frame& frame);
    void dropFrames(std::size_t base);
    void settleMarks();

    // What functions can see
    qxUInt64 prepareCall();
    void putWinnersAside();
    void dropWinner();
    void addWinner(Frame& frame);
    bool bringWinnerBack(Frame& frame);

    // What needs no frame
    Outcome matchSimple(const qxRuleNode& node);
    Outcome matchOnce(const qxRuleNode& node);
    Outcome matchSet(const qxCharSet& set);
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
    void unwind();
    void wrapError(unsigned int node);
    void trace(const char* format, std::string_view name);
    void traceExit(const char* format, std::string_view name, Outcome outcome);
    unsigned int depthOfRules() const { return static_cast<unsigned int>(m_callers.size()); }
    std::string_view ruleName(unsigned int rule) const { return m_code->names[m_code->rules[rule].name]; }
    qxUInt64 position() const { return m_parser.getTokenPos(); }
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
