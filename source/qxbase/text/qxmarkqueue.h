// The marks that captures start at, and a way back to earlier states of them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "text/qxrulestack.h"

#include <cstddef>
#include <vector>

/// A queue from whose ends marks are taken. It writes down every change, so that a parser that goes back in its input
/// can go back here as well, and forward again.
class qxMarkQueue
{
public:
    /// What happened to the queue.
    struct Change {
        enum Kind : unsigned char { ADDED, TOOK_NEWEST, TOOK_OLDEST };
        Kind kind;
        qxParserMark mark;
    };

    void add(const qxParserMark& mark) { apply({Change::ADDED, mark}); }

    /// Takes the newest mark, or the oldest one; false when there is none.
    bool take(bool isOldest, qxParserMark& mark)
    {
        if (isEmpty()) return false;
        mark = isOldest ? m_marks[m_first] : m_marks.back();
        apply({isOldest ? Change::TOOK_OLDEST : Change::TOOK_NEWEST, mark});
        return true;
    }

    bool isEmpty() const { return m_first == m_marks.size(); }
    std::size_t getCount() const { return m_marks.size() - m_first; }
    void clear();

    /// How much was written down.
    std::size_t getHeight() const { return m_changes.size(); }

    /// Takes back all changes from `height` on.
    void undo(std::size_t height)
    {
        if (m_changes.size() > height) undoSlowly(height);
    }

    /// As undo; the changes are appended to `kept` in their order.
    void undo(std::size_t height, std::vector<Change>& kept);

    /// Makes a change again, or anew.
    void apply(const Change& change)
    {
        if (change.kind == Change::ADDED)
            m_marks.push() = change.mark;
        else if (change.kind == Change::TOOK_NEWEST)
            m_marks.pop_back();
        else
            ++m_first;
        m_changes.push() = change;
    }

    /// False when the last change is no mark that was taken, so that there is nothing to forget.
    bool canSettle() const { return m_changes.size() > 0 && m_changes.back().kind != Change::ADDED; }

    /// Nobody goes back to where it was behind `height`, so that marks that were added and taken since can be forgotten.
    void settle(std::size_t height)
    {
        while (m_changes.size() >= height + 2 && m_changes.back().kind == Change::TOOK_NEWEST &&
               m_changes[m_changes.size() - 2].kind == Change::ADDED)
            m_changes.cut(m_changes.size() - 2);
        if (m_changes.size() >= height + 2 && canSettle()) settleSlowly(height);
    }

private:
    void settleSlowly(std::size_t height);
    void undoSlowly(std::size_t height);

    static constexpr std::size_t FEW = 16; // changes that are looked through

    qxRuleStack<qxParserMark> m_marks;
    std::size_t m_first = 0; // the oldest
    qxRuleStack<Change> m_changes;
};
