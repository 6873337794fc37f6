// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "dynamic/qxdynamictest.h"
#include "qxxmlevents.h"
#include "qxxmlhandlers.h"
#include "qxxmltesttree.h"

#include <filesystem>
#include <fstream>
#include <functional>

namespace
{

/// Writes what a function says.
std::string output(std::function<void(qxXmlSax&)> body, bool usesBase64 = true, bool isDynOnly = false)
{
    class Writer final : public qxXmlSax
    {
    public:
        unsigned char onWrite() override
        {
            onWriting(*this);
            return 1;
        }
        std::function<void(qxXmlSax&)> onWriting;
    };
    Writer writer;
    writer.onWriting = std::move(body);
    writer.useBase64(usesBase64);
    writer.useDynOnly(isDynOnly);
    return writtenPlain(writer);
}

std::string textOf(qxSerializeAdapter& content)
{
    return readAll(content);
}

/// Handles all three; refuses content "no".
class Handler final : public qxXmlCustomDataInterface,
                      public qxXmlDynamicTypeInterface,
                      public qxXmlObjectInterface
{
public:
    class Object final : public qxObject
    {
    public:
        explicit Object(std::string text) : value(std::move(text)) {}
        Object* clone() const override { return new Object(*this); }
        const std::string value;
    };

    Handler()
    {
        qxXmlSax::registerCustomDataInterface("own", this);
        qxXmlSax::registerDynamicTypeInterface("mine", this);
        qxXmlSax::registerObjectInterface("qxObj", this);
    }
    ~Handler() override
    {
        qxXmlSax::unregisterCustomDataInterface(this);
        qxXmlSax::unregisterDynamicTypeInterface(this);
        qxXmlSax::unregisterObjectInterface(this);
    }

    qxReference* readCustomData(const qxXmlSax& reader, qxSerializeAdapter& content) override
    {
        return readObject(reader, content);
    }
    void writeCustomData(qxXmlSax& writer, qxReference& data) override
    {
        writeObject(writer, static_cast<Object&>(data));
    }
    bool readDynamicType(const qxXmlSax&, qxSerializeAdapter& content, qxDynamicType& value) override
    {
        const std::string text = textOf(content);
        value = qxDynamicType(text.c_str());
        return text != "no";
    }
    bool writeDynamicType(qxXmlSax& writer, const qxDynamicType& value) override
    {
        if (!value.is("str")) return false;
        writer.writeCharData(value.getString());
        return true;
    }
    qxObject* readObject(const qxXmlSax& reader, qxSerializeAdapter& content) override
    {
        const std::string text = textOf(content);
        ++offers;
        return text == "no" ? nullptr
                            : new Object(reader.getCurrentAttribute("a").getString() + ("|" + text));
    }
    void writeObject(qxXmlSax& writer, qxObject& object) override
    {
        writer.writeAttribute("a", "1");
        writer.writeElementStart("inner");
        writer.writeGenericString(""); // the element stays open
        writer.writeCharData(static_cast<Object&>(object).value.c_str());
    }

    int offers = 0;
};

/// Writes down objects too.
class Events final : public XmlEvents
{
public:
    unsigned char onObject(qxObject* object, const qxString& name, unsigned int) override
    {
        add("obj:" + std::string(name.getString()) + "{" + static_cast<Handler::Object*>(object)->value +
            "}");
        return 1;
    }
    unsigned char onCustomData(qxReference* data, const qxString& name, unsigned int) override
    {
        add("own:" + std::string(name.getString()) + "{" + static_cast<Handler::Object*>(data)->value + "}");
        return 1;
    }
    qxString onFunction(const qxString& argument, unsigned int) override
    {
        add("f(" + std::string(argument.getString()) + ")");
        return argument;
    }
};

TEST(qxXmlSaxValues, areGivenInPlaceOfTheContent)
{
    XmlEvents sax;
    sax.disableNotifyItemType(QX_XML_ATTRIBUTE);
    sax.expectEvents(
        "<qxDyn type='num'>1</qxDyn> => <qxDyn@1 dyn:qxDyn{1}@1 >qxDyn@1",
        "<a>x<qxDyn name='n' type='num'>1</qxDyn>y</a> => <a@1 'x'@1 <qxDyn@2 dyn:n{1}@2 >qxDyn@2 'y'@1 >a@1",
        "<qxDyn name='&lt;' type='str'/> => <qxDyn@1 attr&:lt@1 dyn:<{\"\"}@1 >qxDyn@1",
        "<a><qxDyn type='array'><value type='num'>1</value></qxDyn><b/></a> => <a@1 <qxDyn@2 "
        "dyn:qxDyn{[1]}@2 "
        ">qxDyn@2 <b@2 >b@2 >a@1");
}

TEST(qxXmlSaxValues, whatIsNoneIsReadAsContent)
{
    XmlEvents sax;
    sax.disableNotifyItemType(QX_XML_ATTRIBUTE);
    sax.expectEvents(
        "<qxDyn>a<b/></qxDyn> => <qxDyn@1 'a'@1 <b@2 >b@2 >qxDyn@1", "<qxDyn/> => <qxDyn@1 >qxDyn@1",
        "<qxDyn type='num'>a&lt;<!--c--></qxDyn> => <qxDyn@1 'a'@1 &lt@1 --:'c'@1 >qxDyn@1",
        "<qxDyn type='array'><value type='num'>1</value><b>t</b></qxDyn> => <qxDyn@1 <value@2 '1'@2 >value@2 "
        "<b@2 't'@2 "
        ">b@2 >qxDyn@1",
        "<qxDyn type='array'> <value type='array'> => <qxDyn@1 ' '@1 <value@2 !4201@1:42",
        "<qxDyn type='num'>1</a> => <qxDyn@1 dyn:qxDyn{1}@1 !Expected end tag 'qxDyn' but got 'a'@1:22",
        "<a type='num'>1</a> => <a@1 '1'@1 >a@1", "<qxObj>1</qxObj> => <qxObj@1 '1'@1 >qxObj@1");
}

TEST(qxXmlSaxValues, mayBeAllElements)
{
    XmlEvents sax;
    sax.useDynOnly(true);
    sax.disableNotifyItemType(QX_XML_ATTRIBUTE);
    sax.expectEvents(
        "<s><a type='num'>1</a><b type='str'/><c>2</c></s> => <s@1 <a@2 dyn:a{1}@2 >a@2 <b@2 dyn:b{\"\"}@2 "
        ">b@2 "
        "<c@2 '2'@2 >c@2 >s@1",
        "<s type='array'><value type='num'>1</value><value/></s> => <s@1 <value@2 dyn:value{1}@2 >value@2 "
        "<value@2 >value@2 >s@1");
    const std::string refused = "<a@1 dyn:a{1}@1";
    sax.refused = "dyn:a{1}@1";
    EXPECT_EQ(sax.readText("<a type='num'>1</a>"), refused);
    EXPECT_FALSE(sax.hasError());
}

TEST(qxXmlSaxValues, functionsAreNotCalledForThem)
{
    Events sax;
    sax.disableNotifyItemType(QX_XML_ATTRIBUTE);
    sax.expectEvents(
        "<qxDyn type='cont'><value name='function:a' type='str'>function:b</value></qxDyn> => <qxDyn@1 "
        "dyn:qxDyn{{\"function:a\":\"function:b\"}}@1 >qxDyn@1",
        "<qxDyn type='array'><b x='function:c'/></qxDyn> => <qxDyn@1 <b@2 f(c) >b@2 >qxDyn@1");
}

TEST(qxXmlSaxValues, rawContentsAreThereToo)
{
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    sax.enableNotifyItemType(QX_XML_ELEMENT_CONTENTS);
    const std::string items(100, ' ');
    EXPECT_EQ(sax.readText("<a><qxDyn type='array'>" + items + "</qxDyn></a>"),
              "dyn:qxDyn{[]}@2 contents:qxDyn{" + items + "}@2 contents:a{<qxDyn type='array'>" + items +
                  "</qxDyn>}@1");
}

TEST(qxXmlSaxValues, mayBeLongerThanWhatCanBeReadTwice)
{
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    sax.setMaxBufferSize(1000);
    std::string items;
    for (int i = 0; i < 20000; ++i) items += "<value type='num'>1</value>";
    const std::string start = "<qxDyn type='array'>" + items;
    EXPECT_EQ(sax.readText(start + "</qxDyn>").size(), strlen("dyn:qxDyn{[]}@1") + 39999);
    EXPECT_EQ(sax.readText(start + "<b/></qxDyn>"),
              "!A value of a dynamic type is malformed: expected an element \"value\" or the end tag@1:" +
                  std::to_string(start.size() + 1));
    EXPECT_EQ(sax.readText("<qxDyn type='array'>" + std::string(100, ' ') + "<b/></qxDyn>"), "");
}

TEST(qxXmlSaxValues, hostileElementsAreNotTriedAgainAndAgain)
{
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "<value type='array'>";
    text += "x";
    for (int i = 0; i < 20000; ++i) text += "</value>";
    XmlEvents sax;
    sax.disableNotifyItemType(4095 & ~QX_XML_CHARDATA);
    sax.useDynOnly(true);
    EXPECT_EQ(sax.readText(text), "'x'@20000");
}

TEST(qxXmlSaxValues, handlersGetTheContentAsItStands)
{
    Handler handler;
    Events sax;
    sax.disableNotifyItemType(QX_XML_ATTRIBUTE);
    sax.expectEvents("<a><own a='1'>x<b y='2'/>&lt;\xC3\xA9</own></a> => <a@1 <own@2 own:own{1|x<b "
                     "y='2'/>&lt;\xC3\xA9} >own@2 >a@1",
                     "<own/> => <own@1 own:own{|} >own@1", "<own></own> => <own@1 own:own{|} >own@1",
                     "<own>no</own> => <own@1 'no'@1 >own@1", "<own>x => <own@1 'x'@1 !4201@1:7",
                     "<own><own>x</own></own> => <own@1 own:own{|<own>x</own>} >own@1",
                     "<qxObj name='n'>x</qxObj> => <qxObj@1 obj:n{|x} >qxObj@1",
                     "<qxDyn name='mine'>x</qxDyn> => <qxDyn@1 dyn:mine{\"x\"}@1 >qxDyn@1",
                     "<qxDyn name='mine' type='num'>2</qxDyn> => <qxDyn@1 dyn:mine{\"2\"}@1 >qxDyn@1",
                     "<qxDyn name='mine' type='str'>no</qxDyn> => <qxDyn@1 dyn:mine{\"no\"}@1 >qxDyn@1",
                     "<qxDyn name='other' type='num'>2</qxDyn> => <qxDyn@1 dyn:other{2}@1 >qxDyn@1");
    const std::string longText(200000, 'x');
    EXPECT_EQ(sax.readText("<own>" + longText + "</own>"), "<own@1 own:own{|" + longText + "} >own@1");
    sax.setMaxBufferSize(100000);
    EXPECT_EQ(sax.readText("<own>" + longText + "</own>"), "<own@1 !Too large 'CharData' is notified@1:6");
}

TEST(qxXmlSaxValues, handlersAreOfferedElementsInEachOtherAFewTimes)
{
    class Refuser final : public qxXmlCustomDataInterface
    {
    public:
        qxReference* readCustomData(const qxXmlSax&, qxSerializeAdapter&) override
        {
            ++offers;
            return nullptr;
        }
        void writeCustomData(qxXmlSax&, qxReference&) override {}
        int offers = 0;
    };
    Refuser refuser;
    qxXmlSax::registerCustomDataInterface("c", &refuser);
    std::string text = "<a><c><d/></c>";
    for (int i = 0; i < 20000; ++i) text += "<c>";
    for (int i = 0; i < 20000; ++i) text += "</c>";
    XmlEvents sax;
    sax.disableNotifyItemType(4095);
    EXPECT_EQ(sax.readText(text + "<c></c></a>"), "");
    EXPECT_EQ(refuser.offers, 1 + 16 + 1);
    qxXmlSax::unregisterCustomDataInterface(&refuser);
}

TEST(qxXmlSaxValues, areWrittenAsElements)
{
    const qxDynamicType value(1.5);
    const unsigned char bytes[] = {0xFF, 0x80};
    EXPECT_EQ(
        output([&](qxXmlSax& out) {
            out.writeElementStart("a");
            out.writeDynamicType(value);
            out.writeDynamicType(value, "100%");
            out.writeDynamicType(value, "n%d", 7);
            out.writeDynamicType(value, "a\tb");
            out.writeElementEnd();
        }),
        "<a><qxDyn type=\"num\">1.5</qxDyn><qxDyn name=\"100%\" type=\"num\">1.5</qxDyn>"
        "<qxDyn name=\"n7\" type=\"num\">1.5</qxDyn><qxDyn name64=\"YQli\" type=\"num\">1.5</qxDyn></a>");
    EXPECT_EQ(
        output([&](qxXmlSax& out) { out.writeDynamicType(qxDynamicTypeCustom("c", bytes, 2), "n"); }, false),
        "<qxDyn name=\"n\" type=\"c\" encoding=\"hex\">ff80</qxDyn>");
    const auto both = [&](qxXmlSax& out) {
        out.writeDynamicType(value, "n");
        out.writeDynamicType(value, "1");
    };
    EXPECT_EQ(output(both, true, true), "<n type=\"num\">1.5</n><qxDyn name=\"1\" type=\"num\">1.5</qxDyn>");
}

TEST(qxXmlSaxValues, handlersWriteTheirOwn)
{
    const qxRefPointer<Handler::Object> object(new Handler::Object("x"));
    const MessageRecorder messages;
    const auto all = [&](qxXmlSax& out) {
        out.writeDynamicType("t", "mine");
        out.writeDynamicType(1, "mine");
        out.writeObject(object, "n");
        out.writeCustomData("own", object);
        out.writeElementStart("own");
        out.writeCustomData("own", object, 1);
        out.writeElementEnd();
    };
    {
        const Handler handler;
        EXPECT_EQ(output(all), "<qxDyn name=\"mine\">t</qxDyn><qxDyn name=\"mine\" type=\"num\">1</qxDyn>"
                               "<qxObj name=\"n\" a=\"1\"><inner>x</inner></qxObj>"
                               "<own a=\"1\"><inner>x</inner></own><own a=\"1\"><inner>x</inner></own>");
    }
    EXPECT_EQ(messages.texts(), std::vector<std::string>{});
    EXPECT_EQ(output(all),
              "<qxDyn name=\"mine\" type=\"str\">t</qxDyn><qxDyn name=\"mine\" type=\"num\">1</qxDyn>"
              "<qxObj name=\"n\"/><own/><own/>");
    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"No interface is registered for the object 'n'",
                                        "No interface is registered for the custom data 'own'",
                                        "No interface is registered for the custom data 'own'"}));
}

