// The parser's token layer: characters from a byte stream, with push-back, places and errors.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"
#include "qxerror.h"
#include "qxforward.h"
#include "qxstring.h"

#include <cstddef>
#include <memory>

class qxTokenWindow;

/// The result of every step of a parser and of every parser function.
enum qxParseResult : unsigned int {
    QX_PARSE_ERROR = 0,   ///< the whole parse stops
    QX_PARSE_OK = 1,      ///< the construct matched and its input is taken
    QX_PARSE_NO_MATCH = 2 ///< the construct did not match and the input is where it was
};

/// The tokens of an input that are in memory: [held | current ... end], with a 0 behind the end. Some memory
/// behind that can be read.
struct qxTokenView {
    const char16_t* buffer;  ///< the oldest that is held
    const char16_t* current; ///< the next to be taken
    const char16_t* end;     ///< behind the last
    qxUInt64 bufferPos;      ///< position of the oldest
    qxUInt64 holdPos;        ///< from this position on tokens must be held, whatever can be given back
};

/// What ends a parse early.
class QX_API qxParserException : public qxBaseError
{
public:
    enum Code : int {
        SYNTAX = 1,  ///< the input is malformed
        REFUSED = 2, ///< a callback wanted no more
        MISUSE = 3   ///< an operation was called where it is not allowed
    };

    qxParserException(const qxString& text, Code code);
    ~qxParserException() override;
};

/// Reads the characters of a byte stream as 16-bit tokens that can be given back.
///
/// Bytes are UTF-8, UTF-16 or one character each, as useUtf8 and useUnicode say; at first one character each.
/// Where one of the two is on, a byte-order mark at the start of the input is dropped and selects the
/// encoding of that input. A character beyond U+FFFF is two tokens, a high and a low surrogate. Bytes that are
/// no character give the token 0 and the warning "Utf lex encoding on faulty data set".
///
/// No more is asked of the adapter than it says it has, and what was not used stays in it, or goes back to
/// it, when the parser lets it go.
///
/// The parse... operations match what stands next and take nothing unless they match; at the end of the input
/// all of them answer "no match".
///
/// Lifetime: holds a reference to the adapter while it is attached, but never deletes one that nobody else
///           held; such an adapter must outlive the parser or be detached with setAdapter(nullptr).
/// Threads:  one parser is used by one thread at a time.
/// Errors:   the last one is stored (hasError, getError); nothing is raised for bad input.
class QX_API qxBasicParser
{
public:
    qxBasicParser();
    virtual ~qxBasicParser() noexcept(false); // gives bytes back and may let the last of an adapter go
    qxBasicParser(const qxBasicParser&) = delete;
    qxBasicParser& operator=(const qxBasicParser&) = delete;

    // Input

    /// Attaches `adapter`, or none when null, and starts a new input there. The one before gets back what was
    /// not used. Refused with the error "Parser is busy reading" while the parser is reading a document.
    void setAdapter(qxSerializeAdapter* adapter);
    qxSerializeAdapter* getAdapter() const { return m_adapter; }

    /// True when a token is left; may wait on a stream that has no byte yet.
    bool hasData() { return m_view.current != m_view.end || fill(); }

    /// UTF-16 of the given byte order. Takes effect with the next token and wins over useUtf8.
    void useUnicode(unsigned char unicode, unsigned char bigEndian = 0);
    void useUtf8(unsigned char on);
    bool isUsingUnicode() const { return m_unicode != 0; }
    bool isUsingUtf8() const { return m_utf8 != 0; }

    /// Goes on where `other` stopped: its adapter, place, encoding and the tokens that can be given back come
    /// over. `other` keeps the adapter attached and can take the input back the same way.
    void continueParsingFrom(qxBasicParser& other);

    /// Forgets the error, the place and the tokens that could be given back; the adapter's next byte starts a
    /// new input. Switches, limits and the progress message stay.
    void reset();

    // Place

    /// Of the next token, from 1. Lines end with a line feed.
    unsigned int getLine() const;
    void setLine(unsigned int line);

    /// Of the next token, from 1, in characters.
    unsigned int getColumn() const;
    void setColumn(unsigned int column);

    /// Tokens taken since the start of the input.
    qxUInt64 getTokenPos() const { return positionOf(m_view.current); }

    // Tokens

    /// The next token; with `skipWhiteSpace` set the next that is no space, tab, CR or LF. At the end of the
    /// input 0 with the error "Adapter out of Data".
    char16_t getNextToken(bool skipWhiteSpace = false)
    {
        if (!skipWhiteSpace && m_view.current != m_view.end) return *m_view.current++;
        return getNextTokenSlowly(skipWhiteSpace);
    }

