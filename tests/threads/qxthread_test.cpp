// SPDX-License-Identifier: see LICENSE

#include "qxthread.h"

#include "qxevent.h"
#include "qxtestsupport.h"

#include <atomic>
#include <thread>

namespace
{

TEST(qxThread, eachThreadHasItsOwnId)
{
    const unsigned int own = qxThread::getThreadID();
    EXPECT_GT(own, 1U);
    EXPECT_EQ(qxThread::getThreadID(), own);
    EXPECT_NE(onAnotherThread([] { return qxThread::getThreadID(); }), own);
}

TEST(qxThread, delaysForAtLeastTheTime)
{
    qxEvent event;
    for (const unsigned int milliseconds : {0U, 15U}) {
        for (qxEvent* const ended : {static_cast<qxEvent*>(nullptr), &event}) {
            SCOPED_TRACE(milliseconds);
            EXPECT_GE(secondsOf([&] { qxThread::qxDelayFunction(milliseconds, ended); }),
                      milliseconds * 0.00099);
        }
    }
    EXPECT_GE(secondsOf([] { qxThread::qxMicroDelayFunction(1500); }), 0.0014);
    qxThread::qxMicroDelayFunction(0);
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

} // namespace
