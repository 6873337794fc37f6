// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformthread.h"

#include <gtest/gtest.h>

#include <string>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

// Runs `body` in a child process and returns the exit status it gives, -1 if it does not end by itself.
template <typename Body>
int statusOfChild(Body&& body)
{
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(qxPlatformThread, theMainThreadsIdIsThatOfTheProcessAlsoAfterAFork)
{
    const auto check = [] { return qxPlatformThreadId() == static_cast<unsigned int>(getpid()) ? 0 : 1; };
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(statusOfChild(check), 0);
}

TEST(qxPlatformThread, theFirstProcessOfAContainerIsNotNumberOne)
{
    constexpr int NOT_ALLOWED = 77;
    const int status = statusOfChild([] {
        if (unshare(CLONE_NEWPID) != 0) return NOT_ALLOWED;
        return statusOfChild([] { return getpid() == 1 && qxPlatformThreadId() > 1U << 22 ? 0 : 1; });
    });
    if (status == NOT_ALLOWED) GTEST_SKIP() << "needs the right to make a container";
    EXPECT_EQ(status, 0);
}

TEST(qxPlatformThread, guardsForksInBothProcesses)
{
    static std::string calls;
    static const bool isGuarded = [] { // once, should the test be repeated
        qxPlatformGuardForks([] { calls += "before "; }, [] { calls += "after "; });
        qxPlatformGuardForks([] { calls += "2 "; }, [] {});
        return true;
    }();
    ASSERT_TRUE(isGuarded);
    calls.clear();

    const int status = statusOfChild([] { return calls == "2 before after " ? 0 : 1; });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(calls, "2 before after ");
}

} // namespace
