// SPDX-License-Identifier: see LICENSE

#include "settings/qxwriterprogram.h"

#include <csignal>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

struct WriterProgram::Process {
    pid_t id = 0;
    int output = -1;
};

const int WriterProgram::QUICK_ROUNDS = 200;

WriterProgram::WriterProgram(const std::string& url, const std::string& prefix, int keys)
    : m_process(std::make_unique<Process>())
{
    int ends[2];
    if (pipe(ends) != 0) return;
    std::string words[] = {QX_KEY_WRITER, url, prefix, std::to_string(keys)};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    posix_spawn(&m_process->id, arguments[0], &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    m_process->output = ends[0];
}

WriterProgram::~WriterProgram()
{
    close(m_process->output);
    if (m_process->id != 0) kill();
    wait();
}

std::string WriterProgram::readName()
{
    std::size_t end = 0;
    while ((end = m_said.find('\n')) == std::string::npos) {
        char block[4096];
        const ssize_t size = read(m_process->output, block, sizeof(block));
        if (size <= 0) return {};
        m_said.append(block, static_cast<std::size_t>(size));
    }
    const std::string name = m_said.substr(0, end);
    m_said.erase(0, end + 1);
    return name;
}

void WriterProgram::kill()
{
    ::kill(m_process->id, SIGKILL);
}

int WriterProgram::wait()
{
    int status = 0;
    if (m_process->id == 0 || waitpid(m_process->id, &status, 0) != m_process->id) return -1;
    m_process->id = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
