// One token out of characters.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxlex.h"
#include "text/qxtokencodec.h"
#include "text/qxtokenkinds.h"

/// What a lexer takes for tokens.
struct qxLexOptions {
    bool hashComment = false;
    bool slashComment = false;
    bool blockComment = false;
    bool strings = false;
    bool singleStrings = false;
    bool set = false;
    bool escape = false;
    bool plainIdentifier = false;
    bool tokensOnly = false;
    bool hexMode = false;
    qxTokenForm form = qxTokenForm::BYTE;
    unsigned int decimal = '.';
    unsigned int maxCharacters = 0; // 0: no limit
};

/// A token as it was found. Offsets are bytes from its start.
struct qxLexFound {
    qxLexDataType type = QX_LEX_NONE;
    unsigned int size = 0;
    unsigned int textBegin = 0; // of the value, where that is a text
    unsigned int textEnd = 0;
    unsigned int decimal = 0;  // where the decimal character of a real stands; 0 without one
    bool isNegative = false;   // of an integer
    bool isSimple = true;      // each character is of ASCII, none a line feed
    qxUInt64 number = 0;       // the magnitude of an integer, or the code
    unsigned char opener = 0;  // of what is never closed
    unsigned int examined = 0; // bytes that were looked through for its end
};

/// Finds one token; see qxLexSpanSource for what a source is. `Known` tells whether an opener is known not to be closed.
template <class Source, class Known>
class qxLexScanner
{
public:
    qxLexScanner(Source& in, const qxLexOptions& options, const Known& isKnownOpen, qxLexFound& found)
        : m_in(in), m_options(options), m_isKnownOpen(isKnownOpen), m_found(found)
    {}

    void run(bool isCharacter)
    {
        m_found = {};
        const int c = m_in.peek();
        if (c >= 0) {
            if (isCharacter || m_options.tokensOnly)
                takeCharacter(c);
            else
                scan(c);
        }
        m_found.size = m_in.position();
    }

private:
    // The order of the tests matters: hexadecimal digits before letters, plain identifiers before all else above 127.
    void scan(int c)
    {
        const unsigned int kinds = qxTokenKinds::kindsOf(static_cast<unsigned int>(c));
        if (m_options.hexMode && (kinds & qxTokenKinds::HEX) != 0) return scanHexadecimal();
        const bool isPlain = m_options.plainIdentifier;
        if ((kinds & (isPlain ? qxTokenKinds::PLAIN_START : qxTokenKinds::IDENTIFIER_START)) != 0) {
            m_found.isSimple = !isPlain;
            m_in.takeRun(isPlain ? qxTokenKinds::PLAIN_IDENTIFIER : qxTokenKinds::IDENTIFIER);
            return setText(QX_LEX_IDENTIFIER, 0, m_in.position());
        }
        if ((kinds & qxTokenKinds::DIGIT) != 0) return scanNumber();
        if ((kinds & qxTokenKinds::WHITE_SPACE) != 0) return scanSpace();
        scanSpecial(c);
    }

    void scanSpace()
    {
        m_found.type = QX_LEX_SPACE;
        m_in.takeRun(qxTokenKinds::WHITE_SPACE & ~static_cast<unsigned int>(qxTokenKinds::LF));
        if (m_in.peek() != '\n') return;
        m_found.isSimple = false;
        m_in.takeRun(qxTokenKinds::WHITE_SPACE);
    }

    void scanSpecial(int c)
    {
        switch (c) {
        case '"':
            if (m_options.strings) return scanEnclosed('"', '"', QX_LEX_STRING);
            break;
        case '\'':
            if (m_options.singleStrings) return scanEnclosed('\'', '\'', QX_LEX_SINGLE_STRING);
            break;
        case '[':
            if (m_options.set) return scanEnclosed('[', ']', QX_LEX_SET);
            break;
        case '+':
        case '-':
            return scanSign(c);
        case '/':
            return scanSlash();
        case '#':
            if (m_options.hashComment) return scanLineComment();
            break;
        default:
            break;
        }
        takeCharacter(c);
    }

    void takeCharacter(int c)
    {
        m_in.take();
        m_found.type = QX_LEX_CHAR;
        m_found.number = static_cast<unsigned int>(c);
        m_found.isSimple = c > 0 && c < 128 && c != '\n';
    }

    void setText(qxLexDataType type, unsigned int begin, unsigned int end)
    {
        m_found.type = type;
        m_found.textBegin = begin;
        m_found.textEnd = end;
    }

    static bool isDigit(int c) { return c >= '0' && c <= '9'; }
    static bool isHexDigit(int c)
    {
        return c >= 0 && qxTokenKinds::isOfKind(static_cast<unsigned int>(c), qxTokenKinds::HEX);
    }

    void scanSign(int sign)
    {
        m_in.take();
        const int c = m_in.peek();
        m_found.isNegative = sign == '-';
        if (m_options.hexMode && isHexDigit(c)) return scanHexadecimal();
        if (isDigit(c)) return scanNumber();
        m_found.type = QX_LEX_SIGN;
        m_found.number = static_cast<unsigned int>(sign);
    }

