// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxascii.h"
#include "core/qxdigits.h"
#include "core/qxformatnumber.h"
#include "core/qxformattext.h"
#include "core/qxtextbuilder.h"
#include "core/qxutf8scan.h"
#include "qxerror.h"
#include "qxutf8.h"

#include <algorithm>

namespace
{

constexpr unsigned int MAX_ARGUMENTS = 16;
constexpr qxInt64 LARGEST_COUNT = 1000000; // beyond every width and precision that fits a string
constexpr qxUInt64 FIRST_ADDRESS = 4096;   // no text starts below it
constexpr double LARGEST_PLAIN = 1e15;     // of a double that is written as the integer it holds

// Reads a format once from front to back. Literal text is copied; each percent sign starts a conversion with
// the parts, in this order: position "n$", flags, width, precision, lengths that mean little, and the letter.
class Formatter
{
public:
    Formatter(qxTextBuilder& result, const char* format, std::size_t length, const qxArgument* arguments,
              unsigned int count)
        : m_format(format), m_at(format), m_end(format + length), m_arguments(arguments), m_count(count),
          m_result(result)
    {}

    void run();

private:
    void convert();
    bool convertPlainInteger();
    void readPosition(qxConversion& conversion);
    void readFlags(qxConversion& conversion);
    void readWidth(qxConversion& conversion);
    void readPrecision(qxConversion& conversion);
    void readLengths(qxConversion& conversion);
    qxInt64 readNumber();
    qxInt64 readStar();
    bool has(char c) const { return m_at != m_end && *m_at == c; }
    const qxArgument& argument(unsigned int position);

    void write(char letter, const qxConversion& conversion, const qxArgument& value);
    void writeCharacter(const qxConversion& conversion, const qxArgument& value);
    void writeText(const qxConversion& conversion, const qxArgument& value);
    void writeWideText(const qxConversion& conversion, const qxArgument& value);
    [[noreturn]] void throwUnknownOption() const;

