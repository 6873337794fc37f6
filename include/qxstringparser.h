// Texts taken apart by rules or by patterns such as "%i = %n".
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxbasicparser.h"
#include "qxstring.h"

#include <cstddef>
#include <memory>

/// A parser whose rules push the texts that they capture.
///
/// Rules can call
///
/// | function | matches |
/// |---|---|
/// | `fPush` | nothing; takes a mark and pushes the text from there on |
/// | `fPushStr` | the same without the first and the last character |
/// | `fWS` | a run of white space |
/// | `fIdent`, `fPlain` | an identifier, a plain identifier |
/// | `fInt`, `fNum` | an integer, a number |
/// | `fHexS`, `digit` | one hexadecimal digit, one digit |
///
/// and the rules `fHex` (hexadecimal digits), `fStr` (a text in quotes of either kind), `fToken` (one character) and
/// `fEnd` (all the rest), unless they define rules of these names. Input is UTF-8.
///
/// Errors: a text over 65,535 bytes cannot be pushed: the error "Too many characters in qxString".
class QX_API qxStringParser : public qxBasicParser
{
public:
    qxStringParser();
    ~qxStringParser() noexcept(false) override;

    /// Runs on these rules from now on. A text that is no rule set sends the warning
    /// "Malformed rule in parser string:%s rule nr:%d" with the text and the number of the rule, from 1; false then
    /// leaves the rules as they were.
    bool setParserString(const qxString& rules) { return setParserString(rules.getString(), rules.length()); }
    bool setParserString(const char* rules, std::size_t length);

    /// Runs `main` on `length` bytes; what was pushed before is forgotten.
    qxParseResult parseText(const char* text, std::size_t length);
    qxParseResult parseText(const qxString& text) { return parseText(text.getString(), text.length()); }

    /// The bytes of it that were taken.
    std::size_t getTakenBytes() const { return m_takenBytes; }

    /// The texts that were pushed, in their order.
    qxArray<qxString> getStrings() const;
    unsigned int getStringCount() const;
    void clearStrings();
    void pushString(const qxString& text);

    /// Takes `text` apart as `pattern` says and returns what it pushed; see docs/rules.md for the conversions. `ok`
    /// receives whether the whole text matched. A faulty pattern sends the warning "Error:%s"; one whose raw rule text
    /// ends the rule sends "Malformed rule in parser string:%s rule nr:%d", or with `isURL` "... parser url:...". Text
    /// that is left over sends the debug message "Not All arguments were parsed".
    ///
    /// Patterns are translated once and kept for the process, up to some thousands of them.
    ///
    /// Threads: any thread may call it, any number at a time.
    static qxArray<qxString> parseArguments(const qxString& pattern, const qxString& text, bool& ok,
                                            char16_t decimal = u'.', bool isURL = false);

    /// The same for `length` bytes. The result is QX_PARSE_OK only when the whole text matched; `strings` receives what
    /// was pushed, and `error`, unless null, what is wrong with the pattern or that text was left over.
    static qxParseResult parseArguments(const qxString& pattern, const char* text, std::size_t length,
                                        qxArray<qxString>& strings, char16_t decimal = u'.',
                                        qxString* error = nullptr, bool isURL = false);

    /// The rule text to which a pattern is translated, for those who want to see.
    static qxString translatePattern(const qxString& pattern, char16_t decimal = u'.');

    /// Forgets the translated patterns; those in use stay until they are done.
    static void cleanUpParsers();

protected:
    qxUInt64 saveState() override;
    void restoreState(qxUInt64 state, bool isFinal) override;

    struct Strings;

private:
    void moveStrings(qxArray<qxString>& strings);
    friend class qxPatternParsers;

    struct ForProgram {};
    explicit qxStringParser(ForProgram); // runs programs that were made before

    qxParseResult fPush();
    qxParseResult fPushStr();

    const std::unique_ptr<Strings> m_strings;
    std::size_t m_takenBytes = 0;
};

/// As qxStringParser::parseArguments.
QX_API qxArray<qxString> parse(const qxString& pattern, const qxString& text, bool& ok,
                               char16_t decimal = u'.');
