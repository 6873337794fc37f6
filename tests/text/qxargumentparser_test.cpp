// SPDX-License-Identifier: see LICENSE

#include "qxargumentparser.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>

namespace
{

constexpr float INFINITE = std::numeric_limits<float>::infinity();

/// What the tokens are, in their order: "POSITION option NAME" and "POSITION argument TEXT", separated by "|".
std::string listed(const qxArgumentParser& parser)
{
    std::string lines;
    const auto* option = parser.getOptions().begin();
    const auto* argument = parser.getArguments().begin();
    for (unsigned int i = 0; i < parser.getTokenCount(); ++i) {
        const bool isOption = option != parser.getOptions().end() && option->position == i;
        EXPECT_TRUE(isOption ? option->isOption : argument->position == i && !argument->isOption);
        lines += (i == 0 ? "" : "|") + std::to_string(i) + (isOption ? " option " : " argument ") +
                 bytesOf(isOption ? (option++)->name : (argument++)->text);
    }
    return lines;
}

template <class... Rows>
void expectSplit(const char* prefix, const Rows&... rows)
{
    expectRows([=](const std::string& text) { return listed(qxArgumentParser(text.c_str(), prefix)); },
               rows...);
}

TEST(qxArgumentParser, splitsTextAtWhiteSpace)
{
    expectSplit(
        "-", " => ", "   => ", " a \tb\r\nc => 0 argument a|1 argument b|2 argument c",
        "/usr/lib file.txt # // /* => 0 argument /usr/lib|1 argument file.txt|2 argument #|3 argument "
        "//|4 argument /*",
        "007 1.50 \xC3\xA9\xFF => 0 argument 007|1 argument 1.50|2 argument \xC3\xA9\xFF");
    expectSplit("-", "\"a b\" 'c \" d' => 0 argument a b|1 argument c \" d",
                "\"\" '' => 0 argument |1 argument ", "\"a b\"c => 0 argument a b|1 argument c",
                "x\"a b\"c d => 0 argument x\"a b\"c|1 argument d",
                "don't \"x => 0 argument don't|1 argument \"x",
                "a\\ \"b\\\" => 0 argument a\\|1 argument b\\", "'don't' => 0 argument don|1 argument t'");
}

TEST(qxArgumentParser, tellsOptionsFromNumbers)
{
    expectSplit("-", "prog -v 3 file => 0 argument prog|1 option v|2 argument 3|3 argument file",
                "-5 -1.5 -.5 -5abc -1e3 => 0 argument -5|1 argument -1.5|2 argument -.5|3 argument -5abc|4 "
                "argument -1e3",
                "-0 -0.0 -00 -0x10 => 0 option 0|1 option 0.0|2 option 00|3 option 0x10",
                "-info -nan -infile -,5 => 0 option info|1 option nan|2 option infile|3 option ,5",
                "--verbose --5 -- - => 0 option -verbose|1 argument --5|2 option -|3 argument -",
                "\"-x\" '-a b' => 0 option x|1 option a b", "-a\"b c\" => 0 option a\"b c\"");
    expectSplit("--", "--x -x -- --- => 0 option x|1 argument -x|2 argument --|3 option -");
    expectSplit("", "x 5 0 => 0 option x|1 argument 5|2 option 0");
}

TEST(qxArgumentParser, takesArraysElementByElement)
{
    const char* const narrow[] = {"prog", "-v", "a b", "", "\"q\"", "-5", "it's"};
    const qxArgumentParser parser(7, narrow, "FILE");
    EXPECT_EQ(listed(parser),
              "0 argument prog|1 option v|2 argument a b|3 argument |4 argument \"q\"|5 argument "
              "-5|6 argument it's");
    EXPECT_STREQ(parser.getArgumentString(), "prog -v \"a b\" \"\" \"q\" -5 it's");
    EXPECT_STREQ(parser.getSyntaxString(), "FILE");

    const wchar_t* const wide[] = {L"\x00E9", L"+x y"};
    EXPECT_EQ(listed(qxArgumentParser(2, wide, "", "+")), "0 argument \xC3\xA9|1 option x y");
    EXPECT_EQ(listed(qxArgumentParser(0, narrow, "")), "");
    const std::string longText(60000, 'x');
    const char* const many[] = {longText.c_str(), longText.c_str()};
    qxArgumentParser large(2, many, "");
    EXPECT_EQ(large.getArgument(1).length(), 60000U);
    EXPECT_EQ(fatalText([&] { large.getArgumentString(); }), "Too many characters in qxString");
}

TEST(qxArgumentParser, findsOptions)
{
    const qxArgumentParser parser("prog -v 3 file -V -x");
    unsigned int position = 9;
    unsigned int count = 9;
    EXPECT_TRUE(parser.hasOption("v", 1, &position, &count));
    EXPECT_EQ(position, 1U);
    EXPECT_EQ(count, 3U);
    EXPECT_TRUE(parser.hasOption("V", 0, &position, &count)); // the first that is either
    EXPECT_EQ(position, 1U);
    EXPECT_TRUE(parser.hasOption("V", 1, &position, &count));
    EXPECT_EQ(position, 4U);
    EXPECT_EQ(count, 1U);
    EXPECT_FALSE(parser.hasOption("X"));
    EXPECT_FALSE(parser.hasOption("y", 0, &position, &count));
    EXPECT_EQ(position, 4U);
    EXPECT_TRUE(parser.hasOption("x", 1, nullptr, &count));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(parser.getOptionCount(), 3U);
    EXPECT_STREQ(parser.getOptionString("v"), "-v 3 file");
    EXPECT_STREQ(parser.getOptionString("y"), "");
    EXPECT_STREQ(parser.getArgOptString(), "-v 3 file -V -x");
    EXPECT_STREQ(qxArgumentParser("a b").getArgOptString(), "");
}

TEST(qxArgumentParser, aValueTokenIsAPlainArgumentToo)
{
    const qxArgumentParser parser("prog -v 3 file");
    unsigned int count = 0;
    EXPECT_TRUE(parser.hasOption("v", 1, nullptr, &count));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(parser.getArgumentCount(), 3U);
    EXPECT_EQ(parser.getArgumentCount(1), 1U);
    EXPECT_STREQ(parser.getArgument(1), "3");
    EXPECT_STREQ(parser.getArgument(1, 1), "");
    EXPECT_STREQ(parser.getArgument(3), "");
    EXPECT_EQ(parser.getArgumentValue(1, 7), 3);
    EXPECT_EQ(parser.getArgumentValue(1, 7, 1), 7);
    EXPECT_STREQ(parser.getArgumentString(), "prog -v 3 file");
    EXPECT_STREQ(parser.getArgumentString(1), "prog");
    EXPECT_STREQ(qxArgumentParser("a 'b c'").getArgumentString(1), "a \"b c\"");
}

TEST(qxArgumentParser, missingValuesAreErrorsUnlessTheyAreSilent)
{
    qxArgumentParser parser("-v 1 -w");
    EXPECT_EQ(parser.getOptionValue("x", 5), 5);
    EXPECT_EQ(parser.getOptionValue("V", 5), 5);
    EXPECT_EQ(parser.getOptionValue("V", 5, 0, 0), 1);
    EXPECT_EQ(parser.getOptionValue("v", 5, 1, 1, 1), 5);
    EXPECT_FALSE(parser.hasError());
    EXPECT_EQ(parser.getOptionValue("v", 5, 1), 5); // what follows is an option
    EXPECT_STREQ(parser.getError(), "Missing argument 2 for option '-v'");
    EXPECT_EQ(parser.getOptionValue("w", 5, 0xFFFFFFFF), 5);
    EXPECT_STREQ(parser.getError(), "Missing argument 4294967296 for option '-w'");
    parser.setArgumentString("+v 2", "+");
    EXPECT_FALSE(parser.hasError());
    EXPECT_EQ(parser.getOptionValue("v", 5), 2);
    EXPECT_EQ(parser.getOptionCount(), 1U);
    EXPECT_EQ(parser.getArgumentCount(), 1U);
}

TEST(qxArgumentParser, convertsValuesAndKeepsThemInRange)
{
    qxArgumentParser parser("-v 300 -300 1e40 99999999999999999999 x -2.5 -1e300");
    const auto value = [&](auto whenMissing, unsigned int index) {
        const auto fromOption = parser.getOptionValue("v", whenMissing, index);
        EXPECT_TRUE(fromOption == parser.getArgumentValue(index, whenMissing));
        return fromOption;
    };
    EXPECT_EQ(value(static_cast<signed char>(1), 0), 127);
    EXPECT_EQ(value(static_cast<signed char>(1), 1), -128);
    EXPECT_EQ(value(static_cast<unsigned char>(1), 0), 255);
    EXPECT_EQ(value(static_cast<unsigned char>(1), 1), 0);
    EXPECT_EQ(value(static_cast<short>(1), 2), 32767);
    EXPECT_EQ(value(static_cast<unsigned short>(1), 2), 65535);
    EXPECT_EQ(value(1, 3), 2147483647);
    EXPECT_EQ(value(1, 5), -2);
    EXPECT_EQ(value(1U, 3), 4294967295U);
    EXPECT_EQ(value(qxInt64{1}, 3), std::numeric_limits<qxInt64>::max());
    EXPECT_EQ(value(qxUInt64{1}, 3), std::numeric_limits<qxUInt64>::max());
    EXPECT_EQ(value(qxUInt64{1}, 1), 0U);
    EXPECT_EQ(value(1.0F, 2), INFINITE);
    EXPECT_EQ(value(1.0F, 6), -INFINITE);
    EXPECT_EQ(value(1.0F, 5), -2.5F);
    EXPECT_EQ(value(1.0, 2), 1e40);
    EXPECT_EQ(value(1, 4), 0);
    EXPECT_EQ(value(qxString("d"), 4), qxString("x"));
    EXPECT_EQ(value(qxString("d"), 1), qxString("-300"));
    EXPECT_EQ(qxArgumentParser("-v 18446744073709551615").getOptionValue("v", qxUInt64{0}),
              18446744073709551615U);
}

TEST(qxArgumentParser, checksTheNumberOfArguments)
{
    qxArgumentParser parser("prog a");
    EXPECT_TRUE(parser.checkArgumentCount(2));
    EXPECT_FALSE(parser.hasError());
    EXPECT_FALSE(parser.checkArgumentCount(1));
    EXPECT_STREQ(parser.getError(), " Wrong number of arguments (2)");
}

/// Writes messages to standard error, where tests of the end of a process look.
class ErrorWriter final : public qxMessageReceiverInterface
{
public:
    ErrorWriter() { qxMessage::addMessageReceiver(this); }
    ~ErrorWriter() override { qxMessage::removeMessageReceiver(this); }

