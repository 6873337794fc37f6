// Linked lists of item pointers: the plain one and the one that keeps its items alive.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemory.h"
#include "qxreference.h"

#include <cstddef>
#include <iterator>
#include <utility>

/// A list of pointers to items; null is an item too. The items stay their owner's.
///
/// What else happens to items that come and go is up to three hooks, which derived classes override. A
/// constructor or destructor runs the hooks of its own class only: a class with hooks calls clear in its
/// destructor, and its copy constructor starts with an empty list and calls copyItems.
///
/// Iterating gives the items from the head on. The item just given may be removed from the list, no other
/// one; an item that is inserted behind it while it is the last is not visited.
///
/// Lifetime: a value; it owns its nodes. The nodes of removed items are kept for new ones while recycling is
///           on, as it is at first.
/// Threads:  one list is used by one thread at a time, or read by many.
/// Errors:   out of memory throws std::bad_alloc, and what a hook raises is passed on; the list is whole then
///           and without the item. A hook must not raise while another exception is under way.
template <class T>
class qxList
{
    struct Node {
        T* item;
        Node* next;
        double value; // what the list is sorted by
    };

public:
    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = T*;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = T*;

        Iterator() = default;
        explicit Iterator(const Node* node) : m_node(node), m_next(node ? node->next : nullptr) {}

        T* operator*() const { return m_node->item; }
        double getValue() const { return m_node->value; } ///< 0 when the item was not inserted sorted
        Iterator& operator++() { return *this = Iterator(m_next); }
        Iterator operator++(int) { return std::exchange(*this, Iterator(m_next)); }
        bool operator==(const Iterator& other) const { return m_node == other.m_node; }

    private:
        const Node* m_node = nullptr;
        const Node* m_next = nullptr; // read in advance: the item just given may be removed
    };

    qxList() = default;
    qxList(const qxList& other) : qxList() { copyItems(other); }
    qxList(qxList&& other) noexcept { swapNodes(other); }

    virtual ~qxList() noexcept(false)
    {
        freeNodes(m_head);
        freeNodes(m_free);
    }

    /// Replaces the items by what onCopy gives for those of `other`, and takes its switch over.
    qxList& operator=(const qxList& other)
    {
        if (this != &other) copyItems(other);
        return *this;
    }

    /// Replaces the items by those of `other`, which is left empty.
    qxList& operator=(qxList&& other)
    {
        if (this == &other) return *this;
        Chain old(*this);
        old.swap();
        swapNodes(other);
        old.drop();
        return *this;
    }

    /// Removes all items.
    virtual void clear()
    {
        while (m_head) {
            T* const item = m_head->item;
            unlink(nullptr, m_head);
            onRemove(item);
        }
    }

    /// Hands the copy mode to the items, where they have one.
    virtual void setCopyMode(const qxCopyMode&) {}

protected:
    /// Called with each item as it enters.
    virtual void onInsert(T*) {}

    /// Called with each item after it has left; the item may go, and may use the list.
    virtual void onRemove(T*) {}

    /// What a copy of the list takes for `item`. It enters through onInsert.
    virtual T* onCopy(T* item) { return item; }

public:
    /// Inserts at the tail.
    void insert(T* item)
    {
        SpareNode node(*this, item, 0.0);
        onInsert(item);
        link(m_tail, node.take());
    }

    /// Inserts before the first item whose value is not below `value`, so that equal ones stand with the
    /// newest first. Returns whether there was an equal one. Meant for lists that are only inserted so.
    bool insertSorted(T* item, double value)
    {
        SpareNode node(*this, item, value);
        onInsert(item);
        Node* before = m_tail;
        if (!m_tail || !(value > m_tail->value)) {
            before = nullptr;
            for (Node* walk = m_head; walk && value > walk->value; walk = walk->next) before = walk;
        }
        const Node* const next = before ? before->next : m_head;
        const bool hadEqual = next && next->value == value;
        link(before, node.take());
        return hadEqual;
    }

    /// Removes the first entry of `item`. Returns false when there is none.
    bool remove(T* item)
    {
        Node* before = nullptr;
        Node* node = m_head;
        for (; node && node->item != item; node = node->next) before = node;
        if (!node) return false;
        unlink(before, node);
        onRemove(item);
        return true;
    }

    bool contains(const T* item) const
    {
        for (const Node* node = m_head; node; node = node->next) {
            if (node->item == item) return true;
        }
        return false;
    }

    unsigned int entries() const { return m_entries; }
    bool isEmpty() const { return m_entries == 0; }

    /// The item at the head and at the tail; null when the list is empty.
    T* getFirst() const { return m_head ? m_head->item : nullptr; }
    T* getLast() const { return m_tail ? m_tail->item : nullptr; }

    Iterator begin() const { return Iterator(m_head); }
    Iterator end() const { return Iterator(); }

    /// Off gives the kept nodes back.
    void setRecycling(bool on)
    {
        m_isRecycling = on;
        if (!on) freeNodes(std::exchange(m_free, nullptr));
    }
    bool isRecycling() const { return m_isRecycling; }

