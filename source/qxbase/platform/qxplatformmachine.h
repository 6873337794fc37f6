// What tells this machine from others, and bytes that nobody can foresee.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <string>

/// A text that stays with this machine from one start to the next and that hardly any other machine has: the system's own
/// identifier; without one an address of its network; at least its name in the network. Not for showing around.
///
/// Threads: any. Errors: none; an empty text where the system tells nothing at all.
std::string qxPlatformMachineIdentity();

/// Fills `count` bytes from the system's secure source. Returns false, with the system's number in `error`, when it cannot;
/// the bytes mean nothing then.
///
/// Threads: any.
bool qxPlatformRandomBytes(void* bytes, std::size_t count, int& error);
