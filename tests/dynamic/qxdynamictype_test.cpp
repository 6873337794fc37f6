// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "qxdynamictest.h"

#include <cmath>
#include <limits>
#include <thread>

namespace
{

TEST(qxDynamicType, hasATagForEachKindOfValue)
{
    std::string tags;
    for (const qxDynamicType& value : oneOfEach()) {
        tags += tagOf(value) + " ";
        EXPECT_TRUE(value.is(value.getDynamicType()));
        EXPECT_TRUE(value.is(tagOf(value).c_str()));
        EXPECT_FALSE(value.is("nu"));
        EXPECT_FALSE(value.is(qxString("number")));
    }
    EXPECT_EQ(tags, "void num llnum str vec2 vec3 vec4 guid ptr ref error array chain cont ttag color ");
}

TEST(qxDynamicType, everyGetterTakesItsTagOnlyAndLeavesTheValue)
{
    const struct {
        const char* word; // what the error calls the type
        std::string tags;
        void (*get)(const qxDynamicType& value);
    } rows[] = {
        {"number type", "num llnum", [](const qxDynamicType& value) { value.getNumber(); }},
        {"string type", "str", [](const qxDynamicType& value) { value.getString(); }},
        {"Vec2 type", "vec2", [](const qxDynamicType& value) { value.getVec2(); }},
        {"Vec3 type", "vec3", [](const qxDynamicType& value) { value.getVec3(); }},
        {"Vec4 type", "vec4", [](const qxDynamicType& value) { value.getVec4(); }},
        {"GUID type", "guid", [](const qxDynamicType& value) { value.getGUID(); }},
        {"pointer type", "ptr", [](const qxDynamicType& value) { value.getPointer(); }},
        {"reference type", "ref", [](const qxDynamicType& value) { value.getReference(); }},
        {"qxDynamicTypeVoid", "void", [](const qxDynamicType& value) { qxDynamicTypeVoid other(value); }},
        {"qxDynamicTypeInt64", "llnum", [](const qxDynamicType& value) { qxDynamicTypeInt64 other(value); }},
        {"qxDynamicTypeError", "error",
         [](const qxDynamicType& value) { qxDynamicTypeError(value).getError(); }},
        {"qxDynamicTypeArray", "array", [](const qxDynamicType& value) { qxDynamicTypeArray other(value); }},
        {"qxDynamicTypeChain", "chain", [](const qxDynamicType& value) { qxDynamicTypeChain other(value); }},
        {"qxDynamicTypeContainer", "cont",
         [](const qxDynamicType& value) { qxDynamicTypeContainer other(value); }},
        {"qxDynamicTypeTimeTagged", "ttag",
         [](const qxDynamicType& value) { qxDynamicTypeTimeTagged other(value); }},
    };
    for (const auto& row : rows) {
        for (const qxDynamicType& value : oneOfEach()) {
            const std::string tag = tagOf(value);
            SCOPED_TRACE(tag + " as " + row.word);
            const qxDynamicType before = value;
            if ((" " + row.tags + " ").find(" " + tag + " ") != std::string::npos)
                EXPECT_NO_THROW(row.get(value));
            else
                EXPECT_EQ(fatalText([&] { row.get(value); }),
                          "Can not convert dynamic argument type '" + tag + "' to " + row.word + " !!");
            EXPECT_EQ(value, before);
        }
    }
}

TEST(qxDynamicType, givesBackWhatItWasMadeOf)
{
    int target = 0;
    const qxGUID guid("{00112233-4455-6677-8899-AABBCCDDEEFF}");
    const qxString zero("a\0b", 3);
    EXPECT_EQ(qxDynamicType(-0.1).getNumber(), -0.1);
    EXPECT_EQ(qxDynamicType(7).getNumber(), 7.0);
    EXPECT_EQ(qxDynamicType(true).getNumber(), 1.0);
    EXPECT_EQ(qxDynamicTypeInt64(9007199254740993).getNumber(), 9007199254740992.0);
    EXPECT_EQ(qxDynamicType(zero).getString(), zero);
    EXPECT_TRUE(qxDynamicType("").getString().isEmpty());
    EXPECT_EQ(qxDynamicType(qxVec2{1, 2}).getVec2(), (qxVec2{1, 2}));
    EXPECT_EQ(qxDynamicType(qxVec3{1, 2, 3}).getVec3(), (qxVec3{1, 2, 3}));
    EXPECT_EQ(qxDynamicType(qxVec4{1, 2, 3, 4}).getVec4(), (qxVec4{1, 2, 3, 4}));
    EXPECT_EQ(qxDynamicType(guid).getGUID(), guid);
    EXPECT_EQ(qxDynamicType(static_cast<void*>(&target)).getPointer(), &target);
    for (const std::size_t length : {15U, 16U, 17U, 65535U}) { // inside the object, and in a block
        const std::string text(length, 'x');
        EXPECT_EQ(qxDynamicType(text.c_str()).getString().getString(), text);
    }
}

TEST(qxDynamicType, valuesAreEqualWhenTagAndBytesAre)
{
    const std::vector<qxDynamicType>& values = oneOfEach();
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t k = 0; k < values.size(); ++k)
            EXPECT_EQ(values[i] == values[k], i == k) << tagOf(values[i]) << ' ' << tagOf(values[k]);

    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(qxDynamicType(none), qxDynamicType(none));
    EXPECT_NE(qxDynamicType(0.0), qxDynamicType(-0.0));
    EXPECT_NE(qxDynamicType("a"), qxDynamicTypeError("a"));
    std::string text(40, 'x'); // which lies outside the object
    const qxDynamicType before(text.c_str());
    text.back() = 'y';
    EXPECT_NE(qxDynamicType(text.c_str()), before);
    const qxDynamicTypeCustom left("own", nullptr, 0);
    EXPECT_EQ(left, qxDynamicTypeCustom("own", nullptr, 0));
    EXPECT_NE(left, qxDynamicTypeCustom("other", nullptr, 0));
}

