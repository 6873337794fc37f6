// Hash dictionaries from keys to item pointers: the plain one and the one that keeps its items alive.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdicttable.h"
#include "qxforward.h"
#include "qxreference.h"

#include <atomic>
#include <cstddef>
#include <iterator>
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
    using Entry = qxDictEntry<Key, Data>;
    using Table = qxDictTable<Entry>;

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
        explicit Iterator(const Table& table) : m_walk(table) {}

        Item operator*() const { return Item{m_walk.entry()->key, m_walk.entry()->data}; }
        Iterator& operator++()
        {
            m_walk.advance();
            return *this;
        }
        bool operator==(const Iterator& other) const { return m_walk.entry() == other.m_walk.entry(); }

    private:
        typename Table::Walk m_walk;
    };

    /// No `buckets` count as 1. With `autoGrow`, entering into a dictionary of n buckets and 2n entries or
    /// more first makes 4n + 3 buckets of them.
    explicit qxDict(unsigned int buckets = DEFAULT_BUCKETS, bool autoGrow = true) noexcept
        : m_table(buckets), m_isAutoGrow(autoGrow)
    {}

    qxDict(const qxDict& other) : qxDict() { copyItems(other); }
    qxDict(qxDict&& other) noexcept : qxDict() { swapTables(other); }
    virtual ~qxDict() noexcept(false) { dropItems(); }

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
        Detached old(*this, other.getBuckets());
        m_table.swap(old.table);
        swapTables(other);
        removeAll(old.table);
        return *this;
    }

    /// Removes all entries and keeps the buckets.
    virtual void clear() { removeAll(m_table); }

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
        const unsigned int buckets = m_table.buckets();
        if (m_isAutoGrow && m_table.entries() / 2 >= buckets && buckets <= MAX_BUCKETS) {
            m_table.setBuckets(4 * buckets + 3);
            forgetLastFound();
        }
        m_table.makeRoom();
        onInsert(data);
        m_table.append(entry.take());
    }

    /// The item that was entered first under `key`, or null. With `previous`, the item of the next entry of
    /// the key behind the first one that has that item: null when there is none, and the same item again and
    /// again when it was entered twice.
    Data* find(const Key& key, const Data* previous = nullptr) const
    {
        if (m_table.entries() == 0) return nullptr;
        const unsigned int hash = key.hash();
        if (previous) return findBehind(key, hash, previous);
        const Entry* entry = m_lastFound.load(std::memory_order_relaxed);
        if (entry && entry->hash == hash && entry->key == key) return entry->data;
        entry = nextMatch(m_table.find(hash), key, hash);
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

    unsigned int entries() const { return m_table.entries(); }
    bool isEmpty() const { return m_table.entries() == 0; }

    Iterator begin() const { return Iterator(m_table); }
    Iterator end() const { return Iterator(); }

    unsigned int getBuckets() const { return m_table.buckets(); }

    /// Spreads the entries over another number of buckets; 0 counts as 1.
    void setBuckets(unsigned int buckets)
    {
        m_table.setBuckets(buckets);
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
    void setRecycling(bool on) { m_store.setRecycling(on); }
    bool isRecycling() const { return m_store.isRecycling(); }

protected:
    /// What assignment does: takes copies of all that `other` has or, when that fails, changes nothing.
    void copyItems(const qxDict& other)
    {
        Detached copies(*this, other.m_table.buckets());
        if (!other.isEmpty()) copies.table.makeRoom();
        for (typename Table::Walk walk(other.m_table); const Entry* source = walk.entry(); walk.advance()) {
            SpareEntry entry(*this, source->key, source->hash, nullptr);
            entry->data = onCopy(source->data);
            onInsert(entry->data);
            copies.table.append(entry.take());
        }
        m_table.swap(copies.table);
        forgetLastFound();
        m_isAutoGrow = other.m_isAutoGrow;
        m_isCaching = other.m_isCaching;
        setRecycling(other.isRecycling());
        removeAll(copies.table); // what was in the dictionary
    }

    /// For destructors of classes with hooks: removes all entries. After an exception of a hook the others
    /// are removed as well before it is passed on.
    void dropItems()
    {
        setRecycling(false); // nothing comes any more
        Detached items(*this, m_table.buckets());
        m_table.swap(items.table);
        removeAll(items.table);
    }

private:
    static constexpr unsigned int MAX_BUCKETS = (0xFFFFFFFF - 3) / 4; // from which growth still fits

    /// An entry that is given back unless it is taken.
    class SpareEntry
    {
    public:
        SpareEntry(qxDict& dict, const Key& key, unsigned int hash, Data* data)
            : m_store(dict.m_store), m_entry(m_store.make(key, hash, data))
        {}
        ~SpareEntry()
        {
            if (m_entry) m_store.giveBack(m_entry);
        }
        SpareEntry(const SpareEntry&) = delete;
        SpareEntry& operator=(const SpareEntry&) = delete;

        Entry* operator->() const { return m_entry; }
        Entry* take() { return std::exchange(m_entry, nullptr); }

    private:
        qxDictEntryStore<Entry>& m_store;
        Entry* m_entry;
    };

    /// Entered items outside the dictionary. Those that are still there at its end are removed.
    struct Detached {
        Detached(qxDict& owner, unsigned int buckets) : dict(owner), table(buckets) {}
        ~Detached() noexcept(false) { dict.removeAll(table); }

        qxDict& dict;
        Table table;
    };

    static const Entry* nextMatch(const Entry* entry, const Key& key, unsigned int hash)
    {
        while (entry && !(entry->hash == hash && entry->key == key)) entry = entry->next;
        return entry;
    }

    Data* findBehind(const Key& key, unsigned int hash, const Data* previous) const
    {
        const Entry* entry = nextMatch(m_table.find(hash), key, hash);
        while (entry && entry->data != previous) entry = nextMatch(entry->next, key, hash);
        if (entry) entry = nextMatch(entry->next, key, hash);
        return entry ? entry->data : nullptr;
    }

    template <class Choice>
    bool removeFirst(const Key& key, Choice isChosen)
    {
        if (isEmpty()) return false;
        const unsigned int hash = key.hash();
        Entry* before = nullptr;
        for (Entry* entry = m_table.find(hash); entry; before = entry, entry = entry->next) {
            if (entry->hash != hash || !isChosen(entry) || !(entry->key == key)) continue;
            m_table.unlink(before, entry);
            letGo(entry); // `key` may be the entry's own and is gone now
            return true;
        }
        return false;
    }

    /// What remains to be done with an entry that has been taken out.
    void letGo(Entry* entry)
    {
        forgetLastFound();
        Data* const data = entry->data;
        m_store.giveBack(entry);
        onRemove(data);
    }

    /// Removes also what a hook enters meanwhile.
    void removeAll(Table& table)
    {
        unsigned int bucket = 0;
        while (Entry* const entry = table.takeFrom(bucket)) letGo(entry);
    }

    void swapTables(qxDict& other) noexcept
    {
        m_table.swap(other.m_table);
        forgetLastFound();
        other.forgetLastFound();
    }

    void forgetLastFound() { m_lastFound.store(nullptr, std::memory_order_relaxed); }

    Table m_table;
    mutable std::atomic<const Entry*> m_lastFound{nullptr}; // the first entry of its key, or null
    qxDictEntryStore<Entry> m_store;
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
