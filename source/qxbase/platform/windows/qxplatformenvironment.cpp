// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformenvironment.h"

#include "platform/windows/qxwindows.h"

#include <cstring>

#include <stdlib.h>

namespace
{

bool isName(const char* name)
{
    return *name != 0 && !std::strchr(name, '=');
}

} // namespace

bool qxPlatformGetEnvironment(const char* name, std::string& value)
{
    const std::wstring wideName = qxWideText(name);
    std::wstring text;
    for (DWORD room = 256;;) {
        text.resize(room);
        SetLastError(ERROR_SUCCESS); // an empty value is told from a missing one by this only
        const DWORD length = GetEnvironmentVariableW(wideName.c_str(), text.data(), room);
        if (length == 0 && GetLastError() != ERROR_SUCCESS) return false;
        if (length < room) {
            value = qxNarrowText({text.data(), length});
            return true;
        }
        room = length; // with the terminator; it may have grown again meanwhile
    }
}

bool qxPlatformSetEnvironment(const char* name, const char* value)
{
    if (!isName(name)) return false;
    // The C library keeps a copy of its own, and takes an empty value for none.
    if (*value != 0 && _wputenv(qxWideText(std::string(name) + "=" + value).c_str()) != 0) return false;
    return SetEnvironmentVariableW(qxWideText(name).c_str(), qxWideText(value).c_str()) != 0;
}

bool qxPlatformUnsetEnvironment(const char* name)
{
    if (!isName(name)) return false;
    return _wputenv((qxWideText(name) + L"=").c_str()) == 0 ||
           SetEnvironmentVariableW(qxWideText(name).c_str(), nullptr) != 0;
}
