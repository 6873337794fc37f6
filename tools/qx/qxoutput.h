// Data on standard output.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

/// A stream or file could not be opened, read or written; the text says which and why.
class qxFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Writes `text` to standard output; raises qxFileError when that fails.
void writeOutput(std::string_view text);

/// Replaces the file `name` by `bytes`, as a whole or not at all, or writes them to standard output for "-"; raises
/// qxFileError when that fails. A device or a pipe is only written to.
void writeFile(const std::string& name, std::string_view bytes);

/// Writes out what the C library still holds; raises qxFileError when that fails.
void flushOutput();

/// `text` in double quotes, with `\"`, `\\`, `\n`, `\r`, `\t` and `\xHH` for other control characters.
std::string quote(std::string_view text);

/// The reverse; nothing when `text` is not what quote makes.
std::optional<std::string> unquote(std::string_view text);

inline std::string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

inline const char* flagText(bool flag)
{
    return flag ? "true" : "false";
}
