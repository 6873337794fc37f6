// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlvaluereader.h"

#include "dynamic/qxdynamicelements.h"
#include "xml/qxxmlbinary.h"
#include "xml/qxxmlplainvalue.h"
#include "xml/qxxmlreferences.h"

#include <algorithm>
#include <charconv>

namespace
{

constexpr std::ptrdiff_t PIECE = 4096;      // tokens that are copied in one go
constexpr std::size_t LONG_TEXT = 1U << 18; // bytes of a text that says what is shorter, with its white space
constexpr std::size_t LONGEST = 12ULL << 30;   // bytes of any text
constexpr unsigned int LONGEST_REFERENCE = 16; // characters between "&" and ";"
constexpr qxUInt64 MOST_REFERENCES = 0xFFFFFFFF;

constexpr const char* ITEM = "an element \"value\" or the end tag";
constexpr const char* END_TAG = "the end tag of the value";

bool equalsLowered(std::string_view text, std::string_view lower)
{
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char left, char right) {
        return (left >= 'A' && left <= 'Z' ? left + ('a' - 'A') : left) == right;
    });
}

bool readCount(std::string_view text, qxUInt64& count)
{
    const auto read = std::from_chars(text.data(), text.data() + text.size(), count);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() && count <= MOST_REFERENCES;
}

} // namespace

bool qxXmlAttributeText::take(std::string_view name, std::string_view value)
{
    if (!name.starts_with(attribute)) return false;
    name.remove_prefix(attribute.size());
    const bool isRest = name == QX_XML_REST;
    if (!name.empty() && !isRest && name != QX_XML_BINARY) return false;
    std::string piece(value);
    isFaulty = isFaulty || isThere != isRest || (!name.empty() && !qxXmlReadBinary(value, true, piece));
    isThere = true;
    text += piece;
    return true;
}

const char* qxXmlValueHead::read(const qxXmlReaderState& state, bool prefersBase64)
{
    isBase64 = prefersBase64;
    std::string value;
    for (std::size_t i = state.firstAttribute(state.level()); i < state.endAttribute(state.level()); ++i) {
        const std::string_view attribute = state.attributes.nameOf(i);
        value.clear();
        qxXmlDecodeReferences(state.attributes.valueOf(i), value);
        if (name.take(attribute, value)) {
            if (name.isFaulty) return "one name, as it stands or in base64";
        } else if (type.take(attribute, value)) {
            if (type.isFaulty) return "one type, as it stands or in base64";
        } else if (attribute == QX_XML_TIME) {
            hasTime = true;
            if (!qxXmlReadNumber(value, time)) return "a number as time";
        } else if (attribute == QX_XML_REFERENCES) {
            hasReferences = true;
            if (!readCount(value, references)) return "a number of references";
        } else if (equalsLowered(attribute, QX_XML_ENCODING)) {
            isBinary = true;
            isBase64 = equalsLowered(value, QX_XML_BASE64);
            if (!isBase64 && !equalsLowered(value, QX_XML_HEX)) return "the encoding \"b64\" or \"hex\"";
        } else {
            return "no other attributes than those of values";
        }
    }
    return qxDynamicTag::isPossible(type.text) ? nullptr : "a type";
}

qxXmlValueReader::qxXmlValueReader(qxXmlSax& sax) : m_sax(sax) {}

bool qxXmlValueReader::read(const qxXmlValueHead& head, qxDynamicType& value)
{
    const bool hasContent = m_sax.reader().hasContent;
    if (head.hasReferences) return fail("references only for values in others");
    if (!isTimed(head) || !begin(head, hasContent)) return false;
    while (!m_open.empty()) {
        if (!goOn()) return false;
    }
    if (hasContent && m_sax.XML_read_Test_ETag() != QX_PARSE_OK) return fail(END_TAG);
    return m_builder.build(value) || fail("a value of at most 4,294,836,224 bytes");
}

bool qxXmlValueReader::isTimed(const qxXmlValueHead& head)
{
    const bool needsTime = head.type.text == qxDynamicTag::get(QX_DYNAMIC_TTAG)->text;
    return head.hasTime == needsTime || fail("a time where the type is \"ttag\", and only there");
}

