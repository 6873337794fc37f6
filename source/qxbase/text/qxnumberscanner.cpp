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

// The value of a number of few digits: both factors are exact then, and so one operation rounds correctly. See William D.
// Clinger, "How to Read Floating Point Numbers Accurately", 1990.
bool readShort(const qxNumberParts& number, double& value)
{
    constexpr std::ptrdiff_t MOST_DIGITS = 15; // all numbers of so many digits are below 2^53
    constexpr double POWERS[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int LARGEST_POWER = static_cast<int>(std::size(POWERS)) - 1; // the last that is exact
    const std::ptrdiff_t fractionCount = number.fractionEnd - number.fraction;
    if (number.wholeEnd - number.whole + fractionCount > MOST_DIGITS) return false;
    const int power = number.exponent - static_cast<int>(fractionCount);
    if (power < -LARGEST_POWER || power > LARGEST_POWER) return false;
    qxInt64 digits = 0;
    for (const char* place = number.whole; place != number.wholeEnd; ++place)
        digits = digits * 10 + (*place - '0');
    for (const char* place = number.fraction; place != number.fractionEnd; ++place)
        digits = digits * 10 + (*place - '0');
    value = static_cast<double>(digits);
    value = power < 0 ? value / POWERS[-power] : value * POWERS[power];
    return true;
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
    double value = 0.0;
    if (readShort(number, value)) return number.isNegative ? -value : value;

    // The standard reader knows the full stop only, so the parts are put together with it.
    std::string text(number.whole, number.wholeEnd);
    text += '.';
    text.append(number.fraction, number.fractionEnd);
    if (number.whole == number.wholeEnd) text.insert(text.begin(), '0');
    text += 'e';
    text += std::to_string(number.exponent);

    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = magnitudeOf(number) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return number.isNegative ? -value : value;
}
