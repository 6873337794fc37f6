// Guards that hold a lock for the length of a body of code.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxmutex.h"
#include "qxsemaphore.h"

/// Holds a mutex while it lives.
class QX_API qxBodyGuard
{
public:
    explicit qxBodyGuard(const qxMutex& lock) : m_lock(&lock) { lock.waitLock(); }
    virtual ~qxBodyGuard() { m_lock->unLock(); }

private:
    qxBodyGuard(const qxBodyGuard&);
    qxBodyGuard& operator=(const qxBodyGuard&);

    const qxMutex* m_lock;
};

/// Holds a read lock while it lives.
class QX_API qxBodyReadGuard
{
public:
    explicit qxBodyReadGuard(const qxReadWriteMutex& lock) : m_lock(&lock) { lock.waitLockRead(); }
    virtual ~qxBodyReadGuard() { m_lock->unLock(); }

private:
    qxBodyReadGuard(const qxBodyReadGuard&);
    qxBodyReadGuard& operator=(const qxBodyReadGuard&);

    const qxReadWriteMutex* m_lock;
};

/// Holds a shared write lock while it lives.
class QX_API qxBodySharedWriteGuard
{
public:
    explicit qxBodySharedWriteGuard(const qxReadWriteMutex& lock) : m_lock(&lock)
    {
        lock.waitLockSharedWrite();
    }
    virtual ~qxBodySharedWriteGuard() { m_lock->unLock(); }

private:
    qxBodySharedWriteGuard(const qxBodySharedWriteGuard&);
    qxBodySharedWriteGuard& operator=(const qxBodySharedWriteGuard&);

    const qxReadWriteMutex* m_lock;
};

/// Holds the exclusive write lock while it lives.
class QX_API qxBodyWriteGuard
{
public:
    explicit qxBodyWriteGuard(const qxReadWriteMutex& lock) : m_lock(&lock) { lock.waitLockWrite(); }
    virtual ~qxBodyWriteGuard() { m_lock->unLock(); }

private:
    qxBodyWriteGuard(const qxBodyWriteGuard&);
    qxBodyWriteGuard& operator=(const qxBodyWriteGuard&);

    const qxReadWriteMutex* m_lock;
};

/// Counts how deep a thread is inside a body of code, to detect that it comes in again. Locks nothing.
///
/// Lifetime: the counter is the caller's and outlives the guard.
/// Threads:  the counter belongs to one thread at a time.
/// Errors:   a counter that is 0 at the end of the scope stays 0, and the warning "RECURSIVE MISMATCH ! Left
///           recursion with zero recursion count." is sent; what its receivers raise is lost.
class QX_API qxRecursiveBodyGuard
{
public:
    explicit qxRecursiveBodyGuard(unsigned int& counter) : m_counter(&counter) { ++counter; }
    virtual ~qxRecursiveBodyGuard();

    unsigned int getRecursionDepth() const { return *m_counter; }

private:
    qxRecursiveBodyGuard(const qxRecursiveBodyGuard&);
    qxRecursiveBodyGuard& operator=(const qxRecursiveBodyGuard&);

    unsigned int* m_counter;
};
