// UTF-8, one character at a time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// Bytes that the code takes: 1 to 6. A code of 2^31 or more has none: the warning "Utf encoding on faulty
/// data set" is sent and 0 returned.
QX_API unsigned int qxUTF8Size(unsigned int code);

/// Bytes of the sequence that starts at `text`, by its first byte and checked up to its last; the zero at the
/// end of a text is never passed. Invalid data sends the warning "Utf decoding on faulty data input" and
/// gives 0.
QX_API unsigned int qxUTF8Size(const char* text);

/// Writes the code to `out` (room for 6 bytes) and returns the bytes written; faults as in qxUTF8Size(code).
QX_API unsigned int qxUInt32ToUTF8(char* out, unsigned int code);

/// The code of the sequence that starts at `text`, its length in `size` when that is not null; faults as in
/// qxUTF8Size(text), with 0 in `size`. Surrogates and overlong forms are decoded as they stand.
QX_API unsigned int qxUTF8ToULong(const char* text, unsigned char* size);
