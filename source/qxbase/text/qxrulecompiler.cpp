// SPDX-License-Identifier: see LICENSE

#include "text/qxrulecompiler.h"

#include "core/qxascii.h"
#include "text/qxrulebody.h"
#include "text/qxrulescanner.h"

#include <algorithm>
#include <string_view>

namespace
{

/// Finds the rules in a text.
class RuleSetReader
{
public:
    RuleSetReader(qxRuleCode& code, qxRulePools& pools) : m_code(code), m_text(code.text), m_pools(pools) {}

    /// The next rule is added to the code; false at the end and at a rule that is none.
    bool readRule()
    {
        skipBlanks();
        m_begin = m_place;
        m_number++;
        qxRuleEntry rule;
        if (!readName(rule) || !readSign()) return false;
        rule.begin = static_cast<unsigned int>(m_place);
        if (!findEnd()) return false;
        rule.end = static_cast<unsigned int>(m_place++);
        m_code.ruleOfName[rule.name] = static_cast<unsigned int>(m_code.rules.size());
        m_code.rules.push_back(rule);
        return true;
    }

    bool isAtEnd() const { return m_begin == m_text.size(); }
    qxRuleSetFault getFault() const { return {m_number, static_cast<unsigned int>(m_begin)}; }

private:
    void skipBlanks()
    {
        while (m_place < m_text.size()) {
            if (qxIsWhiteSpace(m_text[m_place]))
                ++m_place;
            else if (!skipComment())
                return;
        }
    }

    bool skipComment()
    {
        if (!m_hasComments || !qxRuleScan::isComment(m_text, m_place, m_text.size())) return false;
        return skipTo(qxRuleScan::behindComment(m_text, m_place, m_text.size()), m_hasComments);
    }

    /// `isThere` becomes false when there is no closer: none of the openers that follow has one then, and looking
    /// again at each would take long.
    bool skipTo(std::size_t behind, bool& isThere)
    {
        isThere = behind != qxRuleScan::NOWHERE;
        if (isThere) m_place = behind;
        return isThere;
    }

    bool readName(qxRuleEntry& rule)
    {
        const std::size_t behind = qxRuleScan::behindName(m_text, m_place, m_text.size());
        if (behind == m_place) return false;
        rule.name = m_pools.addName(m_text.substr(m_place, behind - m_place));
        m_place = behind;
        return true;
    }

    bool readSign()
    {
        skipBlanks();
        if (!m_text.substr(m_place).starts_with("::=")) return false;
        m_place += 3;
        return true;
    }

    /// The ";" of a rule is the first that no literal, set or comment hides. An opener without closer hides nothing.
    bool findEnd()
    {
        while (m_place < m_text.size()) {
            const char c = m_text[m_place];
            if (c == ';') return true;
            if (!skipComment() && !skipLiteral(c) && !skipSet(c)) ++m_place;
        }
        return false;
    }

    bool skipLiteral(char c)
    {
        if (c != '"' && c != '\'') return false;
        bool& isThere = c == '"' ? m_hasQuotes : m_hasSingleQuotes;
        return isThere && skipTo(qxRuleScan::behindLiteral(m_text, m_place, m_text.size()), isThere);
    }

    bool skipSet(char c)
    {
        return c == '[' && m_hasSets &&
               skipTo(qxRuleScan::behindSet(m_text, m_place, m_text.size()), m_hasSets);
    }

    qxRuleCode& m_code;
    const std::string_view m_text;
    qxRulePools& m_pools;
    std::size_t m_place = 0;
    std::size_t m_begin = 0;
    unsigned int m_number = 0;
    bool m_hasComments = true;
    bool m_hasQuotes = true;
    bool m_hasSingleQuotes = true;
    bool m_hasSets = true;
};

} // namespace

bool qxCompileRules(qxRuleCode& code, qxRuleSetFault& fault)
{
    qxRulePools pools(code);
    RuleSetReader reader(code, pools);
    while (reader.readRule()) {}
    fault = reader.getFault();
    if (!reader.isAtEnd()) return false;
    for (unsigned int rule = 0; rule < code.rules.size(); ++rule)
        qxRuleBodyCompiler(code, pools, rule).compile();
    return true;
}
