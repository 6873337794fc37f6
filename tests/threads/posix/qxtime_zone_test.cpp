// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace
{

TEST(qxTimeZone, movesLocalTimesOnly)
{
    const char* const before = std::getenv("TZ");
    const std::string zone = before ? before : "";
    setenv("TZ", "TST-5:30", 1); // what it shows is to be added to get UTC
    constexpr double offset = 19800.0;
    constexpr double minute = 60.0; // more than anybody has to wait

    EXPECT_EQ(qxTime::getLocalTimeOffset(), offset);
    EXPECT_NEAR(qxTime::now(1) - qxTime::now(0), offset, minute);
    qxTime::setTime(1e6, 1);
    EXPECT_NEAR(qxTime::now(1).seconds(), 1e6, minute);
    EXPECT_NEAR(qxTime::now(0).seconds(), 1e6 - offset, minute);
    qxTime::setSystemTimeOffset(0.0);

    if (before)
        setenv("TZ", zone.c_str(), 1);
    else
        unsetenv("TZ");
}

} // namespace
