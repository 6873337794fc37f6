// Texts and numbers as JSON writes them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "core/qxutf8scan.h"

#include <string>
#include <string_view>

/// The names under which a value with a time, and an error, stand in objects.
constexpr std::string_view QX_JSON_TIME = "time";
constexpr std::string_view QX_JSON_VALUE = "value";
constexpr std::string_view QX_JSON_ERROR = "error";

/// Bytes of the character at `text`, of which `available` (1 or more) may be read; 0 when that is no UTF-8: overlong
/// forms, halves of pairs and codes above 10FFFF are none.
inline unsigned int qxSizeOfCharacter(const char* text, std::size_t available)
{
    unsigned int size = 0;
    const unsigned int code = qxReadUTF8(text, available, size);
    if (size != qxMeasureUTF8(code) || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return 0;
    return size;
}

/// Appends the text in quotes. What is no UTF-8 in it becomes U+FFFD, byte by byte.
void qxAppendJSONText(std::string& out, std::string_view text);

/// Appends the shortest form that reads back as the same number; "null" for one that JSON cannot say.
void qxAppendJSONNumber(std::string& out, double number);
