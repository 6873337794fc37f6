// SPDX-License-Identifier: see LICENSE

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

/// Runs the tool on files in a fresh folder.
class Tool : public testing::Test
{
protected:
    Tool()
    {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        m_folder = std::filesystem::temp_directory_path() /
                   (std::string("qx_test_") + test->name() + std::to_string(std::rand()));
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }
    ~Tool() override { std::filesystem::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    /// A file with this content; returns its path.
    std::string file(const std::string& name, const std::string& content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    std::string content(const std::string& name) const
    {
        std::ifstream stream(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Runs `qx` with these words and standard input; keeps what it printed and returns its exit status.
    int run(const std::vector<std::string>& words, const std::string& input = {})
    {
        file("in", input);
        std::string line = "\"" QX_TOOL "\"";
        for (const std::string& word : words) line += " " + quoted(word);
        line += " <" + quoted(path("in")) + " >" + quoted(path("out")) + " 2>" + quoted(path("err"));
        const int result = std::system(line.c_str());
        out = content("out");
        err = content("err");
        return result >= 256 ? result / 256 : result;
    }

    /// The same with the content of a document as the file "-".
    std::string print(const std::vector<std::string>& words, const std::string& document)
    {
        EXPECT_EQ(run(words, document), 0) << err;
        return out;
    }

    /// Names of all files in the folder but those that run leaves.
    std::size_t countFiles() const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
            const std::string name = entry.path().filename().string();
            count += name != "in" && name != "out" && name != "err";
        }
        return count;
    }

    std::string out;
    std::string err;

private:
    static std::string quoted(const std::string& word)
    {
        std::string result = "'";
        for (const char c : word) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return result + "'";
    }

    std::filesystem::path m_folder;
};

TEST_F(Tool, tellsEventsLineByLine)
{
    EXPECT_EQ(print({"xml", "events", "-"}, "<a x=\"1&lt;2\">t<c/></a>"), "ElementStart \"a\" 1\n"
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
    EXPECT_EQ(print({"xml", "events", "--all", "-"}, document),
              "Version \"1.0\"\nEncoding \"UTF-8\"\nStandalone false\n"
              "ElementStart \"a\" 1\nElementAttributeEnd \"a\" 1\nElementContentsStart \"a\" 1\n"
              "Comment \"c\" 1\nProcessingInstruction \"p\" \"d\" 1\nCDATA \"e\" 1\n"
              "EntityReference \"f\" 1 false\n"
              "ElementContents \"a\" \"<!--c--><?p d?><![CDATA[e]]>&f;\" 1\nElementContentsEnd \"a\" 1\n"
              "ElementEnd \"a\" 1\n");
}

TEST_F(Tool, masksEvents)
{
    const std::string document = "<a x=\"y\">t</a>";
    EXPECT_EQ(print({"xml", "events", "--mask", "32", "-"}, document), "CharData \"t\" 1\n");
    EXPECT_EQ(print({"xml", "events", "--mask=0x24", "-"}, document),
              "Attribute \"x\" \"y\" 1\nCharData \"t\" 1\n");
    EXPECT_EQ(run({"xml", "events", "--mask", "12z", "-"}, document), 2);
}

TEST_F(Tool, writesControlCharactersAsEscapes)
{
    EXPECT_EQ(print({"xml", "events", "--mask=32", "-"}, "<a>\"\\\n\r\t\x7f\xc3\xa9</a>"),
              "CharData \"\\\"\\\\\\n\\r\\t\\x7F\xc3\xa9\" 1\n");
}

TEST_F(Tool, keepsTheEventsBeforeAnError)
{
    const std::string name = file("f.xml", "<a>\n <b></a>");
    EXPECT_EQ(run({"xml", "events", "--mask", "1", name}), 3);
    EXPECT_EQ(out, "ElementStart \"a\" 1\nElementStart \"b\" 2\n");
    EXPECT_EQ(err, name + ":2:7: error: Expected end tag 'b' but got 'a'\n");
}

TEST_F(Tool, checksEachFile)
{
    const std::string good = file("good.xml", "<a><b><c/></b></a>");
    const std::string bad = file("bad.xml", "<a>");
    const std::string missing = path("missing.xml");
    const std::string goodLine = good + ": ok (3 elements, depth 3, 18 bytes)\n";

    EXPECT_EQ(run({"xml", "check", good}), 0);
    EXPECT_EQ(out, goodLine);
    EXPECT_EQ(run({"xml", "check", missing, good}), 4);
    EXPECT_EQ(out, goodLine);
    EXPECT_NE(err.find("Could not open '" + missing + "' for reading ("), std::string::npos) << err;
    EXPECT_EQ(run({"xml", "check", missing, bad, good}), 3);
    EXPECT_EQ(out, goodLine);
    EXPECT_NE(err.find(bad + ":1:4: error: "), std::string::npos) << err;
}

TEST_F(Tool, refusesADirectory)
{
    EXPECT_EQ(run({"xml", "check", path(".")}), 4);
    EXPECT_EQ(err.find("qx: error: Could not open '" + path(".") + "' for reading ("), 0U) << err;
    EXPECT_EQ(run({"xml", "format", "-", "-o", path(".")}, "<a/>"), 4) << out;
}

TEST_F(Tool, tellsLimitsFromFaults)
{
    const std::string longText(65536, 'x');
    EXPECT_EQ(run({"xml", "events", "-"}, "<a>" + longText + "</a>"), 5);
    EXPECT_EQ(err, "-:1:4: error: Too large 'CharData' is notified\n");
    EXPECT_EQ(run({"xml", "check", "-"}, "<a>" + longText + "</a>"), 0) << err;
    EXPECT_EQ(run({"xml", "check", "-"}, "<a><!--" + longText + "--></a>"), 5);
    EXPECT_EQ(run({"xml", "check", "-"}, "<a" + longText + "/>"), 5) << err.substr(0, 200);
    EXPECT_EQ(run({"xml", "check", "-"}, "<a b='" + longText + "'/>"), 5) << err.substr(0, 200);
    EXPECT_EQ(run({"xml", "check", "-"}, "<a><?p " + longText + "?></a>"), 5) << err.substr(0, 200);
}

TEST_F(Tool, namesWhatACheckExpected)
{
    EXPECT_EQ(run({"xml", "check", "-"}, "<a b></a>"), 3);
    EXPECT_EQ(err.find("-:1:5: error: File: qxxml  Line: "), 0U) << err;
    EXPECT_NE(err.find("Ver: 2.10.1 (expected "), std::string::npos) << err;
}

TEST_F(Tool, printsTheTree)
{
    const std::string document = "<a x=\"1&lt;2\"> t <b/><![CDATA[c]]><!--d--><?p q?>&e;</a>";
    EXPECT_EQ(print({"xml", "tree", "-"}, document), "element \"a\" x=\"1<2\"\n"
                                                     "  char_data \"t\"\n"
                                                     "  element \"b\"\n"
                                                     "  cdata \"c\"\n"
                                                     "  comment \"d\"\n"
                                                     "  pi \"p\" \"q\"\n"
                                                     "  entity_ref \"e\"\n");
    EXPECT_EQ(print({"xml", "tree", "--keep-space", "--no-merge", "-"}, "<a> t&lt;</a>"),
              "element \"a\"\n  char_data \" t\"\n  entity_ref \"lt\"\n");
    EXPECT_EQ(print({"xml", "tree", "-"}, "<a> t&lt;</a>"), "element \"a\"\n  char_data \"t<\"\n");
}

TEST_F(Tool, keepsAnIncludeThatCannotBeFollowed)
{
    const std::string name = file("f.xml", "<a><?include missing.xml?></a>");
    EXPECT_EQ(run({"xml", "tree", name}), 0);
    EXPECT_EQ(out, "element \"a\"\n  pi \"include\" \"missing.xml\"\n");
    EXPECT_NE(err.find("warning: "), std::string::npos) << err;
}

TEST_F(Tool, followsAnInclude)
{
    file("part.xml", "<b/>");
    const std::string name = file("f.xml", "<a><?include part.xml?></a>");
    EXPECT_EQ(run({"xml", "tree", name}), 0) << err;
    EXPECT_EQ(out, "element \"a\"\n  element \"b\"\n");
}

TEST_F(Tool, getsTextsAndAttributes)
{
    const std::string name =
        file("f.xml", "<r><a k=\"1\"> one </a><a k=\"2\">t<![CDATA[w]]><i>o</i>&amp; </a><e/></r>");
    const struct {
        std::vector<std::string> words;
        int status;
        const char* out;
    } rows[] = {
        {{"r/a"}, 0, "one\n"},
        {{"/r/a"}, 0, "one\n"},
        {{"r/a[2]"}, 0, "two&\n"},
        {{"r/a[k=2]/@k"}, 0, "2\n"},
        {{"--all", "r/a"}, 0, "one\ntwo&\n"},
        {{"--all", "r/a/@k"}, 0, "1\n2\n"},
        {{"--count", "r/a", "r/e", "//i"}, 0, "2\n1\n1\n"},
        {{"r/e"}, 0, "\n"},
        {{"r/x", "r/a"}, 1, "one\n"},
        {{"--count", "r/x"}, 1, "0\n"},
        {{"r/a/@none"}, 1, ""},
        {{}, 2, ""},
    };
    for (const auto& row : rows) {
        std::vector<std::string> words = {"xml", "get", name};
        words.insert(words.end(), row.words.begin(), row.words.end());
        SCOPED_TRACE(testing::PrintToString(row.words));
        EXPECT_EQ(run(words), row.status) << err;
        EXPECT_EQ(out, row.out);
        EXPECT_EQ(err.empty(), row.status == 0);
    }
}

TEST_F(Tool, setsAndLeavesTheRestAsItWas)
{
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>";
    const std::string name =
        file("f.xml", head + "<r>\n  <a k=\"1\">old <i/> text</a>&x;&#65;\n  <b/> </r>\n");
    ASSERT_EQ(run({"xml", "set", name, "r/a=new=<", "r/a/@k=2 %d", "r/b/@n=v"}), 0) << err;
    EXPECT_EQ(out, "");
    EXPECT_EQ(content("f.xml"),
              head + "\n<r>\n  <a k=\"2 %d\">new=&lt;<i/></a>&x;&#65;\n  <b n=\"v\"/> </r>\n");
    EXPECT_EQ(countFiles(), 1U);
}

TEST_F(Tool, setTouchesNothingWhenItFails)
{
    const std::string text = "<r><a/></r>";
    const std::string name = file("f.xml", text);
    EXPECT_EQ(run({"xml", "set", name, "r/a=x", "r/none=y"}), 1);
    EXPECT_EQ(run({"xml", "set", name, "r/a"}), 2);
    EXPECT_EQ(run({"xml", "set", name, "r/a=\x01"}), 3);
    EXPECT_NE(err.find("CharData is malformed"), std::string::npos) << err;
    EXPECT_EQ(content("f.xml"), text);
    EXPECT_EQ(countFiles(), 1U);

    const std::string broken = file("broken.xml", "<r><a></r>");
    EXPECT_EQ(run({"xml", "set", broken, "r/a=x", "-o", path("new.xml")}), 3);
    EXPECT_EQ(out, "");
    EXPECT_EQ(countFiles(), 2U);
}

TEST_F(Tool, formatsWithoutDamagingProse)
{
    const std::string document =
        "<?xml version=\"1.0\" standalone=\"no\"?><!DOCTYPE r [<!ENTITY x \"y\">]><r><s a='1'><t/>\n"
        "</s><p>Some <b>bold</b>\n<i>text</i>\n</p>\n\n<q>&amp;\n<b> <i/>\n</b></q>\n<u> </u></r>";
    const std::string formatted = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>\n"
                                  "<!DOCTYPE r [<!ENTITY x \"y\">]>\n"
                                  "<r>\n\t<s a=\"1\">\n\t\t<t/>\n\t</s>\n"
                                  "\t<p>Some <b>bold</b>\n<i>text</i>\n</p>\n"
                                  "\t<q>&amp;\n<b> <i/>\n</b></q>\n\t<u> </u>\n</r>\n";
    EXPECT_EQ(print({"xml", "format", "-"}, document), formatted);
    EXPECT_EQ(print({"xml", "format", "-"}, formatted), formatted);
}

TEST_F(Tool, formatsAsTheOptionsSay)
{
    const std::string document = "<r>\n <a> t </a>\n</r>";
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>";
    EXPECT_EQ(print({"xml", "format", "--plain", "-"}, document), head + "<r><a> t </a></r>\n");
    EXPECT_EQ(print({"xml", "format", "--keep-space", "-"}, document), head + "\n<r>\n <a> t </a>\n</r>\n");
    EXPECT_EQ(print({"xml", "format", "--trim", "-"}, document), head + "\n<r>\n\t<a>t</a>\n</r>\n");
    EXPECT_EQ(
        print({"xml", "format", "--plain", "--encoding=ISO-8859-1", "-"}, "<r>\xc3\xa9\xe2\x82\xac</r>"),
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"yes\" ?><r>\xe9&#x20AC;</r>\n");
    EXPECT_EQ(print({"xml", "format", "--plain", "--encoding", "UTF-16", "-"}, "<r/>").substr(0, 4),
              std::string("\xff\xfe<\0", 4));
}

TEST_F(Tool, writesNothingThatTheEncodingCannotHold)
{
    const std::string document = "<r><!--\xe2\x82\xac--></r>";
    EXPECT_EQ(run({"xml", "format", "--encoding", "ISO-8859-1", "-", "-o", path("new.xml")}, document), 3);
    EXPECT_NE(err.find("Comment is malformed"), std::string::npos) << err;
    EXPECT_EQ(run({"xml", "format", "--encoding", "ISO-8859-1", "-"}, document), 3);
    EXPECT_EQ(out, "");
    EXPECT_EQ(countFiles(), 0U);
}

TEST_F(Tool, answersAWrongCommandLine)
{
    const std::vector<std::string> rows[] = {
        {},
        {"nonsense"},
        {"xml"},
        {"xml", "nonsense"},
        {"xml", "check"},
        {"xml", "check", "--nonsense", "f"},
        {"xml", "events", "a", "b"},
        {"xml", "format", "-o"},
        {"xml", "format", "--plain=1", "f"},
        {"xml", "format", "--encoding=a b", "f"},
        {"xml", "format", "--trim", "--keep-space", "f"},
    };
    for (const auto& words : rows) {
        SCOPED_TRACE(testing::PrintToString(words));
        EXPECT_EQ(run(words), 2);
        EXPECT_EQ(out, "");
        EXPECT_FALSE(err.empty());
    }
}

TEST_F(Tool, takesOptionsAnywhereAndEndsThem)
{
    const std::string name = file("-f.xml", "<a>t</a>");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(name).parent_path());
    EXPECT_EQ(run({"xml", "get", "--", "-f.xml", "a"}), 0) << err;
    EXPECT_EQ(out, "t\n");
    EXPECT_EQ(run({"xml", "get", "--", "-f.xml", "--all"}), 1);
    EXPECT_EQ(run({"xml", "format", "./-f.xml", "-o=" + path("new.xml"), "--plain"}), 0) << err;
    EXPECT_EQ(content("new.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?><a>t</a>\n");
    std::filesystem::current_path(before);
}

TEST_F(Tool, showsVersionHelpAndDemonstration)
{
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_EQ(out, "qx 2.10.1\n");
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_EQ(out.find("usage: qx COMMAND"), 0U);
    EXPECT_EQ(run({"demo"}), 0) << err;
    EXPECT_NE(out.find("$ qx xml get "), std::string::npos);
    EXPECT_NE(err.find("broken.xml:4:51: error: Expected end tag 'note' but got 'body'"), std::string::npos)
        << err;
}

} // namespace
