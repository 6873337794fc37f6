// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmlevents.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace
{

struct ErrorRow {
    std::string document;
    const char* error; // check or text, and the place
};

/// What stands behind the calls.
std::string errorOf(XmlEvents& sax, const std::string& document)
{
    const std::string events = sax.readText(document);
    const std::size_t mark = events.rfind('!');
    return mark == std::string::npos ? "accepted" : events.substr(mark + 1);
}

void checkErrors(std::initializer_list<ErrorRow> rows)
{
    const MessageRecorder messages;
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    for (const ErrorRow& row : rows) {
        SCOPED_TRACE(row.document);
        EXPECT_EQ(errorOf(sax, row.document), row.error);
    }
}

TEST(qxXmlSaxErrors, documents)
{
    checkErrors({
        {"", "101@1:1"},
        {" \n ", "101@2:2"},
        {"text", "101@1:1"},
        {"<", "101@1:2"},
        {"<1/>", "101@1:2"},
        {"< a/>", "101@1:2"},
        {"</a>", "101@1:2"},
        {"<!x>", "101@1:3"},
        {"<![CDATA[x]]><a/>", "101@1:1"},
        {"&lt;<a/>", "101@1:1"},
        {"<!---->", "101@1:8"},
        {"<a/><b/>", "102@1:5"},
        {"<a/>\ntext", "102@2:1"},
        {"<a/><!DOCTYPE a>", "102@1:5"},
        {"<a/></a>", "102@1:6"},
        {"<a/><", "102@1:6"},
        {"<a/>&lt;", "102@1:5"},
        {" <?xml version='1.0'?><a/>", "1701@1:4"},
    });
}

TEST(qxXmlSaxErrors, elements)
{
    checkErrors({
        {"<a", "4001@1:3"},
        {"<a ", "4002@1:4"},
        {"<a\x01", "201@1:3"},
        {"<a<", "4001@1:3"},
        {"<a /b>", "4401@1:5"},
        {"<a/", "4401@1:4"},
        {"<a x", "2501@1:5"},
        {"<a x y='1'/>", "2501@1:6"},
        {"<a x=", "4101@1:6"},
        {"<a x=1/>", "4101@1:6"},
        {"<a x= 1/>", "4101@1:7"},
        {"<a x='1", "1002@1:8"},
        {"<a x='1\"/>", "1002@1:11"},
        {"<a x='<'/>", "1001@1:7"},
        {"<a x='\x02'/>", "201@1:7"},
        {"<a x='1'y='2'/>", "4001@1:9"},
        {"<a x='1' 2='2'/>", "4002@1:10"},
        {"<a x='1'\ny='2' x='3'/>", "4102@2:7"},
        {"<a \xC3\xA9='1' b='' \xC3\xA9 =''/>", "4102@1:15"},
        {"<a>", "4201@1:4"},
        {"<a><b></b>", "4201@1:11"},
        {"<a></", "4202@1:6"},
        {"<a></>", "4202@1:6"},
        {"<a></ a>", "4202@1:6"},
        {"<a></a", "4203@1:7"},
        {"<a></a b>", "4203@1:8"},
        {"<a></a/>", "4203@1:7"},
        {"<a></b>", "Expected end tag 'a' but got 'b'@1:6"},
        {"<a>\n  <b>\n</a>", "Expected end tag 'b' but got 'a'@3:3"},
        {"<abc></ab>", "Expected end tag 'abc' but got 'ab'@1:8"},
        {"<ab></abc>", "Expected end tag 'ab' but got 'abc'@1:7"},
        {"<a%s></b%d>", "4001@1:3"},
    });
}

TEST(qxXmlSaxErrors, content)
{
    checkErrors({
        {"<a><", "4301@1:5"},
        {"<a><1", "4301@1:5"},
        {"<a><!", "4301@1:6"},
        {"<a><!ELEMENT>", "4301@1:6"},
        {"<a><!DOCTYPE a></a>", "4301@1:4"},
        {"<a>]]></a>", "1401@1:4"},
        {"<a>text]]>", "1401@1:8"},
        {"<a>t\x0Bt", "201@1:5"},
        {std::string("<a>\0</a>", 8), "201@1:4"},
        {"<a>\xEF\xBF\xBE</a>", "201@1:4"},
        {"<a>\xEF\xBF\xBF</a>", "201@1:4"},
        {"<a>\xC3\xA9\xC3\xA9\x1F</a>", "201@1:6"},
        {"<a>&", "6801@1:5"},
        {"<a>&;", "6801@1:5"},
        {"<a>& b", "6801@1:5"},
        {"<a>&b", "6802@1:6"},
        {"<a>&b c;", "6802@1:6"},
        {"<a>&#", "6601@1:6"},
        {"<a>&#;", "6601@1:6"},
        {"<a>&#x;", "6601@1:7"},
        {"<a>&#X41;", "6601@1:6"},
        {"<a>&#4a;", "6602@1:7"},
        {"<a>&#65", "6602@1:8"},
        {"<a>&#0;", "6603@1:4"},
        {"<a>&#8;", "6603@1:4"},
        {"<a>&#xD800;", "6603@1:4"},
        {"<a>&#xFFFE;", "6603@1:4"},
        {"<a>&#x110000;", "6603@1:4"},
        {"<a>&#99999999999999999999;", "6603@1:4"},
        {"<a x='&#0;'>", "6603@1:7"},
        {"<a x='&b'>", "6802@1:9"},
    });
}

TEST(qxXmlSaxErrors, sectionsCommentsAndInstructions)
{
    checkErrors({
        {"<a><![", "1901@1:7"},
        {"<a><![cdata[x]]></a>", "1901@1:7"},
        {"<a><![CDATA[x", "1801@1:14"},
        {"<a><![CDATA[x]]", "1801@1:16"},
        {"<a><![CDATA[\x03]]>", "201@1:13"},
        {"<a><!-", "1501@1:7"},
        {"<a><!-x-->", "1501@1:7"},
        {"<a><!--", "1502@1:8"},
        {"<a><!-- x -", "1502@1:12"},
        {"<a><!-- x --", "1503@1:13"},
        {"<a><!-- x -- y --></a>", "1503@1:13"},
        {"<a><!-- x ---></a>", "1503@1:13"},
        {"<a><!-- \x04 -->", "201@1:9"},
        {"<a><?", "1601@1:6"},
        {"<a><? p?>", "1601@1:6"},
        {"<a><?p", "1602@1:7"},
        {"<a><?p/?>", "1602@1:7"},
        {"<a><?p x", "1603@1:9"},
        {"<a><?p x?", "1603@1:10"},
        {"<a><?p \x05?>", "201@1:8"},
        {"<a><?xml x?></a>", "1701@1:6"},
        {"<a><?XmL?></a>", "1701@1:6"},
    });
}

TEST(qxXmlSaxErrors, theDeclaration)
{
    checkErrors({
        {"<?xml?><a/>", "2301@1:6"},
        {"<?xml ?><a/>", "2301@1:7"},
        {"<?xml encoding='UTF-8'?><a/>", "2301@1:7"},
        {"<?xml versoin='1.0'?><a/>", "2301@1:11"},
        {"<?xml version?><a/>", "2501@1:14"},
        {"<?xml version=1.0?><a/>", "2401@1:15"},
        {"<?xml version=''?><a/>", "2601@1:16"},
        {"<?xml version='2.0'?><a/>", "2601@1:16"},
        {"<?xml version='1.'?><a/>", "2601@1:18"},
        {"<?xml version='1.0\"?><a/>", "2402@1:19"},
        {"<?xml version='1.0' encoding='UTF-8' version='1.0'?><a/>", "2302@1:38"},
        {"<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>", "2302@1:38"},
        {"<?xml version='1.0'encoding='UTF-8'?><a/>", "2302@1:20"},
        {"<?xml version='1.0' encoding='8'?><a/>", "8101@1:31"},
        {"<?xml version='1.0' encoding='a b'?><a/>", "8003@1:32"},
        {"<?xml version='1.0' standalone='YES'?><a/>", "3203@1:33"},
        {"<?xml version='1.0' standalone='yes\"?><a/>", "3204@1:36"},
        {"<?xml version='1.0'", "2302@1:20"},
        {"<?xml version='1.0'><a/>", "2302@1:20"},
    });
}

TEST(qxXmlSaxErrors, bytesThatAreNoCharacter)
{
    const char* const faults[] = {
        "\x80",
        "\xBF",
        "\xC0\x80",
        "\xC1\xBF",
        "\xC3",
        "\xC3(",
        "\xE0\x9F\xBF",
        "\xE2\x82",
        "\xE2(\x82",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xF0\x8F\xBF\xBF",
        "\xF0\x9F\x98",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80\x80",
        "\xFE",
        "\xFF",
    };
    const MessageRecorder messages;
    XmlEvents sax;
    for (const char* const fault : faults) {
        SCOPED_TRACE(testing::PrintToString(fault));
        const std::string bytes = fault;
        EXPECT_EQ(sax.readText("<a>\n\xC3\xA9" + bytes + "</a>"), "<a@1 '\n\xC3\xA9'@1 !202@2:2");
        EXPECT_EQ(errorOf(sax, "<a x='" + bytes), "202@1:7");
        EXPECT_EQ(errorOf(sax, "<a" + bytes), "202@1:3");
        EXPECT_EQ(errorOf(sax, "<a><!--x" + bytes), "202@1:9");
        EXPECT_EQ(errorOf(sax, "<a><![CDATA[x" + bytes), "202@1:14");
        EXPECT_EQ(errorOf(sax, "<a><?p x" + bytes), "202@1:9");
        EXPECT_EQ(errorOf(sax, "<a/>" + bytes), "202@1:5");
        EXPECT_EQ(errorOf(sax, bytes), "202@1:1");
    }
}

TEST(qxXmlSaxErrors, loneSurrogatesInUTF16)
{
    const MessageRecorder messages;
    XmlEvents sax;
    const std::string start("\xFF\xFE<\0a\0>\0", 8);
    const std::string end("<\0/\0a\0>\0", 8);
    EXPECT_EQ(sax.readText(start + std::string("\x3D\xD8\x00\xDE", 4) + end),
              "<a@1 '\xF0\x9F\x98\x80'@1 >a@1");
    EXPECT_EQ(errorOf(sax, start + "\x3D\xD8" + end), "201@1:4");
    EXPECT_EQ(errorOf(sax, start + std::string("\x00\xDE", 2) + end), "201@1:4");
    EXPECT_EQ(errorOf(sax, start + "\x3D\xD8"), "201@1:4");
    EXPECT_EQ(errorOf(sax, start + end + "x"), "202@1:8"); // half a token
}

TEST(qxXmlSaxErrors, aDocumentCutAnywhereIsAnErrorAtItsEnd)
{
    const std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
                                 "<!DOCTYPE a [<!ELEMENT a (b|c)*><!ATTLIST a x CDATA #IMPLIED>]>"
                                 "<a x='1&lt;2'>t\xC3\xA9xt&#65;<![CDATA[c]]><!-- d --><?p e?><b></b></a>";
    const MessageRecorder messages;
    XmlEvents sax;
    for (std::size_t length = 0; length < document.size(); ++length) {
        SCOPED_TRACE(length);
        sax.readText(document.substr(0, length));
        EXPECT_TRUE(sax.hasError());
        const bool isInCharacter = static_cast<unsigned char>(document[length]) == 0xA9;
        const bool isBehind = length > document.find('\xC3');
        EXPECT_EQ(sax.getErrorColumn(), length + 1 - (isBehind ? 1 : 0));
        EXPECT_EQ(sax.getErrorCheck() == 202, isInCharacter);
    }
    EXPECT_EQ(messages.messages().size(), document.size());
}

TEST(qxXmlSaxErrors, textsStandAsTheyAreReported)
{
    const MessageRecorder messages;
    XmlEvents sax;
    sax.readText("<a>\n\x01</a>");
    EXPECT_STREQ(sax.getError().getString(), "File: qxxml  Line: 201  Ver: 2.10.1 at (Line:2,Col:1)");
    EXPECT_STREQ(sax.getErrorText().getString(), "File: qxxml  Line: 201  Ver: 2.10.1");
    sax.readText("<a></b>");
    EXPECT_STREQ(sax.getError().getString(), "Expected end tag 'a' but got 'b' at (Line:1,Col:6)");

    const std::vector<RecordedMessage> expected = {
        {"QuaxoSDK", QX_LEVEL_WARNING, "File: qxxml  Line: 201  Ver: 2.10.1 at (Line:2,Col:1)"},
        {"QuaxoSDK", QX_LEVEL_WARNING, "Expected end tag 'a' but got 'b' at (Line:1,Col:6)"},
    };
    EXPECT_EQ(messages.messages(), expected);
}

TEST(qxXmlSaxErrors, longNamesLeaveRoomForThePlace)
{
    const MessageRecorder messages;
    XmlEvents sax;
    const std::string name(65535, 'n');
    sax.readText("<" + name + "></" + name.substr(1) + ">");
    const std::string half(30000, 'n');
    EXPECT_EQ(std::string(sax.getError().getString()),
              "Expected end tag '" + half + "' but got '" + half + "' at (Line:1,Col:65540)");
}

TEST(qxXmlSaxErrors, anExceptionOfAnotherObjectIsNotLost)
{
    class Throwing : public XmlEvents
    {
        unsigned char onCharData(const qxString&, unsigned int) override
        {
            throw qxParserException("another 100%", qxParserException::MISUSE);
        }
    };
    const MessageRecorder messages;
    Throwing sax;
    EXPECT_EQ(sax.readText("<a>t</a>"), "<a@1 !another 100%@1:5");
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"another 100% at (Line:1,Col:5)"});
}

