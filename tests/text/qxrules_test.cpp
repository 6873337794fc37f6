// SPDX-License-Identifier: see LICENSE

#include "qxruletest.h"

#include "qxteststream.h"
#include "qxtestsupport.h"

namespace
{

TEST(qxRules, matchElements)
{
    expectRows(RuleRows(), "'ab' \"c\" ~ abcd => OK |d", "'ab' ~ a => No Match |a", "'' ~  => OK |",
               "'a' /* b ; ' */ 'c' ~ ac => OK |", "'\\'' \"\\\"\\\\\" ~ '\"\\ => OK |",
               "'\\x41\\n\\q\\0' ~ A\n\\q => No Match |A\n\\q", "'\xC3\xA9' ~ \xC3\xA9 => OK |",
               "parseAlpha X ~ zF => OK |", "SP EOL CRLF ~  a b\r\nc => OK |c");
}

TEST(qxRules, matchSets)
{
    expectRows(RuleRows(), "[a-c]+ ~ abcd => OK |d", "[^a-c]+ ~ xyc => OK |c", "[^] ~ xy => OK |y",
               "[^]* ~ a\nb => OK |", "[] ~ a => No Match |a", "[-a]+ ~ a-b => OK |b", "[a-]+ ~ a-b => OK |b",
               "[z-a] ~ m => No Match |m", "[a^]+ ~ ^ab => OK |b", "[^\\]+ ~ a\\b => OK |\\b",
               "[#x41-#x43#x5D]+ ~ AC]D => OK |D", "[#x41B] ~ \xD0\x9Bz => OK |z", "[#xz]+ ~ #xzy => OK |y",
               "#x41 #x411 ~ A\xD0\x91 => OK |", "#x110000 ~ a => No Match |a",
               "[^] ~ \xF0\x9F\x98\x80z => OK |z",
               "[\xF0\x9F\x98\x80-\xF0\x9F\x98\x82]+ ~ \xF0\x9F\x98\x81z => OK |z",
               "[\xF0\x9F\x98\x80] ~ \xF0\x9F\x99\x80 => No Match |\xF0\x9F\x99\x80",
               "[^\xF0\x9F\x98\x80]3 ~ \xF0\x9F\x99\x80\xC3\xA9z\xF0\x9F\x98\x80 => OK |\xF0\x9F\x98\x80",
               "[\xC3\xA0-\xC4\x90\xC4\x85-\xC5\x80]+ ~ \xC5\x80\xC3\xA0\xC5\x81 => OK |\xC5\x81");
}

TEST(qxRules, repeat)
{
    expectRows(RuleRows(), //
               "'a' ('b' 'c' | $)2 fPush fPush fPush ~ ab => OK [] [] [a] |b", "'a'? 'b' ~ b => OK |",
               "'a'* ~ aaab => OK |b", "'a'* ~  => OK |", "'a'+ ~ b => No Match |b", "'a'+ ~ aab => OK |b",
               "[^]* 'x' ~ abx => No Match |abx", "(X)8 '-' ~ 0123abcD- => OK |",
               "(X)8 ~ 0123abc- => No Match |0123abc-", "X 8 ~ 01234567 => OK |", "('ab')2 ~ abab => OK |",
               "('ab')2 ~ aba => No Match |aba", "('a' 'b'){1,2} ~ ababab => OK |ab",
               "'a'{2,3} ~ a => No Match |a", "'a'{ 2 , 3 } ~ aaaa => OK |a", "'a'0 'b' ~ b => OK |",
               "'a'{0,2} ~  => OK |", "'a'1 ~ ab => OK |b", "('')2 ~  => No Match |", "('')2 ~ x => OK |x",
               "('a'?)* ~ aab => OK |b", "('a'*)+ 'b' ~ aab => OK |", "('a' | '')+ 'b' ~ ab => OK |",
               "('a'|'b')* 'c' ~ abbac => OK |", "('a' 'b')* ~ aba => OK |a", "'a' * ~ aa => OK |",
               "('a'*)4294967295 'b' ~ ab => OK |", "($ 'a' fPush){0,2} ~ aaa => OK [a] [a] |a",
               "(SP* 'a')* ~  a  a  => OK | ");
}

TEST(qxRules, takeTheFirstOfTheirAlternativesThatMatches)
{
    expectRows(RuleRows(), "'a' | 'ab' ~ ab => OK |b", "'ab' | 'a' ~ ab => OK |",
               "'x' | 'ab' 'c' | 'a' ~ abd => OK |bd", "'a' nosuch | 'b' ~ b => OK |",
               "'b' 'c' nosuch | 'b' ~ b => OK |",
               "'b' | nosuch ~ b => Parse Error:'Unknow parse function 'nosuch'' in rule 'main' at "
               "(Line:1,Col:8) -> nosuch",
               "main ::= a* 'c'; a ::= 'a' b; b ::= 'b' | '-'; ~ aba-c => OK |",
               "main ::= 'a'; main ::= 'b'; ~ b => OK |", "( '-' | '+'? ) 'x' ~ x => OK |");
}

TEST(qxRules, excludeWhatAnotherFactorMatches)
{
    expectRows(RuleRows(), "( [^] - '$(' )+ ~ a$(b) => OK |$(b)", "[a-z]+ - 'if' ~ iffy => No Match |iffy",
               "[a-z]+ - 'if' ~ whiffy => OK |", "('a' | 'ab') - ('ab') 'b' ~ ac => No Match |ac",
               "(([^] - 'a') - 'b')+ ~ xyb => OK |b", "($ 'a' fPush) - ('a' 'b') ~ ac => OK [a] |c",
               "($ 'a' fPush $) - (fPush fNo) fPush ~ ab => OK [a] [] |b",
               "($ 'a' fPush $) - (fPush $ 'a') fPush ~ ab => No Match |ab",
               "($ 'a' fPush) - ('a' 'b') ~ ab => No Match |ab", "'a' - nosuch | 'b' ~ b => OK |");
}

TEST(qxRules, runAllAlternativesAndKeepWhatTheFirstDid)
{
    RuleRows rows;
    rows.showsCalls = true;
    expectRows(rows, "$ 'a' fA | $ 'ab' fB ~ ab => fA fB: OK [fA:a] |b",
               "$ 'a' fA 'x' | $ 'ab' fB ~ ab => fA fB: OK [fB:ab] |",
               // A later alternative finds the marks as they were, and leaves them so.
               "$ ('a' | 'ab' fB) fC ~ ab => fB fC: OK [fC:a] |b",
               "$ ('a' fA | 'ab' fB) 'b' fC ~ ab => fA fB fC: OK [fA:a] [fC:ab] |",
               "$ ('a' $ fA | $ 'a' fB fC) fD ~ a => fA fB fC fD: OK [fA:] [fD:a] |",
               "(($ 'a' fA | $ 'a' fB) | $ 'a' fC) fD ~ a => fA fB fC fD: OK [fA:a] [fD:a] |",
               "($ 'a' | $ ('a' $ | 'ab' fB) 'b' fC) fD ~ ab => fB fC fD: OK [fD:a] |b",
               "$ 'a' (fA | fB (fC | fD)) | fE ~ a => fA fB fC fD fE: OK [fA:a] |");
}

TEST(qxRules, takeBackWhatDidNotMatch)
{
    RuleRows rows;
    rows.showsCalls = true;
    expectRows(rows, "($ 'a' fA)3 | 'aa' ~ aa => fA fA: OK |", "($ 'a' fA 'x')? 'a' ~ ab => fA: OK |b",
               "($ 'a' fA)* ~ aab => fA fA: OK [fA:a] [fA:a] |b", "($ 'a' fNo)? 'a' ~ a => fNo: OK |",
               "$ fNo* 'a' fA ~ a => fNo fA: OK [fA:a] |",
               "$ 'a' ('b' fA 'x')? fB ~ ab => fA fB: OK [fB:a] |b", "$ 'a' fA 'x' | 'a' ~ a => fA: OK |");
}

TEST(qxRules, takeMarksFromEitherEnd)
{
    RuleRows newest;
    RuleRows oldest;
    oldest.takesOldest = true;
    expectRows(newest, "$ 'a' $ 'b' fA fB ~ ab => OK [fA:b] [fB:ab] |", "'a' fA ~ a => OK [fA:a] |");
    expectRows(oldest, "$ 'a' $ 'b' fA fB ~ ab => OK [fA:ab] [fB:b] |",
               "$ 'a' ($ 'b' fA | $ 'bc' fB fC) fD ~ abc => OK [fA:ab] [fD:b] |c",
               "$ 'a' $ ('b' fA fB 'x' | 'b') fC fD ~ ab => OK [fC:ab] [fD:b] |");
}

TEST(qxRules, tellFaultsOfTheirText)
{
    expectRows(RuleRows(), "'a ~ a => Unbalansed single quoted string in rule 'main' at (Line:1,Col:2) -> 'a",
               "\"a ~ a => Unbalansed quote string in rule 'main' at (Line:1,Col:2) -> \"a",
               "[a ~ a => Unbalansed Set [] in rule 'main' at (Line:1,Col:2) -> [a",
               "'a' /* b ~ a => Unbalansed comment in rule 'main' at (Line:1,Col:6) -> /* b",
               "('a' ~ a => Missing right ')' in rule 'main' at (Line:1,Col:2) -> ('a'",
               "'a'{,2} ~ a => Missing Min number in set {Min,Max} in rule 'main' at (Line:1,Col:6) -> ,2}",
               "'a'{1 2} ~ a => Missing ',' in set {Min,Max} in rule 'main' at (Line:1,Col:8) -> 2}",
               "'a'{1,} ~ a => Missing Max number in set {Min,Max} in rule 'main' at (Line:1,Col:8) -> }",
               "'a'{1,2 ~ a => Missing right '}' in set {Min,Max} in rule 'main' at (Line:1,Col:5) -> {1,2",
               "'a'{3,2} ~ a => Min>Max in set {Min,Max} in rule 'main' at (Line:1,Col:5) -> {3,2}",
               "\n 'a'\r\n \xC3\xA9 'b' \r\n 'c' ~ a => Expression mismatch in rule 'main' at (Line:3,Col:2) "
               "-> \xC3\xA9 'b' ",
               "'a' ) ~ a => Expression mismatch in rule 'main' at (Line:1,Col:6) -> )",
               "'a' | ~ a => Expression mismatch in rule 'main' at (Line:1,Col:7) -> ",
               "| 'a' ~ a => Expression mismatch in rule 'main' at (Line:1,Col:2) -> | 'a'",
               "() ~ a => Expression mismatch in rule 'main' at (Line:1,Col:3) -> )",
               "'a'?* ~ a => Expression mismatch in rule 'main' at (Line:1,Col:6) -> *",
               "'a' - ~ a => Expression mismatch in rule 'main' at (Line:1,Col:7) -> ",
               "'a' - 'b' - 'c' ~ a => Expression mismatch in rule 'main' at (Line:1,Col:12) -> - 'c'",
               "#x ~ a => Expression mismatch in rule 'main' at (Line:1,Col:2) -> #x");
}

TEST(qxRules, meetFaultsWhereTheyStand)
{
    RuleRows rows;
    rows.showsCalls = true;
    const std::string fault = "Min>Max in set {Min,Max} in rule 'main' at (Line:1,Col:";
    expectRows(
        rows, "$ 'a' fA 'b' fB{3,2} ~ ab => fA fB: " + fault + "17) -> {3,2}",
        "$ 'a' fA 'b' fB{3,2} ~ ac => fA: " + fault + "17) -> {3,2}",
        "'x' fA | fB | 'y'{2,1} ~ a => fB: " + fault + "19) -> {2,1}",
        "fA ('x' (fB 'b'{2,1} ~ a => fA: " + fault + "17) -> {2,1}",
        "fA - (fB{2,1} ~ a => fA fB: " + fault + "10) -> {2,1}",
        "main ::= 'a' | b; b ::= 'b'{2,1}; ~ a => : Parse Error:'Min>Max in set {Min,Max} in rule 'b' at "
        "(Line:1,Col:5) -> {2,1}' in rule 'main' at (Line:1,Col:8) -> b",
        "main ::= 'a'* ; b ::= 'b'{2,1}; ~ a => : OK |");
}

TEST(qxRules, sayWhichCallsAnErrorPassedThrough)
{
    expectRows(
        RuleRows(),
        "main ::= a 'b'; a ::= 'a' fFail; ~ ab => Parse Error:'Parse Error:'no luck' in rule 'a' at "
        "(Line:1,Col:6) -> fFail' in rule 'main' at (Line:1,Col:2) -> a 'b'",
        "'a' ('b' nosuch)? ~ ab => Parse Error:'Unknow parse function 'nosuch'' in rule 'main' at "
        "(Line:1,Col:11) -> nosuch)?",
        "main ::= list; list ::= item (',' list)?; item ::= 'x' | set | 'e' fFail; set ::= '[' list ']'; "
        "~ x,[x,e],x => Parse Error:'Parse Error:'Parse Error:'Parse Error:'Parse Error:'Parse Error:'"
        "Parse Error:'Parse Error:'no luck' in rule 'item' at (Line:1,Col:18) -> fFail' "
        "in rule 'list' at (Line:1,Col:2) -> item (',' list)?' "
        "in rule 'list' at (Line:1,Col:12) -> list)?' in rule 'set' at (Line:1,Col:6) -> list ']'' "
        "in rule 'item' at (Line:1,Col:8) -> set | 'e' fFail' "
        "in rule 'list' at (Line:1,Col:2) -> item (',' list)?' "
        "in rule 'list' at (Line:1,Col:12) -> list)?' in rule 'main' at (Line:1,Col:2) -> list");

    RuleParser parser; // at ten thousand levels the text stays short
    ASSERT_TRUE(parser.setParserString("main ::= 'a' main | 'b' fFail;"));
    const std::string deep = outcomeOf(parser, std::string(10000, 'a') + "b");
    EXPECT_LE(deep.size(), 4000U);
    EXPECT_NE(deep.find("'no luck' in rule 'main' at (Line:1,Col:17) -> fFail' in rule 'main'"),
              std::string::npos);
}

TEST(qxRules, goBackBeforeTheLastCallThatFails)
{
    expectRows(
        RuleRows(),
        "main ::= a 'y' | $ 'x' fA; a ::= $ b fB; b ::= 'x'? c; c ::= ('z' | d); d ::= 'y'; ~ xz => "
        "OK [fA:x] |z",
        "main ::= (X* b) (c)1 | 'z'; b ::= (d); d ::= 'y' | SP; c ::= $ 'x' fA; ~ y => No Match |y",
        "main ::= list $ EOL fA; list ::= 'x' rest?; rest ::= ',' list; ~ x,x,y => OK [fA:,y] |",
        "main ::= list fA; list ::= $ 'x' fB (',' list)? | 'y'; ~ x,x,z => OK [fB:x] [fB:x] [fA:x,x] |,z");

    RuleParser parser; // too many alternatives for a table
    std::string rules = "main ::= any any any; any ::= 'x'";
    for (int i = 0; i < 100; ++i) rules += " | 'a" + std::to_string(i) + ";'";
    ASSERT_TRUE(parser.setParserString((rules + ";").c_str()));
    EXPECT_EQ(outcomeOf(parser, "a99;xa62;"), "OK |");
}

/// Runs a rule of its own set, and takes numbers.
class NestingParser : public RuleParser
{
public:
    NestingParser()
    {
        registerFunction("run", &NestingParser::run);
        registerFunction("add", &NestingParser::add);
    }
    double total = 0.0;

private:
    qxParseResult run() { return parseRule("list"); }
    qxParseResult add()
    {
        double number = -1.0;
        if (!takeMarkedNumber(number)) return QX_PARSE_ERROR;
        total += number;
        return QX_PARSE_OK;
    }
};

TEST(qxRules, runInsideFunctionsOfTheirOwner)
{
    NestingParser parser;
    ASSERT_TRUE(parser.setParserString("main ::= (item ';')*; item ::= '<' nested; nested ::= run; "
                                       "list ::= $ float add (',' list)?;"));
    EXPECT_EQ(outcomeOf(parser, "<1,-2.5e1;<0.1,1" + std::string(100, '0') + ",x"),
              "OK |<0.1,1" + std::string(100, '0') + ",x");
    EXPECT_EQ(parser.total, 1.0 - 25.0 + 0.1 + 1e100); // what a function added is its owner's
}

TEST(qxRules, endWhatWouldNotEnd)
{
    expectRows(
        RuleRows(),
        "main ::= a; a ::= a 'x' | 'y'; ~ yx => Left recursion in rule 'a' at (Line:1,Col:2) -> a 'x' | 'y'",
        "main ::= b 'z'; b ::= ''? main; ~ y => Left recursion in rule 'main' at (Line:1,Col:2) -> b 'z'",
        "main ::= 'y' | main; ~ y => OK |");

    RuleParser parser;
    ASSERT_TRUE(parser.setParserString("main ::= '(' main ')' | '';"));
    parser.setMaxDepth(1000);
    EXPECT_EQ(outcomeOf(parser, std::string(999, '(') + std::string(999, ')')), "OK |");
    EXPECT_EQ(outcomeOf(parser, std::string(1001, '(')),
              "Rules nested too deeply in rule 'main' at (Line:1,Col:2) -> '(' main ')' | ''");
    EXPECT_TRUE(parser.hasReachedLimit());
    ASSERT_TRUE(parser.setParserString("main ::= $1001;"));
    EXPECT_EQ(outcomeOf(parser, "x"), "Too many marks in rule 'main' at (Line:1,Col:2) -> $1001");
    ASSERT_TRUE(parser.setParserString(
        "main ::= ($ 'x' take)*; take ::= fPush;")); // those that were taken do not count
    EXPECT_EQ(parser.parseText(std::string(5000, 'x').c_str()), QX_PARSE_OK);

    ASSERT_TRUE(
        parser.setParserString("main ::= a; a ::= 'x' a 'y' | 'x' a 'z' | 'x';")); // twice the work a level
    parser.setMaxSteps(100000);
    EXPECT_EQ(outcomeOf(parser, std::string(64, 'x')).substr(0, 27), "Too many steps in rule 'a' ");
    EXPECT_TRUE(parser.hasReachedLimit());
    EXPECT_EQ(outcomeOf(parser, "x"), "OK |");
    EXPECT_FALSE(parser.hasReachedLimit());
}

TEST(qxRules, takeLongListsThatNestARuleAnItem)
{
    RuleParser parser;
    ASSERT_TRUE(parser.setParserString("list ::= $ X fPush (',' list)? ; main ::= list;"));
    std::string text = "0";
    for (int i = 1; i < 32000; ++i) text += ",1";
    EXPECT_EQ(parser.parseText(text.data(), text.size()), QX_PARSE_OK);
    EXPECT_EQ(parser.getStringCount(), 32000U);
}

TEST(qxRules, cannotGoBackFartherThanTheBufferReaches)
{
    RuleParser parser;
    ASSERT_TRUE(parser.setParserString("main ::= [^]* 'x' | 'a';"));
    parser.setMaxBufferSize(1000);
    EXPECT_EQ(outcomeOf(parser, std::string(1000, 'a')), "OK |" + std::string(999, 'a'));
    EXPECT_EQ(outcomeOf(parser, std::string(100000, 'a')), "Too Large Pushback in basic parser");
}

TEST(qxRules, knowWhereTheyStoppedAndWhatTheyExpected)
{
    RuleParser parser;
    ASSERT_TRUE(
        parser.setParserString("main ::= 'let ' fIdent SP* ('=' value | ';'); value ::= fInt | fStr;"));
    EXPECT_EQ(outcomeOf(parser, "let x = 1"), "No Match |let x = 1");
    EXPECT_EQ(parser.getFarthestPosition(), 7U);
    EXPECT_STREQ(parser.getExpected(), "value");
    EXPECT_EQ(outcomeOf(parser, "let x 1"), "No Match |let x 1");
    EXPECT_EQ(parser.getFarthestPosition(), 6U);
    EXPECT_STREQ(parser.getExpected(), "'=', ';'");
}

TEST(qxRules, areTracedWithAllTheirCalls)
{
    RuleParser parser;
    ASSERT_TRUE(parser.setParserString("main ::= 'a' b | X; b ::= SP? parseAlpha;"));
    parser.useTrace(1);
    const MessageRecorder recorder(QX_LEVEL_DEBUG);
    parser.parseText("ab");
    const std::vector<std::string> expected = {
        "Parsing Rule     : main(Line:1,Col:1)",
        "Parsing Rule     :   b(Line:1,Col:2)",
        "Parsing Function :     SP(Line:1,Col:2)",
        "Exit Function    :     SP(Line:1,Col:2)\tResult:No Match",
        "Parsing Function :     parseAlpha(Line:1,Col:2)",
        "Exit Function    :     parseAlpha(Line:1,Col:3)\tResult:OK",
        "Exit Rule        :   b(Line:1,Col:3)\tResult:OK",
        "Parsing Function :   X(Line:1,Col:1)",
        "Exit Function    :   X(Line:1,Col:2)\tResult:OK",
        "Exit Rule        : main(Line:1,Col:3)\tResult:OK",
    };
    EXPECT_EQ(recorder.texts(), expected);
}

TEST(qxRules, refuseTextsThatAreNoRuleSets)
{
    expectRows(
        [](const std::string& text) {
            unsigned int rule = 0;
            qxString begin;
            const bool isRead = qxRuleSet::load(text.data(), text.size(), &rule, &begin) != nullptr;
            return isRead ? "read" : std::to_string(rule) + " " + begin.getString();
        },
        " => read", "/* no */ a::='x';b ::= 'y' ; => read", "a ::= 'x' => 1 a ::= 'x'",
        "a = 'x'; => 1 a = 'x';", "a ::= 'x'; 9 ::= 'x'; => 2 9 ::= 'x';", "a ::= 'x'; /* => 2 /*",
        "a ::= ';' [;] /*;*/ \";\" => 1 a ::= ';' [;] /*;*/ \";\"", "a ::= 'x ; b ::= \"y\"; => read",
        "a ::= '\\';' ; => read");
}

TEST(qxRules, areCheckedWithoutAnInput)
{
    expectRows(
        [](const std::string& text) {
            const qxString known[] = {"fPush"};
            std::string answer;
            for (const qxRuleFinding& finding : qxRuleSet::load(text.data(), text.size())->check({known, 1}))
                answer += qxString::str("%d:%d %s: %s%s ", finding.line, finding.column, finding.rule,
                                        finding.text, finding.isFault ? "!" : "")
                              .getString();
            return answer;
        },
        "a ::= 'x' fPush parseAlpha; => ", "a ::= b c b; => 1:7 a: not defined: b 1:9 a: not defined: c ",
        "a ::= 'x';\nb ::= 'y\n; => 2:7 b: Unbalansed single quoted string in rule 'b' at (Line:1,Col:2) -> "
        "'y! ",
        "a ::= 'x'? b; b ::= (c | 'y') 'z'; c ::= $ a; => 1:44 c: left recursion: a -> b -> c -> a ",
        "a ::= ([^] - 'x') a | 'x' a; => ",
        "a ::= 'a' | 'ab'; => 1:13 a: alternatives 1 and 2 can both match ", "a ::= 'USER' a | 'UNIT' a; => ",
        "a ::= [0-9]+ | [a-f5]; => 1:16 a: alternatives 1 and 2 can both match ");
}

TEST(qxRules, askAStreamForNoMoreThanTheyNeed)
{
    RuleParser parser;
    TestStream stream("AXYZ");
    ASSERT_TRUE(parser.setParserString("main ::= 'QUIT' | 'ABC' | 'A' ;"));
    parser.setAdapter(&stream);
    EXPECT_EQ(parser.parseRule(), QX_PARSE_OK);
    EXPECT_EQ(stream.content, "YZ");
    parser.setAdapter(nullptr);
    EXPECT_EQ(readBlock(stream, 9), "XYZ");
}

TEST(qxRules, needAnInputAndStayAsTheyAreWhileTheyRun)
{
    class Busy : public qxStringParser
    {
    public:
        Busy() { registerFunction("fBusy", &Busy::fBusy); }

        qxParseResult fBusy()
        {
            setAdapter(nullptr);
            reset();
            errors = getError();
            EXPECT_FALSE(loadRules("main ::= 'x';"));
            return parseRule("inner"); // functions may run rules in their turn
        }
        qxString errors;
    };
    Busy parser;
    ASSERT_TRUE(parser.setParserString("main ::= 'a' fBusy 'c'; inner ::= $ 'b' fPush;"));
    EXPECT_EQ(parser.parseRule(), QX_PARSE_ERROR);
    EXPECT_EQ(parser.getError(), "Adapter out of Data");
    EXPECT_EQ(outcomeOf(parser, "abc"), "OK [b] |");
    EXPECT_EQ(parser.errors, "Parser is busy reading");
}

TEST(qxRules, leaveNothingBehindWhenAFunctionRaises)
{
    class Raising : public RuleParser
    {
        qxParseResult parseFunction(const qxString& name) override
        {
            if (name == "fRaise") qxExceptionThrows::qxThrowFatal("raised");
            return RuleParser::parseFunction(name);
        }
    };
    Raising parser;
    ASSERT_TRUE(parser.setParserString("main ::= $ a fA; a ::= 'a' | 'b' fRaise;"));
    EXPECT_EQ(fatalText([&] { parser.parseText("b"); }), "raised");
    EXPECT_EQ(outcomeOf(parser, "a"), "OK [fA:a] |");
}

} // namespace
