// What references in documents stand for.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>

/// True for characters that may stand in a document.
inline bool qxXmlIsChar(unsigned int code)
{
    if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
    return code < 0xD800 || (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
}

/// The character that one of the five predefined references stands for; 0 for every other name.
char qxXmlPredefinedCharacter(std::string_view name);

/// The character that a reference named "#" and digits, or "#x" and hexadecimal digits, stands for; 0 for other
/// names and for what may not stand in a document.
unsigned int qxXmlNumberedCharacter(std::string_view name);

/// Appends the text of the reference to `text`; false when its name is neither predefined nor numbered.
bool qxXmlAppendReference(std::string_view name, std::string& text);

/// Appends `value` with all its predefined and numbered references replaced, in one pass: what they stand for is
/// not looked at again. All else stays.
void qxXmlDecodeReferences(std::string_view value, std::string& text);
