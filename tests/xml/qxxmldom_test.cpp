// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <functional>
#include <type_traits>

namespace
{

// A document is a reader, a value of a stream and an item, without doubt which one is meant.
template <class... Bases>
constexpr bool isEachOf = (std::is_convertible_v<qxXmlDom*, Bases*> && ...);
static_assert(isEachOf<qxReference, qxXmlItem, qxBasicParser, qxSerializeData, qxNameInterface>);
static_assert(
    std::is_same_v<decltype(std::declval<qxXmlDom&>().write(std::declval<qxSerializeAdapter*>())), void>);
static_assert(std::is_same_v<decltype(std::declval<qxXmlDom&>().write(std::declval<qxXmlSax*>())), void>);
static_assert(
    std::is_same_v<decltype(std::declval<qxXmlDom&>().read(std::declval<qxSerializeAdapter*>())), void>);
static_assert(std::is_same_v<decltype(std::declval<qxXmlDom&>().getDataSize(nullptr)), unsigned int>);

TEST(qxXmlDom, isAnItemByType)
{
    const qxXmlDom document;
    EXPECT_STREQ(document.getTypeName(), "qxXmlDom");
    EXPECT_TRUE(document.isOfType(qxXmlItem::getClassType()));
    EXPECT_TRUE(document.isExactType(qxXmlDom::getClassType()));
    const qxXmlSax& reader = document;
    EXPECT_EQ(reader.getType(), qxXmlDom::getClassType());
}

TEST(qxXmlDom, buildsATreeWithTheDefaultSwitches)
{
    expectRows(
        treeOf, "<a/> => (a)", "<a x='1' y=\"2\"><b/><b><c/></b></a> => (a x=\"1\" y=\"2\"(b b(c)))",
        "<a> x &amp; y </a> => (a(\"x&y\"))", "<a>\n\t<b/>\r\n</a> => (a(b))",
        "<a> t  u\n</a> => (a(\"t  u\"))", "<a>&lt;</a> => (a(\"<\"))",
        "<a>&lt;b&gt;&quot;&apos;&amp;</a> => (a(\"<b>\"'&\"))", "<a>&#65;&#x42;&#32;c</a> => (a(\"AB c\"))",
        "<a>&foo;x&bar;</a> => (a(&foo; \"x\" &bar;))", "<a>x<!-- c -->y</a> => (a(\"x\" !-- c -- \"y\"))",
        "<a><![CDATA[ <x> ]]></a> => (a(![ <x> ]))", "<a><![CDATA[]]><!----></a> => (a(![] !----))",
        "<?p d?><a/><!--e--> => (?p d a !--e--)", "<!DOCTYPE a [<!ENTITY e 'v'>]><a>&e;</a> => (a(&e;))",
        "<a x='&lt;&amp;lt;&#65;&foo;&amp;'/> => (a x=\"<&lt;A&foo;&\")",
        "<a x='100%d'>%s</a> => (a x=\"100%d\"(\"%s\"))",
        "<a xml:space='preserve'> </a> => (a xml:space=\"preserve\")");
}

TEST(qxXmlDom, keepsWhiteSpaceWhenToldTo)
{
    qxXmlDom document;
    document.setSkipWhiteSpaceCharData(false);
    EXPECT_EQ(readText(document, "<a> x &amp; y <b> </b>\n</a>"), "");
    EXPECT_EQ(dump(document), "(a(\" x & y \" b(\" \") \"\n\"))");

    EXPECT_EQ(written(document), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
                                 "<a> x &amp; y <b> </b>\n</a>");
    EXPECT_FALSE(document.isPlainOutput());
}

TEST(qxXmlDom, leavesReferencesWhenToldTo)
{
    qxXmlDom document;
    document.setMergeStandardReferences(false);
    EXPECT_EQ(readText(document, "<a>x&amp;y&#65;&#x20;</a>"), "");
    EXPECT_EQ(dump(document), "(a(\"x\" &amp; \"y\" &#65; &#x20;))");
    EXPECT_EQ(writtenPlain(document), "<a>x&amp;y&#65;&#x20;</a>");
}

TEST(qxXmlDom, writesAnIndentedDocument)
{
    qxXmlDom document;
    readText(document,
             "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?><a x='1'><b>t</b><c/></a>");
    EXPECT_EQ(written(document), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?>"
                                 "\n<a x=\"1\">\n\t<b>t</b>\n\t<c/>\n</a>");
}

/// An element "a" with these texts, written and read again with white space kept.
class Survivor : public qxXmlDom
{
public:
    explicit Survivor(std::initializer_list<qxString> texts, const qxString& value = "",
                      const char* encoding = "UTF-8")
    {
        qxXmlDom document;
        document.setSkipWhiteSpaceCharData(false);
        document.setEncoding(encoding);
        document.addChild(new qxXmlElement("a"));
        static_cast<qxXmlElement*>(document.getFirstChild())->setAttributeText("x", value);
        for (const qxString& text : texts) document.addItem("a", new qxXmlCharData(text));
        setSkipWhiteSpaceCharData(false);
        EXPECT_EQ(readText(*this, written(document)), "");
    }
};

TEST(qxXmlDom, everyTextAndAttributeValueSurvives)
{
    for (const char* value :
         {"&lt;", "&amp;lt;", "<&>\"'", "&", "&#65;", "&#32;", "&foo;", "&amp", " a\tb\r\nc ", "]]>",
          "function:f", "'function:'function:", "100%d", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", ""}) {
        SCOPED_TRACE(value);
        for (const char* encoding : {"UTF-8", "utf-16", "ISO-8859-1"}) {
            const Survivor document({value}, value, encoding);
            EXPECT_STREQ(document.asString().getString(), value);
            EXPECT_STREQ(static_cast<qxXmlElement*>(document.getFirstChild())->getAttribute("x").getString(),
                         value);
        }
    }
}

TEST(qxXmlDom, textsThatAreTooLongOrMeanSomethingTogetherSurvive)
{
    EXPECT_STREQ(Survivor({"func", "tion:", "function:f"}).asString().getString(), "function:function:f");

    const qxString part = qxString::spaces(30000, 'x');
    const Survivor document({part, part, part, part, part});
    unsigned int length = 0;
    for (qxXmlItem* item = document.getFirstChild()->getFirstChild(); item; item = item->getNextSibling())
        length += item->asString().length();
    EXPECT_EQ(length, 150000U);
}

TEST(qxXmlDom, writesWithAnotherWriter)
{
    class Wrapper : public qxXmlSax
    {
    public:
        explicit Wrapper(qxXmlDom& tree) : document(tree) {}
        unsigned char onWrite() override
        {
            writeElementStart("wrap");
            document.write(this);
            writeElementEnd();
            return 1;
        }
        qxXmlDom& document;
    };
    qxXmlDom document;
    document.setSkipWhiteSpaceCharData(false);
    readText(document, "<a> <b/></a>");
    Wrapper wrapper(document);
    wrapper.setEncoding("none");
    EXPECT_EQ(written(wrapper), "\n<wrap><a> <b/></a>\n</wrap>");
}

TEST(qxXmlDom, aRefusedWriteHandsOnWhatCameBefore)
{
    qxXmlDom document;
    document.setEncoding("none");
    document.setPlainOutput(true);
    readText(document, "<a><b/></a>");
    document.addItem("a", new qxXmlComment("--"));
    TextSink sink;
    EXPECT_EQ(errorText<qxParserException>([&] { document.write(&sink); }), "Comment is malformed");
    EXPECT_EQ(sink.text, "<a><b/>");
    EXPECT_TRUE(document.hasError());
}

TEST(qxXmlDom, outputGoesOutInBlocks)
{
    qxXmlDom document;
    document.addChild(new qxXmlElement("a"));
    for (int i = 0; i < 10000; ++i) document.addItem("a", new qxXmlElement("element"));
    TextSink sink;
    document.write(&sink);
    EXPECT_GT(sink.text.size(), 100000U);
    EXPECT_LT(sink.blocks, 10U);
}

TEST(qxXmlDom, aFailedReadKeepsWhatCameBefore)
{
    qxXmlDom document;
    MessageRecorder messages;
    EXPECT_NE(readText(document, "<a x='1'>t&amp;u<b y='2'>v</c></a>"), "");
    EXPECT_EQ(dump(document), "(a x=\"1\"(\"t&u\" b y=\"2\"(\"v\")))");
    EXPECT_TRUE(document.hasError());
    EXPECT_EQ(messages.messages().size(), 1U);

    EXPECT_EQ(readText(document, "<z/>"), "");
    EXPECT_EQ(dump(document), "(z)");
    EXPECT_FALSE(document.hasError());
    EXPECT_EQ(document.getRef(), 0U); // it stands on the stack
}

/// Does something in each callback that a row chooses.
class Watcher : public qxXmlDom
{
public:
    unsigned char onElementStart(const qxString& name, unsigned int level) override
    {
        qxXmlDom::onElementStart(name, level);
        if (atStart) atStart(*this, name);
        return 1;
    }
    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int level) override
    {
        qxXmlDom::onAttribute(name, value, level);
        if (atAttribute) atAttribute(*this);
        return 1;
    }

    std::function<void(Watcher&, const qxString&)> atStart;
    std::function<void(Watcher&)> atAttribute;
};

TEST(qxXmlDom, callbacksSeeAndMayChangeWhatWasBuilt)
{
    Watcher document;
    std::string seen;
    document.atAttribute = [&seen](Watcher& tree) {
        seen += dump(tree) + " ";
        qxXmlElement* const element = static_cast<qxXmlElement*>(tree.getFirstChild());
        element->setAttributeText("own", "o");
        element->removeAttribute("x");
        element->addChild(new qxXmlCharData("more"));
    };
    readText(document, "<a x='1' y='2'>text<b z='3'/></a>");
    EXPECT_EQ(seen, "(a x=\"1\") (a own=\"o\" y=\"2\"(\"more\")) "
                    "(a own=\"o\" y=\"2\"(\"more\" \"more\" \"text\" b z=\"3\")) ");
    EXPECT_EQ(dump(document), "(a own=\"o\" y=\"2\"(\"moremoretext\" b z=\"3\" \"more\"))");
}

TEST(qxXmlDom, itselfIsBusyInsideItsCallbacks)
{
    Watcher document;
    std::string errors;
    document.atStart = [&errors](Watcher& tree, const qxString&) {
        std::string text = "<z/>";
        qxSerializeAdapterMemory other(text.data(), 4);
        tree.read(&other);
        errors += tree.getErrorText().getString();
        tree.setErrorText("");
    };
    EXPECT_EQ(readText(document, "<a><b/></a>"), "");
    EXPECT_EQ(errors, "Parser is busy readingParser is busy reading");
    EXPECT_EQ(dump(document), "(a(b))");
}

TEST(qxXmlDom, itemsOfLevelsWithoutAnElementGoToTheNextLevelBelow)
{
    qxXmlDom document;
    document.disableNotifyItemType(QX_XML_ELEMENT);
    readText(document, "<a x='1'>t<b>u</b></a>");
    EXPECT_EQ(dump(document), "(\"tu\")");

    Watcher partly;
    partly.atStart = [](Watcher& tree, const qxString& name) {
        if (name == "b") tree.disableNotifyItemType(QX_XML_ELEMENT);
    };
    readText(partly, "<a><b>t</b><!--c--><d><e>u</e></d></a>");
    EXPECT_EQ(dump(partly), "(a(b(\"t\") !--c-- \"u\"))");
}

TEST(qxXmlDom, eventsMayComeFromElsewhere)
{
    qxXmlDom document;
    document.onElementStart("a", 1);
    document.onAttribute("x", "&lt;", 1);
    document.onAttribute("x", "2", 1);
    document.onAttribute("y", "3", 2);
    document.onElementStart("b", 2);
    document.onCharData(" t ", 2);
    document.onElementEnd("b", 2);
    document.onElementStart("c", 7);
    document.onCDATA("d", 9);
    document.onEntityReference("e", 1, 1);
    document.onEntityReference("", 1, 0);
    document.onElementStart("f", 0);
    EXPECT_EQ(dump(document), "(a x=\"2\"(b(\"t\") c(![d])) f)");
}

TEST(qxXmlDom, customDataTakesThePlaceOfItsElement)
{
    qxXmlDom document;
    document.onElementStart("a", 1);
    for (int i = 0; i < 2; ++i) {
        document.onElementStart("c", 2);
        document.onAttribute("x", "1", 2);
        document.onCustomData(new TestObject(i), "c", 2);
        document.onElementEnd("c", 2);
    }
    EXPECT_EQ(dump(document), "(a(c x=\"1\" c x=\"1\"))");
    auto* const item = dynamic_cast<qxXmlCustomData*>(document.findItem("a/c[2]"));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(static_cast<TestObject*>(item->getData())->value, 1);
    EXPECT_EQ(writtenPlain(document), "<a><c x=\"1\"/><c x=\"1\"/></a>");
}

TEST(qxXmlDom, aCloneHasTheSettings)
{
    qxXmlDom document;
    readText(document, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"no\"?><a>\xE9</a>");
    document.setSkipWhiteSpaceCharData(false);
    document.setWriteIncludedXml(true);
    document.disableNotifyItemType(QX_XML_COMMENT);
    document.setName("name");

    const qxRefPointer<qxXmlDom> copy(document.clone());

    EXPECT_FALSE(copy->getSkipWhiteSpaceCharData());
    EXPECT_TRUE(copy->getWriteIncludedXml());
    EXPECT_FALSE(copy->isNotifyingItemType(QX_XML_COMMENT));
    EXPECT_STREQ(copy->getName().getString(), "name");
    EXPECT_EQ(written(*copy), written(document));
}

TEST(qxXmlDom, sharesNamesAmongItems)
{
    qxXmlDom document;
    std::string text = "<r>";
    for (int i = 0; i < 2000; ++i)
        text += "<element" + std::to_string(i % 3) + " a" + std::to_string(i) + "='v'/>";
    ASSERT_EQ(readText(document, text + "</r>"), "");
    document.findItem("r/element1")->setName("other");
    EXPECT_EQ(document.findItems("r/element1").entries(), 666U);
    EXPECT_EQ(document.findItems("r/other").entries(), 1U);
}

TEST(qxXmlDom, manyAttributesAreFoundOnce)
{
    std::string text = "<a";
    for (int i = 0; i < 5000; ++i) text += " n" + std::to_string(i) + "='" + std::to_string(i) + "'";
    qxXmlDom document;
    ASSERT_EQ(readText(document, text + "/>"), "");
    qxXmlElement* const element = static_cast<qxXmlElement*>(document.getFirstChild());
    EXPECT_EQ(element->attributeEntries(), 5000U);
    EXPECT_STREQ(element->getAttribute("n4321").getString(), "4321");

    document.onElementStart("b", 1);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 30; ++i)
            document.onAttribute(qxString::str("n%d", i), qxString::str("%d", i * round), 1);
    }
    element->removeAttributes();
    qxXmlElement* const second = static_cast<qxXmlElement*>(document.getLastChild());
    EXPECT_EQ(second->attributeEntries(), 30U);
    EXPECT_STREQ(second->getAttribute("n29").getString(), "29");
}

