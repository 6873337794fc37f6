// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "qxlist.h"
#include "qxthread.h"
#include "qxtime.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace
{

constexpr unsigned int START_PATIENCE = 50; // milliseconds for all waiters to start
constexpr unsigned int PASSES_WITHOUT_A_SLEEP = 100;
constexpr unsigned int UNLOAD_PATIENCE = 100; // milliseconds

std::atomic<unsigned int> s_waiters{0}; // that are there, in all calls

// Waiters run a little longer than the call that they are for. None may run in code that is not there any more.
struct Unload {
    ~Unload()
    {
        for (unsigned int i = 0; i < UNLOAD_PATIENCE && s_waiters != 0; ++i) qxThread::qxDelayFunction(1);
    }
};

const Unload s_unload;

} // namespace

/// Waits for one event on behalf of a thread that waits for several. Runs, and holds itself, until the call is over: so
/// the last to let go of it is its own thread, and the caller need not wait for that.
class qxEventWaiter final : public qxThread, public qxThreadSafeReference
{
public:
    using CallEnd = std::shared_ptr<std::atomic<bool>>; // true once the call is over

    qxEventWaiter(qxEvent* event, unsigned int timeout, CallEnd end)
        : m_event(event), m_timeout(timeout), m_end(std::move(end))
    {
        ++s_waiters;
    }
    ~qxEventWaiter() noexcept(false) override
    {
        qxThread::stop(1);
        --s_waiters;
    }

    /// False, and the caller holds it alone, when the system has no thread left.
    bool start()
    {
        ref();
        run(0);
        if (getThreadInfo().threadHandle) return true;
        unrefNoDelete();
        return false;
    }

    qxEvent* getEvent() const { return m_event.get(); }
    bool isStarted() const { return m_isStarted; }
    bool isWoken() const { return m_isWoken; }

protected:
    void process() override
    {
        m_event->waitLock();
        m_isStarted = true; // from here on a fire of somebody who takes the event's lock is seen
        if (m_event->waitUnlessStopped(m_timeout, *m_end)) m_isWoken = true;
        while (!*m_end) qxDelayFunction(1); // the caller is about to look
        unref();
    }

private:
    const qxRefPointer<qxEvent> m_event;
    const unsigned int m_timeout;
    const CallEnd m_end;
    std::atomic<bool> m_isStarted{false};
    std::atomic<bool> m_isWoken{false};
};

namespace
{

// The waiters of one call.
class Waiters
{
public:
    Waiters() = default;
    Waiters(const Waiters&) = delete;
    Waiters& operator=(const Waiters&) = delete;

    ~Waiters()
    {
        m_waiters.clear();
        *m_end = true;
    }

    // When the system has no thread left the event is not waited for.
    void start(qxEvent* event, unsigned int timeout)
    {
        const qxRefPointer<qxEventWaiter> waiter(new qxEventWaiter(event, timeout, m_end));
        if (waiter->start()) m_waiters.insert(waiter.get());
    }

    // Gives the waiters the time to fall asleep: what fires before is lost.
    void awaitStart() const
    {
        for (unsigned int i = 0; i < START_PATIENCE; ++i) {
            const bool areStarted =
                std::all_of(m_waiters.begin(), m_waiters.end(),
                            [](const qxEventWaiter* waiter) { return waiter->isStarted(); });
            if (areStarted) return;
            qxThread::qxDelayFunction(1);
        }
    }

    qxEvent* findWoken() const
    {
        for (const qxEventWaiter* const waiter : m_waiters) {
            if (waiter->isWoken()) return waiter->getEvent();
            qxThread::qxDelayFunction(0);
        }
        return nullptr;
    }

    bool isEmpty() const { return m_waiters.entries() == 0; }

private:
    const qxEventWaiter::CallEnd m_end = std::make_shared<std::atomic<bool>>(false);
    qxRefList<qxEventWaiter> m_waiters;
};

} // namespace

qxEvent* qxEvent::wait(const qxRefList<qxEvent>& events, unsigned int timeout)
{
    const double start = qxTime::systemSeconds();
    Waiters waiters;
    for (qxEvent* event : events) {
        if (!event) break;
        waiters.start(event, timeout);
    }
    waiters.awaitStart();

    for (unsigned int pass = 0;; ++pass) {
        if (qxEvent* const woken = waiters.findWoken()) return woken;
        if (!(timeout > (qxTime::systemSeconds() - start) * 1000.0)) return nullptr;
        if (waiters.isEmpty() || pass >= PASSES_WITHOUT_A_SLEEP) qxThread::qxDelayFunction(1);
    }
}
