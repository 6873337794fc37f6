// Hash dictionaries from keys to item pointers: the plain one and the one that keeps its items alive.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemory.h"
#include "qxreference.h"

#include <atomic>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

/// A dictionary from copies of keys to pointers to items, which stay their owner's. One key may have several
/// entries; they stand in the order in which they were entered.
///
/// A key class has `unsigned int hash() const` and `operator==`; qxkeys.h has keys made of plain values,
/// qxString and qxType are keys as they are. The hash is taken once, when an entry is made.
///
/// What else happens to items that come and go is up to three hooks, which derived classes override. A
/// constructor or destructor runs the hooks of its own class only: a class with hooks calls clear in its
/// destructor, and its copy constructor starts with an empty dictionary and calls copyItems.
///
/// Iterating gives `key` and `data` of every entry, bucket by bucket. The entry just given may be removed
/// meanwhile, no other one, and nothing may be entered.
///
/// Lifetime: a value; it owns its entries. The memory of removed entries is kept for new ones while recycling
///           is on, as it is at first.
/// Threads:  one dictionary is used by one thread at a time; with keys that comparing does not change (not
///           strings) many may find in it at once.
/// Errors:   out of memory throws std::bad_alloc, and what a hook raises is passed on; the dictionary is whole
///           then and without the entry. A hook must not raise while another exception is under way.
template <class Key, class Data>
class qxDict
{
    static_assert(alignof(Key) <= alignof(std::max_align_t), "the library heap does not align further");

    struct Entry {
        Entry* next;
        Data* data;
        unsigned int hash;
        Key key;
    };

    struct Bucket {
        Entry* head;
        Entry* tail;

        void append(Entry* entry)
        {
            entry->next = nullptr;
            (tail ? tail->next : head) = entry;
            tail = entry;
        }

        void unlink(Entry* before, Entry* entry)
        {
            (before ? before->next : head) = entry->next;
            if (tail == entry) tail = before;
        }
    };

public:
    static constexpr unsigned int DEFAULT_BUCKETS = 11;

    struct Item {
        const Key& key;
        Data* data;
    };

    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Item;

        Iterator() = default;
        Iterator(const Bucket* begin, const Bucket* end) : m_bucket(begin), m_end(end)
        {
            advance(); // to before the first entry
            advance();
        }

        Item operator*() const { return Item{m_entry->key, m_entry->data}; }
        Iterator& operator++()
        {
            advance();
            return *this;
        }
        bool operator==(const Iterator& other) const { return m_entry == other.m_entry; }

    private:
        void advance()
        {
            m_entry = m_next;
            if (m_next) m_next = m_next->next;
            while (!m_next && m_bucket != m_end) m_next = (m_bucket++)->head;
        }

        const Entry* m_entry = nullptr;
        const Entry* m_next = nullptr; // read in advance: the entry just given may be removed
        const Bucket* m_bucket = nullptr;
        const Bucket* m_end = nullptr;
    };

    /// No `buckets` count as 1. With `autoGrow`, entering into a dictionary of n buckets and 2n entries or
    /// more first makes 4n + 3 buckets of them.
    explicit qxDict(unsigned int buckets = DEFAULT_BUCKETS, bool autoGrow = true) noexcept
        : m_bucketCount(buckets == 0 ? 1 : buckets), m_isAutoGrow(autoGrow)
    {}

    qxDict(const qxDict& other) : qxDict() { copyItems(other); }
    qxDict(qxDict&& other) noexcept : qxDict() { take(other); }

    virtual ~qxDict() noexcept(false)
    {
        dropItems();
        qx_delete(m_buckets);
        freeRecycled();
    }

    /// Replaces the entries by those of `other`, each with what onCopy gives for its item, and takes its
    /// bucket count and switches over.
    qxDict& operator=(const qxDict& other)
    {
        if (this != &other) copyItems(other);
        return *this;
    }

    /// Replaces the entries by those of `other`, which is left empty.
    qxDict& operator=(qxDict&& other)
    {
        if (this == &other) return *this;
        Table old(*this);
        old.swap();
        take(other);
        old.drop();
        return *this;
    }

    /// Removes all entries and keeps the buckets.
    virtual void clear()
    {
        for (unsigned int index = 0; m_entries > 0;) {
            if (index >= m_bucketCount) index = 0; // a hook has entered something or changed the buckets
            Bucket& bucket = m_buckets[index];
            if (bucket.head)
                removeEntry(bucket, nullptr, bucket.head);
            else
                ++index;
        }
    }

    /// Hands the copy mode to the items, where they have one.
    virtual void setCopyMode(const qxCopyMode&) {}

