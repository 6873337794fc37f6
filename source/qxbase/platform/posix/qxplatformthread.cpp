// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthread.h"

#include "platform/qxplatformnotnow.h"

#include <cerrno>

#include <pthread.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

namespace
{

// The kernel numbers processes and threads below this on every 64-bit machine.
constexpr unsigned int KERNEL_LIMIT = 1U << 22;

// Initial-exec: read as an offset from the thread's base, also in the shared library.
__attribute__((tls_model("initial-exec"))) thread_local unsigned int t_threadId = 0; // 0: not asked yet
__attribute__((tls_model("initial-exec"))) thread_local unsigned int t_note = 0;

void forgetThreadId()
{
    t_threadId = 0;
}

unsigned int askThreadId()
{
    // The child of a fork has one thread, a copy of the one that called, and runs this there.
    [[maybe_unused]] static const int registered = pthread_atfork(nullptr, nullptr, &forgetThreadId);

    const unsigned int id = static_cast<unsigned int>(gettid());
    t_threadId = id > 1 ? id : KERNEL_LIMIT + id;
    return t_threadId;
}

// The signal that ends a thread needs no help, but the thread sanitizer keeps signals back while the thread calls nothing
// that it watches.
void lookForEnd()
{
    if (qxPlatformOwnEnding) qxPlatformEndWhenWanted(*qxPlatformOwnEnding);
}

} // namespace

unsigned int qxPlatformThreadId()
{
    const unsigned int id = t_threadId;
    return id != 0 ? id : askThreadId();
}

unsigned int qxPlatformThreadNote()
{
    return t_note;
}

void qxPlatformSetThreadNote(unsigned int note)
{
    t_note = note;
}

void qxPlatformSleep(unsigned int milliseconds)
{
    if (milliseconds == 0) {
        qxPlatformYield();
        return;
    }
    timespec rest;
    rest.tv_sec = milliseconds / 1000;
    rest.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &rest, &rest) == EINTR) lookForEnd();
    lookForEnd();
}

void qxPlatformYield()
{
    sched_yield();
    lookForEnd();
}

void qxPlatformGuardForks(void (*before)(), void (*after)())
{
    pthread_atfork(before, after, after);
}
