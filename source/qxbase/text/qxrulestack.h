// A stack of plain structures that may grow large.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

/// What is pushed is not set to anything: whoever pushes sets what he uses.
template <class T>
class qxRuleStack
{
public:
    std::size_t size() const { return m_size; }
    T& back() { return m_items[m_size - 1]; }
    const T& back() const { return m_items[m_size - 1]; }
    T& operator[](std::size_t index) { return m_items[index]; }
    const T& operator[](std::size_t index) const { return m_items[index]; }
    void pop_back() { --m_size; }

    /// Drops what lies above the lowest `size`.
    void cut(std::size_t size) { m_size = size; }

    T& push()
    {
        if (m_size == m_capacity) grow();
        return m_items[m_size++];
    }

    /// Gives the memory of an empty stack back when it is for more than `count`.
    void shrink(std::size_t count)
    {
        if (m_capacity <= count) return;
        m_items.reset();
        m_capacity = 0;
    }

private:
    void grow()
    {
        const std::size_t capacity = std::max<std::size_t>(64, 2 * m_capacity);
        auto items = std::make_unique_for_overwrite<T[]>(capacity);
        std::copy_n(m_items.get(), m_size, items.get());
        m_items = std::move(items);
        m_capacity = capacity;
    }

    std::unique_ptr<T[]> m_items;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};
