// SPDX-License-Identifier: see LICENSE

#include "qxthreadtest.h"

#include "qxevent.h"
#include "qxmemory.h"
#include "qxtime.h"

#include <atomic>

// An ended thread keeps its stack on some systems, so the ways to end one are few and each is taken as seldom as makes
// sense.

namespace
{

void sleepForEver(TestThread&)
{
    for (;;) qxThread::qxDelayFunction(20);
}

TEST(qxThreadKill, endsABodyThatNeverLooks)
{
    inOwnProcess([] {
        const unsigned int working = settledWorkingCount();
        std::atomic<unsigned int> number{10000};
        TestThread thread([&](TestThread& self) {
            number = qxThread::getThreadEnum(0);
            try {
                sleepForEver(self);
            } catch (...) { // nothing gets this far
            }
        });
        thread.run(1);
        ASSERT_TRUE(comesTrue([&] { return number != 10000; }));

        thread.kill();

        EXPECT_EQ(thread.isRunning(0), 0);
        EXPECT_EQ(thread.isStopping(0), 1);
        EXPECT_EQ(qxThread::getWorkingCount(), working);
        EXPECT_EQ(qxThread::getThreadEnum(freshId(number)), number); // it is free again
        thread.stop(1);
        thread.kill(); // nobody is there
    });
}

// Loops without a sleep, the first one without a single call: only the system can end them.
TEST(qxThreadKillBusy, endsABodyThatNeverSleeps)
{
    inOwnProcess([] {
        std::atomic<unsigned long> rounds{0};
        const std::function<void(TestThread&)> bodies[] = {
            [&](TestThread&) {
                for (;;) rounds.fetch_add(1, std::memory_order_relaxed);
            },
            [&](TestThread& self) {
                for (;; ++rounds) self.isStopping(1);
            },
        };
        for (const auto& body : bodies) {
            rounds = 0;
            TestThread thread(body);
            thread.run(1);
            ASSERT_TRUE(comesTrue([&] { return rounds != 0; }));

            thread.kill();
            const unsigned long atTheEnd = rounds;
            qxThread::qxDelayFunction(5);
            EXPECT_EQ(rounds, atTheEnd);
        }
    });
}

TEST(qxThreadKill, aBodyMayEndItselfAndRunAgain)
{
    inOwnProcess([] {
        const unsigned int working = settledWorkingCount();
        std::atomic<int> runs{0};
        std::atomic<int> ends{0};
        TestThread thread([&](TestThread& self) {
            if (++runs == 1) self.kill();
            ++ends;
        });
        thread.run(0);
        thread.awaitEnd();
        EXPECT_EQ(thread.isStopping(0), 1);
        EXPECT_EQ(qxThread::getWorkingCount(), working);
        thread.stop(1);
        EXPECT_EQ(ends, 0);

        thread.run(0);
        thread.awaitEnd();
        EXPECT_EQ(runs, 2);
        EXPECT_EQ(ends, 1);
    });
}

TEST(qxThreadKill, leavesAMessageAndTheHeapInOrder)
{
    inOwnProcess([] {
        const MessageRecorder recorder;
        std::atomic<unsigned int> rounds{0};
        TestThread thread([&](TestThread&) {
            for (;; ++rounds) {
                qx_free(qx_malloc(rounds % 2000));
                qxMessage::message(QX_LEVEL_WARNING, "round %d", rounds.load());
            }
        });
        thread.run(1);
        ASSERT_TRUE(comesTrue([&] { return rounds > 10; }));
        thread.kill();

        qxMessage::message(QX_LEVEL_WARNING, "the last");
        EXPECT_EQ(recorder.texts().back(), "the last");
        EXPECT_NE(onAnotherThread([] {
                      void* const memory = qx_malloc(100000);
                      qx_free(memory);
                      return memory;
                  }),
                  nullptr);
    });
}

TEST(qxThreadKill, leavesTheLockOfAnEventToOthers)
{
    inOwnProcess([] {
        qxEvent event;
        TestThread thread([&](TestThread& self) {
            event.wait(1, 0);
            sleepForEver(self);
        });
        thread.run(1);
        qxThread::qxDelayFunction(3);
        thread.kill();
        EXPECT_EQ(event.tryLock(), 1);
        event.unLock();
    });
}

class Watched : public testing::TestWithParam<int>
{
protected:
    // Asks in one of the four ways that look at the watchdog.
    static void ask(qxThread& thread)
    {
        switch (GetParam()) {
        case 0:
            return thread.tickAlive();
        case 1:
            thread.isRunning(1);
            return;
        case 2:
            thread.isStopping(1);
            return;
        default:
            return thread.stop(1);
        }
    }
};

TEST_P(Watched, endsABodyThatIsLate)
{
    inOwnProcess([] {
        TestThread thread(sleepForEver);
        thread.setTickLimit(0.02);
        thread.run(1);
        qxThread::qxDelayFunction(40);

        ask(thread);
        EXPECT_EQ(thread.isRunning(0), 0);
    });
}

INSTANTIATE_TEST_SUITE_P(qxThreadKill, Watched, testing::Range(0, 4));

TEST(qxThreadKill, theWatchdogLeavesOthersAlone)
{
    std::atomic<bool> mayEnd{false};
    TestThread thread([&](TestThread& self) {
        while (!mayEnd) {
            self.tickAlive();
            qxThread::qxDelayFunction(1);
        }
    });
    thread.tickAlive(); // never run
    thread.setTickLimit(5.0);
    thread.run(0);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(thread.isRunning(1), 1); // fresh, then alive
    mayEnd = true;
    thread.awaitEnd();
    thread.setTickLimit(1e-9);
    thread.tickAlive(); // over
    EXPECT_EQ(thread.chain(), 1);
}

} // namespace
