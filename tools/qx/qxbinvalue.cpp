// SPDX-License-Identifier: see LICENSE

#include "qxbinvalue.h"

#include "qxoutput.h"

#include "qxserializebinary.h"
#include "qxserializeguid.h"
#include "qxserializestring.h"
#include "qxserializevector.h"
#include "qxvaruint64.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

namespace
{

// `text` as a whole number, decimal or with 0x before it hexadecimal.
template <class T>
std::optional<T> parseInteger(std::string_view text, int base = 10)
{
    if (base == 10 && (text.starts_with("0x") || text.starts_with("0X")))
        return parseInteger<T>(text.substr(2), 16);
    T value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

template <class T>
using BitsOf = typename qxWireForm<T>::Wire;

// What is no number has many forms: the usual one is "nan", others are "nan(BITS)" with their hexadecimal digits.
template <class T>
constexpr BitsOf<T> USUAL_NAN = std::bit_cast<BitsOf<T>>(std::numeric_limits<T>::quiet_NaN());

template <class T>
std::optional<T> parseFloat(std::string_view text)
{
    if (text == "nan") return std::bit_cast<T>(USUAL_NAN<T>);
    if (text.starts_with("nan(") && text.ends_with(")")) {
        const auto bits = parseInteger<BitsOf<T>>(text.substr(4, text.size() - 5), 16);
        if (!bits || !std::isnan(std::bit_cast<T>(*bits))) return std::nullopt;
        return std::bit_cast<T>(*bits);
    }
    T value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || std::isnan(value))
        return std::nullopt;
    return value;
}

template <class T>
std::string textOfFloat(T value)
{
    char text[64];
    const auto bits = std::bit_cast<BitsOf<T>>(value);
    if (std::isnan(value) && bits != USUAL_NAN<T>)
        return "nan(" + std::string(text, std::to_chars(text, std::end(text), bits, 16).ptr) + ")";
    if (std::isnan(value)) return "nan";
    return std::string(text, std::to_chars(text, std::end(text), value).ptr);
}

/// A number of fixed size.
template <class T>
class Number final : public qxBinValue
{
public:
    explicit Number(unsigned char bigEndian) : m_data(T(), bigEndian) {}

    bool setText(std::string_view text) override
    {
        std::optional<T> value;
        if constexpr (std::is_floating_point_v<T>)
            value = parseFloat<T>(text);
        else
            value = parseInteger<T>(text);
        if (value) m_data = *value;
        return value.has_value();
    }

    std::string getText() const override
    {
        if constexpr (std::is_floating_point_v<T>)
            return textOfFloat(m_data.getValue());
        else
            return std::to_string(m_data.getValue());
    }

    qxSerializeData& getData() override { return m_data; }

private:
    qxSerializeBinary<T> m_data;
};

/// An integer of variable length.
class Integer final : public qxBinValue
{
public:
    explicit Integer(unsigned char) {}

    bool setText(std::string_view text) override
    {
        const auto value = parseInteger<qxUInt64>(text);
        if (!value || *value >> 63 != 0) return false; // would not come back
        m_data = *value;
        return true;
    }
    std::string getText() const override { return std::to_string(static_cast<qxUInt64>(m_data)); }
    qxSerializeData& getData() override { return m_data; }

private:
    qxVarUInt64 m_data;
};

/// A text with a zero byte behind it. What begins with a quotation mark is a quoted text.
class Text final : public qxBinValue
{
public:
    explicit Text(unsigned char) {}

    bool setText(std::string_view text) override
    {
        const bool isQuoted = text.starts_with('"');
        const std::optional<std::string> value = isQuoted ? unquote(text) : std::string(text);
        if (!value || value->size() > qxString::MAX_LENGTH || value->find('\0') != std::string::npos)
            return false;
        m_data = qxString(value->data(), value->size());
        return true;
    }
    std::string getText() const override { return quote(viewOf(m_data)); }
    qxSerializeData& getData() override { return m_data; }

private:
    qxSerializeString m_data;
};

class Identifier final : public qxBinValue
{
public:
    explicit Identifier(unsigned char) {}

    bool setText(std::string_view text) override
    {
        if (text.empty() || text.size() > 38) return false;
        std::string whole(text);
        for (char& c : whole)
            if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
        if (!whole.starts_with('{')) whole = "{" + whole + "}";
        const qxGUID guid(whole.c_str(), whole.size());
        if (viewOf(guid.asString()) != whole) return false;
        m_data = guid;
        return true;
    }
    std::string getText() const override { return static_cast<const qxGUID&>(m_data).asString().getString(); }
    qxSerializeData& getData() override { return m_data; }

private:
    qxSerializeGUID m_data;
};

/// Numbers with commas between them.
template <class Vector>
class Numbers final : public qxBinValue
{
public:
    explicit Numbers(unsigned char bigEndian) : m_data(bigEndian) {}

    bool setText(std::string_view text) override
    {
        for (unsigned int i = 0; i < COUNT; ++i) {
            const std::size_t comma = text.find(',');
            if ((comma == std::string_view::npos) != (i == COUNT - 1)) return false;
            const auto value = parseFloat<float>(text.substr(0, comma));
            if (!value) return false;
            m_data[i] = *value;
            text.remove_prefix(i == COUNT - 1 ? text.size() : comma + 1);
        }
        return true;
    }

    std::string getText() const override
    {
        std::string text;
        for (unsigned int i = 0; i < COUNT; ++i)
            text += (i == 0 ? "" : ",") + textOfFloat(m_data[i].getValue());
        return text;
    }

    qxSerializeData& getData() override { return m_data; }

private:
    static constexpr unsigned int COUNT = Vector::SIZE / sizeof(float);

    Vector m_data;
};

template <class Value>
std::unique_ptr<qxBinValue> make(unsigned char bigEndian)
{
    return std::make_unique<Value>(bigEndian);
}

struct Type {
    std::string_view name;
    std::unique_ptr<qxBinValue> (*make)(unsigned char bigEndian);
};

const Type TYPES[] = {
    {"u8", make<Number<unsigned char>>},
    {"u16", make<Number<unsigned short>>},
    {"u32", make<Number<unsigned int>>},
    {"u64", make<Number<qxUInt64>>},
    {"f32", make<Number<float>>},
    {"f64", make<Number<double>>},
    {"varint", make<Integer>},
    {"str", make<Text>},
    {"guid", make<Identifier>},
    {"vec2", make<Numbers<qxSerializeVec2>>},
    {"vec3", make<Numbers<qxSerializeVec3>>},
    {"vec4", make<Numbers<qxSerializeVec4>>},
    {"mat3", make<Numbers<qxSerializeMatrix3>>},
    {"mat4", make<Numbers<qxSerializeMatrix4>>},
};

} // namespace

std::unique_ptr<qxBinValue> makeBinValue(std::string_view type, bool isLittleEndian)
{
    for (const Type& one : TYPES)
        if (one.name == type) return one.make(isLittleEndian ? 0 : 1);
    return nullptr;
}