    const char* const m_format;
    const char* m_at;
    const char* const m_end;
    const qxArgument* const m_arguments;
    const unsigned int m_count;
    unsigned int m_next = 0;
    qxTextBuilder& m_result;
};

void Formatter::run()
{
    while (m_at != m_end) {
        const char* const start = m_at;
        while (m_at != m_end && *m_at != '%') ++m_at;
        m_result.append(start, static_cast<std::size_t>(m_at - start));
        if (m_at == m_end) return;
        ++m_at;
        if (has('%')) {
            m_result.append('%');
            ++m_at;
        } else if (!convertPlainInteger()) {
            convert();
        }
    }
}

// "%d", "%4d", "%02d": most conversions of numbers are such, and their digits go straight to their place. False, with
// nothing done, for all others and for numbers below 0 or too large.
bool Formatter::convertPlainInteger()
{
    const char* at = m_at;
    const char padding = at != m_end && *at == '0' ? '0' : ' ';
    if (padding == '0') ++at;
    const std::size_t width = at != m_end && qxIsDigit(*at) ? static_cast<std::size_t>(*at++ - '0') : 0;
    if (at == m_end || *at != 'd' || m_next >= m_count) return false;
    const qxArgument& value = m_arguments[m_next];
    const double real = value.isDouble() ? static_cast<double>(value) : 0.0;
    if (!(real >= 0.0 && real < LARGEST_PLAIN)) return false;
    const qxInt64 number = value.isDouble() ? static_cast<qxInt64>(real) : static_cast<qxInt64>(value);
    if (number < 0) return false;
    m_at = at + 1;
    ++m_next;

    char digits[QX_INTEGER_DIGITS];
    char* const end = digits + sizeof digits;
    const char* const first = qxWriteDigits(end, static_cast<qxUInt64>(number), 10);
    const std::size_t count = static_cast<std::size_t>(end - first);
    char* place = m_result.extend(std::max(count, width));
    for (std::size_t left = width; left > count; --left) *place++ = padding;
    qxTextBuilder::copy(place, first, count);
    return true;
}

void Formatter::convert()
{
    qxConversion conversion;
    readPosition(conversion);
    readFlags(conversion);
    readWidth(conversion);
    readPrecision(conversion);
    readLengths(conversion);
    if (m_at == m_end) throwUnknownOption();
    const char letter = *m_at++;
    write(letter, conversion, argument(conversion.position));
}

void Formatter::readPosition(qxConversion& conversion)
{
    const char* const start = m_at;
    const qxInt64 number = readNumber();
    if (m_at == start || !has('$')) {
        m_at = start; // digits without the dollar sign are flags and a width
        return;
    }
    ++m_at;
    if (number < 1 || number > MAX_ARGUMENTS)
        qxExceptionThrows::qxThrowFatal("Using qxString::format(\"%%n$\") where n<1 or n>16");
    conversion.position = static_cast<unsigned int>(number);
}

void Formatter::readFlags(qxConversion& conversion)
{
    for (; m_at != m_end; ++m_at) {
        switch (*m_at) {
        case '-':
            conversion.isLeft = true;
            break;
        case '+':
            conversion.hasPlus = true;
            break;
        case ' ':
            conversion.hasBlank = true;
            break;
        case '#':
            conversion.isAlternate = true;
            break;
        case '0':
            conversion.hasZeros = true;
            break;
        default:
            return;
        }
    }
}

void Formatter::readWidth(qxConversion& conversion)
{
    if (!has('*')) {
        conversion.width = static_cast<std::size_t>(readNumber());
        return;
    }
    const qxInt64 width = readStar();
    if (width < 0) conversion.isLeft = true;
    conversion.width = static_cast<std::size_t>(width < 0 ? -width : width);
}

void Formatter::readPrecision(qxConversion& conversion)
{
    if (!has('.')) return;
    ++m_at;
    const qxInt64 precision = has('*') ? readStar() : readNumber();
    if (precision < 0) return; // as if there were none
    conversion.hasPrecision = true;
    conversion.precision = static_cast<unsigned int>(precision);
}

void Formatter::readLengths(qxConversion& conversion)
{
    for (; m_at != m_end; ++m_at) {
        switch (*m_at) {
        case 'h':
            break;
        case 'l':
        case 'L':
        case 'q':
        case 'j':
        case 'z':
        case 't':
            conversion.is64Bit = true;
            break;
        case 'I':
            if (m_end - m_at < 3 || (std::memcmp(m_at, "I64", 3) != 0 && std::memcmp(m_at, "I32", 3) != 0))
                return;
            conversion.is64Bit = m_at[1] == '6';
            m_at += 2;
            break;
        default:
            return;
        }
    }
}

// Digits, none of them being 0, as a number of at most LARGEST_COUNT.
qxInt64 Formatter::readNumber()
{
    qxInt64 number = 0;
    for (; m_at != m_end && qxIsDigit(*m_at); ++m_at)
        number = std::min(number * 10 + (*m_at - '0'), LARGEST_COUNT);
    return number;
}

// The argument that a star stands for: the next one, or the one whose position follows as in "*2$".
qxInt64 Formatter::readStar()
{
    ++m_at;
    qxConversion star;
    readPosition(star);
    return std::clamp(static_cast<qxInt64>(argument(star.position)), -LARGEST_COUNT, LARGEST_COUNT);
}

const qxArgument& Formatter::argument(unsigned int position)
{
    static const qxArgument nothing;
    const unsigned int index = position != 0 ? position - 1 : m_next++;
    return index < m_count ? m_arguments[index] : nothing;
}

void Formatter::write(char letter, const qxConversion& conversion, const qxArgument& value)
{
    switch (letter) {
    case 'c':
        return writeCharacter(conversion, value);
    case 's':
        return writeText(conversion, value);
    case 'S':
        return writeWideText(conversion, value);
    default:
        break;
    }
    if (!qxFormatNumber(m_result, letter, conversion, value)) throwUnknownOption();
}

// One byte for what a char can hold, signed or unsigned; a character beyond that as UTF-8.
void Formatter::writeCharacter(const qxConversion& conversion, const qxArgument& value)
{
    const qxInt64 code = static_cast<qxInt64>(value);
    char bytes[6] = {static_cast<char>(code)};
    unsigned int size = 1;
    if (code < -128 || code > 255) {
        const bool isCode = code > 0 && code <= 0xFFFFFFFF;
        size = qxUInt32ToUTF8(bytes, isCode ? static_cast<unsigned int>(code) : 0xFFFFFFFF);
    }
    qxFormatPadded(m_result, conversion, bytes, size);
}

void Formatter::writeText(const qxConversion& conversion, const qxArgument& value)
{
    const std::size_t limit = conversion.precisionOr(LARGEST_COUNT);
    if (value.isString()) {
        const qxString& text = value.getString();
        qxFormatPadded(m_result, conversion, text.getString(), std::min<std::size_t>(limit, text.length()));
        return;
    }
    const char* const text = static_cast<const char*>(static_cast<void*>(value));
    if (!value.isPointer() || static_cast<qxUInt64>(value) < FIRST_ADDRESS)
        qxExceptionThrows::qxThrowFatal("Using qxString::format(\"%%s\",arg) where arg is no valid pointer");
    const void* const end = conversion.hasPrecision ? std::memchr(text, 0, limit) : text + std::strlen(text);
    qxFormatPadded(m_result, conversion, text,
                   end ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : limit);
}

void Formatter::writeWideText(const qxConversion& conversion, const qxArgument& value)
{
    if (!value.isPointer() || static_cast<qxUInt64>(value) < FIRST_ADDRESS)
        qxExceptionThrows::qxThrowFatal("Using qxString::format(\"%%S\",arg) where arg is no valid pointer");
    const wchar_t* const wide = static_cast<const wchar_t*>(static_cast<void*>(value));
    const std::size_t limit = conversion.precisionOr(LARGEST_COUNT);
    std::size_t units = 0;
    while (units < limit && wide[units] != 0) ++units; // no more units than bytes are wanted

    const qxString text(wide, units);
    std::size_t length = 0;
    while (length < text.length()) { // the precision counts bytes and never splits a character
        unsigned int size = 0;
        qxReadUTF8(text.getString() + length, text.length() - length, size);
        if (length + size > limit) break;
        length += size;
    }
    qxFormatPadded(m_result, conversion, text.getString(), length);
}

void Formatter::throwUnknownOption() const
{
    // A format that fills a whole string leaves no room for the words around it.
    const std::size_t shown = std::min<std::size_t>(static_cast<std::size_t>(m_end - m_format), 65000);
    const qxString format(m_format, shown);
    qxExceptionThrows::qxThrowFatal("Unknown format option in string '%s'", format);
}

} // namespace

void qxFormatText(qxTextBuilder& out, const char* format, std::size_t length, const qxArgument* arguments,
                  unsigned int count)
{
    Formatter(out, format, length, arguments, count).run();
}

qxString& qxString::formatArguments(const char* format, const qxArgument* arguments, unsigned int count)
{
    return formatArguments(format, format ? std::strlen(format) : 0, arguments, count);
}

qxString& qxString::formatArguments(const char* format, std::size_t length, const qxArgument* arguments,
                                    unsigned int count)
{
    qxTextBuilder result;
    qxFormatText(result, format, length, arguments, count);
    setBytes(result.bytes(), result.length());
    return *this;
}
