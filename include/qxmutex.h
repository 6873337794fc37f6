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
///           "qxMutex (%x) deleted with unbalanced Lock/unLock"; what its receivers raise is lost.
/// Threads:  any thread may call any operation; the thread that took the lock gives it back.
/// Errors:   none; an unlock by a thread that does not hold the lock is ignored.
class QX_API qxMutex
{
public:
    /// With `trackOwner` set, getOwnerThreadID tells who holds the lock.
    explicit qxMutex(unsigned char trackOwner = 1);

    /// Copies whether the owner is tracked and nothing else: the new lock is free.
    qxMutex(const qxMutex& other);

    /// Takes over whether the owner is tracked and nothing else: a lock that is held stays held.
    qxMutex& operator=(const qxMutex& other);

    // Raises nothing; noexcept(false) because classes with another base that may raise derive from it.
    virtual ~qxMutex() noexcept(false);

    /// Waits until the lock is this thread's; a thread may take it several times.
    void waitLock() const;

    /// Takes the lock when that needs no waiting and returns 1; else changes nothing and returns 0.
    unsigned char tryLock() const;

    /// Gives one holding back. Ignored when the calling thread holds none.
    void unLock() const;

    /// 1 while any thread holds the lock, the calling one included; else 0. Changes nothing.
    unsigned char isLocked() const { return m_holder.load(std::memory_order_relaxed) != 0; }

    /// The thread that holds the lock; 0 when it is free or its owner is not tracked. Reads without locking.
    unsigned int getOwnerThreadID() const
    {
        return m_trackOwner.load(std::memory_order_relaxed) ? m_holder.load(std::memory_order_relaxed) : 0;
    }

    /// How many holdings the owner has; 0 when the lock is free. Reads without locking.
    unsigned int getSpinLockCount() const { return m_depth.load(std::memory_order_relaxed); }

protected:
    /// True when the calling thread holds the lock.
    bool isHeldByCaller() const;

    /// Sleeps on the platform's condition in `conditionRoom`, at most `milliseconds` (0xFFFFFFFF: without
    /// end) and, when `stop` is given, until about 10 milliseconds after it became true. The lock is free
    /// meanwhile, however often the caller holds it; afterwards the caller holds it as often as before.
    /// Returns true when woken. Call with the lock held.
    bool sleepReleased(void* conditionRoom, unsigned int milliseconds,
                       const std::atomic<bool>* stop = nullptr) const;

private:
    void setHeld(unsigned int holder, unsigned int count) const;

    // Who is inside and how often: written with the platform's lock held, read by anyone.
    mutable std::atomic<unsigned int> m_holder{0};
    mutable std::atomic<unsigned int> m_depth{0};
    std::atomic<unsigned char> m_trackOwner;

    alignas(8) mutable unsigned char m_room[64]; // the platform's plain lock, taken once however deep
};
