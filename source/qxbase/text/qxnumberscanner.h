// Numbers at the start of a text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// A decimal number found in a text: where its parts stand. White space, one sign, digits with a point among them
/// or at either end, and an exponent if digits follow its letter.
struct qxNumberParts {
    bool isNegative = false;
    const char* whole = nullptr; // the digits before the point
    const char* wholeEnd = nullptr;
    const char* fraction = nullptr; // the digits behind it
    const char* fractionEnd = nullptr;
    int exponent = 0;          // kept within -100,000 to 100,000
    const char* end = nullptr; // behind the number

    bool hasDigits() const { return whole != wholeEnd || fraction != fractionEnd; }
};

/// Scans the text from `text` to `end` up to the first character that does not belong to the number. Without a
/// number there are no digits, and the end of it is `text`.
qxNumberParts qxScanNumber(const char* text, const char* end, char decimalPoint);

/// The number cut off toward zero; beyond 64 bits the nearest that fits. 0 without digits.
qxInt64 qxIntegerOf(const qxNumberParts& number);

/// The same without a sign: 0 for a negative number.
qxUInt64 qxUnsignedOf(const qxNumberParts& number);

/// The nearest double; infinite beyond its range, 0 below it and without digits.
double qxDoubleOf(const qxNumberParts& number);
