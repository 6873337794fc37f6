// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxascii.h"
#include "core/qxdigits.h"
#include "core/qxtextbuilder.h"
#include "core/qxutf8scan.h"
#include "qxmessage.h"
#include "qxutf8.h"

#include <algorithm>

namespace
{

constexpr unsigned int LATIN_END = 0x100; // the first code that no single byte stands for

// The control characters that have a letter of their own, and the letters.
constexpr char CONTROLS[] = "\a\b\t\n\v\f\r\\";
constexpr char LETTERS[] = "abtnvfr\\";

// Calls `use` with each code of the text, in order, up to invalid data, which is reported.
template <class Use>
void forEachCode(const qxString& text, Use use)
{
    const char* place = text.getString();
    const char* const end = place + text.length();
    while (place != end) {
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(place, static_cast<std::size_t>(end - place), size);
        if (size == 0) {
            qxMessage::message(QX_LEVEL_WARNING, "Utf decoding on faulty data input");
            return;
        }
        use(code);
        place += size;
    }
}

void appendHex(qxTextBuilder& builder, unsigned int code)
{
    char digits[QX_INTEGER_DIGITS];
    char* const end = digits + sizeof digits;
    const char* const first = qxWriteDigits(end, code, 16);
    builder.append(first, static_cast<std::size_t>(end - first));
}

// The byte that the escape "\xHH" at `text` stands for; -1 when there is none.
int hexEscape(const char* text, const char* end)
{
    if (end - text < 4 || text[0] != '\\' || text[1] != 'x') return -1;
    const int high = qxHexValue(text[2]);
    const int low = qxHexValue(text[3]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// A generator of numbers that follow from the key alone.
class KeyStream
{
public:
    explicit KeyStream(unsigned int key) : m_state(key) {}

    unsigned int next(unsigned int bound)
    {
        m_state += 0x9E3779B9U;
        unsigned int value = m_state;
        value = (value ^ (value >> 16)) * 0x21F0AAADU;
        value = (value ^ (value >> 15)) * 0x735A2D97U;
        return (value ^ (value >> 15)) % bound;
    }

private:
    unsigned int m_state;
};

constexpr char SYMBOLS[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr unsigned int SYMBOL_COUNT = sizeof SYMBOLS - 1;

} // namespace

qxString& qxString::toLower()
{
    if (length() != 0) std::transform(m_text, m_text + length(), editBytes(), qxToLower);
    return *this;
}

qxString& qxString::toUpper()
{
    if (length() != 0) std::transform(m_text, m_text + length(), editBytes(), qxToUpper);
    return *this;
}

qxString& qxString::reverse()
{
    if (length() == 0) return *this;
    char* const text = editBytes();
    char* const end = text + length();
    for (char* place = text; place != end;) { // each sequence first, then all of them
        unsigned int size = 0;
        qxReadUTF8(place, static_cast<std::size_t>(end - place), size);
        char* const next = place + std::max(size, 1U);
        std::reverse(place, next);
        place = next;
    }
    std::reverse(text, end);
    return *this;
}

double qxString::sortval() const
{
    double sum = 0.0;
    double weight = 1.0;
    for (unsigned int i = 0; i < length() && sum + weight * 256.0 != sum; ++i) {
        sum += static_cast<unsigned char>(m_text[i]) * weight;
        weight /= 256.0;
    }
    return sum;
}

qxString& qxString::identifier(qxInt64 value)
{
    char digits[QX_INTEGER_DIGITS + 2];
    char* const end = digits + sizeof digits;
    const qxUInt64 bits = static_cast<qxUInt64>(value);
    char* first = qxWriteDigits(end, value < 0 ? 0 - bits : bits, 10);
    if (value < 0) *--first = 'n';
    *--first = '_';
    setBytes(first, static_cast<std::size_t>(end - first));
    return *this;
}

bool qxString::isAsciiString() const
{
    return std::all_of(m_text, m_text + length(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

qxString& qxString::convertAsciiToUTF8()
{
    if (isAsciiString()) return *this;
    qxTextBuilder builder;
    for (unsigned int i = 0; i < length(); ++i) {
        char bytes[2];
        const unsigned int size = qxWriteUTF8(bytes, static_cast<unsigned char>(m_text[i]));
        builder.append(bytes, size);
    }
    setBytes(builder.bytes(), builder.length());
    return *this;
}

qxString& qxString::convertUTF8ToAscii()
{
    if (isAsciiString()) return *this;
    qxTextBuilder builder;
    forEachCode(*this,
                [&](unsigned int code) { builder.append(code < LATIN_END ? static_cast<char>(code) : '?'); });
    setBytes(builder.bytes(), builder.length());
    return *this;
}

qxString& qxString::convertNumListToUTF8()
{
    qxTextBuilder builder;
    const char* place = getString();
    const char* const end = place + length();
    while (place != end) {
        if (qxHexValue(*place) < 0 || (*place == '0' && end - place > 1 && qxToLower(place[1]) == 'x')) {
            place += qxHexValue(*place) < 0 ? 1 : 2; // of a separator or a prefix
            continue;
        }
        qxUInt64 code = 0;
        for (; place != end && qxHexValue(*place) >= 0; ++place)
            code = std::min<qxUInt64>(code * 16 + static_cast<unsigned int>(qxHexValue(*place)), 0xFFFFFFFF);
        char bytes[6];
        const unsigned int size = qxUInt32ToUTF8(bytes, static_cast<unsigned int>(code));
        builder.append(bytes, size);
    }
    setBytes(builder.bytes(), builder.length());
    return *this;
}

qxString& qxString::convertUTF8ToNumList(const qxString& separator, const qxString& prefix)
{
    qxTextBuilder builder;
    forEachCode(*this, [&](unsigned int code) {
        if (builder.length() != 0) builder.append(separator.getString(), separator.length());
        builder.append(prefix.getString(), prefix.length());
        appendHex(builder, code);
    });
    setBytes(builder.bytes(), builder.length());
    return *this;
}

qxString& qxString::convertCtrlToText(bool escape8Bit)
{
    qxTextBuilder builder;
    for (unsigned int i = 0; i < length(); ++i) {
        const char c = m_text[i];
        const unsigned char byte = static_cast<unsigned char>(c);
        const char* const control = c != 0 ? std::strchr(CONTROLS, c) : nullptr;
        if (control) {
            const char escape[] = {'\\', LETTERS[control - CONTROLS]};
            builder.append(escape, sizeof escape);
        } else if (byte < 0x20 || byte == 0x7F || (escape8Bit && byte >= 0x80)) {
            static constexpr char HEX[] = "0123456789ABCDEF";
            const char escape[] = {'\\', 'x', HEX[byte >> 4], HEX[byte & 15]};
            builder.append(escape, sizeof escape);
        } else {
            builder.append(c);
        }
    }
    setBytes(builder.bytes(), builder.length());
    return *this;
}

qxString& qxString::convertTextToCtrl()
{
    qxTextBuilder builder;
    const char* place = getString();
    const char* const end = place + length();
    while (place != end) {
        const int byte = hexEscape(place, end);
        const bool isEscape = *place == '\\' && end - place > 1 && place[1] != 0;
        const char* const letter = isEscape ? std::strchr(LETTERS, place[1]) : nullptr;
        if (byte >= 0) {
            builder.append(static_cast<char>(byte));
            place += 4;
        } else if (letter) {
            builder.append(CONTROLS[letter - LETTERS]);
            place += 2;
        } else {
            builder.append(*place++);
        }
    }
    setBytes(builder.bytes(), builder.length());
    return *this;
}

bool qxString::hasEscapedUTF8Chars() const
{
    const char* place = getString();
    const char* const end = place + length();
    for (; place != end; ++place) {
        if (hexEscape(place, end) >= 0x80) return true;
        if (*place == '\\' && place + 1 != end && place[1] == '\\')
            ++place; // an escaped backslash escapes nothing
    }
    return false;
}

qxString& qxString::scramble(unsigned int key)
{
    if (length() == 0) return *this;
    char* const text = editBytes();
    KeyStream stream(key);
    for (char* place = text; place != text + length(); ++place) {
        const char* const symbol = *place != 0 ? std::strchr(SYMBOLS, *place) : nullptr;
        if (!symbol) continue;
        // Subtracting from one and the same number twice gives back what there was.
        const unsigned int index = static_cast<unsigned int>(symbol - SYMBOLS);
        *place = SYMBOLS[(stream.next(SYMBOL_COUNT) + SYMBOL_COUNT - index) % SYMBOL_COUNT];
    }
    return *this;
}
