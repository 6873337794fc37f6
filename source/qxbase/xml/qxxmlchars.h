// The classes of characters in XML 1.0, fifth edition.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "text/qxtokenscan.h"

#include <array>
#include <cstddef>
#include <string_view>

/// Classes of ASCII characters, as bits.
enum qxXmlClass : unsigned char {
    QX_XML_CLASS_START = 1, ///< begins a name
    QX_XML_CLASS_NAME = 2,  ///< stands in a name
    QX_XML_CLASS_SPACE = 4,
    QX_XML_CLASS_DIGIT = 8,
    QX_XML_CLASS_HEX = 16,
    QX_XML_CLASS_LETTER = 32,
    QX_XML_CLASS_PUBID = 64 ///< stands in a public identifier
};

constexpr std::array<unsigned char, 128> qxMakeXmlClasses()
{
    std::array<unsigned char, 128> classes{};
    for (unsigned int c = 0; c < 128; ++c) {
        const bool isLower = c >= 'a' && c <= 'z';
        const bool isUpper = c >= 'A' && c <= 'Z';
        const bool isDigit = c >= '0' && c <= '9';
        const bool isStart = isLower || isUpper || c == '_' || c == ':';
        const bool isHex = isDigit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        bool isPubid = isLower || isUpper || isDigit || c == ' ' || c == '\n' || c == '\r';
        for (const char* other = "-'()+,./:=?;!*#@$_%"; *other != 0; ++other) {
            if (static_cast<unsigned char>(*other) == c) isPubid = true;
        }
        unsigned int bits = 0;
        if (isStart) bits |= QX_XML_CLASS_START;
        if (isStart || isDigit || c == '-' || c == '.') bits |= QX_XML_CLASS_NAME;
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') bits |= QX_XML_CLASS_SPACE;
        if (isDigit) bits |= QX_XML_CLASS_DIGIT;
        if (isHex) bits |= QX_XML_CLASS_HEX;
        if (isLower || isUpper) bits |= QX_XML_CLASS_LETTER;
        if (isPubid) bits |= QX_XML_CLASS_PUBID;
        classes[c] = static_cast<unsigned char>(bits);
    }
    return classes;
}

constexpr std::array<unsigned char, 128> QX_XML_CLASSES = qxMakeXmlClasses();

inline bool qxIsXmlClass(unsigned int token, unsigned int classes)
{
    return token < 128 && (QX_XML_CLASSES[token] & classes) != 0;
}

/// `text` without the white space at both ends.
inline std::string_view qxStripXmlSpace(std::string_view text)
{
    const auto isSpace = [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; };
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// One bit for each 16-bit token.
typedef std::array<qxUInt64, 1024> qxXmlTokenSet;

constexpr void qxAddXmlRange(qxXmlTokenSet& set, unsigned int first, unsigned int last)
{
    while (first <= last) {
        const bool isWholeWord = first % 64 == 0 && last - first >= 63;
        set[first / 64] |= isWholeWord ? ~0ULL : 1ULL << (first % 64);
        first += isWholeWord ? 64 : 1;
    }
}

constexpr qxXmlTokenSet qxMakeXmlNameStarts()
{
    qxXmlTokenSet set{};
    const unsigned int ranges[][2] = {
        {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},
        {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},
        {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
    };
    for (const auto& range : ranges) qxAddXmlRange(set, range[0], range[1]);
    return set;
}

constexpr qxXmlTokenSet qxMakeXmlNameTokens()
{
    qxXmlTokenSet set = qxMakeXmlNameStarts();
    const unsigned int ranges[][2] = {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};
    for (const auto& range : ranges) qxAddXmlRange(set, range[0], range[1]);
    return set;
}

constexpr qxXmlTokenSet QX_XML_NAME_STARTS = qxMakeXmlNameStarts();
constexpr qxXmlTokenSet QX_XML_NAME_TOKENS = qxMakeXmlNameTokens();

inline bool qxIsInXmlSet(const qxXmlTokenSet& set, unsigned int token)
{
    return (set[token / 64] >> (token % 64) & 1) != 0;
}

/// The high half of a character that may stand in names: U+10000 to U+EFFFF.
inline bool qxIsXmlNameHighSurrogate(unsigned int token)
{
    return token >= 0xD800 && token <= 0xDB7F;
}

inline bool qxIsHighSurrogate(unsigned int token)
{
    return (token & 0xFC00) == 0xD800;
}

inline bool qxIsLowSurrogate(unsigned int token)
{
    return (token & 0xFC00) == 0xDC00;
}

/// A token that is a character of a document by itself.
inline bool qxIsXmlChar(unsigned int token)
{
    if (token < 0x20) return token == 9 || token == 10 || token == 13;
    return token < 0xD800 || (token >= 0xE000 && token < 0xFFFE);
}

/// Up to three tokens that end a run of characters.
struct qxXmlStop {
    unsigned short first;
    unsigned short second;
    unsigned short third;

    bool has(unsigned int token) const { return token == first || token == second || token == third; }
};

/// Eight tokens: those in `stop`, those that are no character of ASCII, and with `isWide` not those from 128 up to
/// the surrogates.
template <bool isWide>
inline qxTokenAnswers qxStopsXmlText(qxTokenVector tokens, const qxXmlStop& stop)
{
    const qxTokenAnswers syntax = (tokens == stop.first) | (tokens == stop.second) | (tokens == stop.third);
    const qxTokenAnswers space =
        (tokens == 9) | (tokens == 10) | (tokens == 13); // clang refuses literals here
    // One unsigned comparison finds both those below 32 and those above the range.
    const qxTokenVector shifted = tokens - 0x20;
    const qxTokenAnswers outside = shifted >= static_cast<unsigned short>(isWide ? 0xD7E0 : 0x60);
    return syntax | (outside & ~space);
}

/// Skips characters up to one of `stop`, a token from 0xD800 on, or what is no character. The 0 behind the window
/// stops it too, so that no end is needed; it reads up to seven tokens beyond.
inline const char16_t* qxSkipXmlText(const char16_t* from, const qxXmlStop& stop)
{
    for (;;) {
        const unsigned int plain = qxFirstAnswer(qxStopsXmlText<true>(qxLoadTokens(from), stop));
        from += plain;
        if (plain < 8) return from;
    }
}

/// Writes the tokens as bytes up to the first one of `stop`, beyond ASCII or no character, but not from `limit` on.
/// The 0 behind the window stops it too. It reads up to seven tokens beyond, and `out` has room for as many.
inline const char16_t* qxCopyPlainXmlText(const char16_t* from, const char16_t* limit, const qxXmlStop& stop,
                                          char* out)
{
    while (from < limit) {
        const qxTokenVector tokens = qxLoadTokens(from);
        qxStoreLowBytes(out, tokens);
        const unsigned int plain = qxFirstAnswer(qxStopsXmlText<false>(tokens, stop));
        from += plain;
        out += plain;
        if (plain < 8) break;
    }
    return from;
}

/// Copies characters as UTF-8 to `out`, up to one of `stop`, to what is no character, or to `limit`, which is at most
/// the end of the window. Also stops before a character of two tokens that `limit` cuts apart. Writes up to 16 bytes
/// behind the text. `out` has room for three bytes a token.
const char16_t* qxCopyXmlText(const char16_t* from, const char16_t* limit, const qxXmlStop& stop, char*& out);
