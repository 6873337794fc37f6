// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <string>

namespace
{

const std::string HEAD = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>";

TEST_F(Tool, tellsEventsLineByLine)
{
    EXPECT_EQ(answer("xml events -", "<a x=\"1&lt;2\">t<c/></a>"), "ElementStart \"a\" 1\n"
                                                                   "EntityReference \"lt\" 1 true\n"
                                                                   "Attribute \"x\" \"1&lt;2\" 1\n"
                                                                   "CharData \"t\" 1\n"
                                                                   "ElementStart \"c\" 2\n"
                                                                   "ElementEnd \"c\" 2\n"
                                                                   "ElementEnd \"a\" 1\n");
}

TEST_F(Tool, tellsEveryKindOfEventWithAllBits)
{
    const std::string document =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?><a><!--c--><?p d?>"
        "<![CDATA[e]]>&f;</a>";
    EXPECT_EQ(answer("xml events --all -", document),
              "Version \"1.0\"\nEncoding \"UTF-8\"\nStandalone false\n"
              "ElementStart \"a\" 1\nElementAttributeEnd \"a\" 1\nElementContentsStart \"a\" 1\n"
              "Comment \"c\" 1\nProcessingInstruction \"p\" \"d\" 1\nCDATA \"e\" 1\n"
              "EntityReference \"f\" 1 false\n"
              "ElementContents \"a\" \"<!--c--><?p d?><![CDATA[e]]>&f;\" 1\nElementContentsEnd \"a\" 1\n"
              "ElementEnd \"a\" 1\n");
}

TEST_F(Tool, tellsValuesObjectsAndCustomData)
{
    expectAnswers("<qxDyn name='n' type='cont'><value name='k' type='str'>&quot;\n</value></qxDyn>",
                  "xml events - --mask 1 => ElementStart \"qxDyn\" 1\n"
                  "DynamicType \"n\" \"cont\" {\"k\":\"\\\"\\n\"} 1\nElementEnd \"qxDyn\" 1\n");
    expectAnswers("<qxObj name='o'> x<b/></qxObj>",
                  "xml events - --mask 1 => ElementStart \"qxObj\" 1\nElementStart \"b\" 2\n"
                  "ElementEnd \"b\" 2\nElementEnd \"qxObj\" 1\n",
                  "xml events - --mask 1 --object p --object=o => ElementStart \"qxObj\" 1\n"
                  "Object \"o\" \" x<b/>\" 1\nElementEnd \"qxObj\" 1\n");
    expectAnswers("<a><o/><p>&lt;\t</p></a>",
                  "xml events - --mask 1 --custom o --custom p => ElementStart \"a\" 1\n"
                  "ElementStart \"o\" 2\nCustomData \"o\" \"\" 2\nElementEnd \"o\" 2\n"
                  "ElementStart \"p\" 2\nCustomData \"p\" \"&lt;\\t\" 2\nElementEnd \"p\" 2\n"
                  "ElementEnd \"a\" 1\n");
}

TEST_F(Tool, masksEventsAndEscapesControlCharacters)
{
    expectAnswers("<a x=\"y\">\"\\\n\r\t\x7f\xc3\xa9</a>",
                  "xml events --mask 4 - => Attribute \"x\" \"y\" 1\n",
                  "xml events --mask=0x20 - => CharData \"\\\"\\\\\\n\\r\\t\\x7F\xc3\xa9\" 1\n",
                  "xml events --mask 12z - => 2 qx: error: '12z' is no mask; see qx xml events --help\n");
}

TEST_F(Tool, keepsTheEventsBeforeAnError)
{
    expectAnswers("<a>\n <b></a>", "xml events --mask 1 - => 3 ElementStart \"a\" 1\nElementStart \"b\" 2\n"
                                   "-:2:7: error: Expected end tag 'b' but got 'a'\n");
}

TEST_F(Tool, checksEachFile)
{
    file("good.xml", "<a><b><c/></b></a>");
    file("bad.xml", "<a>");
    const std::string goodLine = "good.xml: ok (3 elements, depth 3, 18 bytes)\n";

    EXPECT_EQ(answer("xml check good.xml"), goodLine);
    EXPECT_EQ(run("xml check missing.xml good.xml"), 4);
    EXPECT_EQ(out, goodLine);
    EXPECT_TRUE(hasError("Could not open 'missing.xml' for reading (")) << err;
    EXPECT_EQ(run("xml check missing.xml bad.xml good.xml"), 3);
    EXPECT_EQ(out, goodLine);
    EXPECT_TRUE(hasError("bad.xml:1:4: error: File: qxxml  Line: 4201  Ver: 2.10.1 (expected an end tag)\n"))
        << err;
}

TEST_F(Tool, refusesADirectory)
{
    EXPECT_EQ(run("xml check ."), 4);
    EXPECT_EQ(err.find("qx: error: Could not open '.' for reading ("), 0U) << err;
    EXPECT_EQ(run("xml format - -o .", "<a/>"), 4) << out;
}

TEST_F(Tool, tellsLimitsFromFaults)
{
    const std::string longText(65536, 'x');
    EXPECT_EQ(answer("xml events --mask 32 -", "<a>" + longText + "</a>"),
              "5 -:1:4: error: Too large 'CharData' is notified\n");
    EXPECT_EQ(run("xml check -", "<a>" + longText + "</a>"), 0) << err;
    for (const std::string& document : {"<a><!--" + longText + "--></a>", "<a" + longText + "/>",
                                        "<a b='" + longText + "'/>", "<a><?p " + longText + "?></a>"})
        EXPECT_EQ(run("xml check -", document), 5) << err.substr(0, 200);
}

TEST_F(Tool, printsTheTree)
{
    expectAnswers("<a x=\"1&lt;2\"> t&lt;<b/><![CDATA[c]]><!--d--><?p q?>&e;</a>",
                  "xml tree - => element \"a\" x=\"1<2\"\n"
                  "  char_data \"t<\"\n"
                  "  element \"b\"\n"
                  "  cdata \"c\"\n"
                  "  comment \"d\"\n"
                  "  pi \"p\" \"q\"\n"
                  "  entity_ref \"e\"\n");
    expectAnswers("<a> t&lt;</a>", "xml tree --keep-space - => element \"a\"\n  char_data \" t<\"\n",
                  "xml tree --no-merge - => element \"a\"\n  char_data \"t\"\n  entity_ref \"lt\"\n");
}

TEST_F(Tool, followsAnIncludeOrKeepsIt)
{
    file("part.xml", "<b/>");
    file("f.xml", "<a><?include part.xml?><?include missing.xml?></a>");
    EXPECT_EQ(run("xml tree f.xml"), 0);
    EXPECT_EQ(out, "element \"a\"\n  element \"b\"\n  pi \"include\" \"missing.xml\"\n");
    EXPECT_TRUE(hasError("warning: ")) << err;
}

TEST_F(Tool, getsTextsAndAttributes)
{
    file("f.xml", "<r><a k=\"1\"> one </a><a k=\"2\">t<![CDATA[w]]><i>o</i>&amp; </a><e/></r>");
    expectAnswers("", "xml get f.xml r/a => one\n", "xml get f.xml /r/a => one\n",
                  "xml get f.xml 'r/a[2]' => two&\n", "xml get f.xml 'r/a[k=2]/@k' => 2\n",
                  "xml get --all f.xml r/a => one\ntwo&\n", "xml get --all f.xml r/a/@k => 1\n2\n",
                  "xml get --count f.xml r/a r/e //i => 2\n1\n1\n", "xml get f.xml r/e => \n",
                  "xml get f.xml r/x r/a => 1 one\nqx: nothing found at 'r/x'\n",
                  "xml get --count f.xml r/x => 1 0\nqx: nothing found at 'r/x'\n",
                  "xml get f.xml r/a/@none => 1 qx: nothing found at 'r/a/@none'\n",
                  "xml get f.xml => 2 qx: error: xml get: PATH is missing; see qx xml get --help\n");
}

TEST_F(Tool, setsAndLeavesTheRestAsItWas)
{
    file("f.xml", HEAD + "<r>\n  <a k=\"1\">old <i/> text</a>&x;&#65;\n  <b/> </r>\n");
    EXPECT_EQ(answer("xml set f.xml 'r/a=new=<' 'r/a/@k=2 %d' r/b/@n=v"), "");
    EXPECT_EQ(content("f.xml"),
              HEAD + "\n<r>\n  <a k=\"2 %d\">new=&lt;<i/></a>&x;&#65;\n  <b n=\"v\"/> </r>\n");
    EXPECT_EQ(countFiles(), 1);
}

TEST_F(Tool, setTouchesNothingWhenItFails)
{
    file("f.xml", "<r><a/></r>");
    file("broken.xml", "<r><a></r>");
    expectAnswers(
        "", "xml set f.xml r/a=x r/none=y => 1 qx: nothing found at 'r/none'\n",
        "xml set f.xml r/a => 2 qx: error: 'r/a' is not of the form PATH=TEXT; see qx xml set --help\n",
        "xml set f.xml 'r/a=\x01' => 3 qx: error: CharData is malformed\n",
        "xml set broken.xml r/a=x -o new.xml => "
        "3 broken.xml:1:9: error: Expected end tag 'a' but got 'r'\n");
    EXPECT_EQ(content("f.xml"), "<r><a/></r>");
    EXPECT_EQ(countFiles(), 2);
}

TEST_F(Tool, formatsWithoutDamagingProse)
{
    const std::string formatted = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
                                  "<!DOCTYPE r [<!ENTITY x \"y\">]>\n"
                                  "<r>\n\t<s a=\"1\">\n\t\t<t/>\n\t</s>\n"
                                  "\t<p>Some <b>bold</b>\n<i>text</i>\n</p>\n"
                                  "\t<q>&amp;\n<b> <i/>\n</b></q>\n\t<u> </u>\n</r>\n";
    EXPECT_EQ(
        answer("xml format -",
               "<?xml version=\"1.0\" standalone=\"no\"?><!DOCTYPE r [<!ENTITY x \"y\">]><r><s a='1'><t/>\n"
               "</s><p>Some <b>bold</b>\n<i>text</i>\n</p>\n\n<q>&amp;\n<b> <i/>\n</b></q>\n<u> </u></r>"),
        formatted);
    EXPECT_EQ(answer("xml format -", formatted), formatted);
}

TEST_F(Tool, formatsAsTheOptionsSay)
{
    expectAnswers("<r>\n <a> t </a>\n</r>", "xml format --plain - => " + HEAD + "<r><a> t </a></r>\n",
                  "xml format --keep-space - => " + HEAD + "\n<r>\n <a> t </a>\n</r>\n",
                  "xml format --trim - => " + HEAD + "\n<r>\n\t<a>t</a>\n</r>\n");
    expectAnswers(
        "<r>\xc3\xa9\xe2\x82\xac</r>",
        "xml format --plain --encoding=ISO-8859-1 - => <?xml version=\"1.0\" encoding=\"ISO-8859-1\" "
        "standalone=\"yes\" ?><r>\xe9&#x20AC;</r>\n");
    EXPECT_EQ(answer("xml format --plain --encoding UTF-16 -", "<r/>").substr(0, 4),
              std::string("\xff\xfe<\0", 4));
}

TEST_F(Tool, writesNothingThatTheEncodingCannotHold)
{
    expectAnswers("<r><!--\xe2\x82\xac--></r>",
                  "xml format --encoding latin1 - -o new.xml => 3 qx: error: Comment is malformed\n",
                  "xml format --encoding latin1 - => 3 qx: error: Comment is malformed\n");
    EXPECT_EQ(countFiles(), 0);
}

TEST_F(Tool, answersAWrongCommandLine)
{
    for (const char* const words :
         {"", "nonsense", "xml", "xml nonsense", "xml check", "xml check --nonsense f", "xml events a b",
          "xml format -o", "xml format --plain=1 f", "xml format '--encoding=a b' f",
          "xml format --trim --keep-space f"}) {
        SCOPED_TRACE(words);
        EXPECT_EQ(run(words), 2);
        EXPECT_EQ(out, "");
        EXPECT_FALSE(err.empty());
    }
}

TEST_F(Tool, saysWhatMayHaveBeenMeant)
{
    expectAnswers(
        "", " => 2 qx: error: a command is missing; see qx --help\n",
        "xml => 2 qx: error: a command is missing behind 'xml'; see qx xml --help\n",
        "xlm get => 2 qx: error: unknown command 'xlm'; did you mean 'xml'? See qx --help\n",
        "check f => 2 qx: error: unknown command 'check'; did you mean 'xml check'? See qx --help\n",
        "xml gte f => 2 qx: error: unknown command 'xml gte'; did you mean 'get'? See qx xml --help\n",
        "xml get --al f a => 2 qx: error: unknown option '--al'; did you mean '--all'? See qx xml get "
        "--help\n",
        "lex - --decimal => 2 qx: error: option '--decimal' needs a value; see qx lex --help\n",
        "time --local=1 => 2 qx: error: option '--local' takes no value; see qx time --help\n");
}

TEST_F(Tool, helpsWithEachCommand)
{
    const std::string help = "usage: qx xml tree FILE [--keep-space] [--no-merge]\n"
                             "\nprints the items of the tree\n"
                             "\nArguments:\n"
                             "  FILE  the document\n"
                             "\nOptions:\n"
                             "  --keep-space  white space stays as it is\n"
                             "  --no-merge    references stay apart from text\n"
                             "  -h, --help    shows this help\n";
    EXPECT_EQ(answer("xml tree --help"), help);
    EXPECT_EQ(answer("help xml tree"), help);
    const std::string all = answer("--help");
    EXPECT_EQ(all.find("usage: qx COMMAND … [--version] [--completion]\n"), 0U) << all;
    EXPECT_EQ(answer("help"), all);
    for (const char* const piece :
         {"\nXML documents:\n", "\n  xml get FILE PATH…  ", "\nExit status: 0 done, "})
        EXPECT_NE(all.find(piece), std::string::npos) << piece;
    EXPECT_NE(answer("--completion").find("'/xml/tree') words=\"--keep-space --no-merge -h --help\" ;;\n"),
              std::string::npos);
}

TEST_F(Tool, takesOptionsAnywhereAndEndsThem)
{
    file("-f.xml", "<a>t</a>");
    expectAnswers("", "xml get -- -f.xml a => t\n",
                  "xml get -- -f.xml --all => 1 qx: nothing found at '--all'\n",
                  "xml format ./-f.xml -o=new.xml --plain => ");
    EXPECT_EQ(content("new.xml"), HEAD + "<a>t</a>\n");
}

TEST_F(Tool, showsVersionHelpAndDemonstration)
{
    EXPECT_EQ(answer("--version"), "qx 2.10.1\n");
    EXPECT_EQ(run("demo"), 0) << err;
    EXPECT_NE(out.find("$ qx xml get "), std::string::npos);
    EXPECT_NE(out.find("call: fRequest \"GET /style.css HTTP/1.1\"\ncall: fStatus \"304\"\n"),
              std::string::npos);
    EXPECT_NE(out.find("TCP on 127.0.0.1: sent 1000000 bytes, CRC-32 7222540B\n"
                       "              received 1000000 bytes, CRC-32 7222540B\n"),
              std::string::npos);
    EXPECT_TRUE(hasError("broken.xml:4:51: error: Expected end tag 'note' but got 'body'")) << err;
}

TEST_F(Tool, takesNamesAndTextsOfAnyLanguage)
{
    file("\xd0\xb4\xe5\xbd\xa2.xml", "<a/>");
    expectAnswers(
        "", "xml set \xd0\xb4\xe5\xbd\xa2.xml 'a=\xe2\x82\xac \"\\' => ",
        "xml get \xd0\xb4\xe5\xbd\xa2.xml a => \xe2\x82\xac \"\\\n",
        "xml get none\xd0\xb4.xml 'a b' => 4 qx: error: Could not open 'none\xd0\xb4.xml' for reading "
        "(No such file or directory)\n");
}

} // namespace
