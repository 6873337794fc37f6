// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformhost.h"

#include "platform/posix/qxplatformaddress_posix.h"

#include <cerrno>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <unistd.h>

std::vector<qxPlatformInterface> qxPlatformInterfaces(int& error)
{
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        error = errno;
        return {};
    }
    error = 0;
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
    std::vector<qxPlatformInterface> result;
    for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || !(entry->ifa_flags & IFF_UP)) continue;
        qxPlatformInterface found;
        found.address = qxFromSystemAddress(*entry->ifa_addr);
        if (found.address.family == QX_PLATFORM_NO_FAMILY) continue;
        if (found.address.family == QX_PLATFORM_IPV4 && entry->ifa_netmask)
            found.mask = qxFromSystemAddress(*entry->ifa_netmask);
        result.push_back(found);
    }
    return result;
}

unsigned int qxPlatformInterfaceNumber(const char* name)
{
    return if_nametoindex(name);
}

std::string qxPlatformHostName()
{
    char name[256] = {};
    return gethostname(name, sizeof(name) - 1) == 0 ? name : std::string();
}

std::vector<qxPlatformAddress> qxPlatformResolve(const char* name)
{
    addrinfo wanted = {};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM; // or each address would come once for each kind of socket
    addrinfo* first = nullptr;
    if (getaddrinfo(name, nullptr, &wanted, &first) != 0) return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> list(first, &freeaddrinfo);
    std::vector<qxPlatformAddress> result;
    for (const addrinfo* entry = first; entry; entry = entry->ai_next) {
        const qxPlatformAddress address = qxFromSystemAddress(*entry->ai_addr);
        if (address.family != QX_PLATFORM_NO_FAMILY) result.push_back(address);
    }
    return result;
}
