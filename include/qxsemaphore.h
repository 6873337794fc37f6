// The counting semaphore with an owner value, and the reader/writer lock made of it.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxevent.h"
#include "qxmutex.h"

/// Lets any number of holders in that ask with the same value, up to a maximum, and keeps all others out.
///
/// There is no queue and no fairness; waiting is a series of bounded sleeps.
///
/// Lifetime: a copy of a held semaphore is held as often, under the same value.
/// Threads:  any thread may call any operation, also unLock for a holding of another thread.
/// Errors:   none.
class QX_API qxSemaphore
{
public:
    /// Held `lockCount` times under `ownerValue` from the start; a `maxLockCount` of 0 is no limit.
    explicit qxSemaphore(unsigned int ownerValue = 0, unsigned int lockCount = 0,
                         unsigned int maxLockCount = 0);
    qxSemaphore(const qxSemaphore& other);
    qxSemaphore& operator=(const qxSemaphore& other);
    virtual ~qxSemaphore() noexcept(false);

    /// Takes one holding under `value`, sleeping at most `timeout` / 10 periods of 10 milliseconds (below 10
    /// milliseconds none); returns 1 when granted, else 0.
    unsigned char tryLock(unsigned int value, unsigned int timeout) const;

    /// Takes one holding under `value`, however long that takes; returns 1.
    unsigned char waitLock(unsigned int value) const;

    /// Gives one holding back and wakes the sleepers when it was the last.
    void unLock() const;

    /// The value under which the semaphore is held, or was held last.
    unsigned int getOwnerValue() const;

    /// How many holdings there are.
    unsigned int getSpinLockCount() const;

    /// Sets the maximum (0: no limit) and returns the one before. Holders beyond it stay.
    unsigned int setMaxLockCount(unsigned int maxLockCount);

private:
    struct Fields {
        unsigned int maxLockCount;
        unsigned int ownerValue;
        unsigned int lockCount;
    };

    bool grant(unsigned int value) const;
    Fields getFields() const;

    qxMutex m_lock; // guards the fields; never held during a sleep
    mutable Fields m_fields;
    qxEvent m_event; // sleepers wait here; its own lock is never taken together with m_lock
};

/// Readers together, shared writers together, or one exclusive writer, who may take the lock again.
///
/// Everyone gives back with unLock. A thread that holds a read lock and asks for the write lock waits for
/// itself without end. Readers that keep coming can keep a writer out, and the other way round.
///
/// Threads: as qxSemaphore.
class QX_API qxReadWriteMutex : public qxSemaphore
{
public:
    void waitLockRead() const;
    void waitLockSharedWrite() const;
    void waitLockWrite() const;

    // These give up after one wait of 10 milliseconds and return 0.
    unsigned char tryLockRead() const;
    unsigned char tryLockSharedWrite() const;
    unsigned char tryLockWrite() const;
};
