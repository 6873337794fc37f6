// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmloutput.h"

#include "qxserializeadapter.h"

#include "core/qxutf8scan.h"
#include "xml/qxxmlchars.h"
#include "xml/qxxmlreferences.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <string>

namespace
{

// What a byte of text means to the writer.
enum ByteClass : unsigned char { PLAIN, ESCAPED, LONG, REFUSED };

constexpr std::array<unsigned char, 256> makeByteClasses()
{
    std::array<unsigned char, 256> classes{};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        ByteClass kind = PLAIN;
        if (byte == '&' || byte == '<' || byte == '>' || byte == '"' || byte == '\'') kind = ESCAPED;
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') kind = REFUSED;
        if (byte >= 0x80) kind = LONG;
        classes[byte] = kind;
    }
    return classes;
}

constexpr std::array<unsigned char, 256> CLASSES = makeByteClasses();

unsigned int classOf(char byte)
{
    return CLASSES[static_cast<unsigned char>(byte)];
}

std::string_view escapeOf(char character)
{
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    default:
        return "&apos;";
    }
}

constexpr std::size_t LONGEST_ESCAPE = 6; // bytes for one byte of text

// Copies the longest run of plain characters that begins at `text`; both pointers move behind it. Sixteen bytes
// are looked at in one go where text is long.
void copyPlain(const char*& text, const char* end, char*& out)
{
    typedef unsigned char Bytes __attribute__((vector_size(16)));
    typedef signed char Signed __attribute__((vector_size(16)));
    typedef unsigned long long Halves __attribute__((vector_size(16)));
    while (end - text >= 16) {
        Bytes bytes;
        std::memcpy(&bytes, text, sizeof bytes);
        const auto outside = reinterpret_cast<Signed>(bytes) < 0x20; // from 128 on they are negative
        const auto markup = ((bytes & 0xFD) == 0x3C) | ((bytes & 0xFE) == 0x26) | (bytes == 0x22);
        const Halves found = reinterpret_cast<Halves>(outside | markup);
        if ((found[0] | found[1]) != 0) break;
        std::memcpy(out, &bytes, sizeof bytes);
        text += 16;
        out += 16;
    }
    while (text != end && classOf(*text) == PLAIN) *out++ = *text++;
}

// The character at the start of `text`, 0 when that is none of a document; `size` is its bytes.
unsigned int readCharacter(std::string_view text, unsigned int& size)
{
    const unsigned int code = qxReadUTF8(text.data(), text.size(), size);
    return size == qxMeasureUTF8(code) && qxXmlIsChar(code) ? code : 0;
}

bool beginsPredefinedReference(std::string_view text)
{
    const std::size_t end = text.substr(0, LONGEST_ESCAPE).find(';');
    return end != std::string_view::npos && qxXmlPredefinedCharacter(text.substr(1, end - 1)) != 0;
}

bool isNameCharacter(unsigned int code, bool isFirst)
{
    if (code < 0x10000) return qxIsInXmlSet(isFirst ? QX_XML_NAME_STARTS : QX_XML_NAME_TOKENS, code);
    return code < 0xF0000;
}

// Where a reader's function would begin, its first letter is written as a reference, which ends the piece.
char* guard(char* out, const char*& next, const char* end)
{
    constexpr std::string_view FUNCTION = "function:";
    constexpr std::string_view LETTER = "&#102;";
    static_assert(LETTER.size() <= LONGEST_ESCAPE);
    if (!std::string_view(next, static_cast<std::size_t>(end - next)).starts_with(FUNCTION)) return out;
    ++next;
    return std::copy(LETTER.begin(), LETTER.end(), out);
}

void toUTF16(std::string_view text, std::string& bytes)
{
    bytes.resize(2 * text.size()); // no character has more units than bytes
    char* out = bytes.data();
    const auto put = [&out](unsigned int unit) {
        *out++ = static_cast<char>(unit & 0xFF);
        *out++ = static_cast<char>(unit >> 8);
    };
    for (std::size_t i = 0; i < text.size();) {
        unsigned int size = 0;
        unsigned int code = qxReadUTF8(text.data() + i, text.size() - i, size);
        if (size == 0 || code > 0x10FFFF) code = 0xFFFD; // only generic text can hold it
        i += std::max(size, 1U);
        if (code >= 0x10000) {
            put(0xD7C0 + (code >> 10));
            code = 0xDC00 | (code & 0x3FF);
        }
        put(code);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
}

void toBytes(std::string_view text, std::string& bytes)
{
    bytes.clear();
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(text.data() + i, text.size() - i, size);
        bytes += size == 0 ? text[i] : static_cast<char>(code); // broken bytes of generic text stay
        i += std::max(size, 1U);
    }
}

} // namespace

