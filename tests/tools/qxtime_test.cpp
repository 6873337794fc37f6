// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <chrono>
#include <string>

namespace
{

TEST_F(Tool, tellsMomentsAsDates)
{
    expectAnswers(
        "", "time 0 => 1970-01-01 00:00:00\n", "time 951868799.999 => 2000-02-29 23:59:59\n",
        "time 4294967295 => 2106-02-07 06:28:15\n", "time 4294967296 => 1970-01-01 06:28:16\n",
        "time 1e9 --format %d%%%02d%% => 2001%09%\n",
        "time 1e9 --format '%3$02u.%2$02u.%1$+6d %4$-3o|%6$.3d %5$#x' => 09.09. +2001 1  |040 0x2e\n",
        "time 0 --format '' => \n", "time -86400 => 2106-02-06 00:00:00\n",
        "time -- -86400 => 2106-02-06 00:00:00\n");
}

TEST_F(Tool, tellsTheTimeNow)
{
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const std::string before =
        answer("time " + std::to_string(now() - 2.0)); // the clock may be a second behind
    const std::string told = answer("time");
    EXPECT_GE(told, before);
    EXPECT_LE(told, answer("time " + std::to_string(now())));
    EXPECT_EQ(answer("time --local").size(), told.size());
}

TEST_F(Tool, refusesWhatIsNoTimeOrNoFormat)
{
    for (const char* const seconds : {"''", "x", "1x", "0x10", "nan", "inf", "1e999", "' 1'"}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(run(std::string("time ") + seconds), 2);
        EXPECT_TRUE(hasError(" is no number of seconds; see qx time --help\n")) << err;
    }
    for (const char* const format :
         {"%", "%s", "%f", "%c", "%n", "%*d", "%.*d", "%7$d", "%0$d", "%1$", "%1$$d", "%d%d%d%d%d%d%d",
          "%1000d", "%.99999999999999999999d", "%-", "%ld", "%5"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(answer("time 0 --format '" + std::string(format) + "'"),
                  "2 qx: error: '" + std::string(format) +
                      "' is no format of six integers at most; see qx time --help\n");
    }
    EXPECT_EQ(run("time 1 2"), 2);
}

} // namespace