// Nothing on the way may need stack in proportion to the depth.
TEST(qxXmlDom, aMillionLevelsLiveAndDie)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr unsigned int LEVELS = 200000;
#else
    constexpr unsigned int LEVELS = 1000000;
#endif
    std::string text;
    for (unsigned int i = 0; i < LEVELS; ++i) text += "<a>";
    text += "t";
    for (unsigned int i = 0; i < LEVELS; ++i) text += "</a>";
    qxXmlDom document;
    document.setSkipWhiteSpaceCharData(false);
    ASSERT_EQ(readText(document, text), "");

    const qxRefPointer<qxXmlDom> copy(document.clone());
    copy->setEncoding("none");
    EXPECT_TRUE(written(*copy) == text);
    copy->mergeStandardReferencesAndText();
    copy->resetAllChildIterators();
    EXPECT_STREQ(copy->asString().getString(), "t");
    unsigned int depth = 0;
    for (const qxXmlItem* item = copy->findItem("//<char_data>"); item->getParent(); item = item->getParent())
        ++depth;
    EXPECT_EQ(depth, LEVELS + 1);
    copy->removeChildren();
    EXPECT_EQ(copy->childEntries(), 0U);
}

// A plain document takes elements and text from the reader by a way of its own; others get the calls.
TEST(qxXmlDom, readsThePlainWayWhatItReadsByCalls)
{
    class Called final : public qxXmlDom
    {};
    for (const char* text :
         {"<a x='1' y='&lt;&#65;'> t <b z='function:q'/>&amp; u<c>function: v </c> </a>",
          "<a x='1' y='2' x='3'/>", "<a x='1'><b y='2' z=></a>", "<a x='1'>t<b y='2'>u</c></a>",
          "<a x='1'>t</a x='2'>", "<a x='1'\xC3></a>", "<a"}) {
        SCOPED_TRACE(text);
        qxXmlDom plain;
        Called called;
        const std::string error = readText(plain, text);
        EXPECT_EQ(readText(called, text), error);
        EXPECT_EQ(dump(called), dump(plain));
        EXPECT_TRUE(plain.getFirstChild());
    }
}

} // namespace
