// The body of one rule, compiled.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "text/qxrulecode.h"

#include <string_view>
#include <unordered_map>
#include <vector>

/// What rules have in common while they are compiled: each literal, set and name is kept once.
class qxRulePools
{
public:
    explicit qxRulePools(qxRuleCode& code) : m_code(code) {}

    /// `text` is the literal without its quotes.
    unsigned int addLiteral(std::string_view text);
    unsigned int addSet(std::string_view text);
    unsigned int addCharacter(std::string_view text, char32_t code);
    unsigned int addName(std::string_view name);

private:
    qxRuleCode& m_code;
    std::unordered_map<std::u16string, unsigned int> m_literals;
    std::unordered_map<std::string_view, unsigned int> m_sets; // by their text, brackets included
};

/// Compiles one body. The first fault in it ends the work: what stands behind it is never read.
class qxRuleBodyCompiler
{
public:
    qxRuleBodyCompiler(qxRuleCode& code, qxRulePools& pools, unsigned int rule);

    /// Fills in the body and the fault of the rule.
    void compile();

private:
    /// A body that is not closed yet.
    struct Level {
        unsigned int body;
        unsigned int opener;      // place of its "("
        bool isExcluding = false; // a "-" was read, and its second factor comes
        bool canExclude = false;  // the last element is a factor that a "-" follows
    };

    bool skipBlanks();
    bool readElement();
    bool readLiteral();
    bool readSet();
    bool readCharacter();
    bool openGroup();
    bool closeGroup();
    bool startAlternative();
    bool startExclusion();
    bool finishFactor(qxRuleNode node);
    bool readSuffix(qxRuleNode& node);
    bool readRange(qxRuleNode& node);
    bool readNumber(unsigned int& number);
    bool mayEnd() const;
    void addExclusion(const qxRuleNode& excluded);
    void append(unsigned int node);
    void joinSingle(qxRuleNode& group) const;
    bool splice(const qxRuleNode& group);
    unsigned int addNode(const qxRuleNode& node);
    void openBody(unsigned int opener);
    void addAlternative();
    qxRuleAlternative& currentAlternative();
    bool fail(const char* format, unsigned int place);
    void addFault();

    bool isAtEnd() const { return m_place == m_end; }
    char here() const { return m_code.text[m_place]; }

    qxRuleCode& m_code;
    qxRulePools& m_pools;
    const unsigned int m_rule;
    unsigned int m_place;
    const unsigned int m_end;
    std::vector<Level> m_levels;
    qxRuleFault m_fault = {nullptr, 0};
};
