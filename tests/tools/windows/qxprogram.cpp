// SPDX-License-Identifier: see LICENSE

#include "tools/qxprogram.h"

#include "platform/windows/qxwindows.h"

namespace
{

std::wstring wide(const std::string& text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

// A word as programs take it from their command line: backslashes count only before quotes.
std::wstring quoted(const std::wstring& word)
{
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"') result.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        result += c;
    }
    result.append(backslashes, L'\\');
    return result + L"\" ";
}

HANDLE openInherited(const std::filesystem::path& file, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

int runProgram(const std::vector<std::string>& words, const std::filesystem::path& folder)
{
    std::wstring line;
    for (const std::string& word : words) line += quoted(wide(word));

    const std::filesystem::path above = folder.parent_path();
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = openInherited(above / "in", GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput = openInherited(above / "out", GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = openInherited(above / "err", GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process = {};
    const bool isRunning = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          folder.c_str(), &start, &process);
    for (const HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError}) CloseHandle(handle);
    if (!isRunning) return -1;

    DWORD status = 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return status <= 255 ? static_cast<int>(status) : -1;
}
