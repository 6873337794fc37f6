// Dynamic values as text.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "dynamic/qxdynamicelements.h"
#include "qxerror.h"

#include <charconv>
#include <string>
#include <vector>

using Parts = qxDynamicParts;

namespace
{

bool isList(qxDynamicKind kind)
{
    return kind == QX_DYNAMIC_ARRAY || kind == QX_DYNAMIC_CHAIN;
}

/// Writes a value and those in it. As blocks lie in one another in one piece, one place moves on from start to end.
class Writer
{
public:
    Writer(bool isQuoted, const qxString& separator)
        : m_isQuoted(isQuoted), m_separator(separator.getString(), separator.length())
    {}

    void write(const qxDynamicType& value, bool hasBrackets)
    {
        if (!isList(Parts::kind(value))) return putPlain(value);
        m_cursor = qxDynamicCursor(Parts::bytes(value));
        begin(hasBrackets);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.left == 0) {
                if (level.hasBrackets) m_text += ']';
                m_levels.pop_back();
                continue;
            }
            --level.left;
            if (!level.isFirst) m_text += m_separator;
            level.isFirst = false;
            putElement(value);
        }
    }

    qxString text() const { return {m_text.data(), m_text.size()}; }

private:
    struct Level {
        qxUInt64 left; // elements to come
        bool hasBrackets;
        bool isFirst = true;
    };

    void begin(bool hasBrackets)
    {
        qxUInt64 count = 0;
        m_cursor.takeVar(count);
        m_levels.push_back({count, hasBrackets});
        if (hasBrackets) m_text += '[';
    }

    void putElement(const qxDynamicType& whole)
    {
        qxDynamicElement element;
        m_cursor.takeElement(element, false);
        const qxDynamicTag* const tag = qxDynamicTag::find(element.tag);
        if (!tag || !isList(tag->kind))
            return putPlain(Parts::cut(whole, qxDynamicTag::make(element.tag), element.data));
        m_cursor = qxDynamicCursor({element.data.data(), element.data.size() + m_cursor.getRest()});
        begin(true);
    }

    void putPlain(const qxDynamicType& value)
    {
        const auto* const bytes = reinterpret_cast<const char*>(value.getDataBytes());
        switch (Parts::kind(value)) {
        case QX_DYNAMIC_NUM:
            return putNumber(value.getNumber());
        case QX_DYNAMIC_LLNUM:
            return putNumber(static_cast<qxInt64>(qxGetBigEndian<qxUInt64>(value.getDataBytes())));
        case QX_DYNAMIC_STR:
        case QX_DYNAMIC_ERROR:
            return putText({bytes, value.getDataLength()});
        case QX_DYNAMIC_GUID:
            m_text += value.getGUID().asString().getString();
            return;
        case QX_DYNAMIC_VEC2:
        case QX_DYNAMIC_VEC3:
        case QX_DYNAMIC_VEC4:
            return putFloats(value);
        case QX_DYNAMIC_CONT:
        case QX_DYNAMIC_TTAG:
            m_text += value.asJSON().getString();
            return;
        default: // nothing that a text could say
            return;
        }
    }

    template <class Number>
    void putNumber(Number number)
    {
        char digits[32];
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    }

    void putFloats(const qxDynamicType& vector)
    {
        m_text += '[';
        for (unsigned int i = 0; i < vector.getDataLength(); i += sizeof(float)) {
            if (i > 0) m_text += m_separator;
            putNumber(qxGetFloat(vector.getDataBytes() + i));
        }
        m_text += ']';
    }

    // In quotes no quote and no control character stands as it is.
    void putText(std::string_view text)
    {
        if (!m_isQuoted) {
            m_text += text;
            return;
        }
        m_text += '"';
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            if (c == '\\') {
                m_text += "\\\\";
            } else if (byte < ' ' || c == '"' || byte == 0x7F) {
                m_text += "\\x";
                m_text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
            } else {
                m_text += c;
            }
        }
        m_text += '"';
    }

    const bool m_isQuoted;
    const std::string m_separator;
    qxDynamicCursor m_cursor{{}};
    std::string m_text;
    std::vector<Level> m_levels;
};

} // namespace

qxString qxDynamicType::asString(bool isQuoted, bool hasBrackets, const qxString& separator) const
{
    Writer writer(isQuoted, separator);
    writer.write(*this, hasBrackets);
    return writer.text();
}

qxString qxDynamicType::itemAsString(qxUInt64 index, bool isQuoted, bool hasBrackets,
                                     const qxString& separator) const
{
    const bool hasItems = isList(Parts::kind(*this));
    qxDynamicCursor cursor(Parts::bytes(*this));
    qxUInt64 count = 1;
    if (hasItems) cursor.takeVar(count);
    if (index >= count) qxExceptionThrows::qxThrowFatal("qxDynamicType::asString out of index size");
    if (!hasItems) return asString(isQuoted, hasBrackets, separator);
    qxDynamicElement element;
    for (qxUInt64 i = 0; i <= index; ++i) cursor.takeElement(element, false);
    const qxDynamicType item = Parts::cut(*this, qxDynamicTag::make(element.tag), element.data);
    return item.asString(isQuoted, hasBrackets, separator);
}
