// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestsupport.h"

#include <cstdio>
#include <limits>
#include <string>

namespace
{

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

const char* const FLAGS[] = {"", "-", "+", " ", "0", "#", "-0", "+0", " 0", "-+", "#0", "#-", "+ #0"};
const char* const SIZES[] = {"", "1", "12", ".0", ".1", ".5", "12.0", "12.3", "3.5"};

template <class Argument>
std::string printed(const std::string& format, Argument argument)
{
    char text[600];
    const int length = std::snprintf(text, sizeof text, format.c_str(), argument);
    return std::string(text, static_cast<std::size_t>(length));
}

// Calls `check` with every conversion made of flags, a width, a precision and the letter.
template <class Check>
void forEachConversion(char letter, Check check)
{
    for (const char* flags : FLAGS) {
        for (const char* size : SIZES) check(std::string("%") + flags + size + letter);
    }
}

TEST(qxStringFormat, integersFollowC)
{
    for (int value : {0, 1, -1, 7, -42, 255, 123456, 2147483647, -2147483647 - 1}) {
        for (char letter : {'d', 'i', 'u', 'o', 'x', 'X'}) {
            forEachConversion(letter, [&](const std::string& format) {
                SCOPED_TRACE(format);
                EXPECT_EQ(qxString::str(format.c_str(), value).getString(), printed(format, value));
            });
        }
    }
}

TEST(qxStringFormat, doublesFollowC)
{
    const double values[] = {0.0,       -0.0,   1.0,  -1.5,    0.5,  0.125,   2.675,   1e-5,   123456.789,
                             99999.4,   0.001,  1e15, -3.0e-7, 1e22, 0.0001,  0.00001, 999999, 1000000,
                             9.9999995, 5e-324, 2.5,  1e-300,  1e14, 12345.0, 0.045};
    for (double value : values) {
        for (char letter : {'f', 'e', 'E', 'g', 'G'}) {
            forEachConversion(letter, [&](const std::string& format) {
                SCOPED_TRACE(format + " of " + std::to_string(value));
                EXPECT_EQ(qxString::str(format.c_str(), value).getString(), printed(format, value));
            });
        }
    }
}

TEST(qxStringFormat, textsFollowC)
{
    for (const char* value : {"", "a", "some words", "0123456789abcdef"}) {
        for (const char* format :
             {"%s", "%12s", "%-12s", "%.3s", "%12.3s", "%-12.3s", "%.0s", "%3s|", "%.40s"}) {
            SCOPED_TRACE(format);
            EXPECT_EQ(qxString::str(format, value).getString(), printed(format, value));
            EXPECT_EQ(qxString::str(format, qxString(value)).getString(), printed(format, value));
        }
    }
}

TEST(qxStringFormat, doublesHaveFifteenDigits)
{
    const struct {
        const char* format;
        double value;
        const char* text;
    } rows[] = {
        {"%.20f", 0.1, "0.10000000000000000000"},
        {"%f", 123456789012345678.0, "123456789012346000.000000"},
        {"%.3f", 1e300, nullptr},
        {"%.17e", 0.1, "1.00000000000000000e-01"},
        {"%.17g", 0.1, "0.1"},
        {"%.20g", 123456789012345678.0, "123456789012346000"},
        {"%#.20g", 123456789012345678.0, "123456789012346000.00"},
        {"%#.18g", 0.1, "0.100000000000000000"},
        {"%#.5g", 99999.95, "1.0000e+05"}, // rounding moves it to the other form
        {"%.12f", 9999.99999999999999, "10000.000000000000"},
        {"%.0f", 999999999999999.5, "1000000000000000"},
        {"%.0f", 0.5, "0"}, // ties go to the even digit
        {"%.0f", 1.5, "2"},
        {"%.2f", 1.005, "1.00"}, // a little less than it looks
        {"%.330f", 5e-324, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format);
        std::string expected = row.text ? row.text : printed(row.format, row.value);
        if (row.value == 1e300) expected = "1" + std::string(300, '0') + ".000";
        EXPECT_EQ(qxString::str(row.format, row.value).getString(), expected);
    }
}

TEST(qxStringFormat, infinityAndNoNumber)
{
    const struct {
        const char* format;
        double value;
        const char* text;
    } rows[] = {
        {"%f", INFINITE, "<inf>"},   {"%f", -INFINITE, "-<inf>"},     {"%+g", INFINITE, "+<inf>"},
        {"% e", INFINITE, " <inf>"}, {"%08d", INFINITE, "   <inf>"},  {"%-8x|", -INFINITE, "-<inf>  |"},
        {"%f", NO_NUMBER, "<nan>"},  {"%+07d", NO_NUMBER, "  <nan>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format);
        EXPECT_STREQ(qxString::str(row.format, row.value), row.text);
    }
}

TEST(qxStringFormat, integersKeepTheirSize)
{
    EXPECT_STREQ(qxString::str("%d", 4294967295u), "4294967295");
    EXPECT_STREQ(qxString::str("%x", -1), "ffffffff");
    EXPECT_STREQ(qxString::str("%lx", -1), "ffffffffffffffff");
    EXPECT_STREQ(qxString::str("%llx %hx", -1, -1), "ffffffffffffffff ffffffff");
    EXPECT_STREQ(qxString::str("%x", -1LL), "ffffffffffffffff");
    EXPECT_STREQ(qxString::str("%x", -2147483649.0), "ffffffff7fffffff");
    EXPECT_STREQ(qxString::str("%d", 0xFFFFFFFFFFFFFFFFULL), "-1");
    EXPECT_STREQ(qxString::str("%u", 0xFFFFFFFFFFFFFFFFULL), "18446744073709551615");
    EXPECT_STREQ(qxString::str("%d %d", -9223372036854775807LL - 1, 9007199254740993LL),
                 "-9223372036854775808 9007199254740993");
    EXPECT_STREQ(qxString::str("%d %d", 2.99, -2.99), "2 -2");
    EXPECT_STREQ(qxString::str("%u", 1e30), "18446744073709551615");
    EXPECT_STREQ(qxString::str("%f", 3), "3.000000");
    EXPECT_STREQ(qxString::str("%x %p", reinterpret_cast<const void*>(0xFEDCBA9876543210), nullptr),
                 "fedcba9876543210 0x0");
}

TEST(qxStringFormat, binaryAndUpperCaseLetters)
{
    EXPECT_STREQ(qxString::str("%b %#b %#B %08b", 5, 5, 5, 5), "101 0b101 0B101 00000101");
    EXPECT_STREQ(qxString::str("%O %#O %#o %#X", 8, 8, 8, 255), "10 0O10 010 0XFF");
    EXPECT_STREQ(qxString::str("%#b %#O %#x", 0, 0, 0), "0 0 0");
    EXPECT_STREQ(qxString::str("%b", 0x8000000000000000ULL), ("1" + std::string(63, '0')).c_str());
}

TEST(qxStringFormat, lengthsAreAcceptedAndSkipped)
{
    for (const char* length : {"h", "hh", "l", "ll", "L", "q", "j", "z", "t", "I64", "I32"}) {
        SCOPED_TRACE(length);
        EXPECT_STREQ(qxString::str((std::string("%") + length + "d").c_str(), 300), "300");
    }
}

TEST(qxStringFormat, characters)
{
    const struct {
        int code;
        std::string text;
    } rows[] = {
        {'x', "x"},        {0, std::string(1, '\0')}, {233, "\xE9"}, {-23, "\xE9"}, {-128, "\x80"},
        {256, "\xC4\x80"}, {0x20AC, "\xE2\x82\xAC"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        const qxString text = qxString::str("%c", row.code);
        EXPECT_EQ(std::string(text.getString(), text.length()), row.text);
    }
    EXPECT_STREQ(qxString::str("%3c|%-3c|", 'a', 'b'), "  a|b  |");

    MessageRecorder recorder;
    EXPECT_STREQ(qxString::str("<%c>", -129), "<>");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Utf encoding on faulty data set"});
}

TEST(qxStringFormat, wideTexts)
{
    EXPECT_STREQ(qxString::str("<%S>", L"\u00E9\u20AC"), "<\xC3\xA9\xE2\x82\xAC>");
    EXPECT_STREQ(qxString::str("%.4S|%6S", L"\u00E9\u20AC", L"\u00E9"),
                 "\xC3\xA9|    \xC3\xA9"); // no half characters
}

TEST(qxStringFormat, textsWithZeroBytesKeepTheirLength)
{
    const qxString text = qxString::str("<%s>", qxString("a\0b", 3));
    EXPECT_EQ(std::string(text.getString(), text.length()), std::string("<a\0b>", 5));
    const qxString literal = qxString::str(qxString("a\0%d", 4), 5);
    EXPECT_EQ(std::string(literal.getString(), literal.length()), std::string("a\0"
                                                                              "5",
                                                                              3));
}

TEST(qxStringFormat, precisionBoundsWhatIsRead)
{
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_STREQ(qxString::str("%.3s", static_cast<const char*>(unterminated)), "abc");
}

TEST(qxStringFormat, positionsAndStars)
{
    EXPECT_STREQ(qxString::str("%2$s %1$s %2$s", "a", "b"), "b a b");
    EXPECT_STREQ(qxString::str("%2$s %s %s", "a", "b"),
                 "b a b"); // a position does not move the next argument
    EXPECT_STREQ(qxString::str("%16$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16), "16");
    EXPECT_STREQ(qxString::str("%*d|%-*d|%*d|", 4, 7, 4, 7, -4, 7), "   7|7   |7   |");
    EXPECT_STREQ(qxString::str("%.*f|%.*f|%*.*f", 1, 2.55, -1, 2.5, 6, 2, 1.0), "2.5|2.500000|  1.00");
    EXPECT_STREQ(qxString::str("%1$*2$d|%1$.*2$f", 7, 3), "  7|7.000");
    EXPECT_STREQ(qxString::str("%d %s", 5, "x", "unused"), "5 x");
    EXPECT_STREQ(qxString::str("%d<%x>", 5), "5<0>"); // a missing number is 0
    EXPECT_STREQ(qxString::str("100%% %d%%", 5), "100% 5%");
    EXPECT_STREQ(qxString::str(""), "");
}

TEST(qxStringFormat, badFormatsRaise)
{
    const std::string badPosition = "Using qxString::format(\"%n$\") where n<1 or n>16";
    const struct {
        const char* format;
        std::string text;
    } rows[] = {
        {"%0$d", badPosition},
        {"%17$d", badPosition},
        {"%99999999999999999999$d", badPosition},
        {"%*0$d", badPosition},
        {"50%", "Unknown format option in string '50%'"},
        {"%y %d", "Unknown format option in string '%y %d'"},
        {"%n", "Unknown format option in string '%n'"},
        {"%F", "Unknown format option in string '%F'"},
        {"%5", "Unknown format option in string '%5'"},
        {"%.", "Unknown format option in string '%.'"},
        {"%I16d", "Unknown format option in string '%I16d'"},
        {"%5%", "Unknown format option in string '%5%'"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format);
        EXPECT_EQ(fatalText([&] { qxString::str(row.format, 1, 2); }), row.text);
    }
}

TEST(qxStringFormat, badPointersRaise)
{
    const std::string text = "Using qxString::format(\"%s\",arg) where arg is no valid pointer";
    const char* const null = nullptr;
    EXPECT_EQ(fatalText([&] { qxString::str("%s", null); }), text);
    EXPECT_EQ(fatalText([&] { qxString::str("%s", 5); }), text);
    EXPECT_EQ(fatalText([&] { qxString::str("%s"); }), text);
    EXPECT_EQ(fatalText([&] { qxString::str("%s", reinterpret_cast<const char*>(4095)); }), text);
    EXPECT_EQ(fatalText([&] { qxString::str("%S", nullptr); }),
              "Using qxString::format(\"%S\",arg) where arg is no valid pointer");
}

TEST(qxStringFormat, whatFailsChangesNothing)
{
    qxString text("before");
    fatalText([&] { text.format("after %d %y", 1); });
    EXPECT_STREQ(text, "before");
}

TEST(qxStringFormat, theTargetMayTakePart)
{
    qxString text("x%s");
    text.format(text, text);
    EXPECT_STREQ(text, "xx%s");
    text.format("%s|%s", text, text.getString());
    EXPECT_STREQ(text, "xx%s|xx%s");
}

TEST(qxStringFormat, sizesNeverPassAString)
{
    const std::string text = "Too many characters in qxString";
    for (const char* format : {"%65536d", "%2000000000d", "%99999999999999999999d", "%.65536d", "%.65534f",
                               "%.70000e", "%#.70000g", "%-65536s", "%65000d%600d"}) {
        SCOPED_TRACE(format);
        const bool isText = std::string(format).back() == 's';
        const qxArgument argument = isText ? qxArgument("a") : qxArgument(1.0);
        EXPECT_EQ(fatalText([&] { qxString::str(format, argument, argument); }), text);
    }
    EXPECT_EQ(fatalText([&] { qxString::str("%*d", 2147483647, 1); }), text);
    EXPECT_EQ(fatalText([&] { qxString::str("%*d", -2147483647 - 1, 1); }), text);
    EXPECT_EQ(qxString::str("%65535d", 1).length(), 65535);
    EXPECT_EQ(qxString::str("%.65533f", 1.0).length(), 65535);
    EXPECT_STREQ(qxString::str("%.99999999999g", 0.5), "0.5");
}

TEST(qxStringFormat, resultsLargerThanTheFixedRoom)
{
    const std::string part(300, 'p');
    std::string expected;
    for (int i = 0; i < 16; ++i) expected += part;
    const qxString p(part.c_str());
    EXPECT_EQ(
        qxString::str("%s%s%s%s%s%s%s%s%s%s%s%s%s%s%s%s", p, p, p, p, p, p, p, p, p, p, p, p, p, p, p, p)
            .getString(),
        expected);
}

} // namespace
