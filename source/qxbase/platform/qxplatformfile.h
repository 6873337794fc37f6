// Files of the operating system: unbuffered blocks of bytes, and the replacement of a file as a whole.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <string>

// Names are UTF-8 with a terminating zero. Every function with an `error` sets it: to 0 when it did what
// was asked, else to the system's error number, which qxPlatformErrorText describes.

/// How qxPlatformFileOpen opens; in quotes the mode of the C library that means the same.
enum qxPlatformFileMode {
    QX_PLATFORM_FILE_READ,   ///< "rb": reads an existing file; directories are refused.
    QX_PLATFORM_FILE_WRITE,  ///< "wbc": writes a new file; what the file held is gone.
    QX_PLATFORM_FILE_UPDATE, ///< "r+bc": reads and writes an existing file, from its start.
    QX_PLATFORM_FILE_CREATE, ///< "w+bc": reads and writes a new file; what the file held is gone.
};

/// The streams that a program is started with.
enum qxPlatformStandardFile {
    QX_PLATFORM_STANDARD_INPUT,
    QX_PLATFORM_STANDARD_OUTPUT,
    QX_PLATFORM_STANDARD_ERRORS,
};

/// An open file with a position. Nothing is buffered here: each block goes straight to the system.
///
/// Lifetime: made by qxPlatformFileOpen, qxPlatformFileStandard or qxPlatformFileTemporary, ended by qxPlatformFileClose.
///           Programs started by this one do not inherit it.
/// Threads:  one at a time for the same file. Errors: each function hands out the system's number.
struct qxPlatformFile;

/// Opens the file `name` at position 0, or returns null.
qxPlatformFile* qxPlatformFileOpen(const char* name, qxPlatformFileMode mode, int& error);

/// Opens one of the streams that the program was started with, or returns null. Its bytes are taken and given as
/// they are, whatever the C library does with them; what that still holds of output is written first. Closing it
/// leaves the stream open to the others.
qxPlatformFile* qxPlatformFileStandard(qxPlatformStandardFile which, int& error);

/// Closes the file, which is gone in any case; returns false when the system could not keep what was
/// written. Null is allowed.
bool qxPlatformFileClose(qxPlatformFile* file, int& error);

/// Bytes in the file, or 0 with an error. What is not a plain file (a pipe, a terminal) has 0.
unsigned long long qxPlatformFileSize(qxPlatformFile* file, int& error);

/// Bytes from the start of the file to the position, or 0 with an error.
unsigned long long qxPlatformFilePosition(qxPlatformFile* file, int& error);

/// Sets the position, in bytes from the start, at most 2^63 - 1; it may lie behind the end of the file.
bool qxPlatformFileSeek(qxPlatformFile* file, unsigned long long position, int& error);

/// Reads up to `count` bytes and moves the position behind them. Returns how many came: fewer than
/// `count` only at the end of the file (`error` 0) or after a failure.
std::size_t qxPlatformFileRead(qxPlatformFile* file, void* bytes, std::size_t count, int& error);

/// As qxPlatformFileRead, but waits for the first bytes only: 0 means the end (`error` 0) or a failure.
std::size_t qxPlatformFileReadSome(qxPlatformFile* file, void* bytes, std::size_t count, int& error);

/// Writes `count` bytes and moves the position behind them. Returns how many the system took: fewer
/// than `count` only after a failure, such as a full disk.
std::size_t qxPlatformFileWrite(qxPlatformFile* file, const void* bytes, std::size_t count, int& error);

/// Hands what was written to the system, where other programs see it.
bool qxPlatformFileFlush(qxPlatformFile* file, int& error);

/// Waits until what was written is on the disk. What has no disk beneath it (a pipe) is always done.
bool qxPlatformFileSync(qxPlatformFile* file, int& error);

/// Whether `c` stands between the folders in names of files.
bool qxPlatformFileIsSeparator(char c);

/// Whether `name` is there and neither a plain file nor a directory: a pipe or a device, which tell no size.
bool qxPlatformFileIsDevice(const char* name);

/// Whether `name` can be replaced as a whole: it is a plain file or nothing at all, a link that leads to
/// one included. False for directories, devices and pipes, and with `error` where that cannot be told.
bool qxPlatformFileIsReplaceable(const char* name, int& error);

/// Creates and opens (reading and writing) a new empty file that is to take the place of `target`, in
/// the folder of the file that `target` names or links to. `name` receives its name. It is at most as
/// accessible as the target. Returns null when that fails, when the target cannot be replaced and when
/// the caller may not write it.
qxPlatformFile* qxPlatformFileTemporary(const char* target, std::string& name, int& error);

/// The same under a fixed name: that of the file behind the links, then `suffix`. One that was left there, by a program
/// that was ended, is removed first: for callers that hold a lock on the target. A target that does not exist will be its
/// owner's alone.
qxPlatformFile* qxPlatformFileTemporaryNamed(const char* target, const char* suffix, std::string& name,
                                             int& error);

/// Puts the closed file `temporary` in the place of `target` and waits until the folder on the disk says
/// so: whoever opens the target finds the old file or the new one, whole. Call qxPlatformFileSync on the
/// temporary file before it is closed.
///
/// The new file gets the permission bits of the old one, and its owner where the system allows that.
/// Where `target` is a symbolic link, the link stays and the file it leads to is replaced. Other hard
/// links to the old file keep the old content. After a failure to rename, the temporary file is still
/// there; when only the wait for the disk fails, the result is false and the target is replaced.
bool qxPlatformFileReplace(const char* temporary, const char* target, int& error);

/// The full name of the file `name`, which need not exist; links stay.
bool qxPlatformFileFullName(const char* name, std::string& full, int& error);

/// The full name of the file that `name` names or links to, which need not exist.
bool qxPlatformFileResolve(const char* name, std::string& resolved, int& error);

/// Tells one state of a file from another: replacing it gives it another number, writing another time or size.
struct qxPlatformFileIdentity {
    bool exists = false;
    bool isPlain = false; ///< neither a directory nor a device or pipe
    unsigned long long volume = 0;
    unsigned long long number = 0; ///< of the file on its volume
    unsigned long long size = 0;   ///< bytes
    unsigned long long time = 0;   ///< of the last change, in the system's own units

    bool operator==(const qxPlatformFileIdentity&) const = default;
};

/// Looks at what `name` names or links to. That nothing is there is no error; false when that cannot be told.
bool qxPlatformFileIdentify(const char* name, qxPlatformFileIdentity& identity, int& error);

/// Removes the file `name`; directories are refused.
bool qxPlatformFileRemove(const char* name, int& error);
