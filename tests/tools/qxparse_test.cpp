// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

namespace
{

class ParseTool : public Tool
{
protected:
    /// The answer when the rule file `rules` runs on `input`.
    std::string parse(const std::string& rules, const std::string& input, const std::string& options = {})
    {
        file("r", rules);
        return answer("parse r " + options, input);
    }
};

TEST_F(ParseTool, printsCallsResultTextsAndRest)
{
    EXPECT_EQ(parse("main ::= $ 'a'+ fPush fDone $ '\"' [^\"]* '\"' fPushStr fNext;", "aa\"x\ty\"z\n"),
              "call: fDone \"aa\"\ncall: fNext \"aa\\\"x\\ty\\\"\"\nresult: OK\n"
              "push: \"aa\"\npush: \"x\\ty\"\nleft: \"z\\n\"\n");
    EXPECT_EQ(parse("main ::= 'a'+ ('c' | digit) fNever;", "aab"),
              "1 result: No Match\nleft: \"aab\"\n-:1:3: no match, expected 'c', digit\n");
    EXPECT_EQ(parse("main ::= $ 'a' fPush 'b' | 'a' 'x';", "\na"),
              "1 result: No Match\nleft: \"\\na\"\n-:1:1: no match, expected 'a'\n");
    EXPECT_EQ(parse("main ::= $ 'a' fOne 'b' | $ 'a' fTwo fPush;", "ac"),
              "call: fOne \"a\"\ncall: fTwo \"a\"\nresult: OK\npush: \"a\"\nleft: \"c\"\n");
}

TEST_F(ParseTool, knowsTheFunctionsOfStringParsersAndFiveMore)
{
    EXPECT_EQ(parse("main ::= $ float fPush SP $ X fPush $ EOL fPush CRLF $ fHex fPush fWS $ fStr fPushStr "
                    "$ fToken fPush $ fEnd fPush;",
                    "-1.5e2 Fx y\r\nff \t'q'\xE2\x82\xAC\xC3\xA9z"),
              "result: OK\npush: \"-1.5e2\"\npush: \"F\"\npush: \"x y\"\npush: \"ff\"\npush: \"q\"\n"
              "push: \"\xE2\x82\xAC\"\npush: \"\xC3\xA9z\"\nleft: \"\"\n");
    EXPECT_EQ(parse("main ::= fStr; fStr ::= 'own';", "own"), "result: OK\nleft: \"\"\n");
}

TEST_F(ParseTool, takesRulesAndInputFromWhereItIsTold)
{
    file("r", "\xEF\xBB\xBFmain ::= 'a'; other ::= 'b';");
    file("in", "ab");
    expectAnswers("b", "parse r in => result: OK\nleft: \"b\"\n",
                  "parse --start other r => result: OK\nleft: \"\"\n",
                  "parse r - --start=other => result: OK\nleft: \"\"\n",
                  "parse -e 'main ::= $ [^]* fPush;' in => result: OK\npush: \"ab\"\nleft: \"\"\n",
                  "parse r in --start fOnly => call: fOnly \"\"\nresult: OK\nleft: \"ab\"\n");
    expectAnswers("main ::= 'a';", "parse - in => result: OK\nleft: \"b\"\n");
}

TEST_F(ParseTool, takesTheOldestMarkOnRequest)
{
    const std::string rules = "main ::= $ 'a' $ 'b' fOne fTwo;";
    EXPECT_EQ(parse(rules, "ab"), "call: fOne \"b\"\ncall: fTwo \"ab\"\nresult: OK\nleft: \"\"\n");
    EXPECT_EQ(parse(rules, "ab", "--fifo"), "call: fOne \"ab\"\ncall: fTwo \"b\"\nresult: OK\nleft: \"\"\n");
}

TEST_F(ParseTool, tracesOnStandardError)
{
    EXPECT_EQ(parse("main ::= a fOne; a ::= 'x' | parseAlpha;", "b", "--trace"),
              "call: fOne \"b\"\nresult: OK\nleft: \"\"\n"
              "qx: Parsing Rule     : main(Line:1,Col:1)\n"
              "qx: Parsing Rule     :   a(Line:1,Col:1)\n"
              "qx: Parsing Function :     parseAlpha(Line:1,Col:1)\n"
              "qx: Exit Function    :     parseAlpha(Line:1,Col:2)\tResult:OK\n"
              "qx: Exit Rule        :   a(Line:1,Col:2)\tResult:OK\n"
              "qx: Parsing Function :   fOne(Line:1,Col:2)\n"
              "qx: Exit Function    :   fOne(Line:1,Col:2)\tResult:OK\n"
              "qx: Exit Rule        : main(Line:1,Col:2)\tResult:OK\n");
}

TEST_F(ParseTool, tellsWhereRulesAreWrong)
{
    const std::string error = "3 result: Error\n";
    EXPECT_EQ(parse("x ::= 'a';\nmain ::= x\n  'b'{3,2};", "ab"),
              error + "r:3:6: error: Min>Max in set {Min,Max} in rule 'main' at (Line:2,Col:6) -> {3,2}\n");
    EXPECT_EQ(parse("main ::= $ 'a' fPush x;\nx ::= nosuch;", "ab"),
              error +
                  "r:2:7: error: Parse Error:'Parse Error:'Unknow parse function 'nosuch'' in rule 'x' at "
                  "(Line:1,Col:2) -> nosuch' in rule 'main' at (Line:1,Col:14) -> x\n");
    EXPECT_EQ(parse("main ::= 'a' \"b;", "ab"),
              error + "r:1:14: error: Unbalansed quote string in rule 'main' at (Line:1,Col:6) -> \"b\n");
    EXPECT_EQ(parse("main ::= fToken | fEnd '\xC3\xA9;", "ab"),
              error + "r:1:24: error: Unbalansed single quoted string in rule 'main' at (Line:1,Col:16) -> "
                      "'\xC3\xA9\n");
    EXPECT_EQ(parse("x ::= 'a';\n main : 'b';", ""),
              "3 r:2:2: error: Malformed rule in parser -> 'main : 'b';'\n");
    expectAnswers("",
                  "parse -e 'main ::= [;' => " + error +
                      "-e:1:10: error: Unbalansed Set [] in rule 'main' at (Line:1,Col:2) -> [\n",
                  "parse -e '' => " + error + "qx: error: -e: Unknow parse function 'main'\n",
                  "parse -e 'main ::= fOne;' --start nosuch => " + error +
                      "qx: error: -e: Unknow parse function 'nosuch'\n");
}

TEST_F(ParseTool, endsWhatGoesOnForTooLong)
{
    EXPECT_EQ(parse("main ::= a; a ::= b; b ::= a 'x' | 'y';", "y"),
              "5 result: Error\nr:1:19: error: Left recursion in rule 'a' at (Line:1,Col:2) -> b\n");
    EXPECT_EQ(
        parse("main ::= x 'y'; x ::= x 'a' | fStart 'a' ;", "aaa"),
        "5 result: Error\nr:1:23: error: Left recursion in rule 'x' at (Line:1,Col:2) -> x 'a' | fStart "
        "'a' \n");
    std::string rules = "main ::= r0; r20 ::= 'a';";
    for (int i = 0; i < 20; ++i) {
        const std::string next = "r" + std::to_string(i + 1);
        rules += "\nr" + std::to_string(i) + " ::= " + next + " 'b' | " + next + " 'c';";
    }
    EXPECT_EQ(parse(rules, "a", "--steps 5000000"),
              "1 result: No Match\nleft: \"a\"\n-:1:2: no match, expected 'b', 'c'\n");
    file("r", rules);
    EXPECT_EQ(run("parse r --steps 1000", "a"), 5);
    EXPECT_NE(err.find(": error: Too many steps in rule 'r"), std::string::npos) << err;
}

TEST_F(ParseTool, looksRulesThrough)
{
    EXPECT_EQ(parse("main ::= list fOne | SP list;\nlist ::= digit list | X;", "", "--check"), "");
    EXPECT_EQ(
        parse("main ::= a |\n  nosuch 'x';\na ::= b;\nb ::= a 'x' | 'if' | 'iffy' | fOne b;", "", "--check"),
        "1 2:3 main: not defined: nosuch\n"
        "4:7 b: left recursion: a -> b -> a\n"
        "4:22 b: alternatives 2 and 3 can both match\n"
        "4:36 b: left recursion: b -> b\n");
    EXPECT_EQ(parse("main ::= nosuch;\nb ::= 'x' ( 'y' ;", "", "--check"),
              "3 1:10 main: not defined: nosuch\n"
              "2:11 b: Missing right ')' in rule 'b' at (Line:1,Col:6) -> ( 'y' \n");
    EXPECT_EQ(parse("a ::= 'x';\nb = 'y';\n", "", "--check"),
              "3 2:1 2: Malformed rule in parser -> 'b = 'y';'\n");
}

TEST_F(ParseTool, takesRulesAndInputOfAnySize)
{
    std::string rules;
    for (int i = 0; i < 30000; ++i)
        rules += "r" + std::to_string(i) + " ::= r" + std::to_string(i + 1) + " ;\n";
    EXPECT_EQ(parse("main ::= r0;\n" + rules + "r30000 ::= 'a';", "ab"), "result: OK\nleft: \"b\"\n");
    const std::string input(3000000, 'a');
    EXPECT_EQ(parse("main ::= 'a'+ ;", input), "result: OK\nleft: \"\"\n");
    EXPECT_EQ(parse("main ::= $ 'a'+ fAll;", input),
              "call: fAll \"" + input + "\"\nresult: OK\nleft: \"\"\n");
    EXPECT_EQ(parse("main ::= ('a' fA? )+ 'x';", "aaab" + input),
              "1 call: fA \"a\"\ncall: fA \"aa\"\ncall: fA \"aaa\"\nresult: No Match\nleft: \"aaab" + input +
                  "\"\n-:1:4: no match, expected 'a', 'x'\n");
    EXPECT_EQ(
        parse("main ::= $ 'a'+ fPush;", input),
        "3 result: Error\nr:1:17: error: Parse Error:'Too many characters in qxString' in rule 'main' at "
        "(Line:1,Col:9) -> fPush\n");
}

TEST_F(ParseTool, saysWhatIsWrongWithItsCommandLine)
{
    file("r", "main ::= 'a';");
    const std::string end = "; see qx parse --help\n";
    expectAnswers(
        "", "parse => 2 qx: error: parse: RULES is missing" + end,
        "parse r - x => 2 qx: error: argument 'x' is one too many" + end,
        "parse -e x r s => 2 qx: error: parse takes one input at most" + end,
        "parse --check r s => 2 qx: error: parse --check takes rules only" + end,
        "parse - => 2 qx: error: rules and input cannot both be standard input" + end,
        "parse r --steps x => 2 qx: error: 'x' is no number of steps" + end,
        "parse none => 4 qx: error: Could not open 'none' for reading (No such file or directory)\n",
        "parse r none => 4 qx: error: Could not open 'none' for reading (No such file or directory)\n");
}

} // namespace
