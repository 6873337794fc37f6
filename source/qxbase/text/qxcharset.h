// Sets of characters.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <string_view>
#include <vector>

/// Characters in or not in ranges: a bit each for those below 256, which a test takes one look to find.
class qxCharSet
{
public:
    static constexpr unsigned int BITS = 256;

    /// From the text between the brackets of a set: characters, ranges "a-z" and codes "#x" with hexadecimal digits,
    /// with "^" before them those that are not among these.
    static qxCharSet fromText(std::string_view text);
    static qxCharSet ofCharacter(char32_t code);
    static qxCharSet ofCharacters(std::string_view characters);

    bool has(char32_t code) const
    {
        if (code < BITS) return hasBit(static_cast<unsigned int>(code));
        return isAbove(code);
    }
    bool hasBit(unsigned int code) const { return (m_bits[code / 64] >> (code % 64) & 1) != 0; }

    /// True when it has a character of 256 and more.
    bool hasAbove() const { return m_isNegated || !m_ranges.empty(); }
    qxUInt64 getBits(unsigned int index) const { return m_bits[index]; }

    /// True when some character is in both.
    bool overlaps(const qxCharSet& other) const;

    void addRange(char32_t first, char32_t last);
    void negate();

private:
    struct Range {
        char32_t first;
        char32_t last;
    };
    bool isAbove(char32_t code) const;
    void sort();
    bool isAboveIn(const qxCharSet& other) const;

    qxUInt64 m_bits[BITS / 64] = {};
    std::vector<Range> m_ranges; // of 256 and more, in order
    bool m_isNegated = false;    // those above are not in the ranges
};
