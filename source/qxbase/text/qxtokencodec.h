// Bytes to 16-bit tokens and tokens to UTF-8, a block at a time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>

/// How the bytes of an input become tokens.
enum class qxTokenForm : unsigned char {
    BYTE, ///< one character each
    UTF8,
    UTF16_LITTLE,
    UTF16_BIG
};

/// Why decoding stopped.
enum class qxDecodeStop : unsigned char {
    DONE,  ///< out of bytes or of room
    SHORT, ///< the next character is cut off by the end of the bytes
    FAULT  ///< the next byte begins no character
};

/// What qxDecodeTokens did.
struct qxDecodeResult {
    std::size_t bytes;  ///< taken
    std::size_t tokens; ///< written
    qxDecodeStop stop;
    bool hasPairs; ///< some of the tokens are surrogates
};

/// Decodes whole characters. `room` is 2 or more. UTF-8 is checked strictly: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF; units of UTF-16 are taken as they are.
qxDecodeResult qxDecodeTokens(qxTokenForm form, const unsigned char* bytes, std::size_t count, char16_t* out,
                              std::size_t room);

/// The bytes from which `count` tokens were decoded. A high surrogate counts nothing and a low one the whole
/// character; the token 0 of a faulty byte counts that byte, except in UTF-16.
std::size_t qxMeasureSource(qxTokenForm form, const char16_t* tokens, std::size_t count);

/// Writes the bytes from which `count` tokens were decoded, which qxMeasureSource counts, to `out`.
void qxEncodeSource(qxTokenForm form, const char16_t* tokens, std::size_t count, unsigned char* out);

/// Writes the tokens as UTF-8 and returns the bytes written; `out` has room for three a token. A surrogate
/// without its other half becomes U+FFFD.
std::size_t qxTokensToUTF8(const char16_t* tokens, std::size_t count, char* out);
