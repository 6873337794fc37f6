// SPDX-License-Identifier: see LICENSE

#include "platform/qxtestsystem.h"

#include "platform/windows/qxwindows.h"

struct Interrupts::Before {};

bool isAccessible(unsigned char* address)
{
    MEMORY_BASIC_INFORMATION pages;
    return VirtualQuery(address, &pages, sizeof(pages)) != 0 && pages.State == MEM_COMMIT &&
           pages.Protect == PAGE_READWRITE;
}

Interrupts::Interrupts() = default;
Interrupts::~Interrupts() = default;
void Interrupts::send(std::thread&) {} // nothing interrupts a wait here
