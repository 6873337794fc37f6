// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxrefinstance.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxserializeadapterreplace.h"
#include "qxserializedata.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <thread>
#include <type_traits>
#include <vector>

namespace
{

static_assert(!std::is_copy_constructible_v<TestStream>);
static_assert(!std::is_copy_assignable_v<qxSerializeAdapterMemory>);

TEST(qxSerializeAdapter, startsEmpty)
{
    TestStream stream;
    EXPECT_STREQ(stream.getURLBase(), "");
    EXPECT_STREQ(stream.getDefaultPath(), "");
    EXPECT_STREQ(stream.getPassword(), "");
    EXPECT_STREQ(stream.getAttributes(), "");
    EXPECT_EQ(stream.getAdapterFlags(), 0U);
    EXPECT_EQ(stream.getAdapterVersion(), 0U);
    EXPECT_EQ(stream.getAssociatedData(), nullptr);
    EXPECT_EQ(stream.getPushBackMode(), 0);
    EXPECT_FALSE(stream.hasError());
    EXPECT_FALSE(stream.hasName());
}

TEST(qxSerializeAdapter, keepsWhatBelongsToTheStream)
{
    TestStream stream;
    stream.setURLBase("base");
    stream.setDefaultPath("path");
    stream.setPassword("secret");
    stream.setAttributes("a=1");
    stream.setAdapterFlags(0x8000000000000001);
    stream.setAdapterVersion(7);
    stream.setName("stream");

    EXPECT_STREQ(stream.getURLBase(), "base");
    EXPECT_STREQ(stream.getDefaultPath(), "path");
    EXPECT_STREQ(stream.getPassword(), "secret");
    EXPECT_STREQ(stream.getAttributes(), "a=1");
    EXPECT_EQ(stream.getAdapterFlags(), 0x8000000000000001);
    EXPECT_EQ(stream.getAdapterVersion(), 7U);
    EXPECT_STREQ(stream.getName(), "stream");
}

TEST(qxSerializeAdapter, defaultsOfTheSlots)
{
    TestStream stream;
    EXPECT_EQ(stream.canSeek(), 0);
    stream.setSeekMode(1);
    EXPECT_EQ(stream.seek(0, QX_ORIGIN_START), 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(stream.supportAction(QX_SERIALIZE_APPEND), 1);
    EXPECT_EQ(stream.aboutToClose(0), 1);
    EXPECT_EQ(stream.useExtension("any"), 0);
    stream.mergeAssociatedData(nullptr);
    EXPECT_EQ(stream.getAssociatedData(), nullptr);
}

TEST(qxSerializeAdapter, belongsToTheTypeTree)
{
    const struct {
        qxType* type;
        qxType* parent;
        const char* name;
    } rows[] = {
        {qxSerializeAdapter::getClassType(), qxReference::getClassType(), "qxSerializeAdapter"},
        {qxSerializeAdapterFile::getClassType(), qxSerializeAdapter::getClassType(),
         "qxSerializeAdapterFile"},
        {qxSerializeAdapterMemory::getClassType(), qxSerializeAdapter::getClassType(),
         "qxSerializeAdapterMemory"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.type->getName(), row.name);
        EXPECT_EQ(row.type->getParent(), row.parent);
    }
    TestStream stream; // has no record of its own
    EXPECT_EQ(stream.getType(), qxSerializeAdapter::getClassType());
}

TEST(qxSerializeAdapter, aCopiedHolderSharesTheStream)
{
    const qxRefPointer<qxSerializeAdapter> first(new TestStream);
    first->setCopyMode(QX_COPY_DEEP);
    const qxRefPointer<qxSerializeAdapter> second(first);

    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(first->getRef(), 2U);
    EXPECT_EQ(fatalText([&] { first->clone(); }), "Unimplemented clone called for type 'qxSerializeAdapter'");
}

TEST(qxSerializeAdapter, threadsHoldOneStream)
{
    const qxRefPointer<qxSerializeAdapter> stream(new TestStream);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 1000; ++k) qxRefPointer<qxSerializeAdapter> holder(stream.get());
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(stream->getRef(), 1U);
}

TEST(qxSerializeAdapter, holdsItsAssociatedData)
{
    const qxRefPointer<qxReference> data(new TestStream);
    {
        TestStream stream;
        stream.setAssociatedData(data);
        EXPECT_EQ(stream.getAssociatedData(), data.get());
        EXPECT_EQ(data->getRef(), 2U);
    }
    EXPECT_EQ(data->getRef(), 1U);
}

TEST(qxSerializeAdapter, storesTheLastError)
{
    TestStream stream;
    stream.setError("100% full");
    EXPECT_EQ(stream.hasError(), 1);
    EXPECT_STREQ(stream.getError(), "100% full");

    stream.setError("");
    EXPECT_EQ(stream.hasError(), 0);
}

TEST(qxSerializeAdapter, writesBytesAndBlocks)
{
    TestStream stream;
    pushBackText(stream, "kept");
    stream.write(0);
    stream.write("abc", 2);
    const unsigned char block[] = {1, 2, 255};
    stream.write(block, 3);

    EXPECT_EQ(stream.written, std::string("\0ab\1\2\xFF", 6));
    EXPECT_EQ(stream.length(), 4U);
}

TEST(qxSerializeAdapter, readsABlockUpToTheEndOfTheStream)
{
    TestStream unknown("abcd"); // no length, only hasData_imp
    EXPECT_EQ(readBlock(unknown, 3), "abc");
    EXPECT_EQ(readBlock(unknown, 3), "d");
    EXPECT_EQ(readBlock(unknown, 3), "");

    TestBlock known("abcd");
    EXPECT_EQ(readBlock(known, 5), "abcd");
}

TEST(qxSerializeAdapter, aNullBufferSkips)
{
    TestBlock stream("cdefg");
    pushBackText(stream, "ab");
    EXPECT_EQ(stream.read(nullptr, 4), 4U);
    EXPECT_EQ(readAll(stream), "efg");

    EXPECT_EQ(stream.read(nullptr, 4), 4U); // beyond the end too
}

TEST(qxSerializeAdapter, hasDataConsumesNothing)
{
    const struct {
        const char* pushedBack;
        const char* content;
        unsigned int count;
        int expected;
    } rows[] = {
        {"", "", 0, 1},     {"", "", 1, 0},
        {"", "abc", 1, 1},  {"", "abc", 3, 1},
        {"", "abc", 4, 0},  {"ab", "cd", 4, 1},
        {"ab", "cd", 5, 0}, {"ab", "", 2, 1},
        {"ab", "", 1, 1},   {"", "abc", 0xFFFFFFFF, 0}, // not allocated before it is read
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.pushedBack) + "+" + row.content + " " + std::to_string(row.count));
        TestStream unknown(row.content);
        pushBackText(unknown, row.pushedBack);
        EXPECT_EQ(unknown.hasData(row.count), row.expected);
        EXPECT_EQ(readAll(unknown), std::string(row.pushedBack) + row.content);

