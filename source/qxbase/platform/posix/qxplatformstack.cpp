// SPDX-License-Identifier: see LICENSE

#include "platform/posix/qxplatformstack.h"

#include "platform/qxplatformnotnow.h"

#include <mutex>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

constexpr std::size_t MOST_KEPT = 8;
constexpr std::size_t KEPT_BYTES =
    32768; // of a kept stack, from its top; the rest of its memory goes to the system

std::mutex s_lock; // guards the kept stacks
qxPlatformStack s_kept[MOST_KEPT];
std::size_t s_keptCount = 0;

std::size_t guardSize()
{
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// In whole pages.
std::size_t stackSize()
{
    static const std::size_t size = [] {
        std::size_t bytes = 0;
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_getstacksize(&attributes, &bytes);
        pthread_attr_destroy(&attributes);
        return (bytes + guardSize() - 1) / guardSize() * guardSize();
    }();
    return size;
}

qxPlatformStack makeStack()
{
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK;
    void* const all = mmap(nullptr, guardSize() + stackSize(), PROT_NONE, flags, -1, 0);
    if (all == MAP_FAILED) return {};
    const qxPlatformStack stack{static_cast<char*>(all) + guardSize(), stackSize()};
    if (mprotect(stack.memory, stack.size, PROT_READ | PROT_WRITE) == 0) return stack;
    munmap(all, guardSize() + stackSize());
    return {};
}

bool keep(const qxPlatformStack& stack)
{
    const qxPlatformNotNow notNow;
    const std::lock_guard<std::mutex> guard(s_lock);
    if (s_keptCount == MOST_KEPT) return false;
    s_kept[s_keptCount++] = stack;
    return true;
}

} // namespace

qxPlatformStack qxPlatformTakeStack()
{
    {
        const qxPlatformNotNow notNow;
        const std::lock_guard<std::mutex> guard(s_lock);
        if (s_keptCount > 0) return s_kept[--s_keptCount];
    }
    return makeStack();
}

void qxPlatformGiveStack(const qxPlatformStack& stack, bool isClean)
{
    if (isClean) {
        madvise(stack.memory, stack.size - KEPT_BYTES, MADV_DONTNEED);
        if (keep(stack)) return;
    }
    munmap(static_cast<char*>(stack.memory) - guardSize(), guardSize() + stack.size);
}
