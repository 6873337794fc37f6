// Bytes as text: base64 and hexadecimal digits.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>

/// Appends the bytes as base64 with its padding, in one line, or as hexadecimal digits in lower case.
void qxXmlAppendBinary(std::string& text, std::string_view bytes, bool isBase64);

/// Reads such a text, in which white space means nothing and hexadecimal digits may have either case. False when it is
/// none; `bytes` is then of no use.
bool qxXmlReadBinary(std::string_view text, bool isBase64, std::string& bytes);