        TestBlock known(row.content);
        pushBackText(known, row.pushedBack);
        EXPECT_EQ(known.hasData(row.count), row.expected);
        EXPECT_EQ(readAll(known), std::string(row.pushedBack) + row.content);
    }
}

TEST(qxSerializeAdapter, hasDataKeepsTheOrderInBothModes)
{
    for (const int mode : {0, 1}) {
        TestStream stream("cdef");
        stream.setPushBackMode(static_cast<unsigned char>(mode));
        pushBackText(stream, "ab");
        EXPECT_EQ(stream.hasData(5), 1);
        EXPECT_EQ(readAll(stream), "abcdef");
    }
}

/// Fails at its third byte.
class FailingStream : public TestStream
{
public:
    using TestStream::TestStream;

protected:
    using TestStream::read_imp;
    unsigned char read_imp() override
    {
        if (content.size() == 1) throw std::string("broken");
        return TestStream::read_imp();
    }
};

TEST(qxSerializeAdapter, hasDataKeepsWhatWasGivenBackWhenReadingThrows)
{
    FailingStream stream("abc");
    pushBackText(stream, "12");
    EXPECT_THROW(stream.hasData(5), std::string);
    EXPECT_EQ(readBlock(stream, 2), "12");
}

/// Counts the calls of its own operations.
class TestData final : public qxSerializeData
{
public:
    void write(qxSerializeAdapter*) override { log += "w"; }
    void read(qxSerializeAdapter*) override { log += "r"; }
    unsigned int getDataSize(qxSerializeAdapter*) override { return 0; }

    std::string log;
};

TEST(qxSerializeAdapter, serializesByAction)
{
    TestStream stream;
    TestData data;
    for (const unsigned int action : {1U, 2U, 3U, 0U, 0xFFFFFFFFU})
        stream.serialize(&data, static_cast<qxSerializeAction>(action));
    EXPECT_EQ(data.log, "wr");
}

TEST(qxSerializeAdapter, numbersSharedInstances)
{
    TestStream stream;
    EXPECT_EQ(stream.getNewSharedInstanceID(), 0U);
    EXPECT_EQ(stream.getNewSharedInstanceID(), 1U);
    EXPECT_EQ(stream.getNewSharedInstanceID(), 2U);

    stream.clearSharedRefs();
    EXPECT_EQ(stream.getNewSharedInstanceID(), 0U);
}

TEST(qxSerializeAdapter, clearsAndCopiesTheTablesOfSharedObjects)
{
    const qxRefPointer<qxReference> object(new TestStream);
    TestStream first;
    TestStream second;
    first.getRefInstanceArray()->add(object);
    first.getRefInstanceDictionary()->enter(object, first.getNewSharedInstanceID());
    second.copySharedRefData(&first);
    first.clearSharedRefs();

    unsigned int id = 99;
    EXPECT_EQ(first.getRefInstanceArray()->getCount(), 0U);
    EXPECT_FALSE(first.getRefInstanceDictionary()->find(object, id));
    EXPECT_EQ(second.getRefInstanceArray()->get(0), object.get());
    EXPECT_TRUE(second.getRefInstanceDictionary()->find(object, id));
    EXPECT_EQ(id, 0U);
    EXPECT_EQ(second.getNewSharedInstanceID(), 1U);
}

} // namespace
