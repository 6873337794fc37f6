// The operating system's plain lock and its condition, both living in room that the caller provides.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <atomic>

/// Bytes of room for a lock and for a condition, aligned to 8: `alignas(8) unsigned char m_room[64]`.
constexpr unsigned int QX_PLATFORM_LOCK_ROOM = 64;
constexpr unsigned int QX_PLATFORM_CONDITION_ROOM = 64;

/// Time-out without end, for qxPlatformConditionSleep.
constexpr unsigned int QX_PLATFORM_NO_LIMIT = 0xFFFFFFFF;

/// Makes a free lock in `room`, which must neither move nor be copied until the lock is destroyed.
///
/// A lock is plain: a thread that enters it twice waits for itself for ever. The caller who needs
/// recursion keeps owner and count beside it.
///
/// Lifetime: to be ended by qxPlatformLockDestroy while nobody is inside. A thread that has left may
///           be followed by one that enters, leaves and destroys at once: leaving touches nothing after.
/// Threads:  create and destroy alone; all else from any thread. Errors: none.
void qxPlatformLockCreate(void* room);
void qxPlatformLockDestroy(void* room);

/// Waits until the lock is free and takes it.
void qxPlatformLockEnter(void* room);

/// Takes the lock and returns true if it is free; never waits.
bool qxPlatformLockTryEnter(void* room);

/// Frees the lock; only the thread that took it may do so.
void qxPlatformLockLeave(void* room);

/// Makes a condition without sleepers in `room`, which must neither move nor be copied until the
/// condition is destroyed.
///
/// A wake reaches those who sleep at that moment and is lost when nobody does. A thread counts as
/// sleeping from the moment in its sleep call at which it still holds the lock, so a wake that is sent
/// with the lock held, or after a change made with the lock held, is never missed.
///
/// Lifetime: to be ended by qxPlatformConditionDestroy when every sleep has returned.
/// Threads:  create and destroy alone; all else from any thread. Errors: none.
void qxPlatformConditionCreate(void* room);
void qxPlatformConditionDestroy(void* room);

/// Ends the sleep of all sleepers. Takes no lock; the sleepers' lock may be held or not.
void qxPlatformConditionWakeAll(void* room);

/// Ends the sleep of one sleeper, whichever the system picks. Takes no lock, as above.
void qxPlatformConditionWakeOne(void* room);

/// Leaves the lock in `lockRoom`, which the caller holds, sleeps until woken, at most `milliseconds`
/// (0xFFFFFFFF sleeps without limit, 0 only looks), and enters the lock again.
///
/// Returns true when a wake ended the sleep and false when the time ran out; a wake-up by the system
/// without a wake sleeps on for the rest of the time. The time runs on the steady clock and does not
/// include the wait for the lock afterwards. A condition has room for 65,535 sleepers; one more gets
/// false at once.
///
/// `stop`, when not null, is looked at every 10 milliseconds and ends the sleep when it is true, as if the
/// time had run out. Between two looks the caller stays a sleeper, so that no wake is missed.
bool qxPlatformConditionSleep(void* room, void* lockRoom, unsigned int milliseconds,
                              const std::atomic<bool>* stop = nullptr);
