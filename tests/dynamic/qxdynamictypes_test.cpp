// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "qxdynamictest.h"

#include <limits>

namespace
{

std::vector<qxDynamicType> listOf(const qxArray<qxDynamicType>& items)
{
    return {items.begin(), items.end()};
}

TEST(qxDynamicTypeInt64, keepsAllBits)
{
    using Limits = std::numeric_limits<qxInt64>;
    for (const qxInt64 number : {qxInt64{0}, qxInt64{-1}, Limits::min(), Limits::max()}) {
        const qxDynamicType value = qxDynamicTypeInt64(number);
        EXPECT_EQ(qxDynamicTypeInt64(value).getInt64(), number);
    }
}

TEST(qxDynamicTypeError, asksAnyValueWhetherItIsOne)
{
    EXPECT_FALSE(qxDynamicTypeError(qxDynamicType("text")).isError());
    const qxDynamicTypeError error(qxDynamicType(qxDynamicTypeError("it broke")));
    EXPECT_TRUE(error.isError());
    EXPECT_STREQ(error.getError(), "it broke");
}

TEST(qxDynamicTypeArray, givesItsItemsBack)
{
    const std::vector<qxDynamicType>& values = oneOfEach();
    const qxDynamicTypeArray array(values.data(), values.size());
    EXPECT_EQ(listOf(array.getArray()), values);
    EXPECT_EQ(qxDynamicTypeArray(array.getArray()), array);
    EXPECT_EQ(listOf(qxDynamicTypeChain(values.data(), values.size()).getArray()), values);
    EXPECT_EQ(qxDynamicTypeArray(nullptr, 0).getArray().entries(), 0U);
}

TEST(qxDynamicTypeArray, itemsOutliveIt)
{
    qxArray<qxDynamicType> items;
    {
        const std::string text(1000, 'x');
        const qxDynamicType inner = arrayOf({qxDynamicType(text.c_str()), qxDynamicType(1)});
        items = qxDynamicTypeArray(arrayOf({inner, qxDynamicType(2)})).getArray();
    }
    items = qxDynamicTypeArray(items[0]).getArray();
    EXPECT_EQ(items[0].getString().length(), 1000);
    EXPECT_EQ(items[1].getNumber(), 1.0);
}

TEST(qxDynamicTypeArray, eachItemHasItsOwnObjects)
{
    TestObject* const first = new TestObject(1);
    TestObject* const second = new TestObject(2);
    {
        const qxDynamicTypeTimeTagged timed(qxDynamicType(second), 1.0);
        const qxDynamicType none(static_cast<qxReference*>(nullptr));
        qxDynamicType array = arrayOf({qxDynamicType(first), none, arrayOf({timed})});
        EXPECT_EQ(array.getDynamicReferences().entries(), 2U);

        const qxArray<qxDynamicType> items = qxDynamicTypeArray(array).getArray();
        array.reset();
        EXPECT_EQ(items[0].getReference(), first);
        EXPECT_EQ(items[1].getReference(), nullptr);
        const qxDynamicType inner = qxDynamicTypeArray(items[2]).getArray()[0];
        EXPECT_EQ(qxDynamicTypeTimeTagged(inner).getData().getReference(), second);
    }
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxDynamicTypeTimeTagged, hasAValueAndATime)
{
    for (const qxDynamicType& value : oneOfEach()) {
        SCOPED_TRACE(tagOf(value));
        const qxDynamicTypeTimeTagged timed(value, -0.5);
        EXPECT_EQ(timed.getData(), value);
        EXPECT_EQ(timed.getTimeTag(), -0.5);
    }
}

TEST(qxDynamicTypeCustom, hasATagOfItsOwnAndAnyBytes)
{
    qxDynRefList objects;
    objects.insert(new TestObject);
    const std::string bytes(20, '\x80');
    const qxDynamicTypeCustom value("color", reinterpret_cast<const unsigned char*>(bytes.data()),
                                    bytes.size(), objects);
    const qxArray<unsigned char> data = qxDynamicTypeCustom("color", value).getDynamicData();
    EXPECT_EQ(std::string(data.begin(), data.end()), bytes);
    EXPECT_EQ(value.getDynamicReferences().getFirst(), objects.getFirst());
    EXPECT_EQ(fatalText([&] { qxDynamicTypeCustom other("colour", value); }),
              "Can not convert dynamic argument type 'color' to qxDynamicTypeCustom type 'colour'!!");
    for (const qxString& tag : {qxString("num"), qxString(), qxString("a\0b", 3)})
        EXPECT_EQ(fatalText([&] { qxDynamicTypeCustom other(tag, nullptr, 0); }),
                  "qxDynamicTypeCustom needs a tag of its own, not '" + std::string(tag.getString()) + "'");
}

} // namespace
