// SPDX-License-Identifier: see LICENSE

#include "qxsemaphore.h"

#include "qxguard.h"

#include "platform/qxplatformthread.h"

namespace
{

// A wake-up may come between a refused request and its sleep; these bounds make up for it.
constexpr unsigned int TRY_PERIOD_MILLISECONDS = 10;
constexpr unsigned int WAIT_PERIOD_MILLISECONDS = 100;

// Owner values of the reader/writer lock; no thread has such an id.
constexpr unsigned int READERS = 0;
constexpr unsigned int SHARED_WRITERS = 1;

} // namespace

qxSemaphore::qxSemaphore(unsigned int ownerValue, unsigned int lockCount, unsigned int maxLockCount)
    : m_lock(0), m_fields{maxLockCount, ownerValue, lockCount}
{}

qxSemaphore::qxSemaphore(const qxSemaphore& other)
    : m_lock(other.m_lock), m_fields(other.getFields()), m_event(other.m_event)
{}

qxSemaphore& qxSemaphore::operator=(const qxSemaphore& other)
{
    const Fields fields = other.getFields(); // one lock at a time: two may be assigned to each other
    qxBodyGuard guard(m_lock);
    m_fields = fields;
    m_event = other.m_event;
    return *this;
}

qxSemaphore::~qxSemaphore() noexcept(false) = default;

unsigned char qxSemaphore::tryLock(unsigned int value, unsigned int timeout) const
{
    if (grant(value)) return 1;
    for (unsigned int periods = timeout / TRY_PERIOD_MILLISECONDS; periods > 0; --periods) {
        m_event.wait(TRY_PERIOD_MILLISECONDS);
        if (grant(value)) return 1;
    }
    return 0;
}

unsigned char qxSemaphore::waitLock(unsigned int value) const
{
    while (!grant(value)) m_event.wait(WAIT_PERIOD_MILLISECONDS);
    return 1;
}

void qxSemaphore::unLock() const
{
    qxBodyGuard guard(m_lock);
    if (m_fields.lockCount != 0) --m_fields.lockCount;
    if (m_fields.lockCount == 0) m_event.fire();
}

unsigned int qxSemaphore::getOwnerValue() const
{
    return getFields().ownerValue;
}

unsigned int qxSemaphore::getSpinLockCount() const
{
    return getFields().lockCount;
}

unsigned int qxSemaphore::setMaxLockCount(unsigned int maxLockCount)
{
    qxBodyGuard guard(m_lock);
    const unsigned int before = m_fields.maxLockCount;
    m_fields.maxLockCount = maxLockCount;
    return before;
}

bool qxSemaphore::grant(unsigned int value) const
{
    qxBodyGuard guard(m_lock);
    if (m_fields.lockCount != 0 && m_fields.ownerValue != value) return false;
    if (m_fields.maxLockCount != 0 && m_fields.lockCount >= m_fields.maxLockCount) return false;
    m_fields.ownerValue = value;
    ++m_fields.lockCount;
    return true;
}

qxSemaphore::Fields qxSemaphore::getFields() const
{
    qxBodyGuard guard(m_lock);
    return m_fields;
}

void qxReadWriteMutex::waitLockRead() const
{
    waitLock(READERS);
}

void qxReadWriteMutex::waitLockSharedWrite() const
{
    waitLock(SHARED_WRITERS);
}

void qxReadWriteMutex::waitLockWrite() const
{
    waitLock(qxPlatformThreadId());
}

unsigned char qxReadWriteMutex::tryLockRead() const
{
    return tryLock(READERS, TRY_PERIOD_MILLISECONDS);
}

unsigned char qxReadWriteMutex::tryLockSharedWrite() const
{
    return tryLock(SHARED_WRITERS, TRY_PERIOD_MILLISECONDS);
}

unsigned char qxReadWriteMutex::tryLockWrite() const
{
    return tryLock(qxPlatformThreadId(), TRY_PERIOD_MILLISECONDS);
}
