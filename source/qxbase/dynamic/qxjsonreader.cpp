// SPDX-License-Identifier: see LICENSE

#include "dynamic/qxjsonreader.h"

#include "dynamic/qxdynamicelements.h"
#include "dynamic/qxjsontext.h"
#include "qxmessage.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using Parts = qxDynamicParts;

namespace
{

/// A value of the text. They stand in the order of the text, and that is the order in which their blocks lie, one in the
/// other: when all sizes are known the block of the outermost is written in one go.
struct Node {
    qxDynamicKind kind;
    bool isNamed = false;
    unsigned int nameLength = 0;
    qxUInt64 name = 0; // where it begins among the texts
    qxUInt64 data = 0; // of a text where it begins, of a number its bits, of others how many elements
    qxUInt64 size = 0; // of the block; while it is open of the elements
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// What std::from_chars found too large or too small to be a double. The text is one of a number.
double beyondRange(std::string_view text)
{
    const bool isNegative = text.front() == '-';
    const std::size_t letter = std::min(text.find_first_of("eE"), text.size());
    const std::size_t point = std::min(text.find('.'), letter);
    const std::size_t first = text.find_first_of("123456789");
    long long exponent = 0;
    if (letter < text.size()) {
        const char* const digits = text.data() + letter + (text[letter + 1] == '+' ? 2 : 1);
        if (std::from_chars(digits, text.data() + text.size(), exponent).ec != std::errc())
            exponent = text[letter + 1] == '-' ? -(1LL << 62) : 1LL << 62;
    }
    // How far the first digit that counts stands before the point; at most the length of the text.
    exponent += static_cast<long long>(point) - static_cast<long long>(first);
    const double number = exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return isNegative ? -number : number;
}

class Reader
{
public:
    explicit Reader(std::string_view text)
        : m_begin(text.data()), m_end(m_begin + text.size()), m_next(m_begin)
    {
        if (text.starts_with("\xEF\xBB\xBF")) m_next += 3;
    }

    bool read(qxDynamicType& value)
    {
        do {
            if (!readValue()) return false;
        } while (!m_open.empty());
        skipBlanks();
        if (m_next != m_end) return fail("only one value is allowed");
        if (m_nodes.front().size > qxDynamicType::MAX_LENGTH) return fail("the value is too long");
        build(value);
        return true;
    }

    qxString describeFault() const
    {
        const char* lineStart = m_begin;
        unsigned int line = 1;
        for (const char* c = m_begin; c != m_next; ++c) {
            if (*c != '\n') continue;
            ++line;
            lineStart = c + 1;
        }
        const auto continues = [](char c) { return (c & 0xC0) == 0x80; };
        const auto column = m_next - lineStart - std::count_if(lineStart, m_next, continues) + 1;
        const qxString text = qxMessage::translate(qxMessage::getDefaultSender(), m_fault);
        return qxString::str("qxDynamicType::fromJSON: %s at (Line:%d,Col:%d)", text, line, column);
    }

private:
    bool fail(const char* text)
    {
        m_fault = text;
        return false;
    }

    void skipBlanks()
    {
        while (m_next != m_end && (*m_next == ' ' || *m_next == '\t' || *m_next == '\n' || *m_next == '\r'))
            ++m_next;
    }

    bool take(char c)
    {
        if (m_next == m_end || *m_next != c) return false;
        ++m_next;
        return true;
    }

    bool takeDigits()
    {
        if (m_next == m_end || !isDigit(*m_next)) return fail("a digit is missing");
        while (m_next != m_end && isDigit(*m_next)) ++m_next;
        return true;
    }

    // Reads one value with all that stands around it: its name, and what closes or continues the values around it.
    bool readValue()
    {
        Node node = {};
        if (!m_open.empty() && m_nodes[m_open.back()].kind == QX_DYNAMIC_CONT && !readName(node))
            return false;
        skipBlanks();
        if (m_next == m_end) return fail("a value is missing");
        const char c = *m_next;
        if (c == '[' || c == '{') {
            ++m_next;
            node.kind = c == '[' ? QX_DYNAMIC_ARRAY : QX_DYNAMIC_CONT;
            m_open.push_back(m_nodes.size());
            m_nodes.push_back(node);
            skipBlanks();
            return !take(c == '[' ? ']' : '}') || close();
        }
        if (c == '"' ? !readText(node.data, node.size) : !readPlain(node)) return false;
        if (c == '"') node.kind = QX_DYNAMIC_STR;
        m_nodes.push_back(node);
        return finish(m_nodes.back());
    }

