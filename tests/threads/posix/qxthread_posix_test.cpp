// SPDX-License-Identifier: see LICENSE

#include "threads/qxthreadtest.h"

#include <atomic>
#include <cstdlib>

#include <pthread.h>
#include <sys/resource.h>

namespace
{

// Makes the system refuse the stacks of all further threads.
void demandTooMuch()
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 50);
    if (pthread_setattr_default_np(&attributes) != 0) std::exit(1);
    pthread_attr_destroy(&attributes);
}

// In a process of its own, which then has no thread to give any more. Exits with the number of the failed step.
[[noreturn]] void failToStart(unsigned char wait)
{
    TestThread thread([](TestThread&) { std::exit(5); });
    demandTooMuch();
    if (thread.run(wait) != 1) std::exit(2);
    const qxThreadInfo info = thread.getThreadInfo();
    if (info.threadId != 0 || info.threadHandle) std::exit(3);
    if (thread.isRunning(1) || !thread.isStopping(1)) std::exit(4);
    thread.run(wait);
    thread.stop(1); // waits for nobody
    thread.run(wait);
    thread.kill();
    thread.run(wait);
    std::exit(0); // and neither does the destructor
}

TEST(qxThreadPosix, aStartThatFailsIsFoundOutLater)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const bool wait : {false, true}) EXPECT_EXIT(failToStart(wait), testing::ExitedWithCode(0), "");
}

// pthread_exit unwinds through everything that catches exceptions.
TEST(qxThreadPosix, aBodyMayLeaveByTheSystemsOwnExit)
{
    const MessageRecorder recorder;
    const unsigned int working = settledWorkingCount();
    std::atomic<bool> isUnwound{false};
    TestThread thread([&](TestThread&) {
        struct Guard {
            std::atomic<bool>& isUnwound;
            ~Guard() { isUnwound = true; }
        };
        const Guard guard{isUnwound};
        pthread_exit(nullptr);
    });
    for (int i = 0; i < 3; ++i) {
        thread.run(0);
        thread.awaitEnd();
    }
    EXPECT_TRUE(isUnwound);
    EXPECT_EQ(qxThread::getWorkingCount(), working);
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{});
}

int nicenessOf(qxThread& thread)
{
    return getpriority(PRIO_PROCESS, thread.getThreadInfo().threadId);
}

TEST(qxThreadPosix, appliesPrioritiesWhileTheyAreUsed)
{
    if (getpriority(PRIO_PROCESS, 0) > 5) GTEST_SKIP() << "this process is nice itself";
    std::atomic<bool> isThere{false};
    TestThread thread(
        [&](TestThread& self) {
            isThere = true;
            while (!self.isStopping(0)) qxThread::qxDelayFunction(1);
        },
        QX_THREAD_BELOW_NORMAL);
    thread.run(1);
    ASSERT_TRUE(comesTrue([&] { return isThere.load(); }));
    EXPECT_EQ(nicenessOf(thread), 5);

    qxThread::useThreadPriorities(0);
    thread.setThreadPriority(QX_THREAD_LOWEST);
    EXPECT_EQ(nicenessOf(thread), 5);
    qxThread::useThreadPriorities(1);
    thread.setThreadPriority(static_cast<qxThreadPriority>(5)); // none of the values
    EXPECT_EQ(nicenessOf(thread), 5);
    thread.setThreadPriority(QX_THREAD_LOWEST);
    EXPECT_EQ(nicenessOf(thread), 10);
}

} // namespace
