// SPDX-License-Identifier: see LICENSE

#include "threads/qxthreadenum.h"

#include "qxthread.h"

#include "platform/qxplatformthread.h"

#include <atomic>

// Slots are given back, which leaves gaps: behind one a thread may still have the slot that it got before. So a search
// does not end at a gap but at the longest way that anybody had to go so far.

namespace
{

constexpr unsigned int SLOTS = 10000;
constexpr unsigned int STEP = 99; // shares no divisor with the number of slots: a walk meets all of them

constinit std::atomic<unsigned int> s_slots[SLOTS]; // thread ids; 0 is free
constinit std::atomic<unsigned int> s_longestWay = 0;

unsigned int next(unsigned int slot)
{
    return (slot + STEP) % SLOTS;
}

// The slot of a thread, SLOTS when it has none.
unsigned int findSlot(unsigned int threadID)
{
    const unsigned int longest = s_longestWay.load();
    unsigned int slot = threadID % SLOTS;
    for (unsigned int way = 0; way < longest; ++way, slot = next(slot)) {
        if (s_slots[slot].load(std::memory_order_relaxed) == threadID) return slot;
    }
    return SLOTS;
}

// Before a slot at the end of this way is taken, so that whoever looks for it goes as far.
void allowWay(unsigned int way)
{
    unsigned int longest = s_longestWay.load();
    while (longest < way && !s_longestWay.compare_exchange_weak(longest, way)) {}
}

unsigned int claimSlot(unsigned int threadID)
{
    unsigned int slot = threadID % SLOTS;
    for (unsigned int way = 0; way < SLOTS; ++way, slot = next(slot)) {
        unsigned int seen = s_slots[slot].load();
        if (seen == 0) {
            allowWay(way + 1);
            if (s_slots[slot].compare_exchange_strong(seen, threadID)) return slot;
        }
        if (seen == threadID) return slot; // somebody else has asked for the same thread
    }
    return SLOTS;
}

unsigned int findOrClaimSlot(unsigned int threadID)
{
    const unsigned int slot = findSlot(threadID);
    return slot < SLOTS ? slot : claimSlot(threadID);
}

// Gives the slot back at the end of a thread, also of one that the library has not started.
struct ThreadEnd {
    ~ThreadEnd() { qxReleaseThreadEnum(qxPlatformThreadId()); }
};

// A thread remembers its slot, from 1 on: it then stays its own even when two asked for this thread at once and found
// different ones.
unsigned int ownSlot(unsigned int threadID)
{
    const unsigned int remembered = qxPlatformThreadNote();
    if (remembered != 0 && s_slots[remembered - 1].load(std::memory_order_relaxed) == threadID)
        return remembered - 1;

    const unsigned int slot = findOrClaimSlot(threadID);
    if (slot == SLOTS) return SLOTS;
    [[maybe_unused]] static thread_local const ThreadEnd end;
    qxPlatformSetThreadNote(slot + 1);
    return slot;
}

} // namespace

void qxReleaseThreadEnum(unsigned int threadID)
{
    const unsigned int slot = findSlot(threadID);
    if (slot < SLOTS) s_slots[slot].compare_exchange_strong(threadID, 0);
}

unsigned int qxThread::getThreadEnum(unsigned int threadID)
{
    const unsigned int caller = qxPlatformThreadId();
    return threadID == 0 || threadID == caller ? ownSlot(caller) : findOrClaimSlot(threadID);
}