TEST(qxXmlSaxErrors, theDocumentationListsEveryCheck)
{
    const auto home = std::filesystem::path(QX_TEST_DATA).parent_path().parent_path();
    std::ifstream file(home / "docs" / "xml-checks.md");
    std::string listed;
    for (std::string line; std::getline(file, line);) {
        if (line.size() > 2 && line[0] == '|' && line[2] >= '0' && line[2] <= '9') listed += line + "\n";
    }
    std::size_t lines = 0;
    for (const unsigned int* number = qxXmlCheckNumbers(); *number != 0; ++number, ++lines) {
        std::string text = qxXmlCheckText(*number);
        if (const std::size_t bar = text.find('|'); bar != std::string::npos) text.insert(bar, "\\");
        const std::string row = "| " + std::to_string(*number) + " |";
        const std::size_t begin = listed.find(row);
        ASSERT_NE(begin, std::string::npos) << row;
        EXPECT_NE(listed.substr(begin, listed.find('\n', begin) - begin).find(text), std::string::npos)
            << text;
    }
    EXPECT_EQ(static_cast<std::size_t>(std::count(listed.begin(), listed.end(), '\n')), lines);
}

TEST(qxXmlSaxErrors, everyCheckIsExplainedAndNoOtherNumberIs)
{
    unsigned int last = 0;
    for (const unsigned int* number = qxXmlCheckNumbers(); *number != 0; ++number) {
        EXPECT_GT(*number, last);
        last = *number;
        ASSERT_NE(qxXmlCheckText(*number), nullptr);
        EXPECT_NE(*qxXmlCheckText(*number), 0);
    }
    EXPECT_EQ(last, 8303U);
    EXPECT_STREQ(qxXmlCheckText(101), "the root element");
    EXPECT_EQ(qxXmlCheckText(100), nullptr);
    EXPECT_EQ(qxXmlCheckText(0), nullptr);
    EXPECT_EQ(qxXmlCheckText(9999), nullptr);
}

} // namespace
