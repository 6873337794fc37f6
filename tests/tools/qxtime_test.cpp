// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <chrono>
#include <cstdlib>

namespace
{

TEST_F(Tool, tellsMomentsAsDates)
{
    expectAnswers(
        "", "time 0 => 1970-01-01 00:00:00\n", "time 951868799.999 => 2000-02-29 23:59:59\n",
        "time 4294967295 => 2106-02-07 06:28:15\n", "time 4294967296 => 1970-01-01 06:28:16\n",
        "time 1e9 --format %d%%%02d%% => 2001%09%\n",
        "time 1e9 --format '%3$02u.%2$02u.%1$+6d %4$-3o|%6$.3d %5$#x' => 09.09. +2001 1  |040 0x2e\n",
        "time 0 --format '' => \n", "time -- -86400 => 2106-02-06 00:00:00\n");
}

TEST_F(Tool, tellsTheTimeNow)
{
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const double before = now();
    ASSERT_EQ(run("time --format '%d %d %d %d %d %d'"), 0) << err;
    const std::string spaced = out;
    ASSERT_EQ(run("time --local"), 0) << err;
    EXPECT_EQ(out.size(), 20U);

    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    ASSERT_EQ(std::sscanf(spaced.c_str(), "%d %d %d %d %d %d", &year, &month, &day, &hour, &minute, &second),
              6);
    const std::chrono::sys_days date = std::chrono::year(year) / month / day;
    const double told = static_cast<double>(date.time_since_epoch().count()) * 86400.0 + hour * 3600.0 +
                        minute * 60.0 + second;
    EXPECT_GT(told, before - 2.0);
    EXPECT_LE(told, now());
}

TEST_F(Tool, refusesWhatIsNoTimeOrNoFormat)
{
    for (const char* const seconds : {"''", "x", "1x", "0x10", "nan", "inf", "1e999", "' 1'"}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(run(std::string("time ") + seconds), 2);
        EXPECT_TRUE(hasError(" is no number of seconds; see qx --help\n")) << err;
    }
    for (const char* const format :
         {"%", "%s", "%f", "%c", "%n", "%*d", "%.*d", "%7$d", "%0$d", "%1$", "%1$$d", "%d%d%d%d%d%d%d",
          "%1000d", "%.99999999999999999999d", "%-", "%ld", "%5"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(answer("time 0 --format '" + std::string(format) + "'"),
                  "2 qx: error: '" + std::string(format) +
                      "' is no format of six integers at most; see qx --help\n");
    }
    EXPECT_EQ(run("time 1 2"), 2);
}

} // namespace
