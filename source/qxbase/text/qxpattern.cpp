// SPDX-License-Identifier: see LICENSE

#include "text/qxpattern.h"

#include "core/qxascii.h"
#include "core/qxutf8scan.h"

namespace
{

/// A literal of rules that matches `text`, with a blank on each side: apostrophes stand in quotes of their own.
std::string quote(std::string_view text)
{
    std::string quoted;
    while (!text.empty()) {
        const bool isApostrophe = text[0] == '\'';
        if (isApostrophe)
            quoted += " \"";
        else
            quoted += " '";
        do {
            if (text[0] == '\\') quoted += '\\';
            quoted += text[0];
            text.remove_prefix(1);
        } while (!text.empty() && (text[0] == '\'') == isApostrophe);
        quoted += isApostrophe ? "\" " : "' ";
    }
    return quoted;
}

std::string quoteCharacter(char16_t character)
{
    char bytes[6];
    return quote({bytes, qxWriteUTF8(bytes, character)});
}

/// Translates piece by piece. What the pattern holds outside conversions is taken as it stands, quoted pieces whole: a
/// "%" in them begins no conversion.
class Translator
{
public:
    Translator(std::string_view pattern, char16_t decimal) : m_pattern(pattern), m_decimal(decimal) {}

    std::string translate()
    {
        while (m_place < m_pattern.size()) {
            if (m_pattern[m_place] != '%') {
                takeText();
                continue;
            }
            ++m_place;
            translateConversion();
        }
        endText();
        if (m_rule.empty()) m_rule = " '' ";
        std::string rules = "main ::=" + m_rule + ";";
        if (m_needsNumber) {
            rules += "\nfCNum ::= ( '-' | '+'? ) digit+ (" + quoteCharacter(m_decimal) +
                     "digit* )? ( [eE] ( '-' | '+'? ) digit+ )? ;";
        }
        return rules;
    }

private:
    /// One character, or all of a quoted piece.
    void takeText()
    {
        const std::size_t end = findQuoted();
        const std::size_t behind = end != std::string_view::npos ? end : m_place + 1;
        m_text += m_pattern.substr(m_place, behind - m_place);
        m_place = behind;
    }

    /// Behind the quoted piece that begins here; npos when none does.
    std::size_t findQuoted() const
    {
        if (m_place >= m_pattern.size()) return std::string_view::npos;
        const char c = m_pattern[m_place];
        if (c != '"' && c != '\'') return std::string_view::npos;
        const std::size_t closer = m_pattern.find(c, m_place + 1);
        return closer == std::string_view::npos ? closer : closer + 1;
    }

    void endText()
    {
        m_rule += quote(m_text);
        m_text.clear();
    }

    void addRule(std::string_view text)
    {
        endText();
        m_rule += text;
    }

    /// Behind a "%".
    void translateConversion()
    {
        if (m_place == m_pattern.size()) {
            m_text += '%';
            return;
        }
        const std::size_t quoted = findQuoted();
        if (quoted != std::string_view::npos) {
            const std::string content(m_pattern.substr(m_place + 1, quoted - m_place - 2));
            if (m_pattern[m_place] == '"')
                addRule(content);
            else
                addRule(" $ [" + content + "] ");
            m_place = quoted;
            return;
        }
        const char c = m_pattern[m_place];
        if (const char* const rule = findConversion(c)) {
            addRule(rule);
            ++m_place;
        } else {
            addRule(" '%' ");
            if (qxToLower(c) < 'a' || qxToLower(c) > 'z') return; // it is text like all other
            addRule(quote({&c, 1}));
            ++m_place;
        }
    }

    const char* findConversion(char c)
    {
        switch (c) {
        case 'e':
            return " $ fEnd fPush ";
        case 'i':
            return " $ fIdent fPush ";
        case 'l':
            return " $ fInt fPush ";
        case 'n':
            m_needsNumber = m_needsNumber || m_decimal != u'.';
            return m_decimal == u'.' ? " $ fNum fPush " : " $ fCNum fPush ";
        case 'p':
            return " $ fPlain fPush ";
        case 's':
            return " $ fStr fPushStr ";
        case 't':
            return " $ fToken fPush ";
        case 'w':
            return " fWS* ";
        case 'x':
            return " $ fHex fPush ";
        case '%':
            return " '%' ";
        case '@':
            return " fPush ";
        case '$':
            return "$";
        case '*':
            return "*";
        case '+':
            return "+";
        case '?':
            return "?";
        default:
            return nullptr;
        }
    }

    const std::string_view m_pattern;
    const char16_t m_decimal;
    std::size_t m_place = 0;
    std::string m_text; // outside conversions, not yet part of the rule
    std::string m_rule;
    bool m_needsNumber = false;
};

} // namespace

const std::string_view qxStringParserRules = "fHex ::= fHexS+ ;\n"
                                             "fStr ::= '\"' [^\"]* '\"' | \"'\" [^']* \"'\" ;\n"
                                             "fToken ::= [^] ;\n"
                                             "fEnd ::= [^]* ;\n";

std::string qxTranslatePattern(std::string_view pattern, char16_t decimal)
{
    return Translator(pattern, decimal).translate();
}
