// UTF-8 inside a known range, without messages.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <bit>
#include <cstddef>

/// Bytes that the code takes; 0 for a code of 2^31 or more.
inline unsigned int qxMeasureUTF8(unsigned int code)
{
    if (code < 0x80) return 1;
    if (code < 0x800) return 2;
    if (code < 0x10000) return 3;
    if (code < 0x200000) return 4;
    if (code < 0x4000000) return 5;
    return code < 0x80000000 ? 6 : 0;
}

/// Writes the code to `out` and returns the bytes written; 0 for a code of 2^31 or more.
inline unsigned int qxWriteUTF8(char* out, unsigned int code)
{
    if (code < 0x80) {
        *out = static_cast<char>(code);
        return 1;
    }
    const unsigned int size = qxMeasureUTF8(code);
    if (size == 0) return 0;
    for (unsigned int i = size - 1; i > 0; --i) {
        out[i] = static_cast<char>(0x80 | (code & 0x3F));
        code >>= 6;
    }
    *out = static_cast<char>((0xFF00U >> size) | code); // as many leading ones as there are bytes
    return size;
}

/// The code of the sequence at `text`, of which `available` bytes (1 or more) may be read; its length in
/// `size`, 0 when the data is invalid or ends too early.
inline unsigned int qxReadUTF8(const char* text, std::size_t available, unsigned int& size)
{
    const unsigned char lead = static_cast<unsigned char>(*text);
    size = 1;
    if (lead < 0x80) return lead;

    const unsigned int count = static_cast<unsigned int>(std::countl_one(lead));
    size = 0;
    if (count < 2 || count > 6 || count > available) return 0;
    unsigned int code = lead & (0x7FU >> count);
    for (unsigned int i = 1; i < count; ++i) {
        const unsigned char next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return 0;
        code = code << 6 | (next & 0x3FU);
    }
    size = count;
    return code;
}
