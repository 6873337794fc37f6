// SPDX-License-Identifier: see LICENSE

#include "qxruleset.h"

#include "text/qxrulecompiler.h"
#include "text/qxtextpiece.h"

#include <limits>
#include <string_view>

QX_DEFINE_TYPE(qxRuleSet, qxReference)

namespace
{

constexpr unsigned int LONGEST_SHOWN = 1000; // bytes of a rule that is no rule

} // namespace

qxRefPointer<qxRuleSet> qxRuleSet::load(const char* text, std::size_t length, unsigned int* malformedRule,
                                        qxString* malformedText)
{
    auto code = std::make_unique<qxRuleCode>();
    qxRuleSetFault fault;
    if (length < std::numeric_limits<unsigned int>::max()) {
        code->text.assign(text, length);
        if (qxCompileRules(*code, fault)) return new qxRuleSet(std::move(code));
    }
    if (malformedRule) *malformedRule = fault.rule;
    if (malformedText)
        *malformedText = qxPieceOf(std::string_view(code->text).substr(fault.place), LONGEST_SHOWN);
    return nullptr;
}

qxRefPointer<qxRuleSet> qxRuleSet::load(const char* text, std::size_t length, qxRuleFinding& fault)
{
    auto code = std::make_unique<qxRuleCode>();
    qxRuleSetFault found;
    fault = {1, 1, "1", "The rule set is too long", true};
    if (length >= std::numeric_limits<unsigned int>::max()) return nullptr;
    code->text.assign(text, length);
    if (qxCompileRules(*code, found)) return new qxRuleSet(std::move(code));
    const qxRulePlace place = code->placeOf(0, found.place, static_cast<unsigned int>(length));
    fault = {place.line, place.column, qxString::str("%d", found.rule),
             qxString::str("Malformed rule in parser -> '%s'", qxPieceOf(place.rest, LONGEST_SHOWN)), true};
    return nullptr;
}

qxRefPointer<qxRuleSet> qxRuleSet::load(const qxString& text, unsigned int* malformedRule,
                                        qxString* malformedText)
{
    return load(text.getString(), text.length(), malformedRule, malformedText);
}

qxRuleSet::qxRuleSet(std::unique_ptr<qxRuleCode> code) : m_code(std::move(code)) {}

qxRuleSet::~qxRuleSet() noexcept(false) = default;

bool qxRuleSet::useDeepCopy()
{
    return false;
}

bool qxRuleSet::hasRule(const qxString& name) const
{
    return m_code->findRule({name.getString(), name.length()}) != nullptr;
}

qxArray<qxString> qxRuleSet::getRuleNames() const
{
    qxDynamicArray<qxString> names;
    for (const qxRuleEntry& rule : m_code->rules)
        names.append(qxPieceOf(m_code->names[rule.name], qxString::MAX_LENGTH));
    return qxArray<qxString>(names.getData(), names.entries());
}

bool qxRuleSet::getBodyPlace(const qxString& name, unsigned int& line, unsigned int& column) const
{
    const qxRuleEntry* const rule = m_code->findRule({name.getString(), name.length()});
    if (!rule) return false;
    const qxRulePlace place = m_code->placeOf(0, rule->begin, static_cast<unsigned int>(m_code->text.size()));
    line = place.line;
    column = place.column;
    return true;
}