    /// Gives back the last `count` tokens. More than are held set the error
    /// "Too Large Pushback in basic parser" and change nothing.
    void pushBackTokens(unsigned int count);

    /// Takes the next `count` tokens when they are `text`, and returns true; else takes nothing. With
    /// `skipWhiteSpace` set white space may stand before them.
    bool checkTokens(const char16_t* text, unsigned int count, bool skipWhiteSpace = false);
    bool checkTokens(const wchar_t* text, unsigned int count, bool skipWhiteSpace = false);

    /// Tokens that can be given back at most, at first 1,048,576. Memory is used only as needed.
    unsigned int getMaxBufferSize() const { return m_maxBufferSize; }
    void setMaxBufferSize(unsigned int count);

    /// The text of `count` tokens from `position` on. Tokens that are no longer held, or not yet read, set the
    /// error "Too Large Pushback in basic parser", a text over 65,535 bytes the error
    /// "Too many characters in qxString"; the answer is then empty.
    qxString getTokenData(qxUInt64 position, unsigned int count);

    /// The same in UTF-8 of any length; false when the tokens are not held.
    bool getTokenData(qxUInt64 position, unsigned int count, qxArray<unsigned char>& bytes);

    // What stands next. White space is space, tab, CR and LF; letters and digits are those of ASCII.

    qxParseResult
    parseAllExceptCREOL();      ///< everything before the next CR or LF, or up to the end; may be empty
    qxParseResult parseAllWS(); ///< one or more of white space
    qxParseResult parseAlpha();
    qxParseResult parseAlphaNum();
    qxParseResult parseCR();
    qxParseResult parseCRLF();
    qxParseResult parseCTL();  ///< a code below 32, or 127
    qxParseResult parseChar(); ///< any one character
    qxParseResult parseDigit();
    qxParseResult parseHT();
    qxParseResult parseHex();        ///< one hexadecimal digit
    qxParseResult parseIdentifier(); ///< a letter or "_", then letters, digits and "_"
    qxParseResult parseInteger();    ///< a sign or none, then digits
    qxParseResult parseLF();
    qxParseResult parseLoAlpha();
    qxParseResult parseNumber(); ///< an integer, perhaps with a point, digits and an exponent
    /// A letter, "_" or a character above 127, then these, digits, "-" and ".".
    qxParseResult parsePlainIdentifier();
    qxParseResult parseQuoteToken();       ///< from `"` to the next `"`
    qxParseResult parseQuoteTokenEscape(); ///< the same, where a backslash hides the character behind it
    qxParseResult parseSP();
    qxParseResult parseSetToken(); ///< from "[" to the next "]"
    qxParseResult parseSetTokenEscape();
    qxParseResult parseSingleQuoteToken(); ///< from "'" to the next "'"
    qxParseResult parseSingleQuoteTokenEscape();
    qxParseResult parseToCREOL(); ///< up to and with the next CR LF, or to the end of the input
    qxParseResult parseToEOL();   ///< up to and with the next LF, or to the end of the input
    qxParseResult parseUpAlpha();
    qxParseResult parseWS(); ///< one of white space

    void skipWS();             ///< spaces and tabs
    void skipAllWS();          ///< white space
    void skipToEOL();          ///< as parseToEOL
    void skipToCREOL();        ///< as parseToCREOL
    void skipAllExceptCREOL(); ///< as parseAllExceptCREOL

    /// What becomes of a function name that nobody knows: the error "Unknow parse function '%s'".
    qxParseResult parseFunction(const qxString& name);

    /// "Error", "OK", "No Match", and "Unknown Error" for every other value.
    static const char* parseResultString(qxParseResult result);

    // Errors

    bool hasError() const { return m_hasError; }

    /// The stored error as it is reported; empty when there is none.
    qxString getError() const { return m_error; }

    /// The stored error without the place at its end, and the place where it was set.
    qxString getErrorText() const { return m_errorText; }
    unsigned int getErrorLine() const { return m_errorLine; }
    unsigned int getErrorColumn() const { return m_errorColumn; }

    /// Stores an error: `format` filled in with up to sixteen arguments. Text from outside is passed as an
    /// argument, or to setErrorText.
    template <class... Arguments>
    void setError(const char* format, const Arguments&... arguments)
    {
        setErrorText(qxString::str(format, arguments...));
    }
    void setError(const qxString& text) { setErrorText(text); }

    /// Stores a finished text as it stands.
    void setErrorText(const qxString& text);

