// SPDX-License-Identifier: see LICENSE

#include "core/qxheap.h"

#include "platform/qxplatformmemory.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <type_traits>

// The plan
//
// A page holds blocks of one kind, which is to say of one size, and belongs to one qxHeapThread. Its blocks are handed
// out from its list of free ones and, while that is empty, in the order of their addresses. A thread takes the blocks
// of a kind from its *current* page. When that has none left it is parked as *full*, and a *roomy* page becomes
// current: a parked one of which an eighth or more is free. Without one the thread takes a page from the heap. So what
// is built in one go lies together, and a page is looked at only when it is worth it. A parked page of which no block
// is in use goes to the heap, for blocks of any kind; its next user starts with a page in order, whatever order the
// blocks were given back in.
//
// The pages' records lie side by side, apart from the pages: at the start of each page they would compete for the same
// few lines of the processor's caches, and could not link pages that have no memory.
//
// Foreign threads, those that do not own a page, push its blocks onto its foreign list. The owner collects them when it
// parks the page or makes it current. Besides, a parked page of which so many have come back that it may have become
// roomy or empty is *noticed*: it goes onto its owner's list of notices, which the owner reads when it next has to do
// with pages. If the owner is idle, as its thread has ended, the page instead passes to the thread that noticed it.
//
// Pushing is a compare-and-swap and collecting takes all at once, so that a block which has meanwhile been elsewhere
// and come back does no harm. A foreign thread may touch a page until the block that it gives back is counted, and if
// that makes a notice, until the notice has been read; before, the page cannot go to the heap.

namespace
{

constexpr std::size_t COMMITTED_AT_ONCE = 16; // pages
constexpr std::uint16_t NEVER = 0xFFFF;       // more than there are blocks in a page

constexpr std::uint16_t blocksInPage(std::size_t kind)
{
    return static_cast<std::uint16_t>(QX_HEAP_PAGE / QX_HEAP_GRAIN / (kind + 1));
}

constexpr std::uint16_t eighthOfPage(std::size_t kind)
{
    return blocksInPage(kind) / 8;
}

} // namespace

static_assert(sizeof(qxHeapPage) == 64);
static_assert(std::atomic<qxHeapForeign>::is_always_lock_free);
static_assert(std::is_trivially_destructible_v<qxHeap>);

inline char* qxHeap::memoryOf(const qxHeapPage& page) const
{
    const std::size_t index = static_cast<std::size_t>(&page - m_pages);
    return reinterpret_cast<char*>(m_first.load(std::memory_order_relaxed)) + index * QX_HEAP_PAGE;
}

inline qxHeapBlock* qxHeap::blockAt(const qxHeapPage& page, std::size_t grains) const
{
    return reinterpret_cast<qxHeapBlock*>(memoryOf(page) + grains * QX_HEAP_GRAIN);
}

std::size_t qxHeap::countUsedPages() const
{
    const std::lock_guard guard(m_lock);
    return m_startedPages - m_keptPages - m_barePages;
}

qxHeapPage* qxHeap::takePage()
{
    const std::lock_guard guard(m_lock);
    if (qxHeapPage* const page = m_kept) {
        m_kept = page->next;
        --m_keptPages;
        return page;
    }
    if (qxHeapPage* const page = m_bare) {
        if (!qxPlatformMemoryCommit(memoryOf(*page), QX_HEAP_PAGE)) return nullptr;
        m_bare = page->next;
        --m_barePages;
        return page;
    }
    return startPage();
}

void qxHeap::givePage(qxHeapPage& page)
{
    std::unique_lock guard(m_lock);
    if (m_keptPages < m_keptLimit) {
        page.next = m_kept;
        m_kept = &page;
        ++m_keptPages;
        return;
    }
    guard.unlock(); // nobody else knows the page
    qxPlatformMemoryDecommit(memoryOf(page), QX_HEAP_PAGE);
    guard.lock();
    page.next = m_bare;
    m_bare = &page;
    ++m_barePages;
}

