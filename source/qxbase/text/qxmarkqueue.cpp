// SPDX-License-Identifier: see LICENSE

#include "text/qxmarkqueue.h"

void qxMarkQueue::clear()
{
    m_marks.clear();
    m_first = 0;
    m_changes.clear();
}

void qxMarkQueue::undoSlowly(std::size_t height)
{
    for (; m_changes.size() > height; m_changes.pop_back()) {
        const Change& change = m_changes.back();
        if (change.kind == Change::ADDED)
            m_marks.pop_back();
        else if (change.kind == Change::TOOK_NEWEST)
            m_marks.push_back(change.mark);
        else
            --m_first;
    }
}

void qxMarkQueue::undo(std::size_t height, std::vector<Change>& kept)
{
    kept.insert(kept.end(), m_changes.begin() + static_cast<std::ptrdiff_t>(height), m_changes.end());
    undo(height);
}

void qxMarkQueue::settleSlowly(std::size_t height)
{
    const std::size_t count = m_changes.size() - height;
    std::size_t added = 0;
    for (std::size_t i = height; i < m_changes.size() && count <= FEW; ++i)
        added += m_changes[i].kind == Change::ADDED ? 1 : 0;
    if (isEmpty() && 2 * added == count) { // it was empty there, too
        undo(height);
        return;
    }
    while (m_changes.size() >= height + 2 && m_changes.back().kind == Change::TOOK_NEWEST &&
           m_changes[m_changes.size() - 2].kind == Change::ADDED)
        m_changes.resize(m_changes.size() - 2);
}
