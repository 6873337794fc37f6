// SPDX-License-Identifier: see LICENSE

#include "core/qxuserkey.h"

#include "platform/qxplatformenvironment.h"

#include <atomic>

namespace
{

qxString lookInEnvironment(const char* name)
{
    std::string value;
    if (!qxPlatformGetEnvironment(name, value) || value.size() > qxString::MAX_LENGTH) return qxString();
    return qxString(value.c_str());
}

std::atomic<qxString (*)(const char*)> s_lookup{&lookInEnvironment};

} // namespace

qxString qxGetUserKey(const char* name)
{
    return s_lookup.load()(name);
}

void qxSetUserKeyLookup(qxString (*lookup)(const char* name))
{
    s_lookup.store(lookup ? lookup : &lookInEnvironment);
}
