// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include "platform/windows/qxwindows.h"

#include <timeapi.h>

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

unsigned long long qxPlatformCounter()
{
    LARGE_INTEGER count;
    if (!QueryPerformanceCounter(&count)) return GetTickCount64();
    return static_cast<unsigned long long>(count.QuadPart);
}

double qxPlatformCounterPeriod()
{
    LARGE_INTEGER countsPerSecond;
    if (!QueryPerformanceFrequency(&countsPerSecond) || countsPerSecond.QuadPart <= 0) return 0.001;
    return 1.0 / static_cast<double>(countsPerSecond.QuadPart);
}

void qxPlatformRefineTimer()
{
    [[maybe_unused]] static const MMRESULT result = timeBeginPeriod(1); // without it the system's step is 16
}

int qxPlatformZoneSeconds()
{
    TIME_ZONE_INFORMATION zone = {};
    const DWORD id = GetTimeZoneInformation(&zone); // biases are minutes from local time to UTC
    LONG bias = zone.Bias;
    if (id == TIME_ZONE_ID_DAYLIGHT)
        bias += zone.DaylightBias;
    else if (id != TIME_ZONE_ID_UNKNOWN)
        bias += zone.StandardBias;
    return static_cast<int>(-bias * 60);
}
