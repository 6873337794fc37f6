// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthreadlife.h"

#include "platform/windows/qxplatformending.h"
#include "platform/windows/qxwindows.h"

#include <cstdint>
#include <new>

#include <process.h>

struct qxPlatformThread {
    void (*body)(void*);
    void* argument;
    HANDLE handle = nullptr;
    unsigned int id = 0;
    qxPlatformEnding ending{};
    bool isClosedByItself = false; // the thread's own
};

namespace
{

constexpr DWORD RETRY_MILLISECONDS = 1;

unsigned int __stdcall runThread(void* argument)
{
    qxPlatformThread* const self = static_cast<qxPlatformThread*>(argument);
    qxPlatformSetOwnEnding(&self->ending);
    self->body(self->argument);
    qxPlatformEnterNotNow(); // for good
    if (self->isClosedByItself) {
        qxPlatformSetOwnEnding(nullptr);
        delete self;
    }
    return 0;
}

// Suspends the thread and ends it if it may be ended there; else it goes on.
void tryEnd(const qxPlatformThread& thread)
{
    if (SuspendThread(thread.handle) == static_cast<DWORD>(-1)) return;
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    GetThreadContext(thread.handle, &context); // it stands still only when this has returned
    if (thread.ending.notNow.load() == 0) TerminateThread(thread.handle, 0xFFFFFFFF);
    ResumeThread(thread.handle);
}

} // namespace

qxPlatformThread* qxPlatformThreadStart(void (*body)(void*), void* argument)
{
    qxPlatformThread* const thread = new (std::nothrow) qxPlatformThread{body, argument};
    if (!thread) return nullptr;
    // It starts suspended: it may be over, and its record gone, before this has read the handle.
    const std::uintptr_t handle =
        _beginthreadex(nullptr, 0, &runThread, thread, CREATE_SUSPENDED, &thread->id);
    if (handle == 0) {
        delete thread;
        return nullptr;
    }
    thread->handle = reinterpret_cast<HANDLE>(handle);
    ResumeThread(thread->handle);
    return thread;
}

unsigned int qxPlatformThreadIdOf(const qxPlatformThread& thread)
{
    return thread.id;
}

void* qxPlatformThreadHandleOf(const qxPlatformThread& thread)
{
    return thread.handle;
}

bool qxPlatformThreadIsSelf(const qxPlatformThread& thread)
{
    return qxPlatformGetOwnEnding() == &thread.ending;
}

bool qxPlatformThreadIsActive(const qxPlatformThread& thread)
{
    DWORD code = 0;
    return GetExitCodeThread(thread.handle, &code) && code == STILL_ACTIVE;
}

void qxPlatformThreadClose(qxPlatformThread* thread)
{
    if (qxPlatformThreadIsSelf(*thread)) {
        CloseHandle(thread->handle);
        thread->isClosedByItself = true;
        return;
    }
    qxPlatformThreadAwaitEnd(*thread);
    CloseHandle(thread->handle);
    delete thread;
}

void qxPlatformThreadEnd(qxPlatformThread& thread)
{
    thread.ending.isWanted.store(true);
    tryEnd(thread);
}

void qxPlatformThreadAwaitEnd(qxPlatformThread& thread)
{
    const DWORD period = thread.ending.isWanted.load() ? RETRY_MILLISECONDS : INFINITE;
    while (WaitForSingleObject(thread.handle, period) == WAIT_TIMEOUT) tryEnd(thread);
}

void qxPlatformThreadEndSelf()
{
    qxPlatformEnding* const ending = qxPlatformGetOwnEnding();
    ending->isWanted.store(true);
    qxPlatformEndWhenWanted(*ending);
}

void qxPlatformThreadSetPriority(const qxPlatformThread& thread, int priority)
{
    SetThreadPriority(thread.handle, priority);
}

void qxPlatformThreadAwaitClosed() {} // who closed themselves need nobody
