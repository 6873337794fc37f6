// SPDX-License-Identifier: see LICENSE

#include "qxthreadticker.h"

#include "core/qxneverdestroyed.h"
#include "qxevent.h"
#include "qxguard.h"
#include "qxmessage.h"
#include "qxprogramexecution.h"
#include "qxtime.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <utility>

QX_DEFINE_TYPE(qxThreadTicker, qxThreadSafeReference)
QX_DEFINE_TYPE(qxThreadPoolTicker, qxThreadSafeReference)

namespace
{

constexpr double SHORTEST = qxThreadTicker::SHORTEST_INTERVAL;
constexpr double LONGEST_SLEEP = 3600.0; // seconds; intervals may be anything
constexpr unsigned int FOREVER = 0xFFFFFFFF;

// All pools there are.
struct Pools {
    qxMutex lock; // guards the other field
    std::map<std::pair<unsigned int, qxThreadPriority>, qxRefPointer<qxThreadPoolTicker>> pools;
};

Pools& getPools()
{
    static qxNeverDestroyed<Pools> pools;
    return pools.get();
}

// The thread of a pool, and what it runs.
class Worker : public qxThread
{
public:
    class Body
    {
    public:
        virtual void run(const Worker& worker) = 0;

    protected:
        ~Body() = default;
    };

    Worker(Body& body, qxThreadPriority priority) : qxThread(priority), m_body(body) {}
    ~Worker() noexcept(false) override { qxThread::stop(1); }

protected:
    void process() override { m_body.run(*this); }

private:
    Body& m_body;
};

} // namespace

// What a pool does. The lock is never held while a tick runs.
class qxThreadPoolTicker::Work final : public Worker::Body
{
public:
    bool add(qxThreadTicker& ticker, double interval, qxThreadPriority priority)
    {
        const qxBodyGuard guard(m_change);
        take(ticker);
        ticker.m_interval = interval > SHORTEST ? interval : SHORTEST; // also for what is not a number
        ticker.m_last = qxTime::systemSeconds();
        enter(ticker, ticker.m_last + ticker.m_interval);
        if (isAtWork(priority)) {
            m_change.fire();
            return true;
        }
        take(ticker);
        return false;
    }

    void remove(qxThreadTicker& ticker)
    {
        std::unique_ptr<Worker> ended; // waits for its thread when it goes, without the lock
        const qxBodyGuard guard(m_change);
        take(ticker);
        if (m_tickThread == qxThread::getThreadID()) return;
        while (m_ticking == &ticker) {
            m_change.waitAndLock(FOREVER, 1);
            take(ticker); // the tick may have started it again
        }
        if (!m_due.empty() || m_ticking) return; // or else its end is its own
        ended = std::move(m_worker);
        m_change.fire();
    }

    bool has(const qxThreadTicker& ticker)
    {
        const qxBodyGuard guard(m_change);
        return ticker.m_isTicking;
    }

    unsigned int count()
    {
        const qxBodyGuard guard(m_change);
        return static_cast<unsigned int>(m_due.size());
    }

    // Until no ticker is left, or another thread has taken over.
    void run(const Worker& worker) override
    {
        const qxBodyGuard guard(m_change);
        while (m_worker.get() == &worker && !m_due.empty()) {
            const auto [next, ticker] = *m_due.begin();
            const double now = qxTime::systemSeconds();
            if (next > now)
                sleep(next - now);
            else
                tick(*ticker, now);
        }
        if (m_worker.get() == &worker) m_isOver = true;
    }

    // Lets a thread go that is at its end. Takes nothing for granted: at unload a thread that the system has ended may hold
    // the lock.
    void clear()
    {
        if (!m_change.tryLock()) return;
        if (m_isOver) m_worker.reset();
        m_change.unLock();
    }

private:
    class Tick : public qxProgramExecution
    {
    public:
        Tick(qxThreadTicker& ticker, double now, double dt) : m_ticker(ticker), m_now(now), m_dt(dt) {}

    private:
        void onProgramExecution() override { m_ticker.onTick(m_now, m_dt); }

        qxThreadTicker& m_ticker; // may be gone after its tick
        const double m_now;
        const double m_dt;
    };

