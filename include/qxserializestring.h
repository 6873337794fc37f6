// Text on a byte stream, up to a terminator.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializedata.h"
#include "qxstring.h"

/// A text followed by one terminator byte. There is no length before it.
///
/// Without terminator the text runs to the end of the stream, and so can only be the last value of it. A text that
/// holds the terminator is cut there when it is read: there is no escape.
///
/// Errors: a text that the stream ends before its terminator is taken as it is. Of more than 65,535 bytes the
///         first 65,535 are kept, all up to the terminator are consumed, and the adapter gets an error.
class QX_API qxSerializeString : public qxSerializeData
{
public:
    qxSerializeString() = default;
    explicit qxSerializeString(unsigned char terminator) : m_terminator(terminator) {}
    explicit qxSerializeString(const qxString& text, unsigned char terminator = 0)
        : m_text(text), m_terminator(terminator)
    {}
    qxSerializeString& operator=(const qxString& text)
    {
        m_text = text;
        return *this;
    }

    operator qxString&() { return m_text; }
    operator const qxString&() const { return m_text; }
    const char* getString() const { return m_text.getString(); }

    void setTerminator(unsigned char terminator) { m_terminator = terminator; }
    unsigned char getTerminator() const { return m_terminator; }

    /// 1, the start, ends the text with the terminator; 0 with the stream.
    void useTerminator(unsigned char mode) { m_usesTerminator = mode; }
    unsigned char usesTerminator() const { return m_usesTerminator; }

    void write(qxSerializeAdapter* adapter) override;
    void read(qxSerializeAdapter* adapter) override;

    /// The bytes of the text and 1, also where no terminator is written.
    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

private:
    qxString m_text;
    unsigned char m_terminator = 0;
    unsigned char m_usesTerminator = 1;
};
