// SPDX-License-Identifier: see LICENSE

#include "core/qxdigits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>

namespace
{

__extension__ typedef unsigned __int128 Wide;

constexpr qxUInt64 BEYOND_SIGNIFICANT = 1000000000000000; // 10^15

constexpr std::array<char, 200> makePairs()
{
    std::array<char, 200> pairs{};
    for (unsigned int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr std::array<char, 200> PAIRS = makePairs(); // "00" to "99"

constexpr std::array<qxUInt64, QX_SIGNIFICANT_DIGITS + 1> makePowers()
{
    std::array<qxUInt64, QX_SIGNIFICANT_DIGITS + 1> powers{};
    qxUInt64 power = 1;
    for (qxUInt64& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}

constexpr std::array<qxUInt64, QX_SIGNIFICANT_DIGITS + 1> POWERS_OF_TEN = makePowers();

char* writeDecimal(char* end, qxUInt64 magnitude)
{
    while (magnitude >= 100) {
        end -= 2;
        std::memcpy(end, &PAIRS[2 * (magnitude % 100)], 2);
        magnitude /= 100;
    }
    if (magnitude >= 10) {
        end -= 2;
        std::memcpy(end, &PAIRS[2 * magnitude], 2);
        return end;
    }
    *--end = static_cast<char>('0' + magnitude);
    return end;
}

// magnitude x 10^precision, rounded to the nearest integer, ties to the even one, all of it exact. False when
// the result has more than 15 digits.
bool scaleExactly(double magnitude, unsigned int precision, qxUInt64& result)
{
    if (precision > QX_SIGNIFICANT_DIGITS || magnitude >= static_cast<double>(BEYOND_SIGNIFICANT))
        return false;

    constexpr qxUInt64 HIDDEN_BIT = 1ULL << 52;
    const qxUInt64 bits = std::bit_cast<qxUInt64>(magnitude);
    const unsigned int exponent = static_cast<unsigned int>(bits >> 52);
    const qxUInt64 mantissa = (bits & (HIDDEN_BIT - 1)) | (exponent != 0 ? HIDDEN_BIT : 0);

    // The value is mantissa / 2^shift, and since it is below 2^50 the shift is at least 3. The product is
    // below 2^103, so with a shift of more than 104 nothing of it is left, not even for rounding.
    const unsigned int shift = 1075 - (exponent != 0 ? exponent : 1);
    const Wide product = static_cast<Wide>(mantissa) * POWERS_OF_TEN[precision];
    result = 0;
    if (shift > 104) return true;
    if (product >> shift >= BEYOND_SIGNIFICANT) return false;

    result = static_cast<qxUInt64>(product >> shift);
    const Wide half = static_cast<Wide>(1) << (shift - 1);
    const Wide rest = product & (half + (half - 1));
    if (rest > half || (rest == half && (result & 1) != 0)) ++result;
    return result < BEYOND_SIGNIFICANT;
}

unsigned int countDigits(qxUInt64 magnitude)
{
    unsigned int count = 1;
    while (count <= QX_SIGNIFICANT_DIGITS && magnitude >= POWERS_OF_TEN[count]) ++count;
    return count;
}

// Writes the digits of `scaled`, which is below 10^15, with the last `precision` of them behind the point.
unsigned int writeScaled(char* out, qxUInt64 scaled, unsigned int precision)
{
    const qxUInt64 whole = scaled / POWERS_OF_TEN[precision];
    const unsigned int wholeCount = countDigits(whole);
    writeDecimal(out + wholeCount, whole);
    if (precision == 0) return wholeCount;

    char* const point = out + wholeCount;
    char* const end = point + 1 + precision;
    char* const first = writeDecimal(end, scaled - whole * POWERS_OF_TEN[precision]);
    std::fill(point + 1, first, '0');
    *point = '.';
    return wholeCount + 1 + precision;
}

} // namespace

char* qxWriteDigits(char* end, qxUInt64 magnitude, unsigned int base, bool upperCase)
{
    if (base == 10) return writeDecimal(end, magnitude);

    const char* const symbols = upperCase ? "0123456789ABCDEF" : "0123456789abcdef";
    if ((base & (base - 1)) == 0) {
        const int bits = std::countr_zero(base);
        do {
            *--end = symbols[magnitude & (base - 1)];
            magnitude >>= bits;
        } while (magnitude != 0);
        return end;
    }
    do {
        *--end = symbols[magnitude % base];
        magnitude /= base;
    } while (magnitude != 0);
    return end;
}

qxDecimal qxToDecimal(double magnitude, unsigned int count)
{
    char text[32]; // d.ddde+dd, or de+dd for one digit
    const char* const end = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific,
                                          static_cast<int>(count) - 1)
                                .ptr;
    qxDecimal number;
    number.count = count;
    number.digits[0] = text[0];
    std::memcpy(number.digits + 1, text + 2, count - 1);

    const char* sign = text + (count > 1 ? count + 1 : 1) + 1;
    std::from_chars(sign + 1, end, number.exponent);
    if (*sign == '-') number.exponent = -number.exponent;
    return number;
}

unsigned int qxLayOutFixed(char* out, const qxDecimal& number, unsigned int precision)
{
    const auto digitAt = [&](int index) {
        return index >= 0 && index < static_cast<int>(number.count) ? number.digits[index] : '0';
    };
    char* place = out;
    if (number.exponent < 0) *place++ = '0';
    for (int index = 0; index <= number.exponent; ++index) *place++ = digitAt(index);
    if (precision != 0) *place++ = '.';
    int index = number.exponent + 1;
    for (unsigned int i = 0; i < precision; ++i) *place++ = digitAt(index++);
    return static_cast<unsigned int>(place - out);
}

unsigned int qxWriteFixed(char* out, double magnitude, unsigned int precision)
{
    qxUInt64 scaled = 0;
    if (scaleExactly(magnitude, precision, scaled)) return writeScaled(out, scaled, precision);

    const qxDecimal number = qxToDecimal(magnitude, QX_SIGNIFICANT_DIGITS);
    const int shown = number.exponent + 1 + static_cast<int>(precision);
    if (shown >= static_cast<int>(QX_SIGNIFICANT_DIGITS)) return qxLayOutFixed(out, number, precision);

    // With fewer digits to show, the value itself is rounded, once, to just those.
    const char* const end = std::to_chars(out, out + QX_FIXED_ROOM, magnitude, std::chars_format::fixed,
                                          static_cast<int>(precision))
                                .ptr;
    return static_cast<unsigned int>(end - out);
}
