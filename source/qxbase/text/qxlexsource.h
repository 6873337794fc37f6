// Where a lexer's scan takes its characters from.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "serialize/qxadapterbytes.h"
#include "text/qxlexcharacter.h"
#include "text/qxtokenkinds.h"

#include <cstring>
#include <span>
#include <vector>

// Both sources have the same operations. peek gives the code of the next character, -1 at the end; take takes the one that
// peek gave. Positions are bytes from the start of the token.

/// Bytes that an adapter lends, where they lie. Whether what stands behind them belongs to a token they cannot tell: isCut
/// is then true, and only the other source knows the answer.
template <qxTokenForm FORM>
class qxLexSpanSource
{
    static_assert(FORM == qxTokenForm::BYTE || FORM == qxTokenForm::UTF8);

public:
    struct Mark {
        const unsigned char* next;
    };

    explicit qxLexSpanSource(std::span<const unsigned char> bytes)
        : m_begin(bytes.data()), m_next(m_begin), m_end(m_begin + bytes.size())
    {}

    int peek()
    {
        if (m_next == m_end) [[unlikely]] {
            m_isCut = true;
            return -1;
        }
        m_size = 1;
        if (FORM == qxTokenForm::BYTE || *m_next < 0x80) return *m_next;
        return peekWide();
    }
    void take() { m_next += m_size; }

    /// Takes characters of these kinds.
    void takeRun(unsigned int kinds)
    {
        const bool isWide = FORM != qxTokenForm::BYTE && (kinds & qxTokenKinds::ABOVE) != 0;
        const unsigned int narrow = isWide ? kinds & ~static_cast<unsigned int>(qxTokenKinds::ABOVE) : kinds;
        for (;;) {
            while (m_next != m_end && (qxTokenKinds::TABLE[*m_next] & narrow) != 0) ++m_next;
            if (m_next == m_end) m_isCut = true;
            if (!isWide || m_next == m_end || *m_next < 0x80 || peekWide() < 0x80) return;
            take();
        }
    }

    /// Goes to the next `one` or `other`, characters of ASCII, or to the end.
    void skipTo(unsigned char one, unsigned char other)
    {
        if (one == other && m_next != m_end) {
            const void* const hit = std::memchr(m_next, one, static_cast<std::size_t>(m_end - m_next));
            m_next = hit ? static_cast<const unsigned char*>(hit) : m_end;
        }
        while (m_next != m_end && *m_next != one && *m_next != other) ++m_next;
        if (m_next == m_end) m_isCut = true;
    }

    Mark mark() const { return {m_next}; }
    void rewind(Mark mark) { m_next = mark.next; }
    unsigned int position() const { return static_cast<unsigned int>(m_next - m_begin); }

    bool isCut() const { return m_isCut; }

    /// True when it is a character that is cut.
    bool isCharacterCut() const { return m_isCharacterCut; }
    static bool isLimited() { return false; }

private:
    int peekWide()
    {
        const qxLexCharacter character =
            qxDecodeCharacter(FORM, m_next, static_cast<std::size_t>(m_end - m_next));
        m_size = character.size;
        if (!character.isShort) return static_cast<int>(character.code);
        m_isCut = m_isCharacterCut = true;
        return -1;
    }

    const unsigned char* m_begin;
    const unsigned char* m_next;
    const unsigned char* m_end;
    unsigned int m_size = 0; // of the character that peek gave
    bool m_isCut = false;
    bool m_isCharacterCut = false;
};

/// The queue of a lexer and then an adapter of any kind, of which it asks for no byte before it is needed.
class qxLexStreamSource
{
public:
    struct Mark {
        unsigned int next;
        unsigned int count;
    };

    /// `bytes` is memory to use; `maxCharacters` of 0 is no limit.
    qxLexStreamSource(qxSerializeAdapter& adapter, qxTokenForm form, std::vector<unsigned int>& queue,
                      std::vector<unsigned char>& bytes, unsigned int maxCharacters)
        : m_adapter(adapter), m_form(form), m_queue(queue), m_bytes(bytes), m_maxCharacters(maxCharacters)
    {
        m_bytes.clear();
    }

    int peek();
    void take()
    {
        m_next += m_size;
        ++m_count;
    }
    void takeRun(unsigned int kinds);
    void skipTo(unsigned char one, unsigned char other);
    Mark mark() const { return {m_next, m_count}; }
    void rewind(Mark mark)
    {
        m_next = mark.next;
        m_count = mark.count;
    }
    unsigned int position() const { return m_next; }

    /// True when it stopped since a token may have no more characters.
    bool isLimited() const { return m_isLimited; }

    /// Bytes that were taken out of the adapter.
    std::size_t getTakenBytes() const { return m_bytes.size() - m_queuedBytes - m_lentUsed; }

    /// The token is the first `size` bytes; all that is behind it goes back. Returns the bytes of the adapter in it.
    unsigned int finish(unsigned int size);

private:
    bool pull();

    qxSerializeAdapter& m_adapter;
    const qxTokenForm m_form;
    std::vector<unsigned int>& m_queue;
    std::vector<unsigned char>&
        m_bytes; // out of the queue, then out of the adapter, then of those that are lent
    const unsigned int m_maxCharacters;
    std::span<const unsigned char> m_lent; // still the adapter's
    std::size_t m_lentUsed = 0;
    std::vector<unsigned int> m_queueEnds; // where the bytes of each character of the queue end
    unsigned int m_queuedBytes = 0;
    unsigned int m_next = 0;
    unsigned int m_size = 0;  // of the character that peek gave
    unsigned int m_count = 0; // characters taken
    bool m_isLimited = false;
    bool m_isAtEnd = false;
};
