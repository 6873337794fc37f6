// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlchars.h"

#include <algorithm>

namespace
{

/// Copies characters that take two bytes, up to eight at once and the first in any case, and returns how many.
unsigned int copyPairs(const char16_t* from, const char16_t* limit, char* out)
{
    if constexpr (std::endian::native != std::endian::little) {
        out[0] = static_cast<char>(0xC0 | *from >> 6);
        out[1] = static_cast<char>(0x80 | (*from & 0x3F));
        return 1;
    }
    const qxTokenVector tokens = qxLoadTokens(from);
    const qxTokenVector shifted = tokens - 0x80;
    const unsigned int found = qxFirstAnswer(shifted >= 0x780);
    const qxTokenVector pairs =
        (tokens >> 6 | (tokens & 0x3F) << 8) | 0x80C0; // the first byte is the low one
    std::memcpy(out, &pairs, sizeof pairs);
    return static_cast<unsigned int>(std::min<std::ptrdiff_t>(found, limit - from));
}

/// Copies characters beyond ASCII, with single ones of ASCII between them.
const char16_t* copyWide(const char16_t* from, const char16_t* limit, const qxXmlStop& stop, char*& out)
{
    char* to = out;
    for (; from < limit; ++from) {
        const unsigned int token = *from;
        if (token < 0x80) {
            const bool isSingle = token >= 0x20 && from + 1 < limit && from[1] >= 0x80 && !stop.has(token);
            if (!isSingle) break;
            *to++ = static_cast<char>(token);
        } else if (token < 0x800) {
            const unsigned int pairs = copyPairs(from, limit, to);
            from += pairs - 1;
            to += 2 * pairs;
        } else if ((token & 0xF800) != 0xD800) {
            if (token >= 0xFFFE) break;
            *to++ = static_cast<char>(0xE0 | token >> 12);
            *to++ = static_cast<char>(0x80 | (token >> 6 & 0x3F));
            *to++ = static_cast<char>(0x80 | (token & 0x3F));
        } else {
            if (!qxIsHighSurrogate(token) || from + 1 == limit || !qxIsLowSurrogate(from[1])) break;
            const unsigned int code = 0x10000 + ((token - 0xD800) << 10) + (*++from - 0xDC00U);
            *to++ = static_cast<char>(0xF0 | code >> 18);
            *to++ = static_cast<char>(0x80 | (code >> 12 & 0x3F));
            *to++ = static_cast<char>(0x80 | (code >> 6 & 0x3F));
            *to++ = static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    out = to;
    return from;
}

} // namespace

const char16_t* qxCopyXmlText(const char16_t* from, const char16_t* limit, const qxXmlStop& stop, char*& out)
{
    while (from < limit) {
        const char16_t* const plainEnd = std::min(qxCopyPlainXmlText(from, limit, stop, out), limit);
        out += plainEnd - from;
        if (plainEnd == limit || *plainEnd < 0x80) return plainEnd;
        from = copyWide(plainEnd, limit, stop, out);
        if (from == plainEnd) break;
    }
    return from;
}
