// The kinds of characters that parsers tell apart.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <array>

namespace qxTokenKinds
{

enum Kind : unsigned int {
    SPACE = 1,
    TAB = 2,
    CR = 4,
    LF = 8,
    LOWER = 16,
    UPPER = 32,
    DIGIT = 64,
    HEX = 128, // digits have this bit too
    UNDERSCORE = 256,
    PLAIN = 512, // what plain identifiers hold besides
    CONTROL = 1024,
    SIGN = 2048,
    ABOVE = 4096, // every character above 127, and so both halves of a pair
    WHITE_SPACE = SPACE | TAB | CR | LF,
    LETTER = LOWER | UPPER,
    IDENTIFIER_START = LETTER | UNDERSCORE,
    IDENTIFIER = IDENTIFIER_START | DIGIT,
    PLAIN_START = IDENTIFIER_START | ABOVE,
    PLAIN_IDENTIFIER = IDENTIFIER | ABOVE | PLAIN
};

/// The kinds of the first 256 characters.
constexpr std::array<unsigned short, 256> makeTable()
{
    std::array<unsigned short, 256> kinds{};
    const auto add = [&kinds](unsigned int first, unsigned int last, unsigned int kind) {
        for (unsigned int c = first; c <= last; ++c) kinds[c] = static_cast<unsigned short>(kinds[c] | kind);
    };
    add(0, 31, CONTROL);
    add(127, 127, CONTROL);
    add(' ', ' ', SPACE);
    add('\t', '\t', TAB);
    add('\r', '\r', CR);
    add('\n', '\n', LF);
    add('a', 'z', LOWER);
    add('A', 'Z', UPPER);
    add('0', '9', DIGIT | HEX);
    add('a', 'f', HEX);
    add('A', 'F', HEX);
    add('_', '_', UNDERSCORE);
    add('-', '-', PLAIN | SIGN);
    add('.', '.', PLAIN);
    add('+', '+', SIGN);
    add(128, 255, ABOVE);
    return kinds;
}

inline constexpr std::array<unsigned short, 256> TABLE = makeTable();

inline unsigned int kindsOf(unsigned int character)
{
    return character < 256 ? TABLE[character] : static_cast<unsigned int>(ABOVE);
}

inline bool isOfKind(unsigned int character, unsigned int kinds)
{
    return (kindsOf(character) & kinds) != 0;
}

} // namespace qxTokenKinds
