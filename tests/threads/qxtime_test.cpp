// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "qxtestsupport.h"

#include <chrono>
#include <cmath>
#include <cstdlib>

namespace
{

TEST(qxTime, systemSecondsCountsFrom1970)
{
    const double system =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    // The clock starts at the whole second and follows the steady clock only.
    EXPECT_NEAR(qxTime::systemSeconds(), system, 2.0);
}

TEST(qxTime, systemSecondsStartsAtAWholeSecond)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto first = [] {
        const double seconds = qxTime::systemSeconds();
        std::exit(seconds == std::trunc(seconds) ? 0 : 1);
    };
    EXPECT_EXIT(first(), testing::ExitedWithCode(0), "");
}

TEST(qxTime, systemSecondsNeverGoesBack)
{
    onThreads(3, [] {
        double last = 0.0;
        for (int n = 0; n < 20000; ++n) {
            const double now = qxTime::systemSeconds();
            ASSERT_GE(now, last);
            last = now;
        }
    });
}

} // namespace
