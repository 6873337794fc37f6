// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformlock.h"

#include "platform/qxplatformclock.h"
#include "platform/qxplatformthread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <pthread.h>
#include <signal.h>

namespace
{

// A lock and a condition, and sleepers on threads of their own.
class qxPlatformCondition : public testing::Test
{
protected:
    qxPlatformCondition()
    {
        qxPlatformLockCreate(m_lock);
        qxPlatformConditionCreate(m_condition);
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, &m_before); // without SA_RESTART: it ends system calls
    }

    ~qxPlatformCondition() override
    {
        joinAll();
        qxPlatformConditionDestroy(m_condition);
        qxPlatformLockDestroy(m_lock);
        sigaction(SIGUSR1, &m_before, nullptr);
    }

    // Returns when the new thread sleeps: it holds the lock until then.
    void startSleeper(unsigned int milliseconds = QX_PLATFORM_NO_LIMIT)
    {
        const int before = m_asleep;
        m_threads.emplace_back([this, milliseconds] {
            qxPlatformLockEnter(m_lock);
            ++m_asleep;
            const bool woken = qxPlatformConditionSleep(m_condition, m_lock, milliseconds);
            ++(woken ? m_woken : m_timedOut);
            qxPlatformLockLeave(m_lock);
        });
        while (m_asleep == before) qxPlatformYield();
        qxPlatformLockEnter(m_lock);
        qxPlatformLockLeave(m_lock);
    }

    void waitForWoken(int count)
    {
        while (m_woken < count) qxPlatformYield();
    }

    // Makes every sleeper look whether it has been woken, and gives it the time to say so.
    void interruptSleepers()
    {
        for (std::thread& thread : m_threads) pthread_kill(thread.native_handle(), SIGUSR1);
        qxPlatformSleep(5);
    }

    void joinAll()
    {
        for (std::thread& thread : m_threads) thread.join();
        m_threads.clear();
    }

    alignas(8) unsigned char m_lock[QX_PLATFORM_LOCK_ROOM];
    alignas(8) unsigned char m_condition[QX_PLATFORM_CONDITION_ROOM];
    std::vector<std::thread> m_threads;
    std::atomic<int> m_asleep{0};
    std::atomic<int> m_woken{0};
    std::atomic<int> m_timedOut{0};
    struct sigaction m_before = {};
};

TEST(qxPlatformLock, keepsOtherThreadsOut)
{
    alignas(8) unsigned char lock[QX_PLATFORM_LOCK_ROOM];
    qxPlatformLockCreate(lock);
    int count = 0; // plain on purpose: only the lock guards it
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 10000; ++j) {
                qxPlatformLockEnter(lock);
                ++count;
                qxPlatformLockLeave(lock);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();

    EXPECT_EQ(count, 40000);
    qxPlatformLockDestroy(lock);
}

TEST(qxPlatformLock, tryEnterNeverWaitsNorRecurses)
{
    alignas(8) unsigned char lock[QX_PLATFORM_LOCK_ROOM];
    qxPlatformLockCreate(lock);

    EXPECT_TRUE(qxPlatformLockTryEnter(lock));
    EXPECT_FALSE(qxPlatformLockTryEnter(lock));
    qxPlatformLockLeave(lock);
    EXPECT_TRUE(qxPlatformLockTryEnter(lock));
    qxPlatformLockLeave(lock);
    qxPlatformLockDestroy(lock);
}

TEST_F(qxPlatformCondition, sleepsAtLeastItsTime)
{
    for (const unsigned int milliseconds : {0U, 1U, 30U}) {
        SCOPED_TRACE(milliseconds);
        qxPlatformLockEnter(m_lock);
        const double start = qxPlatformSteadySeconds();
        EXPECT_FALSE(qxPlatformConditionSleep(m_condition, m_lock, milliseconds));
        EXPECT_GE(qxPlatformSteadySeconds() - start, milliseconds * 1e-3);
        EXPECT_FALSE(qxPlatformLockTryEnter(m_lock)); // it is held again
        qxPlatformLockLeave(m_lock);
    }
}

TEST_F(qxPlatformCondition, aWakeWithoutSleeperIsLost)
{
    qxPlatformConditionWakeAll(m_condition);
    qxPlatformConditionWakeOne(m_condition);

    qxPlatformLockEnter(m_lock);
    EXPECT_FALSE(qxPlatformConditionSleep(m_condition, m_lock, 10));
    qxPlatformLockLeave(m_lock);
}

TEST_F(qxPlatformCondition, wakeAllEndsEverySleep)
{
    for (int i = 0; i < 5; ++i) startSleeper();

    qxPlatformConditionWakeAll(m_condition);
    joinAll();
    EXPECT_EQ(m_woken, 5);
}

TEST_F(qxPlatformCondition, wakeOneEndsOneSleepEach)
{
    for (int i = 0; i < 4; ++i) startSleeper();
    for (int count = 1; count <= 4; ++count) {
        qxPlatformConditionWakeOne(m_condition);
        waitForWoken(count);
        interruptSleepers();
        EXPECT_EQ(m_woken, count);
    }
}