qxHeapPage* qxHeap::startPage()
{
    if (m_startedPages == m_pageLimit || (!m_pages && !reserve())) return nullptr;
    if (m_startedPages == m_committedRecords) {
        if (!qxPlatformMemoryCommit(m_pages + m_startedPages, QX_HEAP_PAGE)) return nullptr;
        m_committedRecords += QX_HEAP_PAGE / sizeof(qxHeapPage);
    }
    if (m_startedPages == m_committedPages) {
        char* const memory = memoryOf(m_pages[m_startedPages]);
        if (!qxPlatformMemoryCommit(memory, COMMITTED_AT_ONCE * QX_HEAP_PAGE)) return nullptr;
        m_committedPages += COMMITTED_AT_ONCE;
    }
    return new (m_pages + m_startedPages++) qxHeapPage;
}

bool qxHeap::reserve()
{
    if (qxPlatformMemoryPageSize() > QX_HEAP_PAGE) return false;
    const std::size_t recordPages = (m_pageLimit * sizeof(qxHeapPage) + QX_HEAP_PAGE - 1) / QX_HEAP_PAGE;
    void* const start = qxPlatformMemoryReserve((recordPages + m_pageLimit) * QX_HEAP_PAGE);
    if (!start) return false;
    m_pages = static_cast<qxHeapPage*>(start);
    // Relaxed: who has a block has it, directly or not, from the thread that took it.
    m_first.store(reinterpret_cast<std::uintptr_t>(start) + recordPages * QX_HEAP_PAGE,
                  std::memory_order_relaxed);
    return true;
}

qxHeapThread* qxHeapThread::enter(qxHeap& heap)
{
    {
        const std::lock_guard guard(heap.m_lock);
        if (qxHeapThread* const idle = heap.m_idle) {
            heap.m_idle = idle->m_nextIdle;
            idle->m_isIdle = false;
            return idle;
        }
    }
    static_assert(sizeof(qxHeapThread) <= QX_HEAP_PAGE);
    qxHeapPage* const page = heap.takePage();
    return page ? new (heap.memoryOf(*page)) qxHeapThread(heap) : nullptr;
}

void qxHeapThread::leave()
{
    // Parked once more, the pages are noticed when their last blocks come back.
    for (std::size_t kind = 0; kind < KINDS; ++kind) {
        for (qxHeapPage *page = m_roomy[kind], *next = nullptr; page; page = next) {
            next = page->next;
            unlist(*page);
            parkPage(*page);
        }
        if (m_current[kind]) parkPage(*m_current[kind]);
        m_current[kind] = nullptr;
    }
    for (;;) {
        readNotices();
        const std::lock_guard guard(m_heap.m_lock);
        if (m_notices.load(std::memory_order_relaxed)) continue;
        m_isIdle = true;
        m_nextIdle = m_heap.m_idle;
        m_heap.m_idle = this;
        return;
    }
}

void* qxHeapThread::takeFromNextPage(std::size_t kind)
{
    readNotices();
    if (m_current[kind]) parkPage(*m_current[kind]);
    qxHeapPage* page = m_roomy[kind];
    if (page) {
        unlist(*page);
    } else {
        page = m_heap.takePage();
        if (page) preparePage(*page, kind);
    }
    m_current[kind] = page;
    if (!page) return nullptr;
    page->place = qxHeapPage::CURRENT;
    page->mark = NEVER;
    collect(*page, false);
    return take((kind + 1) * QX_HEAP_GRAIN);
}

void qxHeapThread::preparePage(qxHeapPage& page, std::size_t kind)
{
    page.free = nullptr;
    page.fresh = m_heap.memoryOf(page);
    page.freshCount = blocksInPage(kind);
    page.kind = static_cast<std::uint8_t>(kind);
    page.used = 0;
    page.owner.store(this, std::memory_order_relaxed);
    page.foreign.store(qxHeapForeign{0, 0, NEVER, 0}, std::memory_order_relaxed);
}

// Puts a page that is in no place where it belongs now.
void qxHeapThread::parkPage(qxHeapPage& page, bool isNotice)
{
    page.place = qxHeapPage::FULL;
    page.mark = static_cast<std::uint16_t>(blocksInPage(page.kind) - eighthOfPage(page.kind));
    if (collect(page, isNotice)) m_heap.givePage(page);
}