    /// With it on, errors end in " at (Line:%d,Col:%d)". At first off.
    void useErrorPlace(unsigned char on) { m_useErrorPlace = on != 0; }
    bool isUsingErrorPlace() const { return m_useErrorPlace; }

    // Progress

    bool hasProgressMessage() const { return !m_progressMessage.isEmpty(); }
    const qxString& getProgressMessage() const { return m_progressMessage; }
    void setProgressMessage(const qxString& message) { m_progressMessage = message; }

    /// Switches the reports of reportProgress on (the start) or off.
    void useProgress(unsigned char on) { m_useProgress = on != 0; }

    /// Tells the receivers of progress how much of the input was used, each percent at most once. Costs
    /// nothing while nobody listens.
    void reportProgress()
    {
        if (m_isProgressDue) reportProgressNow();
    }

protected:
    /// From here productions scan. Pointers into it hold until fill, positions stay.
    qxTokenView m_view;

    /// Reads on when all tokens are taken: false at the end of the input.
    bool fill();

    /// The token `offset` tokens ahead of the next one; 0 when the input ends before.
    char16_t peek(unsigned int offset)
    {
        if (m_view.end - m_view.current > static_cast<std::ptrdiff_t>(offset)) return m_view.current[offset];
        return peekSlowly(offset);
    }

    qxUInt64 positionOf(const char16_t* token) const
    {
        return m_view.bufferPos + static_cast<qxUInt64>(token - m_view.buffer);
    }

    /// The place of a position that is held.
    const char16_t* tokenAt(qxUInt64 position) const { return m_view.buffer + (position - m_view.bufferPos); }

    static constexpr qxUInt64 NOTHING_HELD = ~0ULL; ///< for m_view.holdPos

    /// Holds what is taken from here on while it lives.
    class Hold
    {
    public:
        explicit Hold(qxBasicParser& parser)
            : m_parser(parser), m_outer(parser.m_view.holdPos), m_start(parser.getTokenPos())
        {
            if (m_start < m_outer) parser.m_view.holdPos = m_start;
        }
        ~Hold() { m_parser.m_view.holdPos = m_outer; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

        /// The position and the first token of what was taken since.
        qxUInt64 getStart() const { return m_start; }
        const char16_t* begin() const { return m_parser.tokenAt(m_start); }

        /// Gives it back.
        void rewind() { m_parser.m_view.current = begin(); }

    private:
        qxBasicParser& m_parser;
        const qxUInt64 m_outer;
        const qxUInt64 m_start;
    };

    /// Tokens that fill keeps behind the current one; at first as many as can be given back.
    void setHistory(unsigned int count);

    /// While it is on, the adapter cannot be changed.
    bool isBusy() const { return m_busy; }

    /// Sets the error "Parser is busy reading" and returns true while it is on.
    bool refuseWhenBusy();
    void setBusy(bool busy) { m_busy = busy; }

    /// With false, faulty bytes send no warning: whoever meets the token 0 reports it himself.
    void setFaultWarning(bool on);

    /// True when the token 0 at `position` stands for faulty bytes.
    bool isFault(qxUInt64 position) const;

    /// Reports the whole input as used.
    void reportProgressComplete();

private:
    char16_t getNextTokenSlowly(bool skipWhiteSpace);
    char16_t peekSlowly(unsigned int offset);
    qxParseResult parseOne(unsigned int kinds);
    qxParseResult parseOne(unsigned int first, unsigned int rest);
    qxParseResult parseEnclosed(char16_t open, char16_t close, bool escape);
    bool skip(unsigned int kinds);
    bool isNext(char16_t token);
    void startInput();
    void applyEncoding();
    void attach(qxSerializeAdapter* adapter, bool isShared);
    void detach();
    bool isHeld(qxUInt64 position, unsigned int count);
    void reportProgressNow();

    std::unique_ptr<qxTokenWindow> m_window;
    qxSerializeAdapter* m_adapter = nullptr;
    unsigned int m_maxBufferSize = 1048576;
    unsigned char m_unicode = 0;
    unsigned char m_bigEndian = 0;
    unsigned char m_utf8 = 0;
    bool m_isAdapterShared = false; // somebody else held the adapter when it was attached
    bool m_busy = false;
    bool m_hasError = false;
    bool m_useErrorPlace = false;
    bool m_useProgress = true;
    bool m_isProgressDue = false; // something was read since the last report
    unsigned int m_percent = 0;   // reported last
    unsigned int m_errorLine = 0;
    unsigned int m_errorColumn = 0;
    qxString m_error;
    qxString m_errorText;
    qxString m_progressMessage;
};
