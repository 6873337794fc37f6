// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmemory.h"

#include "platform/windows/qxwindows.h"

std::size_t qxPlatformMemoryPageSize()
{
    static const std::size_t size = [] {
        SYSTEM_INFO info;
        GetSystemInfo(&info);
        return static_cast<std::size_t>(info.dwPageSize);
    }();
    return size;
}

void* qxPlatformMemoryReserve(std::size_t size)
{
    return VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
}

bool qxPlatformMemoryCommit(void* address, std::size_t size)
{
    return VirtualAlloc(address, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void qxPlatformMemoryDecommit(void* address, std::size_t size)
{
    VirtualFree(address, size, MEM_DECOMMIT);
}