// Collects the foreign blocks and settles the page; `isNotice` when a notice of it has been read. Returns what settle
// does.
bool qxHeapThread::collect(qxHeapPage& page, bool isNotice)
{
    qxHeapForeign old = page.foreign.load(std::memory_order_relaxed);
    qxHeapForeign now{};
    do {
        const std::uint16_t used = static_cast<std::uint16_t>(page.used - old.count);
        now.noticeAt = page.place == qxHeapPage::CURRENT ? NEVER : std::min(used, eighthOfPage(page.kind));
        now.isNoticed = isNotice ? 0 : old.isNoticed;
    } while (
        !page.foreign.compare_exchange_weak(old, now, std::memory_order_acquire, std::memory_order_relaxed));
    if (old.count != 0) {
        qxHeapBlock* const first = m_heap.blockAt(page, old.first);
        if (page.free) {
            qxHeapBlock* last = first;
            while (last->next) last = last->next;
            last->next = page.free;
        }
        page.free = first;
        page.used = static_cast<std::uint16_t>(page.used - old.count);
    }
    return settle(page);
}

// Puts a parked page where its number of used blocks says. Returns true, and the page is in no list, when the caller
// has to give it to the heap.
bool qxHeapThread::settle(qxHeapPage& page)
{
    if (page.place == qxHeapPage::CURRENT) return false;
    if (page.used == 0 && page.foreign.load(std::memory_order_relaxed).isNoticed == 0) {
        if (page.place == qxHeapPage::ROOMY) unlist(page);
        return true;
    }
    if (page.place == qxHeapPage::FULL && page.used <= page.mark) {
        page.place = qxHeapPage::ROOMY;
        page.mark = 0;
        page.previous = nullptr;
        page.next = m_roomy[page.kind];
        if (page.next) page.next->previous = &page;
        m_roomy[page.kind] = &page;
    }
    return false;
}

void qxHeapThread::unlist(qxHeapPage& page)
{
    (page.previous ? page.previous->next : m_roomy[page.kind]) = page.next;
    if (page.next) page.next->previous = page.previous;
}

void qxHeapThread::readNotices()
{
    if (!m_notices.load(std::memory_order_relaxed)) return;
    std::unique_lock guard(m_heap.m_lock);
    qxHeapPage* page = m_notices.exchange(nullptr, std::memory_order_relaxed);
    guard.unlock();
    while (page) {
        qxHeapPage* const next = page->nextNotice;
        if (collect(*page, true)) m_heap.givePage(*page);
        page = next;
    }
}

void qxHeapThread::onMark(qxHeapPage& page)
{
    qxHeapThread& owner = *page.owner.load(std::memory_order_relaxed);
    if (owner.settle(page)) owner.m_heap.givePage(page);
    owner.readNotices();
}

void qxHeapThread::giveBackForeign(qxHeap& heap, qxHeapThread* thread, qxHeapPage& page, void* memory)
{
    qxHeapBlock* const block = static_cast<qxHeapBlock*>(memory);
    qxHeapForeign old = page.foreign.load(std::memory_order_relaxed);
    qxHeapForeign now{};
    now.first = static_cast<std::uint16_t>(heap.offsetOf(memory) % QX_HEAP_PAGE / QX_HEAP_GRAIN);
    do {
        block->next = old.count == 0 ? nullptr : heap.blockAt(page, old.first);
        now.count = static_cast<std::uint16_t>(old.count + 1);
        now.noticeAt = old.noticeAt;
        now.isNoticed = old.isNoticed != 0 || now.count >= now.noticeAt;
    } while (
        !page.foreign.compare_exchange_weak(old, now, std::memory_order_release, std::memory_order_relaxed));
    if (now.isNoticed != old.isNoticed) notify(heap, thread, page);
}

void qxHeapThread::notify(qxHeap& heap, qxHeapThread* thread, qxHeapPage& page)
{
    std::unique_lock guard(heap.m_lock);
    qxHeapThread& owner = *page.owner.load(std::memory_order_relaxed);
    if (!owner.m_isIdle) {
        page.nextNotice = owner.m_notices.load(std::memory_order_relaxed);
        owner.m_notices.store(&page, std::memory_order_relaxed);
    } else if (thread) {
        if (page.place == qxHeapPage::ROOMY) owner.unlist(page);
        page.owner.store(thread, std::memory_order_relaxed);
        guard.unlock();
        thread->parkPage(page, true);
    } else {
        const bool isEmpty = owner.collect(page, true);
        guard.unlock();
        if (isEmpty) heap.givePage(page);
    }
}
