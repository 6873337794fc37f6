// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestsupport.h"

#include <cmath>
#include <limits>
#include <string>

namespace
{

constexpr qxInt64 HIGHEST = std::numeric_limits<qxInt64>::max();
constexpr qxInt64 LOWEST = std::numeric_limits<qxInt64>::min();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

TEST(qxStringNumbers, num)
{
    const struct {
        const char* text;
        qxInt64 value;
    } rows[] = {
        {"", 0},
        {"7", 7},
        {"x", 0},
        {"-", 0},
        {"+7", 7},
        {" \t\r\n-42 apples", -42},
        {"- 42", 0},
        {"007", 7},
        {"12.99", 12},
        {"-12.99", -12},
        {"12.", 12},
        {".5", 0},
        {"1e3", 1000},
        {"1.2345E2", 123},
        {"12345e-2", 123},
        {"1e-400", 0},
        {"5e", 5},
        {"5e+x", 5},
        {"1,234", 1},
        {"9223372036854775807", HIGHEST},
        {"9223372036854775808", HIGHEST},
        {"-9223372036854775808", LOWEST},
        {"-9223372036854775809", LOWEST},
        {"9007199254740993.7", 9007199254740993}, // more digits than a double has
        {"1e18", 1000000000000000000},
        {"1e400", HIGHEST},
        {"-1e99999999999999999999", LOWEST},
        {"0e99999999999999999999", 0},
        {"0.0000000000000000000000000001e30", 100},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(qxString(row.text).num(), row.value);
        EXPECT_EQ(static_cast<qxInt64>(qxString(row.text)), row.value);
    }
    EXPECT_EQ(qxString::spaces(65535, '9').num(), HIGHEST);
}

TEST(qxStringNumbers, real)
{
    const struct {
        const char* text;
        double value;
    } rows[] = {
        {"", 0.0},
        {"1.5", 1.5},
        {" +1.5e2x", 150.0},
        {"-.25", -0.25},
        {"5.", 5.0},
        {".", 0.0},
        {"-", 0.0},
        {"information", 0.0},
        {"inf", 0.0},
        {"nan", 0.0},
        {"0x10", 0.0},
        {"1e", 1.0},
        {"1e-", 1.0},
        {"1,5", 1.0},
        {"1e400", INFINITE},
        {"-1e400", -INFINITE},
        {"1e-400", 0.0},
        {"0.1", 0.1},
        {"4.9e-324", 5e-324},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"0e99999999999", 0.0},
        {"--1", 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(qxString(row.text).real(), row.value);
        EXPECT_EQ(static_cast<double>(qxString(row.text)), row.value);
    }
    EXPECT_TRUE(std::signbit(qxString("-0").real()));
    const std::string manyZeros = "0." + std::string(400, '0') + "1e401";
    EXPECT_EQ(qxString(manyZeros.c_str()).real(), 1.0);
}

TEST(qxStringNumbers, realWithAnotherDecimalCharacter)
{
    EXPECT_EQ(qxString("1,5").real(','), 1.5);
    EXPECT_EQ(qxString("1.5").real(','), 1.0);
}

TEST(qxStringNumbers, dotValue)
{
    const struct {
        const char* text;
        qxInt64 value;
    } rows[] = {
        {"", 0},
        {"2.10.1", 0x0002000A00010000},
        {"1.2.3.4", 0x0001000200030004},
        {"1.2.3.4.5", 0x0001000200030004},
        {"7", 0x0007000000000000},
        {" 1.2 beta", 0x0001000200000000},
        {"1..3", 0x0001000000030000},
        {"1.99999", 0x0001FFFF00000000},
        {"x", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(qxString(row.text).dotValue(), row.value);
    }
    EXPECT_EQ(qxString("1,2").dotValue(','), 0x0001000200000000);
    EXPECT_LT(qxString("2.9").dotValue(), qxString("2.10").dotValue());
}

TEST(qxStringNumbers, yesNo)
{
    for (const char* text : {" Yes\n", "TRUE", "1", "2", "\ttrue\r\n", "10 times", "1e2"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(qxString(text).yesNo());
    }
    for (const char* text : {"", "0", "no", "false", "y", "yes!", "-1", "0.9", "on"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(qxString(text).yesNo());
    }
}

} // namespace
