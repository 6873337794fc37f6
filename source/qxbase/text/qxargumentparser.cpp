// SPDX-License-Identifier: see LICENSE

#include "qxargumentparser.h"

#include "qxlex.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace
{

bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

void append(std::string& line, const qxString& token)
{
    const char* const begin = token.getString();
    const char* const end = begin + token.length();
    const bool isQuoted = begin == end || std::any_of(begin, end, isWhiteSpace);
    if (!line.empty()) line += ' ';
    if (isQuoted) line += '"';
    line.append(begin, end);
    if (isQuoted) line += '"';
}

} // namespace

qxArgumentParser::qxArgumentParser(int count, const char* const* arguments, const qxString& syntax,
                                   const qxString& prefix)
    : m_exitsOnError(true)
{
    clear(prefix);
    for (int i = 0; i < count; ++i) addToken(arguments[i]);
    if (!syntax.isEmpty()) setSyntaxString(syntax);
}

qxArgumentParser::qxArgumentParser(int count, const wchar_t* const* arguments, const qxString& syntax,
                                   const qxString& prefix)
    : m_exitsOnError(true)
{
    clear(prefix);
    for (int i = 0; i < count; ++i) addToken(arguments[i]);
    if (!syntax.isEmpty()) setSyntaxString(syntax);
}

qxArgumentParser::qxArgumentParser(const qxString& text, const qxString& prefix) : m_exitsOnError(false)
{
    setArgumentString(text, prefix);
}

void qxArgumentParser::setArgumentString(const qxString& text, const qxString& prefix)
{
    clear(prefix);
    m_text = text;
    m_isText = true;

    // As bytes, so that a token keeps whatever it holds; all that separates tokens is of ASCII.
    qxSerializeLex lexer(1);
    lexer.usePlainIdentifier(1);
    qxSerializeAdapterMemory memory(const_cast<char*>(m_text.getString()), m_text.length()); // only read
    unsigned int begin = 0; // of the token under way
    for (unsigned int at = 0, end = 0; at < m_text.length(); at = end) {
        lexer.read(&memory);
        end = at + lexer.getDataSize(nullptr);
        const bool isQuoted = (lexer.getDataType() & (QX_LEX_STRING | QX_LEX_SINGLE_STRING)) != 0;
        if (isQuoted && begin == at) {
            addToken(m_text(at + 1, end - at - 2));
            begin = end;
        } else if (lexer.getDataType() == QX_LEX_SPACE) {
            if (begin != at) addToken(m_text(begin, at - begin));
            begin = end;
        }
    }
    if (begin != m_text.length()) addToken(m_text(begin, m_text.length() - begin));
}

void qxArgumentParser::clear(const qxString& prefix)
{
    m_prefix = prefix;
    m_text.clear();
    m_error.clear();
    m_tokens.clear();
    m_options.clear();
    m_arguments.clear();
    m_isText = false;
}

void qxArgumentParser::addToken(const qxString& token)
{
    const unsigned int position = m_tokens.entries();
    m_tokens.append(token);
    if (token.length() > m_prefix.length() && token.isFirst(m_prefix)) {
        const qxString name = token.left(m_prefix.length(), true);
        if (name.real() == 0.0) { // deliberate: a zero after the prefix names an option
            m_options.append({name, position});
            return;
        }
    }
    m_arguments.append({token, position});
}

void qxArgumentParser::setSyntaxString(const qxString& syntax)
{
    m_syntax = syntax;
    if (!m_exitsOnError || !(hasOption("help", 0) || hasOption("h", 0))) return;
    if (m_arguments.entries() == 0)
        qxMessage::message(QX_LEVEL_NOTICE, " Syntax: %s", m_syntax);
    else
        qxMessage::message(QX_LEVEL_NOTICE, " Syntax: %s %s", m_arguments[0].text, m_syntax);
    std::exit(0);
}

bool qxArgumentParser::hasOption(const qxString& name, unsigned char caseSensitive, unsigned int* position,
                                 unsigned int* count) const
{
    const auto isNamed = [&](const qxArgOption& option) {
        if (caseSensitive != 0) return option.name == name;
        return qxString(option.name).toLower() == qxString(name).toLower();
    };
    const qxArgOption* const option = std::find_if(m_options.begin(), m_options.end(), isNamed);
    if (option == m_options.end()) return false;
    const unsigned int next = option + 1 == m_options.end() ? m_tokens.entries() : option[1].position;
    if (position) *position = option->position;
    if (count) *count = next - option->position;
    return true;
}

qxString qxArgumentParser::getOptionString(const qxString& name, unsigned char caseSensitive) const
{
    unsigned int position = 0;
    unsigned int count = 0;
    hasOption(name, caseSensitive, &position, &count);
    return join(position, position + count);
}

qxString qxArgumentParser::getArgOptString() const
{
    if (m_options.entries() == 0) return {};
    return join(m_options[0].position, m_tokens.entries());
}

unsigned int qxArgumentParser::getArgumentCount(unsigned char withoutValues) const
{
    // All that stands behind the first option is a value of some option; what stands before it are arguments only.
    if (withoutValues == 0 || m_options.entries() == 0) return m_arguments.entries();
    return m_options[0].position;
}

qxString qxArgumentParser::getArgument(unsigned int index, unsigned char withoutValues) const
{
    if (index >= getArgumentCount(withoutValues)) return {};
    return m_arguments[index].text;
}

qxString qxArgumentParser::getArgumentString(unsigned char withoutValues) const
{
    if (withoutValues != 0) return join(0, getArgumentCount(withoutValues));
    return m_isText ? m_text : join(0, m_tokens.entries());
}

bool qxArgumentParser::checkArgumentCount(unsigned int count)
{
    const unsigned int there = m_arguments.entries();
    if (there == count) return true;
    if (!m_exitsOnError) {
        m_error = qxString::str(" Wrong number of arguments (%d)", there);
        return false;
    }
    if (there == 0)
        qxMessage::message(QX_LEVEL_WARNING, " Wrong number of arguments (%d) - Syntax: %s", there, m_syntax);
    else
        qxMessage::message(QX_LEVEL_WARNING, " Wrong number of arguments (%d) - Syntax: %s %s", there,
                           m_arguments[0].text, m_syntax);
    std::exit(0); // deliberate: as success
}

/// The tokens from `begin` up to `end` in one line.
qxString qxArgumentParser::join(unsigned int begin, unsigned int end) const
{
    std::string line;
    for (unsigned int i = begin; i < end; ++i) append(line, m_tokens[i]);
    return {line.data(), line.size()};
}
