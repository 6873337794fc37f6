// SPDX-License-Identifier: see LICENSE

#include "qxthreadtest.h"

#include "qxguard.h"

#include <atomic>

namespace
{

constexpr unsigned int ROUNDS = 10000;

TEST(qxThread, tellsItsStateAtEveryStep)
{
    TestThread thread([](TestThread& self) {
        while (!self.isStopping(0)) qxThread::qxDelayFunction(1);
    });
    const auto state = [&] { return std::pair(int{thread.isRunning(0)}, int{thread.isStopping(0)}); };
    const std::pair idle(0, 0), running(1, 0), stopping(0, 1);

    EXPECT_EQ(state(), idle);
    for (const bool wait : {false, true}) {
        thread.run(wait);
        EXPECT_EQ(state(), running);
        thread.stop(1);
        EXPECT_EQ(state(), stopping);
    }
}

TEST(qxThread, stopWithoutWaitingOnlyAsks)
{
    std::atomic<bool> mayEnd{false};
    TestThread thread([&](TestThread& self) {
        while (!mayEnd) qxThread::qxDelayFunction(1);
        EXPECT_EQ(self.isStopping(0), 1);
    });
    thread.run(1);

    thread.stop(0);
    EXPECT_EQ(thread.isRunning(0), 1);
    mayEnd = true;
    thread.stop(1);
    EXPECT_EQ(thread.isRunning(0), 0);
}

TEST(qxThread, stoppingAnIdleOneTakesAMillisecond)
{
    TestThread thread([](TestThread&) {});
    EXPECT_GE(secondsOf([&] { thread.stop(1); }), 0.001);
    EXPECT_EQ(thread.isStopping(0), 1);
}

TEST(qxThread, aRunningOneIsNotStartedTwice)
{
    std::atomic<int> starts{0};
    TestLatch mayEnd(1);
    TestThread thread([&](TestThread&) {
        ++starts;
        mayEnd.wait();
    });
    thread.run(1);
    const unsigned int id = thread.getThreadInfo().threadId;

    EXPECT_EQ(thread.run(1), 1);
    EXPECT_EQ(thread.run(0), 1);
    EXPECT_EQ(thread.chain(), 0);
    EXPECT_EQ(thread.getThreadInfo().threadId, id);
    mayEnd.countDown();
    thread.stop(1);
    EXPECT_EQ(starts, 1);
}

TEST(qxThread, knowsItsThreadWhenRunReturns)
{
    std::atomic<unsigned int> id{0};
    TestThread thread([&](TestThread&) { id = qxThread::getThreadID(); });
    EXPECT_EQ(thread.getThreadInfo().threadId, 0U);
    EXPECT_EQ(thread.getThreadInfo().threadHandle, nullptr);

    for (const bool wait : {false, true}) {
        thread.run(wait);
        const qxThreadInfo info = thread.getThreadInfo();
        thread.awaitEnd();
        EXPECT_EQ(info.threadId, id);
        EXPECT_NE(info.threadId, qxThread::getThreadID());
        EXPECT_NE(info.threadHandle, nullptr);
    }
}

// The body may be over before anybody has seen it run.
TEST(qxThread, waitingForTheStartOfAShortBodyTakesNoSecond)
{
    for (int i = 0; i < 20; ++i) {
        TestThread thread([](TestThread&) {});
        EXPECT_LT(secondsOf([&] { thread.run(1); }), 0.9);
        EXPECT_TRUE(comesTrue([&] { return thread.isRunning(0) == 0; }));
    }
}

TEST(qxThread, runsTenThousandTimes)
{
    std::atomic<unsigned int> runs{0};
    TestThread thread([&](TestThread&) { ++runs; });
    for (unsigned int i = 0; i < ROUNDS; ++i) {
        ASSERT_EQ(thread.run(0), 1);
        thread.awaitEnd();
    }
    EXPECT_EQ(runs, ROUNDS);
}

TEST(qxThread, chainRunsTheBodyOnTheCaller)
{
    unsigned int id = 0;
    int wasRunning = 0;
    TestThread thread([&](TestThread& self) {
        id = qxThread::getThreadID();
        wasRunning = self.isRunning(0);
        self.stop(1); // its own thread does not wait for itself
    });
    EXPECT_EQ(thread.chain(), 1);

    EXPECT_EQ(id, qxThread::getThreadID());
    EXPECT_EQ(wasRunning, 1);
    EXPECT_EQ(thread.isRunning(0), 0);
    EXPECT_EQ(thread.isStopping(0), 1);
    EXPECT_EQ(thread.getThreadInfo().threadId, id);
    EXPECT_EQ(thread.getThreadInfo().threadHandle, nullptr);
}

// Its operations in their forms for callers that hold the lock.
class LockedThread : public TestThread
{
public:
    using TestThread::TestThread;
    ~LockedThread() noexcept(false) override { qxThread::stop(1); }

    std::string workThrough()
    {
        const qxBodyGuard guard(m_lock);
        std::string results;
        const auto note = [&](int result) { results += static_cast<char>('0' + result); };
        note(run_unsafe(1));
        note(isRunning_unsafe(1));
        note(isStopping_unsafe(1));
        note(chain_unsafe());
        tickAlive_unsafe();
        stop_unsafe(1);
        note(isRunning_unsafe(0));
        note(isStopping_unsafe(0));
        note(chain_unsafe());
        kill_unsafe();
        return results;
    }
};

TEST(qxThread, worksWithItsLockHeld)
{
    LockedThread thread([](TestThread& self) {
        while (!self.isStopping(1) && self.getThreadInfo().threadHandle) qxThread::qxDelayFunction(1);
    });
    EXPECT_EQ(thread.workThrough(), "1100011");
}

TEST(qxThread, theDefaultBodyWaitsToBeStopped)
{
    qxThread thread;
    thread.run(1);
    EXPECT_EQ(thread.isRunning(0), 1);
    thread.stop(1);
    EXPECT_EQ(thread.isRunning(0), 0);
}

TEST(qxThread, countsWorkingThreads)
{
    const unsigned int before = settledWorkingCount();
    TestThread thread([&](TestThread& self) {
        EXPECT_EQ(qxThread::getWorkingCount(), before + 1);
        for (const bool on : {true, false, false, true, true, false}) {
            self.working(on);
            EXPECT_EQ(qxThread::getWorkingCount(), before + on);
        }
    });
    thread.run(0);
    thread.awaitEnd();
    thread.chain();
    EXPECT_EQ(qxThread::getWorkingCount(), before);
}

TEST(qxThread, givesItsNumberBackAtTheEnd)
{
    unsigned int number = 0;
    TestThread thread([&](TestThread&) { number = qxThread::getThreadEnum(0); });
    thread.run(0);
    thread.awaitEnd();
    // Another thread that begins its search there finds the place free.
    EXPECT_EQ(qxThread::getThreadEnum(freshId(number)), number);
}

TEST(qxThread, keepsATickLimitAboveZeroOnly)
{
    qxThread thread;
    EXPECT_EQ(thread.getTickLimit(), 0.0);
    for (const double seconds : {2.5, 0.0, 1e9, -1.0}) {
        thread.setTickLimit(seconds);
        EXPECT_EQ(thread.getTickLimit(), seconds > 0.0 ? seconds : 0.0);
    }
}

} // namespace
