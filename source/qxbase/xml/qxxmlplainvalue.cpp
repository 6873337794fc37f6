// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlplainvalue.h"

#include "xml/qxxmlbinary.h"
#include "xml/qxxmlchars.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace
{

template <class Float>
struct Bits;
template <>
struct Bits<double> {
    typedef qxUInt64 Type;
};
template <>
struct Bits<float> {
    typedef unsigned int Type;
};

constexpr std::string_view NAN_BITS = "nan:";

template <class Integer>
std::string bytesOf(Integer value)
{
    unsigned char bytes[sizeof value];
    qxPutBigEndian(bytes, value);
    return {reinterpret_cast<const char*>(bytes), sizeof bytes};
}

template <class Number>
void appendDigits(std::string& text, Number number)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

template <class Float>
void appendNumber(std::string& text, Float number)
{
    const auto bits = std::bit_cast<typename Bits<Float>::Type>(number);
    const auto usual = std::bit_cast<typename Bits<Float>::Type>(std::numeric_limits<Float>::quiet_NaN());
    if (!std::isnan(number)) {
        appendDigits(text, number);
    } else if (bits == usual) {
        text += "nan";
    } else {
        text += NAN_BITS;
        qxXmlAppendBinary(text, bytesOf(bits), false);
    }
}

template <class Number>
bool readDigits(std::string_view text, Number& number)
{
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

template <class Float>
bool readNumber(std::string_view text, Float& number)
{
    using Limits = std::numeric_limits<Float>;
    text = qxStripXmlSpace(text);
    if (text.starts_with(NAN_BITS)) {
        typename Bits<Float>::Type bits = 0;
        const std::string_view digits = text.substr(NAN_BITS.size());
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
        number = std::bit_cast<Float>(bits);
        return read.ec == std::errc() && digits.size() == 2 * sizeof bits &&
               read.ptr == digits.data() + digits.size() && std::isnan(number);
    }
    const bool isNegative = text.starts_with('-');
    const std::string_view word = text.substr(isNegative ? 1 : 0);
    if (word == "inf" || text == "nan") {
        number = word == "inf" ? Limits::infinity() : Limits::quiet_NaN();
        if (isNegative) number = -number;
        return true;
    }
    // What is scanned here are words of its own too, such as "infinity".
    return !word.empty() && (word.front() == '.' || (word.front() >= '0' && word.front() <= '9')) &&
           readDigits(text, number);
}

const char* readFloats(std::string_view text, std::string& block, unsigned int count)
{
    constexpr const char* EXPECTED[] = {"two numbers with a comma between them",
                                        "three numbers with commas between them",
                                        "four numbers with commas between them"};
    for (unsigned int i = 0; i < count; ++i) {
        const std::size_t comma = i + 1 < count ? text.find(',') : text.size();
        float number = 0.0F;
        if (comma == std::string_view::npos || !readNumber(text.substr(0, comma), number))
            return EXPECTED[count - 2];
        block += bytesOf(std::bit_cast<unsigned int>(number));
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return nullptr;
}

const char* readGUID(std::string_view text, std::string& block)
{
    constexpr std::string_view FORM = "{00000000-0000-0000-0000-000000000000}";
    std::string digits;
    bool isGUID = text.size() == FORM.size();
    for (std::size_t i = 0; isGUID && i < FORM.size(); ++i) {
        if (FORM[i] == '0')
            digits += text[i];
        else
            isGUID = text[i] == FORM[i];
    }
    return isGUID && digits.size() == 32 && qxXmlReadBinary(digits, false, block) && block.size() == 16
               ? nullptr
               : "a GUID in braces";
}

const char* readAddress(std::string_view text, std::string& block)
{
    return text.size() == 16 && qxXmlReadBinary(text, false, block) && block.size() == 8
               ? nullptr
               : "an address of 16 hexadecimal digits";
}

} // namespace

std::string qxXmlNumberText(double number)
{
    std::string text;
    appendNumber(text, number);
    return text;
}

bool qxXmlReadNumber(std::string_view text, double& number)
{
    return readNumber(text, number);
}

std::string qxXmlPlainText(qxDynamicKind kind, qxDynamicBytes block)
{
    std::string text;
    switch (kind) {
    case QX_DYNAMIC_NUM:
        appendNumber(text, qxGetDouble(block.data()));
        break;
    case QX_DYNAMIC_LLNUM:
        appendDigits(text, static_cast<qxInt64>(qxGetBigEndian<qxUInt64>(block.data())));
        break;
    case QX_DYNAMIC_VEC2:
    case QX_DYNAMIC_VEC3:
    case QX_DYNAMIC_VEC4:
        for (std::size_t i = 0; i < block.size(); i += sizeof(float)) {
            if (i > 0) text += ',';
            appendNumber(text, qxGetFloat(block.data() + i));
        }
        break;
    case QX_DYNAMIC_GUID:
        text = qxGetGUID(block.data()).asString().getString();
        break;
    case QX_DYNAMIC_PTR:
        qxXmlAppendBinary(text, {reinterpret_cast<const char*>(block.data()), block.size()}, false);
        break;
    default: // the others have other ways
        break;
    }
    return text;
}

const char* qxXmlReadPlain(qxDynamicKind kind, std::string_view text, std::string& block)
{
    block.clear();
    text = qxStripXmlSpace(text);
    double number = 0.0;
    qxInt64 integer = 0;
    switch (kind) {
    case QX_DYNAMIC_NUM:
        if (!readNumber(text, number)) return "a number";
        block = bytesOf(std::bit_cast<qxUInt64>(number));
        return nullptr;
    case QX_DYNAMIC_LLNUM:
        if (!readDigits(text, integer)) return "an integer of 64 bits";
        block = bytesOf(static_cast<qxUInt64>(integer));
        return nullptr;
    case QX_DYNAMIC_VEC2:
        return readFloats(text, block, 2);
    case QX_DYNAMIC_VEC3:
        return readFloats(text, block, 3);
    case QX_DYNAMIC_VEC4:
        return readFloats(text, block, 4);
    case QX_DYNAMIC_GUID:
        return readGUID(text, block);
    case QX_DYNAMIC_PTR:
        return readAddress(text, block);
    default: // "void" and "ref"
        return text.empty() ? nullptr : "nothing";
    }
}
