// SPDX-License-Identifier: see LICENSE

#include "qxthread.h"

#include "qxevent.h"
#include "qxtestsupport.h"
#include "qxtime.h"

#include <atomic>
#include <thread>

namespace
{

TEST(qxThread, eachThreadHasItsOwnId)
{
    const unsigned int own = qxThread::getThreadID();
    EXPECT_GT(own, 1U);
    EXPECT_EQ(qxThread::getThreadID(), own);

    const unsigned int other = onAnotherThread([] { return qxThread::getThreadID(); });
    EXPECT_GT(other, 1U);
    EXPECT_NE(other, own);
}

TEST(qxThread, delaysForAtLeastTheTime)
{
    qxEvent event;
    const struct {
        unsigned int milliseconds;
        qxEvent* event;
    } rows[] = {{0, nullptr}, {0, &event}, {15, nullptr}, {15, &event}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.milliseconds);
        const double start = qxTime::systemSeconds();
        qxThread::qxDelayFunction(row.milliseconds, row.event);
        EXPECT_GE(qxTime::systemSeconds() - start, row.milliseconds * 0.00099);
    }
}

TEST(qxThread, firingTheEventEndsADelay)
{
    qxEvent event;
    std::atomic<bool> isOver{false};
    std::thread firing([&] {
        while (!isOver) event.fire();
    });
    qxThread::qxDelayFunction(0xFFFFFFFF, &event);
    isOver = true;
    firing.join();
}

TEST(qxThread, delaysForMicroseconds)
{
    const double start = qxTime::systemSeconds();
    qxThread::qxMicroDelayFunction(0);
    qxThread::qxMicroDelayFunction(1500);
    EXPECT_GE(qxTime::systemSeconds() - start, 0.0014);
}

} // namespace
