// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxdict.h"
#include "qxteststream.h"
#include "qxtestsupport.h"
#include "qxxmlevents.h"

#include <functional>

namespace
{

TEST(qxXmlSaxRead, callsInDocumentOrder)
{
    XmlEvents sax;
    sax.expectEvents(
        "<a/> => <a@1 >a@1", "<a></a> => <a@1 >a@1", "<a x='1' y=\"2\"/> => <a@1 x=1@1 y=2@1 >a@1",
        "<a\n\tx = '1'\r\n></a > => <a@1 x=1@1 >a@1",
        "<a>t<b>u</b>v</a> => <a@1 't'@1 <b@2 'u'@2 >b@2 'v'@1 >a@1",
        "<a x=\"1&lt;2\">t<c/></a> => <a@1 attr&:lt@1 x=1&lt;2@1 't'@1 <c@2 >c@2 >a@1",
        "<a>x &lt; y</a> => <a@1 'x '@1 &lt@1 ' y'@1 >a@1",
        "<a>&#65;&#x1F600;&foo;</a> => <a@1 &#65@1 &#x1F600@1 &foo@1 >a@1",
        "<a> \n\r\n</a> => <a@1 ' \n\r\n'@1 >a@1", "<a x='&#9;\n\t'/> => <a@1 attr&:#9@1 x=&#9;\n\t@1 >a@1",
        "<a>]]]&gt;]></a> => <a@1 ']]]'@1 &gt@1 ']>'@1 >a@1", "<a x=']]>'>></a> => <a@1 x=]]>@1 '>'@1 >a@1",
        "<a x=''/> => <a@1 x=@1 >a@1", "<a x='\"'>\"'</a> => <a@1 x=\"@1 '\"''@1 >a@1",
        "<a><![CDATA[<b>&]]]]></a> => <a@1 cdata:'<b>&]]'@1 >a@1",
        "<a><![CDATA[]]></a> => <a@1 cdata:''@1 >a@1",
        "<a><!----><!-- - --></a> => <a@1 --:''@1 --:' - '@1 >a@1",
        "<a><?p?><?p ?><?p  d ?></a> => <a@1 ?p''@1 ?p''@1 ?p'd '@1 >a@1",
        "<a><?xmlx ?\?></a> => <a@1 ?xmlx'?'@1 >a@1",
        " <!--c--> <?p d?>\n<a/> <!--e--> <?q f?>  => --:'c'@0 ?p'd'@0 <a@1 >a@1 --:'e'@0 ?q'f'@0",
        "<:_-.9 a:b='1'/> => <:_-.9@1 a:b=1@1 >:_-.9@1");
}

TEST(qxXmlSaxRead, charactersBeyondASCII)
{
    XmlEvents sax;
    sax.expectEvents("<\xC3\xA9 \xE4\xB8\xAD='\xD0\xB6'>\xE2\x82\xAC</\xC3\xA9> => <\xC3\xA9@1 "
                     "\xE4\xB8\xAD=\xD0\xB6@1 '\xE2\x82\xAC'@1 >\xC3\xA9@1",
                     "<a\xF0\x90\x80\x80 b='\xF0\x9F\x98\x80'>\xF0\x9F\x98\x80</a\xF0\x90\x80\x80> => "
                     "<a\xF0\x90\x80\x80@1 b=\xF0\x9F\x98\x80@1 '\xF0\x9F\x98\x80'@1 >a\xF0\x90\x80\x80@1",
                     "<a><!--\xF0\x9F\x98\x80--><?p \xC3\xA9?><![CDATA[\xEF\xBF\xBD]]></a> => <a@1 "
                     "--:'\xF0\x9F\x98\x80'@1 ?p'\xC3\xA9'@1 cdata:'\xEF\xBF\xBD'@1 >a@1",
                     "<a>\xC3\xA9 \xC3\xA9\xC3\xA9  x\xE2\x82\xAC\xF0\x9F\x98\x80.\xC2\x80</a> => <a@1 "
                     "'\xC3\xA9 \xC3\xA9\xC3\xA9  x\xE2\x82\xAC\xF0\x9F\x98\x80.\xC2\x80'@1 >a@1",
                     "<a x='\xC3\xA9 &amp; \xC3\xA9'/> => <a@1 attr&:amp@1 x=\xC3\xA9 &amp; \xC3\xA9@1 >a@1");
}

TEST(qxXmlSaxRead, theDeclaration)
{
    XmlEvents sax;
    sax.expectEvents("<?xml version='1.0'?><a/> => version:1.0 <a@1 >a@1",
                     "<?xml version = \"1.1\" encoding='utf-8' standalone=\"yes\" ?><a/> => version:1.1 "
                     "encoding:utf-8 standalone:yes <a@1 >a@1",
                     "<?xml version='1.0' standalone='no'?>\n<a/> => version:1.0 standalone:no <a@1 >a@1");
    EXPECT_STREQ(sax.getVersion().getString(), "1.0");
    EXPECT_STREQ(sax.getEncoding().getString(), "utf-8");
    EXPECT_FALSE(sax.isStandalone());
}

TEST(qxXmlSaxRead, everyOtherEncodingThanUTF8IsOneCharacterAByte)
{
    XmlEvents sax;
    for (const char* const name : {"ISO-8859-1", "windows-1252", "UTF8", "us-ascii", "UTF-16"}) {
        SCOPED_TRACE(name);
        const std::string declaration = std::string("<?xml version='1.0' encoding='") + name + "'?>";
        EXPECT_EQ(sax.readText(declaration + "<a>\xC3\xA9\xFF</a>"),
                  std::string("version:1.0 encoding:") + name + " <a@1 '\xC3\x83\xC2\xA9\xC3\xBF'@1 >a@1");
        EXPECT_EQ(sax.readText("<a>\xC3\xA9</a>"),
                  "<a@1 '\xC3\xA9'@1 >a@1"); // the next document is UTF-8 again
    }
    EXPECT_EQ(sax.readText("<?xml version='1.0' encoding='x'?><a>\xC3"),
              "version:1.0 encoding:x <a@1 '\xC3\x83'@1 !4201@1:39");
    EXPECT_EQ(sax.readText("<a>\xC3\xA9</a>"), "<a@1 '\xC3\xA9'@1 >a@1");
}

std::string toUTF16(const std::string& text, bool bigEndian)
{
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text) {
        if (bigEndian) bytes += '\0';
        bytes += c;
        if (!bigEndian) bytes += '\0';
    }
    return bytes;
}

