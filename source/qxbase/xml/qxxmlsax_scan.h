// What the productions of the XML reader share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlsax.h"
#include "xml/qxxmlchars.h"
#include "xml/qxxmlreader.h"

/// A name where it stands in the window; holds until more is read.
struct qxXmlSax::Name {
    const char16_t* tokens;
    std::size_t length;
};

/// A run of characters that becomes one text: where the construct and where the text begins, and the check
/// that fails when the text is too long for a string; 0 when there is no limit.
struct qxXmlSax::Run {
    qxUInt64 begin;
    qxUInt64 body;
    unsigned int check;
};

inline qxXmlReaderState& qxXmlSax::reader()
{
    if (!m_reader) m_reader = std::make_unique<qxXmlReaderState>();
    return *m_reader;
}

/// Takes white space; true when there was some.
inline bool qxXmlSax::skipSpace()
{
    bool found = false;
    while (hasData()) {
        const char16_t* p = m_view.current;
        while (qxIsXmlClass(*p, QX_XML_CLASS_SPACE)) ++p;
        found = found || p != m_view.current;
        m_view.current = p;
        if (p != m_view.end) break;
    }
    return found;
}

/// Whether a name begins `offset` tokens ahead.
inline bool qxXmlSax::startsName(unsigned int offset)
{
    const char16_t token = peek(offset);
    if (token < 128) return qxIsXmlClass(token, QX_XML_CLASS_START);
    if (qxIsInXmlSet(QX_XML_NAME_STARTS, token)) return true;
    return qxIsXmlNameHighSurrogate(token) && qxIsLowSurrogate(peek(offset + 1));
}

/// Takes the name that begins here.
inline qxXmlSax::Name qxXmlSax::scanName()
{
    const char16_t* p = m_view.current;
    while (qxIsXmlClass(*p, QX_XML_CLASS_NAME)) ++p;
    if (*p >= 128 || p == m_view.end || p - m_view.current > 1000) return scanNameSlowly(p);
    const Name name = {m_view.current, static_cast<std::size_t>(p - m_view.current)};
    m_view.current = p;
    return name;
}

inline void qxXmlSax::expect(char16_t token, unsigned int check)
{
    if (!hasData() || *m_view.current != token) failCheck(check);
    ++m_view.current;
}
