// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxtextbuilder.h"
#include "core/qxutf8scan.h"
#include "qxarray.h"
#include "qxmemory.h"
#include "qxmessage.h"

#include <cwchar>

namespace
{

constexpr bool HAS_16_BIT_UNITS = sizeof(wchar_t) == 2;
constexpr std::size_t BLOCK = 32; // units that are tested and copied at once while they are ASCII

constexpr bool isHighSurrogate(unsigned int code)
{
    return code >= 0xD800 && code <= 0xDBFF;
}

constexpr bool isLowSurrogate(unsigned int code)
{
    return code >= 0xDC00 && code <= 0xDFFF;
}

bool isAsciiBlock(const wchar_t* units)
{
    unsigned int bits = 0;
    for (std::size_t i = 0; i < BLOCK; ++i) bits |= static_cast<unsigned int>(units[i]);
    return bits < 0x80;
}

bool isAsciiBlock(const char* bytes)
{
    unsigned char bits = 0;
    for (std::size_t i = 0; i < BLOCK; ++i) bits |= static_cast<unsigned char>(bytes[i]);
    return bits < 0x80;
}

void copyBlock(char* out, const wchar_t* units)
{
    for (std::size_t i = 0; i < BLOCK; ++i) out[i] = static_cast<char>(units[i]);
}

void copyBlock(wchar_t* out, const char* bytes)
{
    for (std::size_t i = 0; i < BLOCK; ++i) out[i] = static_cast<unsigned char>(bytes[i]);
}

// The code at `text`, which is moved behind it. Two surrogates that belong together are one code whatever the size
// of the units; a lone one is its own code.
unsigned int takeCode(const wchar_t*& text, const wchar_t* end)
{
    const unsigned int first = static_cast<unsigned int>(*text++);
    if (!isHighSurrogate(first) || text == end) return first;
    const unsigned int second = static_cast<unsigned int>(*text);
    if (!isLowSurrogate(second)) return first;
    ++text;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

// Bytes that the text takes in UTF-8. Codes that cannot be encoded take none and are reported in `isFaulty`.
std::size_t measure(const wchar_t* text, const wchar_t* end, bool& isFaulty)
{
    std::size_t bytes = 0;
    while (text != end) {
        if (static_cast<std::size_t>(end - text) >= BLOCK && isAsciiBlock(text)) {
            bytes += BLOCK;
            text += BLOCK;
            continue;
        }
        const unsigned int size = qxMeasureUTF8(takeCode(text, end));
        if (size == 0) isFaulty = true;
        bytes += size;
    }
    return bytes;
}

void encode(char* out, const wchar_t* text, const wchar_t* end)
{
    while (text != end) {
        if (static_cast<std::size_t>(end - text) >= BLOCK && isAsciiBlock(text)) {
            copyBlock(out, text);
            out += BLOCK;
            text += BLOCK;
            continue;
        }
        out += qxWriteUTF8(out, takeCode(text, end));
    }
}

unsigned int unitsOf(unsigned int code)
{
    return HAS_16_BIT_UNITS && code >= 0x10000 ? 2 : 1;
}

wchar_t* putCode(wchar_t* out, unsigned int code)
{
    if (unitsOf(code) == 1) {
        *out = static_cast<wchar_t>(code);
        return out + 1;
    }
    // A code beyond the pairs has no form of its own here.
    if (code > 0x10FFFF) code = 0xFFFD;
    out[0] = static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
    out[1] = static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    return out + 2;
}

// Decodes `text` up to `end` or to invalid data, where `text` stops. Returns the end of what was written.
wchar_t* decode(wchar_t* out, const char*& text, const char* end)
{
    while (text != end) {
        if (static_cast<std::size_t>(end - text) >= BLOCK && isAsciiBlock(text)) {
            copyBlock(out, text);
            out += BLOCK;
            text += BLOCK;
            continue;
        }
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(text, static_cast<std::size_t>(end - text), size);
        if (size == 0) return out;
        out = putCode(out, code);
        text += size;
    }
    return out;
}

// Counts the units of the characters up to `end` or to invalid data, where `text` stops.
unsigned int countUnits(const char*& text, const char* end)
{
    unsigned int units = 0;
    while (text != end) {
        if (static_cast<std::size_t>(end - text) >= BLOCK && isAsciiBlock(text)) {
            units += BLOCK;
            text += BLOCK;
            continue;
        }
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(text, static_cast<std::size_t>(end - text), size);
        if (size == 0) return units;
        units += unitsOf(code);
        text += size;
    }
    return units;
}

// The end of the first `count` characters; it comes earlier at `end` and at invalid data.
const char* endOfCharacters(const char* text, const char* end, unsigned int count, bool& isFaulty)
{
    for (; text != end && count > 0; --count) {
        unsigned int size = 0;
        qxReadUTF8(text, static_cast<std::size_t>(end - text), size);
        if (size == 0) {
            isFaulty = true;
            return text;
        }
        text += size;
    }
    return text;
}

void warnOfFaultyInput()
{
    qxMessage::message(QX_LEVEL_WARNING, "Utf decoding on faulty data input");
}

// The buffer that getWideString hands out on one thread; it only grows.
class WideBuffer
{
public:
    WideBuffer() = default;
    ~WideBuffer() { qx_free(m_units); }
    WideBuffer(const WideBuffer&) = delete;
    WideBuffer& operator=(const WideBuffer&) = delete;

    wchar_t* getRoom(std::size_t units)
    {
        if (units > m_room) {
            void* const larger = qx_realloc(m_units, units * sizeof(wchar_t));
            if (!larger) qxThrowBadAlloc(__FILE__, __LINE__);
            m_units = static_cast<wchar_t*>(larger);
            m_room = units;
        }
        return m_units;
    }

private:
    wchar_t* m_units = nullptr;
    std::size_t m_room = 0;
};

} // namespace

qxString::qxString(const wchar_t* text) : qxString(text, text ? std::wcslen(text) : 0) {}

qxString::qxString(const wchar_t* text, std::size_t count, unsigned char is8Bit) : qxString()
{
    if (!text || count == 0) return;
    const wchar_t* const end = text + count;
    bool isFaulty = false;
    const std::size_t length = is8Bit ? count : measure(text, end, isFaulty);
    if (length > MAX_LENGTH) qxThrowTooManyCharacters();
    if (length != 0) {
        makeRoom(static_cast<unsigned int>(length));
        if (is8Bit)
            for (std::size_t i = 0; i < count; ++i) m_text[i] = static_cast<char>(text[i]);
        else
            encode(m_text, text, end);
    }
    if (isFaulty) qxMessage::message(QX_LEVEL_WARNING, "Utf encoding on faulty data set");
}

unsigned int qxString::getWideStringLength() const
{
    const char* text = getString();
    const char* const end = text + length();
    const unsigned int units = countUnits(text, end);
    if (text != end) warnOfFaultyInput();
    return units;
}

const wchar_t* qxString::getWideString(unsigned int count) const
{
    static thread_local WideBuffer buffer;

    const char* text = getString();
    const char* end = text + length();
    bool isFaulty = false;
    if (count != 0) end = endOfCharacters(text, end, count, isFaulty);
    wchar_t* const units = buffer.getRoom(static_cast<std::size_t>(end - text) + 1);
    *decode(units, text, end) = 0;
    if (isFaulty || text != end) warnOfFaultyInput();
    return units;
}

unsigned int qxString::getWideString(wchar_t* buffer, unsigned char is8Bit) const
{
    const char* text = getString();
    const char* const end = text + length();
    wchar_t* place = buffer;
    if (is8Bit)
        for (; text != end; ++text) *place++ = static_cast<unsigned char>(*text);
    else
        place = decode(buffer, text, end);
    *place = 0;
    if (text != end) warnOfFaultyInput();
    return static_cast<unsigned int>(place - buffer);
}

qxArray<char> qxString::getBSTR() const
{
    return qxArray<char>(getString(), length() + std::size_t{1});
}

qxArray<wchar_t> qxString::getWideBSTR() const
{
    qxArray<wchar_t> units(length() + std::size_t{1}); // no character takes more units than bytes
    units.resize(getWideString(units.getData()) + std::size_t{1});
    return units;
}
