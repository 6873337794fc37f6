// Reading the text of rules: what both the end of a rule and its elements are found by.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <string_view>

/// The constructs of rule text that hide what stands in them. All places are bytes.
namespace qxRuleScan
{

constexpr std::size_t NOWHERE = std::string_view::npos;

/// Behind the quote that closes the literal whose opening quote stands at `place`; a backslash hides the character
/// behind it. NOWHERE when there is none before `end`.
std::size_t behindLiteral(std::string_view text, std::size_t place, std::size_t end);

/// Behind the "]" that closes the set whose "[" stands at `place`.
std::size_t behindSet(std::string_view text, std::size_t place, std::size_t end);

/// True when a comment begins at `place`.
bool isComment(std::string_view text, std::size_t place, std::size_t end);

/// Behind the comment that begins at `place`.
std::size_t behindComment(std::string_view text, std::size_t place, std::size_t end);

/// Behind the name that begins at `place`; `place` itself when none does. Names are letters, digits and "_", the
/// first character no digit.
std::size_t behindName(std::string_view text, std::size_t place, std::size_t end);

} // namespace qxRuleScan
