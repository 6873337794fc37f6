// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformhost.h"

#include "platform/windows/qxplatformaddress_windows.h"

#include <cstddef>
#include <memory>

#include <iphlpapi.h>

namespace
{

/// A socket that only carries questions to the system.
class Asking
{
public:
    explicit Asking(qxPlatformFamily family) : m_socket(qxPlatformSocketOpen(family, false, m_error)) {}
    ~Asking()
    {
        if (m_socket != QX_PLATFORM_NO_SOCKET) qxPlatformSocketClose(m_socket);
    }
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;

    /// Bytes of the answer; 0, with the system's number in getError, without one.
    DWORD ask(DWORD question, void* answer, DWORD size)
    {
        DWORD length = 0;
        if (m_error != 0) return 0;
        if (WSAIoctl(static_cast<SOCKET>(m_socket), question, nullptr, 0, answer, size, &length, nullptr,
                     nullptr) == 0)
            return length;
        m_error = WSAGetLastError();
        return 0;
    }

    int getError() const { return m_error; }

private:
    int m_error = 0;
    const qxPlatformSocket m_socket;
};

constexpr std::size_t MOST_INTERFACES = 256;

// The list of interfaces is of IPv4 only; of IPv6 the system lists addresses.
void addIPv6(std::vector<qxPlatformInterface>& result)
{
    alignas(SOCKET_ADDRESS_LIST) unsigned char room[MOST_INTERFACES * 64];
    if (Asking(QX_PLATFORM_IPV6).ask(SIO_ADDRESS_LIST_QUERY, room, sizeof(room)) == 0) return;
    const auto* const list = reinterpret_cast<const SOCKET_ADDRESS_LIST*>(room);
    for (int i = 0; i < list->iAddressCount; ++i) {
        qxPlatformInterface found;
        found.address = qxFromSystemAddress(*list->Address[i].lpSockaddr);
        if (found.address.family == QX_PLATFORM_IPV6) result.push_back(found);
    }
}

} // namespace

std::vector<qxPlatformInterface> qxPlatformInterfaces(int& error)
{
    std::vector<INTERFACE_INFO> list(MOST_INTERFACES);
    Asking asking(QX_PLATFORM_IPV4);
    const DWORD length = asking.ask(SIO_GET_INTERFACE_LIST, list.data(),
                                    static_cast<DWORD>(list.size() * sizeof(INTERFACE_INFO)));
    error = asking.getError();
    if (error != 0) return {};
    std::vector<qxPlatformInterface> result;
    for (std::size_t i = 0; i < length / sizeof(INTERFACE_INFO); ++i) {
        if (!(list[i].iiFlags & IFF_UP)) continue;
        qxPlatformInterface found;
        found.address = qxFromSystemAddress(list[i].iiAddress.Address);
        found.mask = qxFromSystemAddress(list[i].iiNetmask.Address);
        found.mask.family = QX_PLATFORM_IPV4; // some systems leave it out
        std::memcpy(found.mask.bytes, &list[i].iiNetmask.AddressIn.sin_addr, 4);
        if (found.address.family == QX_PLATFORM_IPV4) result.push_back(found);
    }
    addIPv6(result);
    return result;
}

unsigned int qxPlatformInterfaceNumber(const char* name)
{
    return if_nametoindex(name);
}

std::string qxPlatformHostName()
{
    wchar_t name[256];
    DWORD units = 256;
    return GetComputerNameExW(ComputerNameDnsHostname, name, &units) ? qxNarrowText({name, units})
                                                                     : std::string();
}

std::vector<qxPlatformAddress> qxPlatformResolve(const char* name)
{
    int error = 0;
    if (!qxPlatformSocketStart(error)) return {};
    addrinfoW wanted = {};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM; // or each address may come once for each kind of socket
    addrinfoW* first = nullptr;
    if (GetAddrInfoW(qxWideText(name).c_str(), nullptr, &wanted, &first) != 0) return {};
    const std::unique_ptr<addrinfoW, decltype(&FreeAddrInfoW)> list(first, &FreeAddrInfoW);
    std::vector<qxPlatformAddress> result;
    for (const addrinfoW* entry = first; entry; entry = entry->ai_next) {
        const qxPlatformAddress address = qxFromSystemAddress(*entry->ai_addr);
        if (address.family != QX_PLATFORM_NO_FAMILY) result.push_back(address);
    }
    return result;
}
