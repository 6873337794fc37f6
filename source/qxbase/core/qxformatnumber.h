// The conversions of a format that write numbers, and their padding.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"

#include <cstddef>

class qxTextBuilder;

/// What stands between the percent sign and the letter of a conversion.
struct qxConversion {
    bool isLeft = false;
    bool hasPlus = false;
    bool hasBlank = false;
    bool isAlternate = false;
    bool hasZeros = false;
    bool hasPrecision = false;
    bool is64Bit = false;
    unsigned int position = 0; // of the argument, from 1; 0: the next one
    std::size_t width = 0;
    unsigned int precision = 0;

    unsigned int precisionOr(unsigned int other) const { return hasPrecision ? precision : other; }
};

/// Appends `value` converted as `letter` says. False, and nothing appended, when it is no letter of a number.
bool qxFormatNumber(qxTextBuilder& out, char letter, const qxConversion& conversion, const qxArgument& value);

/// Appends `count` bytes with blanks up to the width.
void qxFormatPadded(qxTextBuilder& out, const qxConversion& conversion, const char* bytes, std::size_t count);
