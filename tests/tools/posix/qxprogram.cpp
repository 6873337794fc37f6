// SPDX-License-Identifier: see LICENSE

#include "tools/qxprogram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

int runProgram(const std::vector<std::string>& words, const std::filesystem::path& folder)
{
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

    const std::filesystem::path above = folder.parent_path();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, (above / "in").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, (above / "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0666);
    posix_spawn_file_actions_addopen(&actions, 2, (above / "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0666);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    pid_t child = 0;
    const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}
