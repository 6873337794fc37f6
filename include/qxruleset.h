// Grammars as text: sets of rules that are loaded at run time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxforward.h"
#include "qxreference.h"
#include "qxstring.h"

#include <cstddef>
#include <memory>

struct qxRuleCode;

/// Something in a rule set that will not work, or not as it reads.
struct qxRuleFinding {
    unsigned int line = 0;   ///< in the text of the rule set, from 1
    unsigned int column = 0; ///< in characters, from 1
    qxString rule;
    qxString text;
    bool isFault = false; ///< the rule cannot be read; else it is only suspicious
};

/// Rules in the rule language, ready to run: `name ::= body ;` as often as wanted. See docs/rules.md.
///
/// Loading finds the rules; a fault inside a body becomes known where a parser reaches it. When two rules have the
/// same name the later one counts.
///
/// Lifetime: reference counted; parsers that run it hold it.
/// Threads:  it never changes, so that any number of threads may run it.
/// Errors:   a text that is no rule set gives null and an error text.
class QX_API qxRuleSet : public qxThreadSafeReference
{
public:
    /// Null when a name, "::=" or ";" is missing somewhere: `malformedRule` then receives the number of the rule, from
    /// 1, and `malformedText` how it begins. The text is UTF-8 of less than 4 GB.
    static qxRefPointer<qxRuleSet> load(const char* text, std::size_t length,
                                        unsigned int* malformedRule = nullptr,
                                        qxString* malformedText = nullptr);
    static qxRefPointer<qxRuleSet> load(const qxString& text, unsigned int* malformedRule = nullptr,
                                        qxString* malformedText = nullptr);

    /// The same; without one `fault` receives where the rule begins that is none, its number and a text.
    static qxRefPointer<qxRuleSet> load(const char* text, std::size_t length, qxRuleFinding& fault);

    ~qxRuleSet() noexcept(false) override;
    qxRuleSet(const qxRuleSet&) = delete;
    qxRuleSet& operator=(const qxRuleSet&) = delete;

    QX_DECLARE_TYPE;

    /// False: rule sets are shared.
    bool useDeepCopy() override;

    bool hasRule(const qxString& name) const;

    /// The names in the order of the text.
    qxArray<qxString> getRuleNames() const;

    /// The place of the body of this rule in the text, from 1; false when there is no such rule.
    bool getBodyPlace(const qxString& name, unsigned int& line, unsigned int& column) const;

    /// What looks wrong: faults in bodies, names that neither the set nor `functions` nor the built-in parsers have
    /// ("not defined: NAME"), rules that call themselves before they take anything ("left recursion: a -> b -> a"), and
    /// "alternatives N and M can both match", where one begins with all that the other certainly takes, so that the
    /// first of them wins. In the order of the text.
    qxArray<qxRuleFinding> check(const qxArray<qxString>& functions) const;

    /// For the parsers of the library.
    const qxRuleCode& getCode() const { return *m_code; }

private:
    explicit qxRuleSet(std::unique_ptr<qxRuleCode> code);

    const std::unique_ptr<const qxRuleCode> m_code;
};