// Begins a value that holds others, or reads one that holds none up to its end tag.
bool qxXmlValueReader::begin(const qxXmlValueHead& head, bool hasContent)
{
    const qxDynamicTag* const own = qxDynamicTag::find(head.type.text);
    if (!own || !qxHoldsDynamicElements(own->kind)) return readPlain(own, head, hasContent);
    if (head.isBinary) return fail("no encoding for values that hold others");
    m_builder.open(own->kind, {head.name.text, head.references}, head.time);
    m_open.push_back(own->kind);
    return hasContent || end();
}

// Ends the innermost value that holds others.
bool qxXmlValueReader::end()
{
    if (m_open.back() == QX_DYNAMIC_TTAG && m_builder.getCount() != 1) return fail("one value behind a time");
    m_builder.close();
    m_open.pop_back();
    return true;
}

// Goes on to the next value in the innermost one, or behind its end.
bool qxXmlValueReader::goOn()
{
    do {
        m_sax.skipSpace();
    } while (m_sax.XML_read_15() == QX_PARSE_OK);
    if (m_sax.XML_read_Test_ETag() != QX_PARSE_OK) return beginItem();
    if (!end()) return false;
    return m_open.empty() || leaveItem(); // the end tag of the outermost stays
}

bool qxXmlValueReader::leaveItem()
{
    if (m_sax.XML_read_42() != QX_PARSE_OK) return fail(END_TAG);
    m_sax.reader().pop();
    return true;
}

bool qxXmlValueReader::beginItem()
{
    qxXmlReaderState& state = m_sax.reader();
    const qxUInt64 start = m_sax.getTokenPos();
    const std::size_t depth = m_open.size();
    m_hasLookedDeep = true;
    if (m_sax.XML_read_40() != QX_PARSE_OK) return fail(ITEM);
    const qxString& name = state.nameOf(state.levels.back());
    qxXmlValueHead head;
    const char* fault = ITEM;
    if (std::string_view(name.getString(), name.length()) == QX_XML_ITEM)
        fault = head.read(state, prefersBase64());
    if (fault) fail(fault);
    if (fault || !isFitting(head)) return failAt(start);

    const bool hasContent = m_sax.XML_read_44() != QX_PARSE_OK;
    if (hasContent) m_sax.expect(u'>', 4002);
    if (!begin(head, hasContent)) return false;
    if (m_open.size() > depth) return true;
    if (hasContent) return leaveItem();
    state.pop();
    return true;
}

bool qxXmlValueReader::isFitting(const qxXmlValueHead& head)
{
    const std::string& name = head.name.text;
    if (head.name.isThere != (m_open.back() == QX_DYNAMIC_CONT))
        return fail("names for the values in a \"cont\", and only for them");
    if (name.size() > qxString::MAX_LENGTH || name.find('\0') != name.npos)
        return fail("a name of at most 65,535 bytes and without a zero");
    if (head.hasReferences && m_open.back() == QX_DYNAMIC_TTAG) return fail("no references behind a time");
    return isTimed(head);
}

bool qxXmlValueReader::readPlain(const qxDynamicTag* own, const qxXmlValueHead& head, bool hasContent)
{
    const qxUInt64 start = m_sax.getTokenPos();
    m_text.cut(0);
    if (hasContent && !readText(own ? LONG_TEXT : LONGEST)) return false;
    if (!convert(own ? own->kind : QX_DYNAMIC_CUSTOM, head)) return failAt(start);
    const qxDynamicTag* const tag = own ? own : qxDynamicTag::make(head.type.text);
    m_builder.add(tag, {head.name.text, head.references}, m_block);
    return true;
}

