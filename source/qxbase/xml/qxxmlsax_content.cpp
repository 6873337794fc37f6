// The productions of the document and of its elements.
// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlsax_scan.h"

#include <string_view>

namespace
{

constexpr std::string_view FUNCTION = "function:";
constexpr std::string_view ENCODING = "encoding";
constexpr std::size_t SHORT_TEXT = 1024; // tokens

bool isFunction(std::string_view text)
{
    return text.substr(0, FUNCTION.size()) == FUNCTION;
}

std::string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

bool equalsLowered(std::string_view text, std::string_view lower)
{
    if (text.size() != lower.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isUpper = text[i] >= 'A' && text[i] <= 'Z';
        if ((isUpper ? text[i] + ('a' - 'A') : text[i]) != lower[i]) return false;
    }
    return true;
}

/// The beginning of a text, at most `length` bytes and whole characters.
qxString cutText(const qxString& text, unsigned int length)
{
    if (text.length() <= length) return text;
    while (length > 0 && (static_cast<unsigned char>(text.getString()[length]) & 0xC0) == 0x80) --length;
    return text.left(length);
}

} // namespace

qxParseResult qxXmlSax::XML_read_01()
{
    XML_read_22();
    if (XML_read_39() != QX_PARSE_OK) failMarkup(101);
    while (XML_read_27() == QX_PARSE_OK) {}
    if (hasData()) failMarkup(102);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_14()
{
    const qxUInt64 start = getTokenPos();
    const Run run = {start, start, isNotifyingItemType(QX_XML_CHARDATA) ? 1402U : 0U};
    if (run.check == 0) {
        while (skipTo(run, {u'<', u'&', u']'}) && !isEndOfText()) ++m_view.current;
        return getTokenPos() == start ? QX_PARSE_NO_MATCH : QX_PARSE_OK;
    }

    qxXmlReaderState& state = reader();
    state.text.cut(0);
    if (const std::size_t length = copyShortText(state.text.reserve(SHORT_TEXT + 16))) {
        if (!isFunction({state.text.data(), length})) {
            m_view.current += length;
            reportText({state.text.data(), length});
            return QX_PARSE_OK;
        }
    }

    const Hold hold(*this);
    while (copyTo(run, {u'<', u'&', u']'}, state.text, 0) && !isEndOfText()) {
        *state.text.reserve(1) = ']';
        state.text.add(1);
        ++m_view.current;
    }
    std::string_view text(state.text.data(), state.text.size());
    if (text.empty()) return QX_PARSE_NO_MATCH;
    if (text.size() > qxString::MAX_LENGTH) failCheckAt(run.begin, run.check);
    if (!isFunction(text)) {
        reportText(text);
        return QX_PARSE_OK;
    }
    text.remove_prefix(FUNCTION.size());
    const qxString result = onFunction(qxString(text.data(), text.size()), state.level());
    if (state.taker)
        state.taker->takeText(viewOf(result), state.level());
    else
        goOn(onCharData(result, state.level()));
    return QX_PARSE_OK;
}

/// Reports text that lies in bytes of which some more can be read.
void qxXmlSax::reportText(std::string_view text)
{
    qxXmlReaderState& state = reader();
    if (state.taker)
        state.taker->takeText(text, state.level());
    else
        goOn(onCharData(state.texts.make(text.data(), text.size()), state.level()));
}

/// Copies text that is short, of ASCII, whole in the window and ends in "<" or "&": nearly all there is between tags.
/// Returns its length, 0 when it is something else, and takes nothing.
std::size_t qxXmlSax::copyShortText(char* out)
{
    const qxXmlStop stop = {u'<', u'&', u']'};
    const char16_t* const end = qxCopyPlainXmlText(m_view.current, m_view.current + SHORT_TEXT, stop, out);
    return end < m_view.end && (*end == u'<' || *end == u'&') ? static_cast<std::size_t>(end - m_view.current)
                                                              : 0;
}

/// Whether text ends at the next token, one of "<", "&" and "]": a bracket only where "]]>" stands.
bool qxXmlSax::isEndOfText()
{
    return *m_view.current != u']' || (peek(1) == u']' && peek(2) == u'>');
}

qxParseResult qxXmlSax::XML_read_15()
{
    if (peek(0) != u'<' || peek(1) != u'!' || peek(2) != u'-') return QX_PARSE_NO_MATCH;
    const Hold hold(*this);
    m_view.current += 3;
    expect(u'-', 1501);
    const Run run = {hold.getStart(), getTokenPos(), 1504};
    for (;;) {
        if (!skipTo(run, {u'-', u'-', u'-'})) failCheck(1502);
        if (peek(1) == u'-') break;
        ++m_view.current;
    }
    const qxString& text = textSince(run);
    m_view.current += 2;
    expect(u'>', 1503);
    if (isNotifyingItemType(QX_XML_COMMENT)) goOn(onComment(text, getCurrentElementLevel()));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_16()
{
    if (peek(0) != u'<' || peek(1) != u'?') return QX_PARSE_NO_MATCH;
    const Hold hold(*this);
    m_view.current += 2;
    const qxUInt64 targetPos = getTokenPos();
    if (XML_read_17() != QX_PARSE_OK) failCheck(1601);
    const auto targetLength = static_cast<std::size_t>(getTokenPos() - targetPos);
    if (!isNextText(u"?>")) expectSpace(1602);

    const Run run = {hold.getStart(), getTokenPos(), 1604};
    for (;;) {
        if (!skipTo(run, {u'?', u'?', u'?'})) failCheck(1603);
        if (peek(1) == u'>') break;
        ++m_view.current;
    }
    const qxString& data = textSince(run);
    m_view.current += 2;
    if (!isNotifyingItemType(QX_XML_PI)) return QX_PARSE_OK;
    const qxString& target = reader().names.find(tokenAt(targetPos), targetLength).name();
    goOn(onProcessingInstruction(target, data, getCurrentElementLevel()));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_17()
{
    const Hold hold(*this);
    if (XML_read_05() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    const char16_t* const name = hold.begin();
    const bool isReserved = getTokenPos() - hold.getStart() == 3 && (name[0] | 0x20) == u'x' &&
                            (name[1] | 0x20) == u'm' && (name[2] | 0x20) == u'l';
    if (isReserved) failCheckAt(hold.getStart(), 1701);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_18()
{
    const Hold hold(*this);
    if (XML_read_19() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    const Run run = {hold.getStart(), getTokenPos(), 1802};
    skipCData(run);
    const qxString& text = textSince(run);
    if (XML_read_21() != QX_PARSE_OK) failCheck(1801);
    if (isNotifyingItemType(QX_XML_CDATA)) goOn(onCDATA(text, getCurrentElementLevel()));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_19()
{
    if (peek(0) != u'<' || peek(1) != u'!' || peek(2) != u'[') return QX_PARSE_NO_MATCH;
    m_view.current += 3;
    expectText(u"CDATA[", 1901);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_20()
{
    const Hold hold(*this);
    skipCData({hold.getStart(), hold.getStart(), 1802});
    return QX_PARSE_OK;
}

/// Takes characters up to "]]>" or the first that is none.
void qxXmlSax::skipCData(const Run& run)
{
    while (skipTo(run, {u']', u']', u']'})) {
        if (peek(1) == u']' && peek(2) == u'>') break;
        ++m_view.current;
    }
}

qxParseResult qxXmlSax::XML_read_21()
{
    if (!isNextText(u"]]>")) return QX_PARSE_NO_MATCH;
    m_view.current += 3;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_22()
{
    XML_read_23();
    bool hasDocumentType = false;
    for (;;) {
        if (XML_read_27() == QX_PARSE_OK) continue;
        if (hasDocumentType || XML_read_28() != QX_PARSE_OK) return QX_PARSE_OK;
        hasDocumentType = true;
    }
}

qxParseResult qxXmlSax::XML_read_27()
{
    if (XML_read_03() == QX_PARSE_OK || XML_read_15() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_16();
}

qxParseResult qxXmlSax::XML_read_39()
{
    if (peek(0) != u'<' || !startsName(1)) return QX_PARSE_NO_MATCH;
    if (!openElement()) return QX_PARSE_OK;
    XML_read_43();
    closeElement();
    return QX_PARSE_OK;
}

/// Reads a start tag with its end; true when the element has content, false when it is complete.
bool qxXmlSax::openElement()
{
    XML_read_40();
    qxXmlReaderState& state = reader();
    state.hasContent = XML_read_44() != QX_PARSE_OK;
    if (!state.hasContent) {
        readSpecialContent();
        reportElementEnd();
        state.pop();
        return false;
    }
    expect(u'>', 4002);
    qxXmlLevel& level = state.levels.back();
    if (isNotifyingItemType(QX_XML_ELEMENT_CONTENTS)) {
        setHistory(getMaxBufferSize());
        level.contentsStart = getTokenPos();
    }
    if (isNotifyingItemType(QX_XML_CONTENTS_START))
        goOn(onElementContentsStart(state.nameOf(level), state.level()));
    if (readSpecialContent()) skipSpace();
    return true;
}

/// Lets the productions for values, objects and custom data try the content of the element just opened.
bool qxXmlSax::readSpecialContent()
{
    qxXmlReaderState& state = reader();
    if (state.isTrying) return false;
    const qxXmlLevel& level = state.levels.back();
    if (useDynOnly()) return XML_read_91() == QX_PARSE_OK;
    if (level.nameLength == 5 && *state.nameTokens(level) == u'q') {
        const qxString& name = state.nameOf(level);
        if (name == "qxDyn") return XML_read_91() == QX_PARSE_OK;
        if (name == "qxObj") return XML_read_92() == QX_PARSE_OK;
    }
    return XML_read_93() == QX_PARSE_OK;
}

/// Reads the end tag of the innermost element and leaves the element.
void qxXmlSax::closeElement()
{
    qxXmlReaderState& state = reader();
    if (XML_read_Test_ETag() == QX_PARSE_OK) reportContents();
    if (XML_read_42() != QX_PARSE_OK) failCheck(4201);
    reportElementEnd();
    state.pop();
}

void qxXmlSax::reportElementEnd()
{
    qxXmlReaderState& state = reader();
    if (state.taker)
        state.taker->closeElement(state.level());
    else if (isNotifyingItemType(QX_XML_ELEMENT))
        goOn(onElementEnd(state.nameOf(state.levels.back()), state.level()));
}

void qxXmlSax::reportContents()
{
    if (!isNotifyingItemType(QX_XML_ELEMENT_CONTENTS) && !isNotifyingItemType(QX_XML_CONTENTS_END)) return;
    qxXmlReaderState& state = reader();
    const qxUInt64 start = state.levels.back().contentsStart;
    const bool isHeld = start != qxXmlReaderState::NOT_KEPT && start >= m_view.bufferPos &&
                        getTokenPos() - start < getMaxBufferSize();
    if (isHeld && isNotifyingItemType(QX_XML_ELEMENT_CONTENTS)) {
        const auto length = static_cast<std::size_t>(getTokenPos() - start);
        if (const qxString* const text = state.textOf(tokenAt(start), length))
            goOn(onElementContents(state.nameOf(state.levels.back()), *text, state.level()));
    }
    if (isNotifyingItemType(QX_XML_CONTENTS_END))
        goOn(onElementContentsEnd(state.nameOf(state.levels.back()), state.level()));
}

qxParseResult qxXmlSax::XML_read_40()
{
    if (peek(0) != u'<' || !startsName(1)) return QX_PARSE_NO_MATCH;
    reportProgress();
    setFlag(FLAG_VALUE_BASE64, false);
    setFlag(FLAG_VALUE_HEX, false);

    ++m_view.current;
    qxXmlReaderState& state = reader();
    const Name name = scanName();
    qxXmlNameCache::Slot& slot = state.names.find(name.tokens, name.length);
    state.push(slot, name.tokens, name.length);
    if (state.taker)
        state.taker->openElement(slot.view(), state.level());
    else if (isNotifyingItemType(QX_XML_ELEMENT))
        goOn(onElementStart(slot.name(), state.level()));

    for (;;) {
        if (readPlainAttribute()) continue;
        const bool hadSpace = skipSpace();
        const char16_t token = peek(0);
        if (token == u'>' || token == u'/') break;
        if (!hadSpace) failCheck(4001);
        if (XML_read_41() != QX_PARSE_OK) failCheck(4002);
    }
    if (state.taker) state.giveAttributes();
    if (isNotifyingItemType(QX_XML_ATTRIBUTE_END))
        goOn(onElementAttributeEnd(state.nameOf(state.levels.back()), state.level()));
    return QX_PARSE_OK;
}

/// Reads an attribute with the white space before it when it has the usual form: of ASCII, without references,
/// short, whole in the window, and nothing special about it. False, with nothing taken, for every other.
bool qxXmlSax::readPlainAttribute()
{
    const char16_t* from = m_view.current;
    if (!qxIsXmlClass(*from, QX_XML_CLASS_SPACE)) return false;
    while (qxIsXmlClass(*from, QX_XML_CLASS_SPACE)) ++from;
    const char16_t* const name = from;
    if (!qxIsXmlClass(*from, QX_XML_CLASS_START)) return false;
    while (qxIsXmlClass(*from, QX_XML_CLASS_NAME)) ++from;
    const auto nameLength = static_cast<std::size_t>(from - name);
    if (*from != u'=' || nameLength > qxXmlNameCache::LONGEST) return false;
    if (nameLength == ENCODING.size() && (*name | 0x20) == u'e') return false; // perhaps that one
    const char16_t quote = *++from;
    if (quote != u'"' && quote != u'\'') return false;
    const char16_t* const value = ++from;
    if (*value == u'f') return false; // perhaps a function

    qxXmlReaderState& state = reader();
    qxXmlNameCache::Slot& slot = state.names.find(name, nameLength);
    char* const bytes = state.attributes.bytes().reserve(qxXmlNameCache::BYTES + SHORT_TEXT + 16);
    for (std::size_t i = 0; i < nameLength; i += 16) std::memcpy(bytes + i, slot.bytes + i, 16);
    char* const text = bytes + nameLength;
    from = qxCopyPlainXmlText(value, value + SHORT_TEXT, {quote, u'&', u'<'}, text);
    if (from >= m_view.end || *from != quote) return false;
    const auto length = static_cast<std::size_t>(from - value);
    if (!state.attributes.appendWritten(state.levels.back().firstAttribute, slot, length)) return false;
    m_view.current = from + 1;
    if (state.taker || !isNotifyingItemType(QX_XML_ATTRIBUTE)) return true;
    setFlag(FLAG_IN_ATTRIBUTE, true);
    goOn(onAttribute(slot.name(), state.texts.make(text, length), state.level()));
    setFlag(FLAG_IN_ATTRIBUTE, false);
    return true;
}

qxParseResult qxXmlSax::XML_read_41()
{
    if (!startsName(0)) return QX_PARSE_NO_MATCH;
    setFlag(FLAG_IN_ATTRIBUTE, true);
    qxXmlReaderState& state = reader();
    const Name name = scanName();
    qxXmlNameCache::Slot& slot = state.names.find(name.tokens, name.length);
    const std::size_t first = state.levels.empty() ? 0 : state.levels.back().firstAttribute;
    if (!state.attributes.append(first, slot)) failCheckAt(getTokenPos() - name.length, 4102);
    state.isAttributePending = true;
    const unsigned int stamp = slot.stamp;

    if (peek(0) == u'=')
        ++m_view.current;
    else
        XML_read_25();
    if (XML_read_10() != QX_PARSE_OK) {
        skipSpace();
        if (XML_read_10() != QX_PARSE_OK) failCheck(4101);
    }
    takeAttributeValue();
    if (!state.taker && isNotifyingItemType(QX_XML_ATTRIBUTE)) {
        const std::size_t last = state.attributes.size() - 1;
        const std::string_view value = state.attributes.valueOf(last);
        const qxString& text = state.texts.make(value.data(), value.size());
        if (slot.stamp == stamp) {
            goOn(onAttribute(slot.name(), text, state.level()));
        } else { // references in the value took the slot
            const std::string_view own = state.attributes.nameOf(last);
            state.attributeName = qxString(own.data(), own.size());
            goOn(onAttribute(state.attributeName, text, state.level()));
        }
    }
    setFlag(FLAG_IN_ATTRIBUTE, false);
    return QX_PARSE_OK;
}

/// Gives the last attribute the value that was just read.
void qxXmlSax::takeAttributeValue()
{
    qxXmlReaderState& state = reader();
    qxXmlAttributeList& attributes = state.attributes;
    attributes.takeValue();
    const std::size_t last = attributes.size() - 1;
    if (isFunction(attributes.valueOf(last)) && !state.isTrying) {
        const std::string_view argument = attributes.valueOf(last).substr(FUNCTION.size());
        attributes.setValue(onFunction(qxString(argument.data(), argument.size()), state.level()));
    }
    state.isAttributePending = false;
    if (!equalsLowered(attributes.nameOf(last), ENCODING)) return;
    if (equalsLowered(attributes.valueOf(last), "b64")) setFlag(FLAG_VALUE_BASE64, true);
    if (equalsLowered(attributes.valueOf(last), "hex")) setFlag(FLAG_VALUE_HEX, true);
}

qxParseResult qxXmlSax::XML_read_42()
{
    qxXmlReaderState& state = reader();
    if (state.levels.empty() || XML_read_Test_ETag() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    const qxXmlLevel& level = state.levels.back();
    const char16_t* const expected = state.nameTokens(level);
    const std::size_t length = level.nameLength;
    const char16_t* const name = m_view.current + 2;
    if (m_view.end - name > static_cast<std::ptrdiff_t>(length) && name[length] == u'>' &&
        qxSameTokens(name, expected, length)) {
        m_view.current += length + 3; // by far the most common form, in one piece
        return QX_PARSE_OK;
    }

    m_view.current += 2;
    if (!startsName(0)) failCheck(4202);
    const Name found = scanName();
    if (found.length != length || !qxSameTokens(found.tokens, expected, length)) failEndTag(found);
    skipSpace();
    expect(u'>', 4203);
    return QX_PARSE_OK;
}

/// Fails at the name of an end tag, which was just taken.
void qxXmlSax::failEndTag(const Name& found)
{
    constexpr unsigned int LONGEST = 30000; // bytes of each name, so that both fit an error text
    qxXmlReaderState& state = reader();
    const qxString got = state.names.find(found.tokens, found.length).name();
    const qxString& expected = state.nameOf(state.levels.back());
    m_view.current -= found.length;
    m_errorCheck = 0;
    setError("Expected end tag '%s' but got '%s'", cutText(expected, LONGEST), cutText(got, LONGEST));
    throw qxParserException(getError(), qxParserException::SYNTAX);
}

/// Elements inside the content open and close in this one loop: the depth of a document costs no stack.
qxParseResult qxXmlSax::XML_read_43()
{
    qxXmlReaderState& state = reader();
    const unsigned int base = state.level();
    while (hasData()) {
        if (getTokenPos() > state.tryEnd) stop();
        const char16_t token = *m_view.current;
        if (token == u'&') {
            XML_read_67();
        } else if (token != u'<') {
            if (XML_read_14() == QX_PARSE_OK) continue;
            if (token == u']') failCheck(1401);
            failCheck(4301);
        } else if (startsName(1)) {
            openElement();
        } else if (peek(1) == u'/') {
            if (state.level() == base) return QX_PARSE_OK;
            closeElement();
        } else if (XML_read_18() != QX_PARSE_OK && XML_read_16() != QX_PARSE_OK &&
                   XML_read_15() != QX_PARSE_OK) {
            failMarkup(4301);
        }
    }
    if (state.level() != base) failCheck(4201);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_44()
{
    if (peek(0) != u'/') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    expect(u'>', 4401);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_Test_ETag()
{
    return peek(0) == u'<' && peek(1) == u'/' ? QX_PARSE_OK : QX_PARSE_NO_MATCH;
}

qxParseResult qxXmlSax::XML_read_66()
{
    if (peek(0) != u'&' || peek(1) != u'#') return QX_PARSE_NO_MATCH;
    const Hold hold(*this);
    const Run run = {hold.getStart(), hold.getStart() + 1, 6604};
    m_view.current += 2;
    const bool isHex = peek(0) == u'x';
    if (isHex) ++m_view.current;

    unsigned int code = 0;
    const qxUInt64 digits = getTokenPos();
    while (qxIsXmlClass(peek(0), isHex ? QX_XML_CLASS_HEX : QX_XML_CLASS_DIGIT)) {
        const unsigned int digit = *m_view.current;
        const unsigned int value = digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
        if (code < 0x110000) code = code * (isHex ? 16 : 10) + value;
        if (getTokenPos() - run.body > qxString::MAX_LENGTH) failCheckAt(run.begin, run.check);
        ++m_view.current;
    }
    if (getTokenPos() == digits) failCheck(6601);
    const qxString& name = textSince(run);
    expect(u';', 6602);
    if (code < 0x10000 ? !qxIsXmlChar(code) : code >= 0x110000) failCheckAt(run.begin, 6603);
    if (isNotifyingItemType(QX_XML_ENTITY_REFERENCE))
        goOn(onEntityReference(name, getCurrentElementLevel(), (m_flags & FLAG_IN_ATTRIBUTE) != 0));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_67()
{
    if (XML_read_66() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_68();
}

qxParseResult qxXmlSax::XML_read_68()
{
    if (peek(0) != u'&') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    if (!startsName(0)) failCheck(6801);
    const Name tokens = scanName();
    const qxString& name = reader().names.find(tokens.tokens, tokens.length).name();
    expect(u';', 6802);
    if (isNotifyingItemType(QX_XML_ENTITY_REFERENCE))
        goOn(onEntityReference(name, getCurrentElementLevel(), (m_flags & FLAG_IN_ATTRIBUTE) != 0));
    return QX_PARSE_OK;
}
