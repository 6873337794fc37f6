// Results of a parse in a row, with a way back to what they were.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <cstddef>
#include <utility>
#include <vector>

/// Each result knows the one before it, so that several rows can share their beginnings: going back to an earlier row
/// and forward to one that was left is changing which result is the last.
template <class T>
class qxResultChain
{
public:
    static constexpr unsigned int NONE = 0xFFFFFFFF;

    void push(T item)
    {
        m_items.push_back({std::move(item), m_last});
        m_last = static_cast<unsigned int>(m_items.size() - 1);
    }

    /// The index of the last result of the row, NONE without any; and of the one before a result.
    unsigned int getLast() const { return m_last; }
    unsigned int getPrevious(unsigned int index) const { return m_items[index].previous; }
    T& operator[](unsigned int index) { return m_items[index].item; }
    const T& operator[](unsigned int index) const { return m_items[index].item; }

    /// The row ends with the result `index` from now on.
    void cut(unsigned int index) { m_last = index; }

    /// How many there are behind `index`, which is NONE for all.
    std::size_t countBehind(unsigned int index) const
    {
        std::size_t count = 0;
        for (unsigned int i = m_last; i != index; i = m_items[i].previous) ++count;
        return count;
    }

    void clear()
    {
        m_items.clear();
        m_last = NONE;
    }

    /// See qxBasicParser::saveState.
    qxUInt64 save() const { return static_cast<qxUInt64>(m_items.size()) << 32 | m_last; }

    void restore(qxUInt64 state, bool isFinal)
    {
        m_last = static_cast<unsigned int>(state);
        const auto size = static_cast<std::size_t>(state >> 32);
        while (isFinal && m_items.size() > size) m_items.pop_back();
    }

private:
    struct Item {
        T item;
        unsigned int previous;
    };
    std::vector<Item> m_items;
    unsigned int m_last = NONE;
};
