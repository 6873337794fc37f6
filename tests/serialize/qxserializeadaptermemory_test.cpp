// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"

#include "qxteststream.h"
#include "qxtestsupport.h"

#include <cstdlib>
#include <limits>

namespace
{

/// A block of memory with an adapter over it.
class qxSerializeAdapterMemoryTest : public testing::Test
{
protected:
    explicit qxSerializeAdapterMemoryTest(std::string content = "abcd")
        : block(std::move(content)), adapter(block.data(), static_cast<unsigned int>(block.size()))
    {}

    ~qxSerializeAdapterMemoryTest() noexcept override {}

    std::string takeError()
    {
        const std::string error = adapter.getError().getString();
        adapter.setError("");
        return error;
    }

    std::string block;
    qxSerializeAdapterMemory adapter;
};

TEST_F(qxSerializeAdapterMemoryTest, readsAndWritesAtOnePosition)
{
    EXPECT_EQ(adapter.canSeek(), 1);
    EXPECT_EQ(adapter.supportAction(QX_SERIALIZE_OUTPUT), 1);
    EXPECT_EQ(adapter.supportAction(QX_SERIALIZE_INPUT), 1);
    adapter.setSeekMode(1); // means nothing here
    EXPECT_EQ(adapter.read(), 'a');
    adapter.write('X');
    EXPECT_EQ(adapter.read(), 'c');
    EXPECT_EQ(adapter.getCurrentPos(), 3U);
    EXPECT_EQ(adapter.getCurrentAddress(), block.data() + 3);
    EXPECT_EQ(adapter.length(), 1U);
    EXPECT_EQ(block, "aXcd");
}

TEST_F(qxSerializeAdapterMemoryTest, readsUpToItsEnd)
{
    EXPECT_EQ(adapter.hasData(4), 1);
    EXPECT_EQ(adapter.hasData(5), 0);
    EXPECT_EQ(takeError(), ""); // asking is no reading
    EXPECT_EQ(readBlock(adapter, 8), "abcd");
    EXPECT_EQ(takeError(), "Memory Adapter read beyond end");
    EXPECT_EQ(adapter.read(), 0);
    EXPECT_EQ(takeError(), "Memory Adapter read beyond end");
    EXPECT_EQ(adapter.getCurrentPos(), 4U);
}

TEST_F(qxSerializeAdapterMemoryTest, writesWhatFits)
{
    adapter.write('1');
    adapter.write("23", 2);
    EXPECT_EQ(takeError(), "");
    adapter.write("456", 3);
    EXPECT_EQ(takeError(), "Memory Adapter written beyond end");
    adapter.write('7');
    EXPECT_EQ(takeError(), "Memory Adapter written beyond end");
    EXPECT_EQ(block, "1234");
}

TEST_F(qxSerializeAdapterMemoryTest, seeksInsideTheBlock)
{
    constexpr qxUInt64 OUTSIDE = 0xFFFFFFFFFFFFFFFF;
    const qxInt64 lowest = std::numeric_limits<qxInt64>::min();
    const qxInt64 highest = std::numeric_limits<qxInt64>::max();
    const struct {
        qxInt64 offset;
        qxOriginPos origin;
        qxUInt64 result; // from position 2
        unsigned int position;
    } rows[] = {
        {4, 0, 4, 4},
        {0, 0, 0, 0},
        {1, 1, 3, 3},
        {-2, 1, 0, 0},
        {2, 1, 4, 4},
        {0, 2, 4, 4},
        {-4, 2, 0, 0},
        {7, 3, 2, 2}, // an unknown origin
        {5, 0, OUTSIDE, 2},
        {-1, 0, OUTSIDE, 2},
        {3, 1, OUTSIDE, 2},
        {-3, 1, OUTSIDE, 2},
        {1, 2, OUTSIDE, 2},
        {-5, 2, OUTSIDE, 2},
        {highest, 1, OUTSIDE, 2},
        {lowest, 2, OUTSIDE, 2},
        {0x100000000, 0, OUTSIDE, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.offset) + " from " + std::to_string(row.origin));
        adapter.reset(nullptr, 0);
        readBlock(adapter, 2);
        EXPECT_EQ(adapter.seek(row.offset, row.origin), row.result);
        EXPECT_EQ(adapter.getCurrentPos(), row.position);
        EXPECT_EQ(takeError(), row.result == OUTSIDE ? "Memory Adapter moved outside size" : "");
    }
}

TEST_F(qxSerializeAdapterMemoryTest, movesButNotToTheEnd)
{
    const struct {
        int delta;
        unsigned int position; // from position 2
        const char* error;
    } rows[] = {
        {0, 2, ""},
        {1, 3, ""},
        {-2, 0, ""},
        {2, 2, "Memory Adapter moved beyond end"},
        {-3, 2, "Memory Adapter moved beyond end"}, // wraps around
        {std::numeric_limits<int>::min(), 2, "Memory Adapter moved beyond end"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.delta);
        adapter.reset(nullptr, 0);
        readBlock(adapter, 2);
        adapter.move(row.delta);
        EXPECT_EQ(adapter.getCurrentPos(), row.position);
        EXPECT_EQ(takeError(), row.error);
    }
    adapter.seek(4, QX_ORIGIN_START);
    adapter.move(0);
    EXPECT_EQ(takeError(), "Memory Adapter moved beyond end");

    qxSerializeAdapterMemory huge(block.data(), 0xFFFFFFFF); // only its first bytes are there
    huge.read();
    huge.move(-3); // 4294967294
    EXPECT_STREQ(huge.getError(), "Memory Adapter moved before beginning");
    EXPECT_EQ(huge.getCurrentPos(), 1U);
}

