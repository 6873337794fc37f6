// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformsocket.h"

#include "platform/windows/qxplatformaddress_windows.h"

#include <algorithm>

namespace
{

// The level and the name of each option.
struct Name {
    int level;
    int name;
};

constexpr Name NAMES[] = {
    {SOL_SOCKET, SO_DEBUG},         {SOL_SOCKET, SO_BROADCAST},    {SOL_SOCKET, SO_REUSEADDR},
    {SOL_SOCKET, SO_KEEPALIVE},     {SOL_SOCKET, SO_LINGER},       {IPPROTO_TCP, TCP_NODELAY},
    {IPPROTO_IP, IP_MULTICAST_TTL}, {IPPROTO_IP, IP_MULTICAST_IF}, {IPPROTO_IP, IP_MULTICAST_LOOP},
    {SOL_SOCKET, SO_DONTROUTE},     {SOL_SOCKET, SO_OOBINLINE},    {SOL_SOCKET, SO_RCVBUF},
    {SOL_SOCKET, SO_SNDBUF},
};

template <class Value>
bool set(qxPlatformSocket socket, const Name& option, const Value& value, int& error)
{
    const int result = setsockopt(static_cast<SOCKET>(socket), option.level, option.name,
                                  reinterpret_cast<const char*>(&value), sizeof(value));
    error = result == 0 ? 0 : WSAGetLastError();
    return result == 0;
}

in_addr toGroupAddress(const qxPlatformAddress& address)
{
    in_addr result;
    std::memcpy(&result, address.bytes, sizeof(result));
    return result;
}

} // namespace

bool qxPlatformSocketSetOption(qxPlatformSocket socket, qxPlatformSocketOption option, int value, int& error)
{
    const Name& name = NAMES[option];
    if (option == QX_PLATFORM_OPTION_LINGER) {
        const auto seconds = static_cast<u_short>(std::clamp(value, 0, 0xFFFF));
        return set(socket, name, linger{static_cast<u_short>(value >= 0), seconds}, error);
    }
    if (option == QX_PLATFORM_OPTION_MULTICAST_INTERFACE) {
        in_addr address;
        address.s_addr = htonl(static_cast<unsigned int>(value));
        return set(socket, name, address, error);
    }
    return set(socket, name, value, error);
}

bool qxPlatformSocketGetOption(qxPlatformSocket socket, qxPlatformSocketOption option, int& value, int& error)
{
    const Name& name = NAMES[option];
    int length = sizeof(value);
    value = 0;
    const int result = getsockopt(static_cast<SOCKET>(socket), name.level, name.name,
                                  reinterpret_cast<char*>(&value), &length);
    error = result == 0 ? 0 : WSAGetLastError();
    return result == 0;
}

bool qxPlatformSocketJoin(qxPlatformSocket socket, const qxPlatformAddress& group,
                          const qxPlatformAddress& through, int& error)
{
    const ip_mreq request = {toGroupAddress(group), toGroupAddress(through)}; // zeros are the system's choice
    return set(socket, {IPPROTO_IP, IP_ADD_MEMBERSHIP}, request, error);
}
