// SPDX-License-Identifier: see LICENSE

#include "qxxmlitem.h"

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <type_traits>

namespace
{

typedef qxRefPointer<qxXmlItem> Holder;

/// An element with children of these names.
Holder family(std::initializer_list<const char*> names)
{
    Holder parent(new qxXmlElement("p"));
    for (const char* name : names) parent->addChild(new qxXmlElement(name));
    return parent;
}

/// The names that the cursor gives from where it stands.
std::string restOf(qxXmlItem& item)
{
    std::string names;
    while (qxXmlItem* child = item.getNextChild()) names += child->getName().getString();
    return names;
}

TEST(qxXmlItem, keepsChildrenInOrder)
{
    const Holder parent = family({"a", "b", "c"});

    EXPECT_EQ(dump(*parent), "p(a b c)");
    EXPECT_EQ(parent->childEntries(), 3U);
    EXPECT_EQ(parent->getFirstChild()->getParent(), parent.get());
    EXPECT_EQ(parent->getLastChild()->getNextSibling(), nullptr);

    qxXmlItem* const middle = parent->findItem("b");
    EXPECT_TRUE(parent->removeChild(middle));
    EXPECT_EQ(dump(*parent), "p(a c)");
    EXPECT_TRUE(parent->removeChild(parent->getLastChild()));
    EXPECT_TRUE(parent->removeChild(parent->getFirstChild()));
    EXPECT_EQ(parent->childEntries(), 0U);
    EXPECT_EQ(parent->getFirstChild(), nullptr);
}

TEST(qxXmlItem, aChildThatLeavesForgetsItsParent)
{
    const Holder removed(new qxXmlElement("a"));
    const Holder cleared(new qxXmlElement("b"));
    const Holder orphan = family({"c"});
    {
        const Holder parent(new qxXmlElement("p"));
        for (const Holder* child : {&removed, &cleared, &orphan}) parent->addChild(child->get());
        parent->removeChild(removed);
        EXPECT_FALSE(parent->removeChild(removed));
        EXPECT_EQ(removed->getParent(), nullptr);
        EXPECT_EQ(cleared->getRef(), 2U);
        parent->removeChild(cleared);
    }
    for (const Holder* child : {&removed, &cleared, &orphan}) {
        EXPECT_EQ((*child)->getParent(), nullptr);
        EXPECT_EQ((*child)->getNextSibling(), nullptr);
        EXPECT_EQ((*child)->getRef(), 1U);
    }
    EXPECT_EQ(dump(*orphan), "p(c)");
}

TEST(qxXmlItem, aChildOfAnotherParentMoves)
{
    const Holder from = family({"a", "b"});
    const Holder to = family({"c"});

    EXPECT_TRUE(to->addChild(from->getFirstChild()));
    EXPECT_EQ(dump(*from), "p(b)");
    EXPECT_EQ(dump(*to), "p(c a)");
    EXPECT_TRUE(to->addChild(to->getFirstChild()));
    EXPECT_EQ(dump(*to), "p(a c)");
}

TEST(qxXmlItem, refusesWhatCanNotBeAChild)
{
    const Holder top = family({"a"});
    qxXmlItem* const below = top->getFirstChild();
    below->addChild(new qxXmlElement("b"));
    MessageRecorder messages;

    EXPECT_FALSE(top->addChild(nullptr));
    EXPECT_FALSE(top->addChild(top));
    EXPECT_FALSE(below->getFirstChild()->addChild(top));
    EXPECT_EQ(dump(*top), "p(a(b))");
    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"Can not add a null item to an XML item",
                                        "Can not add an XML item to itself or to an item beneath it",
                                        "Can not add an XML item to itself or to an item beneath it"}));
}

TEST(qxXmlItem, theCursorGivesEachChildOnceWhenChildrenComeAndGo)
{
    // How many children the cursor gave, and which one goes then.
    const auto rest = [](const std::string& row) {
        const Holder parent = family({"a", "b", "c"});
        for (char i = '0'; i < row[0]; ++i) parent->getNextChild();
        parent->removeChild(parent->findItem(row.substr(1).c_str()));
        std::string names = restOf(*parent);
        parent->addChild(new qxXmlElement("d"));
        names += "+" + restOf(*parent);
        parent->resetChildIterator();
        return names + "+" + restOf(*parent);
    };
    expectRows(rest, "0a => bc+d+bcd", "1a => bc+d+bcd", "2a => c+d+bcd", "2b => c+d+acd", "1b => c+d+acd",
               "3c => +d+abd", "2c => +d+abd", "1x => bc+d+abcd");
}

TEST(qxXmlItem, allCursorsGoBackTogether)
{
    const Holder top = family({"a"});
    qxXmlElement* const child = static_cast<qxXmlElement*>(top->getNextChild());
    child->addChild(new qxXmlElement("b"));
    child->setAttributeText("x", "1");
    child->getNextChild();
    qxString name;
    qxString value;
    child->getNextAttribute(name, value);

    top->resetAllChildIterators();

    EXPECT_EQ(restOf(*top), "a");
    EXPECT_EQ(restOf(*child), "b");
    EXPECT_TRUE(child->getNextAttribute(name, value));
}