protected:
    /// What assignment does: takes copies of all that `other` has or, when that fails, changes nothing.
    void copyItems(const qxList& other)
    {
        Chain chain(*this);
        chain.copy(other.m_head);
        chain.swap();
        setRecycling(other.m_isRecycling);
        chain.drop(); // what was in the list
    }

    /// For destructors of classes with hooks: removes all items. After an exception of a hook the others are
    /// removed as well before it is passed on.
    void dropItems()
    {
        setRecycling(false); // nothing comes any more
        Chain items(*this);
        items.swap();
        items.drop();
    }

private:
    /// A node for one item, given back unless it is taken.
    class SpareNode
    {
    public:
        SpareNode(qxList& list, T* item, double value) : m_list(list), m_node(list.takeNode())
        {
            *m_node = Node{item, nullptr, value};
        }
        ~SpareNode()
        {
            if (m_node) m_list.giveBack(m_node);
        }
        SpareNode(const SpareNode&) = delete;
        SpareNode& operator=(const SpareNode&) = delete;

        Node* operator->() const { return m_node; }
        Node* take() { return std::exchange(m_node, nullptr); }

    private:
        qxList& m_list;
        Node* m_node;
    };

    /// Entered items outside the list. Those that are still there at its end are removed.
    class Chain
    {
    public:
        explicit Chain(qxList& list) : m_list(list) {}
        ~Chain() noexcept(false) { drop(); }
        Chain(const Chain&) = delete;
        Chain& operator=(const Chain&) = delete;

        void copy(const Node* source)
        {
            for (; source; source = source->next) {
                SpareNode node(m_list, nullptr, source->value);
                node->item = m_list.onCopy(source->item);
                m_list.onInsert(node->item);
                (m_tail ? m_tail->next : m_head) = node.take();
                m_tail = m_tail ? m_tail->next : m_head;
                ++m_entries;
            }
        }

        void swap()
        {
            std::swap(m_head, m_list.m_head);
            std::swap(m_tail, m_list.m_tail);
            std::swap(m_entries, m_list.m_entries);
        }

        void drop()
        {
            while (Node* const node = m_head) {
                m_head = node->next;
                T* const item = node->item;
                m_list.giveBack(node);
                m_list.onRemove(item);
            }
        }

    private:
        qxList& m_list;
        Node* m_head = nullptr;
        Node* m_tail = nullptr;
        unsigned int m_entries = 0;
    };

    Node* takeNode()
    {
        if (!m_free) return static_cast<Node*>(qx_new(sizeof(Node)));
        return std::exchange(m_free, m_free->next);
    }

    void giveBack(Node* node)
    {
        if (m_isRecycling)
            node->next = std::exchange(m_free, node);
        else
            qx_delete(node);
    }

    static void freeNodes(Node* node)
    {
        while (node) qx_delete(std::exchange(node, node->next));
    }

    /// Puts `node` behind `before`, at the head when that is null.
    void link(Node* before, Node* node)
    {
        Node*& place = before ? before->next : m_head;
        node->next = place;
        place = node;
        if (!node->next) m_tail = node;
        ++m_entries;
    }

    /// Takes out `node`, which stands behind `before`, and gives it back.
    void unlink(Node* before, Node* node)
    {
        (before ? before->next : m_head) = node->next;
        if (m_tail == node) m_tail = before;
        --m_entries;
        giveBack(node);
    }

    void swapNodes(qxList& other) noexcept
    {
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_entries, other.m_entries);
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    Node* m_free = nullptr; // recycled nodes
    unsigned int m_entries = 0;
    bool m_isRecycling = true;
};

/// A list that counts as a holder of each of its items, which derive from qxReference.
///
/// A copy of the list clones an item or shares it as the item's useDeepCopy says, like a copied qxRefPointer.
///
/// Lifetime: removing an item may delete it; the destructor removes all.
/// Errors:   as qxList, and those of counts that go wrong, also out of the destructor.
template <class T>
class qxRefList : public qxList<T>
{
public:
    qxRefList() = default;
    qxRefList(const qxRefList& other) : qxList<T>() { this->copyItems(other); }
    qxRefList(qxRefList&& other) noexcept = default;
    ~qxRefList() noexcept(false) override { this->dropItems(); }
    qxRefList& operator=(const qxRefList& other) = default;
    qxRefList& operator=(qxRefList&& other) = default;

    /// Hands the mode to every item in the order of the list.
    void setCopyMode(const qxCopyMode& mode) override
    {
        for (T* item : *this) {
            if (item) item->setCopyMode(mode);
        }
    }

protected:
    void onInsert(T* item) override
    {
        if (item) item->ref();
    }

    void onRemove(T* item) override
    {
        if (item) item->unref();
    }

    T* onCopy(T* item) override
    {
        return item && item->useDeepCopy() ? static_cast<T*>(item->clone()) : item;
    }
};