TEST_F(qxPlatformCondition, twoWakesInARowEndTwoSleeps)
{
    for (int i = 0; i < 3; ++i) startSleeper();

    qxPlatformConditionWakeOne(m_condition);
    qxPlatformConditionWakeOne(m_condition);
    waitForWoken(2);
    interruptSleepers();
    EXPECT_EQ(m_woken, 2);
    qxPlatformConditionWakeOne(m_condition);
}

TEST_F(qxPlatformCondition, aWakeSentWithTheLockHeldIsNotMissed)
{
    startSleeper();
    qxPlatformLockEnter(m_lock);
    qxPlatformConditionWakeOne(m_condition);
    qxPlatformLockLeave(m_lock);

    joinAll();
    EXPECT_EQ(m_woken, 1);
}

TEST_F(qxPlatformCondition, aSignalDoesNotEndTheSleep)
{
    const double start = qxPlatformSteadySeconds();
    startSleeper(50);
    for (int i = 0; i < 3; ++i) interruptSleepers();
    joinAll();

    EXPECT_EQ(m_timedOut, 1);
    EXPECT_GE(qxPlatformSteadySeconds() - start, 50e-3);
}

TEST_F(qxPlatformCondition, timeOutsDoNotUseUpWakes)
{
    for (int i = 0; i < 3; ++i) startSleeper(5);
    startSleeper();
    while (m_timedOut < 3) qxPlatformYield();

    qxPlatformConditionWakeOne(m_condition);
    joinAll();
    EXPECT_EQ(m_woken, 1);
}

TEST_F(qxPlatformCondition, nothingOfTheWakesAndSleepersBeforeIsLeft)
{
    startSleeper(1);
    joinAll();
    qxPlatformConditionWakeOne(m_condition);
    qxPlatformConditionWakeAll(m_condition);

    startSleeper();
    startSleeper();
    qxPlatformConditionWakeOne(m_condition);
    waitForWoken(1);
    interruptSleepers();
    EXPECT_EQ(m_woken, 1);
    qxPlatformConditionWakeOne(m_condition);
}

// Tokens handed over by one wake each: a wake that is lost, or goes to a thread that came after it, leaves
// a taker asleep for ever although there is a token for it.
TEST_F(qxPlatformCondition, noWakeIsLostUnderLoad)
{
    constexpr int TAKERS = 4;
    constexpr int TOKENS = 5000;
    int tokens = 0; // guarded by the lock
    for (int i = 0; i < TAKERS; ++i) {
        m_threads.emplace_back([&] {
            for (int taken = 0; taken < TOKENS; ++taken) {
                qxPlatformLockEnter(m_lock);
                while (tokens == 0) qxPlatformConditionSleep(m_condition, m_lock, QX_PLATFORM_NO_LIMIT);
                --tokens;
                qxPlatformLockLeave(m_lock);
            }
        });
    }
    for (int given = 0; given < TAKERS * TOKENS; ++given) {
        qxPlatformLockEnter(m_lock);
        ++tokens;
        qxPlatformLockLeave(m_lock);
        qxPlatformConditionWakeOne(m_condition);
    }

    joinAll();
    EXPECT_EQ(tokens, 0);
}

TEST_F(qxPlatformCondition, wakesAreNeverMoreThanWereSent)
{
    std::atomic<bool> isOver{false};
    for (int i = 0; i < 4; ++i) {
        m_threads.emplace_back([&] {
            for (unsigned int n = 0; !isOver; ++n) {
                qxPlatformLockEnter(m_lock);
                m_woken += qxPlatformConditionSleep(m_condition, m_lock, n % 3) ? 1 : 0;
                qxPlatformLockLeave(m_lock);
            }
        });
    }
    constexpr int SENT = 2000;
    for (int i = 0; i < SENT; ++i) {
        qxPlatformConditionWakeOne(m_condition);
        qxPlatformYield();
    }
    isOver = true;
    joinAll();

    EXPECT_LE(m_woken, SENT);
}

TEST(qxPlatformConditionLife, theWokenThreadMayDestroyAtOnce)
{
    struct Rooms {
        alignas(8) unsigned char lock[QX_PLATFORM_LOCK_ROOM];
        alignas(8) unsigned char condition[QX_PLATFORM_CONDITION_ROOM];
    };
    for (int i = 0; i < 300; ++i) {
        auto rooms = std::make_unique<Rooms>();
        qxPlatformLockCreate(rooms->lock);
        qxPlatformConditionCreate(rooms->condition);
        qxPlatformLockEnter(rooms->lock);
        std::thread waker([room = rooms.get()] {
            qxPlatformLockEnter(room->lock);
            void* const condition = room->condition;
            qxPlatformLockLeave(room->lock);
            qxPlatformConditionWakeOne(condition);
        });
        EXPECT_TRUE(qxPlatformConditionSleep(rooms->condition, rooms->lock, QX_PLATFORM_NO_LIMIT));
        qxPlatformLockLeave(rooms->lock);
        qxPlatformConditionDestroy(rooms->condition);
        qxPlatformLockDestroy(rooms->lock);
        rooms.reset();
        waker.join();
    }
}

} // namespace
