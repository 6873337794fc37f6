// A rule set joined to the functions of a parser.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxruleset.h"
#include "text/qxrulecode.h"
#include "text/qxtokenparsers.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Functions by their names.
typedef std::map<std::string, qxParserFunction, std::less<>> qxParserFunctions;

/// What a name in a rule stands for.
struct qxRuleTarget {
    enum Kind : unsigned char {
        RULE,    ///< `index` is that of the rule
        SET,     ///< a built-in parser of one character; `index` is that of its set
        BUILTIN, ///< another built-in parser
        OWNER,   ///< a function of the owner
        UNKNOWN
    };
    Kind kind = UNKNOWN;
    unsigned int index = 0;
    qxParserFunction function = nullptr;
};

/// What an element, alternative or body can begin with.
struct qxRuleStart {
    qxUInt64 bits[qxCharSet::BITS / 64] = {}; ///< tokens below 256
    bool isAbove = false;                     ///< tokens from there on
    bool isNullable = false;                  ///< it may match nothing
    bool mustRun = false;  ///< before it looks at a token something else happens that can be told
    bool isImpure = false; ///< functions of the owner may be called anywhere in it, or a fault is met

    bool admits(char16_t token) const
    {
        return token < qxCharSet::BITS ? (bits[token / 64] >> (token % 64) & 1) != 0 : isAbove;
    }

    /// True when it fails before `token`, and nobody can tell whether it was tried.
    bool isSureToFail(char16_t token) const { return !isNullable && !mustRun && !admits(token); }

    void add(const qxRuleStart& other); ///< all but isNullable
    void add(const qxCharSet& set);
};

/// A node made ready to run.
struct alignas(64) qxRuleOperation {
    enum Kind : unsigned char {
        TOKEN,   ///< a literal of one token
        LITERAL, ///< a longer or empty one
        SET,     ///< one character of a set
        SETS,    ///< several, as the suffix says
        BUILTIN, ///< a built-in parser
        SIMPLE,  ///< something else that calls nobody but these
        MARK,
        MATCH_MARK,
        FUNCTION,   ///< of the owner
        RULE,       ///< perhaps optional
        GROUP,      ///< perhaps optional
        REPETITION, ///< of something that is not simple
        EXCLUSION,
        FAULT
    };
    Kind kind = FAULT;
    bool isOptional = false;
    bool isLast =
        false; ///< RULE and GROUP: of an alternative, and what is called may take over the frame of its body
    char16_t token = 0;     ///< TOKEN
    unsigned int index = 0; ///< RULE and GROUP: of the body; FUNCTION: of the name
    unsigned int min = 1;   ///< SETS
    unsigned int max = 1;
    const qxRuleOperation* next = nullptr; ///< in the alternative
    const void* data = nullptr;            ///< see set and literal
    qxParserFunction function = nullptr;   ///< BUILTIN and FUNCTION, where null is an unknown one

    const qxCharSet& set() const { return *static_cast<const qxCharSet*>(data); } ///< SET and SETS
    const std::u16string& literal() const { return *static_cast<const std::u16string*>(data); } ///< LITERAL
};

struct qxRuleChoice;

/// An alternative made ready to run.
struct qxRuleWay {
    unsigned int alternative;
    const qxRuleOperation* first;
};

/// How a body is entered.
struct qxRuleEntrance {
    const qxRuleWay* ways = nullptr;      ///< all its alternatives, in a row
    const qxRuleChoice* choice = nullptr; ///< null where each must be looked at
    bool isOnly = false;                  ///< there is one alternative
    bool isOpen = false;                  ///< and it must be run whatever comes
    bool closesCircle = false; ///< of a rule: circles of calls that take nothing on the way are noticed here
};

/// A call that a rule may make before it takes anything.
struct qxRuleLeftCall {
    unsigned int rule; ///< that is called
    unsigned int node;
};

