// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "qxdynamictest.h"
#include "qxuniquestring.h"

namespace
{

TEST(qxDynamicType, comesBackFromAnyStream)
{
    for (const qxDynamicType& value : oneOfEach()) {
        SCOPED_TRACE(tagOf(value));
        const std::string bytes = written(value);
        EXPECT_EQ(qxDynamicType(value).getDataSize(nullptr), bytes.size());
        forEachStream(bytes + "rest", [&](qxSerializeAdapter& stream) {
            qxDynamicType read;
            read.read(&stream);
            EXPECT_EQ(read, value);
            EXPECT_EQ(readAll(stream), "rest");
            EXPECT_FALSE(stream.hasError());
        });
    }
}

TEST(qxDynamicType, dataThatEndsWithinAValueIsAnError)
{
    for (const qxDynamicType& value : oneOfEach()) {
        const std::string bytes = written(value);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(tagOf(value) + " " + std::to_string(length));
            TestStream stream(bytes.substr(0, length));
            qxDynamicType read(1.0);
            read.read(&stream);
            EXPECT_TRUE(read.is("void"));
            EXPECT_STREQ(stream.getError(), "qxDynamicType::read: the data ends within a value");
        }
    }
}

TEST(qxDynamicType, refusesFaultyData)
{
    const std::string end = "qxDynamicType::read: the data ends within a value";
    const std::string many(70000, 'x');
    const std::string tooLong = "qxDynamicType::read: a value is too long";
    const auto malformed = [](const char* tag) {
        return "qxDynamicType::read: the value of type '" + std::string(tag) + "' is malformed";
    };
    const struct {
        std::string bytes; // a zero is written as '~'
        std::string error;
    } rows[] = {
        {"~~", "qxDynamicType::read: malformed type"},
        {"\xFC\xFF\xFF~~", "qxDynamicType::read: malformed type"},
        {"\xFC\xFE\xFF~", "qxDynamicType::read: no unique string has the ID 65535"},
        {many + "~~", "qxDynamicType::read: malformed type"},
        {"str~\xFF\xFF\xFF\x7F", end},
        {"str~\x80\x80\x80\x80\x10", tooLong},
        {"str~\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F", tooLong},
        {"str~\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01", tooLong},
        {"void~\x01x", malformed("void")},
        {"num~\x07"
         "1234567",
         malformed("num")},
        {"ref~\x01x", malformed("ref")},
        {"vec3~\x08"
         "12345678",
         malformed("vec3")},
        {"guid~\x11"
         "12345678123456789",
         malformed("guid")},
        {"str~\x80\x80\x04" + many.substr(0, 65536), malformed("str")},
        {"array~~", malformed("array")},
        {"array~\x02~x", malformed("array")},                   // more than the elements
        {"array~\x08\x02~void~~", malformed("array")},          // an element less than said
        {"array~\x05\xFF\xFF\xFF\xFF\x0F", malformed("array")}, // many more than there is room for
        {"array~\x07\x01~str~\x09x", malformed("array")},       // an element longer than the array
        {"array~\x06\x01~\xFC~~~", malformed("array")},         // an ID within a block
        {"array~\x05\x01~~~~", malformed("array")},             // an element without a tag
        {"array~\x10\x01~array~\x07\x01~str~\x02x", malformed("array")},
        {"ttag~\x07"
         "1234567",
         malformed("ttag")},
        {"ttag~\x08"
         "12345678",
         malformed("ttag")},
        {"ttag~\x0Fx2345678void~~x", malformed("ttag")},
        {"cont~\x09\x01name~void", malformed("cont")},
    };
    for (const auto& row : rows) {
        std::string bytes = row.bytes;
        for (char& c : bytes)
            if (c == '~') c = 0;
        SCOPED_TRACE(toHex(bytes.substr(0, 40)));
        forEachStream(bytes, [&](qxSerializeAdapter& stream) {
            qxDynamicType read(1.0);
            read.read(&stream);
            EXPECT_TRUE(read.is("void"));
            EXPECT_EQ(stream.getError().getString(), row.error);
        });
    }
}

TEST(qxDynamicType, aTagInTheTableOfUniqueStringsTravelsAsItsID)
{
    const qxDynamicTypeCustom value("unique tag", nullptr, 0);
    const std::string asText = written(value);
    const std::string inArray = written(arrayOf({value}));
    const qxUniqueString name("unique tag", 513);
    EXPECT_EQ(wireOf(*std::make_unique<qxDynamicType>(value)), "FC 00 02 00");
    EXPECT_EQ(readFrom(fromHex("FC 00 02 00")), value);
    EXPECT_EQ(readFrom(asText), value);
    EXPECT_EQ(written(arrayOf({value})), inArray); // blocks look the same in every process

    const qxUniqueString number("num", 514);
    EXPECT_EQ(written(qxDynamicType(1.0)).substr(0, 3), "\xFC\x01\x02");
    EXPECT_EQ(readFrom(written(qxDynamicType(1.0))).getNumber(), 1.0);
    qxUniqueString::cleanAllUniqueId();
    EXPECT_EQ(written(qxDynamicType(1.0)).substr(0, 4), std::string("num\0", 4));
}

TEST(qxDynamicType, addressesAndObjectsDoNotTravel)
{
    int target = 0;
    const qxDynamicType pointer(static_cast<void*>(&target));
    qxDynamicType read = readFrom(written(arrayOf({pointer, qxDynamicType(new TestObject)})));
    const qxArray<qxDynamicType> items = qxDynamicTypeArray(read).getArray();
    EXPECT_EQ(items[0], pointer);
    EXPECT_EQ(items[0].getPointer(), nullptr);
    EXPECT_EQ(items[1].getReference(), nullptr);

    EXPECT_EQ(qxDynamicTypeArray(arrayOf({items[0]})).getArray()[0].getPointer(), nullptr);
    EXPECT_EQ(qxDynamicTypeTimeTagged(items[0], 1.0).getData().getPointer(), nullptr);
    const qxDynamicType numbers = readFrom(written(arrayOf({1, 2})));
    EXPECT_EQ(qxDynamicTypeArray(arrayOf({numbers, pointer})).getArray()[1].getPointer(), &target);
    read = pointer;
    EXPECT_EQ(read.getPointer(), &target);
}

TEST(qxDynamicType, nestingMayBeDeep)
{
    qxDynamicType value = nested(2000);
    value = readFrom(written(value));
    unsigned int depth = 1;
    for (; qxDynamicTypeArray(value).getArray().entries() == 1; ++depth)
        value = qxDynamicTypeArray(value).getArray()[0];
    EXPECT_EQ(depth, 2000U);
}

} // namespace
