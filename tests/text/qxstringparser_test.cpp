// SPDX-License-Identifier: see LICENSE

#include "qxruletest.h"

#include "qxtestsupport.h"

#include <atomic>

namespace
{

/// The texts that a pattern pushes from "PATTERN ~ TEXT", in brackets; "no" before them when the text does not match.
std::string scan(const std::string& question, char16_t decimal = u'.')
{
    const std::size_t middle = question.find(" ~ ");
    bool ok = false;
    const std::string text = question.substr(middle + 3);
    const qxArray<qxString> strings =
        parse(qxString(question.data(), middle), qxString(text.data(), text.size()), ok, decimal);
    std::string answer = ok ? "" : "no";
    for (const qxString& pushed : strings) answer += std::string("[") + pushed.getString() + "]";
    return answer;
}

TEST(qxStringParser, pushesWhatItsFunctionsCapture)
{
    expectRows(RuleRows(), "$ fWS $ fIdent fPush fPush ~  \t\n a1- => OK [a1] [ \t\n a1] |-",
               "$ fPlain fPush ~ a-b.c; => OK [a-b.c] |;", "$ fInt fPush fNum ~ +1-2.5e3 => OK [+1] |",
               "$ fHex fPush ~ 0aFg => OK [0aF] |g", "$ fStr fPushStr fStr ~ \"a'b\"'c' => OK [a'b] |",
               "$ [^]+ fPushStr ~ \xC3\xA9z\xF0\x9F\x98\x80 => OK [z] |",
               "$ 'a' fPushStr $ fPushStr ~ a => OK [] [] |",
               "$ fToken fPush fEnd ~ \xC3\xA9zz => OK [\xC3\xA9] |",
               "fHex ::= 'h'; main ::= $ fHex fPush; ~ h => OK [h] |");

    RuleParser parser;
    ASSERT_TRUE(parser.setParserString("main ::= $ [^]* fPush;"));
    EXPECT_EQ(outcomeOf(parser, std::string(65536, 'x')).substr(0, 46),
              "Parse Error:'Too many characters in qxString' ");
}

TEST(qxPattern, translatesConversions)
{
    expectRows(
        [](const std::string& pattern) -> std::string {
            return qxStringParser::translatePattern(pattern.c_str()).getString();
        },
        " => main ::= '' ;", "a%i => main ::= 'a'  $ fIdent fPush ;",
        "%ease => main ::= $ fEnd fPush  'ase' ;", "%w%% %@ => main ::= fWS*  '%'  ' '  fPush ;",
        "%'a-z'%+%@ => main ::= $ [a-z] + fPush ;", "%\" $ X+ fPush\"%$%*%? => main ::= $ X+ fPush$*?;",
        "%q%5% => main ::= '%'  'q'  '%'  '5%' ;", "it's => main ::= 'it'  \"'\"  's' ;",
        "a\\n 007 1.50 => main ::= 'a\\\\n 007 1.50' ;",
        "'%i' \"%i\" %i => main ::= \"'\"  '%i'  \"'\"  ' \"%i\" '  $ fIdent fPush ;");
}

TEST(qxPattern, scansTexts)
{
    expectRows([](const std::string& row) { return scan(row); }, "%i = %n ~ x = -1.5e3 => [x][-1.5e3]",
               "%l,%l ~ 1,-2 => [1][-2]", "%x %s %t%e ~ fF 'a b' \xC3\xA9rest => [fF][a b][\xC3\xA9][rest]",
               "%p%w/%w%p ~ a-b /  c.d => [a-b][c.d]", "100%% %i ~ 100% a => [a]", "%i ~ a b => no[a]",
               "%i ~ 1 => no", " ~  => ", "a ~ a => ",
               "zip:%\" $ '{' [^}]* '},' fPush $ [^?]+ fPush '?'? \"%e ~ zip:{k},file?x => [{k},][file][x]",
               "[%'^#x5D'%+%@] ~ [ab c] => [ab c]", "it's %i ~ it's me => [me]", "a\\b %l ~ a\\b 7 => [7]");
    EXPECT_EQ(scan("%n;%n ~ 1,5;-2,e3", u','), "[1,5][-2,e3]");
    EXPECT_EQ(scan("%n ~ 1'5", u'\''), "[1'5]");
}

TEST(qxPattern, reportsItsFaults)
{
    MessageRecorder recorder(QX_LEVEL_DEBUG);
    const auto sent = [&](const std::string& row) {
        recorder.clear();
        scan(row);
        std::string answer;
        for (const RecordedMessage& message : recorder.messages())
            answer += (message.level == QX_LEVEL_DEBUG ? "debug " : "") + message.text;
        return answer;
    };
    expectRows(sent, "%i ~ a => ", "%i ~ 1 => ", "%i ~ a b => debug Not All arguments were parsed",
               "%\"(\"a ~ a => Error:Missing right ')' in rule 'main' at (Line:1,Col:1) -> ( 'a' ",
               "%\"'x';\"a ~ a => Malformed rule in parser string:%\"'x';\"a rule nr:2");

    bool ok = true;
    recorder.clear();
    qxStringParser::parseArguments("%\";\"", "", ok, u'.', true);
    EXPECT_FALSE(ok);
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Malformed rule in parser url:%\";\" rule nr:2"});
}

TEST(qxPattern, isSharedByThreads)
{
    std::atomic<unsigned int> matched{0};
    onThreads(8, [&](unsigned int thread) {
        for (int i = 0; i < 200; ++i) {
            const std::string number = std::to_string(thread * 1000 + static_cast<unsigned int>(i));
            matched += scan("%i=%l ~ x=" + number) == "[x][" + number + "]" ? 1U : 0U;
            if (i % 50 == 0) qxStringParser::cleanUpParsers();
        }
    });
    EXPECT_EQ(matched, 1600U);
}

} // namespace