TEST_F(qxSerializeAdapterMemoryTest, givingUpAPlaceDropsWhatWasGivenBack)
{
    adapter.pushBack('x');
    adapter.seek(1, QX_ORIGIN_START);
    EXPECT_EQ(adapter.read(), 'b');

    adapter.pushBack('x');
    adapter.seek(9, QX_ORIGIN_START); // fails and changes nothing
    EXPECT_EQ(adapter.read(), 'x');

    adapter.pushBack('x');
    adapter.reset(nullptr, 0);
    EXPECT_EQ(adapter.read(), 'a');
}

TEST_F(qxSerializeAdapterMemoryTest, resetTakesANewBlockAndFlushLeavesNone)
{
    char other[] = "123456";
    readBlock(adapter, 3);
    adapter.getNewSharedInstanceID();
    adapter.reset(nullptr, 77); // the block stays
    EXPECT_EQ(adapter.length(), 4U);
    EXPECT_EQ(adapter.getNewSharedInstanceID(), 0U);

    adapter.read();
    adapter.reset(other, 6);
    EXPECT_EQ(readBlock(adapter, 6), "123456");
    adapter.pushBack('y');
    adapter.flush();
    EXPECT_EQ(adapter.length(), 0U);
    EXPECT_EQ(adapter.getCurrentPos(), 0U);
    EXPECT_EQ(adapter.checksum(), 0);
    adapter.write('z');
    EXPECT_STREQ(other, "123456");
}

TEST(qxSerializeAdapterMemory, sumsTheWholeBlock)
{
    unsigned char bytes[] = {0xFF, 0xFF, 0x02};
    qxSerializeAdapterMemory adapter(bytes, 3);
    adapter.read();
    EXPECT_EQ(adapter.checksum(), 0x0200);

    std::string large(300, '\xFF');
    EXPECT_EQ(qxSerializeAdapterMemory(large.data(), 300).checksum(), (300 * 255) % 65536);
}

TEST(qxSerializeAdapterMemory, freesTheBlockWhenTold)
{
    void* const block = std::malloc(4); // the leak check and the double free check are the test
    qxSerializeAdapterMemory owner(block, 4);
    const qxSerializeAdapterMemory user(block, 4);
    EXPECT_EQ(owner.getDeleteMemOnDestruction(), 0);
    owner.setDeleteMemOnDestruction(1);
    EXPECT_EQ(owner.getDeleteMemOnDestruction(), 1);
}

TEST(qxSerializeAdapterMemory, anEmptyBlockHasNoData)
{
    qxSerializeAdapterMemory adapter(nullptr, 0);
    EXPECT_EQ(adapter.length(), 0U);
    EXPECT_EQ(adapter.hasData(), 0);
    EXPECT_EQ(adapter.read(), 0);
    EXPECT_EQ(adapter.checksum(), 0);
    EXPECT_EQ(adapter.seek(0, QX_ORIGIN_END), 0U);
    adapter.write('x');
    EXPECT_STREQ(adapter.getError(), "Memory Adapter written beyond end");
}

TEST_F(qxSerializeAdapterMemoryTest, writesIntoWhatItReadsAndReadsWhatItWrote)
{
    adapter.write("AB", 2);
    adapter.seek(0, QX_ORIGIN_START);
    adapter.write(adapter.read());
    EXPECT_EQ(block, "AAcd");
    adapter.seek(0, QX_ORIGIN_START);
    adapter.write("x", 1);
    adapter.write(block.data(), 3); // bytes that it writes over
    EXPECT_EQ(block, "xxAc");
    EXPECT_EQ(takeError(), "");
    adapter.write("y", 1);
    EXPECT_EQ(takeError(), "Memory Adapter written beyond end");
}

TEST_F(qxSerializeAdapterMemoryTest, writesNothingOutsideANewBlock)
{
    std::string other = "123";
    adapter.write('1');
    adapter.reset(other.data(), 2);
    adapter.write("abcd", 4);
    EXPECT_EQ(other, "ab3");
    EXPECT_EQ(block, "1bcd");
}

/// Writes every byte twice.
class DoubledBlock final : public qxSerializeAdapterMemory
{
public:
    using qxSerializeAdapterMemory::qxSerializeAdapterMemory;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        for (unsigned int i = 0; i < count; ++i) write_imp(bytes[i]);
    }
    void write_imp(unsigned char byte) override
    {
        unsigned char twice[] = {byte, byte};
        qxSerializeAdapterMemory::write_imp(twice, 2);
    }
};

TEST(qxSerializeAdapterMemory, aDerivedClassGetsEveryByteThatIsWritten)
{
    std::string block = "........";
    DoubledBlock adapter(block.data(), 8);
    adapter.write('a');
    writeText(adapter, "bc");
    adapter.write('d');
    EXPECT_EQ(block, "aabbccdd");
}

TEST(qxSerializeAdapterMemory, aDerivedClassSeesEveryByte)
{
    unsigned char bytes[] = {0xFE, 0xFD, 0xFC};
    InvertedStream<qxSerializeAdapterMemory> adapter(bytes, 3U);
    EXPECT_EQ(readAll(adapter), "\1\2\3");
}

} // namespace
