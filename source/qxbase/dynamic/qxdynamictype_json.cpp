// Dynamic values as JSON text.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "dynamic/qxdynamicelements.h"
#include "dynamic/qxjsonreader.h"
#include "dynamic/qxjsontext.h"
#include "qxserializeadapter.h"
#include "serialize/qxadapterbytes.h"

#include <charconv>
#include <cmath>
#include <vector>

using Parts = qxDynamicParts;

namespace
{

constexpr std::size_t FLUSH = 1U << 16; // bytes that are collected for an adapter

std::string_view textOf(qxDynamicBytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Writes a value. Blocks lie in one another in one piece: one place moves on from their start to their end.
class Writer
{
public:
    /// Without an adapter all stays in the text.
    explicit Writer(qxSerializeAdapter* adapter) : m_adapter(adapter) {}

    void write(const qxDynamicType& value)
    {
        const qxDynamicBytes block = Parts::bytes(value);
        m_cursor = qxDynamicCursor(block);
        put(Parts::kind(value), block);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.left == 0) {
                m_text += level.closing;
                m_levels.pop_back();
            } else {
                putNext(level);
            }
            if (m_adapter && m_text.size() >= FLUSH) flush();
        }
    }

    void flush()
    {
        if (!m_text.empty()) m_adapter->write(m_text.data(), static_cast<unsigned int>(m_text.size()));
        m_text.clear();
    }

    const std::string& text() const { return m_text; }

private:
    struct Level {
        qxUInt64 left; // elements to come
        qxDynamicKind kind;
        char closing;
        bool isFirst = true;
    };

    void putNext(Level& level)
    {
        qxDynamicElement element;
        --level.left;
        if (level.kind == QX_DYNAMIC_TTAG) {
            m_cursor.takeForm(element);
        } else {
            if (!level.isFirst) m_text += ',';
            level.isFirst = false;
            m_cursor.takeElement(element, level.kind == QX_DYNAMIC_CONT);
            if (level.kind == QX_DYNAMIC_CONT) putName(element.name);
        }
        const qxDynamicTag* const tag = qxDynamicTag::find(element.tag);
        const qxDynamicKind kind = tag ? tag->kind : QX_DYNAMIC_CUSTOM;
        if (qxHoldsDynamicElements(kind))
            m_cursor = qxDynamicCursor({element.data.data(), element.data.size() + m_cursor.getRest()});
        put(kind, element.data); // `level` has moved when this begins another
    }

    void putName(std::string_view name)
    {
        qxAppendJSONText(m_text, name);
        m_text += ':';
    }

    // Writes a plain value, or begins one of several at the cursor.
    void put(qxDynamicKind kind, qxDynamicBytes bytes)
    {
        switch (kind) {
        case QX_DYNAMIC_NUM:
            return qxAppendJSONNumber(m_text, qxGetDouble(bytes.data()));
        case QX_DYNAMIC_LLNUM:
            m_text += std::to_string(static_cast<qxInt64>(qxGetBigEndian<qxUInt64>(bytes.data())));
            return;
        case QX_DYNAMIC_STR:
            return qxAppendJSONText(m_text, textOf(bytes));
        case QX_DYNAMIC_VEC2:
        case QX_DYNAMIC_VEC3:
        case QX_DYNAMIC_VEC4:
            return putFloats(bytes);
        case QX_DYNAMIC_GUID:
            return qxAppendJSONText(m_text, qxGetGUID(bytes.data()).asString().getString());
        case QX_DYNAMIC_ERROR:
            m_text += '{';
            putName(QX_JSON_ERROR);
            qxAppendJSONText(m_text, textOf(bytes));
            m_text += '}';
            return;
        case QX_DYNAMIC_ARRAY:
        case QX_DYNAMIC_CHAIN:
        case QX_DYNAMIC_CONT:
        case QX_DYNAMIC_TTAG:
            return begin(kind, bytes);
        default:
            m_text += "null";
        }
    }

