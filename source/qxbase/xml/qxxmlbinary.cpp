// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlbinary.h"

#include "xml/qxxmlchars.h"

#include <array>

namespace
{

constexpr std::string_view BASE64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view HEX = "0123456789abcdef";
constexpr unsigned char NO_DIGIT = 0xFF;

typedef std::array<unsigned char, 256> Values;

constexpr Values makeValues(std::string_view digits)
{
    Values values{};
    for (unsigned char& value : values) value = NO_DIGIT;
    for (std::size_t i = 0; i < digits.size(); ++i)
        values[static_cast<unsigned char>(digits[i])] = static_cast<unsigned char>(i);
    return values;
}

constexpr Values makeHexValues()
{
    Values values = makeValues(HEX);
    for (unsigned char i = 10; i < 16; ++i) values[static_cast<unsigned char>('A' + i - 10)] = i;
    return values;
}

constexpr Values BASE64_VALUES = makeValues(BASE64);
constexpr Values HEX_VALUES = makeHexValues();

unsigned int byteAt(std::string_view bytes, std::size_t index)
{
    return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

void appendBase64(std::string& text, std::string_view bytes)
{
    text.reserve(text.size() + (bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const unsigned int group = byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
        const std::size_t left = bytes.size() - i;
        text += BASE64[group >> 18];
        text += BASE64[group >> 12 & 63];
        text += left > 1 ? BASE64[group >> 6 & 63] : '=';
        text += left > 2 ? BASE64[group & 63] : '=';
    }
}

/// Puts digits of 4 or 6 bits together to bytes.
class Joiner
{
public:
    Joiner(const Values& values, unsigned int bits, std::string& bytes)
        : m_values(values), m_bits(bits), m_bytes(bytes)
    {}

    bool add(char c)
    {
        const unsigned char value = m_values[static_cast<unsigned char>(c)];
        if (value == NO_DIGIT) return false;
        m_pending = m_pending << m_bits | value;
        m_pendingBits += m_bits;
        ++m_count;
        if (m_pendingBits < 8) return true;
        m_pendingBits -= 8;
        m_bytes += static_cast<char>(m_pending >> m_pendingBits);
        m_pending &= (1U << m_pendingBits) - 1;
        return true;
    }

    std::size_t getCount() const { return m_count; }

    /// False when bits are left that are not those of padding.
    bool isWhole() const { return m_pending == 0 && m_pendingBits < m_bits; }

private:
    const Values& m_values;
    const unsigned int m_bits;
    std::string& m_bytes;
    unsigned int m_pending = 0;
    unsigned int m_pendingBits = 0;
    std::size_t m_count = 0;
};

} // namespace

void qxXmlAppendBinary(std::string& text, std::string_view bytes, bool isBase64)
{
    if (isBase64) return appendBase64(text, bytes);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += HEX[byte >> 4];
        text += HEX[byte & 15];
    }
}

bool qxXmlReadBinary(std::string_view text, bool isBase64, std::string& bytes)
{
    bytes.clear();
    Joiner joiner(isBase64 ? BASE64_VALUES : HEX_VALUES, isBase64 ? 6 : 4, bytes);
    std::size_t padding = 0;
    for (const char c : text) {
        if (qxIsXmlClass(static_cast<unsigned char>(c), QX_XML_CLASS_SPACE)) continue;
        if (isBase64 && c == '=')
            ++padding;
        else if (padding != 0 || !joiner.add(c))
            return false;
    }
    const bool isPadded = !isBase64 || (padding < 3 && (joiner.getCount() + padding) % 4 == 0);
    return isPadded && joiner.isWhole();
}