bool qxXmlOutput::appendEscaped(std::string_view text, unsigned int escaping)
{
    char* out = makeRoom(text.size() * LONGEST_ESCAPE);
    const char* next = text.data();
    const char* const end = next + text.size();
    if (escaping & (GUARD_START | GUARD_PIECES)) out = guard(out, next, end);
    while (next != end) {
        copyPlain(next, end, out);
        if (next == end) break;
        out = appendEscape(out, next, end, escaping);
        if (!out) return false;
    }
    m_size = static_cast<std::size_t>(out - m_bytes.get());
    return true;
}

// Appends the character at `next`, which is not plain, and moves behind it; null when it cannot be in a document.
char* qxXmlOutput::appendEscape(char* out, const char*& next, const char* end, unsigned int escaping) const
{
    const std::string_view rest(next, static_cast<std::size_t>(end - next));
    if (classOf(*next) == REFUSED) return nullptr;
    if (classOf(*next) == LONG) {
        unsigned int size = 0;
        const unsigned int code = readCharacter(rest, size);
        if (code == 0) return nullptr;
        next += size;
        out = appendCharacter(out, code, rest.substr(0, size));
        const bool isReference = m_form == BYTES && code > 0xFF;
        return isReference && (escaping & GUARD_PIECES) ? guard(out, next, end) : out;
    }
    ++next;
    if (rest.front() == '&' && (escaping & KEEP_REFERENCES) && beginsPredefinedReference(rest)) {
        *out++ = '&';
        return out;
    }
    const std::string_view escape = escapeOf(rest.front());
    out = std::copy(escape.begin(), escape.end(), out);
    return escaping & GUARD_PIECES ? guard(out, next, end) : out;
}

void qxXmlOutput::appendGeneric(std::string_view text)
{
    if (m_form != BYTES) {
        append(text);
        return;
    }
    char* out = makeRoom(text.size() * LONGEST_ESCAPE);
    for (std::size_t i = 0; i < text.size();) {
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(text.data() + i, text.size() - i, size);
        const std::string_view bytes = text.substr(i, std::max(size, 1U));
        out = size == 0 ? std::copy(bytes.begin(), bytes.end(), out) : appendCharacter(out, code, bytes);
        i += bytes.size();
    }
    m_size = static_cast<std::size_t>(out - m_bytes.get());
}

bool qxXmlOutput::canHold(std::string_view text) const
{
    for (std::size_t i = 0; i < text.size();) {
        const unsigned int kind = classOf(text[i]);
        if (kind == REFUSED) return false;
        unsigned int size = 1;
        if (kind == LONG) {
            const unsigned int code = readCharacter(text.substr(i), size);
            if (code == 0 || (m_form == BYTES && code > 0xFF)) return false;
        }
        i += size;
    }
    return true;
}

bool qxXmlOutput::canHoldName(std::string_view name) const
{
    if (name.empty()) return false;
    for (std::size_t i = 0; i < name.size();) {
        const unsigned char byte = static_cast<unsigned char>(name[i]);
        if (byte < 0x80) {
            if (!qxIsXmlClass(byte, i == 0 ? QX_XML_CLASS_START : QX_XML_CLASS_NAME)) return false;
            ++i;
            continue;
        }
        unsigned int size = 0;
        const unsigned int code = readCharacter(name.substr(i), size);
        if (code == 0 || (m_form == BYTES && code > 0xFF) || !isNameCharacter(code, i == 0)) return false;
        i += size;
    }
    return true;
}

void qxXmlOutput::flush(qxSerializeAdapter& adapter)
{
    const std::string_view text(m_bytes.get(), m_size);
    m_size = 0; // also when the adapter raises: it has had the bytes
    std::string converted;
    std::string_view bytes = text;
    if (m_form != UTF8) {
        m_form == UTF16 ? toUTF16(text, converted) : toBytes(text, converted);
        bytes = converted;
    }
    while (!bytes.empty()) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), INT_MAX);
        adapter.write(bytes.data(), static_cast<unsigned int>(count));
        bytes.remove_prefix(count);
    }
}

void qxXmlOutput::grow(std::size_t count)
{
    const std::size_t capacity = std::max(m_size + count, m_capacity + m_capacity / 2);
    std::unique_ptr<char[]> bytes(new char[capacity]);
    if (m_size != 0) std::memcpy(bytes.get(), m_bytes.get(), m_size);
    m_bytes = std::move(bytes);
    m_capacity = capacity;
}

// A reference takes fewer bytes than there is room for `bytes` of text.
char* qxXmlOutput::appendCharacter(char* out, unsigned int code, std::string_view bytes) const
{
    if (m_form != BYTES || code <= 0xFF) return std::copy(bytes.begin(), bytes.end(), out);
    *out++ = '&';
    *out++ = '#';
    *out++ = 'x';
    char* const digits = out;
    out = std::to_chars(out, out + 8, code, 16).ptr;
    std::transform(digits, out, digits,
                   [](char digit) { return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit; });
    *out++ = ';';
    return out;
}
