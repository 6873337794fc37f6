// The window of tokens through which a parser sees its input.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "text/qxtokencodec.h"

#include <cstddef>
#include <memory>
#include <span>

/// Takes bytes from an adapter, decodes them in blocks and keeps the tokens in one piece of memory:
/// [history | current ... end], with a 0 behind the end.
///
/// Bytes that an adapter lends stay its own until the parser has used their tokens; only where nothing is lent,
/// and for a character that two loans cut apart, bytes are taken and kept here. So the encoding can change at
/// any token, and an adapter that is let go stands exactly behind the last token used.
///
/// The parser has the view at hand and passes it in.
class qxTokenWindow
{
public:
    static constexpr std::size_t BLOCK = 16384; ///< tokens decoded at once

    qxTokenWindow() = default;
    qxTokenWindow(const qxTokenWindow&) = delete;
    qxTokenWindow& operator=(const qxTokenWindow&) = delete;

    /// A view of no tokens.
    static qxTokenView emptyView();

    /// Forgets all tokens and starts a new input at the adapter's next byte.
    void start(qxTokenView& view);

    /// Adds tokens when all are used; false at the end of the input. Keeps the history and what is held.
    bool fill(qxSerializeAdapter& adapter, qxTokenView& view);

    /// Leaves the adapter behind the current token: gives back what was taken too much.
    void release(qxSerializeAdapter& adapter, qxTokenView& view);

    /// The encoding as the switches say. Tokens that are not used yet are decoded anew.
    void setForm(qxSerializeAdapter* adapter, qxTokenView& view, qxTokenForm form, bool detectMark);

    /// Bytes of this input whose tokens were used, and those that were taken beyond them.
    qxUInt64 getUsedBytes() const { return m_usedBytes; }
    std::size_t getTakenBytes() const { return m_takenEnd > m_takenBegin ? m_takenEnd - m_takenBegin : 0; }

    void setHistory(std::size_t tokens) { m_history = tokens; }
    void setFaultWarning(bool on) { m_warns = on; }
    bool isFault(qxUInt64 position) const { return position >= m_faultBegin && position < m_faultEnd; }

    /// The farthest position that was reached: what lies too far behind it cannot be given back.
    qxUInt64 reached(const qxTokenView& view);

    unsigned int getLine(const qxTokenView& view) const;
    unsigned int getColumn(const qxTokenView& view) const;
    void setLine(const qxTokenView& view, unsigned int line);
    void setColumn(const qxTokenView& view, unsigned int column);

private:
    static constexpr qxUInt64 NOWHERE = ~0ULL;
    static constexpr std::size_t TAKEN_ROOM = 16384; // bytes

    /// What is known of a position's place.
    struct Place {
        qxUInt64 position;
        unsigned int line;
        qxUInt64 lineStart; // position of the first token of the line
        qxUInt64 pairs;     // characters of two tokens from there to the position
    };

    void useTokens(qxSerializeAdapter& adapter, std::size_t bytes, qxUInt64 position);
    void makeRoom(qxTokenView& view);
    void forget(qxTokenView& view, std::size_t tokens);
    void readMark(qxSerializeAdapter& adapter);
    bool startsWith(qxSerializeAdapter& adapter, std::span<const unsigned char> mark);
    void dropBytes(qxSerializeAdapter& adapter, std::size_t count);
    bool decodeBlock(qxSerializeAdapter& adapter, qxTokenView& view);
    void addFault(qxTokenView& view);
    std::span<const unsigned char> nextBytes(qxSerializeAdapter& adapter);
    bool takeOneMore(qxSerializeAdapter& adapter);
    void keepTaken(const unsigned char* bytes, std::size_t count);
    void advance(Place& place, const qxTokenView& view, const char16_t* to) const;
    const Place& findPlace(const qxTokenView& view) const;

    std::unique_ptr<char16_t[]> m_tokens;
    std::size_t m_room = 0; // tokens, without the 0 behind them
    std::size_t m_history = 1048576;
    qxUInt64 m_reached = 0;
    qxUInt64 m_usedBytes = 0;

    // The tokens from m_blockPos to the end stand for m_blockBytes bytes that are not used up: bytes that the
    // adapter lent from m_lent on, or the first of those taken.
    qxUInt64 m_blockPos = 0;
    std::size_t m_blockBytes = 0;
    const unsigned char* m_lent = nullptr;
    std::unique_ptr<unsigned char[]> m_taken;
    std::size_t m_takenBegin = 0;
    std::size_t m_takenEnd = 0;

    qxTokenForm m_form = qxTokenForm::BYTE;
    bool m_detectsMark = false;
    bool m_isAtStart = true;
    bool m_isMarkedUTF16 = false;
    bool m_warns = true;
    bool m_hasPairs = false;   // some token may be a surrogate
    qxUInt64 m_faultBegin = 0; // the faulty bytes met last, which stand side by side
    qxUInt64 m_faultEnd = 0;

    static constexpr Place START = {0, 1, 0, 0};
    Place m_bufferPlace = START;       // of the oldest token
    mutable Place m_lastPlace = START; // that was asked for
    unsigned int m_columnShift = 0;    // by setColumn, for the line that starts at m_shiftedLine
    qxUInt64 m_shiftedLine = NOWHERE;
};
