// The small blocks of the library heap, from pages of equal blocks.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "core/qxstaticlock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

/// Bytes of the largest block that comes from pages, and of a page. Blocks are multiples of a grain, in size and place.
constexpr std::size_t QX_HEAP_LARGEST = 256;
constexpr std::size_t QX_HEAP_PAGE = 65536;
constexpr std::size_t QX_HEAP_GRAIN = 16;

class qxHeapThread;

/// A block that is not in use.
struct qxHeapBlock {
    qxHeapBlock* next;
};

/// What threads that do not own a page say about it, changed as one word; aligned as one, or some compilers change it by
/// a call.
struct alignas(8) qxHeapForeign {
    std::uint16_t first; // of `count` blocks that have come back, in grains from the page's start
    std::uint16_t count;
    std::uint16_t noticeAt; // the count from which on the page is to be noticed
    std::uint16_t isNoticed;
};

/// The record of a page; qxheap.cpp explains its life. All but `owner` and `foreign` is the owner's or, while that is
/// idle, guarded by the heap's lock.
struct alignas(64) qxHeapPage {
    enum Place : std::uint8_t { CURRENT, ROOMY, FULL };

    qxHeapBlock* free;    // those given back by the owner, and those collected
    char* fresh;          // the first of `freshCount` blocks that have not been taken yet
    qxHeapPage* next;     // in the list of roomy or of free pages
    qxHeapPage* previous; // in the list of roomy pages
    qxHeapPage* nextNotice;
    std::atomic<qxHeapThread*> owner;
    std::atomic<qxHeapForeign> foreign;
    std::uint16_t freshCount;
    std::uint8_t kind; // size of the blocks in grains, less one
    Place place;
    std::uint16_t used; // blocks taken and neither given back by the owner nor collected
    std::uint16_t mark; // the number of used ones at which the owner has to look where the page belongs
};

/// Pages in one range of addresses, so that a look at a pointer tells whether it is a block of theirs. Threads take
/// blocks through a qxHeapThread each.
///
/// Nothing is reserved before the first thread enters. Free pages beyond a number give their memory back to the system.
///
/// Lifetime: made by the compiler, before anything runs, and never destroyed: the addresses stay reserved.
/// Threads:  any. Errors: null when the range is full, or the system has no addresses or no memory left.
class qxHeap
{
public:
    /// A heap of at most `pages` pages, a multiple of 16, of which up to `kept` free ones keep their memory.
    constexpr qxHeap(std::size_t pages, std::size_t kept) : m_pageLimit(pages), m_keptLimit(kept) {}

    /// Whether `memory`, which may be any pointer, is a block from these pages.
    bool contains(const void* memory) const { return offsetOf(memory) < m_pageLimit * QX_HEAP_PAGE; }

    /// Bytes that a block from these pages may hold.
    std::size_t getBlockSize(const void* block) const { return (pageOf(block).kind + 1U) * QX_HEAP_GRAIN; }

    /// Pages that are not free; each qxHeapThread lives in one of its own.
    std::size_t countUsedPages() const;

    /// Called before a fork, and after it in both processes: the child then finds the heap in order. The pages of
    /// threads that it does not have are lost to it.
    void lockForFork() { m_lock.lock(); }
    void unlockAfterFork() { m_lock.unlock(); }

private:
    friend qxHeapThread;

    static constexpr std::uintptr_t NO_ADDRESS = UINTPTR_MAX / 2; // far from all that a process can have

    std::uintptr_t offsetOf(const void* memory) const
    {
        return reinterpret_cast<std::uintptr_t>(memory) - m_first.load(std::memory_order_relaxed);
    }
    qxHeapPage& pageOf(const void* block) const { return m_pages[offsetOf(block) / QX_HEAP_PAGE]; }
    char* memoryOf(const qxHeapPage& page) const;
    qxHeapBlock* blockAt(const qxHeapPage& page, std::size_t grains) const;

