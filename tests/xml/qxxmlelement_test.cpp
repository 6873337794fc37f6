// SPDX-License-Identifier: see LICENSE

#include "qxxmlelement.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"
#include "qxxmltesttree.h"

namespace
{

TEST(qxXmlElement, keepsAttributesInTheOrderTheyWereSetFirst)
{
    qxXmlElement element("e");
    for (const char* const attribute : {"b1", "a", "c3", "b a longer value than before", "c4"})
        element.setAttributeText(qxString(attribute, 1), attribute + 1);

    EXPECT_EQ(dump(element), "e b=\" a longer value than before\" a=\"\" c=\"4\"");
    EXPECT_EQ(element.attributeEntries(), 3U);
    EXPECT_TRUE(element.hasAttribute("a"));
    EXPECT_STREQ(element.getAttribute("a", "missing").getString(), "");
    EXPECT_FALSE(element.hasAttribute("d"));
    EXPECT_STREQ(element.getAttribute("d", "missing").getString(), "missing");

    EXPECT_TRUE(element.removeAttribute("a"));
    EXPECT_FALSE(element.removeAttribute("a"));
    EXPECT_EQ(dump(element), "e b=\" a longer value than before\" c=\"4\"");
    element.removeAttributes();
    EXPECT_EQ(dump(element), "e");
    element.setAttributeText("d", "1");
    EXPECT_EQ(dump(element), "e d=\"1\"");
}

TEST(qxXmlElement, setAttributeFormats)
{
    qxXmlElement element("e");
    element.setAttribute("plain", "text");
    element.setAttribute("number", "%d%% of %s", 7, "x");
    element.setAttribute("many", "%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d", 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 2, 3, 4,
                         5, 6);

    EXPECT_EQ(dump(element), "e plain=\"text\" number=\"7% of x\" many=\"1234567890123456\"");
    EXPECT_EQ(fatalText([&element] { element.setAttribute("x", "100%"); }),
              "Unknown format option in string '100%'");
}

TEST(qxXmlElement, theCursorGivesEachAttributeOnce)
{
    qxXmlElement element("e");
    for (const char* name : {"a", "b", "c"}) element.setAttributeText(name, "1");
    qxString name;
    qxString value;
    const auto next = [&] {
        const bool isThere = element.getNextAttribute(name, value);
        return (isThere ? "" : "end behind ") + std::string(name.getString());
    };

    std::string given = next();
    given += next();
    element.removeAttribute("b");
    given += next();
    given += next();
    EXPECT_EQ(given, "abcend behind c");
    element.resetAttributeIterator();
    EXPECT_EQ(next(), "a");
}

TEST(qxXmlElement, theListOfAttributesIsACopy)
{
    qxXmlElement element("e");
    element.setAttributeText("a", "1");

    const qxRefList<qxXmlAttribute> list = element.getAttributeList();
    list.getFirst()->setValue("2");
    const qxRefPointer<qxXmlAttribute> clone(list.getFirst()->clone());

    EXPECT_EQ(dump(element), "e a=\"1\"");
    EXPECT_STREQ(clone->getName().getString(), "a");
    EXPECT_STREQ(clone->getValue().getString(), "2");
}

TEST(qxXmlElement, holdsManyAndLongAttributes)
{
    qxXmlElement element("e");
    const qxString longest = qxString::spaces(65535, 'x');
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 100; ++i) {
            const qxString name = qxString::str("name%d", i);
            element.setAttributeText(name, i % 10 == round ? longest : qxString::str("%d", i * round));
        }
    }
    EXPECT_EQ(element.attributeEntries(), 100U);
    EXPECT_EQ(element.getAttribute("name12").length(), 65535U);
    EXPECT_STREQ(element.getAttribute("name50").getString(), "100");
    EXPECT_STREQ(element.getAttribute("name99").getString(), "198");
}

TEST(qxXmlCustomData, clonesOrSharesItsDataAsTheDataSays)
{
    const int before = TestObject::alive;
    {
        const qxRefPointer<qxXmlCustomData> owner(new qxXmlCustomData("c", new TestObject(7)));
        owner->setAttributeText("a", "1");
        const qxRefPointer<qxXmlCustomData> copy(owner->clone());
        EXPECT_EQ(dump(*copy), "c a=\"1\"");
        EXPECT_NE(copy->getData(), owner->getData());
        EXPECT_EQ(static_cast<TestObject*>(copy->getData())->value, 7);

        owner->setData(TestObject::shared());
        const qxRefPointer<qxXmlCustomData> sharing(owner->clone());
        EXPECT_EQ(sharing->getData(), owner->getData());
        EXPECT_TRUE(sharing->releaseRefs());
        EXPECT_EQ(sharing->getData(), nullptr);
    }
    EXPECT_EQ(TestObject::alive, before);
}

TEST(qxXmlText, itemsHoldTextsOfEveryLength)
{
    for (const unsigned int length : {0U, 1U, 14U, 15U, 16U, 17U, 64U, 65U, 1000U, 65535U}) {
        SCOPED_TRACE(length);
        qxXmlCharData item(qxString::spaces(length, 'x'));
        EXPECT_EQ(item.getCharData(), qxString::spaces(length, 'x'));
        item.setCharData("short");
        EXPECT_STREQ(item.getCharData().getString(), "short");
        item.setCharData(qxString::spaces(length, 'y'));
        const qxRefPointer<qxXmlCharData> copy(item.clone());
        EXPECT_EQ(copy->getCharData(), qxString::spaces(length, 'y'));
    }
}

TEST(qxXmlText, theReferenceHasANameOfItsOwn)
{
    qxXmlEntityReference reference("lt");
    reference.setName("gt");
    const qxNameInterface& item = reference;

    EXPECT_STREQ(reference.getName().getString(), "gt");
    EXPECT_STREQ(item.getName().getString(), "<entity_ref>");
}

} // namespace
