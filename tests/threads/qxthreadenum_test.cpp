// SPDX-License-Identifier: see LICENSE

#include "qxthread.h"

#include "qxtestsupport.h"

#include <cstdlib>
#include <set>

namespace
{

constexpr unsigned int SLOTS = 10000;
constexpr unsigned int NO_SYSTEM_ID = 3000000000; // no system numbers its threads from here on

TEST(qxThreadEnum, livingThreadsHaveDifferentNumbersThatStay)
{
    constexpr unsigned int COUNT = 8;
    unsigned int numbers[COUNT] = {};
    TestLatch allAlive(COUNT);
    onThreads(COUNT, [&](unsigned int i) {
        numbers[i] = qxThread::getThreadEnum(0);
        EXPECT_LT(numbers[i], SLOTS);
        allAlive.countDownAndWait();
        EXPECT_EQ(qxThread::getThreadEnum(0), numbers[i]);
        EXPECT_EQ(qxThread::getThreadEnum(qxThread::getThreadID()), numbers[i]);
        EXPECT_EQ(onAnotherThread([id = qxThread::getThreadID()] { return qxThread::getThreadEnum(id); }),
                  numbers[i]);
    });
    EXPECT_EQ(std::set<unsigned int>(numbers, numbers + COUNT).size(), COUNT);
}

TEST(qxThreadEnum, aThreadKeepsItsNumberWhenTheOneBeforeItLeaves)
{
    unsigned int second = 0; // of a thread that wants the same number as the first
    unsigned int number = 0;
    onThreads(1, [&] {
        second = qxThread::getThreadID() + NO_SYSTEM_ID / SLOTS * SLOTS;
        const unsigned int first = qxThread::getThreadEnum(0);
        number = qxThread::getThreadEnum(second);
        EXPECT_NE(number, first);
    });
    EXPECT_EQ(qxThread::getThreadEnum(second), number);
}

TEST(qxThreadEnum, threadsThatTheLibraryHasNotStartedGiveTheirNumbersBack)
{
    std::set<unsigned int> numbers;
    for (unsigned int i = 0; i < SLOTS + 100; ++i)
        onThreads(1, [&] { numbers.insert(qxThread::getThreadEnum(0)); });
    EXPECT_EQ(numbers.count(SLOTS), 0U);
}

TEST(qxThreadEnum, tellsWhenThereIsNoneLeft)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto fill = [] {
        std::set<unsigned int> numbers;
        for (unsigned int i = 0; i < SLOTS; ++i) numbers.insert(qxThread::getThreadEnum(NO_SYSTEM_ID + i));
        const bool areAllTaken = numbers.size() == SLOTS && *numbers.rbegin() == SLOTS - 1;
        const bool isNoneLeft = qxThread::getThreadEnum(0) == SLOTS && qxThread::getThreadEnum(0) == SLOTS;
        const bool areKept = qxThread::getThreadEnum(NO_SYSTEM_ID) == NO_SYSTEM_ID % SLOTS;
        std::exit(areAllTaken && isNoneLeft && areKept ? 0 : 1);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

TEST(qxThreadEnum, threadsThatAskForTheSameOneAtOnceAgree)
{
    constexpr unsigned int COUNT = 4;
    unsigned int numbers[COUNT] = {};
    TestLatch allReady(COUNT);
    onThreads(COUNT, [&](unsigned int i) {
        allReady.countDownAndWait();
        numbers[i] = qxThread::getThreadEnum(NO_SYSTEM_ID + 17);
    });
    EXPECT_EQ(std::set<unsigned int>(numbers, numbers + COUNT).size(), 1U);
}

} // namespace
