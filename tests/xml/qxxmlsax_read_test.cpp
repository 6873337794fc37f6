// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxdict.h"
#include "qxteststream.h"
#include "qxtestsupport.h"
#include "qxxmlevents.h"

#include <functional>
#include <memory>
#include <sstream>

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
    sax.expectEvents(
        "<?xml version='1.0'?><a/> => version:1.0 <a@1 >a@1",
        "<?xml version = \"1.1\" encoding='utf-8' standalone=\"yes\" ?><\xC3\xA9/> => version:1.1 "
        "encoding:utf-8 standalone:yes <\xC3\xA9@1 >\xC3\xA9@1",
        "<?xml version='1.0' standalone='no'?>\n<a/> => version:1.0 standalone:no <a@1 >a@1");
    EXPECT_STREQ(sax.getVersion().getString(), "1.0");
    EXPECT_STREQ(sax.getEncoding().getString(), "utf-8");
    EXPECT_FALSE(sax.isStandalone());
}

TEST(qxXmlSaxRead, everyOtherEncodingThanUTF8IsOneCharacterAByte)
{
    const MessageRecorder messages;
    XmlEvents sax;
    for (const std::string name : {"ISO-8859-1", "windows-1252", "UTF8", "us-ascii", "UTF-16"}) {
        const std::string declaration = "<?xml version='1.0' encoding='" + name + "'?>";
        EXPECT_EQ(sax.readText(declaration + "<a>\xC3\xA9\xFF</a>"),
                  "version:1.0 encoding:" + name + " <a@1 '\xC3\x83\xC2\xA9\xC3\xBF'@1 >a@1");
        // The next document is UTF-8 again, also behind one that ended early.
        EXPECT_EQ(sax.readText("<a>\xC3\xA9</a>"), "<a@1 '\xC3\xA9'@1 >a@1");
        EXPECT_EQ(sax.mark(declaration + "<a>\xC3"), "4201|" + declaration + "<a>\xC3^");
    }
}

TEST(qxXmlSaxRead, marksSelectTheEncoding)
{
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char c : std::string("<?xml version='1.0' encoding='UTF-16'?><a x='1'>t</a>")) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    XmlEvents sax;
    for (const std::string& document : {little, big})
        EXPECT_EQ(sax.readText(document), "version:1.0 encoding:UTF-16 <a@1 x=1@1 't'@1 >a@1");
    sax.expectEvents("\xEF\xBB\xBF<a>\xC3\xA9</a> => <a@1 '\xC3\xA9'@1 >a@1",
                     "<a>\xEF\xBB\xBF</a> => <a@1 '\xEF\xBB\xBF'@1 >a@1"); // only at the start
}

