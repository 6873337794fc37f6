// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

#include <cmath>
#include <limits>
#include <string>

namespace
{

constexpr double INFINITE = std::numeric_limits<double>::infinity();

TEST(qxStringNumbers, num)
{
    const auto num = [](const std::string& text) { return std::to_string(qxString(text.c_str()).num()); };
    expectRows(num, " => 0", "7 => 7", "x => 0", "- => 0", "+7 => 7", " \t\r\n-42 apples => -42", "- 42 => 0",
               "007 => 7", "12.99 => 12", "-12.99 => -12", "12. => 12", ".5 => 0", "1e3 => 1000",
               "1.2345E2 => 123", "12345e-2 => 123", "1e-400 => 0", "5e => 5", "5e+x => 5", "1,234 => 1",
               "1e18 => 1000000000000000000", "0.0000000000000000000000000001e30 => 100",
               "9007199254740993.7 => 9007199254740993"); // more digits than a double has
    expectRows(num, "9223372036854775807 => 9223372036854775807",
               "9223372036854775808 => 9223372036854775807", "-9223372036854775808 => -9223372036854775808",
               "-9223372036854775809 => -9223372036854775808", "1e400 => 9223372036854775807",
               "-1e99999999999999999999 => -9223372036854775808", "0e99999999999999999999 => 0");
    EXPECT_EQ(qxString::spaces(65535, '9').num(), std::numeric_limits<qxInt64>::max());
    EXPECT_EQ(static_cast<qxInt64>(qxString("12")), 12);
}

TEST(qxStringNumbers, real)
{
    const struct {
        const char* text;
        double value;
        char decimalPoint = '.';
    } rows[] = {{"", 0.0},
                {"1.5", 1.5},
                {" +1.5e2x", 150.0},
                {"-.25", -0.25},
                {"5.", 5.0},
                {".", 0.0},
                {"-", 0.0},
                {"--1", 0.0},
                {"inf", 0.0},
                {"information", 0.0},
                {"nan", 0.0},
                {"0x10", 0.0},
                {"1e", 1.0},
                {"1e-", 1.0},
                {"1,5", 1.0},
                {"0.1", 0.1},
                {"1e400", INFINITE},
                {"-1e400", -INFINITE},
                {"1e-400", 0.0},
                {"0e99999999999", 0.0},
                {"4.9e-324", 5e-324},
                {"1.7976931348623157e308", 1.7976931348623157e308},
                {"1,5", 1.5, ','},
                {"1.5", 1.0, ','}};
    for (const auto& row : rows) EXPECT_EQ(qxString(row.text).real(row.decimalPoint), row.value) << row.text;
    EXPECT_EQ(static_cast<double>(qxString("1.5")), 1.5);
    EXPECT_TRUE(std::signbit(qxString("-0").real()));
    const std::string manyZeros = "0." + std::string(400, '0') + "1e401";
    EXPECT_EQ(qxString(manyZeros.c_str()).real(), 1.0);
}

TEST(qxStringNumbers, dotValue)
{
    const auto dotValue = [](const std::string& text) {
        return std::string(qxString::str("%016x", qxString(text.c_str()).dotValue()));
    };
    expectRows(dotValue, " => 0000000000000000", "2.10.1 => 0002000a00010000", "1.2.3.4 => 0001000200030004",
               "1.2.3.4.5 => 0001000200030004", "7 => 0007000000000000", " 1.2 beta => 0001000200000000",
               "1..3 => 0001000000030000", "1.99999 => 0001ffff00000000", "x => 0000000000000000");
    EXPECT_EQ(qxString("1,2").dotValue(','), 0x0001000200000000);
}

TEST(qxStringNumbers, yesNo)
{
    for (const char* text : {" Yes\n", "TRUE", "1", "2", "\ttrue\r\n", "10 times", "1e2"})
        EXPECT_TRUE(qxString(text).yesNo()) << text;
    for (const char* text : {"", "0", "no", "false", "y", "yes!", "-1", "0.9", "on"})
        EXPECT_FALSE(qxString(text).yesNo()) << text;
}

} // namespace
