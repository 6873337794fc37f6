// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfilelock.h"

#include "platform/qxplatformfile.h"

#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

struct qxPlatformFileLock {
    int descriptor;
};

namespace
{

// Whoever may read the target may wait for its lock.
mode_t modeFor(const std::string& target)
{
    struct stat status;
    return stat(target.c_str(), &status) == 0 ? status.st_mode & 0666 : 0600;
}

// A link in the place of the lock could lead anywhere. Reading is enough to lock, and all that others may be allowed.
int openLock(const std::string& name, mode_t mode)
{
    return open(name.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, mode);
}

} // namespace

qxPlatformFileLock* qxPlatformFileLockTry(const char* target, int& error)
{
    std::string name;
    if (!qxPlatformFileResolve(target, name, error)) return nullptr;
    const mode_t mode = modeFor(name);
    auto lock = std::make_unique<qxPlatformFileLock>();
    lock->descriptor = openLock(name + ".lock", mode);
    error = lock->descriptor >= 0 ? 0 : errno;
    if (error != 0) return nullptr;

    int result = 0;
    do {
        result = flock(lock->descriptor, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return lock.release();
    error = errno == EWOULDBLOCK ? 0 : errno;
    close(lock->descriptor);
    return nullptr;
}

void qxPlatformFileLockRelease(qxPlatformFileLock* lock)
{
    if (!lock) return;
    flock(lock->descriptor, LOCK_UN); // a process that was forked meanwhile holds the file open too
    close(lock->descriptor);
    delete lock;
}
