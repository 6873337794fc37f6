// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthread.h"

#include "platform/windows/qxwindows.h"

namespace
{

// The compiler's own variables of threads take ten times as long here.
DWORD noteIndex()
{
    static const DWORD index = TlsAlloc();
    return index;
}

} // namespace

unsigned int qxPlatformThreadId()
{
    return GetCurrentThreadId(); // a multiple of four and never 0
}

unsigned int qxPlatformThreadNote()
{
    return static_cast<unsigned int>(reinterpret_cast<ULONG_PTR>(TlsGetValue(noteIndex())));
}

void qxPlatformSetThreadNote(unsigned int note)
{
    TlsSetValue(noteIndex(), reinterpret_cast<void*>(static_cast<ULONG_PTR>(note)));
}

void qxPlatformSleep(unsigned int milliseconds)
{
    if (milliseconds == 0) {
        qxPlatformYield();
        return;
    }
    // The system counts in its own ticks, and the first may be over at once.
    const ULONGLONG start = GetTickCount64();
    for (ULONGLONG done = 0; done < milliseconds; done = GetTickCount64() - start)
        Sleep(static_cast<DWORD>(milliseconds - done));
}

void qxPlatformYield()
{
    SwitchToThread();
}

void qxPlatformGuardForks(void (*)(), void (*)()) {} // processes here do not fork
