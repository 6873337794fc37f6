// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"

#include "core/qxstringrefill.h"
#include "qxmessage.h"

#include <array>
#include <cstring>
#include <type_traits>

namespace
{

constexpr std::size_t BARE_LENGTH = 36; // of the text form without braces
constexpr std::size_t TEXT_LENGTH = BARE_LENGTH + 2;

constexpr unsigned int NO_DIGIT = 0x100; // no digit has this bit

constexpr std::array<char, 512> makeDigitPairs()
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::array<char, 512> pairs{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        pairs[2 * byte] = digits[byte / 16];
        pairs[2 * byte + 1] = digits[byte % 16];
    }
    return pairs;
}

constexpr std::array<unsigned short, 256> makeDigitValues()
{
    std::array<unsigned short, 256> values{};
    for (unsigned short& value : values) value = NO_DIGIT;
    for (unsigned short i = 0; i < 16; ++i) {
        values[static_cast<unsigned char>("0123456789ABCDEF"[i])] = i;
        values[static_cast<unsigned char>("0123456789abcdef"[i])] = i;
    }
    return values;
}

constexpr std::array<char, 512> DIGIT_PAIRS = makeDigitPairs();
constexpr std::array<unsigned short, 256> DIGIT_VALUES = makeDigitValues();

template <unsigned int Bytes>
char* writeDigits(char* out, unsigned int value)
{
    for (unsigned int shift = Bytes * 8; shift > 0; shift -= 8, out += 2)
        std::memcpy(out, &DIGIT_PAIRS[(value >> (shift - 8) & 0xFF) * 2], 2);
    return out;
}

template <class Character>
unsigned int digitValue(Character c)
{
    const auto unit = static_cast<std::make_unsigned_t<Character>>(c);
    if constexpr (sizeof(Character) > 1) { // the whole unit counts, not its low byte
        if (unit > 0xFF) return NO_DIGIT;
    }
    return DIGIT_VALUES[unit];
}

// Reads bytes of two digits each; false when one of the characters is no digit.
template <class Character>
bool readBytes(const Character* text, unsigned char* bytes, unsigned int count)
{
    unsigned int seen = 0;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned int value = digitValue(text[2 * i]) << 4 | digitValue(text[2 * i + 1]);
        bytes[i] = static_cast<unsigned char>(value);
        seen |= value;
    }
    return seen < NO_DIGIT;
}

// The text between the braces, or without any; null when the text does not have the form of a GUID.
template <class Character>
const Character* findBareText(const Character* text, std::size_t length)
{
    if (length == TEXT_LENGTH) {
        if (text[0] != '{' || text[TEXT_LENGTH - 1] != '}') return nullptr;
        ++text;
    } else if (length != BARE_LENGTH) {
        return nullptr;
    }
    const bool hasDashes = text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
    return hasDashes ? text : nullptr;
}

// The record that the text shows, else what to say about the first fault. Literals are cut where question marks and a
// dash would mean another character to some compilers.
template <class Character>
const char* readText(const Character* text, std::size_t length, qxGUIDRecord& record)
{
    const Character* const bare = findBareText(text, length);
    if (!bare) return "Malformed qxGUID {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    unsigned char bytes[8];
    if (!readBytes(bare, bytes, 4))
        return "Malformed qxGUID {????????"
               "-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    if (!readBytes(bare + 9, bytes + 4, 2))
        return "Malformed qxGUID {XXXXXXXX-????"
               "-XXXX-XXXX-XXXXXXXXXXXX}";
    if (!readBytes(bare + 14, bytes + 6, 2))
        return "Malformed qxGUID {XXXXXXXX-XXXX-????"
               "-XXXX-XXXXXXXXXXXX}";
    unsigned char last[8];
    if (!readBytes(bare + 19, last, 2) || !readBytes(bare + 24, last + 2, 6))
        return "Malformed qxGUID {XXXXXXXX-XXXX-XXXX-????"
               "-????????????}";

    record.Data1 = static_cast<unsigned int>(bytes[0]) << 24 | static_cast<unsigned int>(bytes[1]) << 16 |
                   static_cast<unsigned int>(bytes[2]) << 8 | bytes[3];
    record.Data2 = static_cast<unsigned short>(bytes[4] << 8 | bytes[5]);
    record.Data3 = static_cast<unsigned short>(bytes[6] << 8 | bytes[7]);
    std::memcpy(record.Data4, last, sizeof last);
    return nullptr;
}

