// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include "platform/windows/qxplatformfile_windows.h"
#include "platform/windows/qxwindows.h"

#include <atomic>
#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace
{

constexpr int MOST_TRIES = 1000;
constexpr int NOT_PLAIN = ENOTSUP;

class Handle
{
public:
    explicit Handle(const std::wstring& name)
        : m_handle(CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr))
    {}
    ~Handle()
    {
        if (isOpen()) CloseHandle(m_handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle;
};

// What stands at the target's name, links followed.
struct Target {
    std::wstring name; // of the file itself
    DWORD attributes;  // INVALID_FILE_ATTRIBUTES when there is none
};

// Returns the error number, 0 if the target can be replaced.
int inspect(const char* name, Target& target)
{
    target.name = qxWideFileName(name);
    target.attributes = INVALID_FILE_ATTRIBUTES;
    if (target.name.empty()) return ENOENT;
    const Handle handle(target.name);
    if (!handle.isOpen()) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? 0 : qxErrorNumber(error);
    }
    if (GetFileType(handle.get()) != FILE_TYPE_DISK) return NOT_PLAIN;
    BY_HANDLE_FILE_INFORMATION status;
    if (!GetFileInformationByHandle(handle.get(), &status)) return qxErrorNumber(GetLastError());
    if (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return EISDIR;
    target.attributes = status.dwFileAttributes;

    const DWORD room = GetFinalPathNameByHandleW(handle.get(), nullptr, 0, 0);
    std::wstring path(room, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(handle.get(), path.data(), room, 0);
    if (length != 0 && length < room) target.name.assign(path, 0, length);
    return 0;
}

// The folder part of `name` with its last separator; empty for a file in the current folder.
std::wstring folderOf(const std::wstring& name)
{
    return name.substr(0, name.find_last_of(L"/\\:") + 1); // none: npos + 1 is 0
}

} // namespace

bool qxPlatformFileIsReplaceable(const char* name, int& error)
{
    Target target;
    error = inspect(name, target);
    if (error == 0) return true;
    if (error == EISDIR || error == NOT_PLAIN) error = 0; // a plain no
    return false;
}

bool qxPlatformFileIsDevice(const char* name)
{
    Target target;
    return inspect(name, target) == NOT_PLAIN;
}

qxPlatformFile* qxPlatformFileTemporary(const char* targetName, std::string& name, int& error)
{
    static std::atomic<unsigned int> s_counter{0};

    Target target;
    error = inspect(targetName, target);
    if (error != 0) return nullptr;
    if (target.attributes != INVALID_FILE_ATTRIBUTES && (target.attributes & FILE_ATTRIBUTE_READONLY)) {
        error = EACCES;
        return nullptr;
    }
    const std::wstring start =
        folderOf(target.name) + L".qx-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    auto file = std::make_unique<qxPlatformFile>();
    file->isWritable = true;
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        const std::wstring wideName = start + std::to_wstring(s_counter++) + L".tmp";
        const int descriptor = _wopen(
            wideName.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
        error = descriptor >= 0 ? 0 : errno;
        if (error == EEXIST) continue;
        if (error != 0) return nullptr;
        name = qxNarrowText(wideName);
        file->stream = _fdopen(descriptor, "r+bc");
        if (file->stream) return file.release();
        error = errno;
        _close(descriptor);
        _wunlink(wideName.c_str());
        return nullptr;
    }
    return nullptr;
}

bool qxPlatformFileReplace(const char* temporary, const char* targetName, int& error)
{
    Target target;
    error = inspect(targetName, target);
    if (error != 0) return false;
    const std::wstring name = qxWideFileName(temporary);
    const bool exists = target.attributes != INVALID_FILE_ATTRIBUTES;
    const bool done =
        (!exists || SetFileAttributesW(name.c_str(), target.attributes)) &&
        MoveFileExW(name.c_str(), target.name.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    error = done ? 0 : qxErrorNumber(GetLastError());
    return done;
}
