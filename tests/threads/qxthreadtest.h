// A thread whose body is a function of the test's.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxthread.h"

#include "qxtestsupport.h"

#include <cstdlib>
#include <functional>
#include <utility>

class TestThread : public qxThread
{
public:
    explicit TestThread(std::function<void(TestThread&)> body, qxThreadPriority priority = QX_THREAD_NORMAL)
        : qxThread(priority), m_body(std::move(body))
    {}
    ~TestThread() noexcept(false) override
    {
        qxThread::stop(1);
        if (onDelete) onDelete();
    }

    /// Waits for the end of the body without asking it to stop.
    void awaitEnd()
    {
        while (isRunning(0)) qxDelayFunction(0);
    }

    std::function<void()> onDelete;

protected:
    void process() override { m_body(*this); }

private:
    const std::function<void(TestThread&)> m_body;
};

/// Looks, for ten seconds at most, until `condition` is true.
template <typename Condition>
bool comesTrue(Condition&& condition)
{
    for (int i = 0; i < 10000; ++i) {
        if (condition()) return true;
        qxThread::qxDelayFunction(1);
    }
    return false;
}

/// How many threads work, once those that earlier tests have left on their last steps are gone.
inline unsigned int settledWorkingCount()
{
    comesTrue([] { return qxThread::getWorkingCount() == 0; });
    return qxThread::getWorkingCount();
}

/// Of no thread, asked for by nobody so far, and looking for its number from `number` on.
inline unsigned int freshId(unsigned int number)
{
    static unsigned int s_next = 3500000000; // no system numbers its threads from here on
    return (s_next += 10000) + number;
}

/// Runs `body`, which may use expectations, in a process of its own that ends without looking for lost memory: a thread
/// that was ended from outside keeps what it has taken.
template <typename Body>
void inOwnProcess(Body&& body)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto run = [&body] {
        body();
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
