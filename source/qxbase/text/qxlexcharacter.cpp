// SPDX-License-Identifier: see LICENSE

#include "text/qxlexcharacter.h"

#include "core/qxutf8scan.h"

#include <bit>

namespace
{

constexpr unsigned int REPLACEMENT = 0xFFFD;
constexpr unsigned int LAST_CODE = 0x10FFFF;

bool isSurrogate(unsigned int code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

qxLexCharacter decodeUTF8(const unsigned char* bytes, std::size_t count)
{
    const unsigned int lead = *bytes;
    if (lead < 0x80) return {lead, 1};

    const auto length = static_cast<unsigned int>(std::countl_one(static_cast<unsigned char>(lead)));
    if (length < 2 || length > 6) return {0, 1, true};
    unsigned int code = lead & (0x7FU >> length);
    for (unsigned int i = 1; i < length; ++i) {
        if (i == count) return {0, i, true, true};
        if ((bytes[i] & 0xC0) != 0x80) return {0, i, true};
        code = code << 6 | (bytes[i] & 0x3FU);
    }
    const bool isFault = code > LAST_CODE || isSurrogate(code) || qxMeasureUTF8(code) != length;
    return {isFault ? 0 : code, length, isFault};
}

unsigned int unitOf(const unsigned char* bytes, bool bigEndian)
{
    return bytes[bigEndian ? 0 : 1] * 256U + bytes[bigEndian ? 1 : 0];
}

qxLexCharacter decodeUTF16(const unsigned char* bytes, std::size_t count, bool bigEndian)
{
    if (count < 2) return {0, 1, true, true};
    const unsigned int unit = unitOf(bytes, bigEndian);
    if (!isSurrogate(unit)) return {unit, 2};
    if (unit >= 0xDC00) return {0, 2, true};
    if (count < 4) return {0, 2, true, true};
    const unsigned int low = unitOf(bytes + 2, bigEndian);
    if (low < 0xDC00 || low > 0xDFFF) return {0, 2, true};
    return {0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), 4};
}

unsigned int putUnit(unsigned int unit, bool bigEndian, unsigned char* out)
{
    out[bigEndian ? 0 : 1] = static_cast<unsigned char>(unit >> 8);
    out[bigEndian ? 1 : 0] = static_cast<unsigned char>(unit);
    return 2;
}

} // namespace

qxLexCharacter qxDecodeCharacter(qxTokenForm form, const unsigned char* bytes, std::size_t count)
{
    if (count == 0) return {0, 0, true, true};
    switch (form) {
    case qxTokenForm::UTF8:
        return decodeUTF8(bytes, count);
    case qxTokenForm::UTF16_LITTLE:
        return decodeUTF16(bytes, count, false);
    case qxTokenForm::UTF16_BIG:
        return decodeUTF16(bytes, count, true);
    case qxTokenForm::BYTE:
        break;
    }
    return {*bytes, 1};
}

unsigned int qxEncodeCharacter(qxTokenForm form, unsigned int code, unsigned char* out)
{
    if (form == qxTokenForm::BYTE) {
        *out = static_cast<unsigned char>(code < 256 ? code : '?');
        return 1;
    }
    if (code > LAST_CODE || isSurrogate(code)) code = REPLACEMENT;
    if (form == qxTokenForm::UTF8) return qxWriteUTF8(reinterpret_cast<char*>(out), code);

    const bool bigEndian = form == qxTokenForm::UTF16_BIG;
    if (code < 0x10000) return putUnit(code, bigEndian, out);
    putUnit(0xD800 + ((code - 0x10000) >> 10), bigEndian, out);
    return 2 + putUnit(0xDC00 + (code & 0x3FF), bigEndian, out + 2);
}
