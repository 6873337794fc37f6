// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

namespace
{

class ScanTool : public Tool
{};

const std::string ALL = "qx: lines that do not match: 0\n";

TEST_F(ScanTool, writesFieldsWithTabs)
{
    expectAnswers("a = 1\r\nb = 2.5\n", "scan '%i = %n' => a\t1\nb\t2.5\n" + ALL,
                  "scan '%i = %n' - --header name,value => name\tvalue\na\t1\nb\t2.5\n" + ALL,
                  "scan '%t%e' => a\t = 1\nb\t = 2.5\n" + ALL);
    expectAnswers("a\tb\\c", "scan %e => a\\tb\\\\c\n" + ALL);
    expectAnswers("\n\n", "scan '' => \n\n" + ALL, "scan %e => \n\n" + ALL);
    expectAnswers("x\ry\r", "scan %e => x\ry\r\n" + ALL);
    expectAnswers("1,5;2", "scan '%n;%l' --decimal , => 1,5\t2\n" + ALL,
                  "scan '%n;%l' => 1 qx: lines that do not match: 1\n");
    expectAnswers("1\xE2\x82\xAC"
                  "5",
                  "scan %n --decimal \xE2\x82\xAC => 1\xE2\x82\xAC"
                  "5\n" +
                      ALL);
}

TEST_F(ScanTool, writesJson)
{
    expectAnswers("ab\"\\\t\x01\xC3\xA9 c\n", //
                  "scan %i%e --json => [\"ab\",\"\\\"\\\\\\u0009\\u0001\xC3\xA9 c\"]\n" + ALL,
                  "scan %i%t%e --json --header k,\"\t => {\"k\":\"ab\",\"\\\"\\u0009\":\"\\\"\",\"3\":"
                  "\"\\\\\\u0009\\u0001\xC3\xA9 c\"}\n" +
                      ALL,
                  "scan %e --json --header=a,b => {\"a\":\"ab\\\"\\\\\\u0009\\u0001\xC3\xA9 c\"}\n" + ALL);
    expectAnswers("\n", "scan '' --json => []\n" + ALL, "scan '' --json --header a => {}\n" + ALL);
}

TEST_F(ScanTool, countsTheLinesThatDoNotMatch)
{
    file("f", "a 1\nb\nc 2 d\n\"\n");
    expectAnswers("", "scan '%i %l' f => a\t1\nqx: lines that do not match: 3\n",
                  "scan '%i %l' f -v => a\t1\nqx: line 2 does not match: \"b\"\n"
                  "qx: line 3 does not match: \"c 2 d\"\nqx: line 4 does not match: \"\\\"\"\n"
                  "qx: lines that do not match: 3\n",
                  "scan %l f => 1 qx: lines that do not match: 4\n", "scan %e => 1 " + ALL);
}

TEST_F(ScanTool, saysWhatIsWrongWithThePattern)
{
    const std::string warning = "2 qx: warning: ";
    file("f", "a b\n");
    expectAnswers(
        "a b\n",
        "scan '%\"(\"' => " + warning + "Error:Missing right ')' in rule 'main' at (Line:1,Col:1) -> (\n",
        "scan '%i %\"nosuch\"' none => 4 qx: error: Could not open 'none' for reading (No such file or "
        "directory)\n",
        "scan '%i%\"nosuch\"' f => " + warning +
            "Error:Parse Error:'Unknow parse function 'nosuch'' in rule 'main' at (Line:1,Col:17) -> "
            "nosuch\n",
        "scan '%\"x;\"' f => " + warning + "Malformed rule in parser string:%\"x;\" rule nr:2\n");
}

TEST_F(ScanTool, takesLinesOfAnyLength)
{
    const std::string field(65535, 'x');
    const std::string line(3000000, 'y');
    expectAnswers(field + " 1\n" + line + "\n" + field + "x 2\n3 4",
                  "scan '%i %l' => " + field +
                      "\t1\nqx: warning: Error:Parse Error:'Too Large Pushback in basic parser' "
                      "in rule 'main' at (Line:1,Col:11) -> fPush  ' '  $ fInt fPush \n"
                      "qx: warning: Error:Parse Error:'Too many characters in qxString' in rule 'main' at "
                      "(Line:1,Col:11) -> fPush  ' '  $ fInt fPush \nqx: lines that do not match: 3\n");
    expectAnswers(line + "1\n", "scan '%\"[^0-9]*\"%l' => 1\n" + ALL);
}

TEST_F(ScanTool, saysWhatIsWrongWithItsCommandLine)
{
    const std::string end = "; see qx scan --help\n";
    expectAnswers(
        "", "scan => 2 qx: error: scan: PATTERN is missing" + end,
        "scan a b c => 2 qx: error: argument 'c' is one too many" + end,
        "scan a --decimal ab => 2 qx: error: 'ab' is no decimal character" + end,
        "scan a --decimal \xF0\x9F\x98\x80 => 2 qx: error: '\xF0\x9F\x98\x80' is no decimal character" + end,
        "scan a --header x,y,x => 2 qx: error: the header has 'x' twice" + end);
}

} // namespace
