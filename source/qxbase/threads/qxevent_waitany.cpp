// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "qxlist.h"
#include "qxthread.h"
#include "qxtime.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

/// Waits for one event on behalf of a thread that waits for several.
class qxEventWaiter
{
public:
    qxEventWaiter(qxEvent* event, unsigned int timeout) : m_event(event), m_timeout(timeout) {}

    /// The body of the waiter's thread.
    void process()
    {
        m_event->waitLock();
        m_isStarted = true; // from here on a fire of somebody who takes the event's lock is seen
        if (m_event->waitUnlessStopped(m_timeout, m_isStopping)) m_isWoken = true;
        m_event = nullptr;
        m_isDone = true;
    }

    void stop() { m_isStopping = true; }
    bool isStarted() const { return m_isStarted; }
    bool isWoken() const { return m_isWoken; }
    bool isDone() const { return m_isDone; }

private:
    qxRefPointer<qxEvent> m_event; // let go by the waiter's own thread at its end
    const unsigned int m_timeout;
    std::atomic<bool> m_isStarted{false};
    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_isWoken{false};
    std::atomic<bool> m_isDone{false};
};

namespace
{

constexpr unsigned int START_PATIENCE = 50; // milliseconds for all waiters to start
constexpr unsigned int PASSES_WITHOUT_A_SLEEP = 100;
constexpr unsigned int UNLOAD_PATIENCE = 100; // milliseconds

struct Waiting {
    qxEvent* event;
    std::shared_ptr<qxEventWaiter> waiter; // shared with its thread
    std::thread thread;
};

// The waiters of calls that have returned. Such a call does not wait for them: they go within 10 milliseconds
// and are joined by a later call or, so that none runs in code that is not there any more, at unload.
class Leftovers
{
public:
    static Leftovers& get()
    {
        static Leftovers* const leftovers = new Leftovers; // never destroyed: calls may outlast the statics
        return *leftovers;
    }

    void take(std::list<Waiting>& waitings) noexcept
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        joinDone();
        m_waitings.splice(m_waitings.end(), waitings);
    }

    void goDown()
    {
        for (unsigned int i = 0; i < UNLOAD_PATIENCE && !isEmpty(); ++i) qxThread::qxDelayFunction(1);
        const std::lock_guard<std::mutex> guard(m_lock);
        for (Waiting& waiting : m_waitings) waiting.thread.detach(); // stuck: somebody holds the event's lock
        m_waitings.clear();
    }

private:
    bool isEmpty()
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        joinDone();
        return m_waitings.empty();
    }

    void joinDone()
    {
        m_waitings.remove_if([](Waiting& waiting) {
            if (!waiting.waiter->isDone()) return false;
            waiting.thread.join();
            return true;
        });
    }

    std::mutex m_lock;
    std::list<Waiting> m_waitings;
};

struct Unload {
    ~Unload() { Leftovers::get().goDown(); }
};

const Unload s_unload;

// The waiters of one call.
class Waiters
{
public:
    Waiters() = default;
    Waiters(const Waiters&) = delete;
    Waiters& operator=(const Waiters&) = delete;

    ~Waiters()
    {
        for (Waiting& waiting : m_waitings) waiting.waiter->stop();
        Leftovers::get().take(m_waitings);
    }

    // When the system has no thread left the event is not waited for.
    void start(qxEvent* event, unsigned int timeout)
    {
        const auto waiter = std::make_shared<qxEventWaiter>(event, timeout);
        m_waitings.push_back({event, waiter, std::thread()});
        try {
            m_waitings.back().thread = std::thread([waiter] { waiter->process(); });
        } catch (const std::system_error&) {
            m_waitings.pop_back();
        }
    }

    // Gives the waiters the time to fall asleep: what fires before is lost.
    void awaitStart() const
    {
        for (unsigned int i = 0; i < START_PATIENCE; ++i) {
            const bool areStarted =
                std::all_of(m_waitings.begin(), m_waitings.end(),
                            [](const Waiting& waiting) { return waiting.waiter->isStarted(); });
            if (areStarted) return;
            qxThread::qxDelayFunction(1);
        }
    }

    qxEvent* findWoken() const
    {
        for (const Waiting& waiting : m_waitings) {
            if (waiting.waiter->isWoken()) return waiting.event;
            qxThread::qxDelayFunction(0);
        }
        return nullptr;
    }

    bool isEmpty() const { return m_waitings.empty(); }

private:
    std::list<Waiting> m_waitings;
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
