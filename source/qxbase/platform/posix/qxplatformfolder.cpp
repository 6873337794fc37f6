// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfolder.h"

#include "platform/posix/qxplatformfile_posix.h"
#include "platform/qxplatformenvironment.h"

#include <cerrno>

#include <sys/stat.h>

namespace
{

bool isFolder(const std::string& name)
{
    struct stat status;
    return stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

bool qxPlatformFolderCreateFor(const char* name, int& error)
{
    const std::string file = name;
    error = 0;
    const std::size_t folderEnd = file.rfind('/');
    if (folderEnd == std::string::npos || folderEnd == 0 || isFolder(file.substr(0, folderEnd))) return true;
    for (std::size_t end = file.find('/', 1); end != std::string::npos; end = file.find('/', end + 1)) {
        const std::string folder = file.substr(0, end);
        if (isFolder(folder)) continue;
        const bool isMade = mkdir(folder.c_str(), 0700) == 0;
        if ((isMade && qxSyncFolderOf(folder)) || (!isMade && errno == EEXIST)) continue;
        error = errno;
        return false;
    }
    return true;
}

bool qxPlatformFolderOfSettings(std::string& folder)
{
    if (qxPlatformGetEnvironment("XDG_CONFIG_HOME", folder) && folder.starts_with('/')) return true;
    if (!qxPlatformGetEnvironment("HOME", folder) || folder.empty()) return false;
    folder += "/.config";
    return true;
}
