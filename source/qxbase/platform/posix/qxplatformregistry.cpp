// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformregistry.h"

bool qxPlatformRegistryIsThere()
{
    return false;
}

bool qxPlatformRegistryGet(bool, const char*, const char*, std::string&)
{
    return false;
}

bool qxPlatformRegistrySet(bool, const char*, const char*, const char*)
{
    return false;
}

bool qxPlatformRegistryRemove(bool, const char*, const char*)
{
    return false;
}
