// One character at a time out of bytes, and back.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "text/qxtokencodec.h"

/// A character at the start of some bytes.
struct qxLexCharacter {
    unsigned int code = 0; ///< 0 for a fault
    unsigned int size = 0; ///< bytes; of a fault all that belong to it
    bool isFault = false;
    bool isShort = false; ///< the bytes end within it: only their end makes it a fault
};

/// Decodes one character. UTF-8 and UTF-16 are strict: overlong forms, halves of pairs and codes beyond U+10FFFF are
/// faults. A faulty sequence of UTF-8 is a first byte and those behind it that it counts and that continue it.
qxLexCharacter qxDecodeCharacter(qxTokenForm form, const unsigned char* bytes, std::size_t count);

/// Writes the character's bytes to `out`, which has room for four, and returns how many. What cannot be written
/// becomes U+FFFD, or "?" where bytes are characters.
unsigned int qxEncodeCharacter(qxTokenForm form, unsigned int code, unsigned char* out);
