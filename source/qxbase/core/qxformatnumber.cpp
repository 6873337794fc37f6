// SPDX-License-Identifier: see LICENSE

#include "core/qxformatnumber.h"

#include "core/qxdigits.h"
#include "core/qxtextbuilder.h"
#include "qxnumbertext.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr unsigned int DEFAULT_PRECISION = 6;

// A number as it is laid out, its parts in the order in which they are written.
struct Parts {
    char prefix[3] = {}; // the sign and the sign of the base
    unsigned int prefixLength = 0;
    std::size_t leadingZeros = 0;
    const char* digits = nullptr; // and the point
    std::size_t digitCount = 0;
    std::size_t trailingZeros = 0;
    char suffix[5] = {}; // the exponent
    unsigned int suffixLength = 0;

    void addPrefix(char c) { prefix[prefixLength++] = c; }
    void addSign(const qxConversion& conversion, bool isNegative)
    {
        if (isNegative)
            addPrefix('-');
        else if (conversion.hasPlus)
            addPrefix('+');
        else if (conversion.hasBlank)
            addPrefix(' ');
    }
};

char* put(char* place, const char* bytes, std::size_t count)
{
    qxTextBuilder::copy(place, bytes, count);
    return place + count;
}

char* put(char* place, char c, std::size_t count)
{
    if (count != 0) std::memset(place, c, count);
    return place + count;
}

void write(qxTextBuilder& out, const qxConversion& conversion, Parts& parts)
{
    const std::size_t used =
        parts.prefixLength + parts.leadingZeros + parts.digitCount + parts.trailingZeros + parts.suffixLength;
    std::size_t padding = conversion.width > used ? conversion.width - used : 0;
    char* place = out.extend(used + padding);
    if (conversion.hasZeros && !conversion.isLeft) {
        parts.leadingZeros += padding;
        padding = 0;
    }
    if (!conversion.isLeft) place = put(place, ' ', padding);
    place = put(place, parts.prefix, parts.prefixLength);
    place = put(place, '0', parts.leadingZeros);
    place = put(place, parts.digits, parts.digitCount);
    place = put(place, '0', parts.trailingZeros);
    place = put(place, parts.suffix, parts.suffixLength);
    if (conversion.isLeft) put(place, ' ', padding);
}

void writeInteger(qxTextBuilder& out, qxConversion conversion, Parts& parts, qxUInt64 magnitude,
                  unsigned int base, char letter)
{
    char digits[QX_INTEGER_DIGITS];
    char* const end = digits + sizeof digits;
    const bool isHidden = magnitude == 0 && conversion.hasPrecision && conversion.precision == 0;
    parts.digits = isHidden ? end : qxWriteDigits(end, magnitude, base, letter == 'X');
    parts.digitCount = static_cast<std::size_t>(end - parts.digits);
    if (conversion.precision > parts.digitCount) parts.leadingZeros = conversion.precision - parts.digitCount;
    const bool startsWithZero = parts.leadingZeros != 0 || (parts.digitCount != 0 && *parts.digits == '0');
    if (letter == 'o' && conversion.isAlternate && !startsWithZero) parts.leadingZeros = 1;
    if (conversion.hasPrecision) conversion.hasZeros = false;
    write(out, conversion, parts);
}

void writeSigned(qxTextBuilder& out, const qxConversion& conversion, const qxArgument& value)
{
    const qxInt64 number = static_cast<qxInt64>(value);
    const qxUInt64 bits = static_cast<qxUInt64>(number);
    Parts parts;
    parts.addSign(conversion, number < 0);
    writeInteger(out, conversion, parts, number < 0 ? 0 - bits : bits, 10, 'd');
}

void writeUnsigned(qxTextBuilder& out, const qxConversion& conversion, const qxArgument& value,
                   unsigned int base, char letter)
{
    qxUInt64 number = static_cast<qxUInt64>(value);
    const bool isNegative = value.isDouble() && static_cast<double>(value) < 0;
    if (isNegative && !conversion.is64Bit && static_cast<qxInt64>(number) >= -0x80000000LL)
        number &= 0xFFFFFFFF; // numbers of 32 bits are the two's complement of that size

    Parts parts;
    const bool hasBaseSign = conversion.isAlternate && number != 0 && base != 10 && letter != 'o';
    if (hasBaseSign || letter == 'p') {
        parts.addPrefix('0');
        parts.addPrefix(letter == 'p' ? 'x' : letter);
    }
    writeInteger(out, conversion, parts, number, base, letter);
}

void writeFixed(qxTextBuilder& out, const qxConversion& conversion, double value)
{
    const unsigned int precision = conversion.precisionOr(DEFAULT_PRECISION);
    const unsigned int shown = std::min(precision, QX_FIXED_PRECISION);
    char digits[QX_FIXED_ROOM + 1];
    Parts parts;
    parts.addSign(conversion, std::signbit(value));
    parts.digits = digits;
    parts.digitCount = qxDtoA(digits, std::fabs(value), shown, nullptr, QX_FIXED_ROOM);
    if (precision == 0 && conversion.isAlternate) digits[parts.digitCount++] = '.';
    parts.trailingZeros = precision - shown;
    write(out, conversion, parts);
}

