// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "core/qxstaticlock.h"
#include "threads/qxclockanchor.h"

#include "platform/qxplatformclock.h"

#include <cmath>
#include <mutex>

namespace
{

// The anchor of the process. Reading takes no lock: who reads while it changes reads again.
class ClockState
{
public:
    qxClockAnchor getAnchor() const
    {
        for (;;) {
            const unsigned int version = m_version.load(std::memory_order_acquire);
            const qxClockAnchor anchor = {m_seconds.load(std::memory_order_acquire),
                                          m_counter.load(std::memory_order_acquire)};
            const bool isWhole = version % 2 == 0 && m_version.load(std::memory_order_relaxed) == version;
            if (isWhole) return anchor;
        }
    }

    /// Seconds of one step of the counter; set before there is an anchor.
    double getPeriod() const { return m_period.load(std::memory_order_relaxed); }

    /// Makes the first anchor; false when another thread was faster.
    bool begin(qxUInt64 counter)
    {
        const std::lock_guard guard(m_lock);
        if (m_seconds.load(std::memory_order_relaxed) != 0.0) return false;
        qxPlatformRefineTimer();
        m_period.store(qxPlatformCounterPeriod(), std::memory_order_relaxed);
        setAnchor({std::trunc(qxPlatformUtcSeconds()), counter});
        return true;
    }

    /// Replaces `anchor`; false when another thread was faster.
    bool replace(const qxClockAnchor& anchor, const qxClockAnchor& next)
    {
        const std::lock_guard guard(m_lock);
        if (m_seconds.load(std::memory_order_relaxed) != anchor.seconds ||
            m_counter.load(std::memory_order_relaxed) != anchor.counter)
            return false;
        setAnchor(next);
        return true;
    }

private:
    // Call with m_lock held. Whoever sees one of the new fields sees the odd version as well.
    void setAnchor(const qxClockAnchor& anchor)
    {
        const unsigned int version = m_version.load(std::memory_order_relaxed);
        m_version.store(version + 1, std::memory_order_relaxed);
        m_seconds.store(anchor.seconds, std::memory_order_release);
        m_counter.store(anchor.counter, std::memory_order_release);
        m_version.store(version + 2, std::memory_order_release);
    }

    std::atomic<unsigned int> m_version{0}; // odd while the next two fields change
    std::atomic<double> m_seconds{0.0};
    std::atomic<qxUInt64> m_counter{0};
    std::atomic<double> m_period{0.0};
    qxStaticLock m_lock; // held to change the fields above
};

constinit ClockState s_clock;

// The first reading, and those at which the counter has jumped or seems to have.
[[gnu::noinline]] double readWithCare()
{
    for (;;) {
        // In this order the counter is never behind an anchor that another thread has just made.
        const qxClockAnchor anchor = s_clock.getAnchor();
        const qxUInt64 counter = qxPlatformCounter();
        if (anchor.seconds == 0.0) {
            if (s_clock.begin(counter)) return s_clock.getAnchor().seconds;
            continue;
        }
        const qxClockReading reading = qxReadClock(anchor, counter, s_clock.getPeriod());
        if (!reading.hasJumped || s_clock.replace(anchor, reading.next)) return reading.seconds;
    }
}

} // namespace

std::atomic<double> qxTime::s_systemStartTime{qxTime::systemSeconds()};
constinit std::atomic<double> qxTime::s_systemTimeOffset{0.0};

qxTime::qxTime() : qxTime(now()) {}

qxTime qxTime::now(unsigned char local)
{
    return qxTime(systemSeconds() + getSystemTimeOffset() + (local ? getLocalTimeOffset() : 0.0));
}

double qxTime::systemSeconds()
{
    const qxUInt64 counter = qxPlatformCounter(); // first, so that nothing must be kept meanwhile
    const qxClockAnchor anchor = s_clock.getAnchor();
    const qxClockReading reading = qxReadClock(anchor, counter, s_clock.getPeriod());
    return anchor.seconds == 0.0 || reading.hasJumped ? readWithCare() : reading.seconds;
}

double qxTime::getTimeResolution()
{
    qxPlatformRefineTimer();
    return qxPlatformCounterPeriod();
}

double qxTime::getLocalTimeOffset()
{
    return qxPlatformZoneSeconds();
}

void qxTime::setTime(double seconds, unsigned char local)
{
    setSystemTimeOffset(seconds - systemSeconds() - (local ? getLocalTimeOffset() : 0.0));
}
