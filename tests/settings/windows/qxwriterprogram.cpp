// SPDX-License-Identifier: see LICENSE

#include "settings/qxwriterprogram.h"

#include "platform/windows/qxwindows.h"

#include <filesystem>

struct WriterProgram::Process {
    HANDLE process = nullptr;
    HANDLE output = nullptr;
};

const int WriterProgram::QUICK_ROUNDS = 50;

WriterProgram::WriterProgram(const std::string& url, const std::string& prefix, int keys)
    : m_process(std::make_unique<Process>())
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    HANDLE writing = nullptr;
    if (!CreatePipe(&m_process->output, &writing, &inherited, 0)) return;
    SetHandleInformation(m_process->output, HANDLE_FLAG_INHERIT, 0);
    const std::string text = "\"" QX_KEY_WRITER "\" \"" + url + "\" " + prefix + " " + std::to_string(keys);
    std::wstring line = std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = writing;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        CloseHandle(process.hThread);
        m_process->process = process.hProcess;
    }
    CloseHandle(writing);
}

WriterProgram::~WriterProgram()
{
    if (m_process->process) kill();
    wait();
    CloseHandle(m_process->output);
}

std::string WriterProgram::readName()
{
    std::size_t end = 0;
    while ((end = m_said.find('\n')) == std::string::npos) {
        char block[4096];
        DWORD size = 0;
        if (!ReadFile(m_process->output, block, sizeof(block), &size, nullptr) || size == 0) return {};
        for (DWORD i = 0; i < size; ++i)
            if (block[i] != '\r') m_said += block[i];
    }
    const std::string name = m_said.substr(0, end);
    m_said.erase(0, end + 1);
    return name;
}

void WriterProgram::kill()
{
    TerminateProcess(m_process->process, 9);
}

int WriterProgram::wait()
{
    if (!m_process->process) return -1;
    DWORD status = 0;
    WaitForSingleObject(m_process->process, INFINITE);
    GetExitCodeProcess(m_process->process, &status);
    CloseHandle(m_process->process);
    m_process->process = nullptr;
    return static_cast<int>(status);
}
