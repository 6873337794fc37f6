// What dictionaries are made of: entries and the buckets that link them. Applications use qxdict.h.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxmemory.h"

#include <cstddef>
#include <cstring>
#include <utility>

/// One entry of a dictionary.
template <class Key, class Data>
struct qxDictEntry {
    static_assert(alignof(Key) <= alignof(std::max_align_t), "the library heap does not align further");

    qxDictEntry* next;
    Data* data;
    unsigned int hash;
    Key key;
};

/// The memory of entries. While recycling is on, as it is at first, memory that comes back is kept.
template <class Entry>
class qxDictEntryStore
{
public:
    qxDictEntryStore() = default;
    ~qxDictEntryStore() { freeKept(); }
    qxDictEntryStore(const qxDictEntryStore&) = delete;
    qxDictEntryStore& operator=(const qxDictEntryStore&) = delete;

    template <class Key, class Data>
    Entry* make(const Key& key, unsigned int hash, Data* data)
    {
        void* const memory = m_kept ? std::exchange(m_kept, m_kept->next) : qx_new(sizeof(Entry));
        try {
            return new (memory) Entry{nullptr, data, hash, key};
        } catch (...) {
            giveMemoryBack(memory);
            throw;
        }
    }

    void giveBack(Entry* entry)
    {
        entry->~Entry();
        giveMemoryBack(entry);
    }

    void setRecycling(bool on)
    {
        m_isRecycling = on;
        if (!on) freeKept();
    }
    bool isRecycling() const { return m_isRecycling; }

private:
    struct Kept {
        Kept* next;
    };

    void giveMemoryBack(void* memory)
    {
        if (m_isRecycling)
            m_kept = new (memory) Kept{m_kept};
        else
            qx_delete(memory);
    }

    void freeKept()
    {
        while (m_kept) qx_delete(std::exchange(m_kept, m_kept->next));
    }

    Kept* m_kept = nullptr;
    bool m_isRecycling = true;
};

/// Buckets of entries, each a list in the order in which its entries came. It owns the buckets only.
///
/// All heads stand in a row and all tails behind them: finding touches the heads alone, and appending takes
/// the same time however many entries a bucket has.
template <class Entry>
class qxDictTable
{
public:
    explicit qxDictTable(unsigned int buckets) noexcept : m_buckets(buckets == 0 ? 1 : buckets) {}
    ~qxDictTable() { qx_delete(m_heads); }
    qxDictTable(const qxDictTable&) = delete;
    qxDictTable& operator=(const qxDictTable&) = delete;

    void swap(qxDictTable& other) noexcept
    {
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_entries, other.m_entries);
        std::swap(m_heads, other.m_heads);
    }

    unsigned int buckets() const { return m_buckets; }
    unsigned int entries() const { return m_entries; }

    /// Makes the buckets that append needs. Until then there is no memory behind an empty table.
    void makeRoom()
    {
        if (m_heads) return;
        const std::size_t bytes = std::size_t{2} * m_buckets * sizeof(Entry*);
        m_heads = static_cast<Entry**>(qx_new(bytes));
        std::memset(static_cast<void*>(m_heads), 0, bytes);
    }

    /// The first entry of the bucket of `hash`. Call with entries in the table.
    Entry* find(unsigned int hash) const { return m_heads[hash % m_buckets]; }

    void append(Entry* entry)
    {
        const unsigned int bucket = entry->hash % m_buckets;
        Entry*& tail = m_heads[std::size_t{m_buckets} + bucket];
        entry->next = nullptr;
        (tail ? tail->next : m_heads[bucket]) = entry;
        tail = entry;
        ++m_entries;
    }

    /// Takes out `entry`, which stands behind `before` in its bucket.
    void unlink(Entry* before, Entry* entry)
    {
        const unsigned int bucket = entry->hash % m_buckets;
        Entry*& tail = m_heads[std::size_t{m_buckets} + bucket];
        (before ? before->next : m_heads[bucket]) = entry->next;
        if (tail == entry) tail = before;
        --m_entries;
    }

    /// Takes out the first entry of the first bucket that has one, from `bucket` on and then from the start;
    /// `bucket` receives its number. Null when there is none at all.
    Entry* takeFrom(unsigned int& bucket)
    {
        if (m_entries == 0) return nullptr;
        if (bucket >= m_buckets) bucket = 0;
        while (!m_heads[bucket]) bucket = bucket + 1 == m_buckets ? 0 : bucket + 1;
        Entry* const entry = std::exchange(m_heads[bucket], m_heads[bucket]->next);
        if (!entry->next) m_heads[std::size_t{m_buckets} + bucket] = nullptr;
        --m_entries;
        return entry;
    }

    /// Moves the entries into another number of buckets; those of one hash keep their order.
    void setBuckets(unsigned int buckets)
    {
        qxDictTable table(buckets);
        if (m_heads) table.makeRoom();
        for (unsigned int bucket = 0; m_heads && bucket < m_buckets; ++bucket) {
            for (Entry* entry = m_heads[bucket]; entry;) table.append(std::exchange(entry, entry->next));
        }
        swap(table);
    }

    /// Walks over all entries, bucket by bucket. It has read its successor when it stands on an entry, which
    /// may therefore go.
    class Walk
    {
    public:
        Walk() = default;
        explicit Walk(const qxDictTable& table)
        {
            if (table.m_entries == 0) return;
            m_bucket = table.m_heads;
            m_end = table.m_heads + table.m_buckets;
            advance(); // to before the first entry
            advance();
        }

        const Entry* entry() const { return m_entry; }

        void advance()
        {
            m_entry = m_next;
            if (m_next) m_next = m_next->next;
            while (!m_next && m_bucket != m_end) m_next = *m_bucket++;
        }

    private:
        const Entry* m_entry = nullptr; // null at the end
        const Entry* m_next = nullptr;
        Entry* const* m_bucket = nullptr; // where the search for the next entry goes on
        Entry* const* m_end = nullptr;
    };

private:
    unsigned int m_buckets;
    unsigned int m_entries = 0;
    Entry** m_heads = nullptr; // null before the first entry; the tails follow
};
