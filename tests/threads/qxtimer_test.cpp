// SPDX-License-Identifier: see LICENSE

#include "qxtimer.h"

#include "qxtestsupport.h"

#include <cmath>

namespace
{

using Texts = std::vector<std::string>;

// A time that it takes no part of, however busy the machine is: the tests compare in whole hours.
constexpr double HOUR = 3600.0;

double hours(double seconds)
{
    return std::floor(seconds / HOUR);
}

TEST(qxTimer, runsFromItsConstruction)
{
    qxTimer timer("lap");
    const double first = timer.getTime();
    EXPECT_GE(first, 0.0);
    EXPECT_GE(timer.getTime(), first);
    EXPECT_EQ(hours(first), 0.0);
    EXPECT_EQ(timer.getName(), "lap");
}

TEST(qxTimer, startsAgainNowOrAtTheLastReading)
{
    qxTimer timer;
    timer.setTime(5 * HOUR);
    EXPECT_EQ(hours(timer.getTime()), 5.0);
    timer.reset(1);
    EXPECT_EQ(hours(timer.getTime()), 0.0);

    timer.setTime(7 * HOUR);
    timer.reset(1); // a set time counts as read then: its seven hours stay
    EXPECT_EQ(hours(timer.getTime()), 7.0);
    timer.reset(0);
    EXPECT_EQ(hours(timer.getTime()), 0.0);
}

TEST(qxTimer, notifiesFromTheLimitOn)
{
    const MessageRecorder recorder;
    qxTimer named("boot");
    qxTimer nameless;
    for (qxTimer* const timer : {&named, &nameless}) {
        timer->notifyTime(HOUR, QX_LEVEL_NOTICE);
        timer->setTime(2000000.0); // six digits show no second of it
        timer->notifyTime(2000000.0, QX_LEVEL_WARNING);
    }
    EXPECT_EQ(recorder.texts(), (Texts{"--- QX_TIMER 'boot' Time: 2e+06 Freq: 5e-07 ---",
                                       "--- QX_TIMER '' Time: 2e+06 Freq: 5e-07 ---"}));
    EXPECT_EQ(recorder.messages().at(0).level, QX_LEVEL_WARNING);
}

TEST(qxTimer, aNotificationBelowTheLimitCountsAsAReading)
{
    const MessageRecorder recorder;
    qxTimer timer;
    timer.setTime(3 * HOUR);
    timer.notifyTime(4 * HOUR, QX_LEVEL_NOTICE);
    timer.reset(1);
    EXPECT_EQ(hours(timer.getTime()), 0.0);
    EXPECT_EQ(recorder.texts(), Texts());
}

} // namespace