// "e+05": the letter, the sign, and two digits or more.
void addExponent(Parts& parts, char letter, int exponent)
{
    char digits[QX_INTEGER_DIGITS];
    char* const end = digits + sizeof digits;
    const unsigned int magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    char* first = qxWriteDigits(end, magnitude, 10);
    if (magnitude < 10) *--first = '0';
    parts.suffix[0] = letter;
    parts.suffix[1] = exponent < 0 ? '-' : '+';
    parts.suffixLength = static_cast<unsigned int>(std::copy(first, end, parts.suffix + 2) - parts.suffix);
}

// d.ddde+dd; the alternate form has the point even without digits behind it.
void writeWithExponent(qxTextBuilder& out, const qxConversion& conversion, Parts& parts,
                       const qxDecimal& number, std::size_t trailingZeros, char letter)
{
    char digits[QX_SIGNIFICANT_DIGITS + 1];
    digits[0] = number.digits[0];
    digits[1] = '.';
    std::copy_n(number.digits + 1, number.count - 1, digits + 2);
    parts.digits = digits;
    parts.digitCount =
        number.count > 1 || trailingZeros != 0 || conversion.isAlternate ? number.count + 1 : 1;
    parts.trailingZeros = trailingZeros;
    addExponent(parts, letter, number.exponent);
    write(out, conversion, parts);
}

void writeScientific(qxTextBuilder& out, const qxConversion& conversion, double value, char letter)
{
    const unsigned int precision = conversion.precisionOr(DEFAULT_PRECISION);
    const unsigned int shown = std::min(precision, QX_SIGNIFICANT_DIGITS - 1);
    Parts parts;
    parts.addSign(conversion, std::signbit(value));
    writeWithExponent(out, conversion, parts, qxToDecimal(std::fabs(value), shown + 1), precision - shown,
                      letter);
}

// The form that fits the exponent, as C chooses it: trailing zeros are shown in the alternate form only.
void writeGeneral(qxTextBuilder& out, const qxConversion& conversion, double value, char letter)
{
    const unsigned int wanted = std::max(conversion.precisionOr(DEFAULT_PRECISION), 1U);
    qxDecimal number = qxToDecimal(std::fabs(value), std::min(wanted, QX_SIGNIFICANT_DIGITS));
    std::size_t zeros = conversion.isAlternate ? wanted - number.count : 0;
    if (!conversion.isAlternate)
        while (number.count > 1 && number.digits[number.count - 1] == '0') --number.count;

    Parts parts;
    parts.addSign(conversion, std::signbit(value));
    const bool isFixed = number.exponent >= -4 && number.exponent < static_cast<int>(wanted);
    if (!isFixed) return writeWithExponent(out, conversion, parts, number, zeros, letter == 'g' ? 'e' : 'E');

    const int behindPoint = static_cast<int>(number.count) - 1 - number.exponent;
    char digits[QX_FIXED_ROOM + 1];
    parts.digits = digits;
    parts.digitCount = qxLayOutFixed(digits, number, static_cast<unsigned int>(std::max(behindPoint, 0)));
    if (conversion.isAlternate && behindPoint <= 0) {
        digits[parts.digitCount++] = '.';
        zeros = wanted - static_cast<unsigned int>(number.exponent + 1);
    }
    parts.trailingZeros = zeros;
    write(out, conversion, parts);
}

bool isNumberLetter(char letter)
{
    static constexpr char LETTERS[] = "diuoOxXpbBfeEgG";
    return std::memchr(LETTERS, letter, sizeof LETTERS - 1) != nullptr;
}

// Infinity and what is not a number, under every letter: always padded with blanks.
void writeNonFinite(qxTextBuilder& out, qxConversion conversion, double value)
{
    Parts parts;
    const bool isInfinite = std::isinf(value);
    if (isInfinite) parts.addSign(conversion, value < 0);
    parts.digits = isInfinite ? "<inf>" : "<nan>";
    parts.digitCount = 5;
    conversion.hasZeros = false;
    write(out, conversion, parts);
}

} // namespace

bool qxFormatNumber(qxTextBuilder& out, char letter, const qxConversion& conversion, const qxArgument& value)
{
    if (value.isDouble() && !std::isfinite(static_cast<double>(value)) && isNumberLetter(letter)) {
        writeNonFinite(out, conversion, static_cast<double>(value));
        return true;
    }
    switch (letter) {
    case 'd':
    case 'i':
        writeSigned(out, conversion, value);
        return true;
    case 'u':
        writeUnsigned(out, conversion, value, 10, letter);
        return true;
    case 'o':
    case 'O':
        writeUnsigned(out, conversion, value, 8, letter);
        return true;
    case 'x':
    case 'X':
    case 'p':
        writeUnsigned(out, conversion, value, 16, letter);
        return true;
    case 'b':
    case 'B':
        writeUnsigned(out, conversion, value, 2, letter);
        return true;
    case 'f':
        writeFixed(out, conversion, static_cast<double>(value));
        return true;
    case 'e':
    case 'E':
        writeScientific(out, conversion, static_cast<double>(value), letter);
        return true;
    case 'g':
    case 'G':
        writeGeneral(out, conversion, static_cast<double>(value), letter);
        return true;
    default:
        return false;
    }
}

void qxFormatPadded(qxTextBuilder& out, const qxConversion& conversion, const char* bytes, std::size_t count)
{
    const std::size_t padding = conversion.width > count ? conversion.width - count : 0;
    char* place = out.extend(count + padding);
    if (!conversion.isLeft) place = put(place, ' ', padding);
    place = put(place, bytes, count);
    if (conversion.isLeft) put(place, ' ', padding);
}
