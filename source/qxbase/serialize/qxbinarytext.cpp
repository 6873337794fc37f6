// SPDX-License-Identifier: see LICENSE

#include "serialize/qxbinarytext.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace
{

constexpr std::string_view BASE64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view HEX_LOWER = "0123456789abcdef";
constexpr std::string_view HEX_UPPER = "0123456789ABCDEF";
constexpr unsigned char NO_DIGIT = 0xFF;
constexpr std::uint32_t NO_GROUP = 0x80000000; // a group with a character that is no digit has this bit

using Values = std::array<unsigned char, 256>;
using Parts = std::array<std::uint32_t, 256>;

constexpr void enter(Values& values, std::string_view digits)
{
    for (std::size_t i = 0; i < digits.size(); ++i)
        values[static_cast<unsigned char>(digits[i])] = static_cast<unsigned char>(i);
}

constexpr Values makeValues(std::string_view digits, std::string_view others)
{
    Values values{};
    for (unsigned char& value : values) value = NO_DIGIT;
    enter(values, digits);
    enter(values, others);
    return values;
}

constexpr Values BASE64_VALUES = makeValues(BASE64, BASE64);
constexpr Values HEX_VALUES = makeValues(HEX_LOWER, HEX_UPPER);

// What each digit adds to its group when it stands at one place of it.
constexpr Parts makeParts(unsigned int shift)
{
    Parts parts{};
    for (std::size_t i = 0; i < parts.size(); ++i)
        parts[i] =
            BASE64_VALUES[i] == NO_DIGIT ? NO_GROUP : static_cast<std::uint32_t>(BASE64_VALUES[i]) << shift;
    return parts;
}

constexpr Parts PARTS[4] = {makeParts(18), makeParts(12), makeParts(6), makeParts(0)};

// Two characters for each value of 12 or 8 bits.
template <unsigned int COUNT>
struct Pairs {
    char text[COUNT][2];
};

template <unsigned int COUNT>
constexpr Pairs<COUNT> makePairs(std::string_view digits)
{
    Pairs<COUNT> pairs{};
    for (unsigned int i = 0; i < COUNT; ++i) {
        pairs.text[i][0] = digits[i / digits.size()];
        pairs.text[i][1] = digits[i % digits.size()];
    }
    return pairs;
}

constexpr Pairs PAIRS = makePairs<4096>(BASE64);
constexpr Pairs UPPER_PAIRS = makePairs<256>(HEX_UPPER);
constexpr Pairs LOWER_PAIRS = makePairs<256>(HEX_LOWER);

bool isSpace(unsigned char character)
{
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

void putByte(unsigned char*& bytes, unsigned int value)
{
    *bytes++ = static_cast<unsigned char>(value & 0xFF);
}

} // namespace

std::size_t qxEncodeBase64(const unsigned char* bytes, std::size_t count, unsigned char* text)
{
    unsigned char* next = text;
    for (; count >= 3; count -= 3, bytes += 3, next += 4) {
        const unsigned int group =
            static_cast<unsigned int>(bytes[0]) << 16 | static_cast<unsigned int>(bytes[1]) << 8 | bytes[2];
        std::memcpy(next, PAIRS.text[group >> 12], 2);
        std::memcpy(next + 2, PAIRS.text[group & 4095], 2);
    }
    if (count > 0) {
        const unsigned int second = count > 1 ? bytes[1] : 0U;
        const unsigned int group = static_cast<unsigned int>(bytes[0]) << 16 | second << 8;
        std::memcpy(next, PAIRS.text[group >> 12], 2);
        std::memcpy(next + 2, PAIRS.text[group & 4095], 2);
        if (count == 1) next[2] = '=';
        next[3] = '=';
        next += 4;
    }
    return static_cast<std::size_t>(next - text);
}

std::size_t qxEncodeHex(const unsigned char* bytes, std::size_t count, bool isUpper, unsigned char* text)
{
    const Pairs<256>& pairs = isUpper ? UPPER_PAIRS : LOWER_PAIRS;
    for (std::size_t i = 0; i < count; ++i) std::memcpy(text + 2 * i, pairs.text[bytes[i]], 2);
    return 2 * count;
}

bool qxBinaryTextDecoder::fail(qxBinaryTextFault fault)
{
    m_fault = fault;
    return false;
}

// Decodes groups as long as all their characters are digits; returns the characters. Call between groups.
std::size_t qxBinaryTextDecoder::decodeGroups(const unsigned char* text, std::size_t count,
                                              unsigned char*& bytes) const
{
    const unsigned char* next = text;
    unsigned char* out =
        bytes; // of its own: bytes that are stored may change `bytes`, for all the compiler knows
    if (!m_isBase64) {
        for (; count >= 2; count -= 2, next += 2) {
            const unsigned char high = HEX_VALUES[next[0]];
            const unsigned char low = HEX_VALUES[next[1]];
            if ((high | low) == NO_DIGIT) break; // a value has but four bits
            *out++ = static_cast<unsigned char>(high << 4 | low);
        }
    } else {
        for (; count >= 4; count -= 4, next += 4, out += 3) {
            const std::uint32_t group =
                PARTS[0][next[0]] | PARTS[1][next[1]] | PARTS[2][next[2]] | PARTS[3][next[3]];
            if (group & NO_GROUP) break;
            out[0] = static_cast<unsigned char>(group >> 16);
            out[1] = static_cast<unsigned char>(group >> 8 & 0xFF);
            out[2] = static_cast<unsigned char>(group & 0xFF);
        }
    }
    bytes = out;
    return static_cast<std::size_t>(next - text);
}

std::size_t qxBinaryTextDecoder::decode(const unsigned char* text, std::size_t count, unsigned char* bytes)
{
    unsigned char* next = bytes;
    std::size_t done = 0;
    while (done < count && m_fault == QX_BINARY_TEXT_OK) {
        if (m_digits == 0 && m_padding == 0) {
            const std::size_t taken = decodeGroups(text + done, count - done, next);
            done += taken;
            m_offset += taken;
            if (done == count) break;
        }
        if (!add(text[done], next)) break;
        ++done;
        ++m_offset;
    }
    return static_cast<std::size_t>(next - bytes);
}

bool qxBinaryTextDecoder::add(unsigned char character, unsigned char*& bytes)
{
    if (isSpace(character)) return true;
    if (m_isBase64 && character == '=') return addPadding();
    const unsigned char value = m_isBase64 ? BASE64_VALUES[character] : HEX_VALUES[character];
    if (value == NO_DIGIT) return fail(QX_BINARY_TEXT_NO_DIGIT);
    if (m_padding > 0) return fail(QX_BINARY_TEXT_GOES_ON);

    const unsigned int bits = m_isBase64 ? 6 : 4;
    const unsigned int before = m_digits * bits % 8; // bits that wait
    m_pending = m_pending << bits | value;
    if (before + bits >= 8) {
        const unsigned int rest = before + bits - 8;
        putByte(bytes, m_pending >> rest);
        m_pending &= (1U << rest) - 1;
    }
    m_digits = (m_digits + 1) % getGroupSize();
    return true;
}

bool qxBinaryTextDecoder::addPadding()
{
    if (m_digits < 2 || m_digits + m_padding == 4 || m_pending != 0) return fail(QX_BINARY_TEXT_PADDING);
    ++m_padding;
    return true;
}

bool qxBinaryTextDecoder::end()
{
    if (m_fault != QX_BINARY_TEXT_OK) return false;
    const bool isWhole = m_digits == 0 || m_digits + m_padding == getGroupSize();
    return isWhole || fail(QX_BINARY_TEXT_CUT);
}
