// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformdebug.h"

#include "platform/qxplatformthread.h"

#include <gtest/gtest.h>

#include <string>

#include <fcntl.h>
#include <pty.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int NOT_ALLOWED = 77;

std::string readAll(int descriptor)
{
    std::string all;
    char part[256];
    for (;;) {
        const ssize_t length = read(descriptor, part, sizeof(part)); // a terminal without a user: an error
        if (length <= 0) return all;
        all.append(part, static_cast<std::size_t>(length));
    }
}

struct Result {
    int status;         // the exit status of the child, -1 if it did not end by itself
    std::string output; // what it sent to standard error
};

// Waits for the child, whose standard error is read from `output`.
Result finish(pid_t child, int output)
{
    const std::string text = readAll(output);
    int status = 0;
    waitpid(child, &status, 0);
    close(output);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
}

// Runs `body` in a child without a terminal.
template <typename Body>
Result runDetached(Body&& body)
{
    int ends[2];
    if (pipe(ends) != 0) return {};
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        _exit(body());
    }
    close(ends[1]);
    return finish(child, ends[0]);
}

int askTitleAndBody()
{
    return qxPlatformAssertDialog("A title", "A body with 100%s\n");
}

// Asks in a child that has a terminal of its own, on which `input` has been typed.
Result askAtTerminal(const std::string& input)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child < 0) return {NOT_ALLOWED, {}};
    if (child == 0) _exit(askTitleAndBody());
    if (write(terminal, input.data(), input.size()) < 0) return {};
    return finish(child, terminal);
}

TEST(qxPlatformAssertDialog, withoutTerminalTellsAndIgnores)
{
    const Result result = runDetached(&askTitleAndBody);

    EXPECT_EQ(result.status, QX_PLATFORM_ANSWER_IGNORE);
    EXPECT_EQ(result.output, "A title\nA body with 100%s\n\n");
}

TEST(qxPlatformAssertDialog, asksAtTheTerminalUntilItHasAnAnswer)
{
    const struct {
        const char* typed;
        int answer;
        std::size_t questions;
    } rows[] = {
        {"A\n", QX_PLATFORM_ANSWER_ABORT, 1},
        {" i \n", QX_PLATFORM_ANSWER_IGNORE, 1},
        {"\nx\nno\nA R\nr\nA\n", QX_PLATFORM_ANSWER_RETRY, 5},
        {"maybe\n\x04", QX_PLATFORM_ANSWER_IGNORE, 2}, // control D: end of the input
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        const Result result = askAtTerminal(row.typed);
        if (result.status == NOT_ALLOWED) GTEST_SKIP() << "needs a pseudo terminal";

        EXPECT_EQ(result.status, row.answer);
        std::size_t questions = 0;
        const std::string question = "(A)bort, (R)etry or (I)gnore? ";
        for (std::size_t at = 0; (at = result.output.find(question, at)) != std::string::npos; ++at)
            ++questions;
        EXPECT_EQ(questions, row.questions) << result.output;
        EXPECT_NE(result.output.find("A title\r\nA body with 100%s\r\n"), std::string::npos) << result.output;
    }
}

TEST(qxPlatformAssertDialog, inTheBackgroundOfATerminalItDoesNotStop)
{
    int terminal = -1;
    const pid_t leader = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (leader < 0) GTEST_SKIP() << "needs a pseudo terminal";
    if (leader == 0) {
        const pid_t child = fork();
        if (child == 0) {
            setpgid(0, 0); // a group that is not in front
            _exit(askTitleAndBody());
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 99);
    }

    EXPECT_EQ(finish(leader, terminal).status, QX_PLATFORM_ANSWER_IGNORE);
}

TEST(qxPlatformDebug, writesOnlyWhileADebuggerIsAttached)
{
    const Result result = runDetached([] {
        if (qxPlatformHasDebugger()) return NOT_ALLOWED;
        qxPlatformDebugOutput("nobody reads this");
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) return NOT_ALLOWED;
        qxPlatformSleep(300); // what was known before must not stay for ever
        qxPlatformDebugOutput("100% seen\n");
        return 0;
    });
    if (result.status == NOT_ALLOWED) GTEST_SKIP() << "needs to attach a debugger of its own";

    EXPECT_EQ(result.output, "100% seen\n");
}

} // namespace
