// SPDX-License-Identifier: see LICENSE

#include "platform/windows/qxplatformending.h"
#include "platform/windows/qxwindows.h"

namespace
{

// The compiler's own variables of threads take ten times as long here.
DWORD endingIndex()
{
    static const DWORD index = TlsAlloc();
    return index;
}

} // namespace

// Keeps the system's error number, which asking for the value sets back.
qxPlatformEnding* qxPlatformGetOwnEnding()
{
    const DWORD before = GetLastError();
    void* const ending = TlsGetValue(endingIndex());
    SetLastError(before);
    return static_cast<qxPlatformEnding*>(ending);
}

void qxPlatformSetOwnEnding(qxPlatformEnding* ending)
{
    TlsSetValue(endingIndex(), ending);
}

void qxPlatformEndWhenWanted(qxPlatformEnding& ending)
{
    if (ending.notNow.load() != 0 || !ending.isWanted.load()) return;
    for (;;) TerminateThread(GetCurrentThread(), 0xFFFFFFFF);
}
