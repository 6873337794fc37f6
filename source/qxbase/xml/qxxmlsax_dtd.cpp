// The productions of the document type. They check the syntax and make no calls.
// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlsax_scan.h"

#include "qxmessage.h"

qxParseResult qxXmlSax::XML_read_28()
{
    if (!isNextText(u"<!D")) return QX_PARSE_NO_MATCH;
    const qxUInt64 begin = getTokenPos();
    if (m_keepsDocumentType) setHistory(qxString::MAX_LENGTH + 1); // a longer one is not held
    const bool wasNotifying = (m_flags & FLAG_NOTIFY) != 0;
    enableNotifications(false); // comments, instructions and references in here are not the document's
    beginDeclaration(u"<!D", u"OCTYPE", 2801);
    expectName(2803);
    if (skipSpace() && XML_read_75() == QX_PARSE_OK) skipSpace();
    if (peek(0) == u'[') {
        ++m_view.current;
        XML_read_28b();
        expect(u']', 2804);
    }
    endDeclaration(2805);
    enableNotifications(wasNotifying);
    if (m_keepsDocumentType) storeDocumentType(begin);
    return QX_PARSE_OK;
}

/// Takes the word that begins a declaration and the white space behind it, which are the checks `check` and the
/// next, when `start` stands here: as much of it as no other declaration begins with.
bool qxXmlSax::beginDeclaration(const char16_t* start, const char16_t* rest, unsigned int check)
{
    if (!isNextText(start)) return false;
    expectText(start, check);
    expectText(rest, check);
    expectSpace(check + 1);
    return true;
}

void qxXmlSax::endDeclaration(unsigned int check)
{
    skipSpace();
    expect(u'>', check);
}

void qxXmlSax::storeDocumentType(qxUInt64 begin)
{
    const qxString* text = nullptr;
    if (begin >= m_view.bufferPos)
        text = reader().textOf(tokenAt(begin), static_cast<std::size_t>(getTokenPos() - begin));
    setHistory(qxXmlReaderState::HISTORY);
    if (text) {
        m_documentType = *text;
    } else {
        qxMessage::message(QX_LEVEL_WARNING, "A document type of more than %d bytes is not kept",
                           qxString::MAX_LENGTH);
    }
}

