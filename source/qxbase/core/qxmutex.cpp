// SPDX-License-Identifier: see LICENSE

#include "qxmutex.h"

#include "qxmessage.h"

#include "platform/qxplatformlock.h"
#include "platform/qxplatformthread.h"

static_assert(QX_PLATFORM_LOCK_ROOM == 64, "qxMutex keeps the platform's lock in 64 bytes");

qxMutex::qxMutex(unsigned char trackOwner) : m_trackOwner(trackOwner)
{
    qxPlatformLockCreate(m_room);
}

qxMutex::qxMutex(const qxMutex& other) : qxMutex(other.m_trackOwner.load(std::memory_order_relaxed)) {}

qxMutex& qxMutex::operator=(const qxMutex& other)
{
    m_trackOwner.store(other.m_trackOwner.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *this;
}

qxMutex::~qxMutex() noexcept(false)
{
    if (m_depth.load(std::memory_order_relaxed) != 0) {
        try {
            qxMessage::message(QX_LEVEL_WARNING | QX_FLAG_UNTRANSLATED,
                               "qxMutex (%x) deleted with unbalanced Lock/unLock",
                               static_cast<const void*>(this));
        } catch (...) { // a warning must not end the process when this runs while another error is under way
        }
        if (isHeldByCaller()) qxPlatformLockLeave(m_room);
    }
    qxPlatformLockDestroy(m_room);
}

void qxMutex::waitLock() const
{
    const unsigned int caller = qxPlatformThreadId();
    if (m_holder.load(std::memory_order_relaxed) == caller) {
        m_depth.store(m_depth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return;
    }
    qxPlatformLockEnter(m_room);
    setHeld(caller, 1);
}

unsigned char qxMutex::tryLock() const
{
    const unsigned int caller = qxPlatformThreadId();
    if (m_holder.load(std::memory_order_relaxed) == caller) {
        m_depth.store(m_depth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return 1;
    }
    if (!qxPlatformLockTryEnter(m_room)) return 0;
    setHeld(caller, 1);
    return 1;
}

void qxMutex::unLock() const
{
    const unsigned int caller = qxPlatformThreadId();
    if (m_holder.load(std::memory_order_relaxed) != caller) return;

    const unsigned int count = m_depth.load(std::memory_order_relaxed) - 1;
    if (count != 0) {
        m_depth.store(count, std::memory_order_relaxed);
        return;
    }
    setHeld(0, 0);
    qxPlatformLockLeave(m_room); // another thread may delete the object from here on
}

bool qxMutex::isHeldByCaller() const
{
    return m_holder.load(std::memory_order_relaxed) == qxPlatformThreadId();
}

bool qxMutex::sleepReleased(void* conditionRoom, unsigned int milliseconds,
                            const std::atomic<bool>* stop) const
{
    const unsigned int holder = m_holder.load(std::memory_order_relaxed);
    const unsigned int count = m_depth.load(std::memory_order_relaxed);
    setHeld(0, 0);
    const bool woken = qxPlatformConditionSleep(conditionRoom, m_room, milliseconds, stop);
    setHeld(holder, count);
    return woken;
}

void qxMutex::setHeld(unsigned int holder, unsigned int count) const
{
    m_depth.store(count, std::memory_order_relaxed);
    m_holder.store(holder, std::memory_order_relaxed);
}
