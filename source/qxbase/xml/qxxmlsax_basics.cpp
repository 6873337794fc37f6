// The productions of characters, names, literals and the XML declaration.
// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlsax_scan.h"

qxParseResult qxXmlSax::XML_read_02()
{
    if (!hasData()) return QX_PARSE_NO_MATCH;
    if (!qxIsXmlChar(*m_view.current)) return skipPair() ? QX_PARSE_OK : QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_03()
{
    return skipSpace() ? QX_PARSE_OK : QX_PARSE_NO_MATCH;
}

qxParseResult qxXmlSax::XML_read_04()
{
    if (!startsName(0)) return QX_PARSE_NO_MATCH;
    m_view.current += qxIsHighSurrogate(*m_view.current) ? 2 : 1;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_04a()
{
    if (XML_read_04() == QX_PARSE_OK) return QX_PARSE_OK;
    if (!qxIsInXmlSet(QX_XML_NAME_TOKENS, peek(0))) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_05()
{
    if (!startsName(0)) return QX_PARSE_NO_MATCH;
    scanName();
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_06()
{
    if (XML_read_05() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    while (peek(0) == u' ' && startsName(1)) {
        ++m_view.current;
        scanName();
    }
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_07()
{
    if (XML_read_04a() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    while (XML_read_04a() == QX_PARSE_OK) {}
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_08()
{
    if (XML_read_07() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    for (;;) {
        const Hold hold(*this);
        if (peek(0) != u' ') return QX_PARSE_OK;
        ++m_view.current;
        if (XML_read_07() == QX_PARSE_OK) continue;
        m_view.current = hold.begin();
        return QX_PARSE_OK;
    }
}

qxParseResult qxXmlSax::XML_read_09()
{
    const char16_t quote = peek(0);
    if (quote != u'"' && quote != u'\'') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    for (;;) {
        if (!skipTo({0, 0, 0}, {quote, u'%', u'&'})) failCheck(901);
        if (*m_view.current == quote) break;
        if (*m_view.current == u'&')
            XML_read_67();
        else if (reader().isInIntSubset)
            failCheck(902); // what such a reference stands for may not be part of a declaration there
        else
            XML_read_69();
    }
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_10()
{
    const char16_t quote = peek(0);
    if (quote != u'"' && quote != u'\'') return QX_PARSE_NO_MATCH;
    const Hold hold(*this);
    const Run run = {hold.getStart(), hold.getStart() + 1, 1003};
    qxXmlBytes& value = reader().attributes.bytes(); // behind the name of the attribute that it belongs to
    const std::size_t begin = value.size();
    ++m_view.current;
    for (;;) {
        if (!copyTo(run, {quote, u'&', u'<'}, value, begin)) failCheck(1002);
        if (*m_view.current == quote) break;
        if (*m_view.current == u'<') failCheck(1001);
        const Hold reference(*this);
        XML_read_67();
        const auto length = static_cast<std::size_t>(getTokenPos() - reference.getStart());
        value.add(qxTokensToUTF8(reference.begin(), length, value.reserve(3 * length)));
        if (value.size() - begin > qxString::MAX_LENGTH) failCheckAt(run.begin, run.check);
    }
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_11()
{
    const char16_t quote = peek(0);
    if (quote != u'"' && quote != u'\'') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    if (!skipTo({0, 0, 0}, {quote, quote, quote})) failCheck(1101);
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_12()
{
    const char16_t quote = peek(0);
    if (quote != u'"' && quote != u'\'') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    while (peek(0) != quote) {
        if (XML_read_13() != QX_PARSE_OK) failCheck(1201);
    }
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_13()
{
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_PUBID)) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_23()
{
    // "<?xml" as the beginning of a longer target is an ordinary instruction.
    if (!isNextText(u"<?xml") || startsName(5) || qxIsInXmlSet(QX_XML_NAME_TOKENS, peek(5)))
        return QX_PARSE_NO_MATCH;
    m_view.current += 5;
    expectSpace(2301);
    if (XML_read_24() != QX_PARSE_OK) expectText(u"version", 2301);
    bool hasSpace = skipSpace();
    if (hasSpace && XML_read_80() == QX_PARSE_OK) hasSpace = skipSpace();
    if (hasSpace && XML_read_32() == QX_PARSE_OK) skipSpace();
    expectText(u"?>", 2302);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_24()
{
    if (!isNextText(u"version")) return QX_PARSE_NO_MATCH;
    m_view.current += 7;
    XML_read_25();
    const char16_t quote = expectQuote(2401);
    const Hold hold(*this);
    const Run run = {hold.getStart(), hold.getStart(), 2602};
    if (XML_read_26() != QX_PARSE_OK) failCheck(2601);
    m_version = textSince(run);
    expect(quote, 2402);
    if (isNotifyingItemType(QX_XML_DECLARATION)) goOn(onVersion(m_version));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_25()
{
    skipSpace();
    expect(u'=', 2501);
    skipSpace();
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_26()
{
    const Hold hold(*this);
    if (peek(0) != u'1') return QX_PARSE_NO_MATCH;
    ++m_view.current;
    expect(u'.', 2601);
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_DIGIT)) failCheck(2601);
    while (qxIsXmlClass(peek(0), QX_XML_CLASS_DIGIT)) {
        if (getTokenPos() - hold.getStart() >= qxString::MAX_LENGTH) failCheckAt(hold.getStart(), 2602);
        ++m_view.current;
    }
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_32()
{
    if (peek(0) != u's') return QX_PARSE_NO_MATCH;
    expectText(u"standalone", 3201);
    XML_read_25();
    const char16_t quote = expectQuote(3202);
    const bool isYes = peek(0) == u'y';
    expectText(isYes ? u"yes" : u"no", 3203);
    expect(quote, 3204);
    setStandalone(isYes);
    if (isNotifyingItemType(QX_XML_DECLARATION)) goOn(onStandalone(isYes));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_33()
{
    if (XML_read_34() != QX_PARSE_OK) return QX_PARSE_NO_MATCH;
    while (peek(0) == u'-') {
        ++m_view.current;
        if (XML_read_38() != QX_PARSE_OK) failCheck(3301);
    }
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_34()
{
    if (XML_read_36() == QX_PARSE_OK || XML_read_37() == QX_PARSE_OK) return QX_PARSE_OK;
    return XML_read_35();
}

qxParseResult qxXmlSax::XML_read_35()
{
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_LETTER) || !qxIsXmlClass(peek(1), QX_XML_CLASS_LETTER))
        return QX_PARSE_NO_MATCH;
    m_view.current += 2;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_36()
{
    if ((peek(0) | 0x20) != u'i' || peek(1) != u'-') return QX_PARSE_NO_MATCH;
    m_view.current += 2;
    if (XML_read_38() != QX_PARSE_OK) failCheck(3601);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_37()
{
    if ((peek(0) | 0x20) != u'x' || peek(1) != u'-') return QX_PARSE_NO_MATCH;
    m_view.current += 2;
    if (XML_read_38() != QX_PARSE_OK) failCheck(3701);
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_38()
{
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_LETTER)) return QX_PARSE_NO_MATCH;
    while (qxIsXmlClass(peek(0), QX_XML_CLASS_LETTER)) ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_80()
{
    if (peek(0) != u'e') return QX_PARSE_NO_MATCH;
    expectText(u"encoding", 8001);
    XML_read_25();
    const char16_t quote = expectQuote(8002);
    const Hold hold(*this);
    const Run run = {hold.getStart(), hold.getStart(), 8102};
    if (XML_read_81() != QX_PARSE_OK) failCheck(8101);
    m_encoding = textSince(run);
    expect(quote, 8003);
    qxString upper = m_encoding;
    if (upper.toUpper() != "UTF-8") useUtf8(0);
    if (isNotifyingItemType(QX_XML_DECLARATION)) goOn(onEncoding(m_encoding));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_81()
{
    const Hold hold(*this);
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_LETTER)) return QX_PARSE_NO_MATCH;
    // Letters, digits, ".", "_" and "-" are the ASCII characters of names but for the colon.
    while (qxIsXmlClass(peek(0), QX_XML_CLASS_NAME) && peek(0) != u':') {
        if (getTokenPos() - hold.getStart() >= qxString::MAX_LENGTH) failCheckAt(hold.getStart(), 8102);
        ++m_view.current;
    }
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_84()
{
    if (peek(0) == u':' || peek(0) == u'_') return QX_PARSE_NO_MATCH;
    return XML_read_04();
}

qxParseResult qxXmlSax::XML_read_85()
{
    Hold hold(*this);
    if (XML_read_86() == QX_PARSE_OK) {
        hold.rewind();
        return QX_PARSE_NO_MATCH;
    }
    return XML_read_84();
}

qxParseResult qxXmlSax::XML_read_86()
{
    const char16_t token = peek(0);
    const bool isIdeograph =
        (token >= 0x4E00 && token <= 0x9FA5) || token == 0x3007 || (token >= 0x3021 && token <= 0x3029);
    if (!isIdeograph) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_87()
{
    const char16_t token = peek(0);
    if ((token < 0x300 || token > 0x36F) && token != 0x203F && token != 0x2040) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_88()
{
    if (!qxIsXmlClass(peek(0), QX_XML_CLASS_DIGIT)) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_89()
{
    if (peek(0) != 0xB7) return QX_PARSE_NO_MATCH;
    ++m_view.current;
    return QX_PARSE_OK;
}
