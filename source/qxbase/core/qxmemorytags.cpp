// SPDX-License-Identifier: see LICENSE

#include "core/qxmemorytags.h"

#include "qxmemory.h"

#include <atomic>
#include <cstring>

#if defined(NDEBUG)

void qxCountTag(const char*) {}

std::size_t qxMemoryControl::getTagCount(const char*)
{
    return 0;
}

#else

namespace
{

/// A tag is written once and stays.
struct TagCount {
    std::atomic<const char*> tag;
    std::atomic<std::size_t> count;
};

constinit TagCount counts[256] = {};

} // namespace

void qxCountTag(const char* tag)
{
    if (!tag) return;
    for (TagCount& entry : counts) {
        const char* known = entry.tag.load(std::memory_order_acquire);
        const bool isNew = !known && entry.tag.compare_exchange_strong(known, tag);
        if (!isNew && std::strcmp(known, tag) != 0) continue;
        entry.count.fetch_add(1, std::memory_order_relaxed);
        return;
    }
}

std::size_t qxMemoryControl::getTagCount(const char* tag)
{
    for (const TagCount& entry : counts) {
        const char* const known = entry.tag.load(std::memory_order_acquire);
        if (!known) break;
        if (std::strcmp(known, tag) == 0) return entry.count.load(std::memory_order_relaxed);
    }
    return 0;
}

#endif