template <class Character>
qxGUIDRecord recordOf(const Character* text, std::size_t length)
{
    qxGUIDRecord record{};
    if (const char* const fault = readText(text, length, record)) qxMessage::message(QX_LEVEL_WARNING, fault);
    return record;
}

template <class Character>
std::size_t measure(const Character* text)
{
    std::size_t length = 0;
    while (length <= TEXT_LENGTH && text && text[length] != 0) ++length; // more is wrong, however much
    return length;
}

qxUInt64 littleEndian(const unsigned char* bytes)
{
    qxUInt64 value = 0;
    for (unsigned int i = 0; i < 8; ++i) value |= static_cast<qxUInt64>(bytes[i]) << (8 * i);
    return value;
}

} // namespace

qxGUID::qxGUID(qxUInt64 first, qxUInt64 second)
{
    m_record.Data1 = static_cast<unsigned int>(first & 0xFFFFFFFF);
    m_record.Data2 = static_cast<unsigned short>(first >> 32 & 0xFFFF);
    m_record.Data3 = static_cast<unsigned short>(first >> 48);
    for (unsigned char& byte : m_record.Data4) {
        byte = static_cast<unsigned char>(second & 0xFF);
        second >>= 8;
    }
}

qxGUID::qxGUID(unsigned int first, unsigned int second, unsigned int third, unsigned int fourth)
    : qxGUID(static_cast<qxUInt64>(second) << 32 | first, static_cast<qxUInt64>(fourth) << 32 | third)
{}

qxGUID::qxGUID(const qxString& text)
    : m_record(text.isEmpty() ? qxGUIDRecord{} : recordOf(text.getString(), text.length()))
{}

qxGUID::qxGUID(const char* text, std::size_t length)
    : m_record(recordOf(text, length ? length : measure(text)))
{}

qxGUID::qxGUID(const wchar_t* text, std::size_t length)
    : m_record(recordOf(text, length ? length : measure(text)))
{}

qxString qxGUID::asString() const
{
    char text[TEXT_LENGTH];
    char* out = text;
    *out++ = '{';
    out = writeDigits<4>(out, static_cast<unsigned int>(m_record.Data1));
    *out++ = '-';
    out = writeDigits<2>(out, m_record.Data2);
    *out++ = '-';
    out = writeDigits<2>(out, m_record.Data3);
    *out++ = '-';
    for (unsigned int i = 0; i < 8; ++i) {
        if (i == 2) *out++ = '-';
        out = writeDigits<1>(out, m_record.Data4[i]);
    }
    *out++ = '}';
    qxString result;
    qxStringRefill::set(result, text, TEXT_LENGTH);
    return result;
}

bool qxGUID::isNull() const
{
    return isEqual(qxGUIDRecord{});
}

void qxGUID::getGUID(qxUInt64& first, qxUInt64& second) const
{
    first = static_cast<qxUInt64>(m_record.Data3) << 48 | static_cast<qxUInt64>(m_record.Data2) << 32 |
            m_record.Data1;
    second = littleEndian(m_record.Data4);
}

void qxGUID::getGUID(unsigned int& first, unsigned int& second, unsigned int& third,
                     unsigned int& fourth) const
{
    qxUInt64 halves[2];
    getGUID(halves[0], halves[1]);
    first = static_cast<unsigned int>(halves[0] & 0xFFFFFFFF);
    second = static_cast<unsigned int>(halves[0] >> 32);
    third = static_cast<unsigned int>(halves[1] & 0xFFFFFFFF);
    fourth = static_cast<unsigned int>(halves[1] >> 32);
}

bool qxGUID::operator<(const qxGUID& other) const
{
    qxUInt64 own[2];
    qxUInt64 others[2];
    getGUID(own[0], own[1]);
    other.getGUID(others[0], others[1]);
    return own[0] != others[0] ? own[0] < others[0] : own[1] < others[1];
}

unsigned int qxGUID::hash() const
{
    qxUInt64 halves[2];
    getGUID(halves[0], halves[1]);
    const qxUInt64 both = halves[0] ^ halves[1];
    return static_cast<unsigned int>(both & 0xFFFFFFFF) ^ static_cast<unsigned int>(both >> 32);
}

bool qxGUID::isEqual(const qxGUIDRecord& other) const
{
    return std::memcmp(&m_record, &other, sizeof m_record) == 0;
}
