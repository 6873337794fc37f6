// The recursive lock.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <atomic>

/// A recursive lock that belongs to the thread that took it.
///
/// All operations are const, so that a constant object can be locked.
///
/// Lifetime: free when built. Destroying a held one sends the warning
///           "qxMutex (%x) deleted with unbalanced Lock/unLock".
/// Threads:  any thread may call any operation; the thread that took the lock gives it back.
/// Errors:   none; an unlock without a matching lock is ignored.
class QX_API qxMutex
{
public:
    /// With `trackOwner` set, getOwnerThreadID tells who holds the lock.
    explicit qxMutex(unsigned char trackOwner = 1);

    /// Copies whether the owner is tracked and nothing else: the new lock is free.
    qxMutex(const qxMutex& other);
    qxMutex& operator=(const qxMutex& other);
    virtual ~qxMutex() noexcept(false);

    /// Waits until the lock is this thread's; a thread may take it several times.
    void waitLock() const;

    /// Takes the lock when that needs no waiting and returns 1; else changes nothing and returns 0.
    unsigned char tryLock() const;

    /// Gives one holding back. Ignored when the calling thread holds none.
    void unLock() const;

    /// 1 while any thread holds the lock, the calling one included; else 0. Changes nothing.
    unsigned char isLocked() const;

    /// The thread that holds the lock; 0 when it is free or its owner is not tracked. Reads without locking.
    unsigned int getOwnerThreadID() const { return m_owner.load(std::memory_order_relaxed); }

    /// How many holdings the owner has; 0 when the lock is free. Reads without locking.
    unsigned int getSpinLockCount() const { return m_count.load(std::memory_order_relaxed); }

protected:
    /// Sleeps on the platform condition in `conditionRoom`, at most `milliseconds` (0xFFFFFFFF: without end),
    /// with the lock fully given back meanwhile; afterwards the calling thread holds it as often as before.
    /// Returns 0 on time-out. Call with the lock held.
    unsigned char sleepReleased(void* conditionRoom, unsigned int milliseconds) const;

private:
    bool isHeldByCaller(unsigned int thread) const
    {
        return m_holder.load(std::memory_order_relaxed) == thread;
    }
    void setHeld(unsigned int thread, unsigned int count) const;

    alignas(8) mutable unsigned char m_room[64]; // the platform's plain lock, taken once however deep
    mutable std::atomic<unsigned int> m_holder{
        0};                                       // who is inside; written with the lock held, read by anyone
    mutable std::atomic<unsigned int> m_owner{0}; // the same while tracking is on, else 0
    mutable std::atomic<unsigned int> m_count{0};
    unsigned char m_trackOwner;
};
