// SPDX-License-Identifier: see LICENSE

#include "qxmemory.h"

#include "core/qxmemorytags.h"
#include "qxerror.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr std::size_t MAX_SIZE = PTRDIFF_MAX; // differences of pointers into a larger block would overflow
constexpr std::size_t LINE_BYTES = 1024;      // of a report, with its line feed

std::atomic<bool> reportsEnabled{true};

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
    if (size > MAX_SIZE) return nullptr;
    return std::malloc(size == 0 ? 1 : size);
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
    std::free(memory);
}

void* qx_realloc(void* memory, std::size_t size)
{
    if (size > MAX_SIZE) return nullptr;
    return std::realloc(memory, size == 0 ? 1 : size);
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
