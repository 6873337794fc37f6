// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlvaluewriter.h"

#include "core/qxutf8scan.h"
#include "xml/qxxmlbinary.h"
#include "xml/qxxmlplainvalue.h"
#include "xml/qxxmlreferences.h"
#include "xml/qxxmlvalueform.h"

#include <algorithm>

using Parts = qxDynamicParts;

namespace
{

constexpr std::size_t BINARY_PIECE = 3 * 16384; // bytes that are written in one go; a multiple of 3
constexpr std::size_t LONGEST_PLAIN = 10000;    // bytes that fit an attribute however they are escaped
constexpr std::size_t LONGEST_BINARY = 65532;   // digits that fit one; a multiple of 4

std::string_view textOf(qxDynamicBytes bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Whether a document can hold the text as it is; `first` is the lowest of the controls that may be in it.
bool isDocumentText(std::string_view text, unsigned int first)
{
    while (!text.empty()) {
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(text.data(), text.size(), size);
        if (size != qxMeasureUTF8(code) || !qxXmlIsChar(code) || code < first) return false;
        text.remove_prefix(size);
    }
    return true;
}

} // namespace

void qxXmlValueWriter::putName(std::string_view text)
{
    putText(QX_XML_NAME, text);
}

void qxXmlValueWriter::put(const qxDynamicType& value)
{
    qxDynamicElement whole;
    whole.tag = Parts::tag(value).text;
    whole.data = Parts::bytes(value);
    m_cursor = qxDynamicCursor(whole.data);
    begin(whole);
    while (!m_levels.empty()) {
        if (m_levels.back().left > 0) {
            putItem(m_levels.back());
            continue;
        }
        m_levels.pop_back();
        if (!m_levels.empty()) m_writer.writeElementEnd();
    }
}

// Writes a value within another, or its start when there are values in it, too.
void qxXmlValueWriter::putItem(Level& level)
{
    qxDynamicElement item;
    --level.left;
    if (level.kind == QX_DYNAMIC_TTAG)
        m_cursor.takeForm(item);
    else
        m_cursor.takeElement(item, level.kind == QX_DYNAMIC_CONT);
    m_writer.writeElementStart(QX_XML_ITEM);
    if (level.kind == QX_DYNAMIC_CONT) putName(item.name);
    if (!begin(item)) m_writer.writeElementEnd(); // `level` has moved when this begins another
}

// Writes a plain value, or begins one of several, whose block lies before the cursor.
bool qxXmlValueWriter::begin(const qxDynamicElement& value)
{
    const qxDynamicTag* const own = qxDynamicTag::find(value.tag);
    const qxDynamicKind kind = own ? own->kind : QX_DYNAMIC_CUSTOM;
    putText(QX_XML_TYPE, value.tag);
    if (value.references != 0) putAttribute(QX_XML_REFERENCES, std::to_string(value.references));
    if (qxHoldsDynamicElements(kind)) {
        const std::size_t behind = m_levels.empty() ? 0 : m_cursor.getRest();
        m_cursor = qxDynamicCursor({value.data.data(), value.data.size() + behind});
        open(kind, value.data);
        return true;
    }
    if (kind == QX_DYNAMIC_CUSTOM) {
        putBinary(textOf(value.data));
    } else if (kind == QX_DYNAMIC_STR || kind == QX_DYNAMIC_ERROR) {
        putText(textOf(value.data));
    } else {
        const std::string text = qxXmlPlainText(kind, value.data);
        if (!text.empty()) m_writer.writeCharData(text, qxXmlWriterState::AS_MARKUP);
    }
    return false;
}

void qxXmlValueWriter::open(qxDynamicKind kind, qxDynamicBytes block)
{
    qxUInt64 count = 1;
    if (kind == QX_DYNAMIC_TTAG) {
        putAttribute(QX_XML_TIME, qxXmlNumberText(qxGetDouble(block.data())));
        m_cursor.skip(QX_DYNAMIC_TIME_SIZE);
    } else {
        m_cursor.takeVar(count);
    }
    m_levels.push_back({count, kind});
}

// Other readers make carriage returns line feeds, unless they are references.
void qxXmlValueWriter::putText(std::string_view text)
{
    if (!isDocumentText(text, 0)) return putBinary(text);
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\r'), text.size());
        if (length > 0) m_writer.writeCharData(text.substr(0, length), qxXmlWriterState::AS_TEXT);
        if (length == text.size()) return;
        m_writer.writeEntityReference("#13");
        text.remove_prefix(length + 1);
    }
}

void qxXmlValueWriter::putBinary(std::string_view bytes)
{
    putAttribute(QX_XML_ENCODING, m_usesBase64 ? QX_XML_BASE64 : QX_XML_HEX);
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(BINARY_PIECE, bytes.size()))) {
        text.clear();
        qxXmlAppendBinary(text, bytes.substr(0, BINARY_PIECE), m_usesBase64);
        m_writer.writeCharData(text, qxXmlWriterState::AS_MARKUP);
    }
}

// Control characters in attributes become blanks in other readers.
void qxXmlValueWriter::putText(std::string_view attribute, std::string_view text)
{
    if (text.size() <= LONGEST_PLAIN && isDocumentText(text, ' ')) return putAttribute(attribute, text);
    std::string digits;
    qxXmlAppendBinary(digits, text, true);
    const std::string_view all = digits;
    putAttribute(std::string(attribute) += QX_XML_BINARY, all.substr(0, LONGEST_BINARY));
    if (all.size() > LONGEST_BINARY)
        putAttribute(std::string(attribute) += QX_XML_REST, all.substr(LONGEST_BINARY));
}

void qxXmlValueWriter::putAttribute(std::string_view name, std::string_view value)
{
    m_writer.writeAttribute(name, value, qxXmlWriterState::AS_TEXT);
}
