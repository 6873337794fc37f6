// Threads, and what the library asks of them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemorycheck.h"
#include "qxmutex.h"
#include "qxprogramexecution.h"

#include <atomic>

struct qxPlatformThread;

/// The priorities of threads. Other values leave a thread's priority as it is.
enum qxThreadPriority : unsigned int {
    QX_THREAD_LOWEST = 0,
    QX_THREAD_BELOW_NORMAL = 1,
    QX_THREAD_NORMAL = 2,
    QX_THREAD_ABOVE_NORMAL = 3,
    QX_THREAD_HIGHEST = 4
};

/// The system's names of a thread; both are zero when there is none.
struct qxThreadInfo {
    unsigned int threadId = 0; // as getThreadID answers on the thread
    void* threadHandle = nullptr;
};

/// A thread of its own for a body of code: derive, and put the body into `process`.
///
/// The body is asked to stop and looks at isStopping now and then; nothing else makes it return. With a tick limit it
/// must call tickAlive, or isStopping with 1, more often than that, or the next other thread that asks for it ends it.
///
/// Lifetime: **the destructor of a derived class calls stop(1)**. The one here does too, but by then the derived part is
///           gone while the body may still run. A body may delete its own object; with auto delete that happens at the
///           body's end, the object is on the heap then and nobody else touches it after `run`, unless it is inside
///           `run` or `stop` already.
/// Threads:  any may call all operations; calls of the thread itself never wait for its end.
/// Errors:   what the body raises is reported, see qxProgramExecution. When the system has no thread left, `run` does
///           not tell; the next isRunning does.
class QX_API qxThread : public qxMemoryCheck, public qxProgramExecution
{
public:
    qxThread() : qxThread(QX_THREAD_NORMAL) {}
    explicit qxThread(qxThreadPriority priority);
    qxThread(const qxThread&) = delete;
    qxThread& operator=(const qxThread&) = delete;

    /// Waits for the end of the body, without limit.
    ~qxThread() noexcept(false) override;

    /// Asks the body to return. With `wait` it waits until that has happened, without limit; looks every millisecond.
    virtual void stop(unsigned char wait);

    /// Starts the thread; one that runs is left alone. With `wait` it waits until the body is about to begin, at most
    /// about a second. Returns 1.
    virtual unsigned char run(unsigned char wait);

    /// Runs the body on the calling thread, to its end, and returns 1; 0 when it runs already.
    virtual unsigned char chain();

protected:
    /// The body. The base waits, a second at a time, to be stopped.
    virtual void process();

public:
    /// Ends the thread wherever it is; nothing of it runs any more, not even destructors. What belongs to the whole
    /// process, such as the library's heap, the message lock and the like, stays in order: the end waits for that. But
    /// other locks that the body holds stay held, also those inside the C library, and its memory stays taken. The object
    /// stays, also with auto delete. Where the system has signals it takes the highest real-time one that is unused when
    /// the first thread starts; a body that blocks all signals is ended when it lets them in again.
    ///
    /// A thread that calls this itself does not return from it, unless it is inside a message: then it ends after that.
    /// Others must not call this with the message lock held.
    void kill();

    /// Whether the body runs. With `tick` as tickAlive besides. A thread that the system has ended is not running.
    unsigned char isRunning(unsigned char tick = 0);

    /// Whether the body is to return, which it asks this for. With `tick` as tickAlive besides.
    unsigned char isStopping(unsigned char tick = 0);

    /// Called by the thread itself: it is alive. Called by another one: ends the thread, as kill does, if it has not said
    /// so for longer than the tick limit.
    void tickAlive();

    /// Seconds; 0 and less mean no limit, as at the start.
    void setTickLimit(double seconds);
    double getTickLimit() const;

    /// With 1 the object is deleted at the end of the body.
    void setAutoDelete(unsigned char on);

    /// Counts the thread among the working ones, or not any more. It counts while its body runs, unless that says
    /// something else.
    void working(unsigned char on);

    /// Of all threads.
    static unsigned int getWorkingCount();

    /// Holds from now on, also for a thread that runs. On systems where a thread's priority is its niceness the steps are
    /// 10, 5, 0, -5 and -10; raising it needs a privilege there and else changes nothing.
    void setThreadPriority(qxThreadPriority priority);

    /// With 0, priorities are noted but not applied any more, for all threads; 1 is the start.
    static void useThreadPriorities(unsigned char on);

    /// Of the latest thread, also when it has ended. After chain, of the thread that called it, without a handle.
    qxThreadInfo getThreadInfo() const;

    /// What the new thread runs: the body, its reports and its end.
    void wrapproc();

    /// The platform's id of the calling thread; never 0 or 1, which stand for readers and shared writers.
    static unsigned int getThreadID();

    /// A small number, 0 to 9,999, for a thread of this id or, with 0, for the calling one, to index arrays with. It
    /// stays the thread's until it ends, then another one may get it. 10,000 when there is none left.
    static unsigned int getThreadEnum(unsigned int threadID = 0);

    /// Sleeps `milliseconds`; firing `event`, when there is one, ends the sleep early. With 0 and no event it
    /// yields the processor.
    static void qxDelayFunction(unsigned int milliseconds, qxEvent* event = nullptr);

    /// Waits busily for `microseconds`; 0 yields the processor.
    static void qxMicroDelayFunction(unsigned int microseconds);

protected:
    // As those without the ending, for callers that hold the object's lock, once. Those that wait, and chain, give it up
    // meanwhile.
    unsigned char run_unsafe(unsigned char wait);
    void stop_unsafe(unsigned char wait);
    unsigned char chain_unsafe();
    void kill_unsafe();
    unsigned char isRunning_unsafe(unsigned char tick);
    unsigned char isStopping_unsafe(unsigned char tick);
    void tickAlive_unsafe();

    /// Runs `process` as the body of the calling thread.
    void onProgramExecution() override;

    mutable qxMutex m_lock; // guards all fields

private:
    class Visit;
    class Locked;
    class Running;
    class Entry;

    // All want the lock held.
    bool isCaller() const;
    bool isOver() const;
    void settle();
    void pause();
    void setWorking(bool on);
    void applyPriority();
    void closeThread();
    void endSelf();

    unsigned char m_isStopping : 1;
    unsigned char m_isRunning : 1;
    unsigned char m_isAutoDelete : 1;
    unsigned char m_isWorking : 1;
    unsigned char : 4; // never touched

    qxThreadPriority m_priority;
    qxThreadInfo m_info;
    double m_lastAlive = 0.0; // on the clock of qxTime::systemSeconds
    double m_tickLimit = 0.0; // seconds

    qxPlatformThread* m_thread = nullptr;    // what the handle is of
    bool m_hasFailed = false;                // the system had no thread for the latest run
    bool m_isBodyOver = false;               // of the latest run
    std::atomic<unsigned int> m_visitors{0}; // threads in run or stop that come back to the lock
};
