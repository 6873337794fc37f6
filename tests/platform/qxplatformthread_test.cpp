// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthread.h"

#include "qxtestthreads.h"

#include <gtest/gtest.h>

#include <set>

namespace
{

TEST(qxPlatformThread, livingThreadsHaveDifferentIdsThatStay)
{
    constexpr unsigned int COUNT = 8;
    unsigned int ids[COUNT + 1] = {};
    TestLatch allAlive(COUNT);
    onThreads(COUNT, [&](unsigned int i) {
        ids[i] = qxPlatformThreadId();
        allAlive.countDownAndWait();
        EXPECT_EQ(qxPlatformThreadId(), ids[i]);
    });
    ids[COUNT] = qxPlatformThreadId();

    EXPECT_EQ(std::set<unsigned int>(ids, ids + COUNT + 1).size(), COUNT + 1);
}

TEST(qxPlatformThread, sleepsAtLeastItsTime)
{
    for (const unsigned int milliseconds : {0U, 1U, 20U})
        EXPECT_GE(secondsOf([&] { qxPlatformSleep(milliseconds); }), milliseconds * 1e-3);
}

} // namespace
