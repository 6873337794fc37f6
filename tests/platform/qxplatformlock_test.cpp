// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformlock.h"

#include "platform/qxplatformthread.h"

#include "platform/qxtestsystem.h"
#include "qxtestthreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

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
    }

    ~qxPlatformCondition() override
    {
        joinAll();
        qxPlatformConditionDestroy(m_condition);
        qxPlatformLockDestroy(m_lock);
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
        for (std::thread& thread : m_threads) m_interrupts.send(thread);
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
    Interrupts m_interrupts;
};

TEST_F(qxPlatformCondition, tryingTheLockNeitherWaitsNorRecurses)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(qxPlatformLockTryEnter(m_lock));
        EXPECT_FALSE(qxPlatformLockTryEnter(m_lock));
        qxPlatformLockLeave(m_lock);
    }
}

TEST_F(qxPlatformCondition, sleepsAtLeastItsTimeWhateverWasSentBefore)
{
    qxPlatformConditionWakeAll(m_condition); // lost: nobody sleeps
    qxPlatformConditionWakeOne(m_condition);
    for (const unsigned int milliseconds : {0U, 1U, 30U}) {
        SCOPED_TRACE(milliseconds);
        qxPlatformLockEnter(m_lock);
        bool isWoken = true;
        const auto sleep = [&] { isWoken = qxPlatformConditionSleep(m_condition, m_lock, milliseconds); };
        EXPECT_GE(secondsOf(sleep), milliseconds * 1e-3);
        EXPECT_FALSE(isWoken);
        EXPECT_FALSE(qxPlatformLockTryEnter(m_lock)); // it is held again
        qxPlatformLockLeave(m_lock);
    }
}

TEST_F(qxPlatformCondition, wakeAllEndsEverySleep)
{
    for (int i = 0; i < 5; ++i) startSleeper();

    qxPlatformConditionWakeAll(m_condition);
    joinAll();
    EXPECT_EQ(m_woken, 5);
}

TEST_F(qxPlatformCondition, eachWakeOneEndsOneSleep)
{
    for (int i = 0; i < 6; ++i) startSleeper();
    int woken = 0;
    for (const int wakes : {1, 1, 2, 2}) { // also two in a row
        for (int i = 0; i < wakes; ++i) qxPlatformConditionWakeOne(m_condition);
        woken += wakes;
        waitForWoken(woken);
        interruptSleepers();
        EXPECT_EQ(m_woken, woken);
    }
}

TEST_F(qxPlatformCondition, aSignalDoesNotEndTheSleep)
{
    EXPECT_GE(secondsOf([&] {
                  startSleeper(50);
                  for (int i = 0; i < 3; ++i) interruptSleepers();
                  joinAll();
              }),
              50e-3);
    EXPECT_EQ(m_timedOut, 1);
}

TEST_F(qxPlatformCondition, nothingIsLeftOfTheSleepersThatTimedOut)
{
    for (int i = 0; i < 3; ++i) startSleeper(5);
    startSleeper(); // beside them: their end uses up no wake
    while (m_timedOut < 3) qxPlatformYield();
    qxPlatformConditionWakeOne(m_condition);
    joinAll();
    EXPECT_EQ(m_woken, 1);

    qxPlatformConditionWakeOne(m_condition); // and wakes without a sleeper are not kept
    qxPlatformConditionWakeAll(m_condition);
    startSleeper();
    startSleeper();
    qxPlatformConditionWakeOne(m_condition);
    waitForWoken(2);
    interruptSleepers();
    EXPECT_EQ(m_woken, 2);
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
        const bool isHeld = given % 2 == 0;
        if (isHeld) qxPlatformConditionWakeOne(m_condition);
        qxPlatformLockLeave(m_lock);
        if (!isHeld) qxPlatformConditionWakeOne(m_condition);
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
