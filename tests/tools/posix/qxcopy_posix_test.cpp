// SPDX-License-Identifier: see LICENSE

#include "qxtestfolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// Starts `qx copy FROM TO` and returns its process.
pid_t startCopy(const std::string& from, const std::string& to)
{
    std::string words[] = {QX_TOOL, "copy", from, to};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    pid_t child = -1;
    EXPECT_EQ(posix_spawn(&child, QX_TOOL, nullptr, nullptr, arguments, environ), 0);
    return child;
}

int statusOf(pid_t child)
{
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(CopyToolPosix, anInterruptLeavesTheTarget)
{
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.name("pipe").c_str(), 0600), 0);
    folder.write("old", "old");
    const pid_t child = startCopy(folder.name("pipe"), folder.name("old"));
    const int end = open(folder.name("pipe").c_str(), O_WRONLY); // waits until the tool reads
    ASSERT_EQ(write(end, "new", 3), 3);
    while (folder.count() < 3) std::this_thread::yield(); // the temporary file is there
    kill(child, SIGINT);                                  // while it waits for more
    EXPECT_EQ(statusOf(child), 130);
    close(end);
    EXPECT_EQ(folder.read("old"), "old");
    EXPECT_EQ(folder.count(), 2U);
}

TEST(CopyToolPosix, handsOnWhatComesOverAPipe)
{
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.name("in").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(folder.name("out").c_str(), 0600), 0);
    const pid_t child = startCopy(folder.name("in"), folder.name("out"));
    const int in = open(folder.name("in").c_str(), O_WRONLY);
    const int out = open(folder.name("out").c_str(), O_RDONLY);
    ASSERT_EQ(write(in, "abc", 3), 3);
    char bytes[10];
    EXPECT_EQ(read(out, bytes, sizeof(bytes)), 3); // before the tool has seen the end
    close(in);
    EXPECT_EQ(read(out, bytes, sizeof(bytes)), 0);
    close(out);
    EXPECT_EQ(statusOf(child), 0);
}

} // namespace
