// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxrefinstance.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxserializeadapterreplace.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <type_traits>

namespace
{

static_assert(!std::is_copy_constructible_v<TestStream>);
static_assert(!std::is_copy_assignable_v<qxSerializeAdapterMemory>);

TEST(qxSerializeAdapter, keepsWhatBelongsToTheStream)
{
    TestStream stream;
    EXPECT_EQ(stream.getAdapterFlags(), 0U);
    EXPECT_EQ(stream.getAdapterVersion(), 0U);
    EXPECT_EQ(stream.getPushBackMode(), 0);
    stream.setURLBase("base");
    stream.setDefaultPath("path");
    stream.setPassword("secret");
    stream.setAttributes("a=1");
    stream.setAdapterFlags(0x8000000000000001);
    stream.setAdapterVersion(7);

    EXPECT_STREQ(stream.getURLBase(), "base");
    EXPECT_STREQ(stream.getDefaultPath(), "path");
    EXPECT_STREQ(stream.getPassword(), "secret");
    EXPECT_STREQ(stream.getAttributes(), "a=1");
    EXPECT_EQ(stream.getAdapterFlags(), 0x8000000000000001);
    EXPECT_EQ(stream.getAdapterVersion(), 7U);
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
    const qxRefPointer<qxReference> data(new TestStream);
    stream.mergeAssociatedData(data);
    EXPECT_EQ(stream.getAssociatedData(), nullptr);
}

TEST(qxSerializeAdapter, belongsToTheTypeTree)
{
    const struct {
        qxType* type;
        qxType* parent;
        const char* name;
    } rows[] = {
        {&qxSerializeAdapter::s_type, &qxReference::s_type, "qxSerializeAdapter"},
        {&qxSerializeAdapterFile::s_type, &qxSerializeAdapter::s_type, "qxSerializeAdapterFile"},
        {&qxSerializeAdapterMemory::s_type, &qxSerializeAdapter::s_type, "qxSerializeAdapterMemory"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.type->getName(), row.name);
        EXPECT_EQ(row.type->getParent(), row.parent);
    }
    EXPECT_EQ(TestStream().getType(), &qxSerializeAdapter::s_type); // has no record of its own
}

TEST(qxSerializeAdapter, isSharedByItsHoldersAndHoldsItsAssociatedData)
{
    const qxRefPointer<qxSerializeAdapter> first(new TestStream);
    first->setCopyMode(QX_COPY_DEEP);
    {
        const qxRefPointer<qxSerializeAdapter> second(first);
        EXPECT_EQ(first.get(), second.get());
        TestStream stream;
        stream.setAssociatedData(first);
        EXPECT_EQ(stream.getAssociatedData(), first.get());
        EXPECT_EQ(first->getRef(), 3U);
    }
    EXPECT_EQ(first->getRef(), 1U);
    EXPECT_EQ(fatalText([&] { first->clone(); }), "Unimplemented clone called for type 'qxSerializeAdapter'");
}

TEST(qxSerializeAdapter, storesTheLastError)
{
    TestStream stream;
    for (const char* const error : {"", "100% full", ""}) {
        stream.setError(error);
        EXPECT_EQ(stream.hasError(), *error != 0);
        EXPECT_STREQ(stream.getError(), error);
    }
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
        {"", "", 0, 1},    {"", "", 1, 0},     {"", "abc", 1, 1},          {"", "abc", 3, 1},
        {"", "abc", 4, 0}, {"ab", "cd", 4, 1}, {"ab", "cd", 5, 0},         {"ab", "cdef", 5, 1},
        {"ab", "", 2, 1},  {"ab", "", 1, 1},   {"", "abc", 0xFFFFFFFF, 0}, // not allocated before it is read
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.pushedBack) + "+" + row.content + " " + std::to_string(row.count));
        for (const unsigned char mode : PUSH_BACK_MODES) {
            TestStream unknown(row.content);
            TestBlock known(row.content);
            for (TestStream* const stream : {&unknown, static_cast<TestStream*>(&known)}) {
                stream->setPushBackMode(mode);
                pushBackText(*stream, row.pushedBack);
                EXPECT_EQ(stream->hasData(row.count), row.expected);
                EXPECT_EQ(readAll(*stream), std::string(row.pushedBack) + row.content);
            }
        }
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

TEST(qxSerializeAdapter, numbersSharedObjectsAndCopiesTheirTables)
{
    const qxRefPointer<qxReference> object(new TestStream);
    TestStream first;
    TestStream second;
    for (const unsigned int id : {0U, 1U, 2U}) EXPECT_EQ(first.getNewSharedInstanceID(), id);
    first.getRefInstanceArray()->add(object);
    first.getRefInstanceDictionary()->enter(object, 7);
    second.copySharedRefData(&first);
    first.clearSharedRefs();

    unsigned int id = 99;
    EXPECT_EQ(first.getRefInstanceArray()->getCount(), 0U);
    EXPECT_FALSE(first.getRefInstanceDictionary()->find(object, id));
    EXPECT_EQ(first.getNewSharedInstanceID(), 0U);
    EXPECT_EQ(second.getRefInstanceArray()->get(0), object.get());
    EXPECT_TRUE(second.getRefInstanceDictionary()->find(object, id));
    EXPECT_EQ(id, 7U);
    EXPECT_EQ(second.getNewSharedInstanceID(), 3U);
}

} // namespace
