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
constexpr int MOST_MOVES = 100; // a second in all
constexpr DWORD MOVE_MILLISECONDS = 10;
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

// The error number of a target that a temporary file must not take the place of, else 0.
int inspectForWriting(const char* name, Target& target)
{
    const int error = inspect(name, target);
    if (error != 0) return error;
    const bool exists = target.attributes != INVALID_FILE_ATTRIBUTES;
    return exists && (target.attributes & FILE_ATTRIBUTE_READONLY) ? EACCES : 0;
}

// Makes a file that was not there.
qxPlatformFile* createFile(const std::wstring& wideName, std::string& name, int& error)
{
    auto file = std::make_unique<qxPlatformFile>();
    file->isWritable = true;
    const int descriptor = _wopen(wideName.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                                  _S_IREAD | _S_IWRITE);
    error = descriptor >= 0 ? 0 : errno;
    if (error != 0) return nullptr;
    name = qxNarrowText(wideName);
    file->stream = _fdopen(descriptor, "r+bc");
    if (file->stream) return file.release();
    error = errno;
    _close(descriptor);
    _wunlink(wideName.c_str());
    return nullptr;
}

// Whoever reads the old file at this moment stands in the way; that passes.
bool moveOver(const std::wstring& name, const std::wstring& target)
{
    for (int tries = 0; tries < MOST_MOVES; ++tries) {
        if (tries != 0) Sleep(MOVE_MILLISECONDS);
        if (MoveFileExW(name.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD reason = GetLastError();
        if (reason != ERROR_SHARING_VIOLATION && reason != ERROR_ACCESS_DENIED) return false;
    }
    return false;
}

bool makeFull(const std::wstring& name, std::string& full, int& error)
{
    const DWORD room = GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
    std::wstring path(room, L'\0');
    const DWORD length = GetFullPathNameW(name.c_str(), room, path.data(), nullptr);
    error = length != 0 && length < room ? 0 : ENOENT;
    if (error == 0) full = qxNarrowText({path.data(), length});
    return error == 0;
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
    error = inspectForWriting(targetName, target);
    if (error != 0) return nullptr;
    const std::wstring start =
        folderOf(target.name) + L".qx-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        qxPlatformFile* const file = createFile(start + std::to_wstring(s_counter++) + L".tmp", name, error);
        if (file || error != EEXIST) return file;
    }
    return nullptr;
}

qxPlatformFile* qxPlatformFileTemporaryNamed(const char* targetName, const char* suffix, std::string& name,
                                             int& error)
{
    Target target;
    error = inspectForWriting(targetName, target);
    if (error != 0) return nullptr;
    const std::wstring wideName = target.name + qxWideText(suffix);
    _wunlink(wideName.c_str());
    return createFile(wideName, name, error);
}

bool qxPlatformFileReplace(const char* temporary, const char* targetName, int& error)
{
    Target target;
    error = inspect(targetName, target);
    if (error != 0) return false;
    const std::wstring name = qxWideFileName(temporary);
    const bool exists = target.attributes != INVALID_FILE_ATTRIBUTES;
    const bool done =
        (!exists || SetFileAttributesW(name.c_str(), target.attributes)) && moveOver(name, target.name);
    error = done ? 0 : qxErrorNumber(GetLastError());
    return done;
}

bool qxPlatformFileFullName(const char* name, std::string& full, int& error)
{
    return makeFull(qxWideFileName(name), full, error);
}

bool qxPlatformFileResolve(const char* name, std::string& resolved, int& error)
{
    Target target;
    error = inspect(name, target);
    if (error == EISDIR || error == NOT_PLAIN) error = 0;
    return error == 0 && makeFull(target.name, resolved, error);
}

bool qxPlatformFileIdentify(const char* name, qxPlatformFileIdentity& identity, int& error)
{
    identity = qxPlatformFileIdentity();
    error = 0;
    const Handle handle(qxWideFileName(name));
    if (!handle.isOpen()) {
        const int reason = qxErrorNumber(GetLastError());
        error = reason == ENOENT ? 0 : reason;
        return error == 0;
    }
    identity.exists = true;
    BY_HANDLE_FILE_INFORMATION status;
    if (GetFileType(handle.get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(handle.get(), &status))
        return true;
    const auto join = [](DWORD high, DWORD low) { return static_cast<unsigned long long>(high) << 32 | low; };
    identity.isPlain = (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    identity.volume = status.dwVolumeSerialNumber;
    identity.number = join(status.nFileIndexHigh, status.nFileIndexLow);
    identity.size = join(status.nFileSizeHigh, status.nFileSizeLow);
    identity.time = join(status.ftLastWriteTime.dwHighDateTime, status.ftLastWriteTime.dwLowDateTime);
    return true;
}