    bool readName(Node& node)
    {
        qxUInt64 length = 0;
        skipBlanks();
        const char* const start = m_next;
        if (m_next == m_end || *m_next != '"') return fail("a name in quotes is missing");
        if (!readText(node.name, length)) return false;
        if (length > 0 && std::memchr(m_texts.data() + node.name, 0, static_cast<std::size_t>(length))) {
            m_next = start;
            return fail("a name cannot hold a zero");
        }
        node.isNamed = true;
        node.nameLength = static_cast<unsigned int>(length);
        skipBlanks();
        return take(':') || fail("a colon is missing");
    }

    // Ends the innermost open value.
    bool close()
    {
        Node& node = m_nodes[m_open.back()];
        node.size += qxVarSize(node.data);
        m_open.pop_back();
        return finish(node);
    }

    // Counts a whole value for the one around it, and goes to the next.
    bool finish(const Node& whole)
    {
        const Node* node = &whole;
        for (;;) {
            if (m_open.empty()) return true;
            Node& around = m_nodes[m_open.back()];
            ++around.data;
            around.size += (node->isNamed ? node->nameLength + 1U : 0U) + 1 +
                           qxDynamicFormSize(*qxDynamicTag::get(node->kind), node->size);
            skipBlanks();
            if (take(',')) return true;
            const bool isArray = around.kind == QX_DYNAMIC_ARRAY;
            if (!take(isArray ? ']' : '}'))
                return fail(isArray ? "a comma or ] is missing" : "a comma or } is missing");
            around.size += qxVarSize(around.data);
            m_open.pop_back();
            node = &around;
        }
    }

    bool readPlain(Node& node)
    {
        if (*m_next == '-' || isDigit(*m_next)) return readNumber(node);
        const std::string_view rest(m_next, static_cast<std::size_t>(m_end - m_next));
        if (rest.starts_with("null")) {
            m_next += 4;
            node.kind = QX_DYNAMIC_VOID;
            return true;
        }
        const bool isTrue = rest.starts_with("true");
        if (!isTrue && !rest.starts_with("false")) return fail("this is no value");
        m_next += isTrue ? 4 : 5;
        setNumber(node, isTrue ? 1.0 : 0.0);
        return true;
    }

    static void setNumber(Node& node, double number)
    {
        node.kind = QX_DYNAMIC_NUM;
        node.data = std::bit_cast<qxUInt64>(number);
        node.size = sizeof number;
    }

    bool readNumber(Node& node)
    {
        const char* const start = m_next;
        take('-');
        if (!take('0') && !takeDigits()) return false;
        bool isInteger = true;
        if (take('.')) {
            isInteger = false;
            if (!takeDigits()) return false;
        }
        if (take('e') || take('E')) {
            isInteger = false;
            if (!take('+')) take('-');
            if (!takeDigits()) return false;
        }
        qxInt64 integer = 0;
        if (isInteger && std::from_chars(start, m_next, integer).ec == std::errc() && !isDouble(integer)) {
            node.kind = QX_DYNAMIC_LLNUM;
            node.data = static_cast<qxUInt64>(integer);
            node.size = sizeof integer;
            return true;
        }
        double number = 0.0;
        if (std::from_chars(start, m_next, number).ec != std::errc())
            number = beyondRange({start, static_cast<std::size_t>(m_next - start)});
        setNumber(node, number);
        return true;
    }

    // True when the integer and those beside it are doubles too. Larger numbers are written with an exponent when they
    // are doubles.
    static bool isDouble(qxInt64 integer)
    {
        constexpr qxInt64 LIMIT = 1LL << 53;
        return integer > -LIMIT && integer < LIMIT;
    }

