// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include <time.h>

namespace
{

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