protected:
    /// Called with each item as it enters.
    virtual void onInsert(Data*) {}

    /// Called with each item after it has left; the item may go, and may use the dictionary.
    virtual void onRemove(Data*) {}

    /// What a copy of the dictionary takes for `data`. It enters through onInsert.
    virtual Data* onCopy(Data* data) { return data; }

public:
    /// Enters `data` under a copy of `key`, behind the entries that the key has already.
    void enter(const Key& key, Data* data)
    {
        SpareEntry entry(*this, key, key.hash(), data);
        if (!m_buckets)
            m_buckets = newBuckets(m_bucketCount);
        else if (m_isAutoGrow && m_entries / 2 >= m_bucketCount && m_bucketCount <= (0xFFFFFFFF - 3) / 4)
            setBuckets(4 * m_bucketCount + 3);
        onInsert(data);
        Entry* const entered = entry.take();
        bucketOf(entered->hash).append(entered);
        ++m_entries;
    }

    /// The item that was entered first under `key`, or null. With `previous`, the item of the next entry of
    /// the key behind the first one that has that item: null when there is none, and the same item again and
    /// again when it was entered twice.
    Data* find(const Key& key, const Data* previous = nullptr) const
    {
        if (m_entries == 0) return nullptr;
        const unsigned int hash = key.hash();
        if (previous) return findBehind(key, hash, previous);
        const Entry* entry = m_lastFound.load(std::memory_order_relaxed);
        if (entry && entry->hash == hash && entry->key == key) return entry->data;
        entry = nextMatch(bucketOf(hash).head, key, hash);
        if (!entry) return nullptr;
        if (m_isCaching) m_lastFound.store(entry, std::memory_order_relaxed);
        return entry->data;
    }

    /// Removes the first entry of `key`. Returns false when there is none.
    bool remove(const Key& key)
    {
        return removeFirst(key, [](const Entry*) { return true; });
    }

    /// Removes the first entry of `key` that has the item `data`. Returns false when there is none.
    bool remove(const Key& key, const Data* data)
    {
        return removeFirst(key, [data](const Entry* entry) { return entry->data == data; });
    }

    unsigned int entries() const { return m_entries; }
    bool isEmpty() const { return m_entries == 0; }

    Iterator begin() const { return m_entries ? Iterator(m_buckets, m_buckets + m_bucketCount) : Iterator(); }
    Iterator end() const { return Iterator(); }

    unsigned int getBuckets() const { return m_bucketCount; }

    /// Spreads the entries over another number of buckets; 0 counts as 1.
    void setBuckets(unsigned int buckets)
    {
        if (buckets == 0) buckets = 1;
        if (m_buckets) {
            Bucket* const old = std::exchange(m_buckets, newBuckets(buckets));
            const unsigned int oldCount = std::exchange(m_bucketCount, buckets);
            for (const Bucket* bucket = old; bucket != old + oldCount; ++bucket) spread(bucket->head);
            qx_delete(old);
        }
        m_bucketCount = buckets;
        forgetLastFound();
    }

    void setAutoGrow(bool on) { m_isAutoGrow = on; }
    bool isAutoGrow() const { return m_isAutoGrow; }

    /// Whether find remembers the entry that it found last, as it does at first.
    void setCaching(bool on)
    {
        m_isCaching = on;
        forgetLastFound();
    }
    bool isCaching() const { return m_isCaching; }

    /// Off gives the kept memory back.
    void setRecycling(bool on)
    {
        m_isRecycling = on;
        if (!on) freeRecycled();
    }
    bool isRecycling() const { return m_isRecycling; }