TEST(qxDynamicType, copiesAndMovesKeepValues)
{
    for (const qxDynamicType& value : oneOfEach()) {
        SCOPED_TRACE(tagOf(value));
        qxDynamicType copy(value);
        EXPECT_EQ(copy, value);
        for (const qxDynamicType& other : oneOfEach()) {
            qxDynamicType target(other);
            target = value;
            EXPECT_EQ(target, value);
            target = *&target;
            EXPECT_EQ(target, value);
        }
        qxDynamicType moved(std::move(copy));
        EXPECT_EQ(moved, value);
        copy = std::move(moved);
        EXPECT_EQ(copy, value);
        copy.reset();
        EXPECT_EQ(copy, qxDynamicType());
        EXPECT_TRUE(copy.is("void"));
    }
}

TEST(qxDynamicType, sharesItsObjectsWithCopies)
{
    TestObject* const object = new TestObject; // which holders would clone
    {
        qxDynamicType value(object);
        const qxDynamicType copy(value);
        const qxDynRefList list(copy.getDynamicReferences());
        EXPECT_TRUE(value.hasDynamicReferences());
        EXPECT_EQ(copy.getReference(), object);
        EXPECT_EQ(list.getFirst(), object);
        value.reset();
        EXPECT_FALSE(value.hasDynamicReferences());
        EXPECT_TRUE(value.getDynamicReferences().isEmpty());
        EXPECT_EQ(TestObject::alive, 1);
    }
    EXPECT_EQ(TestObject::alive, 0);

    EXPECT_EQ(qxDynamicType(new TestObject(1)), qxDynamicType(new TestObject(2)));
    EXPECT_EQ(qxDynamicType(static_cast<qxReference*>(nullptr)).getReference(), nullptr);
}

TEST(qxDynamicType, letsOutWhatItsObjectsRaise)
{
    EXPECT_EQ(fatalText([] { qxDynamicType value(TestObject::faulty()); }), TestObject::DELETED_WHILE_HELD);
    qxDynamicType value(TestObject::faulty());
    EXPECT_EQ(fatalText([&] { value.reset(); }), TestObject::DELETED_WHILE_HELD);
    EXPECT_TRUE(value.is("void"));
}

TEST(qxDynamicType, threadsMayCopyAndTakeApartOneValue)
{
    const std::string text(100, 'x');
    const qxDynamicTypeCustom custom("shared by threads", nullptr, 0);
    const qxDynamicType shared = arrayOf({text.c_str(), custom});
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 1000; ++k) {
                const qxDynamicType copy(shared);
                const qxArray<qxDynamicType> items = qxDynamicTypeArray(copy).getArray();
                EXPECT_TRUE(items[0] == qxDynamicType(text.c_str()));
                EXPECT_EQ(qxDynamicType(custom).getDataSize(nullptr), 19U);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(qxDynamicTypeArray(shared).getArray()[1], custom);
}

TEST(qxDynamicType, knowsItsType)
{
    const qxDynamicTypeInt64 value(1);
    EXPECT_STREQ(value.getTypeName(), "qxDynamicType");
    EXPECT_EQ(qxDynamicType::getClassType()->getParent(), nullptr);
}

} // namespace
