// SPDX-License-Identifier: see LICENSE

#include "qxtestfolder.h"
#include "tools/qxtooltest.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// The tool that watches a document, whose output is read as it comes.
class Running
{
public:
    explicit Running(const std::string& file, const std::string& key = {})
    {
        std::vector<std::string> words;
        for (const char* const word : {QX_TOOL, "conf", "--file", file.c_str(), "watch"})
            words.emplace_back(word);
        if (!key.empty()) words.push_back(key);
        int ends[2];
        if (pipe(ends) != 0) return;
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 2);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        posix_spawn(&m_id, arguments[0], &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        m_output = ends[0];
    }
    ~Running() { close(m_output); }

    std::string readLine() const
    {
        std::string line;
        for (char c = 0; c != '\n' && read(m_output, &c, 1) == 1;) line += c;
        return line;
    }

    int interrupt() const
    {
        int status = 0;
        kill(m_id, SIGINT);
        waitpid(m_id, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_id = 0;
    int m_output = -1;
};

int qx(const std::string& words)
{
    const std::filesystem::path tool = QX_TOOL;
    return std::system((tool.string() + " " + words).c_str());
}

TEST_F(Tool, aValueOfSettingsHas65535Bytes) // the command lines of other systems are shorter
{
    EXPECT_EQ(run("conf --file s.reg set x " + std::string(65536, 'x')), 5);
    EXPECT_EQ(run("conf --file s.reg set x " + std::string(65535, 'x')), 0);
}

TEST(Tool_posix, watchesSettingsUntilItIsInterrupted)
{
    const TestFolder folder;
    const std::string file = folder.name("s.reg");
    const Running all(file);
    const Running one(file, "a/y");
    EXPECT_EQ(all.readLine(), "qx: watching '" + file + "'\n");
    EXPECT_EQ(one.readLine(), "qx: watching '" + file + "'\n");
    ASSERT_EQ(qx("conf --file " + file + " set a/x 1"), 0);
    EXPECT_EQ(all.readLine(), "a/x: (none) -> 1\n");
    ASSERT_EQ(qx("conf --file " + file + " set a/y 2"), 0);
    EXPECT_EQ(all.readLine(), "a/y: (none) -> 2\n");
    EXPECT_EQ(one.readLine(), "a/y: (none) -> 2\n");
    ASSERT_EQ(qx("conf --file " + file + " unset a/x"), 0);
    EXPECT_EQ(all.readLine(), "a/x: 1 -> (none)\n");
    EXPECT_EQ(all.interrupt(), 130);
    EXPECT_EQ(one.interrupt(), 130);
}

} // namespace