TEST(qxXmlSaxRead, marksSelectTheEncoding)
{
    XmlEvents sax;
    const std::string document = "<?xml version='1.0' encoding='UTF-16'?><a x='1'>t</a>";
    const char* const events = "version:1.0 encoding:UTF-16 <a@1 x=1@1 't'@1 >a@1";
    EXPECT_EQ(sax.readText(toUTF16(document, false)), events);
    EXPECT_EQ(sax.readText(toUTF16(document, true)), events);
    EXPECT_EQ(sax.readText("\xEF\xBB\xBF<a>\xC3\xA9</a>"), "<a@1 '\xC3\xA9'@1 >a@1");
    EXPECT_EQ(sax.readText("<a>\xEF\xBB\xBF</a>"), "<a@1 '\xEF\xBB\xBF'@1 >a@1"); // only at the start
}

TEST(qxXmlSaxRead, everyBitEnablesItsCalls)
{
    const char* const document = "<?xml version='1.0' encoding='UTF-8' standalone='yes'?>"
                                 "<a x='&lt;'>t<![CDATA[c]]><!--d--><?p e?></a>";
    const struct {
        qxXmlItemType type;
        const char* events;
    } rows[] = {
        {QX_XML_ELEMENT, "<a@1 >a@1"},
        {QX_XML_ELEMENT_CONTENTS, "contents:a{t<![CDATA[c]]><!--d--><?p e?>}@1"},
        {QX_XML_ATTRIBUTE, "x=&lt;@1"},
        {QX_XML_ATTRIBUTE_END, "|a@1"},
        {QX_XML_DECLARATION, "version:1.0 encoding:UTF-8 standalone:yes"},
        {QX_XML_CHARDATA, "'t'@1"},
        {QX_XML_CDATA, "cdata:'c'@1"},
        {QX_XML_COMMENT, "--:'d'@1"},
        {QX_XML_PI, "?p'e'@1"},
        {QX_XML_ENTITY_REFERENCE, "attr&:lt@1"},
        {QX_XML_CONTENTS_START, "(a@1"},
        {QX_XML_CONTENTS_END, ")a@1"},
        {0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        XmlEvents sax;
        sax.disableNotifyItemType(4095);
        sax.enableNotifyItemType(row.type);
        EXPECT_EQ(sax.readText(document), row.events);
    }
}

TEST(qxXmlSaxRead, theOrderOfAllCalls)
{
    XmlEvents sax;
    sax.enableNotifyItemType(4095);
    sax.expectEvents(
        "<a x='1'>t<b/><c></c></a> => <a@1 x=1@1 |a@1 (a@1 't'@1 <b@2 |b@2 >b@2 <c@2 |c@2 (c@2 "
        "contents:c{}@2 )c@2 >c@2 contents:a{t<b/><c></c>}@1 )a@1 >a@1",
        "<a>x</b> => <a@1 |a@1 (a@1 'x'@1 contents:a{x}@1 )a@1 !Expected end tag 'a' but got 'b'@1:7");
}

TEST(qxXmlSaxRead, theMaskAndItsQuestions)
{
    XmlEvents sax;
    EXPECT_TRUE(sax.isNotifyingItemType(1013));
    for (const qxXmlItemType off :
         {QX_XML_ELEMENT_CONTENTS, QX_XML_ATTRIBUTE_END, QX_XML_CONTENTS_START, QX_XML_CONTENTS_END})
        EXPECT_FALSE(sax.isNotifyingItemType(off)) << off;
    EXPECT_FALSE(sax.isNotifyingItemType(QX_XML_ELEMENT | QX_XML_ATTRIBUTE_END)); // all bits count
    sax.disableNotifyItemType(QX_XML_ELEMENT);
    EXPECT_FALSE(sax.isNotifyingItemType(QX_XML_ELEMENT | QX_XML_PI));
}

TEST(qxXmlSaxRead, contentsThatAreTooLongAreSkipped)
{
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    sax.enableNotifyItemType(QX_XML_ELEMENT_CONTENTS);
    sax.setMaxBufferSize(10);
    EXPECT_EQ(sax.readText("<a>123456789</a>"), "contents:a{123456789}@1");
    EXPECT_EQ(sax.readText("<a>1234567890</a>"), "");
    EXPECT_EQ(sax.readText("<a>" + std::string(40000, 'x') + "<b>123</b></a>"), "contents:b{123}@2");
    sax.setMaxBufferSize(1000000);
    EXPECT_EQ(sax.readText("<a><b>" + std::string(65533, 'x') + "</b></a>").size(),
              65533U + strlen("contents:b{}@2"));
}

TEST(qxXmlSaxRead, aRefusalEndsQuietly)
{
    const char* const document = "<?xml version='1.0' encoding='UTF-8' standalone='yes'?>"
                                 "<a x='&lt;'>t&gt;<![CDATA[c]]><!--d--><?p e?></a>";
    XmlEvents all;
    all.enableNotifyItemType(4095);
    const std::string events = all.readText(document);
    const MessageRecorder messages;
    std::size_t end = 0;
    while (end < events.size()) {
        const std::size_t begin = end == 0 ? 0 : end + 1;
        end = events.find_first_of(' ', begin);
        if (events.substr(begin, 10) == "contents:a")
            end = events.find_first_of(' ', events.find('}', begin));
        if (end == std::string::npos) end = events.size();
        XmlEvents sax;
        sax.enableNotifyItemType(4095);
        sax.refused = events.substr(begin, end - begin);
        SCOPED_TRACE(sax.refused);
        EXPECT_EQ(sax.readText(document), events.substr(0, end));
        EXPECT_FALSE(sax.hasError());
    }
    EXPECT_EQ(messages.texts(), std::vector<std::string>{});
}

/// Answers onFunction.
class Functions : public XmlEvents
{
public:
    qxString onFunction(const qxString& argument, unsigned int level) override
    {
        add("f(" + std::string(argument.getString()) + ")@" + std::to_string(level));
        return "[" + argument + "]";
    }
};

TEST(qxXmlSaxRead, functionsReplaceTextsAndValues)
{
    Functions sax;
    sax.expectEvents("<a x='function:v' y='functio:'>function:t</a> => <a@1 f(v)@1 x=[v]@1 y=functio:@1 "
                     "f(t)@1 '[t]'@1 >a@1",
                     "<a> function:t</a> => <a@1 ' function:t'@1 >a@1",
                     "<a>function:<b/></a> => <a@1 f()@1 '[]'@1 <b@2 >b@2 >a@1",
                     "<a x='function:&lt;'/> => <a@1 attr&:lt@1 f(&lt;)@1 x=[&lt;]@1 >a@1");
    XmlEvents plain;
    plain.expectEvents("<a x='function:v'>function:t</a> => <a@1 x=v@1 't'@1 >a@1");
}

/// Runs a check inside one of the calls.
class Inside : public XmlEvents
{
public:
    std::function<void(Inside&)> onText;
    std::function<void(Inside&, const char*)> onName;

    unsigned char onCharData(const qxString&, unsigned int) override
    {
        if (onText) onText(*this);
        return 1;
    }
    unsigned char onAttribute(const qxString& name, const qxString&, unsigned int) override
    {
        if (onName) onName(*this, name.getString());
        return 1;
    }
    unsigned char onEntityReference(const qxString& name, unsigned int, unsigned char) override
    {
        if (onName) onName(*this, name.getString());
        return 1;
    }
};

TEST(qxXmlSaxRead, answersWhatIsOpenInsideACall)
{
    Inside sax;
    unsigned int calls = 0;
    sax.onText = [&calls](Inside& inside) {
        ++calls;
        EXPECT_EQ(inside.getCurrentElementLevel(), 2U);
        EXPECT_STREQ(inside.getCurrentElementName().getString(), "b");
        EXPECT_STREQ(inside.getElementName(1).getString(), "a");
        EXPECT_STREQ(inside.getElementName(0).getString(), "");
        EXPECT_STREQ(inside.getElementName(3).getString(), "");
        EXPECT_STREQ(inside.getCurrentAttribute("y").getString(), "2");
        EXPECT_STREQ(inside.getCurrentAttribute("x").getString(), "3");
        EXPECT_STREQ(inside.getAttribute(1, "x").getString(), "1&lt;");
        EXPECT_STREQ(inside.getAttribute(1, "y").getString(), "");
        EXPECT_TRUE(inside.hasCurrentAttribute("y"));
        EXPECT_TRUE(inside.hasAttribute(1, "x"));
        EXPECT_FALSE(inside.hasAttribute(1, "y"));
        EXPECT_FALSE(inside.hasAttribute(3, "x"));
        EXPECT_FALSE(inside.hasAttribute(0, "x"));
    };
    sax.readText("<a x='1&lt;'><c z='9'/><b x='3' y='2'>t</b></a>");
    EXPECT_EQ(calls, 1U);
    EXPECT_EQ(sax.getCurrentElementLevel(), 0U);
    EXPECT_FALSE(sax.hasAttribute(1, "x"));
}

TEST(qxXmlSaxRead, attributeSetsAreCopies)
{
    Inside sax;
    qxXmlAttributeSet kept;
    sax.onText = [&kept](Inside& inside) { kept = inside.getAttributeSet(1); };
    sax.readText("<a x='1' y='2'>t</a>");
    ASSERT_NE(kept.find("x"), nullptr);
    EXPECT_STREQ(kept.find("x")->getData().getString(), "1");
    EXPECT_STREQ(kept.find("y")->getData().getString(), "2");
    EXPECT_EQ(kept.find("z"), nullptr);
}

TEST(qxXmlSaxRead, anAttributeIsInTheSetWhenItsValueIsRead)
{
    Inside sax;
    std::string seen;
    sax.onName = [&seen](Inside& inside, const char* name) {
        seen += std::string(name) + (inside.hasCurrentAttribute("x") ? "+" : "-") +
                (inside.hasCurrentAttribute("y") ? "+ " : "- ");
    };
    sax.readText("<a x='1' y='&lt;'/>");
    EXPECT_EQ(seen, "x+- lt+- y++ ");
}

TEST(qxXmlSaxRead, namesSurviveOthersWithTheirPlaceInTheCache)
{
    // Far more names than are kept, between the start and the end of an element and its attribute.
    std::string document = "<outer attr='";
    for (int i = 0; i < 2000; ++i) document += "&name" + std::to_string(i) + ";";
    document += "'>";
    for (int i = 0; i < 2000; ++i) document += "<n" + std::to_string(i * 7) + "/>";
    document += "</outer>";
    Inside sax;
    std::string last;
    sax.onName = [&last](Inside&, const char* name) { last = name; };
    sax.readText(document);
    EXPECT_FALSE(sax.hasError());
    EXPECT_EQ(last, "attr");

    XmlEvents events;
    events.disableNotifyItemType(QX_XML_ATTRIBUTE | QX_XML_ENTITY_REFERENCE);
    const std::string result = events.readText(document);
    EXPECT_EQ(result.substr(0, 12), "<outer@1 <n0");
    EXPECT_EQ(result.substr(result.size() - 8), ">outer@1");
}

TEST(qxXmlSaxRead, theWordForBinaryValues)
{
    const struct {
        const char* start;
        bool prefers;
        bool base64;
    } rows[] = {
        {"<a>", true, true},
        {"<a>", false, false},
        {"<a encoding='b64'>", false, true},
        {"<a ENCODING='HeX'>", true, false},
        {"<a encoding='x'>", true, true},
        {"<a encoding='B64' Encoding='hex'>", true, false},
        {"<a><b encoding='hex'/><c>", true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.start);
        Inside sax;
        sax.useBase64(row.prefers);
        bool base64 = !row.base64;
        sax.onText = [&base64](Inside& inside) { base64 = inside.useBase64(); };
        sax.readText(std::string(row.start) + "t");
        EXPECT_EQ(base64, row.base64);
    }
}

TEST(qxXmlSaxRead, refusesToStartAnewInsideACall)
{
    const struct {
        const char* name;
        void (*call)(Inside&);
    } rows[] = {
        {"read", [](Inside& inside) { inside.read(nullptr); }},
        {"setAdapter", [](Inside& inside) { inside.setAdapter(nullptr); }},
        {"reset", [](Inside& inside) { inside.reset(); }},
        {"continueParsingFrom",
         [](Inside& inside) {
             qxBasicParser other;
             inside.continueParsingFrom(other);
             other.continueParsingFrom(inside);
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Inside sax;
        sax.onText = row.call;
        EXPECT_EQ(sax.readText("<a>t</a>"), "<a@1 >a@1 !Parser is busy reading@1:5");
        sax.onText = nullptr;
        EXPECT_EQ(sax.readText("<a>t</a>"), "<a@1 >a@1");
    }
}

TEST(qxXmlSaxRead, anotherExceptionPassesAndLeavesTheReaderInOrder)
{
    Inside sax;
    char bytes[] = "<a>text</a>";
    qxSerializeAdapterMemory memory(bytes, 11);
    sax.onText = [](Inside&) { throw 7; };
    EXPECT_THROW(sax.read(&memory), int);
    EXPECT_EQ(memory.getRef(), 0U);
    EXPECT_EQ(memory.length(), 4U); // behind the text
    EXPECT_EQ(sax.getAdapter(), nullptr);
    EXPECT_EQ(sax.getCurrentElementLevel(), 0U);
    sax.onText = nullptr;
    EXPECT_EQ(sax.readText("<a>t</a>"), "<a@1 >a@1");
}

TEST(qxXmlSaxRead, everyReadStartsAfresh)
{
    XmlEvents sax;
    EXPECT_EQ(sax.readText("<a><b></a>"), "<a@1 <b@2 !Expected end tag 'b' but got 'a'@1:9");
    EXPECT_EQ(sax.readText("<a/>"), "<a@1 >a@1");
    EXPECT_FALSE(sax.hasError());
    EXPECT_EQ(sax.readText("\n <a"), "<a@1 !4001@2:4");
    EXPECT_EQ(sax.readText(""), "!101@1:1");
    sax.events.clear();
    sax.read(nullptr);
    EXPECT_EQ(sax.getErrorCheck(), 101U);
}

TEST(qxXmlSaxRead, namesTheProgressUnlessSomebodyDid)
{
    XmlEvents sax;
    char bytes[] = "<a/>";
    qxSerializeAdapterMemory memory(bytes, 4);
    memory.setName("file%s");
    sax.read(&memory);
    EXPECT_STREQ(sax.getProgressMessage().getString(), "Reading XML data from file%s");

    XmlEvents named;
    named.setProgressMessage("Mine");
    named.readText("<a/>");
    EXPECT_STREQ(named.getProgressMessage().getString(), "Mine");
}

TEST(qxXmlSaxRead, registriesKeepHandlersByName)
{
    auto* const first = reinterpret_cast<qxXmlCustomDataInterface*>(0x1000); // never called: only kept
    auto* const second = reinterpret_cast<qxXmlCustomDataInterface*>(0x2000);
    qxXmlSax::registerCustomDataInterface("x", first);
    qxXmlSax::registerCustomDataInterface("y", first);
    qxXmlSax::registerCustomDataInterface("z", second);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("x"), first);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("z"), second);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("a"), nullptr);
    EXPECT_EQ(qxXmlSax::getObjectInterface("x"), nullptr);
    EXPECT_EQ(qxXmlSax::getDynamicTypeInterface("x"), nullptr);

    XmlEvents sax;
    EXPECT_EQ(sax.readText("<x>t</x>"), "<x@1 't'@1 >x@1");
    qxXmlSax::unregisterCustomDataInterface(first);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("y"), nullptr);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("z"), second);
    qxXmlSax::unregisterCustomDataInterface(second);
}

TEST(qxXmlSaxRead, valuesOfTheLibrarysOwnElementsAreContent)
{
    XmlEvents sax;
    const char* const document = "<qxDyn><qxObj name='n'> t</qxObj></qxDyn>";
    const char* const events = "<qxDyn@1 <qxObj@2 name=n@2 ' t'@2 >qxObj@2 >qxDyn@1";
    EXPECT_EQ(sax.readText(document), events);
    sax.useDynOnly(true);
    EXPECT_EQ(sax.readText(document), events);
}

TEST(qxXmlSaxRead, takesNothingBehindADocumentThatIsRefused)
{
    TestStream stream("<a></b>rest");
    XmlEvents sax;
    sax.readFrom(stream);
    std::string left;
    while (stream.hasData()) left += static_cast<char>(stream.read());
    EXPECT_EQ(left, "b>rest"); // from the name that was wrong
}

} // namespace