TEST(qxXmlSaxRead, everyBitEnablesItsCalls)
{
    const auto events = [](const std::string& mask) {
        XmlEvents sax;
        sax.disableNotifyItemType(4095);
        sax.enableNotifyItemType(static_cast<qxXmlItemType>(std::stoul(mask)));
        return sax.readText("<?xml version='1.0' encoding='UTF-8' standalone='yes'?>"
                            "<a x='&lt;'>t<![CDATA[c]]><!--d--><?p e?></a>");
    };
    static_assert(QX_XML_ELEMENT == 1 && QX_XML_ELEMENT_CONTENTS == 2 && QX_XML_ATTRIBUTE == 4);
    static_assert(QX_XML_ATTRIBUTE_END == 8 && QX_XML_DECLARATION == 16 && QX_XML_CHARDATA == 32);
    static_assert(QX_XML_CDATA == 64 && QX_XML_COMMENT == 128 && QX_XML_PI == 256);
    static_assert(QX_XML_ENTITY_REFERENCE == 512 && QX_XML_CONTENTS_START == 1024 &&
                  QX_XML_CONTENTS_END == 2048);
    expectRows(events, "1 => <a@1 >a@1", "2 => contents:a{t<![CDATA[c]]><!--d--><?p e?>}@1", "4 => x=&lt;@1",
               "8 => |a@1", "16 => version:1.0 encoding:UTF-8 standalone:yes", "32 => 't'@1",
               "64 => cdata:'c'@1", "128 => --:'d'@1", "256 => ?p'e'@1", "512 => attr&:lt@1", "1024 => (a@1",
               "2048 => )a@1", "0 => ");
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
    for (qxXmlItemType type = 1; type <= 2048; type *= 2)
        EXPECT_EQ(sax.isNotifyingItemType(type), (type & 1013) != 0);
    EXPECT_TRUE(sax.isNotifyingItemType(1013));
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
                                 "<a x='&lt;'>t&gt;<![CDATA[c]]><!--d--><?p?></a>";
    XmlEvents all;
    all.enableNotifyItemType(4095);
    std::istringstream calls(all.readText(document));
    const MessageRecorder messages;
    std::string before;
    for (std::string call; calls >> call;) {
        before += (before.empty() ? "" : " ") + call;
        XmlEvents sax;
        sax.enableNotifyItemType(4095);
        sax.refused = call;
        EXPECT_EQ(sax.readText(document), before);
        EXPECT_FALSE(sax.hasError());
    }
    EXPECT_EQ(before, all.events);
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
    std::string seen;
    sax.onText = [&seen](Inside& inside) {
        seen = std::to_string(inside.getCurrentElementLevel()) + inside.getCurrentElementName().getString();
        seen += std::string(" ") + inside.getCurrentAttribute("x").getString() +
                inside.getCurrentAttribute("y").getString();
        for (unsigned int level = 0; level <= 3; ++level) {
            seen += std::string(" ") + inside.getElementName(level).getString();
            for (const char* name : {"x", "y"}) {
                if (inside.hasAttribute(level, name))
                    seen += std::string(name) + inside.getAttribute(level, name).getString();
            }
        }
        EXPECT_TRUE(inside.hasCurrentAttribute("y"));
        EXPECT_STREQ(inside.getAttribute(1, "y").getString(), "");
    };
    sax.readText("<a x='1&lt;'><c z='9'/><b x='3' y='2'>t</b></a>");
    EXPECT_EQ(seen, "2b 32  ax1&lt; bx3y2 ");
    EXPECT_EQ(sax.getCurrentElementLevel(), 0U);
    EXPECT_FALSE(sax.hasAttribute(1, "x"));
}

TEST(qxXmlSaxRead, attributeSetsAreCopies)
{
    Inside sax;
    qxXmlAttributeSet kept;
    sax.onText = [&kept](Inside& inside) { kept = inside.getAttributeSet(1); };
    sax.readText("<a x='1' y='2'>t</a>");
    ASSERT_EQ(kept.entries(), 2U);
    EXPECT_STREQ(kept.find("x")->getData().getString(), "1");
    EXPECT_STREQ(kept.find("y")->getData().getString(), "2");
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
    // What is preferred, and the start of the document.
    const auto word = [](const std::string& row) {
        Inside sax;
        sax.useBase64(row[0] == 'b');
        std::string answer;
        sax.onText = [&answer](Inside& inside) { answer = inside.useBase64() ? "b64" : "hex"; };
        sax.readText(row.substr(2) + "t</a>");
        return answer;
    };
    const MessageRecorder messages;
    expectRows(word, "b <a> => b64", "h <a> => hex", "h <a encoding='b64'> => b64",
               "b <a ENCODING='HeX'> => hex", "b <a encoding='x'> => b64",
               "b <a encoding='B64' Encoding='hex'> => hex", "b <a><b encoding='hex'/><c> => b64");
}

TEST(qxXmlSaxRead, refusesToStartAnewInsideACall)
{
    void (*const calls[])(Inside&) = {
        [](Inside& inside) { inside.read(nullptr); },
        [](Inside& inside) { inside.setAdapter(nullptr); },
        [](Inside& inside) { inside.reset(); },
        [](Inside& inside) { inside.continueParsingFrom(*std::make_unique<qxBasicParser>()); },
        [](Inside& inside) { qxBasicParser().continueParsingFrom(inside); },
    };
    for (const auto& call : calls) {
        Inside sax;
        sax.onText = call;
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
    for (const char* name : {"x", "y"}) qxXmlSax::registerCustomDataInterface(name, first);
    qxXmlSax::registerCustomDataInterface("z", second);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("x"), first);
    EXPECT_EQ(qxXmlSax::getCustomDataInterface("a"), nullptr);
    EXPECT_EQ(qxXmlSax::getObjectInterface("x"), nullptr);
    EXPECT_EQ(qxXmlSax::getDynamicTypeInterface("x"), nullptr);

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
