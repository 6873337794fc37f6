// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include "platform/posix/qxplatformfile_posix.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

static_assert(sizeof(off_t) == 8, "positions and sizes need 64 bits");

namespace
{

constexpr unsigned long long LAST_POSITION = 0x7FFFFFFFFFFFFFFFULL;

int openFlags(qxPlatformFileMode mode)
{
    switch (mode) {
    case QX_PLATFORM_FILE_WRITE:
        return O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    case QX_PLATFORM_FILE_UPDATE:
        return O_RDWR | O_CLOEXEC;
    case QX_PLATFORM_FILE_CREATE:
        return O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC;
    case QX_PLATFORM_FILE_READ:
        break;
    }
    return O_RDONLY | O_CLOEXEC;
}

bool report(bool done, int& error)
{
    error = done ? 0 : errno;
    return done;
}

// A directory opens for reading like a file, with a size of its own, and only refuses to be read.
bool isDirectory(int descriptor)
{
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

// After a failed call: whether to try again. A stream shared with others may have been told by them not to wait.
bool isWorthRetrying(int descriptor, short event)
{
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd wait = {descriptor, event, 0};
    return poll(&wait, 1, -1) > 0 || errno == EINTR;
}

} // namespace

qxPlatformFile* qxPlatformFileOpen(const char* name, qxPlatformFileMode mode, int& error)
{
    auto file = std::make_unique<qxPlatformFile>();
    do {
        file->descriptor = open(name, openFlags(mode), 0666); // the process's mask takes its bits away
    } while (file->descriptor < 0 && errno == EINTR);
    if (!report(file->descriptor >= 0, error)) return nullptr;

    if (isDirectory(file->descriptor)) {
        close(file->descriptor);
        error = EISDIR;
        return nullptr;
    }
    return file.release();
}

qxPlatformFile* qxPlatformFileStandard(qxPlatformStandardFile which, int& error)
{
    const int descriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    if (which == QX_PLATFORM_STANDARD_OUTPUT) std::fflush(stdout);
    auto file = std::make_unique<qxPlatformFile>();
    file->descriptor = fcntl(descriptors[which], F_DUPFD_CLOEXEC, 0);
    return report(file->descriptor >= 0, error) ? file.release() : nullptr;
}

bool qxPlatformFileClose(qxPlatformFile* file, int& error)
{
    error = 0;
    if (!file) return true;
    const int descriptor = file->descriptor;
    delete file;
    // Not repeated when interrupted: the descriptor is free by then and may be another thread's already.
    return report(close(descriptor) == 0 || errno == EINTR, error);
}

unsigned long long qxPlatformFileSize(qxPlatformFile* file, int& error)
{
    struct stat status;
    if (!report(fstat(file->descriptor, &status) == 0, error)) return 0;
    return S_ISREG(status.st_mode) ? static_cast<unsigned long long>(status.st_size) : 0;
}

unsigned long long qxPlatformFilePosition(qxPlatformFile* file, int& error)
{
    const off_t position = lseek(file->descriptor, 0, SEEK_CUR);
    return report(position >= 0, error) ? static_cast<unsigned long long>(position) : 0;
}

bool qxPlatformFileSeek(qxPlatformFile* file, unsigned long long position, int& error)
{
    if (position > LAST_POSITION) {
        error = EINVAL;
        return false;
    }
    return report(lseek(file->descriptor, static_cast<off_t>(position), SEEK_SET) >= 0, error);
}

std::size_t qxPlatformFileRead(qxPlatformFile* file, void* bytes, std::size_t count, int& error)
{
    error = 0;
    unsigned char* const start = static_cast<unsigned char*>(bytes);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t part = read(file->descriptor, start + done, count - done);
        if (part > 0) {
            done += static_cast<std::size_t>(part);
        } else if (part == 0 || !isWorthRetrying(file->descriptor, POLLIN)) {
            report(part == 0, error);
            break;
        }
    }
    return done;
}

std::size_t qxPlatformFileReadSome(qxPlatformFile* file, void* bytes, std::size_t count, int& error)
{
    error = 0;
    for (;;) {
        const ssize_t part = read(file->descriptor, bytes, count);
        if (part >= 0) return static_cast<std::size_t>(part);
        if (!isWorthRetrying(file->descriptor, POLLIN)) break;
    }
    error = errno;
    return 0;
}

std::size_t qxPlatformFileWrite(qxPlatformFile* file, const void* bytes, std::size_t count, int& error)
{
    error = 0;
    const unsigned char* const start = static_cast<const unsigned char*>(bytes);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t part = write(file->descriptor, start + done, count - done);
        if (part >= 0) {
            done += static_cast<std::size_t>(part);
        } else if (!isWorthRetrying(file->descriptor, POLLOUT)) {
            error = errno;
            break;
        }
    }
    return done;
}

bool qxPlatformFileFlush(qxPlatformFile*, int& error)
{
    error = 0; // deliberate: every write has handed its bytes over already
    return true;
}

bool qxPlatformFileSync(qxPlatformFile* file, int& error)
{
    return report(qxSyncDescriptor(file->descriptor), error);
}

bool qxSyncDescriptor(int descriptor)
{
    int result = 0;
    do {
        result = fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    // These say that there is no disk to wait for.
    return result == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

bool qxPlatformFileIsSeparator(char c)
{
    return c == '/';
}

bool qxPlatformFileRemove(const char* name, int& error)
{
    return report(unlink(name) == 0, error);
}
