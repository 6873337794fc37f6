// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

#include <cstdio>
#include <limits>
#include <string>

namespace
{

const char* const FLAGS[] = {"", "-", "+", " ", "0", "#", "-0", "+0", " 0", "-+", "#0", "#-", "+ #0"};
const char* const SIZES[] = {"", "1", "12", ".0", ".1", ".5", "12.0", "12.3", "3.5"};

template <class... Arguments>
std::string formatted(const std::string& format, const Arguments&... arguments)
{
    return bytesOf(qxString::str(qxString(format.data(), format.size()), arguments...));
}

template <class Argument>
std::string printed(const std::string& format, Argument argument)
{
    char text[600];
    const int length = std::snprintf(text, sizeof text, format.c_str(), argument);
    return std::string(text, static_cast<std::size_t>(length));
}

// Compares every conversion made of flags, a width, a precision and one of the letters with C's own.
template <class Argument>
void compareWithC(const std::string& letters, Argument value)
{
    for (char letter : letters) {
        for (const char* flags : FLAGS) {
            for (const char* size : SIZES) {
                const std::string format = std::string("%") + flags + size + letter;
                EXPECT_EQ(formatted(format, value), printed(format, value)) << format << " of " << value;
            }
        }
    }
}

TEST(qxStringFormat, numbersFollowC)
{
    if (printed("%#.0o", 0) != "0") GTEST_SKIP() << "needs a C library that follows C";
    for (int value : {0, 1, -1, 7, -42, 255, 123456, 2147483647, -2147483647 - 1})
        compareWithC("diuoxX", value);
    for (double value : {0.0,       -0.0,   1.0,  -1.5,    0.5,  0.125,   2.675,   1e-5,    123456.789,
                         99999.4,   0.001,  1e15, -3.0e-7, 1e22, 0.0001,  0.00001, 999999., 1000000.,
                         9.9999995, 5e-324, 2.5,  1e-300,  1e14, 12345.0, 0.045})
        compareWithC("feEgG", value);
}

TEST(qxStringFormat, textsFollowC)
{
    for (const char* value : {"", "a", "some words", "0123456789abcdef"}) {
        for (const char* format :
             {"%s", "%12s", "%-12s", "%.3s", "%12.3s", "%-12.3s", "%.0s", "%3s|", "%.40s"}) {
            SCOPED_TRACE(format);
            EXPECT_EQ(formatted(format, value), printed(format, value));
            EXPECT_EQ(formatted(format, qxString(value)), printed(format, value));
        }
    }
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(formatted("%.3s", static_cast<const char*>(unterminated)), "abc");
    EXPECT_EQ(formatted("<%s>", qxString("a\0b", 3)), std::string("<a\0b>", 5));
    EXPECT_EQ(formatted(std::string("a\0%d", 4), 5), std::string("a\0\x35", 3));
}

TEST(qxStringFormat, doublesHaveFifteenDigits)
{
    const auto format = [](const std::string& question) { // a format and its number
        return formatted(question.substr(0, question.find(' ')),
                         std::stod(question.substr(question.find(' '))));
    };
    expectRows(format, "%.20f 0.1 => 0.10000000000000000000",
               "%f 123456789012345678 => 123456789012346000.000000", "%.17e 0.1 => 1.00000000000000000e-01",
               "%.17g 0.1 => 0.1", "%.20g 123456789012345678 => 123456789012346000",
               "%#.20g 123456789012345678 => 123456789012346000.00", "%#.18g 0.1 => 0.100000000000000000",
               "%.12f 9999.99999999999999 => 10000.000000000000",
               "%.0f 999999999999999.5 => 1000000000000000",
               "%#.5g 99999.95 => 1.0000e+05",                    // rounding moves it to the other form
               "%.0f 0.5 => 0", "%.0f 1.5 => 2",                  // ties go to the even digit
               "%.2f 1.005 => 1.00", "%.99999999999g .5 => 0.5"); // the first is a little less than it looks
    EXPECT_EQ(formatted("%.3f", 1e300), "1" + std::string(300, '0') + ".000");
    EXPECT_EQ(formatted("%.330f", 5e-324), printed("%.330f", 5e-324));
    expectRows(format, "%f inf => <inf>", "%f -inf => -<inf>", "%+g inf => +<inf>", "%08d inf =>    <inf>",
               "%-8x -inf => -<inf>  ", "%f nan => <nan>", "%+07d nan =>   <nan>");
    EXPECT_EQ(formatted("% e", std::numeric_limits<double>::infinity()), " <inf>");
}

TEST(qxStringFormat, integersKeepTheirSize)
{
    EXPECT_EQ(formatted("%d", 4294967295u), "4294967295");
    EXPECT_EQ(formatted("%x %hx", -1, -1), "ffffffff ffffffff");
    EXPECT_EQ(formatted("%lx %llx", -1, -1), "ffffffffffffffff ffffffffffffffff");
    EXPECT_EQ(formatted("%x", -1LL), "ffffffffffffffff");
    EXPECT_EQ(formatted("%x", -2147483649.0), "ffffffff7fffffff");
    EXPECT_EQ(formatted("%d", 0xFFFFFFFFFFFFFFFFULL), "-1");
    EXPECT_EQ(formatted("%u", 0xFFFFFFFFFFFFFFFFULL), "18446744073709551615");
    EXPECT_EQ(formatted("%d", -9223372036854775807LL - 1), "-9223372036854775808");
    EXPECT_EQ(formatted("%d", 9007199254740993LL), "9007199254740993");
    EXPECT_EQ(formatted("%d %d", 2.99, -2.99), "2 -2");
    EXPECT_EQ(formatted("%u", 1e30), "18446744073709551615");
    EXPECT_EQ(formatted("%f", 3), "3.000000");
    EXPECT_EQ(formatted("%x %p", reinterpret_cast<const void*>(0xFEDCBA9876543210), nullptr),
              "fedcba9876543210 0x0");
    for (const char* length : {"h", "hh", "l", "ll", "L", "q", "j", "z", "t", "I64", "I32"})
        EXPECT_EQ(formatted(std::string("%") + length + "d", 300), "300") << length;
}

TEST(qxStringFormat, binaryAndUpperCaseLetters)
{
    EXPECT_EQ(formatted("%b %#b %#B %08b", 5, 5, 5, 5), "101 0b101 0B101 00000101");
    EXPECT_EQ(formatted("%O %#O %#o %#X", 8, 8, 8, 255), "10 0O10 010 0XFF");
    EXPECT_EQ(formatted("%#b %#O %#x", 0, 0, 0), "0 0 0");
    EXPECT_EQ(formatted("%b", 0x8000000000000000ULL), "1" + std::string(63, '0'));
}

TEST(qxStringFormat, charactersAndWideTexts)
{
    const struct {
        int code;
        std::string text;
    } rows[] = {
        {'x', "x"},        {0, std::string(1, '\0')}, {233, "\xE9"}, {-23, "\xE9"}, {-128, "\x80"},
        {256, "\xC4\x80"}, {0x20AC, "\xE2\x82\xAC"},
    };
    for (const auto& row : rows) EXPECT_EQ(formatted("%c", row.code), row.text);
    EXPECT_EQ(formatted("%3c|%-3c|", 'a', 'b'), "  a|b  |");
    EXPECT_EQ(formatted("<%S>", L"\u00E9\u20AC"), "<\xC3\xA9\xE2\x82\xAC>");
    EXPECT_EQ(formatted("%.4S|%6S", L"\u00E9\u20AC", L"\u00E9"),
              "\xC3\xA9|    \xC3\xA9"); // no half characters

    MessageRecorder recorder;
    EXPECT_EQ(formatted("<%c>", -129), "<>");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Utf encoding on faulty data set"});
}

TEST(qxStringFormat, positionsAndStars)
{
    EXPECT_EQ(formatted("%2$s %s %1$s", "a", "b"), "b a a"); // a position does not move the next argument
    EXPECT_EQ(formatted("%16$d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16), "16");
    EXPECT_EQ(formatted("%*d|%-*d|%*d|", 4, 7, 4, 7, -4, 7), "   7|7   |7   |");
    EXPECT_EQ(formatted("%.*f|%.*f|%*.*f", 1, 2.55, -1, 2.5, 6, 2, 1.0), "2.5|2.500000|  1.00");
    EXPECT_EQ(formatted("%1$*2$d|%1$.*2$f", 7, 3), "  7|7.000");
    EXPECT_EQ(formatted("%d %s", 5, "x", "unused"), "5 x");
    EXPECT_EQ(formatted("%d<%x>", 5), "5<0>"); // a missing number is 0
    EXPECT_EQ(formatted("100%% %d%%", 5), "100% 5%");
    EXPECT_EQ(formatted(""), "");
}

TEST(qxStringFormat, badFormatsRaise)
{
    for (const char* format : {"%0$d", "%17$d", "%99999999999999999999$d", "%*0$d"})
        EXPECT_EQ(fatalText([&] { formatted(format, 1, 2); }),
                  "Using qxString::format(\"%n$\") where n<1 or n>16");
    for (const std::string format : {"50%", "%y %d", "%n", "%F", "%5", "%.", "%I16d", "%5%"})
        EXPECT_EQ(fatalText([&] { formatted(format, 1, 2); }),
                  "Unknown format option in string '" + format + "'");

    const std::string text = "Using qxString::format(\"%s\",arg) where arg is no valid pointer";
    EXPECT_EQ(fatalText([] { formatted("%s", static_cast<const char*>(nullptr)); }), text);
    EXPECT_EQ(fatalText([] { formatted("%s", 5); }), text);
    EXPECT_EQ(fatalText([] { formatted("%s"); }), text);
    EXPECT_EQ(fatalText([] { formatted("%s", reinterpret_cast<const char*>(4095)); }), text);
    EXPECT_EQ(fatalText([] { formatted("%S", nullptr); }),
              "Using qxString::format(\"%S\",arg) where arg is no valid pointer");
}

TEST(qxStringFormat, theTargetMayTakePart)
{
    qxString text("x%s");
    text.format(text, text);
    EXPECT_STREQ(text, "xx%s");
    text.format("%s|%s", text, text.getString());
    EXPECT_STREQ(text, "xx%s|xx%s");
    fatalText([&] { text.format("after %d %y", 1); });
    EXPECT_STREQ(text, "xx%s|xx%s"); // what fails changes nothing
}

TEST(qxStringFormat, sizesNeverPassAString)
{
    const std::string text = "Too many characters in qxString";
    for (const char* format :
         {"%65536d", "%2000000000d", "%99999999999999999999d", "%.65536d", "%.65534f", "%.70000e",
          "%#.70000g", "%-65536s", "%65000d%600d", "%65535d\n", "%*d", "%-*d"}) {
        SCOPED_TRACE(format);
        const bool isText = std::string(format).back() == 's';
        const qxArgument argument = isText ? qxArgument("a") : qxArgument(2147483647);
        EXPECT_EQ(fatalText([&] { formatted(format, argument, argument); }), text);
    }
    EXPECT_EQ(fatalText([] { formatted("%*d", -2147483647 - 1, 1); }), text);
    EXPECT_EQ(fatalText([] { formatted("%.*d", 4294967297LL, 1); }), text);

    // At the ends of the formatter's own room, and of every string.
    const std::string filler(65533, 'x');
    for (std::size_t length : {509U, 510U, 511U, 512U, 1022U, 1023U, 65533U})
        EXPECT_EQ(formatted(filler.substr(0, length) + "%d", 7), filler.substr(0, length) + "7") << length;
    EXPECT_EQ(formatted("%65535d", 1).size(), 65535U);
    EXPECT_EQ(formatted("%.65533f", 1.0).size(), 65535U);
}

} // namespace
