// SPDX-License-Identifier: see LICENSE

#include "qxthread.h"

#include "qxevent.h"
#include "qxtime.h"

#include "platform/qxplatformthread.h"

unsigned int qxThread::getThreadID()
{
    return qxPlatformThreadId();
}

void qxThread::qxDelayFunction(unsigned int milliseconds, qxEvent* event)
{
    if (event)
        event->wait(milliseconds, 0);
    else
        qxPlatformSleep(milliseconds);
}

void qxThread::qxMicroDelayFunction(unsigned int microseconds)
{
    if (microseconds == 0) {
        qxPlatformYield();
        return;
    }
    const double start = qxTime::systemSeconds();
    while ((qxTime::systemSeconds() - start) * 1e6 < microseconds) {}
}
