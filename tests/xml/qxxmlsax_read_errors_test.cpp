// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmlevents.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace
{

/// Each row is a check or a text, a bar, and a document with "^" where the error is.
template <class... Rows>
void checkErrors(const Rows&... rows)
{
    const MessageRecorder messages;
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    sax.expectMarks(rows...);
}

TEST(qxXmlSaxErrors, documents)
{
    checkErrors("101|^", "101| \n ^", "101|^text", "101|<^", "101|<^1/>", "101|<^ a/>", "101|<^/a>",
                "101|<!^x>", "101|^<![CDATA[x]]><a/>", "101|^&lt;<a/>", "101|<!---->^", "102|<a/>^<b/>",
                "102|<a/>\n^text", "102|<a/>^<!DOCTYPE a>", "102|<a/><^/a>", "102|<a/><^", "102|<a/>^&lt;",
                "1701| <?^xml version='1.0'?><a/>");
}

TEST(qxXmlSaxErrors, elements)
{
    checkErrors("4001|<a^", "4002|<a ^", "201|<a^\x01", "4001|<a^<", "4401|<a /^b>", "4401|<a/^",
                "2501|<a x^", "2501|<a x ^y='1'/>", "4101|<a x=^", "4101|<a x=^1/>", "4101|<a x= ^1/>",
                "1002|<a x='1^", "1002|<a x='1\"/>^", "1001|<a x='^<'/>", "201|<a x='^\x02'/>",
                "4001|<a x='1'^y='2'/>", "4002|<a x='1' ^2='2'/>", "4102|<a x='1'\ny='2' ^x='3'/>",
                "4102|<a \xC3\xA9='1' b='' ^\xC3\xA9 =''/>", "4201|<a>^", "4201|<a><b></b>^", "4202|<a></^",
                "4202|<a></^>", "4202|<a></^ a>", "4203|<a></a^", "4203|<a></a ^b>", "4203|<a></a^/>",
                "Expected end tag 'a' but got 'b'|<a></^b>",
                "Expected end tag 'b' but got 'a'|<a>\n  <b>\n</^a>",
                "Expected end tag 'abc' but got 'ab'|<abc></^ab>",
                "Expected end tag 'ab' but got 'abc'|<ab></^abc>", "4001|<a^%s></b%d>");
}

TEST(qxXmlSaxErrors, content)
{
    checkErrors("4301|<a><^", "4301|<a><^1", "4301|<a><!^", "4301|<a><!^ELEMENT>",
                "4301|<a>^<!DOCTYPE a></a>", "1401|<a>^]]></a>", "1401|<a>text^]]>", "201|<a>t^\x0Bt",
                std::string("201|<a>^\0</a>", 13), "201|<a>^\xEF\xBF\xBE</a>", "201|<a>^\xEF\xBF\xBF</a>",
                "201|<a>\xC3\xA9\xC3\xA9^\x1F</a>", "6801|<a>&^", "6801|<a>&^;", "6801|<a>&^ b",
                "6802|<a>&b^", "6802|<a>&b^ c;", "6601|<a>&#^", "6601|<a>&#^;", "6601|<a>&#x^;",
                "6601|<a>&#^X41;", "6602|<a>&#4^a;", "6602|<a>&#65^", "6603|<a>^&#0;", "6603|<a>^&#8;",
                "6603|<a>^&#xD800;", "6603|<a>^&#xFFFE;", "6603|<a>^&#x110000;",
                "6603|<a>^&#99999999999999999999;", "6603|<a x='^&#0;'>", "6802|<a x='&b^'>");
}

TEST(qxXmlSaxErrors, sectionsCommentsAndInstructions)
{
    checkErrors("1901|<a><![^", "1901|<a><![^cdata[x]]></a>", "1801|<a><![CDATA[x^", "1801|<a><![CDATA[x]]^",
                "201|<a><![CDATA[^\x03]]>", "1501|<a><!-^", "1501|<a><!-^x-->", "1502|<a><!--^",
                "1502|<a><!-- x -^", "1503|<a><!-- x --^", "1503|<a><!-- x --^ y --></a>",
                "1503|<a><!-- x --^-></a>", "201|<a><!-- ^\x04 -->", "1601|<a><?^", "1601|<a><?^ p?>",
                "1602|<a><?p^", "1602|<a><?p^/?>", "1603|<a><?p x^", "1603|<a><?p x?^", "201|<a><?p ^\x05?>",
                "1701|<a><?^xml x?></a>", "1701|<a><?^XmL?></a>");
}

TEST(qxXmlSaxErrors, theDeclaration)
{
    checkErrors(
        "2301|<?xml^?><a/>", "2301|<?xml ^?><a/>", "2301|<?xml ^encoding='UTF-8'?><a/>",
        "2301|<?xml vers^oin='1.0'?><a/>", "2501|<?xml version^?><a/>", "2401|<?xml version=^1.0?><a/>",
        "2601|<?xml version='^'?><a/>", "2601|<?xml version='^2.0'?><a/>", "2601|<?xml version='1.^'?><a/>",
        "2402|<?xml version='1.0^\"?><a/>", "2302|<?xml version='1.0' encoding='UTF-8' ^version='1.0'?><a/>",
        "2302|<?xml version='1.0' standalone='yes' ^encoding='UTF-8'?><a/>",
        "2302|<?xml version='1.0'^encoding='UTF-8'?><a/>", "8101|<?xml version='1.0' encoding='^8'?><a/>",
        "8003|<?xml version='1.0' encoding='a^ b'?><a/>", "3203|<?xml version='1.0' standalone='^YES'?><a/>",
        "3204|<?xml version='1.0' standalone='yes^\"?><a/>", "2302|<?xml version='1.0'^",
        "2302|<?xml version='1.0'^><a/>");
}

TEST(qxXmlSaxErrors, bytesThatAreNoCharacter)
{
    const char* const faults[] = {"\x80",
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
                                  "\xFF"};
    const MessageRecorder messages;
    XmlEvents sax;
    for (const std::string fault : faults) {
        for (const std::string before :
             {"", "<a", "<a x='", "<a>\n\xC3\xA9", "<a><!--x", "<a><![CDATA[x", "<a><?p x", "<a/>"})
            EXPECT_EQ(sax.mark(before + fault), "202|" + before + "^" + fault);
        EXPECT_EQ(sax.readText("<a>\n\xC3\xA9" + fault + "</a>"), "<a@1 '\n\xC3\xA9'@1 !202@2:2");
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
    for (const std::string& lone :
         {"\x3D\xD8" + end, std::string("\x00\xDE", 2) + end, std::string("\x3D\xD8")})
        EXPECT_EQ(sax.readText(start + lone), "<a@1 !201@1:4");
    EXPECT_EQ(sax.readText(start + end + "x"), "<a@1 >a@1 !202@1:8"); // half a token
}

TEST(qxXmlSaxErrors, aDocumentCutAnywhereIsAnErrorAtItsEnd)
{
    const std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
                                 "<!DOCTYPE a [<!ELEMENT a (b|c)*><!ATTLIST a x CDATA #IMPLIED>]>"
                                 "<a x='1&lt;2'>t\xC3\xA9xt&#65;<![CDATA[c]]><!-- d --><?p e?><b></b></a>";
    const MessageRecorder messages;
    XmlEvents sax;
    for (std::size_t length = 0; length < document.size(); ++length) {
        std::string cut = document.substr(0, length);
        const bool isInCharacter = document[length] == '\xA9';
        const std::string marked = sax.mark(cut);
        EXPECT_EQ(marked.substr(marked.find('|') + 1), cut.insert(length - (isInCharacter ? 1 : 0), "^"));
        EXPECT_EQ(sax.getErrorCheck() == 202, isInCharacter);
    }
    EXPECT_EQ(messages.messages().size(), document.size());
}

TEST(qxXmlSaxErrors, textsStandAsTheyAreReported)
{
    const MessageRecorder messages;
    XmlEvents sax;
    sax.readText("<a>\n\x01</a>");
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

TEST(qxXmlSaxErrors, theDocumentationExplainsEveryCheckAndNoOther)
{
    std::string expected;
    for (const unsigned int* number = qxXmlCheckNumbers(); *number != 0; ++number) {
        std::string text = qxXmlCheckText(*number);
        if (const std::size_t bar = text.find('|'); bar != std::string::npos) text.insert(bar, "\\");
        expected +=
            std::to_string(*number) + ": " + text + (qxXmlIsLimitCheck(*number) ? " (limit)\n" : "\n");
    }

    const auto home = std::filesystem::path(QX_TEST_DATA).parent_path().parent_path();
    std::ifstream file(home / "docs" / "xml-checks.md");
    std::string listed; // number and text of the lines "| number | production | text | error text |"
    for (std::string line; std::getline(file, line);) {
        if (line.size() < 3 || line[0] != '|' || line[2] < '0' || line[2] > '9') continue;
        const std::size_t text = line.find(" | ", 9) + 3;
        const std::size_t end = line.rfind(" | ");
        listed += line.substr(2, line.find(" |") - 2) + ": " + line.substr(text, end - text) + "\n";
    }
    EXPECT_EQ(listed, expected);
    for (const unsigned int none : {0U, 100U, 9999U}) EXPECT_EQ(qxXmlCheckText(none), nullptr);
}

} // namespace
