// Patterns such as "%i = %n", translated to rules.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>

/// The rules that all string parsers have, on lines of their own.
extern const std::string_view qxStringParserRules;

/// The rule `main` of a pattern, and the rules that it needs besides those of all string parsers.
std::string qxTranslatePattern(std::string_view pattern, char16_t decimal);
