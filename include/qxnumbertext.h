// Numbers written as text, without the C library's locale.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// Writes `value` in `base` (2 to 16, lower-case digits), padded with zeros to at least `width` characters,
/// and returns the characters written, without the terminator that follows them. `length`, when not null,
/// receives the same number. With `isUnsigned` set the value's bits are an unsigned number.
///
/// `buffer` has room for max(`width` + 1, 66) characters. A base outside 2 to 16 writes an empty text.
QX_API unsigned int qxLtoA(char* buffer, qxInt64 value, unsigned int base, unsigned int width,
                           unsigned int* length = nullptr, unsigned char isUnsigned = 0);
QX_API unsigned int qxLtoA(wchar_t* buffer, qxInt64 value, unsigned int base, unsigned int width,
                           unsigned int* length = nullptr, unsigned char isUnsigned = 0);

/// Writes `value` with `precision` digits after the decimal point, at most 15 significant digits and zeros
/// behind them, and returns the characters written, without the terminator that follows them. `length`, when
/// not null, receives the same number.
///
/// `buffer` has room for `maxDigits` + 1 characters. A text of more than `maxDigits` characters, and a value
/// that is not finite, send the warning "Too large number for qxDtoA" and write an empty text.
QX_API unsigned int qxDtoA(char* buffer, double value, unsigned int precision, unsigned int* length = nullptr,
                           unsigned int maxDigits = 400);
QX_API unsigned int qxDtoA(wchar_t* buffer, double value, unsigned int precision,
                           unsigned int* length = nullptr, unsigned int maxDigits = 400);
