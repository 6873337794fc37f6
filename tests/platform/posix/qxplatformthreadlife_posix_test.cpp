// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthreadlife.h"

#include "platform/qxplatformnotnow.h"
#include "platform/qxplatformthread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include <pthread.h>
#include <signal.h>

namespace
{

using Body = std::function<void()>;

void callBody(void* body)
{
    (*static_cast<const Body*>(body))();
}

qxPlatformThread* start(const Body& body)
{
    return qxPlatformThreadStart(&callBody, const_cast<Body*>(&body));
}

void end(qxPlatformThread* thread)
{
    qxPlatformThreadEnd(*thread);
    qxPlatformThreadAwaitEnd(*thread);
    EXPECT_FALSE(qxPlatformThreadIsActive(*thread));
    qxPlatformThreadClose(thread);
}

TEST(qxPlatformThreadLife, endsManySleepersOneAfterAnother)
{
    const Body body = [] {
        for (;;) qxPlatformSleep(20);
    };
    for (int i = 0; i < 100; ++i) {
        qxPlatformThread* const thread = start(body);
        ASSERT_TRUE(thread);
        if (i % 2 != 0) qxPlatformSleep(1); // else it has hardly begun
        end(thread);
    }
}

TEST(qxPlatformThreadLife, waitsForTheLastLeaveOfNotNow)
{
    std::atomic<bool> isInside{false};
    std::atomic<bool> mayLeave{false};
    std::atomic<int> left{0};
    const Body body = [&] {
        qxPlatformEnterNotNow();
        qxPlatformEnterNotNow();
        isInside = true;
        while (!mayLeave) qxPlatformSleep(1);
        qxPlatformLeaveNotNow();
        left = 1;
        qxPlatformLeaveNotNow();
        left = 2;
    };
    qxPlatformThread* const thread = start(body);
    ASSERT_TRUE(thread);
    while (!isInside) qxPlatformYield();
    qxPlatformThreadEnd(*thread);
    qxPlatformSleep(5);
    EXPECT_TRUE(qxPlatformThreadIsActive(*thread));
    mayLeave = true;
    end(thread);
    EXPECT_EQ(left, 1);
}

TEST(qxPlatformThreadLife, aThreadThatBeginsWithBlockedSignalsCanBeEnded)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    const Body body = [] {
        for (;;) qxPlatformSleep(20);
    };
    qxPlatformThread* const thread = start(body);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(thread);
    end(thread);
}

// A thread finds nothing of what the one before it on the same stack has stored.
TEST(qxPlatformThreadLife, threadsInheritNothingOfEndedOnes)
{
    pthread_key_t key;
    ASSERT_EQ(pthread_key_create(&key, nullptr), 0);
    static thread_local int t_value = 5;
    std::atomic<int> stale{0};
    std::atomic<bool> isSet{false};
    const Body body = [&] {
        if (pthread_getspecific(key) || t_value != 5) ++stale;
        pthread_setspecific(key, &stale);
        t_value = 6;
        isSet = true;
        for (;;) qxPlatformSleep(20);
    };
    for (int i = 0; i < 20; ++i) {
        isSet = false;
        qxPlatformThread* const thread = start(body);
        ASSERT_TRUE(thread);
        while (!isSet) qxPlatformYield();
        end(thread);
    }
    pthread_key_delete(key);
    EXPECT_EQ(stale, 0);
}

// The signal alone ends nobody.
TEST(qxPlatformThreadLife, strangersMaySendTheSignal)
{
    const Body body = [] { raise(SIGRTMAX); }; // what it calls is there once a thread has started
    qxPlatformThread* const thread = start(body);
    ASSERT_TRUE(thread);
    qxPlatformThreadClose(thread);
    raise(SIGRTMAX);
}

} // namespace
