// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

namespace
{

class LexTool : public Tool
{};

TEST_F(LexTool, printsOneTokenALine)
{
    expectAnswers("ab 12 -1.50\n\xC3\xA9\"x\"",
                  "lex - => 1:1 2 \"ab\"\n1:3 256 32\n1:4 16 12\n1:6 256 32\n1:7 32 -1.5\n1:12 256 32\n"
                  "2:1 1 233\n2:2 1 34\n2:3 2 \"x\"\n2:4 1 34\n",
                  "lex --strings --bytes - => 1:1 2 \"ab\"\n1:3 256 32\n1:4 16 12\n1:6 256 32\n1:7 32 -1.5\n"
                  "1:12 256 32\n2:1 1 195\n2:2 1 169\n2:3 4 \"x\"\n");
    file("empty", "");
    EXPECT_EQ(answer("lex empty"), "");
}

TEST_F(LexTool, hasASwitchForEveryKindOfToken)
{
    const std::string input = "\"\\\"\"[a]#b\n//c\n/*d*/";
    EXPECT_EQ(answer("lex --strings --escape --set --hash --slash --comments -", input),
              "1:1 4 \"\\\\\\\"\"\n1:5 1024 \"a\"\n1:8 128 \"b\"\n1:10 256 32\n2:1 128 \"c\"\n2:4 256 32\n"
              "3:1 128 \"d\"\n");
    expectAnswers("fe,1", "lex --hex - => 1:1 16 254\n1:3 1 44\n1:4 16 1\n",
                  "lex --tokens-only - => 1:1 1 102\n1:2 1 101\n1:3 1 44\n1:4 1 49\n");
    expectAnswers("1,5", "lex --decimal , - => 1:1 32 1.5\n", "lex - => 1:1 16 1\n1:2 1 44\n1:3 16 5\n");
    expectAnswers("99999999999999999999 \"\n\"",
                  "lex --strings - => 1:1 64 9223372036854775807\n1:21 256 32\n1:22 4 \"\\n\"\n");
}

TEST_F(LexTool, warnsOfFaultyBytes)
{
    expectAnswers("a\xFF",
                  "lex - => 1:1 2 \"a\"\n1:2 1 0\nqx: warning: Utf lex encoding on faulty data set\n");
}

TEST_F(LexTool, tellsWhatIsWrongWithItsCommandLine)
{
    expectAnswers("", "lex => 2 qx: error: lex: FILE is missing; see qx lex --help\n",
                  "lex a b => 2 qx: error: argument 'b' is one too many; see qx lex --help\n",
                  "lex - --decimal '' => 2 qx: error: '' is no character of 16 bits; see qx lex --help\n",
                  "lex - --decimal ab => 2 qx: error: 'ab' is no character of 16 bits; see qx lex --help\n");
    EXPECT_EQ(run("lex missing"), 4);
}

TEST_F(LexTool, argsTellsHowACommandLineIsSplit)
{
    expectAnswers("",
                  "args -- 'prog -v 3 \"a b\" -5 --long' => 0 argument prog\n1 option v\n2 argument 3\n"
                  "3 argument a b\n4 argument -5\n5 option -long\n",
                  "args --prefix -- -- '--long -x' => 0 option long\n1 argument -x\n", "args -- '' => ",
                  "args --prefix=/ /a => 0 option a\n",
                  "args => 2 qx: error: args: TEXT is missing; see qx args --help\n",
                  "args a b => 2 qx: error: argument 'b' is one too many; see qx args --help\n");
}

} // namespace
