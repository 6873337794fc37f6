// SPDX-License-Identifier: see LICENSE

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

TEST(InputToolPosix, isReadAsItComesAndTheInterruptKeyEndsTheWait)
{
    int in[2];
    int out[2];
    ASSERT_EQ(pipe2(in, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string words[] = {QX_TOOL, "lex", "-"};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t child = -1;
    ASSERT_EQ(posix_spawn(&child, QX_TOOL, &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);

    ASSERT_EQ(write(in[1], "a 12 ", 5), 5); // the last blank may go on
    std::string found;
    for (char byte = 0; found.find("12\n") == std::string::npos && read(out[0], &byte, 1) == 1;)
        found += byte;
    EXPECT_EQ(found, "1:1 2 \"a\"\n1:2 256 32\n1:3 16 12\n");
    kill(child, SIGINT); // while it waits for more
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 130) << status;
    for (const int end : {in[0], in[1], out[0]}) ::close(end);
}

} // namespace
