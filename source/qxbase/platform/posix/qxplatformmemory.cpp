// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmemory.h"

#include <sys/mman.h>
#include <unistd.h>

std::size_t qxPlatformMemoryPageSize()
{
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

void* qxPlatformMemoryReserve(std::size_t size)
{
    void* address = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return address == MAP_FAILED ? nullptr : address;
}

bool qxPlatformMemoryCommit(void* address, std::size_t size)
{
    return mprotect(address, size, PROT_READ | PROT_WRITE) == 0;
}

void qxPlatformMemoryDecommit(void* address, std::size_t size)
{
    // Mapping anew also gives back what a system that counts commitments has counted; protecting does not.
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED;
    if (mmap(address, size, PROT_NONE, flags, -1, 0) != MAP_FAILED) return;
    madvise(address, size, MADV_DONTNEED); // the process has no mapping left to split: the memory at least
}
