// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthreadlife.h"

#include "platform/qxplatformnotnow.h"
#include "platform/qxplatformthread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

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

TEST(qxPlatformThreadLife, aThreadMayLetGoOfItself)
{
    constexpr unsigned int COUNT = 50;
    std::atomic<unsigned int> ended{0};
    std::atomic<qxPlatformThread*> own{nullptr};
    const Body body = [&] {
        qxPlatformThread* self = nullptr;
        while (!(self = own)) qxPlatformYield();
        EXPECT_TRUE(qxPlatformThreadIsSelf(*self));
        own = nullptr;
        qxPlatformThreadClose(self);
        ++ended;
    };
    for (unsigned int i = 0; i < COUNT; ++i) {
        qxPlatformThread* const thread = start(body);
        ASSERT_TRUE(thread);
        own = thread;
        while (ended != i + 1) qxPlatformYield();
    }
    qxPlatformThreadAwaitClosed();
}

TEST(qxPlatformThreadLife, aThreadUsesTheWholeOfItsStack)
{
    constexpr std::size_t ROOM = 500000; // less than every system gives
    std::size_t sum = 0;
    const Body body = [&sum] {
        volatile unsigned char bytes[ROOM];
        for (std::size_t i = 0; i < ROOM; i += 1000) bytes[i] = 1;
        for (std::size_t i = 0; i < ROOM; i += 1000) sum += bytes[i];
    };
    for (int i = 0; i < 20; ++i) { // more than there are stacks in store
        qxPlatformThread* const thread = start(body);
        ASSERT_TRUE(thread);
        qxPlatformThreadClose(thread);
    }
    EXPECT_EQ(sum, 20 * ROOM / 1000);
}

TEST(qxPlatformThreadLife, notNowMeansNothingToOtherThreads)
{
    const qxPlatformNotNow outer;
    EXPECT_EQ(qxPlatformCallNotNow([] { return 7; }), 7);
}

} // namespace
