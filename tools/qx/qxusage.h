// What a command says to words that it cannot understand.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <charconv>
#include <stdexcept>
#include <string>

/// The command line cannot be understood.
class qxUsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// `text`, all of it, as a decimal number; raises qxUsageError "'TEXT' is no WHAT" otherwise.
template <class Number>
Number parseNumber(const std::string& text, const char* what)
{
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) throw qxUsageError("'" + text + "' is no " + what);
    return number;
}
