// SPDX-License-Identifier: see LICENSE

#include "qxthread.h"

#include "qxerror.h"
#include "qxguard.h"
#include "qxmessage.h"
#include "qxtime.h"

#include "platform/qxplatformthread.h"
#include "platform/qxplatformthreadlife.h"
#include "threads/qxthreadcount.h"
#include "threads/qxthreadenum.h"

namespace
{

constexpr unsigned int POLL_MILLISECONDS = 1;
constexpr unsigned int START_POLLS = 1000;
constexpr unsigned int IDLE_MILLISECONDS = 1000;  // between two looks of a body that only waits
constexpr unsigned int VISITOR_POLLS = 10 * 1000; // a thread that was ended inside `stop` does not come back

void enterThread(void* thread)
{
    static_cast<qxThread*>(thread)->wrapproc();
}

} // namespace

// Keeps the object from going while a thread is inside `run` or `stop` that comes back to it from a sleep.
class qxThread::Visit
{
public:
    explicit Visit(qxThread& thread) : m_visitors(thread.m_visitors) { ++m_visitors; }
    ~Visit() { --m_visitors; }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

private:
    std::atomic<unsigned int>& m_visitors;
};

// Holds the lock, unless the object goes meanwhile.
class qxThread::Locked
{
public:
    explicit Locked(const qxThread& thread) : m_watch(thread), m_lock(thread.m_lock) { m_lock.waitLock(); }
    ~Locked()
    {
        if (m_watch.isAlive()) m_lock.unLock();
    }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    const qxMemoryWatch m_watch;
    const qxMutex& m_lock;
};

