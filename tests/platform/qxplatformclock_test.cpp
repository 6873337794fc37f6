// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace
{

TEST(qxPlatformClock, steadyClockNeverGoesBackAndMovesInSmallSteps)
{
    double last = qxPlatformSteadySeconds();
    double smallest = 1.0;
    for (int i = 0; i < 10000; ++i) {
        const double now = qxPlatformSteadySeconds();
        ASSERT_GE(now, last);
        if (now > last && now - last < smallest) smallest = now - last;
        last = now;
    }

    EXPECT_LT(smallest, 1e-4); // far below a tick of the scheduler, whatever else runs
}

TEST(qxPlatformClock, counterRunsAsFastAsTheSteadyClock)
{
    const double period = qxPlatformCounterPeriod();
    EXPECT_EQ(qxPlatformCounterPeriod(), period);
    const double before = qxPlatformSteadySeconds();
    const unsigned long long start = qxPlatformCounter();
    unsigned long long last = start;
    while (qxPlatformSteadySeconds() - before < 0.02) {
        const unsigned long long now = qxPlatformCounter();
        ASSERT_GE(now, last);
        last = now;
    }
    const double counted = static_cast<double>(qxPlatformCounter() - start) * period;
    EXPECT_GE(counted, 0.0199);
    EXPECT_LE(counted, qxPlatformSteadySeconds() - before + 1e-3);
}

TEST(qxPlatformClock, utcIsTheCalendarWithAFraction)
{
    const double before = static_cast<double>(std::time(nullptr));
    const double now = qxPlatformUtcSeconds();

    EXPECT_GE(now, before);
    EXPECT_LT(now, before + 60.0);
    EXPECT_NE(qxPlatformUtcSeconds(), static_cast<double>(std::time(nullptr)));
}

} // namespace
