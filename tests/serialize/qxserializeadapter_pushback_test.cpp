// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxteststream.h"
#include "qxtestsupport.h"

namespace
{

TEST(qxSerializeAdapterPushBack, comesBeforeTheStreamInTheOrderOfItsMode)
{
    const struct {
        unsigned char mode;
        const char* read;
    } rows[] = {{0, "123bayz"}, {1, "ab123yz"}}; // a block is read in its own order either way
    for (const auto& row : rows) {
        SCOPED_TRACE(row.read);
        TestBlock stream("yz");
        stream.setPushBackMode(row.mode);
        stream.pushBack('a');
        stream.pushBack('b');
        pushBackText(stream, "123");
        EXPECT_EQ(stream.getPushBackCount(), 5U);
        EXPECT_EQ(stream.length(), 7U);
        EXPECT_EQ(stream.read(), row.read[0]);
        EXPECT_EQ(stream.length(), 6U);
        EXPECT_EQ(readBlock(stream, 9), row.read + 1);
    }
}

TEST(qxSerializeAdapterPushBack, flushEmptiesTheStoreAndKeepsItsMemory)
{
    TestBlock stream("xyz");
    pushBackText(stream, "ab");
    stream.flush();
    EXPECT_EQ(stream.length(), 3U);
    EXPECT_EQ(stream.getPushBackCapacity(), 8U);
    EXPECT_EQ(readAll(stream), "xyz");
}

TEST(qxSerializeAdapterPushBack, theCapacityGrowsInSteps)
{
    const struct {
        unsigned int announced; // to allocPushBack, when there is one byte; 0: not called
        unsigned int count;     // bytes given back in all
        unsigned int capacity;
    } rows[] = {
        {0, 1, 8},    {0, 8, 8},  {0, 9, 16},
        {0, 17, 24},  {20, 2, 8}, {20, 9, 21},
        {20, 22, 42}, {3, 9, 16}, {0xFFFFFFFF, 9, 0xFFFFFFFF},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.announced) + " " + std::to_string(row.count));
        for (const bool asBlock : {false, true}) {
            TestStream stream;
            stream.pushBack('0');
            if (row.announced > 0) stream.allocPushBack(row.announced);
            if (asBlock) pushBackText(stream, std::string(row.count - 1, 'x'));
            while (stream.getPushBackCount() < row.count) stream.pushBack('x');
            EXPECT_EQ(stream.getPushBackCapacity(), row.capacity);
        }
    }
}

TEST(qxSerializeAdapterPushBack, aLongQueueDoesNotGrowWhileItIsUsed)
{
    TestStream stream;
    stream.setPushBackMode(1);
    pushBackText(stream, "abcdef");
    std::string read;
    for (int i = 0; i < 10000; ++i) {
        stream.pushBack(static_cast<unsigned char>('0' + i % 10));
        read += static_cast<char>(stream.read());
    }
    EXPECT_EQ(read.substr(0, 16), "abcdef0123456789");
    EXPECT_EQ(read.substr(9990), "4567890123");
    EXPECT_EQ(readBlock(stream, 6), "456789");
    EXPECT_LE(stream.getPushBackCapacity(), 16U);
}

TEST(qxSerializeAdapterPushBack, aMillionSingleBytesComeBack)
{
    TestStream stream;
    for (unsigned int i = 0; i < 1000000; ++i) stream.pushBack(static_cast<unsigned char>(i % 251));
    EXPECT_EQ(stream.getPushBackCapacity(), 1000000U);
    for (unsigned int i = 1000000; i > 0; --i) ASSERT_EQ(stream.read(), (i - 1) % 251);
    EXPECT_EQ(stream.hasData(), 0);
}

TEST(qxSerializeAdapterPushBack, theStreamsBytesComeBehindThoseGivenBack)
{
    for (const unsigned char mode : PUSH_BACK_MODES) {
        SCOPED_TRACE(int{mode});
        TestBlock stream("cdef");
        stream.setPushBackMode(mode);
        pushBackText(stream, "0ab");
        stream.read();
        stream.pushBackAdapterData();

        EXPECT_EQ(stream.content, "");
        EXPECT_EQ(stream.getPushBackCount(), 6U);
        EXPECT_EQ(readBlock(stream, 6), "abcdef");
    }
}

/// Reads blocks quickly, and before that takes another stream into that one's store.
class WrappingStream final : public TestBlock
{
public:
    WrappingStream(std::string text, qxSerializeAdapter& inner) : TestBlock(std::move(text)), m_inner(inner)
    {}

protected:
    using TestBlock::read_imp;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        m_inner.pushBackAdapterData();
        const std::size_t got = content.copy(reinterpret_cast<char*>(buffer), count);
        content.erase(0, got);
        return static_cast<unsigned int>(got);
    }

private:
    qxSerializeAdapter& m_inner;
};

TEST(qxSerializeAdapterPushBack, takesAllTheStreamSaysItHasAlsoInsideAnother)
{
    std::string content;
    for (int i = 0; i < 3000000; ++i) content += static_cast<char>(i % 253);
    TestBlock inner("inner");
    WrappingStream outer(content, inner);

    outer.pushBackAdapterData();
    EXPECT_EQ(outer.content, "");
    EXPECT_TRUE(readBlock(outer, 3000001) == content);
    EXPECT_EQ(readBlock(inner, 6), "inner");

    TestStream unknown("abc"); // says 0 bytes
    unknown.pushBackAdapterData();
    EXPECT_EQ(unknown.getPushBackCount(), 0U);
}

// Private members may be named where a template is instantiated explicitly: the one way to a broken store.
template <unsigned int qxSerializeAdapter::*HEAD>
struct BreakStore {
    friend void breakStore(qxSerializeAdapter& adapter) { adapter.*HEAD += 2; }
};
template struct BreakStore<&qxSerializeAdapter::m_head>;
void breakStore(qxSerializeAdapter& adapter);

TEST(qxSerializeAdapterPushBack, aBrokenStoreIsFatal)
{
    TestStream stream("abc");
    stream.pushBack('a');
    breakStore(stream);
    unsigned char buffer[4];
    EXPECT_EQ(fatalText([&] { stream.read(); }), "qxQueue:pop out of data");
    EXPECT_EQ(fatalText([&] { stream.read(buffer, 4); }), "qxQueue:pop out of data");
    EXPECT_EQ(fatalText([&] { stream.read(nullptr, 4); }), "qxQueue:pop out of data");
}

} // namespace
