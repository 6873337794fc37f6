// Stacks for threads.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>

/// A range of addresses with a page below it that nothing may touch.
struct qxPlatformStack {
    void* memory = nullptr; // the lowest usable address
    std::size_t size = 0;   // usable bytes
};

/// Takes a stack of the system's default size; its memory is null when there is none to be had.
///
/// The stacks are ours because the C library keeps its own together with what their threads had stored, and hands that on
/// to the next thread unless the one before has gone in order.
///
/// Threads: any. Errors: null.
qxPlatformStack qxPlatformTakeStack();

/// Gives the stack of a thread that is gone back. A few that are `clean`, because their threads have returned from them,
/// are kept for the next threads.
void qxPlatformGiveStack(const qxPlatformStack& stack, bool isClean);
