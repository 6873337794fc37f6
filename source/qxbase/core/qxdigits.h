// Digits of numbers, the parts from which numbers are laid out as text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// Room for any magnitude in any base.
constexpr unsigned int QX_INTEGER_DIGITS = 64;

/// Writes `magnitude` in `base` (2 to 16) so that its last digit stands before `end`; returns its first
/// digit. 0 is one digit. At most QX_INTEGER_DIGITS are written.
char* qxWriteDigits(char* end, qxUInt64 magnitude, unsigned int base, bool upperCase = false);

/// Digits behind the point up to which qxWriteFixed works; behind that many a double has only zeros.
constexpr unsigned int QX_FIXED_PRECISION = 340;

/// Room for every text that qxWriteFixed writes: 309 digits, the point, and the digits behind it.
constexpr unsigned int QX_FIXED_ROOM = 310 + QX_FIXED_PRECISION;

/// Writes `magnitude` (finite, not negative) with `precision` digits behind the point, none and no point when
/// that is 0. At most 15 significant digits are written, zeros follow them. Returns the characters written.
unsigned int qxWriteFixed(char* out, double magnitude, unsigned int precision);

/// Significant digits that a floating-point number is written with at most.
constexpr unsigned int QX_SIGNIFICANT_DIGITS = 15;

/// A number rounded to some digits: digits[0].digits[1]... x 10^exponent.
struct qxDecimal {
    char digits[QX_SIGNIFICANT_DIGITS];
    unsigned int count;
    int exponent;
};

/// `magnitude` (finite, not negative) rounded to `count` digits, 1 to 15.
qxDecimal qxToDecimal(double magnitude, unsigned int count);

/// Writes `number` with `precision` digits behind the point, none and no point when that is 0, and with zeros
/// where it has no digits; its own digits are not rounded. Returns the characters written.
unsigned int qxLayOutFixed(char* out, const qxDecimal& number, unsigned int precision);
