// The system's network header, and addresses in the system's own form.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformsocket.h"

#include <cstring>

#include <winsock2.h>
#include <ws2tcpip.h>

#include "platform/windows/qxwindows.h" // behind the network's header, as that asks

/// Room for the address of any socket here.
union qxSystemAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

/// Fills `system` and gives its length; an address without a family fits no socket.
inline int qxToSystemAddress(const qxPlatformAddress& address, qxSystemAddress& system)
{
    if (address.family == QX_PLATFORM_IPV6) {
        system.ipv6 = {};
        system.ipv6.sin6_family = AF_INET6;
        system.ipv6.sin6_port = htons(address.port);
        system.ipv6.sin6_scope_id = address.scope;
        std::memcpy(&system.ipv6.sin6_addr, address.bytes, 16);
        return sizeof(system.ipv6);
    }
    system.ipv4 = {};
    system.ipv4.sin_family = address.family == QX_PLATFORM_IPV4 ? AF_INET : AF_UNSPEC;
    system.ipv4.sin_port = htons(address.port);
    std::memcpy(&system.ipv4.sin_addr, address.bytes, 4);
    return sizeof(system.ipv4);
}

/// The reverse; what is neither IPv4 nor IPv6 is no address.
inline qxPlatformAddress qxFromSystemAddress(const sockaddr& system)
{
    qxPlatformAddress address;
    if (system.sa_family == AF_INET) {
        sockaddr_in ipv4;
        std::memcpy(&ipv4, &system, sizeof(ipv4));
        address.family = QX_PLATFORM_IPV4;
        address.port = ntohs(ipv4.sin_port);
        std::memcpy(address.bytes, &ipv4.sin_addr, 4);
    } else if (system.sa_family == AF_INET6) {
        sockaddr_in6 ipv6;
        std::memcpy(&ipv6, &system, sizeof(ipv6));
        address.family = QX_PLATFORM_IPV6;
        address.port = ntohs(ipv6.sin6_port);
        address.scope = ipv6.sin6_scope_id;
        std::memcpy(address.bytes, &ipv6.sin6_addr, 16);
    }
    return address;
}
