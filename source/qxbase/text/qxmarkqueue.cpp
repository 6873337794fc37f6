// SPDX-License-Identifier: see LICENSE

#include "text/qxmarkqueue.h"

namespace
{

constexpr std::size_t MOST_KEPT = 4096; // marks, and changes, whose memory waits for the next run

} // namespace

void qxMarkQueue::clear()
{
    m_marks.cut(0);
    m_marks.shrink(MOST_KEPT);
    m_first = 0;
    m_changes.cut(0);
    m_changes.shrink(MOST_KEPT);
}

void qxMarkQueue::undoSlowly(std::size_t height)
{
    for (; m_changes.size() > height; m_changes.pop_back()) {
        const Change& change = m_changes.back();
        if (change.kind == Change::ADDED)
            m_marks.pop_back();
        else if (change.kind == Change::TOOK_NEWEST)
            m_marks.push() = change.mark;
        else
            --m_first;
    }
}

void qxMarkQueue::undo(std::size_t height, std::vector<Change>& kept)
{
    for (std::size_t i = height; i < m_changes.size(); ++i) kept.push_back(m_changes[i]);
    undo(height);
}

/// For marks that were not taken in the order in which they came.
void qxMarkQueue::settleSlowly(std::size_t height)
{
    const std::size_t count = m_changes.size() - height;
    if (!isEmpty() || count > FEW) return;
    std::size_t added = 0;
    for (std::size_t i = height; i < m_changes.size(); ++i)
        added += m_changes[i].kind == Change::ADDED ? 1 : 0;
    if (2 * added == count) undo(height); // it was empty there, too
}
