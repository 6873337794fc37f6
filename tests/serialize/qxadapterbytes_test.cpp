// SPDX-License-Identifier: see LICENSE

#include "serialize/qxadapterbytes.h"

#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxtestfolder.h"
#include "qxteststream.h"

#include <gtest/gtest.h>

namespace
{

std::string borrow(qxSerializeAdapter& adapter, unsigned int wanted)
{
    const auto bytes = qxAdapterBytes::borrow(adapter, wanted);
    return {bytes.begin(), bytes.end()};
}

/// What every adapter that lends must do, over the bytes "0123456789".
void checkLending(qxSerializeAdapter& adapter)
{
    EXPECT_EQ(borrow(adapter, 4), "0123");
    EXPECT_EQ(adapter.length(), 10U); // nothing is consumed yet
    qxAdapterBytes::consume(adapter, 2);
    EXPECT_EQ(adapter.length(), 8U);
    EXPECT_EQ(adapter.read(), '2');
    EXPECT_EQ(readBlock(adapter, 2), "34");

    adapter.pushBack('x');
    EXPECT_EQ(borrow(adapter, 4), ""); // bytes given back come first
    EXPECT_EQ(adapter.read(), 'x');
    EXPECT_EQ(borrow(adapter, 100), "56789");
    qxAdapterBytes::consume(adapter, 5);
    EXPECT_EQ(borrow(adapter, 1), "");
    EXPECT_EQ(adapter.hasData(), 0);
    EXPECT_FALSE(adapter.hasError());
}

TEST(qxAdapterBytes, memoryLendsItsBlock)
{
    char block[] = "0123456789";
    qxSerializeAdapterMemory memory(block, 10);
    checkLending(memory);

    memory.seek(8, QX_ORIGIN_START);
    EXPECT_EQ(qxAdapterBytes::borrow(memory, 9).data(), reinterpret_cast<unsigned char*>(block) + 8);
    char other[] = "ab";
    memory.reset(other, 2);
    EXPECT_EQ(borrow(memory, 9), "ab");
    memory.flush();
    EXPECT_EQ(borrow(memory, 9), "");
}

TEST(qxAdapterBytes, filesLendTheirQueueAndInSeekModeNoMoreThanAskedFor)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "0123456789").c_str());
    checkLending(file);
    file.seek(0, QX_ORIGIN_START);
    file.setSeekMode(1);
    EXPECT_EQ(borrow(file, 4), "0123");
    EXPECT_EQ(borrow(file, 6), "0123"); // until these are consumed
    qxAdapterBytes::consume(file, 4);
    EXPECT_EQ(borrow(file, 100), "456789");
}

TEST(qxAdapterBytes, othersLendNothing)
{
    const TestFolder folder;
    TestBlock stream("abc");
    EXPECT_EQ(borrow(stream, 3), "");
    qxSerializeAdapterFile writing(folder.name("a").c_str(), QX_SERIALIZE_OUTPUT);
    writing.write("abc", 3);
    EXPECT_EQ(borrow(writing, 3), "");
    qxSerializeAdapterFile missing(folder.name("b").c_str());
    EXPECT_EQ(borrow(missing, 3), "");

    char block[] = "abc";
    InvertedStream<qxSerializeAdapterMemory> decoding(block, 3U);
    EXPECT_EQ(borrow(decoding, 3), "");
    decoding.read();
    EXPECT_EQ(borrow(decoding, 3), "");
}

} // namespace
