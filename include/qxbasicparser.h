// The grammar parser: characters from a byte stream, with push-back and places, matched by rules.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"
#include "qxerror.h"
#include "qxforward.h"
#include "qxruleset.h"
#include "qxstring.h"

#include <cstddef>
#include <memory>

class qxRuleRun;
class qxRuleProgram;
class qxTokenWindow;

/// The result of every step of a parser and of every parser function.
enum qxParseResult : unsigned int {
    QX_PARSE_ERROR = 0,   ///< the whole parse stops
    QX_PARSE_OK = 1,      ///< the construct matched and its input is taken
    QX_PARSE_NO_MATCH = 2 ///< the construct did not match and the input is where it was
};

/// Where a capture starts.
struct qxParserMark {
    unsigned int position; ///< in the input, in tokens: the low 32 bits
    unsigned int depth;    ///< of the rules at the time
    unsigned char flag;    ///< whether the match so far had succeeded, for "@"; 0 for "$"
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

/// Reads the characters of a byte stream as 16-bit tokens that can be given back, and matches them by rules.
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
/// Rules are text, in the language that docs/rules.md describes: a derived class registers its operations as
/// functions, which the rules call by name, and runs a rule. Every alternative of a rule is run, also those behind one
/// that matched; what functions did in an alternative that does not count is taken back by restoreState.
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
    /// not used. Refused with the error "Parser is busy reading" while the parser is reading a document or runs a rule.
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

    /// Forgets the error, the place, the marks and the tokens that could be given back; the adapter's next byte
    /// starts a new input. Rules, functions, switches, limits and the progress message stay.
    void reset();

    // Place

    /// Of the next token, from 1. Lines end with a line feed.
    unsigned int getLine() const;
    void setLine(unsigned int line);

    /// Of the next token, from 1, in characters.
    unsigned int getColumn() const;
    void setColumn(unsigned int column);

    /// The place of a position that can be gone back or forward to; false for others.
    bool getPlaceOf(qxUInt64 position, unsigned int& line, unsigned int& column);

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
    qxParseResult parseToCREOL(); ///< everything before the next CR or LF, or up to the end; may be empty
    qxParseResult parseToEOL();   ///< everything before the next LF, or up to the end; may be empty
    qxParseResult parseUpAlpha();
    qxParseResult parseWS(); ///< one or more spaces and tabs

    void skipWS();             ///< spaces and tabs
    void skipAllWS();          ///< white space
    void skipToEOL();          ///< as parseToEOL
    void skipToCREOL();        ///< as parseToCREOL
    void skipAllExceptCREOL(); ///< as parseAllExceptCREOL

    // Rules

    /// Runs on this rule set from now on, or on none when null. Refused with the error "Parser is busy reading" while
    /// a rule runs; so are the next two.
    void setRules(qxRuleSet* rules);
    qxRefPointer<qxRuleSet> getRules() const;

    /// Loads a rule set and runs on it. A text that is none sends the warning "Malformed rule in parser -> '%s'" with
    /// the rule, and false leaves the rules as they were.
    bool loadRules(const char* text, std::size_t length);
    bool loadRules(const qxString& text) { return loadRules(text.getString(), text.length()); }

    /// Rules can call `function` by this name from now on, unless a rule has the name. `Owner` is the class of the
    /// parser itself, derived from this one.
    template <class Owner>
    void registerFunction(const char* name, qxParseResult (Owner::*function)())
    {
        addFunction(name, static_cast<qxParseResult (qxBasicParser::*)()>(function));
    }

    /// Runs the rule of this name on the input: a rule of the set, else a registered function, else a built-in parser
    /// such as "parseAlpha", else parseFunction. Without an adapter the error "Adapter out of Data". Functions may call
    /// it in their turn.
    qxParseResult parseRule(const char* name);
    qxParseResult parseRule(const qxString& name = "main") { return parseRule(name.getString()); }

    /// What becomes of a function name that nobody knows: the base sets the error "Unknow parse function '%s'" and
    /// returns QX_PARSE_ERROR.
    virtual qxParseResult parseFunction(const qxString& name);

