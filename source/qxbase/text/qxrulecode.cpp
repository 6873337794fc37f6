// SPDX-License-Identifier: see LICENSE

#include "text/qxrulecode.h"

#include <algorithm>

const qxRuleEntry* qxRuleCode::findRule(std::string_view name) const
{
    const auto known = nameIndex.find(name);
    if (known == nameIndex.end() || ruleOfName[known->second] == qxRuleNode::NONE) return nullptr;
    return &rules[ruleOfName[known->second]];
}

qxRulePlace qxRuleCode::placeOf(unsigned int begin, unsigned int place, unsigned int end) const
{
    const std::string_view all(text);
    const std::string_view before = all.substr(begin, place - begin);
    const std::string_view line =
        before.substr(before.rfind('\n') + 1); // the whole when there is no line feed
    const std::string_view behind = all.substr(place, end - place);
    const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    qxRulePlace found;
    found.line = static_cast<unsigned int>(std::count(before.begin(), before.end(), '\n')) + 1;
    found.column = static_cast<unsigned int>(std::count_if(line.begin(), line.end(), isCharacter)) + 1;
    found.rest = behind.substr(0, behind.find_first_of("\r\n"));
    return found;
}

const qxRuleEntry& qxRuleCode::ruleAt(unsigned int place) const
{
    const auto isBefore = [](unsigned int where, const qxRuleEntry& rule) { return where < rule.begin; };
    return *(std::upper_bound(rules.begin(), rules.end(), place, isBefore) - 1); // they stand in order
}