qxParseResult qxXmlSax::XML_read_28a()
{
    if (XML_read_03() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_69();
}

qxParseResult qxXmlSax::XML_read_28b()
{
    readSubset(true, 0);
    if (peek(0) == u'<') failMarkup(2901);
    return QX_PARSE_OK;
}

/// Reads declarations, with `depth` conditional sections open around them: up to the end of the outermost, or
/// without one as far as there are declarations.
void qxXmlSax::readSubset(bool isInternal, unsigned int depth)
{
    const unsigned int outermost = depth;
    qxXmlReaderState& state = reader();
    for (;;) {
        state.isInIntSubset = isInternal && depth == 0;
        if (XML_read_28a() == QX_PARSE_OK || XML_read_29() == QX_PARSE_OK) continue;
        if (isNextText(u"<![")) {
            m_view.current += 3;
            skipSpace();
            if (openIncludeSection())
                ++depth;
            else if (XML_read_63() != QX_PARSE_OK)
                failCheck(6101);
        } else if (depth == 0) {
            break;
        } else {
            expectText(u"]]>", 6202);
            if (--depth == 0 && outermost > 0) break;
        }
    }
    state.isInIntSubset = false;
}

qxParseResult qxXmlSax::XML_read_29()
{
    if (peek(0) != u'<') return QX_PARSE_NO_MATCH;
    if (XML_read_45() == QX_PARSE_OK || XML_read_52() == QX_PARSE_OK || XML_read_70() == QX_PARSE_OK ||
        XML_read_82() == QX_PARSE_OK || XML_read_16() == QX_PARSE_OK || XML_read_15() == QX_PARSE_OK)
        return QX_PARSE_OK;
    if (!isNextText(u"<!E")) return QX_PARSE_NO_MATCH;
    m_view.current += 3;
    failCheck(2902);
}

qxParseResult qxXmlSax::XML_read_30()
{
    XML_read_77();
    return XML_read_31();
}

qxParseResult qxXmlSax::XML_read_31()
{
    readSubset(false, 0);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_45()
{
    if (!beginDeclaration(u"<!EL", u"EMENT", 4501)) return QX_PARSE_NO_MATCH;
    expectName(4503);
    expectSpace(4504);
    if (XML_read_46() != QX_PARSE_OK) failCheck(4601);
    endDeclaration(4505);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_46()
{
    switch (peek(0)) {
    case u'E':
        expectText(u"EMPTY", 4601);
        return QX_PARSE_OK;
    case u'A':
        expectText(u"ANY", 4601);
        return QX_PARSE_OK;
    case u'(':
        ++m_view.current;
        skipSpace();
        return XML_read_51() == QX_PARSE_OK ? QX_PARSE_OK : XML_read_47();
    default:
        return QX_PARSE_NO_MATCH;
    }
}

qxParseResult qxXmlSax::XML_read_47()
{
    readGroup(0);
    skipOccurrence();
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_48()
{
    if (peek(0) == u'(') {
        ++m_view.current;
        readGroup(0);
    } else if (XML_read_05() != QX_PARSE_OK) {
        return QX_PARSE_NO_MATCH;
    }
    skipOccurrence();
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_49()
{
    readGroup(u'|');
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_50()
{
    readGroup(u',');
    return QX_PARSE_OK;
}

/// Reads a group behind its opening parenthesis, to the closing one. `separator` is the one that must stand
/// between its parts, or 0 for either. Groups inside it are kept on a list: their depth costs no stack.
void qxXmlSax::readGroup(char16_t separator)
{
    std::vector<char16_t> separators(1, separator);
    for (;;) {
        skipSpace();
        if (peek(0) == u'(') {
            ++m_view.current;
            separators.push_back(0);
            continue;
        }
        expectName(4801);
        skipOccurrence();
        for (;;) {
            skipSpace();
            const char16_t token = peek(0);
            if (token == u')') {
                ++m_view.current;
                separators.pop_back();
                if (separators.empty()) return;
                skipOccurrence();
                continue;
            }
            const bool isSeparator = token == u'|' || token == u',';
            if (!isSeparator || (separators.back() != 0 && separators.back() != token)) failCheck(4901);
            separators.back() = token;
            ++m_view.current;
            break;
        }
    }
}

void qxXmlSax::skipOccurrence()
{
    const char16_t token = peek(0);
    if (token == u'?' || token == u'*' || token == u'+') ++m_view.current;
}

qxParseResult qxXmlSax::XML_read_51()
{
    if (peek(0) != u'#') return QX_PARSE_NO_MATCH;
    expectText(u"#PCDATA", 5101);
    bool hasNames = false;
    for (skipSpace(); peek(0) == u'|'; skipSpace()) {
        ++m_view.current;
        skipSpace();
        expectName(5102);
        hasNames = true;
    }
    expect(u')', 5103);
    if (hasNames || peek(0) == u'*') expect(u'*', 5104);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_52()
{
    if (!beginDeclaration(u"<!A", u"TTLIST", 5201)) return QX_PARSE_NO_MATCH;
    expectName(5203);
    while (skipSpace() && XML_read_53() == QX_PARSE_OK) {}
    expect(u'>', 5204);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_53()
{
    if (XML_read_05() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    expectSpace(5301);
    if (XML_read_54() != QX_PARSE_OK) failCheck(5401);
    expectSpace(5302);
    if (XML_read_60() != QX_PARSE_OK) failCheck(6001);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_54()
{
    if (XML_read_55() == QX_PARSE_OK || XML_read_57() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_56();
}

qxParseResult qxXmlSax::XML_read_55()
{
    if (peek(0) != u'C') return QX_PARSE_NO_MATCH;
    expectText(u"CDATA", 5401);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_56()
{
    const char16_t* const words[] = {u"IDREFS", u"IDREF",    u"ID",     u"ENTITIES",
                                     u"ENTITY", u"NMTOKENS", u"NMTOKEN"};
    for (const char16_t* const word : words) {
        if (!isNextText(word)) continue;
        expectText(word, 5401);
        return QX_PARSE_OK;
    }
    return QX_PARSE_NO_MATCH;
}

qxParseResult qxXmlSax::XML_read_57()
{
    if (XML_read_58() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_59();
}

qxParseResult qxXmlSax::XML_read_58()
{
    if (!isNextText(u"NO")) return QX_PARSE_NO_MATCH;
    expectText(u"NOTATION", 5401);
    expectSpace(5801);
    expect(u'(', 5802);
    for (;;) {
        skipSpace();
        expectName(5803);
        skipSpace();
        if (peek(0) != u'|') break;
        ++m_view.current;
    }
    expect(u')', 5804);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_59()
{
    if (peek(0) != u'(') return QX_PARSE_NO_MATCH;
    do {
        ++m_view.current; // the parenthesis or a bar
        skipSpace();
        if (XML_read_07() != QX_PARSE_OK) failCheck(5901);
        skipSpace();
    } while (peek(0) == u'|');
    expect(u')', 5902);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_60()
{
    reader().attributes.clear(); // of the default values read so far
    if (peek(0) != u'#') return XML_read_10();
    ++m_view.current;
    switch (peek(0)) {
    case u'R':
        expectText(u"REQUIRED", 6001);
        return QX_PARSE_OK;
    case u'I':
        expectText(u"IMPLIED", 6001);
        return QX_PARSE_OK;
    default:
        expectText(u"FIXED", 6001);
        expectSpace(6002);
        if (XML_read_10() != QX_PARSE_OK) failCheck(6003);
        return QX_PARSE_OK;
    }
}

qxParseResult qxXmlSax::XML_read_61()
{
    if (!isNextText(u"<![")) return QX_PARSE_NO_MATCH;
    m_view.current += 3;
    skipSpace();
    if (XML_read_62() == QX_PARSE_OK || XML_read_63() == QX_PARSE_OK) return QX_PARSE_OK;
    failCheck(6101);
}

qxParseResult qxXmlSax::XML_read_62()
{
    if (!openIncludeSection()) return QX_PARSE_NO_MATCH;
    readSubset(false, 1);
    return QX_PARSE_OK;
}

/// Takes the beginning of an INCLUDE section behind "<![".
bool qxXmlSax::openIncludeSection()
{
    if (!isNextText(u"IN")) return false;
    expectText(u"INCLUDE", 6101);
    skipSpace();
    expect(u'[', 6201);
    return true;
}

qxParseResult qxXmlSax::XML_read_63()
{
    if (!isNextText(u"IG")) return QX_PARSE_NO_MATCH;
    expectText(u"IGNORE", 6101);
    skipSpace();
    expect(u'[', 6301);
    XML_read_64();
    expectText(u"]]>", 6302);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_64()
{
    qxUInt64 depth = 0; // of sections inside the ignored one
    for (;;) {
        XML_read_65();
        if (isNextText(u"<![")) {
            ++depth;
        } else if (depth > 0 && isNextText(u"]]>")) {
            --depth;
        } else {
            if (depth > 0) failCheck(6302);
            return QX_PARSE_OK;
        }
        m_view.current += 3;
    }
}

qxParseResult qxXmlSax::XML_read_65()
{
    while (skipTo({0, 0, 0}, {u'<', u']', u']'}) && !isNextText(u"<![") && !isNextText(u"]]>"))
        ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_69()
{
    if (peek(0) != u'%') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    expectName(6901);
    expect(u';', 6902);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_70()
{
    if (!beginDeclaration(u"<!EN", u"TITY", 7001)) return QX_PARSE_NO_MATCH;
    if (XML_read_72() == QX_PARSE_OK || XML_read_71() == QX_PARSE_OK) return QX_PARSE_OK;
    failCheck(7101);
}

qxParseResult qxXmlSax::XML_read_71()
{
    if (XML_read_05() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    expectSpace(7102);
    if (XML_read_73() != QX_PARSE_OK) failCheck(7103);
    endDeclaration(7104);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_72()
{
    if (peek(0) != u'%') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    expectSpace(7201);
    expectName(7202);
    expectSpace(7203);
    if (XML_read_74() != QX_PARSE_OK) failCheck(7204);
    endDeclaration(7205);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_73()
{
    if (XML_read_09() == QX_PARSE_OK) return QX_PARSE_OK;
    if (XML_read_75() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    if (skipSpace()) XML_read_76();
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_74()
{
    if (XML_read_09() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_75();
}

qxParseResult qxXmlSax::XML_read_75()
{
    if (peek(0) == u'S') {
        expectText(u"SYSTEM", 7501);
    } else if (XML_read_83() != QX_PARSE_OK) {
        return QX_PARSE_NO_MATCH;
    }
    expectSpace(7502);
    if (XML_read_11() != QX_PARSE_OK) failCheck(7503);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_76()
{
    if (peek(0) != u'N') return QX_PARSE_NO_MATCH;
    expectText(u"NDATA", 7601);
    expectSpace(7602);
    expectName(7603);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_77()
{
    if (!isNextText(u"<?xml") || qxIsInXmlSet(QX_XML_NAME_TOKENS, peek(5))) return QX_PARSE_NO_MATCH;
    m_view.current += 5;
    expectSpace(7701);
    if (XML_read_24() == QX_PARSE_OK) expectSpace(7701);
    if (XML_read_80() != QX_PARSE_OK) failCheck(7701);
    skipSpace();
    expectText(u"?>", 7702);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_78()
{
    XML_read_77();
    return XML_read_43();
}

qxParseResult qxXmlSax::XML_read_79()
{
    return XML_read_30();
}

qxParseResult qxXmlSax::XML_read_82()
{
    if (!beginDeclaration(u"<!N", u"OTATION", 8201)) return QX_PARSE_NO_MATCH;
    expectName(8203);
    expectSpace(8204);
    if (XML_read_83() == QX_PARSE_OK) {
        if (skipSpace()) XML_read_11(); // public with or without a system identifier
    } else if (XML_read_75() != QX_PARSE_OK) {
        failCheck(8205);
    }
    endDeclaration(8206);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_83()
{
    if (peek(0) != u'P') return QX_PARSE_NO_MATCH;
    expectText(u"PUBLIC", 8301);
    expectSpace(8302);
    if (XML_read_12() != QX_PARSE_OK) failCheck(8303);
    return QX_PARSE_OK;
}
