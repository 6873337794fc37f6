// SPDX-License-Identifier: see LICENSE

#include "qxmemory.h"

#include "core/qxheap.h"
#include "core/qxmemorytags.h"
#include "platform/qxplatformnotnow.h"
#include "platform/qxplatformthread.h"
#include "qxerror.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Under a sanitizer all memory is the system's, so that it sees the faults made with it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QX_IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define QX_IS_SANITIZED
#endif
#endif

// Initial-exec: read as an offset from the thread's base, also in the shared library.
#if defined(__ELF__)
#define QX_FAST_THREAD_LOCAL __attribute__((tls_model("initial-exec"))) thread_local
#else
#define QX_FAST_THREAD_LOCAL thread_local
#endif

namespace
{

#if defined(QX_IS_SANITIZED)
constexpr bool USES_PAGES = false;
#else
constexpr bool USES_PAGES = true;
#endif

// 64 GiB of addresses, and 128 MiB of free pages kept: to return a page to the system and to get it back takes longer
// than to fill it with a tree.
constinit qxHeap pages(std::size_t{1} << 20, 2048);

constinit QX_FAST_THREAD_LOCAL qxHeapThread* t_pages = nullptr;
constinit QX_FAST_THREAD_LOCAL bool t_hasNoPages = false; // there are none to be had, or no longer

/// Lets go of the thread's pages. What the thread destroys after this takes the system's memory.
struct ThreadEnd {
    ~ThreadEnd()
    {
        t_hasNoPages = true;
        if (t_pages) t_pages->leave();
        t_pages = nullptr;
    }
};

constexpr std::size_t MAX_SIZE = PTRDIFF_MAX; // differences of pointers into a larger block would overflow
constexpr std::size_t LINE_BYTES = 1024;      // of a report, with its line feed

std::atomic<bool> reportsEnabled{true};

// The system's heap has locks that all threads need: none is ended inside a call of it from here.
[[gnu::noinline]] void* systemMalloc(std::size_t size)
{
    return qxPlatformCallNotNow([size] { return std::malloc(size == 0 ? 1 : size); });
}

[[gnu::noinline]] void systemFree(void* memory)
{
    qxPlatformCallNotNow([memory] { std::free(memory); });
}

bool guardForks()
{
    qxPlatformGuardForks([] { pages.lockForFork(); }, [] { pages.unlockAfterFork(); });
    return true;
}

// The thread's first small block, and every one that it takes without having pages.
[[gnu::noinline]] void* firstMalloc(std::size_t size)
{
    if (t_hasNoPages) return systemMalloc(size);
    const qxPlatformNotNow notNow;
    [[maybe_unused]] static const bool isGuarded = guardForks();
    [[maybe_unused]] static thread_local const ThreadEnd end;
    t_pages = qxHeapThread::enter(pages);
    t_hasNoPages = !t_pages;
    return qx_malloc(size);
}

/// The part of a report line that has been written so far. What does not fit is cut off.
struct ReportLine {
    char bytes[LINE_BYTES];
    std::size_t length = 0;

    void append(const char* text, std::size_t count)
    {
        const std::size_t free = LINE_BYTES - 1 - length;
        if (count > free) count = free;
        std::memcpy(bytes + length, text, count);
        length += count;
    }
};

} // namespace

void* qx_malloc(std::size_t size)
{
    if (USES_PAGES && size <= QX_HEAP_LARGEST) {
        qxHeapThread* const thread = t_pages;
        if (!thread) return firstMalloc(size);
        if (void* const block = thread->take(size)) return block;
    }
    return size <= MAX_SIZE ? systemMalloc(size) : nullptr;
}

void* qx_malloc(std::size_t size, std::align_val_t alignment)
{
    // The block starts somewhere in the room before the aligned address; where, stands just before that.
    const std::size_t align = static_cast<std::size_t>(alignment);
    const std::size_t extra = sizeof(void*) + align - 1;
    if (extra > MAX_SIZE || size > MAX_SIZE - extra) return nullptr;
    void* const block = qx_malloc(size + extra);
    if (!block) return nullptr;
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(block) + sizeof(void*);
    char* const aligned = static_cast<char*>(block) + sizeof(void*) + (-first & (align - 1));
    std::memcpy(aligned - sizeof(void*), &block, sizeof(void*));
    return aligned;
}

void qx_free(void* memory)
{
    if (!pages.contains(memory)) {
        systemFree(memory);
    } else {
        qxHeapThread::giveBack(pages, t_pages, memory);
    }
}

void* qx_realloc(void* memory, std::size_t size)
{
    if (size > MAX_SIZE) return nullptr;
    if (!memory) return qx_malloc(size);
    if (!pages.contains(memory)) {
        return qxPlatformCallNotNow([=] { return std::realloc(memory, size == 0 ? 1 : size); });
    }
    const std::size_t room = pages.getBlockSize(memory);
    if (size <= room && (size >= room / 2 || room <= 32)) return memory; // else moving it gains something
    void* const moved = qx_malloc(size);
    if (!moved) return nullptr;
    std::memcpy(moved, memory, std::min(size, room));
    qx_free(memory);
    return moved;
}

void* qx_new(std::size_t size)
{
    void* const memory = qx_malloc(size);
    if (!memory) qxThrowBadAlloc(__FILE__, __LINE__);
    return memory;
}

void* qx_new(std::size_t size, const char* tag)
{
    qxCountTag(tag);
    return qx_new(size);
}

void* qx_new(std::size_t size, std::align_val_t alignment)
{
    void* const memory = qx_malloc(size, alignment);
    if (!memory) qxThrowBadAlloc(__FILE__, __LINE__);
    return memory;
}

void* qx_new(std::size_t size, std::align_val_t alignment, const char* tag)
{
    qxCountTag(tag);
    return qx_new(size, alignment);
}

void qx_delete(void* memory)
{
    qx_free(memory);
}

void qx_delete(void* memory, std::align_val_t)
{
    if (!memory) return;
    void* block;
    std::memcpy(&block, static_cast<char*>(memory) - sizeof(void*), sizeof(void*));
    qx_free(block);
}

void qxThrowBadAlloc(const char* file, int line)
{
    thread_local bool isReporting = false; // what fails while a report is made is not reported as well
    if (!isReporting) {
        isReporting = true;
        qxMemoryControl::memprintf(false, "Bad Alloc:%s", qxGenerateDebugString(file, line, QX_VERSION));
        isReporting = false;
    }
    throw std::bad_alloc();
}

void qxMemoryControl::memprintf(bool forced, const char* format, const char* text)
{
    if (!forced && !reportsEnabled.load(std::memory_order_relaxed)) return;
    ReportLine line;
    const char* const place = std::strstr(format, "%s");
    if (place) {
        line.append(format, static_cast<std::size_t>(place - format));
        line.append(text, std::strlen(text));
        line.append(place + 2, std::strlen(place + 2));
    } else {
        line.append(format, std::strlen(format));
    }
    line.bytes[line.length++] = '\n';
    std::fwrite(line.bytes, 1, line.length, stderr); // in one piece, so that lines of threads do not mix
}

void qxMemoryControl::enableReports(bool on)
{
    reportsEnabled.store(on, std::memory_order_relaxed);
}
