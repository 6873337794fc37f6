// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include "platform/windows/qxplatformfile_windows.h"
#include "platform/windows/qxwindows.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace
{

constexpr unsigned long long LAST_POSITION = 0x7FFFFFFFFFFFFFFFULL;
constexpr std::size_t LARGEST_PIECE = 1U << 30; // the C library counts the bytes of a call in an int
constexpr char CONTROL_Z = 26;                  // how a user ends what he types

// "N": programs started by this one do not inherit the file. "c": flushing commits to the disk.
const wchar_t* modeText(qxPlatformFileMode mode)
{
    switch (mode) {
    case QX_PLATFORM_FILE_WRITE:
        return L"wbcN";
    case QX_PLATFORM_FILE_UPDATE:
        return L"r+bcN";
    case QX_PLATFORM_FILE_CREATE:
        return L"w+bcN";
    case QX_PLATFORM_FILE_READ:
        break;
    }
    return L"rbN";
}

bool report(bool done, int& error)
{
    error = done ? 0 : errno;
    return done;
}

// The C library says of directories that they must not be accessed.
bool reportName(bool done, const std::wstring& name, int& error)
{
    if (report(done, error) || error != EACCES) return done;
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) error = EISDIR;
    return false;
}

int descriptorOf(qxPlatformFile* file)
{
    return _fileno(file->stream);
}

// Moves `count` bytes in pieces by `move(start, size)`, which returns how many it moved, 0 at an end and -1 on failure.
template <class Move>
std::size_t moveAll(std::size_t count, int& error, Move move)
{
    std::size_t done = 0;
    error = 0;
    while (done < count) {
        const auto piece = static_cast<unsigned int>(std::min(count - done, LARGEST_PIECE));
        const int moved = move(done, piece);
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
            continue;
        }
        report(moved == 0, error);
        break;
    }
    return done;
}

} // namespace

std::wstring qxWideFileName(const char* name)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const bool hasDrive = name[0] == '/' && isLetter(name[1]) && name[2] == ':';
    return qxWideText(hasDrive ? name + 1 : name);
}

qxPlatformFile* qxPlatformFileOpen(const char* name, qxPlatformFileMode mode, int& error)
{
    auto file = std::make_unique<qxPlatformFile>();
    const std::wstring wideName = qxWideFileName(name);
    file->isWritable = mode != QX_PLATFORM_FILE_READ;
    file->stream = _wfopen(wideName.c_str(), modeText(mode)); // refuses directories
    return reportName(file->stream != nullptr, wideName, error) ? file.release() : nullptr;
}

qxPlatformFile* qxPlatformFileStandard(qxPlatformStandardFile which, int& error)
{
    if (which == QX_PLATFORM_STANDARD_OUTPUT) fflush(stdout);
    const int descriptor = _dup(static_cast<int>(which)); // their numbers are 0, 1 and 2
    if (!report(descriptor >= 0, error)) return nullptr;
    _setmode(descriptor, _O_BINARY); // of this copy only
    auto file = std::make_unique<qxPlatformFile>();
    file->isWritable = which != QX_PLATFORM_STANDARD_INPUT;
    file->stream = _fdopen(descriptor, file->isWritable ? "wb" : "rb");
    if (report(file->stream != nullptr, error)) return file.release();
    _close(descriptor);
    return nullptr;
}

bool qxPlatformFileClose(qxPlatformFile* file, int& error)
{
    error = 0;
    if (!file) return true;
    FILE* const stream = file->stream;
    delete file;
    return report(fclose(stream) == 0, error);
}

unsigned long long qxPlatformFileSize(qxPlatformFile* file, int& error)
{
    struct _stat64 status;
    if (!report(_fstat64(descriptorOf(file), &status) == 0, error)) return 0;
    return (status.st_mode & _S_IFMT) == _S_IFREG ? static_cast<unsigned long long>(status.st_size) : 0;
}

unsigned long long qxPlatformFilePosition(qxPlatformFile* file, int& error)
{
    const long long position = _telli64(descriptorOf(file));
    return report(position >= 0, error) ? static_cast<unsigned long long>(position) : 0;
}

bool qxPlatformFileSeek(qxPlatformFile* file, unsigned long long position, int& error)
{
    if (position > LAST_POSITION) {
        error = EINVAL;
        return false;
    }
    return report(_fseeki64(file->stream, static_cast<long long>(position), SEEK_SET) == 0, error);
}

std::size_t qxPlatformFileRead(qxPlatformFile* file, void* bytes, std::size_t count, int& error)
{
    return moveAll(count, error, [&](std::size_t start, unsigned int size) {
        return _read(descriptorOf(file), static_cast<unsigned char*>(bytes) + start, size);
    });
}

std::size_t qxPlatformFileReadSome(qxPlatformFile* file, void* bytes, std::size_t count, int& error)
{
    const int descriptor = descriptorOf(file);
    const int part = _read(descriptor, bytes, static_cast<unsigned int>(std::min(count, LARGEST_PIECE)));
    // The writers of a pipe are gone: its end, not a failure.
    const bool isEnd = part < 0 && GetLastError() == ERROR_BROKEN_PIPE;
    report(part >= 0 || isEnd, error);
    if (part <= 0) return 0;
    const bool isEndKey = *static_cast<const char*>(bytes) == CONTROL_Z && _isatty(descriptor);
    return isEndKey ? 0 : static_cast<std::size_t>(part);
}

std::size_t qxPlatformFileWrite(qxPlatformFile* file, const void* bytes, std::size_t count, int& error)
{
    const std::size_t done = moveAll(count, error, [&](std::size_t start, unsigned int size) {
        return _write(descriptorOf(file), static_cast<const unsigned char*>(bytes) + start, size);
    });
    if (done < count && error == 0) error = ENOSPC; // the disk took less, and nothing more
    return done;
}

bool qxPlatformFileFlush(qxPlatformFile*, int& error)
{
    error = 0; // deliberate: every write has handed its bytes over already
    return true;
}

bool qxPlatformFileSync(qxPlatformFile* file, int& error)
{
    struct _stat64 status;
    const bool hasDisk = _fstat64(descriptorOf(file), &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG;
    return report(!file->isWritable || !hasDisk || _commit(descriptorOf(file)) == 0, error);
}

bool qxPlatformFileIsSeparator(char c)
{
    return c == '/' || c == '\\';
}

bool qxPlatformFileRemove(const char* name, int& error)
{
    const std::wstring wideName = qxWideFileName(name);
    return reportName(_wunlink(wideName.c_str()) == 0, wideName, error);
}