    void begin(qxDynamicKind kind, qxDynamicBytes bytes)
    {
        const bool isArray = kind == QX_DYNAMIC_ARRAY || kind == QX_DYNAMIC_CHAIN;
        qxUInt64 count = 1;
        m_text += isArray ? '[' : '{';
        if (kind == QX_DYNAMIC_TTAG) {
            putName(QX_JSON_TIME);
            qxAppendJSONNumber(m_text, qxGetDouble(bytes.data()));
            m_text += ',';
            putName(QX_JSON_VALUE);
            m_cursor.skip(QX_DYNAMIC_TIME_SIZE);
        } else {
            m_cursor.takeVar(count);
        }
        m_levels.push_back({count, kind, isArray ? ']' : '}'});
    }

    void putFloats(qxDynamicBytes bytes)
    {
        char before = '[';
        for (; !bytes.empty(); bytes = bytes.subspan(sizeof(float))) {
            m_text += before;
            const float number = qxGetFloat(bytes.data());
            char digits[32];
            const auto written = std::to_chars(digits, digits + sizeof digits, number);
            m_text += std::isfinite(number) ? std::string_view(digits, written.ptr) : "null";
            before = ',';
        }
        m_text += ']';
    }

    qxSerializeAdapter* const m_adapter;
    qxDynamicCursor m_cursor{{}};
    std::string m_text;
    std::vector<Level> m_levels;
};

} // namespace

void qxAppendJSONText(std::string& out, std::string_view text)
{
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const unsigned int size = qxSizeOfCharacter(text.data() + i, text.size() - i);
        constexpr std::string_view SHORT = "\"\"\\\\\bb\ff\nn\rr\tt"; // characters and what stands for them
        if (size == 0) {
            out += "\xEF\xBF\xBD";
        } else if (c == '"' || c == '\\' || (c >= 8 && c <= 13 && c != 11)) {
            std::size_t at = 0;
            while (SHORT[at] != text[i]) at += 2;
            out += {'\\', SHORT[at + 1]};
        } else if (c < ' ') {
            out += "\\u00";
            out += {"0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
        } else {
            out += text.substr(i, size);
        }
        i += size == 0 ? 1 : size;
    }
    out += '"';
}

void qxAppendJSONNumber(std::string& out, double number)
{
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    char digits[32];
    // With an exponent large ones are not taken for 64-bit integers.
    const bool isLarge = std::fabs(number) >= 0x1p53;
    const auto written =
        isLarge ? std::to_chars(digits, digits + sizeof digits, number, std::chars_format::scientific)
                : std::to_chars(digits, digits + sizeof digits, number);
    out.append(digits, written.ptr);
}

qxString qxDynamicType::asJSON() const
{
    Writer writer(nullptr);
    writer.write(*this);
    return {writer.text().data(), writer.text().size()};
}

void qxDynamicType::asJSON(qxSerializeAdapter* adapter) const
{
    Writer writer(adapter);
    writer.write(*this);
    writer.flush();
}

bool qxDynamicType::fromJSON(const qxString& text, qxString* error)
{
    return fromJSON(text.getString(), text.length(), error);
}

bool qxDynamicType::fromJSON(const char* text, std::size_t length, qxString* error)
{
    qxString fault;
    if (qxReadJSON({text, length}, *this, fault)) return true;
    if (error) *error = fault;
    return false;
}

bool qxDynamicType::fromJSON(qxSerializeAdapter* adapter)
{
    std::vector<char> text;
    while (adapter->hasData()) {
        const qxDynamicBytes bytes = qxAdapterBytes::borrow(*adapter, FLUSH);
        text.insert(text.end(), bytes.begin(), bytes.end());
        qxAdapterBytes::consume(*adapter, static_cast<unsigned int>(bytes.size()));
        if (bytes.empty()) text.push_back(static_cast<char>(adapter->read()));
    }
    qxString fault;
    if (fromJSON(text.data(), text.size(), &fault)) return true;
    adapter->setError(fault);
    return false;
}
