// SPDX-License-Identifier: see LICENSE

#include "platform/posix/qxplatformending.h"

#include <csetjmp>

#include <sys/syscall.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QX_IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QX_IS_SANITIZED
#endif
#endif

constinit thread_local qxPlatformEnding* qxPlatformOwnEnding = nullptr;

namespace
{

#if defined(QX_IS_SANITIZED)

// Sanitizers go on counting a thread that goes without their knowing, and may wait for it: there it returns from its start.
__attribute__((tls_model("initial-exec"))) thread_local sigjmp_buf* t_start = nullptr;

[[noreturn]] void leaveThread()
{
    siglongjmp(*t_start, 1);
}

void runLeavable(void (*body)(void*), void* argument)
{
    sigjmp_buf start;
    t_start = &start;
    if (sigsetjmp(start, 1) == 0) body(argument);
}

#else

// The kernel ends this one thread and wakes who waits for that. Anything kinder runs code of the thread's: cancelling
// unwinds its stack, which ends the process where a body catches everything.
[[noreturn]] void leaveThread()
{
    for (;;) syscall(SYS_exit, 0);
}

void runLeavable(void (*body)(void*), void* argument)
{
    body(argument);
}

#endif

} // namespace

void qxPlatformEndWhenWanted(qxPlatformEnding& ending)
{
    if (ending.notNow.load(std::memory_order_relaxed) != 0 ||
        !ending.isWanted.load(std::memory_order_acquire))
        return;
    qxPlatformOwnEnding = nullptr;
    ending.isDone.store(true, std::memory_order_release);
    leaveThread();
}

void qxPlatformRunEndable(qxPlatformEnding& ending, void (*body)(void*), void* argument)
{
    ending.notNow.store(1, std::memory_order_relaxed);
    qxPlatformOwnEnding = &ending;
    runLeavable(body, argument);
}