    void enter(qxThreadTicker& ticker, double next)
    {
        ticker.m_next = next;
        ticker.m_isTicking = true;
        m_due.emplace(next, &ticker);
    }

    void take(qxThreadTicker& ticker)
    {
        if (!ticker.m_isTicking) return;
        m_due.erase({ticker.m_next, &ticker});
        ticker.m_isTicking = false;
    }

    // Sees to it that there is a thread; false when the system has none.
    bool isAtWork(qxThreadPriority priority)
    {
        if (m_worker && !m_isOver) return true;
        m_isOver = false;
        m_worker =
            std::make_unique<Worker>(*this, priority); // the one before does not need the lock any more
        m_worker->run(0);
        if (m_worker->isRunning()) return true; // it cannot end before it gets the lock
        m_worker.reset();
        return false;
    }

    void sleep(double seconds)
    {
        seconds = std::clamp(seconds, SHORTEST, LONGEST_SLEEP);
        m_change.waitAndLock(static_cast<unsigned int>(std::ceil(seconds * 1000.0)), 1);
    }

    void tick(qxThreadTicker& ticker, double now)
    {
        const double dt = now - ticker.m_last;
        take(ticker);
        ticker.m_last = now;
        enter(ticker, std::max(ticker.m_next + ticker.m_interval, now + SHORTEST));
        m_ticking = &ticker;
        m_tickThread = qxThread::getThreadID();
        m_change.unLock();
        Tick(ticker, now, dt).execute();
        m_change.waitLock();
        m_ticking = nullptr;
        m_tickThread = 0;
        m_change.fire();
    }

    qxEvent m_change;                                   // its lock guards all that follows
    std::set<std::pair<double, qxThreadTicker*>> m_due; // by the time of the next tick
    qxThreadTicker* m_ticking = nullptr;                // whose tick runs
    unsigned int m_tickThread = 0;
    std::unique_ptr<Worker> m_worker; // the thread that looks at what is due
    bool m_isOver = false;            // it does not any more
};

namespace
{

struct Unload {
    ~Unload()
    {
        if (!getPools().lock.tryLock()) return;
        for (const auto& [name, pool] : getPools().pools) pool->letGo();
        getPools().lock.unLock();
    }
};

const Unload s_unload;

} // namespace

qxThreadTicker::~qxThreadTicker() noexcept(false)
{
    qxThreadTicker::stopTicker();
}

unsigned char qxThreadTicker::startTicker(double interval, unsigned int poolID, qxThreadPriority priority)
{
    qxThreadPoolTicker* const pool = qxThreadPoolTicker::getPool(poolID, priority);
    if (m_pool != pool) stopTicker();
    m_pool = pool;
    if (pool->m_work->add(*this, interval, priority)) return 1;
    qxMessage::message(QX_LEVEL_WARNING, "The system has no thread for ticks");
    return 0;
}

void qxThreadTicker::stopTicker()
{
    if (qxThreadPoolTicker* const pool = m_pool) pool->m_work->remove(*this);
}

bool qxThreadTicker::isTicking() const
{
    const qxThreadPoolTicker* const pool = m_pool;
    return pool && pool->m_work->has(*this);
}

qxThreadPoolTicker::qxThreadPoolTicker(unsigned int poolID, qxThreadPriority priority)
    : m_poolID(poolID), m_priority(priority), m_work(std::make_unique<Work>())
{}

qxThreadPoolTicker::~qxThreadPoolTicker() noexcept(false) = default;

qxRefPointer<qxThreadPoolTicker> qxThreadPoolTicker::getPool(unsigned int poolID, qxThreadPriority priority)
{
    Pools& pools = getPools();
    const qxBodyGuard guard(pools.lock);
    qxRefPointer<qxThreadPoolTicker>& pool = pools.pools[{poolID, priority}];
    if (!pool) pool = new qxThreadPoolTicker(poolID, priority);
    return pool;
}

unsigned int qxThreadPoolTicker::countTickers() const
{
    return m_work->count();
}

void qxThreadPoolTicker::letGo()
{
    m_work->clear();
}
