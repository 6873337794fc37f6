// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypecontainer.h"

#include "qxdynamictest.h"

namespace
{

// "name=number name=number", a void value as "name".
std::string listOf(const qxDynamicTypeContainer& container)
{
    const qxArray<qxString> names = container.getNames();
    const qxArray<qxDynamicType> values = container.getValues();
    std::string text;
    for (unsigned int i = 0; i < container.entries(); ++i) {
        if (i > 0) text += ' ';
        text += names[i].getString();
        if (!values[i].is("void")) text += '=' + std::to_string(static_cast<int>(values[i].getNumber()));
    }
    return text;
}

TEST(qxDynamicTypeContainer, keepsItsAttributesInOrder)
{
    qxDynamicTypeContainer container;
    EXPECT_EQ(container.entries(), 0U);
    container.setAttribute("b", 1);
    container.setAttribute("a", 2);
    container.setAttribute("c", qxDynamicType());
    EXPECT_EQ(listOf(container), "b=1 a=2 c");
    container.setAttribute("b", 3);
    EXPECT_EQ(listOf(container), "b=3 a=2 c");
    EXPECT_TRUE(container.removeAttribute("a"));
    EXPECT_FALSE(container.removeAttribute("a"));
    EXPECT_EQ(listOf(container), "b=3 c");

    EXPECT_TRUE(container.hasAttribute("c"));
    EXPECT_FALSE(container.hasAttribute("a"));
    EXPECT_EQ(container.getAttribute("b"), qxDynamicType(3));
    EXPECT_TRUE(container.getAttribute("a").is("void"));
}

TEST(qxDynamicTypeContainer, theLastOfANameCounts)
{
    const qxString names[] = {"a", "b", "a"};
    const qxDynamicType values[] = {1, 2, 3};
    qxDynamicTypeContainer container(names, values, std::size(values));
    EXPECT_EQ(container.getAttribute("a").getNumber(), 3.0);
    container.setAttribute("a", 4);
    EXPECT_EQ(listOf(container), "a=1 b=2 a=4");
    EXPECT_TRUE(container.removeAttribute("a"));
    EXPECT_EQ(listOf(container), "a=1 b=2");
}

TEST(qxDynamicTypeContainer, eachAttributeHasItsOwnObjects)
{
    TestObject* const objects[] = {new TestObject, new TestObject};
    const qxString names[] = {"a", "b", "c"};
    {
        const qxDynamicType values[] = {qxDynamicType(objects[0]), 1, qxDynamicType(objects[1])};
        qxDynamicTypeContainer container(names, values, std::size(values));
        EXPECT_EQ(container.getAttribute("c").getReference(), objects[1]);
        container.removeAttribute("a");
        EXPECT_EQ(TestObject::alive, 2);
        EXPECT_EQ(container.getAttribute("c").getReference(), objects[1]);
    }
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxDynamicTypeContainer, refusesNamesThatHoldAZero)
{
    qxDynamicTypeContainer container;
    EXPECT_EQ(fatalText([&] { container.setAttribute(qxString("a\0b", 3), 1); }),
              "A name in a qxDynamicTypeContainer holds a zero behind 'a'");
    EXPECT_EQ(container.entries(), 0U);
}

TEST(qxDynamicTypeContainer, readsContainersOnlyAndCannotBeGivenBack)
{
    qxDynamicTypeContainer container;
    container.setAttribute("a", 1);
    TestStream stream(written(qxDynamicType(container)) + written(1.0));
    stream.setName("settings");
    qxDynamicTypeContainer read;
    read.read(&stream);
    EXPECT_EQ(read, container);
    EXPECT_FALSE(stream.hasError());

    read.read(&stream);
    EXPECT_TRUE(read.is("void"));
    EXPECT_STREQ(stream.getError(), "qxDynamicTypeContainer::read failure in adapter 'settings' !");
    EXPECT_FALSE(stream.hasData());
    container.pushBack(&stream);
    EXPECT_STREQ(stream.getError(),
                 "pushBack for qxDynamicTypeContainer is not possible to perform in adapter 'settings' ");
    EXPECT_FALSE(stream.hasData());
}

} // namespace
