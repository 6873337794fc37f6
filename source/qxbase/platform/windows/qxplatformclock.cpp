// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include "platform/windows/qxwindows.h"

namespace
{

constexpr double FILE_TIMES_PER_SECOND = 1e7;             // steps of 100 ns
constexpr double SECONDS_FROM_1601_TO_1970 = 11644473600; // the system counts from 1601

double secondsPerCount()
{
    LARGE_INTEGER countsPerSecond;
    QueryPerformanceFrequency(&countsPerSecond);
    return 1.0 / static_cast<double>(countsPerSecond.QuadPart);
}

} // namespace

double qxPlatformSteadySeconds()
{
    static const double period = secondsPerCount(); // fixed from the start of the machine
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) * period;
}

double qxPlatformUtcSeconds()
{
    SYSTEMTIME calendar;
    FILETIME time;
    GetSystemTime(&calendar);
    SystemTimeToFileTime(&calendar, &time); // every time of the system is one
    const ULARGE_INTEGER steps = {{time.dwLowDateTime, time.dwHighDateTime}};
    return static_cast<double>(steps.QuadPart) / FILE_TIMES_PER_SECOND - SECONDS_FROM_1601_TO_1970;
}
