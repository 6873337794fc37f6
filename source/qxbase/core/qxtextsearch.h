// Finding a text in a text, in time that grows with their lengths only.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <string_view>

/// How many bytes are equal before the first difference, `count` at most.
std::size_t qxCountEqual(const char* left, const char* right, std::size_t count);

/// Where `pattern` occurs first in `text`, or std::string_view::npos. An empty pattern occurs at 0.
std::size_t qxFindFirst(std::string_view text, std::string_view pattern);

/// Where `pattern` occurs last in `text`, or std::string_view::npos. An empty pattern occurs at the end.
std::size_t qxFindLast(std::string_view text, std::string_view pattern);
