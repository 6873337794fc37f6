// Pages of memory from the operating system, for allocators.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>

/// Bytes in a page, a power of two. Addresses and sizes below are multiples of it.
///
/// Threads: any. Errors: none.
std::size_t qxPlatformMemoryPageSize();

/// Reserves `size` bytes of addresses, for as long as the process lives, and returns the first; null on
/// failure. No memory lies behind them yet: touching them ends the process.
///
/// Threads: any. Errors: null.
void* qxPlatformMemoryReserve(std::size_t size);

/// Puts memory behind `size` bytes from `address`, all of them reserved and not committed; it reads as
/// zeros. Returns false when the system has none left.
///
/// Threads: any, for different pages. Errors: false, and nothing has changed.
bool qxPlatformMemoryCommit(void* address, std::size_t size);

/// Gives the memory behind `size` bytes from `address` back; the addresses stay reserved and may be
/// committed again.
///
/// Threads: any, for different pages. Errors: none.
void qxPlatformMemoryDecommit(void* address, std::size_t size);
