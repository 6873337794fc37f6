// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfolder.h"

#include "platform/qxplatformenvironment.h"
#include "platform/windows/qxplatformfile_windows.h"
#include "platform/windows/qxwindows.h"

#include <algorithm>

namespace
{

bool isFolder(const std::wstring& name)
{
    const DWORD attributes = GetFileAttributesW(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

} // namespace

bool qxPlatformFolderCreateFor(const char* name, int& error)
{
    std::wstring file = qxWideFileName(name);
    std::replace(file.begin(), file.end(), L'\\', L'/');
    error = 0;
    for (std::size_t end = file.find(L'/', 1); end != std::wstring::npos; end = file.find(L'/', end + 1)) {
        const std::wstring folder = file.substr(0, end);
        if (folder.ends_with(L':') || isFolder(folder)) continue;
        if (CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) continue;
        if (isFolder(file.substr(0, file.find_last_of(L'/'))))
            return true; // parts of the name of another machine
        error = qxErrorNumber(GetLastError());
        return false;
    }
    return true;
}

bool qxPlatformFolderOfSettings(std::string& folder)
{
    if (!qxPlatformGetEnvironment("APPDATA", folder) || folder.empty()) return false;
    std::replace(folder.begin(), folder.end(), '\\', '/');
    while (folder.ends_with('/')) folder.pop_back();
    return true;
}