TEST(qxXmlDomValues, standInTheTreeAsItems)
{
    const Handler handler;
    const std::string text =
        "<a><qxDyn name=\"d\" type=\"num\">1.5</qxDyn><own x=\"1\" a=\"1\"><inner>|t</inner></own>"
        "<qxObj name=\"o\" a=\"1\"><inner>|t</inner></qxObj></a>";
    qxXmlDom document;
    ASSERT_EQ(
        readText(document,
                 "<a><qxDyn name='d' type='num'>1.5</qxDyn><own x='1'>t</own><qxObj name='o'>t</qxObj></a>"),
        "");
    EXPECT_EQ(dump(document), "(a(d own x=\"1\" o))");
    EXPECT_EQ(writtenPlain(document), text);
    const qxRefPointer<qxXmlDom> copy(document.clone());
    EXPECT_EQ(writtenPlain(*copy), text);

    auto* const value = dynamic_cast<qxXmlDynamicType*>(copy->findItem("a/d"));
    auto* const object = dynamic_cast<qxXmlObject*>(copy->findItem("a/o"));
    ASSERT_TRUE(value && object);
    EXPECT_EQ(value->getDynamicType(), qxDynamicType(1.5));
    EXPECT_NE(object->getObject(), static_cast<qxXmlObject*>(document.findItem("a/o"))->getObject());
    value->setDynamicType("<x>");
    EXPECT_STREQ(copy->asString(), "<x>");
    EXPECT_STREQ(value->asString(QX_XML_STRING_ALL), "<qxDyn name=\"d\" type=\"str\">&lt;x&gt;</qxDyn>");
    EXPECT_TRUE(object->releaseRefs());
    EXPECT_EQ(object->getObject(), nullptr);
}