    // Marks, which rules set by "$" and "@" and functions take

    /// With it on the oldest mark is taken first; at first off, the newest.
    void useFirstInFirstOut(unsigned char on);
    void setMark(unsigned char flag = 0);
    bool takeMark(qxParserMark& mark);

    /// Takes a mark and gives the text from there to the next token; without a mark the whole text from the start of
    /// the input. False, with the error of getTokenData, when there is no such text.
    bool takeMarkedText(qxString& text);

    /// The same for a number, which is read as by qxString::real, and is 0 where there is none.
    bool takeMarkedNumber(double& number);

    // What a run may cost

    /// Steps that a run may take, besides 1,000 for each token that it reached; at first 100,000,000. Each element of a
    /// rule that is tried is a step. A run that takes more ends with the error "Too many steps in rule '%s' at
    /// (Line:%d,Col:%d) -> %s".
    void setMaxSteps(qxUInt64 count);

    /// How deeply rules and groups may be nested; at first 1,000,000, which is some 100 MB. A run that goes deeper
    /// ends with the error "Rules nested too deeply in rule '%s' at ...", one that lets more marks than that wait with
    /// "Too many marks in rule '%s' at ...", and a rule that calls itself before it takes anything with "Left recursion
    /// in rule '%s' at ...".
    void setMaxDepth(unsigned int count);

    /// True when the last run ended by one of these four errors.
    bool hasReachedLimit() const;

    // Why a run did not match

    /// Where in the text of the rule set, from 1, the last run met its error; false when it met none there.
    bool getErrorRulePlace(unsigned int& line, unsigned int& column) const;

    /// What looks wrong in the rules; see qxRuleSet::check. Known are the functions that are registered.
    qxArray<qxRuleFinding> checkRules() const;

    /// The farthest position where something was tried that did not match, of the last run.
    qxUInt64 getFarthestPosition() const;

    /// What was tried there, as it stands in the rules, with commas between; at most eight. The names of rules stand
    /// for what they begin with.
    qxString getExpected() const;

    /// Sends a debug message at each entry and exit of a rule or function; at first off.
    void useTrace(unsigned char on);

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

    /// Functions that keep what they parse override both. saveState returns a number for what there is now, and
    /// restoreState goes back, or forward again, to what a number stands for; with `isFinal` no number that was given
    /// out later comes again. They are called only when a function was called in between.
    virtual qxUInt64 saveState();
    virtual void restoreState(qxUInt64 state, bool isFinal);

    /// Runs a rule on `length` bytes of memory, less than 4 GB, in place of the adapter, which is none afterwards;
    /// `taken` receives how many of them were used.
    qxParseResult parseBytes(const char* text, std::size_t length, const char* rule, std::size_t& taken);

    /// For the parsers of the library.
    qxRuleRun& rules();

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
    friend class qxPatternParsers;
    friend class qxRuleRun;

    void addFunction(const char* name, qxParseResult (qxBasicParser::*function)());
    bool refuseWhenRunning();
    bool readTokenData(qxUInt64 position, unsigned int count, qxString& text);
    bool takeMarkedTokens(qxUInt64& position, unsigned int& count);
    bool rewindTo(qxUInt64 position);
    char16_t getNextTokenSlowly(bool skipWhiteSpace);
    char16_t peekSlowly(unsigned int offset);
    qxParseResult parseOne(unsigned int kinds);
    qxParseResult parseOne(unsigned int first, unsigned int rest);
    qxParseResult parseEnclosed(char16_t open, char16_t close, bool escape);
    bool skip(unsigned int kinds);
    void skipUpTo(unsigned int kinds);
    bool isNext(char16_t token);
    void startInput();
    void applyEncoding();
    void attach(qxSerializeAdapter* adapter, bool isShared);
    void detach();
    bool isHeld(qxUInt64 position, unsigned int count);
    void reportProgressNow();

    std::unique_ptr<qxTokenWindow> m_window;
    std::unique_ptr<qxRuleRun> m_rules; // null until rules are used
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