/// Which alternative of a body is the first to run for each token below 256, in a table.
struct qxRuleChoice {
    static constexpr unsigned char NONE = 0x3F;
    static constexpr unsigned char MORE = 0x40;        ///< flag: another one may match as well
    static constexpr unsigned char MORE_IMPURE = 0x80; ///< flag: and such a one may call functions

    unsigned char first[qxCharSet::BITS]; ///< the number of the alternative, from 0
};

/// Built once for a rule set and the functions of a kind of parser, and then never changed, so that parsers on many
/// threads can share it.
class qxRuleProgram
{
public:
    /// `code` must be there as long as the program.
    qxRuleProgram(const qxRuleCode& code, const qxParserFunctions& functions);

    const qxRuleCode& getCode() const { return m_code; }
    const qxRuleTarget& getTarget(unsigned int name) const { return m_targets[name]; }
    const qxCharSet& getSet(unsigned int index) const { return m_sets[index]; }
    const qxRuleStart& getBodyStart(unsigned int body) const { return m_bodies[body]; }

    // By the index of the node, alternative or body

    const qxRuleOperation* getOperations() const { return m_operations.data(); }
    const qxRuleStart* getStarts() const { return m_alternatives.data(); }

    const qxRuleEntrance* getEntrances() const { return m_entrances.data(); }

    /// True when the node is matched without a frame of its own: it calls nobody but built-in parsers.
    bool isSimple(unsigned int node) const { return m_simple[node] != 0; }

    /// True when the node may match nothing.
    bool isNullable(const qxRuleNode& node) const { return isNullableNow(node); }

    /// The calls that each rule may make before it takes anything.
    std::vector<std::vector<qxRuleLeftCall>> findLeftCalls() const;

    /// What `name` stands for, also one that no rule holds; never a SET.
    qxRuleTarget find(std::string_view name) const { return name == "main" ? m_main : findSlowly(name); }

private:
    qxRuleTarget findSlowly(std::string_view name) const;
    qxRuleTarget findFunction(std::string_view name) const;
    unsigned int addSet(std::string_view text);
    qxRuleOperation makeOperation(unsigned int node) const;
    const qxCharSet* setOf(const qxRuleNode& node) const;
    bool isSimpleNode(const qxRuleNode& node) const;
    void findImpureRules();
    bool findNullableBodies();
    bool isNullableNow(const qxRuleNode& whole) const;
    void findStarts();
    void addLeftCalls(unsigned int node, std::vector<qxRuleLeftCall>& calls) const;
    void computeRule(unsigned int rule);
    void computeAlternative(unsigned int alternative, qxRuleStart& start) const;
    qxRuleStart startOf(const qxRuleNode& node) const;
    void startAnywhere();
    void makeEntrances();
    void findLastCalls();
    bool makeChoice(unsigned int body, qxRuleChoice& choice) const;

    const qxRuleCode& m_code;
    const qxParserFunctions m_functions;
    std::vector<qxCharSet> m_sets; // of the built-in parsers of one character
    std::vector<qxRuleTarget> m_targets;
    qxRuleTarget m_main; // where most runs begin
    std::vector<unsigned char> m_simple;
    std::vector<qxRuleOperation> m_operations;
    std::vector<unsigned char> m_impureRules;
    std::vector<unsigned char> m_circles; // rules that may come to call themselves before they take anything
    std::vector<unsigned char> m_openRules; // whose start is being computed, or not yet
    std::vector<qxRuleStart> m_alternatives;
    std::vector<qxRuleStart> m_bodies;
    std::vector<qxRuleWay> m_ways; // the alternatives of one body behind those of the other
    std::deque<qxRuleChoice> m_tables;
    std::vector<qxRuleEntrance> m_entrances;
};

/// A program that keeps its rule set alive.
std::shared_ptr<const qxRuleProgram> qxMakeRuleProgram(const qxRefPointer<qxRuleSet>& rules,
                                                       const qxParserFunctions& functions);
