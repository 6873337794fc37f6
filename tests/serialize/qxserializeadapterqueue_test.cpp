// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterqueue.h"

#include "qxteststream.h"
#include "qxtestsupport.h"

#include <algorithm>
#include <deque>

namespace
{

TEST(qxSerializeAdapterQueue, givesBytesInTheirOrder)
{
    // Sizes around those of the pieces, in a pattern that leaves the queue full, half full and empty.
    qxSerializeAdapterQueue queue;
    std::deque<char> expected;
    unsigned int value = 1;
    for (unsigned int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        value = value * 1103515245U + 12345U;
        std::string text((value >> 8) % 40000, '\0');
        for (char& c : text) c = static_cast<char>((value = value * 69069U + 1U) >> 24);
        if (round % 5 == 4) text.resize(1);
        writeText(queue, text);
        expected.insert(expected.end(), text.begin(), text.end());
        ASSERT_EQ(queue.length(), expected.size());

        const std::size_t wanted = round % 7 == 6 ? expected.size() + 1 : (value >> 10) % 40000;
        const std::string got = readBlock(queue, static_cast<unsigned int>(wanted));
        ASSERT_EQ(got.size(), std::min(wanted, expected.size()));
        ASSERT_TRUE(std::equal(got.begin(), got.end(), expected.begin()));
        expected.erase(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(got.size()));
    }
    EXPECT_EQ(readAll(queue), std::string(expected.begin(), expected.end()));
    EXPECT_FALSE(queue.hasError());
}

TEST(qxSerializeAdapterQueue, bytesGivenBackComeFirst)
{
    qxSerializeAdapterQueue queue;
    writeText(queue, "cd");
    pushBackText(queue, "ab");
    EXPECT_TRUE(queue.hasData(4));
    EXPECT_FALSE(queue.hasData(5));
    writeText(queue, "ef");
    EXPECT_EQ(readAll(queue), "abcdef");
}

TEST(qxSerializeAdapterQueue, holdsNoMoreThanItsLargestSize)
{
    qxSerializeAdapterQueue queue(20000);
    writeText(queue, std::string(19999, 'x'));
    EXPECT_FALSE(queue.hasError());
    writeText(queue, "yz");
    EXPECT_STREQ(queue.getError(), "Queue Adapter written beyond its largest size");
    EXPECT_EQ(queue.length(), 20000U);
    queue.setError("");
    std::string all(20000, 'x');
    all.back() = 'y';
    EXPECT_EQ(readBlock(queue, 20000), all);
    writeText(queue, "z");
    EXPECT_FALSE(queue.hasError());
    queue.clear();
    EXPECT_EQ(queue.length(), 0U);
}

TEST(qxSerializeAdapterQueue, anEmptyQueueHasNoByte)
{
    qxSerializeAdapterQueue queue;
    EXPECT_EQ(readBlock(queue, 3), "");
    EXPECT_FALSE(queue.hasError());
    EXPECT_EQ(queue.read(), 0);
    EXPECT_STREQ(queue.getError(), "Queue Adapter read beyond end");
}

TEST(qxSerializeAdapterQueue, aDerivedReadIsNotPassedBy)
{
    InvertedStream<qxSerializeAdapterQueue> queue;
    writeText(queue, "\xF0\x0F");
    EXPECT_EQ(readAll(queue), "\x0F\xF0");
}

} // namespace
