// SPDX-License-Identifier: see LICENSE

#include "text/qxnumberscanner.h"

#include "core/qxascii.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace
{

constexpr int LARGEST_EXPONENT = 100000; // beyond the digits of any text and the range of any number

const char* skipDigits(const char* text, const char* end)
{
    return std::find_if_not(text, end, qxIsDigit);
}

// Reads an exponent at `text` and returns its end; `text` itself when no digits follow the letter.
const char* scanExponent(const char* text, const char* end, int& exponent)
{
    if (text == end || qxToLower(*text) != 'e') return text;
    const char* place = text + 1;
    const bool isNegative = place != end && *place == '-';
    if (place != end && (*place == '-' || *place == '+')) ++place;
    const char* const digitsEnd = skipDigits(place, end);
    if (place == digitsEnd) return text;
    for (; place != digitsEnd; ++place) exponent = std::min(exponent * 10 + (*place - '0'), LARGEST_EXPONENT);
    if (isNegative) exponent = -exponent;
    return digitsEnd;
}

// The place of the point from the first digit that is not 0; 0 when there is none.
int magnitudeOf(const qxNumberParts& number)
{
    const auto isNotZero = [](char c) { return c != '0'; };
    const char* const first = std::find_if(number.whole, number.wholeEnd, isNotZero);
    if (first != number.wholeEnd) return static_cast<int>(number.wholeEnd - first) + number.exponent;
    const char* const second = std::find_if(number.fraction, number.fractionEnd, isNotZero);
    if (second == number.fractionEnd) return 0;
    return static_cast<int>(number.fraction - second) + number.exponent;
}

// What stands before the point when the exponent has moved it, at most `limit`.
qxUInt64 wholeOf(const qxNumberParts& number, qxUInt64 limit)
{
    const std::ptrdiff_t wholeCount = number.wholeEnd - number.whole;
    const std::ptrdiff_t count = wholeCount + (number.fractionEnd - number.fraction);
    const std::ptrdiff_t point = wholeCount + number.exponent;
    qxUInt64 whole = 0;
    for (std::ptrdiff_t i = 0; i < point && (i < count || whole != 0); ++i) {
        const char digit = i >= count       ? '0'
                           : i < wholeCount ? number.whole[i]
                                            : number.fraction[i - wholeCount];
        const unsigned int value = static_cast<unsigned int>(digit - '0');
        if (whole > (limit - value) / 10) return limit;
        whole = whole * 10 + value;
    }
    return whole;
}

} // namespace

qxNumberParts qxScanNumber(const char* text, const char* end, char decimalPoint)
{
    qxNumberParts number;
    number.end = text;
    const char* place = std::find_if_not(text, end, qxIsWhiteSpace);
    number.isNegative = place != end && *place == '-';
    if (place != end && (*place == '-' || *place == '+')) ++place;

    number.whole = place;
    place = number.wholeEnd = number.fraction = number.fractionEnd = skipDigits(place, end);
    if (place != end && *place == decimalPoint) {
        number.fraction = place + 1;
        number.fractionEnd = skipDigits(number.fraction, end);
        if (number.hasDigits()) place = number.fractionEnd;
    }
    if (number.hasDigits()) number.end = scanExponent(place, end, number.exponent);
    return number;
}

qxInt64 qxIntegerOf(const qxNumberParts& number)
{
    constexpr qxUInt64 LARGEST = std::numeric_limits<qxInt64>::max();
    const qxUInt64 whole = wholeOf(number, number.isNegative ? LARGEST + 1 : LARGEST);
    return static_cast<qxInt64>(number.isNegative ? 0 - whole : whole);
}

qxUInt64 qxUnsignedOf(const qxNumberParts& number)
{
    return number.isNegative ? 0 : wholeOf(number, std::numeric_limits<qxUInt64>::max());
}

double qxDoubleOf(const qxNumberParts& number)
{
    if (!number.hasDigits()) return 0.0;

    // The standard reader knows the full stop only, so the parts are put together with it.
    std::string text(number.whole, number.wholeEnd);
    text += '.';
    text.append(number.fraction, number.fractionEnd);
    if (number.whole == number.wholeEnd) text.insert(text.begin(), '0');
    text += 'e';
    text += std::to_string(number.exponent);

    double value = 0.0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = magnitudeOf(number) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return number.isNegative ? -value : value;
}