// Makes the block out of the text.
bool qxXmlValueReader::convert(qxDynamicKind kind, const qxXmlValueHead& head)
{
    const std::string_view text(m_text.data(), m_text.size());
    const bool isText = kind == QX_DYNAMIC_STR || kind == QX_DYNAMIC_ERROR;
    if (kind == QX_DYNAMIC_CUSTOM || (isText && head.isBinary)) {
        if (!qxXmlReadBinary(text, head.isBase64, m_block))
            return fail(head.isBase64 ? "bytes in base64" : "bytes as hexadecimal digits");
    } else if (head.isBinary) {
        return fail("no encoding for values of this type");
    } else if (isText) {
        m_block = text;
    } else if (const char* const expected = qxXmlReadPlain(kind, text, m_block)) {
        return fail(expected);
    }
    return !isText || m_block.size() <= qxString::MAX_LENGTH || fail("a text of at most 65,535 bytes");
}

// Reads what stands up to the next tag.
bool qxXmlValueReader::readText(std::size_t limit)
{
    while (m_sax.hasData()) {
        const char16_t token = *m_sax.m_view.current;
        if (token == u'&') {
            if (!readReference()) return false;
        } else if (token != u'<') {
            if (!readRun(limit)) return false;
        } else if (m_sax.XML_read_19() == QX_PARSE_OK) {
            if (!readSection(limit)) return false;
        } else if (m_sax.XML_read_15() != QX_PARSE_OK) {
            break;
        }
    }
    return true;
}

bool qxXmlValueReader::readRun(std::size_t limit)
{
    while (copyTo({u'<', u'&', u']'}, limit) && *m_sax.m_view.current == u']') {
        if (isSectionEnd()) return fail("no \"]]>\" in text");
        takeBracket();
    }
    return m_fault == nullptr;
}

// Reads a CDATA section behind its start.
bool qxXmlValueReader::readSection(std::size_t limit)
{
    while (copyTo({u']', u']', u']'}, limit)) {
        if (isSectionEnd()) {
            m_sax.m_view.current += 3;
            return true;
        }
        takeBracket();
    }
    return m_fault ? false : fail("\"]]>\" to end a CDATA section");
}

bool qxXmlValueReader::isSectionEnd()
{
    return m_sax.peek(1) == u']' && m_sax.peek(2) == u'>';
}

void qxXmlValueReader::takeBracket()
{
    m_text.append("]", 1);
    ++m_sax.m_view.current;
}

// Copies characters up to one of `stop`; false at the end of the data and after a fault.
bool qxXmlValueReader::copyTo(const qxXmlStop& stop, std::size_t limit)
{
    qxTokenView& view = m_sax.m_view;
    while (m_sax.hasData()) {
        const char16_t* const pieceEnd = view.current + std::min(view.end - view.current, PIECE);
        char* const out = m_text.reserve(3 * PIECE + 16);
        char* outEnd = out;
        view.current = qxCopyXmlText(view.current, pieceEnd, stop, outEnd);
        m_text.add(static_cast<std::size_t>(outEnd - out));
        if (m_text.size() > limit) return fail("a text that is not too long");
        if (view.current == pieceEnd) continue;
        if (stop.has(*view.current)) return true;
        if (!m_sax.skipPair()) return fail("a character that XML allows");
        m_text.add(qxTokensToUTF8(view.current - 2, 2, m_text.reserve(6)));
    }
    return false;
}

bool qxXmlValueReader::readReference()
{
    std::string name;
    for (unsigned int length = 1; length <= LONGEST_REFERENCE; ++length) {
        const char16_t token = m_sax.peek(length);
        if (token == u';') {
            std::string text;
            if (!qxXmlAppendReference(name, text)) break;
            m_text.append(text.data(), text.size());
            m_sax.m_view.current += length + 1;
            return true;
        }
        if (token == 0 || token >= 128) break;
        name += static_cast<char>(token);
    }
    return fail("a predefined reference or one to a character");
}

bool qxXmlValueReader::prefersBase64() const
{
    return (m_sax.m_flags & qxXmlSax::FLAG_PREFER_BASE64) != 0;
}

// The fault lies where the tokens from `start` on begin; where they are gone, it stays behind them.
bool qxXmlValueReader::failAt(qxUInt64 start)
{
    if (start >= m_sax.m_view.bufferPos) m_sax.m_view.current = m_sax.tokenAt(start);
    return false;
}