    void onMessage(const qxString&, qxMessageLevel level, const char* text) override
    {
        std::cerr << level << ":" << text << "\n";
    }
};

/// Expects the process that `body` runs in to end with the status 0 and the message `text`.
template <class Body>
void expectEnd(const char* text, Body&& body)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto run = [&body] {
        const ErrorWriter writer;
        body();
        std::_Exit(1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), text);
}

TEST(qxArgumentParser, helpEndsTheProcess)
{
    const char* const help[] = {"prog", "-Help"};
    expectEnd("12288: Syntax: prog \\[-v\\] FILE\n", [&] { qxArgumentParser(2, help, "[-v] FILE"); });
    expectEnd("12288: Syntax: FILE\n", [] {
        qxArgumentParser parser("-H");
        parser.exitOnError(true);
        parser.setSyntaxString("FILE");
    });
    qxArgumentParser text("-h -help");
    text.setSyntaxString("FILE");
    const char* const values[] = {"prog", "--help", "help", "h"};
    EXPECT_EQ(qxArgumentParser(4, values, "FILE").getOptionCount(), 1U);
}

TEST(qxArgumentParser, aWrongNumberOfArgumentsEndsTheProcess)
{
    const char* const words[] = {"prog", "%s"};
    expectEnd("16384: Wrong number of arguments \\(2\\) - Syntax: prog FILE %d\n",
              [&] { qxArgumentParser(2, words, "FILE %d").checkArgumentCount(3); });
    expectEnd("16384: Wrong number of arguments \\(0\\) - Syntax: FILE\n",
              [&] { qxArgumentParser(0, words, "FILE").checkArgumentCount(1); });
    EXPECT_TRUE(qxArgumentParser(2, words, "FILE").checkArgumentCount(2));
}

} // namespace
