// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthreadlife.h"

#include "platform/posix/qxplatformending.h"
#include "platform/posix/qxplatformstack.h"
#include "platform/qxplatformthread.h"

#include <cerrno>
#include <mutex>
#include <new>

#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

struct qxPlatformThread {
    void (*body)(void*);
    void* argument;
    qxPlatformStack stack{};
    pthread_t handle{};
    std::atomic<unsigned int> id{0}; // 0: not known yet
    qxPlatformEnding ending{};
    bool isJoined = false;
    bool isClosedByItself = false; // the thread's own
    qxPlatformThread* next = nullptr;
};

namespace
{

constexpr unsigned int UNLOAD_PATIENCE = 100; // milliseconds
constexpr int NICE_PER_PRIORITY = -5;

__attribute__((tls_model("initial-exec"))) thread_local qxPlatformThread* t_self = nullptr;

// Those that closed themselves and are over or about to be: joined by whoever comes by.
std::mutex s_lock; // guards the list
qxPlatformThread* s_closed = nullptr;

std::atomic<unsigned int> s_living{0}; // threads that were started and not joined yet

void onEndSignal(int, siginfo_t*, void*)
{
    if (qxPlatformOwnEnding) qxPlatformEndWhenWanted(*qxPlatformOwnEnding);
}

// The highest real-time signal that nobody uses; 0 without one.
int installEndSignal()
{
    for (int number = SIGRTMAX; number >= SIGRTMIN; --number) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_sigaction = &onEndSignal;
        action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
        sigfillset(&action.sa_mask);
        if (sigaction(number, &action, nullptr) == 0) return number;
    }
    return 0;
}

int endSignal()
{
    static const int number = installEndSignal();
    return number;
}

// A thread has the blocked signals of the one that started it.
void unblockEndSignal()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, endSignal());
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void release(qxPlatformThread* thread)
{
    qxPlatformGiveStack(thread->stack, !thread->ending.isWanted.load(std::memory_order_relaxed));
    delete thread;
    --s_living;
}

// Joins those on the list that are gone, which is to say nearly all of them; returns whether it is empty then.
bool joinClosed()
{
    const qxPlatformNotNow notNow;
    const std::lock_guard<std::mutex> guard(s_lock);
    for (qxPlatformThread** place = &s_closed; *place;) {
        qxPlatformThread* const thread = *place;
        if (pthread_tryjoin_np(thread->handle, nullptr) == 0) {
            *place = thread->next;
            release(thread);
        } else {
            place = &thread->next;
        }
    }
    return s_closed == nullptr;
}

// The body's own end, also when the system unwinds the thread. From here on it cannot be ended any more.
struct BodyEnd {
    ~BodyEnd()
    {
        qxPlatformEnterNotNow(); // for good
        if (t_self->isClosedByItself) {
            const std::lock_guard<std::mutex> guard(s_lock);
            t_self->next = s_closed;
            s_closed = t_self;
        } else {
            t_self->ending.isDone.store(true, std::memory_order_release);
        }
    }
};

void runBody(void* argument)
{
    qxPlatformThread& self = *static_cast<qxPlatformThread*>(argument);
    const BodyEnd end;
    qxPlatformLeaveNotNow();
    self.body(self.argument);
}

void* runThread(void* argument)
{
    qxPlatformThread& self = *static_cast<qxPlatformThread*>(argument);
    t_self = &self;
    self.id.store(qxPlatformThreadId(), std::memory_order_release);
    unblockEndSignal();
    qxPlatformRunEndable(self.ending, &runBody, argument);
    return nullptr;
}

bool create(qxPlatformThread& thread)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, thread.stack.memory, thread.stack.size);
    const int result = pthread_create(&thread.handle, &attributes, &runThread, &thread);
    pthread_attr_destroy(&attributes);
    return result == 0;
}

// The kernel's number of a thread that has not said it yet, out of that of its clock: its bits are inverted above the
// lowest three. 0 when the system does not say.
unsigned int idFromClock(pthread_t handle)
{
    clockid_t clock = 0;
    if (pthread_getcpuclockid(handle, &clock) != 0 || clock >= 0) return 0;
    return static_cast<unsigned int>(~(clock >> 3));
}

// Known when the start returns. Waiting for the new thread to say it would double the time of a start.
void learnId(qxPlatformThread& thread)
{
    unsigned int id = idFromClock(thread.handle);
    if (id <= 1) {
        while (thread.id.load(std::memory_order_acquire) == 0) qxPlatformYield();
        return;
    }
    unsigned int unknown = 0;
    thread.id.compare_exchange_strong(unknown, id);
}

struct Unload {
    ~Unload() { qxPlatformThreadAwaitClosed(); }
};

const Unload s_unload;

} // namespace

qxPlatformThread* qxPlatformThreadStart(void (*body)(void*), void* argument)
{
    const qxPlatformNotNow notNow;
    joinClosed();
    endSignal();
    qxPlatformThread* const thread = new (std::nothrow) qxPlatformThread{body, argument};
    if (!thread) return nullptr;
    thread->stack = qxPlatformTakeStack();
    if (!thread->stack.memory || !create(*thread)) {
        if (thread->stack.memory) qxPlatformGiveStack(thread->stack, true);
        delete thread;
        return nullptr;
    }
    ++s_living;
    learnId(*thread);
    return thread;
}

unsigned int qxPlatformThreadIdOf(const qxPlatformThread& thread)
{
    return thread.id.load(std::memory_order_relaxed);
}

void* qxPlatformThreadHandleOf(const qxPlatformThread& thread)
{
    return reinterpret_cast<void*>(thread.handle);
}

bool qxPlatformThreadIsSelf(const qxPlatformThread& thread)
{
    return t_self == &thread;
}

bool qxPlatformThreadIsActive(const qxPlatformThread& thread)
{
    return !thread.ending.isDone.load(std::memory_order_acquire);
}

void qxPlatformThreadClose(qxPlatformThread* thread)
{
    if (qxPlatformThreadIsSelf(*thread)) {
        thread->isClosedByItself = true;
        return;
    }
    qxPlatformThreadAwaitEnd(*thread);
    release(thread);
}

void qxPlatformThreadEnd(qxPlatformThread& thread)
{
    if (thread.isJoined || endSignal() == 0) return;
    thread.ending.isWanted.store(true, std::memory_order_release);
    // The system may have no room left for a further signal.
    while (qxPlatformThreadIsActive(thread) && pthread_kill(thread.handle, endSignal()) == EAGAIN)
        qxPlatformYield();
}

void qxPlatformThreadAwaitEnd(qxPlatformThread& thread)
{
    if (thread.isJoined) return;
    pthread_join(thread.handle, nullptr);
    thread.isJoined = true;
}

void qxPlatformThreadEndSelf()
{
    t_self->ending.isWanted.store(true, std::memory_order_release);
    qxPlatformEndWhenWanted(t_self->ending);
}

void qxPlatformThreadSetPriority(const qxPlatformThread& thread, int priority)
{
    if (qxPlatformThreadIsActive(thread))
        setpriority(PRIO_PROCESS, qxPlatformThreadIdOf(thread), priority * NICE_PER_PRIORITY);
}

void qxPlatformThreadAwaitClosed()
{
    for (unsigned int i = 0; i < UNLOAD_PATIENCE; ++i) {
        joinClosed();
        if (s_living == 0) return;
        qxPlatformSleep(1);
    }
}
