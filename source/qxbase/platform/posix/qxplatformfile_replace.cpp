// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include "platform/posix/qxplatformfile_posix.h"

#include <atomic>
#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr int MOST_LINKS = 40; // as many as the kernel follows
constexpr int MOST_TRIES = 1000;

// What stands at the target's name, links followed.
struct Target {
    std::string name; // of the file itself
    bool exists;
    struct stat status; // only if it exists
};

// The folder part of `name` with its slash; empty for a file in the current folder.
std::string folderOf(const std::string& name)
{
    return name.substr(0, name.rfind('/') + 1); // no slash: npos + 1 is 0
}

// Returns the error number, 0 if the target can be replaced.
int inspect(const char* name, Target& target)
{
    target.name = name;
    if (target.name.empty()) return ENOENT;
    target.exists = stat(name, &target.status) == 0;
    if (!target.exists && errno != ENOENT) return errno;
    if (target.exists && S_ISDIR(target.status.st_mode)) return EISDIR;
    if (target.exists && !S_ISREG(target.status.st_mode)) return EOPNOTSUPP;
    return qxFollowLinks(target.name);
}

// Gives the new file the owner of the old one, as far as the system lets this user, then its permissions.
bool takeOver(const char* name, const struct stat& old)
{
    struct stat fresh;
    if (stat(name, &fresh) != 0) return false;
    bool sameOwner = fresh.st_uid == old.st_uid && fresh.st_gid == old.st_gid;
    if (!sameOwner) sameOwner = chown(name, old.st_uid, old.st_gid) == 0;
    if (!sameOwner && fresh.st_gid != old.st_gid) {
        [[maybe_unused]] const int group = chown(name, static_cast<uid_t>(-1), old.st_gid);
    }
    // The bits that lend the owner's rights must not lend those of somebody else.
    const mode_t bits = sameOwner ? 07777 : 0777;
    return chmod(name, old.st_mode & bits) == 0;
}

// Looks at the target of a new temporary file; the rights that it will have at most are in `mode`.
int inspectForWriting(const char* name, Target& target, mode_t& mode)
{
    const int error = inspect(name, target);
    if (error != 0 || !target.exists) return error;
    mode = target.status.st_mode & 0777;
    // Renaming asks only for rights in the folder: a write-protected file would go without a question.
    return faccessat(AT_FDCWD, target.name.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

// Makes a file that was not there.
qxPlatformFile* createFile(const std::string& name, mode_t mode, int& error)
{
    auto file = std::make_unique<qxPlatformFile>();
    file->descriptor = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    error = file->descriptor >= 0 ? 0 : errno;
    return error == 0 ? file.release() : nullptr;
}

} // namespace

// Follows the links by hand, because the last one may lead to a file that does not exist yet.
int qxFollowLinks(std::string& name)
{
    for (int links = 0; links < MOST_LINKS; ++links) {
        char text[PATH_MAX];
        const ssize_t length = readlink(name.c_str(), text, sizeof(text));
        if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : errno; // no link, or nothing there
        if (static_cast<std::size_t>(length) == sizeof(text)) return ENAMETOOLONG;
        const std::string next(text, static_cast<std::size_t>(length));
        name = next.starts_with('/') ? next : folderOf(name) + next;
    }
    return ELOOP;
}

bool qxSyncFolderOf(const std::string& name)
{
    const std::string folder = folderOf(name);
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno == EACCES; // a folder that may be written but not read cannot be waited for
    const bool done = qxSyncDescriptor(descriptor);
    const int error = errno;
    close(descriptor);
    errno = error;
    return done;
}

bool qxPlatformFileIsReplaceable(const char* name, int& error)
{
    Target target;
    error = inspect(name, target);
    if (error == 0) return true;
    if (error == EISDIR || error == EOPNOTSUPP) error = 0; // a plain no
    return false;
}

bool qxPlatformFileIsDevice(const char* name)
{
    Target target;
    return inspect(name, target) == EOPNOTSUPP;
}

qxPlatformFile* qxPlatformFileTemporary(const char* targetName, std::string& name, int& error)
{
    static std::atomic<unsigned int> s_counter{0};

    Target target;
    mode_t mode = 0666;
    error = inspectForWriting(targetName, target, mode);
    if (error != 0) return nullptr;
    const std::string start = folderOf(target.name) + ".qx-" + std::to_string(getpid()) + "-";
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        name = start + std::to_string(s_counter++) + ".tmp";
        qxPlatformFile* const file = createFile(name, mode, error);
        if (file || (error != EEXIST && error != EINTR)) return file;
    }
    return nullptr;
}

qxPlatformFile* qxPlatformFileTemporaryNamed(const char* targetName, const char* suffix, std::string& name,
                                             int& error)
{
    Target target;
    mode_t mode = 0600;
    error = inspectForWriting(targetName, target, mode);
    if (error != 0) return nullptr;
    name = target.name + suffix;
    unlink(name.c_str());
    return createFile(name, mode, error);
}

bool qxPlatformFileReplace(const char* temporary, const char* targetName, int& error)
{
    Target target;
    error = inspect(targetName, target);
    if (error != 0) return false;
    const bool done = (!target.exists || takeOver(temporary, target.status)) &&
                      rename(temporary, target.name.c_str()) == 0 && qxSyncFolderOf(target.name);
    error = done ? 0 : errno;
    return done;
}

bool qxPlatformFileFullName(const char* name, std::string& full, int& error)
{
    full = name;
    error = full.empty() ? ENOENT : 0;
    if (error != 0 || full.starts_with('/')) return error == 0;
    char folder[PATH_MAX];
    if (!getcwd(folder, sizeof(folder))) {
        error = errno;
        return false;
    }
    full = std::string(folder) + "/" + full;
    return true;
}

bool qxPlatformFileResolve(const char* name, std::string& resolved, int& error)
{
    if (!qxPlatformFileFullName(name, resolved, error)) return false;
    error = qxFollowLinks(resolved);
    return error == 0;
}

bool qxPlatformFileIdentify(const char* name, qxPlatformFileIdentity& identity, int& error)
{
    identity = qxPlatformFileIdentity();
    struct stat status;
    error = stat(name, &status) == 0 ? 0 : errno;
    if (error == ENOENT || error == ENOTDIR)
        error = 0;
    else if (error == 0) {
        identity.exists = true;
        identity.isPlain = S_ISREG(status.st_mode);
        identity.volume = status.st_dev;
        identity.number = status.st_ino;
        identity.size = static_cast<unsigned long long>(status.st_size);
        // Of the status, which also copies that keep the time of the content change.
        identity.time = static_cast<unsigned long long>(status.st_ctim.tv_sec) * 1000000000ULL +
                        static_cast<unsigned long long>(status.st_ctim.tv_nsec);
    }
    return error == 0;
}
