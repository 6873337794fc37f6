// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformclock.h"

#include "platform/qxplatformenvironment.h"

#include <gtest/gtest.h>

namespace
{

TEST(qxPlatformClock, followsTheZoneOfTheUser)
{
    std::string before;
    const bool wasSet = qxPlatformGetEnvironment("TZ", before);
    const struct {
        const char* zone; // what it shows is to be added to get UTC
        int seconds;
    } rows[] = {{"UTC", 0}, {"TST-5:30", 19800}, {"TST+9:30", -34200}, {"TST-14", 50400}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.zone);
        ASSERT_TRUE(qxPlatformSetEnvironment("TZ", row.zone));
        EXPECT_EQ(qxPlatformZoneSeconds(), row.seconds);
    }
    if (wasSet)
        qxPlatformSetEnvironment("TZ", before.c_str());
    else
        qxPlatformUnsetEnvironment("TZ");
}

} // namespace
