// SPDX-License-Identifier: see LICENSE

#include "qxnumbertext.h"

#include "core/qxdigits.h"
#include "qxmessage.h"

#include <algorithm>
#include <cmath>

namespace
{

template <class Character>
unsigned int finish(Character* end, const Character* buffer, unsigned int* length)
{
    *end = 0;
    const unsigned int written = static_cast<unsigned int>(end - buffer);
    if (length) *length = written;
    return written;
}

template <class Character>
unsigned int writeInteger(Character* buffer, qxInt64 value, unsigned int base, unsigned int width,
                          unsigned int* length, bool isUnsigned)
{
    if (base < 2 || base > 16) return finish(buffer, buffer, length);

    const bool isNegative = value < 0 && !isUnsigned;
    const qxUInt64 bits = static_cast<qxUInt64>(value);
    char digits[QX_INTEGER_DIGITS];
    char* const end = digits + sizeof digits;
    const char* const first = qxWriteDigits(end, isNegative ? 0 - bits : bits, base);

    Character* place = buffer;
    if (isNegative) *place++ = '-';
    const unsigned int used = static_cast<unsigned int>(end - first) + (isNegative ? 1 : 0);
    if (width > used) place = std::fill_n(place, width - used, static_cast<Character>('0'));
    return finish(std::copy(first, static_cast<const char*>(end), place), buffer, length);
}

template <class Character>
unsigned int writeDouble(Character* buffer, double value, unsigned int precision, unsigned int* length,
                         unsigned int maxDigits)
{
    char digits[QX_FIXED_ROOM];
    const unsigned int shown = std::min(precision, QX_FIXED_PRECISION);
    const bool isNegative = std::signbit(value);
    const bool isFinite = std::isfinite(value);
    const unsigned int used = isFinite ? qxWriteFixed(digits, std::fabs(value), shown) : 0;
    if (!isFinite || (isNegative ? 1ULL : 0ULL) + used + (precision - shown) > maxDigits) {
        qxMessage::message(QX_LEVEL_WARNING, "Too large number for qxDtoA");
        return finish(buffer, buffer, length);
    }
    Character* place = buffer;
    if (isNegative) *place++ = '-';
    place = std::copy_n(digits, used, place);
    return finish(std::fill_n(place, precision - shown, static_cast<Character>('0')), buffer, length);
}

} // namespace

unsigned int qxLtoA(char* buffer, qxInt64 value, unsigned int base, unsigned int width, unsigned int* length,
                    unsigned char isUnsigned)
{
    return writeInteger(buffer, value, base, width, length, isUnsigned != 0);
}

unsigned int qxLtoA(wchar_t* buffer, qxInt64 value, unsigned int base, unsigned int width,
                    unsigned int* length, unsigned char isUnsigned)
{
    return writeInteger(buffer, value, base, width, length, isUnsigned != 0);
}

unsigned int qxDtoA(char* buffer, double value, unsigned int precision, unsigned int* length,
                    unsigned int maxDigits)
{
    return writeDouble(buffer, value, precision, length, maxDigits);
}

unsigned int qxDtoA(wchar_t* buffer, double value, unsigned int precision, unsigned int* length,
                    unsigned int maxDigits)
{
    return writeDouble(buffer, value, precision, length, maxDigits);
}
