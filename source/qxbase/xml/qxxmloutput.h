// The bytes of a document on their way to the adapter.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

class qxSerializeAdapter;

/// Gathers a document as UTF-8 and hands it on in blocks, in the encoding of the document. What was appended can
/// be taken back until then.
///
/// Threads: as its owner.
class qxXmlOutput
{
public:
    enum Form : unsigned char {
        UTF8,
        UTF16, ///< the low byte first
        BYTES  ///< one byte for each of the characters up to 255, which are all that may be appended
    };

    void setForm(Form form) { m_form = form; }
    Form getForm() const { return m_form; }

    std::size_t getSize() const { return m_size; }

    /// Takes back what was appended since the size was `size`.
    void cut(std::size_t size) { m_size = size; }

    void append(std::string_view text)
    {
        if (text.empty()) return;
        std::memcpy(makeRoom(text.size()), text.data(), text.size());
        m_size += text.size();
    }

    void append(char character)
    {
        *makeRoom(1) = character;
        ++m_size;
    }

    void appendRun(char character, std::size_t count)
    {
        std::memset(makeRoom(count), character, count);
        m_size += count;
    }

    /// How text is escaped, as bits.
    enum Escaping : unsigned char {
        ESCAPE_ALL = 0,
        KEEP_REFERENCES = 1, ///< a predefined reference in the text stays as it is
        GUARD_START = 2,     ///< text that begins with "function:" is not taken for a reader's function
        GUARD_PIECES = 4     ///< the same for each piece of text that a reader gets: they end at references
    };

    /// Appends text whose markup is escaped. Characters that the form does not have become references. False, and
    /// anything may have been appended, when the text holds what is no character of a document.
    bool appendEscaped(std::string_view text, unsigned int escaping);

    /// Appends text as it stands, but for characters that the form does not have, which become references.
    void appendGeneric(std::string_view text);

    /// True when the text consists of characters of a document that the form has.
    bool canHold(std::string_view text) const;

    /// True for a name of the recommendation that the form can hold.
    bool canHoldName(std::string_view name) const;

    /// Writes everything to the adapter.
    void flush(qxSerializeAdapter& adapter);

private:
    char* makeRoom(std::size_t count)
    {
        if (m_capacity - m_size < count) grow(count);
        return m_bytes.get() + m_size;
    }
    void grow(std::size_t count);
    char* appendEscape(char* out, const char*& next, const char* end, unsigned int escaping) const;
    char* appendCharacter(char* out, unsigned int code, std::string_view bytes) const;

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    Form m_form = UTF8;
};