protected:
    /// What assignment does: takes copies of all that `other` has or, when that fails, changes nothing.
    void copyItems(const qxDict& other)
    {
        Table table(*this);
        table.copy(other);
        table.swap();
        setRecycling(other.m_isRecycling);
        m_isAutoGrow = other.m_isAutoGrow;
        m_isCaching = other.m_isCaching;
        table.drop(); // what was in the dictionary
    }

    /// For destructors of classes with hooks: removes all entries. After an exception of a hook the others
    /// are removed as well before it is passed on.
    void dropItems()
    {
        Table table(*this);
        table.swap();
        table.drop();
    }

private:
    /// An entry that is given back unless it is taken.
    class SpareEntry
    {
    public:
        SpareEntry(qxDict& dict, const Key& key, unsigned int hash, Data* data)
            : m_dict(dict), m_entry(dict.newEntry(key, hash, data))
        {}
        ~SpareEntry()
        {
            if (m_entry) m_dict.giveBack(m_entry);
        }
        SpareEntry(const SpareEntry&) = delete;
        SpareEntry& operator=(const SpareEntry&) = delete;

        Entry* operator->() const { return m_entry; }
        Entry* take() { return std::exchange(m_entry, nullptr); }

    private:
        qxDict& m_dict;
        Entry* m_entry;
    };

    /// Buckets of entered items outside the dictionary. Items that are still there at its end are removed.
    class Table
    {
    public:
        explicit Table(qxDict& dict) : m_dict(dict), m_bucketCount(dict.m_bucketCount) {}
        ~Table() noexcept(false)
        {
            const BucketGuard guard{m_buckets};
            drop();
        }
        Table(const Table&) = delete;
        Table& operator=(const Table&) = delete;

        void copy(const qxDict& other)
        {
            m_bucketCount = other.m_bucketCount;
            if (other.m_entries == 0) return;
            m_buckets = newBuckets(m_bucketCount);
            for (unsigned int index = 0; index < m_bucketCount; ++index) {
                for (const Entry* source = other.m_buckets[index].head; source; source = source->next) {
                    SpareEntry entry(m_dict, source->key, source->hash, nullptr);
                    entry->data = m_dict.onCopy(source->data);
                    m_dict.onInsert(entry->data);
                    m_buckets[index].append(entry.take());
                    ++m_entries;
                }
            }
        }

        void swap()
        {
            std::swap(m_buckets, m_dict.m_buckets);
            std::swap(m_bucketCount, m_dict.m_bucketCount);
            std::swap(m_entries, m_dict.m_entries);
            m_dict.forgetLastFound();
        }

        void drop()
        {
            for (; m_entries > 0; ++m_dropped) {
                Bucket& bucket = m_buckets[m_dropped];
                while (Entry* const entry = bucket.head) {
                    bucket.unlink(nullptr, entry);
                    --m_entries;
                    Data* const data = entry->data;
                    m_dict.giveBack(entry);
                    m_dict.onRemove(data);
                }
            }
        }

    private:
        struct BucketGuard {
            Bucket* buckets;
            ~BucketGuard() { qx_delete(buckets); }
        };

        qxDict& m_dict;
        Bucket* m_buckets = nullptr;
        unsigned int m_bucketCount;
        unsigned int m_entries = 0;
        unsigned int m_dropped = 0; // buckets that drop has emptied
    };

    static Bucket* newBuckets(unsigned int count)
    {
        Bucket* const buckets = static_cast<Bucket*>(qx_new(count * sizeof(Bucket)));
        std::uninitialized_value_construct_n(buckets, count);
        return buckets;
    }

    Bucket& bucketOf(unsigned int hash) const { return m_buckets[hash % m_bucketCount]; }

    /// Appends the entries from `entry` on, each to its bucket.
    void spread(Entry* entry)
    {
        while (entry) {
            Entry* const next = entry->next;
            bucketOf(entry->hash).append(entry);
            entry = next;
        }
    }

    static Entry* nextMatch(Entry* entry, const Key& key, unsigned int hash)
    {
        while (entry && !(entry->hash == hash && entry->key == key)) entry = entry->next;
        return entry;
    }

    Data* findBehind(const Key& key, unsigned int hash, const Data* previous) const
    {
        const Entry* entry = nextMatch(bucketOf(hash).head, key, hash);
        while (entry && entry->data != previous) entry = nextMatch(entry->next, key, hash);
        if (entry) entry = nextMatch(entry->next, key, hash);
        return entry ? entry->data : nullptr;
    }

    template <class Choice>
    bool removeFirst(const Key& key, Choice isChosen)
    {
        if (m_entries == 0) return false;
        const unsigned int hash = key.hash();
        Bucket& bucket = bucketOf(hash);
        Entry* before = nullptr;
        for (Entry* entry = bucket.head; entry; before = entry, entry = entry->next) {
            if (entry->hash != hash || !isChosen(entry) || !(entry->key == key)) continue;
            removeEntry(bucket, before, entry); // `key` may be the entry's own and is gone now
            return true;
        }
        return false;
    }

    void removeEntry(Bucket& bucket, Entry* before, Entry* entry)
    {
        bucket.unlink(before, entry);
        --m_entries;
        forgetLastFound();
        Data* const data = entry->data;
        giveBack(entry);
        onRemove(data);
    }

    void take(qxDict& other)
    {
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_bucketCount, other.m_bucketCount);
        std::swap(m_entries, other.m_entries);
        forgetLastFound();
        other.forgetLastFound();
    }

    void forgetLastFound() { m_lastFound.store(nullptr, std::memory_order_relaxed); }

    struct Recycled {
        Recycled* next;
    };

    Entry* newEntry(const Key& key, unsigned int hash, Data* data)
    {
        void* memory = m_free;
        if (m_free)
            m_free = m_free->next;
        else
            memory = qx_new(sizeof(Entry));
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

    void giveMemoryBack(void* memory)
    {
        if (m_isRecycling)
            m_free = new (memory) Recycled{m_free};
        else
            qx_delete(memory);
    }

    void freeRecycled()
    {
        while (m_free) qx_delete(std::exchange(m_free, m_free->next));
    }

    unsigned int m_bucketCount;
    unsigned int m_entries = 0;
    mutable std::atomic<const Entry*> m_lastFound{nullptr}; // the first entry of its key, or null
    Bucket* m_buckets = nullptr;                            // null before the first entry
    Recycled* m_free = nullptr;
    bool m_isRecycling = true;
    bool m_isAutoGrow;
    bool m_isCaching = true;
};

