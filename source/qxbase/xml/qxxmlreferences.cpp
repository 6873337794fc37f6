// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlreferences.h"

#include "core/qxutf8scan.h"

#include <charconv>

char qxXmlPredefinedCharacter(std::string_view name)
{
    if (name == "lt") return '<';
    if (name == "gt") return '>';
    if (name == "amp") return '&';
    if (name == "quot") return '"';
    if (name == "apos") return '\'';
    return 0;
}

unsigned int qxXmlNumberedCharacter(std::string_view name)
{
    if (name.size() < 2 || name.front() != '#') return 0;
    const bool isHexadecimal = name[1] == 'x';
    const std::string_view digits = name.substr(isHexadecimal ? 2 : 1);
    unsigned int code = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, code, isHexadecimal ? 16 : 10);
    return result.ec == std::errc() && result.ptr == end && qxXmlIsChar(code) ? code : 0;
}

bool qxXmlAppendReference(std::string_view name, std::string& text)
{
    if (const char character = qxXmlPredefinedCharacter(name)) {
        text += character;
        return true;
    }
    const unsigned int code = qxXmlNumberedCharacter(name);
    if (code == 0) return false;
    char bytes[6];
    text.append(bytes, qxWriteUTF8(bytes, code));
    return true;
}

void qxXmlDecodeReferences(std::string_view value, std::string& text)
{
    // Looking for the end of a reference never goes beyond the next "&", so that many of them are not many looks.
    std::size_t done = 0;
    for (std::size_t start = value.find('&'); start != std::string_view::npos;) {
        const std::size_t end = value.find_first_of("&;", start + 1);
        if (end == std::string_view::npos) break;
        if (value[end] == ';') {
            text.append(value, done, start - done);
            done = qxXmlAppendReference(value.substr(start + 1, end - start - 1), text) ? end + 1 : start;
        }
        start = value[end] == '&' ? end : value.find('&', end);
    }
    text.append(value, done);
}