TEST(qxXmlItem, theListOfChildrenSharesThemAndItsCopyHoldsClones)
{
    const Holder parent = family({"a", "b"});
    parent->getFirstChild()->addChild(new qxXmlCharData("text"));

    const qxRefList<qxXmlItem> list = parent->getChildList();
    EXPECT_EQ(list.entries(), 2U);
    EXPECT_EQ(list.getFirst(), parent->getFirstChild());
    EXPECT_EQ(list.getFirst()->getRef(), 2U);

    const qxRefList<qxXmlItem> copy(list);
    EXPECT_NE(copy.getFirst(), list.getFirst());
    EXPECT_EQ(dump(*copy.getFirst()), "a(\"text\")");
}

TEST(qxXmlItem, aCloneIsDeepAndStandsAlone)
{
    qxXmlDom document;
    readText(document, "<a x='1'><b y='2'/>text<!--c--><?t d?><![CDATA[s]]>&e;</a>");
    document.getFirstChild()->getNextChild();
    qxXmlItem* const original = document.getFirstChild();

    const Holder copy(original->clone());

    EXPECT_EQ(dump(*copy), dump(*original));
    EXPECT_EQ(copy->getParent(), nullptr);
    EXPECT_EQ(copy->getRef(), 1U);
    EXPECT_EQ(copy->getFirstChild()->getParent(), copy.get());
    EXPECT_EQ(copy->getNextChild(), copy->getFirstChild());
    static_cast<qxXmlElement*>(copy->getFirstChild())->setAttributeText("y", "3");
    copy->getFirstChild()->setName("z");
    EXPECT_EQ(dump(*original), "a x=\"1\"(b y=\"2\" \"text\" !--c-- ?t d ![s] &e;)");
}

TEST(qxXmlItem, everyClassClonesItself)
{
    qxXmlItem all("all");
    for (qxXmlItem* item : std::initializer_list<qxXmlItem*>{
             new qxXmlItem("plain"), new qxXmlElement("e"), new qxXmlCharData("t"), new qxXmlCDATA("c"),
             new qxXmlComment("k"), new qxXmlEntityReference("r"), new qxXmlPI("t", "d"),
             new qxXmlCustomData("u"), new qxXmlDom}) {
        item->setCopyMode(QX_COPY_SHARED);
        all.addChild(item);
    }
    const Holder copy(all.clone());
    EXPECT_EQ(dump(*copy), dump(all));
    const qxXmlItem* cloned = copy->getFirstChild();
    for (qxXmlItem* item = all.getFirstChild(); item; item = item->getNextSibling()) {
        SCOPED_TRACE(item->getTypeName());
        const Holder alone(item->clone());
        for (const qxXmlItem* one : std::initializer_list<const qxXmlItem*>{alone, cloned}) {
            EXPECT_TRUE(one->isExactType(item->getType()));
            EXPECT_EQ(one->getCopyMode(), QX_COPY_SHARED);
        }
        EXPECT_EQ(dump(*alone), dump(*item));
        cloned = cloned->getNextSibling();
    }
}

TEST(qxXmlItem, typesFormTheTreeOfItems)
{
    const qxXmlCustomData custom("c");
    EXPECT_STREQ(custom.getTypeName(), "qxXmlCustomData");
    EXPECT_TRUE(custom.isOfType(qxXmlElement::getClassType()));
    EXPECT_TRUE(custom.isOfType(qxXmlItem::getClassType()));
    EXPECT_TRUE(custom.isOfType(qxReference::getClassType()));
    for (qxType* type :
         {qxXmlElement::getClassType(), qxXmlCharData::getClassType(), qxXmlCDATA::getClassType(),
          qxXmlComment::getClassType(), qxXmlEntityReference::getClassType(), qxXmlPI::getClassType(),
          qxXmlDom::getClassType()})
        EXPECT_EQ(type->getParent(), qxXmlItem::getClassType()) << type->getName();
}

TEST(qxXmlItem, mergingJoinsTextAndReferencesBehindIt)
{
    const auto merged = [](const std::string& text) {
        qxXmlDom document;
        document.setMergeStandardReferences(false);
        readText(document, text);
        document.mergeStandardReferencesAndText();
        return dump(document);
    };
    // Deliberate: a predefined reference that opens a run stays one.
    expectRows(merged, "<a>x&amp;y</a> => (a(\"x&y\"))", "<a>&lt;x&gt;</a> => (a(&lt; \"x>\"))",
               "<a>&lt;&gt;</a> => (a(&lt; &gt;))", "<a>x&foo;y&quot;</a> => (a(\"x\" &foo; \"y\"\"))",
               "<a>x<b>&amp;y&apos;</b>&amp;z</a> => (a(\"x\" b(&amp; \"y'\") &amp; \"z\"))",
               "<a>x<!--c-->&amp;y</a> => (a(\"x\" !--c-- &amp; \"y\"))",
               "<a>x<![CDATA[c]]>&amp;</a> => (a(\"x\" ![c] &amp;))",
               "<a>x&#65;&lt;</a> => (a(\"x\" &#65; &lt;))");
}

