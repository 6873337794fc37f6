// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmlevents.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace
{

std::string repeat(const char* text, unsigned int count)
{
    std::string result;
    while (count-- > 0) result += text;
    return result;
}

TEST(qxXmlSaxLimits, textsOf65535BytesPassAndLongerOnesDoNot)
{
    const struct {
        const char* before;
        const char* after;
        const char* error; // of what is too long
    } rows[] = {
        {"<a>", "</a>", "Too large 'CharData' is notified@1:4"},
        {"<a><![CDATA[", "]]></a>", "Too large 'CData' is notified@1:4"},
        {"<a><!--", "--></a>", "Too large 'Comment' is notified@1:4"},
        {"<a><?p ", "?></a>", "1604@1:4"},
        {"<a x='", "'/>", "1003@1:6"},
        {"<", "/>", "502@1:2"},
        {"<a ", "=''/>", "502@1:4"},
        {"<a>&", ";</a>", "502@1:5"},
    };
    const struct {
        const char* character;
        unsigned int fits;
        const char* rest; // to fill 65,535 bytes
    } texts[] = {{"x", 65535, ""},
                 {"\xC3\xA9", 32767, "x"},
                 {"\xE4\xB8\xAD", 21845, ""},
                 {"\xF0\x90\x80\x80", 16383, "xxx"}};
    const MessageRecorder messages;
    XmlEvents sax;
    for (const auto& row : rows) {
        for (const auto& text : texts) {
            SCOPED_TRACE(std::string(row.before) + text.character);
            const std::string fitting = repeat(text.character, text.fits) + text.rest;
            ASSERT_EQ(fitting.size(), 65535U);
            sax.readText(row.before + fitting + row.after);
            EXPECT_FALSE(sax.hasError());
            const std::string events = sax.readText(row.before + fitting + "y" + row.after);
            EXPECT_EQ(events.substr(events.rfind('!') + 1), row.error);
            EXPECT_EQ(events.find("xx"), std::string::npos);
        }
    }
}

TEST(qxXmlSaxLimits, textThatNobodyWantsMayBeLong)
{
    XmlEvents sax;
    sax.disableNotifyItemType(QX_XML_CHARDATA | QX_XML_CDATA);
    const MessageRecorder messages;
    EXPECT_EQ(sax.readText("<a>" + std::string(5000000, 'x') + "</a>"), "<a@1 >a@1");
    EXPECT_EQ(sax.readText("<a><![CDATA[" + std::string(65536, 'x') + "]]></a>"),
              "<a@1 !Too large 'CData' is notified@1:4");
}

TEST(qxXmlSaxLimits, aLongTextOfTwoKindsCountsAsOne)
{
    const MessageRecorder messages;
    XmlEvents sax;
    const std::string text = std::string(65530, 'x') + "]]]]";
    EXPECT_EQ(sax.readText("<a>" + text + "y</a>").size(), 65535U + strlen("<a@1 ''@1 >a@1"));
    EXPECT_EQ(sax.readText("<a>" + text + "yy</a>"), "<a@1 !Too large 'CharData' is notified@1:4");
    EXPECT_EQ(sax.readText("<a x='" + repeat("&lt;", 16384) + "'/>").substr(0, 5), "<a@1 ");
    EXPECT_EQ(sax.getErrorCheck(), 1003U);
}

TEST(qxXmlSaxLimits, hugeTextsEndBeforeTheyAreInMemory)
{
    const MessageRecorder messages;
    for (const char* const start : {"<a>", "<a><!--", "<a><![CDATA[", "<a><?p ", "<a x='", "<", "<a>&",
                                    "<a>&#", "<?xml version='1.", "<?xml version='1.0' encoding='x"}) {
        SCOPED_TRACE(start);
        XmlEvents sax;
        std::string document = start + std::string(3000000, '1');
        if (std::string(start) == "<" || std::string(start) == "<a>&") document[std::strlen(start)] = 'n';
        qxSerializeAdapterMemory memory(document.data(), static_cast<unsigned int>(document.size()));
        sax.read(&memory);
        EXPECT_TRUE(sax.hasError());
        EXPECT_GT(memory.length(), 2000000U); // given up long before the end
    }
}

TEST(qxXmlSaxLimits, aMillionLevels)
{
    const MessageRecorder messages;
    const std::string open = repeat("<ab>", 1000000);
    XmlEvents sax;
    sax.disableNotifyItemType(QX_XML_ELEMENT);
    EXPECT_EQ(sax.readText(open + "t" + repeat("</ab>", 1000000)), "'t'@1000000");
    EXPECT_EQ(sax.readText(open), "!4201@1:4000001");
}

TEST(qxXmlSaxLimits, manyAttributesOnOneTag)
{
    const MessageRecorder messages;
    std::string document = "<a";
    for (int i = 0; i < 100000; ++i) document += " n" + std::to_string(i) + "='v'";
    XmlEvents sax;
    const std::string events = sax.readText(document + "/>");
    EXPECT_EQ(std::count(events.begin(), events.end(), '='), 100000);
    sax.readText(document + " n77777='w'/>");
    EXPECT_EQ(sax.getErrorCheck(), 4102U);
    EXPECT_EQ(sax.getErrorColumn(), document.size() + 2);
}

TEST(qxXmlSaxLimits, duplicatesAreFoundAmongFewAndMany)
{
    const MessageRecorder messages;
    XmlEvents sax;
    for (const int count : {1, 2, 15, 16, 17, 18, 33, 100}) {
        std::string document = "<a><b y='1'/><c";
        for (int i = 0; i < count; ++i) document += " n" + std::to_string(i) + "='v'";
        for (int twice = 0; twice <= count; ++twice) { // the last one is new
            SCOPED_TRACE(std::to_string(twice) + " of " + std::to_string(count));
            sax.readText(document + " n" + std::to_string(twice) + "='v'/></a>");
            EXPECT_EQ(sax.getErrorCheck(), twice < count ? 4102U : 0U);
        }
        EXPECT_FALSE(sax.hasError());
    }
}

/// 50,000 names of 12 letters that the strings' hash cannot tell apart.
std::vector<std::string> namesOfOneHash()
{
    const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string name = "TJrjuUYAaaaa"; // the first eight make the hash overlook most of the last four
    const unsigned int hash = qxString::hash(name.c_str(), 12);
    std::vector<std::string> names;
    for (unsigned int number = 0; names.size() < 50000; ++number) {
        unsigned int rest = number;
        for (std::size_t i = 8; i < 12; ++i, rest /= 52) name[i] = letters[rest % 52];
        if (qxString::hash(name.c_str(), 12) == hash) names.push_back(name);
    }
    return names;
}

TEST(qxXmlSaxLimits, namesOfOneHashCostNoMoreThanOthers)
{
    const std::vector<std::string> names = namesOfOneHash();
    std::string attributes = "<a";
    std::string elements = "<a>";
    for (const std::string& name : names) {
        attributes += " " + name + "=''";
        elements += "<" + name + "/>";
    }
    XmlEvents sax; // were it quadratic, each of these would take minutes
    const std::string first = sax.readText(attributes + "/>");
    EXPECT_EQ(std::count(first.begin(), first.end(), '='), 50000);
    const std::string second = sax.readText(elements + "</a>");
    EXPECT_EQ(std::count(second.begin(), second.end(), '>'), 50001);
}

/// A document with every construct, shifted against the blocks in which it is decoded.
TEST(qxXmlSaxLimits, blocksJoinWithoutASeam)
{
    const std::string document =
        "<?xml version='1.0' encoding='UTF-8' standalone='yes'?><!DOCTYPE a [<!ELEMENT a (b|c)*>"
        "<!ATTLIST a x CDATA #IMPLIED><!ENTITY e 'v&lt;'>]><a x='1&lt;2' encoding='hex'\n y = "
        "\"\xC3\xA9\">t\xC3\xA9xt "
        "]] &#65;&name;\xF0\x9F\x98\x80<![CDATA[c]]]]><b>]]</b><!-- d - e --><?pi e?f ?><long-name.x "
        "attribute='value'></long-name.x ><\xE4\xB8\xAD/></a>";
    XmlEvents sax;
    sax.enableNotifyItemType(4095);
    const std::string expected = sax.readText(document);
    ASSERT_FALSE(sax.hasError());
    const std::size_t declaration = document.find("?>") + 2;
    for (std::size_t shift = 16384 - document.size() - 2; shift <= 16384; ++shift) {
        std::string shifted = document;
        shifted.insert(declaration, shift, ' ');
        ASSERT_EQ(sax.readText(shifted), expected) << shift;
    }
}

TEST(qxXmlSaxLimits, errorsKeepTheirPlaceAcrossBlocks)
{
    const MessageRecorder messages;
    XmlEvents sax;
    for (const std::size_t shift : {16370U, 16375U, 16380U, 16384U, 32760U}) {
        SCOPED_TRACE(shift);
        const std::string before = "<a>" + std::string(shift, '\n');
        sax.readText(before + "<b x='1' y='2' x='3'/>");
        EXPECT_EQ(sax.getErrorCheck(), 4102U);
        EXPECT_EQ(sax.getErrorLine(), shift + 1);
        EXPECT_EQ(sax.getErrorColumn(), 16U);
        sax.readText(before + "<bc><!-- \xF0\x9F\x98\x80 --></bd>");
        EXPECT_EQ(sax.getErrorColumn(), 17U);
        sax.readText(before + "<b>&#1;");
        EXPECT_EQ(sax.getErrorColumn(), 4U);
    }
}

} // namespace
