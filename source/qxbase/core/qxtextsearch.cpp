// SPDX-License-Identifier: see LICENSE

#include "core/qxtextsearch.h"

#include "qxconfig.h"

#include <bit>
#include <cstring>
#include <vector>

namespace
{

constexpr std::size_t NOWHERE = std::string_view::npos;

// Trying every position is the fastest way in ordinary text. A text made for the purpose can turn it quadratic, so
// the bytes that matched in vain are counted, and beyond this many for each byte of text the table takes over.
constexpr std::size_t VAIN_BYTES = 8;

// For each byte of the pattern: how long the longest beginning of the pattern is that also ends there.
std::vector<unsigned int> makeTable(std::string_view pattern)
{
    std::vector<unsigned int> table(pattern.size(), 0);
    unsigned int matched = 0;
    for (std::size_t i = 1; i < pattern.size(); ++i) {
        while (matched != 0 && pattern[i] != pattern[matched]) matched = table[matched - 1];
        if (pattern[i] == pattern[matched]) ++matched;
        table[i] = matched;
    }
    return table;
}

// The first or the last occurrence, without ever going back in the text.
std::size_t searchByTable(std::string_view text, std::string_view pattern, bool wantsLast)
{
    const std::vector<unsigned int> table = makeTable(pattern);
    std::size_t found = NOWHERE;
    unsigned int matched = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        while (matched != 0 && text[i] != pattern[matched]) matched = table[matched - 1];
        if (text[i] == pattern[matched]) ++matched;
        if (matched == pattern.size()) {
            found = i + 1 - pattern.size();
            if (!wantsLast) return found;
            matched = table[matched - 1];
        }
    }
    return found;
}

} // namespace

std::size_t qxCountEqual(const char* left, const char* right, std::size_t count)
{
    std::size_t i = 0;
    for (; count - i >= sizeof(qxUInt64); i += sizeof(qxUInt64)) {
        qxUInt64 leftBytes = 0;
        qxUInt64 rightBytes = 0;
        std::memcpy(&leftBytes, left + i, sizeof leftBytes);
        std::memcpy(&rightBytes, right + i, sizeof rightBytes);
        if (leftBytes != rightBytes) break;
    }
    while (i < count && left[i] == right[i]) ++i;
    return i;
}

std::size_t qxFindFirst(std::string_view text, std::string_view pattern)
{
    if (pattern.empty()) return 0;
    if (pattern.size() > text.size()) return NOWHERE;

    const std::size_t last = text.size() - pattern.size();
    std::size_t vain = 0;
    for (std::size_t position = 0; position <= last; ++position) {
        const void* const hit = std::memchr(text.data() + position, pattern[0], last - position + 1);
        if (!hit) return NOWHERE;
        position = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
        const std::size_t matched = qxCountEqual(text.data() + position, pattern.data(), pattern.size());
        if (matched == pattern.size()) return position;
        vain += matched;
        if (vain > VAIN_BYTES * text.size()) {
            const std::size_t found = searchByTable(text.substr(position + 1), pattern, false);
            return found == NOWHERE ? NOWHERE : position + 1 + found;
        }
    }
    return NOWHERE;
}

std::size_t qxFindLast(std::string_view text, std::string_view pattern)
{
    if (pattern.size() > text.size()) return NOWHERE;

    std::size_t vain = 0;
    for (std::size_t behind = text.size() - pattern.size() + 1; behind > 0; --behind) {
        const std::size_t position = behind - 1;
        if (!pattern.empty() && text[position] != pattern[0]) continue;
        const std::size_t matched = qxCountEqual(text.data() + position, pattern.data(), pattern.size());
        if (matched == pattern.size()) return position;
        vain += matched;
        if (vain > VAIN_BYTES * text.size())
            return searchByTable(text.substr(0, position + pattern.size() - 1), pattern, true);
    }
    return NOWHERE;
}
