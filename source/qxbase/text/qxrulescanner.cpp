// SPDX-License-Identifier: see LICENSE

#include "text/qxrulescanner.h"

#include "core/qxascii.h"

namespace
{

bool isNameStart(char c)
{
    const char lower = qxToLower(c);
    return (lower >= 'a' && lower <= 'z') || c == '_';
}

} // namespace

std::size_t qxRuleScan::behindLiteral(std::string_view text, std::size_t place, std::size_t end)
{
    const char quote = text[place];
    for (std::size_t i = place + 1; i < end; ++i) {
        if (text[i] == quote) return i + 1;
        if (text[i] == '\\') ++i;
    }
    return NOWHERE;
}

std::size_t qxRuleScan::behindSet(std::string_view text, std::size_t place, std::size_t end)
{
    const std::size_t closer = text.substr(0, end).find(']', place + 1);
    return closer == NOWHERE ? NOWHERE : closer + 1;
}

bool qxRuleScan::isComment(std::string_view text, std::size_t place, std::size_t end)
{
    return end - place > 1 && text[place] == '/' && text[place + 1] == '*';
}

std::size_t qxRuleScan::behindComment(std::string_view text, std::size_t place, std::size_t end)
{
    const std::size_t closer = text.substr(0, end).find("*/", place + 2);
    return closer == NOWHERE ? NOWHERE : closer + 2;
}

std::size_t qxRuleScan::behindName(std::string_view text, std::size_t place, std::size_t end)
{
    if (place == end || !isNameStart(text[place])) return place;
    while (place < end && (isNameStart(text[place]) || qxIsDigit(text[place]))) ++place;
    return place;
}
