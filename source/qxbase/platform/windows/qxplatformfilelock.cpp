// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfilelock.h"

#include "platform/qxplatformfile.h"
#include "platform/windows/qxplatformfile_windows.h"
#include "platform/windows/qxwindows.h"

#include <memory>

struct qxPlatformFileLock {
    HANDLE file;
};

qxPlatformFileLock* qxPlatformFileLockTry(const char* target, int& error)
{
    std::string name;
    if (!qxPlatformFileResolve(target, name, error)) return nullptr;
    auto lock = std::make_unique<qxPlatformFileLock>();
    lock->file = CreateFileW(qxWideText(name + ".lock").c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    error = lock->file != INVALID_HANDLE_VALUE ? 0 : qxErrorNumber(GetLastError());
    if (error != 0) return nullptr;

    OVERLAPPED place = {};
    if (LockFileEx(lock->file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place))
        return lock.release();
    const DWORD reason = GetLastError();
    error = reason == ERROR_LOCK_VIOLATION || reason == ERROR_IO_PENDING ? 0 : qxErrorNumber(reason);
    CloseHandle(lock->file);
    return nullptr;
}

void qxPlatformFileLockRelease(qxPlatformFileLock* lock)
{
    if (!lock) return;
    OVERLAPPED place = {};
    UnlockFileEx(lock->file, 0, 1, 0, &place);
    CloseHandle(lock->file);
    delete lock;
}
