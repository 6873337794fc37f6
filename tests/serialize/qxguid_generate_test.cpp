// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"

#include "qxtestsupport.h"
#include "qxthread.h"
#include "serialize/qxguidtimestamps.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace
{

// What a time-based GUID counts: steps of 100 ns since 1582.
qxUInt64 timestampOf(const qxGUID& guid)
{
    qxUInt64 first;
    qxUInt64 second;
    guid.getGUID(first, second);
    return first & 0x0FFFFFFFFFFFFFFF;
}

unsigned int sequenceOf(const qxGUID& guid)
{
    return static_cast<unsigned int>(guid.getConstGUID().Data4[0] << 8 | guid.getConstGUID().Data4[1]);
}

std::string nodeOf(const qxGUID& guid)
{
    return guid.asString().right(13).getString();
}

/// What `count` threads at once got from `generate`, each `each` times.
template <class Generate>
std::vector<std::vector<qxGUID>> generateOnThreads(unsigned int count, unsigned int each, Generate generate)
{
    std::vector<std::vector<qxGUID>> made(count);
    onThreads(count, [&](unsigned int number) {
        for (unsigned int i = 0; i < each; ++i) made[number].push_back(generate());
    });
    return made;
}

bool areAllDifferent(const std::vector<std::vector<qxGUID>>& made)
{
    std::vector<qxGUID> all;
    for (const std::vector<qxGUID>& some : made) all.insert(all.end(), some.begin(), some.end());
    std::sort(all.begin(), all.end());
    return std::adjacent_find(all.begin(), all.end()) == all.end();
}

TEST(qxGUIDGeneration, growsOnOneThread)
{
    qxGUID before = qxGUID::generateGUID();
    for (int i = 0; i < 1000; ++i) {
        const qxGUID guid = qxGUID::generateGUID();
        ASSERT_TRUE(guid.isTimeBased());
        ASSERT_GT(timestampOf(guid), timestampOf(before));
        before = guid;
    }
}

TEST(qxGUIDGeneration, neverTakesATimestampTwiceForTheSameBitsOfAThread)
{
    const auto timestamps = std::make_unique<qxGuidTimestamps>();
    const struct {
        const char* name;
        unsigned int slot;
        unsigned int threadID;
        qxUInt64 now;
        qxUInt64 taken;
    } rows[] = {
        {"the first", 7, 100, 5000, 5000},
        {"again at this time", 7, 100, 5000, 5001},
        {"the clock went back", 7, 100, 10, 5002},
        {"another thread", 8, 101, 5000, 5000},
        {"an id that shares the low 14 bits", 9, 100 + 16384, 5000, 5003},
        {"the first thread, which must not meet it", 7, 100, 5000, 5004},
        {"later", 7, 100, 6000, 6000},
        {"a new thread in a slot that was used", 7, 300, 5000, 6001},
        {"no slot", 10000, 400, 5000, 5000},
        {"another one without", 10000, 401, 5000, 5001},
        {"a slot that cannot be", 0xFFFFFFFF, 402, 5000, 5002},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(timestamps->take(row.slot, row.threadID, row.now), row.taken);
    }
}

TEST(qxGUIDGeneration, holdsThreadAndMachine)
{
    const qxGUID own = qxGUID::generateGUID();
    EXPECT_EQ(sequenceOf(own), (qxThread::getThreadID() & 0x3FFFU) | 0x8000U);
    EXPECT_NE(nodeOf(own), "000000000000}");

    qxGUID other = own;
    const unsigned int id = onAnotherThread([&] {
        other.generate();
        return qxThread::getThreadID();
    });
    EXPECT_EQ(sequenceOf(other), (id & 0x3FFFU) | 0x8000U);
    EXPECT_EQ(nodeOf(other), nodeOf(own));
    EXPECT_NE(other, own);
}

TEST(qxGUIDGeneration, tellsWhenItWasMade)
{
    qxThread::qxDelayFunction(5); // after many at once timestamps may be ahead of the clock
    const double before = qxTime::systemSeconds();
    const qxGUID guid = qxGUID::generateGUID();
    const double after = qxTime::systemSeconds();
    constexpr double step = 2e-6; // numbers of this size hold no more
    EXPECT_GE(guid.getGenerationTime(), before - step);
    EXPECT_LE(guid.getGenerationTime(), after + step);
}

TEST(qxGUIDGeneration, knowsTheTimeOfTimeBasedOnesOnly)
{
    // 122192928000000000 steps lie between 1582-10-15 and 1970.
    EXPECT_EQ(qxGUID("13814000-1DD2-11B2-8000-000000000000").getGenerationTime().seconds(), 0.0);
    EXPECT_EQ(qxGUID("1419D680-1DD2-11B2-8000-000000000000").getGenerationTime().seconds(), 1.0);
    EXPECT_EQ(qxGUID("00000000-0000-1000-8000-000000000000").getGenerationTime().seconds(), -12219292800.0);
    EXPECT_EQ(qxGUID("1419D680-1DD2-41B2-8000-000000000000").getGenerationTime().seconds(), 0.0);
    EXPECT_EQ(qxGUID().getGenerationTime().seconds(), 0.0);
}

TEST(qxGUIDGeneration, makesDifferentOnesOnManyThreadsAtOnce)
{
    const auto made = generateOnThreads(16, 2000, qxGUID::generateGUID);
    EXPECT_TRUE(areAllDifferent(made));
    for (const std::vector<qxGUID>& some : made) {
        const auto isNotLater = [](const qxGUID& a, const qxGUID& b) {
            return timestampOf(b) <= timestampOf(a);
        };
        EXPECT_EQ(std::adjacent_find(some.begin(), some.end(), isNotLater), some.end());
    }
}

TEST(qxGUIDGeneration, randomOnesVaryInEveryBitButThoseOfTheirKind)
{
    qxUInt64 set[2] = {0, 0};
    qxUInt64 clear[2] = {0, 0};
    for (int i = 0; i < 300; ++i) {
        qxUInt64 halves[2];
        qxGUID::generateGUID4().getGUID(halves[0], halves[1]);
        for (int half = 0; half < 2; ++half) {
            set[half] |= halves[half];
            clear[half] |= ~halves[half];
        }
    }
    EXPECT_EQ(set[0], 0x4FFFFFFFFFFFFFFFU);
    EXPECT_EQ(clear[0], 0xBFFFFFFFFFFFFFFFU);
    EXPECT_EQ(set[1], 0xFFFFFFFFFFFFFFBFU);
    EXPECT_EQ(clear[1], 0xFFFFFFFFFFFFFF7FU);
}

TEST(qxGUIDGeneration, sortableOnesStandInTheirOrder)
{
    std::string before;
    for (int i = 0; i < 10000; ++i) {
        const std::string text = qxGUID::generateGUID7().asString().getString();
        ASSERT_GT(text, before);
        ASSERT_EQ(text[15], '7');
        ASSERT_NE(std::string("89AB").find(text[20]), std::string::npos) << text;
        before = text;
    }
    EXPECT_TRUE(areAllDifferent(generateOnThreads(4, 1000, qxGUID::generateGUID7)));
}

TEST(qxGUIDGeneration, sortableOnesBeginWithTheMillisecond)
{
    qxThread::qxDelayFunction(5); // as above
    const double before = qxTime::systemSeconds();
    const qxGUIDRecord record = qxGUID::generateGUID7();
    const double after = qxTime::systemSeconds();
    const double seconds = (record.Data1 * 65536.0 + record.Data2) * 1e-3;
    EXPECT_GT(seconds, before - 0.0011);
    EXPECT_LE(seconds, after + 1e-6);
}

} // namespace
