// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthread.h"

#include "platform/windows/qxwindows.h"

unsigned int qxPlatformThreadId()
{
    return GetCurrentThreadId(); // a multiple of four and never 0
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
