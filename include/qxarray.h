// Arrays: one of a given size and one that grows.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemory.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

/// A growing sequence of values in one piece of memory.
///
/// The capacity is always a multiple of the granularity: when more room is needed it becomes the needed
/// size rounded up. Growth moves the items, so pointers to them and iterators hold until the next growth.
///
/// Lifetime: a value; it owns its items. Copies copy the items and the granularity.
/// Threads:  one array is used by one thread at a time, or read by many.
/// Errors:   an index beyond the end raises qxFatalError; more than 4,294,967,295 items and out of memory throw
///           std::bad_alloc and leave the array as it was. What a copy of an item throws leaves the items that
///           were complete before.
template <class T>
class qxDynamicArray
{
    static_assert(alignof(T) <= alignof(std::max_align_t), "the library heap does not align further");
    static constexpr bool HAS_QUIET_ITEMS = std::is_nothrow_destructible_v<T>;

    /// Takes away what an error in an item's destructor has left.
    struct Rest {
        qxDynamicArray& array;
        ~Rest() noexcept(HAS_QUIET_ITEMS)
        {
            array.clear();
            qx_free(array.m_items);
        }
    };

public:
    static constexpr unsigned int DEFAULT_GRANULARITY = 16;

    /// A `granularity` of 0 counts as 1.
    explicit qxDynamicArray(unsigned int granularity = DEFAULT_GRANULARITY) noexcept
        : m_granularity(granularity == 0 ? 1 : granularity)
    {}

    qxDynamicArray(const qxDynamicArray& other) : qxDynamicArray(other.m_granularity)
    {
        append(other.m_items, other.m_entries);
    }

    qxDynamicArray(qxDynamicArray&& other) noexcept : qxDynamicArray(other.m_granularity) { swap(other); }

    /// May raise what an item's destructor raises; the others go all the same.
    ~qxDynamicArray() noexcept(HAS_QUIET_ITEMS)
    {
        const Rest rest{*this};
        clear();
    }

    qxDynamicArray& operator=(const qxDynamicArray& other)
    {
        if (this != &other) qxDynamicArray(other).swap(*this);
        return *this;
    }

    qxDynamicArray& operator=(qxDynamicArray&& other) noexcept(HAS_QUIET_ITEMS)
    {
        qxDynamicArray(std::move(other)).swap(*this);
        return *this;
    }

    T& operator[](std::size_t index)
    {
        checkIndex(index);
        return m_items[index];
    }

    const T& operator[](std::size_t index) const
    {
        checkIndex(index);
        return m_items[index];
    }

    unsigned int entries() const { return m_entries; }
    unsigned int getCapacity() const { return m_capacity; }
    unsigned int getGranularity() const { return m_granularity; }

    /// The items in a row; null when there was never one.
    T* getData() { return m_items; }
    const T* getData() const { return m_items; }

    T* begin() { return m_items; }
    T* end() { return m_items + m_entries; }
    const T* begin() const { return m_items; }
    const T* end() const { return m_items + m_entries; }

    /// Appends one item, which may be one of this array, and returns it.
    T& append(const T& item)
    {
        if (m_entries == m_capacity) return append(T(item)); // growing moves what `item` may refer to
        return *new (static_cast<void*>(m_items + m_entries++)) T(item);
    }

    T& append(T&& item)
    {
        if (m_entries == m_capacity) {
            T held(std::move(item));
            reserve(m_entries + std::size_t{1});
            return *new (static_cast<void*>(m_items + m_entries++)) T(std::move(held));
        }
        return *new (static_cast<void*>(m_items + m_entries++)) T(std::move(item));
    }

    /// Appends copies of `count` items, which must not be this array's own.
    void append(const T* items, std::size_t count)
    {
        reserve(count > MAX_ENTRIES ? count : m_entries + count); // the sum must not overflow
        for (const T* item = items; item != items + count; ++item, ++m_entries)
            new (static_cast<void*>(m_items + m_entries)) T(*item);
    }

    /// Removes items at the end, or appends new ones that are value-initialised (zero for plain types).
    void resize(std::size_t entries)
    {
        reserve(entries);
        while (m_entries > entries) destroy(m_items[--m_entries]);
        for (; m_entries < entries; ++m_entries) new (static_cast<void*>(m_items + m_entries)) T();
    }

    /// Makes room for `entries` items; the capacity never shrinks.
    void reserve(std::size_t entries)
    {
        if (entries > m_capacity) grow(entries);
    }

    /// Removes all items and keeps the room.
    void clear() noexcept(HAS_QUIET_ITEMS)
    {
        while (m_entries > 0) destroy(m_items[--m_entries]);
    }

    void swap(qxDynamicArray& other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_entries, other.m_entries);
        std::swap(m_granularity, other.m_granularity);
    }

private:
    static constexpr std::size_t MAX_ENTRIES = std::numeric_limits<unsigned int>::max();

    /// An item's class is exactly `T`: a virtual destructor need not be looked up.
    static void destroy(T& item) noexcept(HAS_QUIET_ITEMS) { item.T::~T(); }

    void checkIndex(std::size_t index) const
    {
        if (index >= m_entries) throwFatalTemplateError("Index out of bounds in array");
    }

    void grow(std::size_t entries)
    {
        if (entries > MAX_ENTRIES) qxThrowBadAlloc(__FILE__, __LINE__);
        const std::size_t capacity = (entries + m_granularity - 1) / m_granularity * m_granularity;
        if (capacity > MAX_ENTRIES) qxThrowBadAlloc(__FILE__, __LINE__);
        if constexpr (std::is_trivially_copyable_v<T>) {
            void* const room = qx_realloc(m_items, capacity * sizeof(T));
            if (!room) qxThrowBadAlloc(__FILE__, __LINE__);
            m_items = static_cast<T*>(room);
        } else {
            moveTo(static_cast<T*>(qx_new(capacity * sizeof(T))));
        }
        m_capacity = static_cast<unsigned int>(capacity);
    }

    void moveTo(T* room)
    {
        std::unique_ptr<void, void (*)(void*)> unused(room, &qx_free); // given back when a copy throws
        // The standard's trait would also ask for a destructor that raises nothing.
        constexpr bool isMovedQuietly = noexcept(new (std::declval<void*>()) T(std::declval<T>()));
        static_assert(isMovedQuietly || std::is_copy_constructible_v<T>);
        if constexpr (isMovedQuietly) {
            T* place = room;
            for (T& item : *this) new (static_cast<void*>(place++)) T(std::move(item));
        } else {
            std::uninitialized_copy(begin(), end(), room);
        }
        for (T& item : *this) destroy(item);
        unused.release();
        qx_free(m_items);
        m_items = room;
    }

    T* m_items = nullptr;
    unsigned int m_capacity = 0;
    unsigned int m_entries = 0;
    unsigned int m_granularity;
};

/// A number of values in one piece of memory that is exactly as large as they need.
///
/// Lifetime: a value; it owns its items.
/// Threads and Errors: as qxDynamicArray.
template <class T>
class qxArray : private qxDynamicArray<T>
{
    using Base = qxDynamicArray<T>;

public:
    qxArray() noexcept : Base(1) {}

    /// `count` items that are value-initialised (zero for plain types).
    explicit qxArray(std::size_t count) : Base(1) { Base::resize(count); }

    /// Copies `count` items.
    qxArray(const T* items, std::size_t count) : Base(1) { Base::append(items, count); }

    using Base::append;
    using Base::begin;
    using Base::clear;
    using Base::end;
    using Base::entries;
    using Base::getData;
    using Base::resize;
    using Base::operator[];
};
