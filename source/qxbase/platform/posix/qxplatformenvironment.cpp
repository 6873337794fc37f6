// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformenvironment.h"

#include "platform/qxplatformnotnow.h"

#include <mutex>

#include <stdlib.h>

namespace
{

// The C library's own lock does not cover the text that getenv returns. Destroying this one does nothing, so
// it serves as long as the process runs.
std::mutex s_lock;

} // namespace

bool qxPlatformGetEnvironment(const char* name, std::string& value)
{
    const qxPlatformNotNow notNow;
    const std::lock_guard<std::mutex> guard(s_lock);
    const char* found = getenv(name);
    if (!found) return false;
    value = found;
    return true;
}

bool qxPlatformSetEnvironment(const char* name, const char* value)
{
    const qxPlatformNotNow notNow;
    const std::lock_guard<std::mutex> guard(s_lock);
    return setenv(name, value, 1) == 0;
}

bool qxPlatformUnsetEnvironment(const char* name)
{
    const qxPlatformNotNow notNow;
    const std::lock_guard<std::mutex> guard(s_lock);
    return unsetenv(name) == 0;
}