TEST(qxXmlItem, mergingEndsARunBeforeItGetsTooLong)
{
    const qxString half = qxString::spaces(40000, 'x');
    qxXmlElement parent("p");
    for (int i = 0; i < 3; ++i) parent.addChild(new qxXmlCharData(half));
    parent.addChild(new qxXmlCharData(qxString::spaces(25535, 'y')));
    parent.addChild(new qxXmlEntityReference("lt"));
    parent.addChild(new qxXmlCharData("z"));

    parent.mergeStandardReferencesAndText();

    std::vector<unsigned int> lengths;
    for (qxXmlItem* child = parent.getFirstChild(); child; child = child->getNextSibling())
        lengths.push_back(child->asString().length());
    EXPECT_EQ(lengths, (std::vector<unsigned int>{40000, 40000, 65535, 1, 1}));
}

TEST(qxXmlItem, asStringIsTheTextAndMarkupByFlag)
{
    qxXmlDom document;
    document.setMergeStandardReferences(false);
    readText(document, "<a x=\"1&lt;\">t&lt;&#65;&e;<b/><!--c--><?p d?><![CDATA[<]]></a>");

    EXPECT_STREQ(document.asString().getString(), "t<A&e;<");
    EXPECT_STREQ(document.asString(QX_XML_STRING_TAGS).getString(), "<a><b/><!--c--><?p d?></a>");
    EXPECT_STREQ(document.asString(QX_XML_STRING_ALL).getString(),
                 "<a x=\"1&lt;\">t&lt;&#65;&e;<b/><!--c--><?p d?><![CDATA[<]]></a>");
}

TEST(qxXmlItem, textTooLongForAStringIsAnError)
{
    qxXmlElement parent("p");
    for (int i = 0; i < 2; ++i) parent.addChild(new qxXmlCharData(qxString::spaces(40000, 'x')));
    EXPECT_EQ(fatalText([&parent] { parent.asString(); }), "Too many characters in qxString");
}

TEST(qxXmlItem, describesItselfForDebugging)
{
    qxXmlDom document;
    readText(document, "<a x='50%d'>text<b/></a>");
    MessageRecorder messages(QX_LEVEL_DEBUG);

    document.getFirstChild()->debugOutputTraverse(">", "Item", QX_DEBUG_ALL);

    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{">Item=a", ">Children count:2", ">Attribute count:1", "> x=50%d",
                                        ">  Item=<char_data>", ">  CharData:text", ">  Children count:0",
                                        ">  Item=b", ">  Children count:0", ">  Attribute count:0"}));
    for (const RecordedMessage& message : messages.messages()) EXPECT_EQ(message.level, QX_LEVEL_DEBUG);
}

TEST(qxXmlItem, debugFlagsChooseWhatIsTold)
{
    qxXmlDom document;
    readText(document, "<a x='1'>text<!--c--><![CDATA[d]]><?t e?>&f;</a>");
    MessageRecorder messages(QX_LEVEL_DEBUG);

    document.getFirstChild()->debugOutput("", "Item", QX_DEBUG_ATTRIBUTES);
    for (qxXmlItem* child = document.findItem("a")->getFirstChild(); child; child = child->getNextSibling())
        child->debugOutput("", "Item", QX_DEBUG_TEXT);

    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"Item=a", " x=1", "Item=<char_data>", "CharData:text",
                                        "Item=<comment>", "Comment:c", "Item=<cdata>", "CDATA:d", "Item=<pi>",
                                        " t=e", "Item=<entity_ref>", "Reference:f"}));
}

/// Writes itself and clones itself in its own way.
class Stamp : public qxXmlElement
{
public:
    Stamp() : qxXmlElement("stamp") {}
    Stamp* clone() const override
    {
        Stamp* const copy = new Stamp;
        copy->cloneChildren(*this);
        return copy;
    }
    void write(qxXmlSax* writer) override
    {
        setAttributeText("n", "1");
        qxXmlElement::write(writer);
    }
};

TEST(qxXmlItem, classesOfApplicationsKeepTheirWays)
{
    qxXmlDom document;
    document.addChild(new qxXmlElement("a"));
    document.addItem("a", new Stamp);
    document.addItem("a/stamp", new qxXmlCharData("text"));

    const qxRefPointer<qxXmlDom> copy(document.clone());

    EXPECT_NE(dynamic_cast<Stamp*>(copy->findItem("a/stamp")), nullptr);
    EXPECT_EQ(writtenPlain(*copy), "<a><stamp n=\"1\">text</stamp></a>");
}

static_assert(!std::is_copy_assignable_v<qxXmlItem>);
static_assert(!std::is_convertible_v<qxXmlItem, qxXmlItem>, "copies are made by clone");

} // namespace