    // Reads a text in quotes and appends what it says to the texts.
    bool readText(qxUInt64& start, qxUInt64& length)
    {
        start = m_texts.size();
        const char* const opening = m_next++;
        for (;;) {
            const char* const plain = m_next;
            while (m_next != m_end && *m_next >= ' ' && *m_next < 0x7F && *m_next != '"' && *m_next != '\\')
                ++m_next;
            m_texts.insert(m_texts.end(), plain, m_next);
            if (m_next == m_end) {
                m_next = opening;
                return fail("the text does not end");
            }
            if (take('"')) break;
            if (!readSpecial()) return false;
        }
        length = m_texts.size() - start;
        if (length <= qxString::MAX_LENGTH) return true;
        m_next = opening;
        return fail("the text has more than 65535 bytes");
    }

    bool readSpecial()
    {
        if (*m_next == '\\') return readEscape();
        const unsigned int size = qxSizeOfCharacter(m_next, static_cast<std::size_t>(m_end - m_next));
        if (size == 0) return fail("this is no UTF-8");
        if (size == 1 && *m_next != 0x7F) return fail("control characters must be escaped");
        m_texts.insert(m_texts.end(), m_next, m_next + size);
        m_next += size;
        return true;
    }

    bool readEscape()
    {
        constexpr std::string_view SHORT = "\"\"\\\\//b\bf\fn\nr\rt\t"; // letters and what they stand for
        if (m_end - m_next < 2) return fail("the text does not end");
        if (m_next[1] == 'u') return readCode();
        for (std::size_t i = 0; i < SHORT.size(); i += 2) {
            if (SHORT[i] != m_next[1]) continue;
            m_texts.push_back(SHORT[i + 1]);
            m_next += 2;
            return true;
        }
        return fail("this is no escape");
    }

    bool readCode()
    {
        unsigned int code = 0;
        if (!readUnit(m_next, code)) return fail("\\u needs four hexadecimal digits");
        const char* behind = m_next + 6;
        if (code >= 0xD800 && code < 0xE000) {
            unsigned int low = 0;
            if (code >= 0xDC00 || !readUnit(behind, low) || low < 0xDC00 || low >= 0xE000)
                return fail("\\u names half of a pair");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            behind += 6;
        }
        char bytes[6];
        m_texts.insert(m_texts.end(), bytes, bytes + qxWriteUTF8(bytes, code));
        m_next = behind;
        return true;
    }

    bool readUnit(const char* text, unsigned int& unit) const
    {
        if (m_end - text < 6 || text[0] != '\\' || text[1] != 'u') return false;
        const auto read = std::from_chars(text + 2, text + 6, unit, 16);
        return read.ptr == text + 6 && text[2] != '-';
    }

    void build(qxDynamicType& value) const
    {
        const Node& whole = m_nodes.front();
        unsigned char* place = Parts::prepare(value, whole.kind, whole.size);
        place = putContent(place, whole);
        for (std::size_t i = 1; i < m_nodes.size(); ++i) {
            const Node& node = m_nodes[i];
            if (node.isNamed) {
                place = std::copy_n(m_texts.begin() + static_cast<std::ptrdiff_t>(node.name), node.nameLength,
                                    place);
                *place++ = 0;
            }
            place = qxPutVar(place, 0); // objects
            place = putContent(qxPutDynamicHead(place, *qxDynamicTag::get(node.kind), node.size), node);
        }
    }

    // Writes what lies in the block before its elements.
    unsigned char* putContent(unsigned char* place, const Node& node) const
    {
        switch (node.kind) {
        case QX_DYNAMIC_STR:
            return std::copy_n(m_texts.begin() + static_cast<std::ptrdiff_t>(node.data), node.size, place);
        case QX_DYNAMIC_NUM:
        case QX_DYNAMIC_LLNUM:
            qxPutBigEndian(place, node.data);
            return place + sizeof node.data;
        case QX_DYNAMIC_VOID:
            return place;
        default:
            return qxPutVar(place, node.data);
        }
    }

    const char* const m_begin;
    const char* const m_end;
    const char* m_next;
    const char* m_fault = "";
    std::vector<Node> m_nodes;
    std::vector<std::size_t> m_open; // the arrays and containers that have not ended, the innermost last
    std::vector<char> m_texts;       // of texts and names
};

} // namespace

bool qxReadJSON(std::string_view text, qxDynamicType& value, qxString& error)
{
    Reader reader(text);
    if (reader.read(value)) return true;
    error = reader.describeFault();
    return false;
}
