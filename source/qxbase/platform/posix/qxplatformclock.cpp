// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include <time.h>

namespace
{

constexpr unsigned int NANOSECONDS = 1000000000; // a second

double secondsOn(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now); // fails only for a clock the system does not have
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

double qxPlatformSteadySeconds()
{
    return secondsOn(CLOCK_MONOTONIC);
}

double qxPlatformUtcSeconds()
{
    return secondsOn(CLOCK_REALTIME);
}

unsigned long long qxPlatformCounter()
{
    timespec now;
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<unsigned long long>(now.tv_sec) * NANOSECONDS +
           static_cast<unsigned long long>(now.tv_nsec);
}

double qxPlatformCounterPeriod()
{
    return 1.0 / NANOSECONDS;
}

void qxPlatformRefineTimer() {} // sleeps are that fine here

int qxPlatformZoneSeconds()
{
    tzset(); // the next call need not look for a change
    const time_t now = time(nullptr);
    tm local;
    return localtime_r(&now, &local) ? static_cast<int>(local.tm_gmtoff) : 0;
}