// What is so while the body runs. At the end, also when the system unwinds the thread, it must not rely on the object.
class qxThread::Running
{
public:
    explicit Running(qxThread& thread) : m_thread(thread), m_watch(thread)
    {
        const qxBodyGuard guard(thread.m_lock);
        thread.m_isRunning = 1;
        thread.tickAlive_unsafe();
        thread.applyPriority();
        thread.setWorking(true);
    }
    ~Running()
    {
        if (m_watch.isAlive()) m_thread.working(0);
        qxReleaseThreadEnum(qxPlatformThreadId());
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    qxThread& m_thread;
    const qxMemoryWatch m_watch;
};

// The end of the thread's own work, in the same way.
class qxThread::Entry
{
public:
    explicit Entry(qxThread& thread) : m_thread(thread), m_watch(thread) {}
    ~Entry()
    {
        if (!m_watch.isAlive() || !leave()) return;
        try {
            delete &m_thread;
        } catch (const qxBaseError& error) { // destructors of counted objects may raise
            report(error);
        }
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

private:
    // True when the object is to be deleted; else it may be gone when this returns.
    bool leave()
    {
        const qxBodyGuard guard(m_thread.m_lock);
        m_thread.m_isRunning = 0;
        m_thread.m_isBodyOver = true;
        return m_thread.m_isAutoDelete != 0;
    }
    static void report(const qxBaseError& error)
    {
        try {
            error.reportError();
        } catch (const qxBaseError&) { // out of a receiver: there is nothing left to tell it with
        }
    }

    qxThread& m_thread;
    const qxMemoryWatch m_watch;
};

qxThread::qxThread(qxThreadPriority priority)
    : m_isStopping(0), m_isRunning(0), m_isAutoDelete(0), m_isWorking(0), m_priority(priority)
{}

qxThread::~qxThread() noexcept(false)
{
    qxThread::stop(1);
    qxPlatformSleep(POLL_MILLISECONDS);
    {
        const qxBodyGuard guard(m_lock);
        m_isRunning = 0; // the body itself may delete the object, and then others need not wait for it
        setWorking(false);
    }
    for (unsigned int i = 0; i < VISITOR_POLLS && m_visitors != 0; ++i) qxPlatformSleep(POLL_MILLISECONDS);
    closeThread();
}

void qxThread::stop(unsigned char wait)
{
    const Visit visit(*this);
    const qxBodyGuard guard(m_lock);
    stop_unsafe(wait);
}

unsigned char qxThread::run(unsigned char wait)
{
    const Visit visit(*this);
    const qxBodyGuard guard(m_lock);
    return run_unsafe(wait);
}

unsigned char qxThread::chain()
{
    const Locked locked(*this);
    return chain_unsafe();
}

void qxThread::process()
{
    const qxMemoryWatch watch(*this);
    while (watch.isAlive()) {
        if (isStopping(0)) return;
        qxPlatformSleep(IDLE_MILLISECONDS);
    }
}

void qxThread::kill()
{
    const qxBodyGuard guard(m_lock);
    kill_unsafe();
}

unsigned char qxThread::isRunning(unsigned char tick)
{
    const qxBodyGuard guard(m_lock);
    return isRunning_unsafe(tick);
}

unsigned char qxThread::isStopping(unsigned char tick)
{
    const qxBodyGuard guard(m_lock);
    return isStopping_unsafe(tick);
}

void qxThread::tickAlive()
{
    const qxBodyGuard guard(m_lock);
    tickAlive_unsafe();
}

void qxThread::setTickLimit(double seconds)
{
    const qxBodyGuard guard(m_lock);
    m_tickLimit = seconds > 0.0 ? seconds : 0.0; // 0 as well for what is not a number
}

double qxThread::getTickLimit() const
{
    const qxBodyGuard guard(m_lock);
    return m_tickLimit;
}

void qxThread::setAutoDelete(unsigned char on)
{
    const qxBodyGuard guard(m_lock);
    m_isAutoDelete = on != 0;
}

void qxThread::working(unsigned char on)
{
    const qxBodyGuard guard(m_lock);
    setWorking(on != 0);
}

void qxThread::setThreadPriority(qxThreadPriority priority)
{
    const qxBodyGuard guard(m_lock);
    m_priority = priority;
    applyPriority();
}

qxThreadInfo qxThread::getThreadInfo() const
{
    const qxBodyGuard guard(m_lock);
    return m_info;
}

void qxThread::wrapproc()
{
    const Entry entry(*this);
    execute(this);
}

unsigned char qxThread::run_unsafe(unsigned char wait)
{
    if (m_isRunning) return 1;
    m_isStopping = 0;
    closeThread();
    m_isBodyOver = false;
    m_lastAlive = qxTime::systemSeconds();

    // The new thread's first step needs the lock.
    m_thread = qxPlatformThreadStart(&enterThread, this);
    m_hasFailed = !m_thread;
    if (m_thread) m_info = {qxPlatformThreadIdOf(*m_thread), qxPlatformThreadHandleOf(*m_thread)};
    for (unsigned int i = 0; wait && i < START_POLLS && !m_isRunning && !m_isBodyOver && !isOver(); ++i)
        pause();
    if (!m_isBodyOver && (m_hasFailed || !isOver())) m_isRunning = 1;
    return 1;
}

void qxThread::stop_unsafe(unsigned char wait)
{
    m_isStopping = 1;
    tickAlive_unsafe();
    settle();
    if (!m_isRunning) {
        pause();
        return;
    }
    if (!wait || isCaller()) return;
    for (bool isWaiting = true; isWaiting;) {
        m_isStopping = 1;
        settle();
        isWaiting = m_isRunning != 0;
        pause();
    }
}

unsigned char qxThread::chain_unsafe()
{
    if (m_isRunning) return 0;
    m_isStopping = 0;
    m_isRunning = 1;
    closeThread();
    m_hasFailed = false;
    m_isBodyOver = false;
    m_info.threadId = qxPlatformThreadId();

    struct Unlocked {
        qxThread& thread;
        const qxMemoryWatch watch;
        explicit Unlocked(qxThread& unlocked) : thread(unlocked), watch(unlocked) { thread.m_lock.unLock(); }
        ~Unlocked()
        {
            if (!watch.isAlive()) return;
            thread.m_lock.waitLock();
            thread.m_isRunning = 0;
            thread.m_isStopping = 1;
        }
    };
    const Unlocked unlocked(*this);
    execute(this);
    return 1;
}

void qxThread::kill_unsafe()
{
    m_isRunning = 0;
    m_isStopping = 1;
    if (!m_thread || m_isBodyOver || !qxPlatformThreadIsActive(*m_thread)) return;
    if (qxPlatformThreadIsSelf(*m_thread)) {
        endSelf();
        return;
    }
    qxMessage::waitLock(); // not in the middle of a message
    qxPlatformThreadEnd(*m_thread);
    qxMessage::unLock(); // it may be waiting for that, and goes then
    qxPlatformThreadAwaitEnd(*m_thread);
    setWorking(false);
    qxReleaseThreadEnum(m_info.threadId);
}

unsigned char qxThread::isRunning_unsafe(unsigned char tick)
{
    if (tick) tickAlive_unsafe();
    settle();
    return m_isRunning;
}

unsigned char qxThread::isStopping_unsafe(unsigned char tick)
{
    if (tick) tickAlive_unsafe();
    settle();
    return m_isStopping;
}

void qxThread::tickAlive_unsafe()
{
    const double now = qxTime::systemSeconds();
    if (isCaller()) {
        m_lastAlive = now;
        return;
    }
    const bool isTooLate = m_tickLimit != 0.0 && now - m_lastAlive > m_tickLimit;
    if (isTooLate && m_thread && m_isRunning) kill_unsafe();
}

void qxThread::onProgramExecution()
{
    const Running running(*this);
    process();
}

bool qxThread::isCaller() const
{
    return m_info.threadId == qxPlatformThreadId();
}

// When the system had no thread for it that counts as well: else nothing would ever end such a run.
bool qxThread::isOver() const
{
    return m_hasFailed || (m_thread && !qxPlatformThreadIsActive(*m_thread));
}

void qxThread::settle()
{
    if (!isOver()) return;
    m_isRunning = 0;
    m_isStopping = 1;
    setWorking(false);
}

void qxThread::pause()
{
    m_lock.unLock();
    qxPlatformSleep(POLL_MILLISECONDS);
    m_lock.waitLock();
}

void qxThread::setWorking(bool on)
{
    if (on == (m_isWorking != 0)) return;
    m_isWorking = on;
    qxCountWorkingThread(on);
}

// Only while the body runs: before and after that the system may have given the thread's number to another one.
void qxThread::applyPriority()
{
    if (!m_thread || !m_isRunning || m_priority > QX_THREAD_HIGHEST || !qxAreThreadPrioritiesUsed()) return;
    const int steps = static_cast<int>(m_priority) - static_cast<int>(QX_THREAD_NORMAL);
    qxPlatformThreadSetPriority(*m_thread, steps);
}

void qxThread::closeThread()
{
    if (m_thread) qxPlatformThreadClose(m_thread);
    m_thread = nullptr;
    m_info = {};
}

// Returns only when the thread may not end here, and then without the lock.
void qxThread::endSelf()
{
    setWorking(false);
    qxReleaseThreadEnum(m_info.threadId);
    while (m_lock.getOwnerThreadID() == m_info.threadId) m_lock.unLock();
    qxPlatformThreadEndSelf();
}