TEST(qxXmlDomValues, followTheSettingsOfTheDocument)
{
    qxXmlDom document;
    document.useDynOnly(true);
    document.useBase64(false);
    const std::string text =
        "<a>\n\t<b type=\"own\" encoding=\"hex\">ff</b>\n\t<c type=\"array\">\n\t\t<value type=\"void\"/>"
        "\n\t</c>\n</a>";
    ASSERT_EQ(readText(document, text), "");
    EXPECT_TRUE(dynamic_cast<qxXmlDynamicType*>(document.findItem("a/c")));
    const qxRefPointer<qxXmlDom> copy(document.clone());
    copy->setEncoding("none");
    EXPECT_EQ(written(*copy), "\n" + text);
    copy->setSkipWhiteSpaceCharData(false);
    EXPECT_EQ(written(*copy),
              "<a><b type=\"own\" encoding=\"hex\">ff</b><c type=\"array\"><value type=\"void\"/></c></a>");
}

TEST(qxXmlDomValues, areAsTheDocumentationShowsThem)
{
    const auto home = std::filesystem::path(QX_TEST_DATA).parent_path().parent_path();
    std::ifstream file(home / "docs/xml-values.md");
    const std::string page((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::size_t begin = page.find("```xml\n") + 7;
    const std::string example = page.substr(begin, page.find("\n```", begin) - begin);

    const qxDynamicType path[] = {
        {},
        qxDynamicTypeError("it broke"),
        qxDynamicTypeCustom("color", reinterpret_cast<const unsigned char*>("\xFF\x80"), 3)};
    const qxString names[] = {"zoom", "frames", "label", "id", "seen", "path"};
    const qxDynamicType values[] = {0.1,
                                    qxDynamicTypeInt64(9007199254740993),
                                    "left < right",
                                    qxGUID("{00112233-4455-6677-8899-AABBCCDDEEFF}"),
                                    qxDynamicTypeTimeTagged(qxVec3{1.5F, -2.0F, 0.25F}, 12.5),
                                    qxDynamicTypeArray(path, std::size(path))};
    const qxDynamicTypeContainer camera(names, values, std::size(values));
    qxXmlDom document;
    ASSERT_EQ(readText(document, example), "");
    auto* const item = dynamic_cast<qxXmlDynamicType*>(document.findItem("camera"));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->getDynamicType(), camera);
    document.setEncoding("none");
    EXPECT_EQ(written(document), "\n" + example);
}

} // namespace
