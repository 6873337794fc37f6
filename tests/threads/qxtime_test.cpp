// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "qxtestrows.h"
#include "qxtestsupport.h"
#include "threads/qxclockanchor.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace
{

constexpr double A_MINUTE = 60.0; // far more than anybody has to wait, far less than offsets are
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::string textOf(const qxTime& time)
{
    return time.asString().getString();
}

/// The application's time follows the clock again at its end.
class qxTimeOffset : public testing::Test
{
protected:
    void TearDown() override { qxTime::setSystemTimeOffset(0.0); }
};

TEST(qxTime, systemSecondsCountsFrom1970)
{
    const double system =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    // The clock starts at the whole second and follows the counter only.
    EXPECT_NEAR(qxTime::systemSeconds(), system, 2.0);
}

TEST(qxTime, clockStartsAtAWholeSecondWhenTheLibraryIsLoaded)
{
    double start = 0.0; // too early where the thread had to wait between the two readings
    for (int i = 0; i < 20; ++i) start = std::max(start, qxTime::systemSeconds() - qxTime::uptimeSeconds());
    EXPECT_NEAR(start, std::round(start), 0.1);
    EXPECT_GT(qxTime::uptimeSeconds(), 0.0);
    EXPECT_GT(qxTime::getTimeResolution(), 0.0);
    EXPECT_LE(qxTime::getTimeResolution(), 1e-6);
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

TEST(qxTime, followsTheCounter)
{
    constexpr qxUInt64 start = 5000;
    constexpr qxUInt64 half = 0x8000000000000000; // of the counter's range
    const struct {
        const char* name;
        qxUInt64 counter;
        double seconds;
        bool hasJumped;
    } rows[] = {
        {"at once", start, 1000.0, false},
        {"ahead", start + 40, 1010.0, false},
        {"as far as a signed number goes", start + half - 1, 1000.0 + static_cast<double>(half) * 0.25,
         false},
        {"farther", start + half, 1000.0 + static_cast<double>(half) * 0.25, true},
        {"a step back", start - 1, 999.5, true},
        {"back to the start", 0, 1000.0 - 5001 * 0.25, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const qxClockReading reading = qxReadClock({1000.0, start}, row.counter, 0.25);
        EXPECT_EQ(reading.seconds, row.seconds);
        EXPECT_EQ(reading.hasJumped, row.hasJumped);
        EXPECT_EQ(reading.next.seconds, row.hasJumped ? row.seconds : 1000.0);
        EXPECT_EQ(reading.next.counter, row.hasJumped ? row.counter : start);
    }
}

TEST_F(qxTimeOffset, nowIsTheClockPlusTheOffsets)
{
    const double local = qxTime::getLocalTimeOffset();
    EXPECT_LE(std::abs(local), 26 * 3600.0);
    EXPECT_NEAR(qxTime::now(0) - qxTime::systemSeconds(), 0.0, A_MINUTE);
    EXPECT_NEAR(qxTime::now(1) - qxTime::systemSeconds(), local, A_MINUTE);

    qxTime::setSystemTimeOffset(-1e6);
    EXPECT_NEAR(qxTime().seconds() - qxTime::systemSeconds(), -1e6, A_MINUTE);
    EXPECT_NEAR(qxTime::now(1) - qxTime::systemSeconds(), local - 1e6, A_MINUTE);
}

TEST_F(qxTimeOffset, setTimeMovesNowButNotTheClock)
{
    const double before = qxTime::systemSeconds();
    for (unsigned char local = 0; local < 2; ++local) {
        qxTime::setTime(86400.0, local);
        EXPECT_NEAR(qxTime::now(local).seconds(), 86400.0, A_MINUTE);
        EXPECT_EQ(textOf(qxTime::now(local)).substr(0, 13), "1970-01-02 00");
    }
    EXPECT_NEAR(qxTime::systemSeconds(), before, A_MINUTE);
}

TEST(qxTime, countsSecondsFromADate)
{
    EXPECT_EQ(qxTime(1970, 1, 1, 0.0).seconds(), 0.0);
    EXPECT_EQ(qxTime(1970, 3, 1, 0.5).seconds(), 59 * 86400.0 + 0.5);
    EXPECT_EQ(qxTime(2000, 3, 1, 0.0) - qxTime(2000, 2, 1, 0.0), 29 * 86400.0);
    EXPECT_EQ(qxTime(2100, 3, 1, 0.0) - qxTime(2100, 2, 1, 0.0), 28 * 86400.0);
    EXPECT_EQ(qxTime(2200, 1, 1, 0.0).seconds(), 7258118400.0);
    EXPECT_EQ(qxTime(2024, 12, 31, 23.0, 59.0, 59.25).seconds(), 1735689599.25);
    EXPECT_EQ(qxTime(4294967295U, 12, 31, 0.0).seconds(), 1568703873081.0 * 86400.0);
}

TEST(qxTime, tellsTheDateOfEveryDayItCanShow)
{
    unsigned int year = 1970;
    unsigned char month = 1;
    unsigned char day = 1;
    for (double seconds = 0.0; seconds < 4294967296.0; seconds += 86400.0) {
        const qxTime time(seconds + 86399.0 <= 4294967295.0 ? seconds + 86399.0 : seconds);
        ASSERT_EQ(time.year(), year) << seconds;
        ASSERT_EQ(time.month(), month) << seconds;
        ASSERT_EQ(time.day(), day) << seconds;
        ASSERT_EQ(qxTime(year, month, day, 0.0).seconds(), seconds);
        if (++day <= qxTime::daysPerMonth(month, year)) continue;
        day = 1;
        if (++month <= 12) continue;
        month = 1;
        ++year;
    }
    EXPECT_EQ(year, 2106U);
}

TEST(qxTime, showsMomentsAsTexts)
{
    const auto text = [](const std::string& seconds) { return textOf(qxTime(std::stod(seconds))); };
    expectRows(text, "0 => 1970-01-01 00:00:00", "951868799.999 => 2000-02-29 23:59:59",
               "1735689599.25 => 2024-12-31 23:59:59", "4294967295 => 2106-02-07 06:28:15",
               // beyond the calendar the date starts again, the time of day does not
               "4294967296 => 1970-01-01 06:28:16", "7258118400 => 2063-11-24 00:00:00",
               "-1 => 2106-02-07 00:00:-1", "nan => 1970-01-01 00:00:00", "inf => 1970-01-01 00:00:00",
               "1e300 => 1970-01-01 17:36:00", "-1e300 => 1970-01-01 23:40:-148560");
    EXPECT_EQ(qxTime(2024, 2, 3, 4.0, 5.0, 6.0).asString(qxTime::FILE_NAME_FORMAT), "2024_02_03__04_05_06");
    EXPECT_EQ(qxTime(2024, 2, 3, 4.0, 5.0, 6.0).asString("%6$d|%5$d|%4$d|%3$d|%2$d|%1$d"), "6|5|4|3|2|2024");
}

TEST(qxTime, roundsToFiveDecimalsButNeverToTheNextUnit)
{
    EXPECT_EQ(qxTime(1970, 1, 1, 1.0000049).daySeconds(), 1.0);
    EXPECT_EQ(qxTime(1970, 1, 1, 1.0000051).daySeconds(), 1.00001);
    EXPECT_EQ(qxTime(1.0000051).daySeconds(), 1.0000051);
    EXPECT_EQ(qxTime(61.0000051).minuteSeconds(), 1.00001);

    const qxTime late(1970, 1, 1, 86399.999999);
    EXPECT_EQ(late.daySeconds(), 86399.99999);
    EXPECT_EQ(late.minuteSeconds(), 59.99999);
    EXPECT_EQ(textOf(late), "1970-01-01 23:59:59");
    EXPECT_EQ(qxTime(59.999999).minuteSeconds(), 59.99999);
    EXPECT_EQ(textOf(qxTime(59.999999)), "1970-01-01 00:00:59");
}

TEST(qxTime, refusesDatesThatDoNotExistTheFirstFaultFirst)
{
    const std::string year = "qxTime ( year parameter in time < 1970 )";
    const std::string month = "qxTime ( month parameter in time is invalid )";
    const std::string day = "qxTime ( day parameter in time is invalid )";
    const std::string daySeconds = "qxTime ( daysecond parameter in time is invalid )";
    const struct {
        unsigned int year;
        unsigned char month;
        unsigned char day;
        double daySeconds;
        const std::string& text;
    } rows[] = {
        {1969, 0, 0, -1.0, year},
        {1900, 1, 1, 0.0, year},
        {0, 1, 1, 0.0, year},
        {1970, 0, 0, -1.0, month},
        {2000, 13, 1, 0.0, month},
        {2000, 255, 1, 0.0, month},
        {1970, 1, 0, -1.0, day},
        {2001, 2, 29, 86400.0, day},
        {2100, 2, 29, 0.0, day},
        {2000, 4, 31, 0.0, day},
        {1970, 1, 1, -1e-9, daySeconds},
        {2000, 2, 29, 86400.0, daySeconds},
        {1970, 1, 1, NOT_A_NUMBER, daySeconds},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.year << ' ' << +row.month << ' ' << +row.day);
        EXPECT_EQ(warningText([&] { qxTime time(row.year, row.month, row.day, row.daySeconds); }), row.text);
    }
    EXPECT_EQ(warningText([] { qxTime time(1970, 1, 1, 23.0, 60.0, 0.0); }), daySeconds);
}

TEST(qxTime, knowsTheLengthsOfMonthsAndYears)
{
    EXPECT_EQ(qxTime::daysPerMonth(0, 2000), 0);
    EXPECT_EQ(qxTime::daysPerMonth(13, 2000), 0);
    EXPECT_EQ(qxTime::daysPerYear(2000), 366U);
    EXPECT_EQ(qxTime::daysPerYear(2100), 365U);
    EXPECT_EQ(qxTime::daysPerYear(2024), 366U);
}

TEST(qxTime, comparesAndCountsInSeconds)
{
    const qxTime early(1.5);
    const qxTime late(2.0);
    EXPECT_TRUE(early < late && early <= late && late > early && late >= early && early != late);
    EXPECT_TRUE(early == qxTime(1970, 1, 1, 1.5) && early <= early && early >= 1.5);
    EXPECT_FALSE(early < early || early > late || early == late);
    EXPECT_EQ(late + early, 3.5);
    EXPECT_EQ(late - early, 0.5);
    EXPECT_EQ(late + 1, 3.0);
    EXPECT_EQ(late - 3.0, -1.0);

    const qxTime never(NOT_A_NUMBER);
    EXPECT_FALSE(never == never || never < late || never > late || never <= never);
    EXPECT_TRUE(never != never);
}

} // namespace
