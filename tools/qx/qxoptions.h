// The command line of one command: options anywhere, the rest in order.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// The command line cannot be understood.
class qxUsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Splits a command line by the options that a command knows.
///
/// Options are written `--name`, `--name=value` or `--name value`, short ones `-n` in the same way. They stand
/// anywhere; `--` ends them, and `-` alone is an argument.
class qxOptions
{
public:
    struct Known {
        std::string_view name; ///< with its dashes
        bool takesValue;
    };

    /// Raises qxUsageError for an unknown option and for a missing or unwanted value.
    qxOptions(const std::vector<std::string>& words, std::initializer_list<Known> known);

    bool has(std::string_view name) const { return get(name).has_value(); }

    /// The value of the last option of this name; empty for one that takes none.
    std::optional<std::string> get(std::string_view name) const;

    const std::vector<std::string>& getArguments() const { return m_arguments; }

private:
    struct Given {
        std::string name;
        std::string value;
    };

    std::vector<Given> m_given;
    std::vector<std::string> m_arguments;
};

/// `text` as a 32-bit number, decimal or with 0x before it hexadecimal; raises qxUsageError otherwise.
unsigned int parseMask(const std::string& text);
