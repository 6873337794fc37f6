// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "platform/qxplatformlock.h"

#include <atomic>

static_assert(QX_PLATFORM_CONDITION_ROOM == 64, "qxEvent keeps the platform's condition in 64 bytes");

qxEvent::qxEvent()
{
    qxPlatformConditionCreate(m_condition);
}

qxEvent::qxEvent(const qxEvent& other) : qxReference(other), qxMutex(other)
{
    qxPlatformConditionCreate(m_condition);
}

qxEvent& qxEvent::operator=(const qxEvent& other)
{
    qxReference::operator=(other);
    qxMutex::operator=(other);
    return *this;
}

qxEvent::~qxEvent() noexcept(false)
{
    qxPlatformConditionDestroy(m_condition);
}

void qxEvent::fire() const
{
    qxPlatformConditionWakeAll(m_condition);
}

void qxEvent::fireOnlyOne() const
{
    qxPlatformConditionWakeOne(m_condition);
}

unsigned char qxEvent::wait(unsigned int timeout, unsigned char locked) const
{
    const unsigned char woken = waitAndLock(timeout, locked);
    unLock();
    return woken;
}

unsigned char qxEvent::waitAndLock(unsigned int timeout, unsigned char locked) const
{
    if (!locked || !isHeldByCaller()) waitLock();
    return timeout != 0 && sleepReleased(m_condition, timeout);
}

unsigned char qxEvent::waitUnlessStopped(unsigned int timeout, const std::atomic<bool>& stop) const
{
    const bool woken = timeout != 0 && sleepReleased(m_condition, timeout, &stop);
    unLock();
    return woken;
}

// The count is atomic and not guarded by the event's lock: copying a holder need not wait for a thread that
// sits inside that lock.

void qxEvent::ref()
{
    std::atomic_ref<unsigned int>(m_count).fetch_add(1, std::memory_order_relaxed);
}

void qxEvent::unref()
{
    if (countDown("REFERENCE MISMATCH ! Unref an object with zero reference count.") == 1) checkDelete();
}

unsigned int qxEvent::unrefNoDelete()
{
    const unsigned int before = countDown("REFRENCE MISMATCH ! Unref an object with zero reference count.");
    return before == 0 ? 0 : before - 1;
}

bool qxEvent::checkDelete()
{
    waitLock();
    const unsigned int count = getRef();
    unLock(); // another thread that holds the event may delete it from here on
    if (count != 0) return false;
    delete this;
    return true;
}

unsigned int qxEvent::getRef() const
{
    return std::atomic_ref<unsigned int>(const_cast<unsigned int&>(m_count)).load(std::memory_order_acquire);
}

unsigned int qxEvent::countDown(const char* mismatch)
{
    const std::atomic_ref<unsigned int> shared(m_count);
    unsigned int count = shared.load(std::memory_order_relaxed);
    do {
        if (count == 0) {
            raiseMismatch(mismatch);
            return 0;
        }
    } while (!shared.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel));
    return count;
}