    qxHeapPage* takePage();
    void givePage(qxHeapPage& page);
    qxHeapPage* startPage(); // call with m_lock held
    bool reserve();          // call with m_lock held

    const std::size_t m_pageLimit;
    const std::size_t m_keptLimit;
    std::atomic<std::uintptr_t> m_first{NO_ADDRESS}; // address of the first page
    qxHeapPage* m_pages = nullptr;                   // the pages' records, in the order of the pages

    mutable qxStaticLock m_lock;        // guards the fields below, and those of qxHeapThread that say so
    std::size_t m_committedRecords = 0; // these have memory, from the first
    std::size_t m_committedPages = 0;   // these had it once, from the first
    std::size_t m_startedPages = 0;     // these were taken once, from the first
    std::size_t m_keptPages = 0;
    std::size_t m_barePages = 0;
    qxHeapPage* m_kept = nullptr; // free pages with memory
    qxHeapPage* m_bare = nullptr; // free pages without
    qxHeapThread* m_idle = nullptr;
};

/// Pages from which one thread at a time takes blocks.
///
/// Lifetime: from `enter` to `leave`. Its blocks outlive it: it then waits, with its pages, for the next thread.
/// Threads:  only the thread that entered, but for giveBack.
/// Errors:   null without memory.
class qxHeapThread
{
public:
    /// Begins for the calling thread; null without memory.
    static qxHeapThread* enter(qxHeap& heap);
    void leave();

    /// Takes a block of `size` bytes, at most QX_HEAP_LARGEST.
    void* take(std::size_t size)
    {
        const std::size_t kind = (size - (size != 0)) / QX_HEAP_GRAIN;
        qxHeapPage* const page = m_current[kind];
        if (!page) return takeFromNextPage(kind);
        if (qxHeapBlock* const block = page->free) {
            page->free = block->next;
            ++page->used;
            return block;
        }
        if (page->freshCount == 0) return takeFromNextPage(kind);
        char* const block = page->fresh;
        page->fresh = block + (kind + 1) * QX_HEAP_GRAIN;
        --page->freshCount;
        ++page->used;
        return block;
    }

    /// Gives a block back, whoever took it. `thread` is the calling thread's, null if it has none.
    static void giveBack(qxHeap& heap, qxHeapThread* thread, void* memory)
    {
        // Pages get another owner only while theirs is idle: of a thread itself the answer is certain.
        qxHeapPage& page = heap.pageOf(memory);
        if (page.owner.load(std::memory_order_relaxed) != thread) {
            giveBackForeign(heap, thread, page, memory);
            return;
        }
        qxHeapBlock* const block = static_cast<qxHeapBlock*>(memory);
        block->next = page.free;
        page.free = block;
        if (--page.used == page.mark) onMark(page);
    }

private:
    static constexpr std::size_t KINDS = QX_HEAP_LARGEST / QX_HEAP_GRAIN;

    explicit qxHeapThread(qxHeap& heap) : m_heap(heap) {}

    void* takeFromNextPage(std::size_t kind);
    void preparePage(qxHeapPage& page, std::size_t kind);
    void parkPage(qxHeapPage& page, bool isNotice = false);
    bool collect(qxHeapPage& page, bool isNotice);
    bool settle(qxHeapPage& page);
    void unlist(qxHeapPage& page);
    void readNotices();
    static void onMark(qxHeapPage& page);
    static void giveBackForeign(qxHeap& heap, qxHeapThread* thread, qxHeapPage& page, void* memory);
    static void notify(qxHeap& heap, qxHeapThread* thread, qxHeapPage& page);

    qxHeap& m_heap;
    qxHeapPage* m_current[KINDS] = {};    // blocks are taken from these; null when there is none
    qxHeapPage* m_roomy[KINDS] = {};      // lists of pages to become current next
    std::atomic<qxHeapPage*> m_notices{}; // list of pages; changed with the heap's lock held
    bool m_isIdle = false;                // guarded by the heap's lock
    qxHeapThread* m_nextIdle = nullptr;   // guarded by the heap's lock
};
