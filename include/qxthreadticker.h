// Work that is done again and again on threads of the library.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"
#include "qxthread.h"

#include <atomic>
#include <memory>

class qxThreadPoolTicker;

/// Something that ticks: derive, and put into onTick what is to be done at each tick.
///
/// The tickers of one pool and one priority share one thread, which exists as long as one of them ticks. Work that takes
/// long delays the others of its pool: give it a pool of its own. A ticker that comes late ticks once and not for each
/// tick missed; `dt` tells how long it was.
///
/// Lifetime: counted, or a plain object. **The destructor of a derived class calls stopTicker.** The one here does too, but
///           by then the derived part is gone while a tick may still run. A tick may delete its own object.
/// Threads:  any may start and stop it, also the tick itself. Only one at a time starts it.
/// Errors:   what a tick raises is reported and the ticking goes on, see qxProgramExecution. Where the system has no thread
///           for the pool, a warning is sent and startTicker returns 0.
class QX_API qxThreadTicker : public qxThreadSafeReference
{
public:
    QX_DECLARE_TYPE;

    static constexpr double SHORTEST_INTERVAL = 0.001; ///< seconds

    qxThreadTicker() = default;
    qxThreadTicker(const qxThreadTicker&) = delete;
    qxThreadTicker& operator=(const qxThreadTicker&) = delete;
    ~qxThreadTicker() noexcept(false) override;

    /// Calls onTick every `interval` seconds from one interval on from now, at least a millisecond apart, on the thread of
    /// the pool `poolID` with this priority. One that ticks goes on in the new way. Returns 1, or 0 without a thread.
    unsigned char startTicker(double interval, unsigned int poolID = 0,
                              qxThreadPriority priority = QX_THREAD_NORMAL);

    /// No tick begins after this, and one that runs has ended, unless it is the tick that calls this: that one goes on to
    /// its end. Must not be called with a lock held that the tick waits for.
    void stopTicker();

    bool isTicking() const;

protected:
    /// `now` is the time on the clock qxTime::systemSeconds, `dt` the seconds since the tick before or since the start.
    virtual void onTick(double now, double dt) = 0;

private:
    friend class qxThreadPoolTicker;

    // The pool's lock guards all fields but this one.
    std::atomic<qxThreadPoolTicker*> m_pool{nullptr}; // the latest; pools stay
    double m_interval = 0.0;                          // seconds
    double m_last = 0.0;                              // on the clock
    double m_next = 0.0;
    bool m_isTicking = false;
};

/// The tickers of one pool id and one priority, and the thread that they share.
///
/// Lifetime: made on first use, stays as long as the process. Holders share it.
/// Threads:  any.
class QX_API qxThreadPoolTicker : public qxThreadSafeReference
{
public:
    QX_DECLARE_TYPE;

    /// The pool of this id and priority.
    static qxRefPointer<qxThreadPoolTicker> getPool(unsigned int poolID,
                                                    qxThreadPriority priority = QX_THREAD_NORMAL);

    unsigned int getPoolID() const { return m_poolID; }
    qxThreadPriority getPriority() const { return m_priority; }

    /// The tickers that tick in it.
    unsigned int countTickers() const;

    bool useDeepCopy() override { return false; }

    /// Releases what is left of a thread whose work is done; so does the next ticker that starts.
    void letGo();

private:
    friend class qxThreadTicker;
    class Work;

    qxThreadPoolTicker(unsigned int poolID, qxThreadPriority priority);
    ~qxThreadPoolTicker() noexcept(false) override;

    const unsigned int m_poolID;
    const qxThreadPriority m_priority;
    const std::unique_ptr<Work> m_work;
};