/// A dictionary that counts as a holder of each of its items, which derive from qxReference.
///
/// A copy of the dictionary clones an item or shares it as the item's useDeepCopy says, like a copied
/// qxRefPointer.
///
/// Lifetime: removing an item may delete it; the destructor removes all.
/// Errors:   as qxDict, and those of counts that go wrong, also out of the destructor.
template <class Key, class Data>
class qxRefDict : public qxDict<Key, Data>
{
public:
    using qxDict<Key, Data>::qxDict;
    qxRefDict() = default;
    qxRefDict(const qxRefDict& other) : qxDict<Key, Data>() { this->copyItems(other); }
    qxRefDict(qxRefDict&& other) noexcept = default;
    ~qxRefDict() noexcept(false) override { this->dropItems(); }
    qxRefDict& operator=(const qxRefDict& other) = default;
    qxRefDict& operator=(qxRefDict&& other) = default;

    /// Hands the mode to every item.
    void setCopyMode(const qxCopyMode& mode) override
    {
        for (const auto& item : *this) {
            if (item.data) item.data->setCopyMode(mode);
        }
    }

protected:
    void onInsert(Data* data) override
    {
        if (data) data->ref();
    }

    void onRemove(Data* data) override
    {
        if (data) data->unref();
    }

    Data* onCopy(Data* data) override
    {
        return data && data->useDeepCopy() ? static_cast<Data*>(data->clone()) : data;
    }
};