    /// Takes "0x" where a hexadecimal digit follows it.
    bool takeHexPrefix()
    {
        const typename Source::Mark start = m_in.mark();
        if (m_in.peek() != '0') return false;
        m_in.take();
        const int c = m_in.peek();
        if (c == 'x' || c == 'X') {
            m_in.take();
            if (isHexDigit(m_in.peek())) return true;
        }
        m_in.rewind(start);
        return false;
    }

    void scanHexadecimal()
    {
        takeHexPrefix();
        scanHexDigits();
    }

    void scanHexDigits()
    {
        bool isTooLarge = false;
        for (int c = m_in.peek(); isHexDigit(c); c = m_in.peek()) {
            isTooLarge = isTooLarge || m_found.number >> 60 != 0;
            m_found.number =
                m_found.number << 4 | static_cast<unsigned int>(isDigit(c) ? c - '0' : (c & 7) + 9);
            m_in.take();
        }
        if (isTooLarge) m_found.number = largest();
        m_found.type = m_found.number <= 0xFFFFFFFF ? QX_LEX_INTEGER : QX_LEX_INT64;
    }

    qxUInt64 largest() const { return 0x7FFFFFFFFFFFFFFFULL + (m_found.isNegative ? 1 : 0); }

    void scanNumber()
    {
        if (m_in.peek() == '0' && takeHexPrefix()) return scanHexDigits();
        const qxUInt64 limit = largest();
        qxUInt64 magnitude = 0;
        for (int c = m_in.peek(); isDigit(c); c = m_in.peek()) {
            const auto digit = static_cast<unsigned int>(c - '0');
            magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
            m_in.take();
        }
        m_found.number = magnitude;
        m_found.type = magnitude <= 0xFFFFFFFF ? QX_LEX_INTEGER : QX_LEX_INT64;
        scanFraction();
        scanExponent();
    }

    void scanFraction()
    {
        const typename Source::Mark start = m_in.mark();
        const unsigned int position = m_in.position();
        if (m_in.peek() != static_cast<int>(m_options.decimal)) return;
        m_in.take();
        if (!isDigit(m_in.peek())) return m_in.rewind(start);
        m_in.takeRun(qxTokenKinds::DIGIT);
        m_found.type = QX_LEX_REAL;
        m_found.decimal = position;
        m_found.isSimple = m_options.decimal < 128 && m_options.decimal != '\n';
    }

    void scanExponent()
    {
        const typename Source::Mark start = m_in.mark();
        const int letter = m_in.peek();
        if (letter != 'e' && letter != 'E') return;
        m_in.take();
        const int sign = m_in.peek();
        if (sign == '+' || sign == '-') m_in.take();
        if (!isDigit(m_in.peek())) return m_in.rewind(start);
        m_in.takeRun(qxTokenKinds::DIGIT);
        m_found.type = QX_LEX_REAL;
    }

    void scanEnclosed(unsigned char opener, unsigned char closer, qxLexDataType type)
    {
        if (m_isKnownOpen(opener)) return takeCharacter(opener);
        const typename Source::Mark start = m_in.mark();
        m_in.take();
        const unsigned int begin = m_in.position();
        while (goToEnd(closer)) {
            const unsigned int end = m_in.position();
            const int c = m_in.peek();
            m_in.take();
            if (c == closer) {
                m_found.isSimple = false;
                return setText(type, begin, end);
            }
            if (m_in.peek() >= 0) m_in.take(); // what a backslash hides
        }
        if (m_in.isLimited()) {
            m_found.isSimple = false;
            return setText(type, begin, m_in.position());
        }
        m_found.opener = opener;
        m_found.examined = m_in.position();
        m_in.rewind(start);
        m_in.peek();
        takeCharacter(opener);
    }

    /// Goes to the closer or to a backslash that hides something; false at the end.
    bool goToEnd(unsigned char closer)
    {
        m_in.skipTo(closer, m_options.escape ? '\\' : closer);
        return m_in.peek() >= 0;
    }

    void scanSlash()
    {
        m_in.take();
        const int c = m_in.peek();
        if (c == '/' && m_options.slashComment) return scanLineComment();
        if (c == '*' && m_options.blockComment) return scanBlockComment();
        m_found.type = QX_LEX_CHAR;
        m_found.number = '/';
    }

    /// From the last character of what begins it to the end of the line.
    void scanLineComment()
    {
        m_in.take();
        const unsigned int begin = m_in.position();
        unsigned int end = begin;
        int c = m_in.peek();
        while (c >= 0 && c != '\n') {
            m_in.skipTo('\n', '\r');
            end = m_in.position();
            c = m_in.peek();
            if (c != '\r') break;
            m_in.take();
            c = m_in.peek();
            if (c != '\n') end = m_in.position(); // a lone CR is part of the text
        }
        m_found.isSimple = false;
        setText(QX_LEX_COMMENT, begin, end);
    }

    void scanBlockComment()
    {
        m_in.take();
        const unsigned int begin = m_in.position();
        unsigned int end = begin;
        for (;;) {
            m_in.skipTo('*', '*');
            end = m_in.position();
            if (m_in.peek() < 0) break;
            m_in.take();
            if (m_in.peek() != '/') continue;
            m_in.take();
            break;
        }
        m_found.isSimple = false;
        setText(QX_LEX_COMMENT, begin, end);
    }

    Source& m_in;
    const qxLexOptions& m_options;
    const Known& m_isKnownOpen;
    qxLexFound& m_found;
};
