// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "platform/qxplatformhost.h"
#include "qxguard.h"
#include "qxsocket.h"

#include <initializer_list>

namespace
{

struct Setting {
    qxPlatformSocketOption option;
    int value;
};

bool set(qxPlatformSocket socket, std::initializer_list<Setting> settings, int& error)
{
    for (const Setting& setting : settings)
        if (!qxPlatformSocketSetOption(socket, setting.option, setting.value, error)) return false;
    return true;
}

bool bindTo(qxPlatformSocket socket, qxHostAddress address, unsigned short port, int& error)
{
    if (address.isNull()) address = qxHostAddress::any();
    return qxPlatformSocketBind(socket, false, qxToPlatform({address, port}), error);
}

} // namespace

// A new IPv4 datagram socket that `prepare` makes what it is to be; none when that fails.
template <class Call>
unsigned char qxSocket::createPrepared(const Call& prepare)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    if (!createQuietly(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM)) {
        error = getSocketError();
    } else if (run(prepare, error) < 0) {
        const qxBodyGuard guard(m_opening);
        closeQuietly(false);
        store(error);
    }
    if (error != QX_SOCKET_NO_ERROR && m_useExceptions) raise(error);
    return error == QX_SOCKET_NO_ERROR;
}

unsigned char qxSocket::enableBroadcast(unsigned short port, const qxHostAddress& address)
{
    return createPrepared([&](qxPlatformSocket socket, int& error) {
        const bool isDone =
            set(socket, {{QX_PLATFORM_OPTION_BROADCAST, 1}, {QX_PLATFORM_OPTION_REUSE, 1}}, error) &&
            bindTo(socket, address, port, error);
        return isDone ? 1 : -1;
    });
}

unsigned char qxSocket::enableMulticast(const qxHostAddress& group, unsigned short port,
                                        const qxHostAddress& through, unsigned char ttl)
{
    return createPrepared([&](qxPlatformSocket socket, int& error) {
        const auto address = static_cast<int>(through.asULong());
        const bool isDone =
            set(socket, {{QX_PLATFORM_OPTION_MULTICAST_TTL, ttl}, {QX_PLATFORM_OPTION_REUSE, 1}}, error) &&
            (through.isNull() || set(socket, {{QX_PLATFORM_OPTION_MULTICAST_INTERFACE, address}}, error)) &&
            set(socket, {{QX_PLATFORM_OPTION_MULTICAST_LOOP, 1}}, error) && bindTo(socket, {}, port, error) &&
            qxPlatformSocketJoin(socket, qxToPlatform({group, 0}), qxToPlatform({through, 0}), error);
        return isDone ? 1 : -1;
    });
}

unsigned char qxSocket::enableMulticast(const qxHostAddress& group, unsigned short port, unsigned char ttl)
{
    return enableMulticast(group, port, {}, ttl);
}

qxHostAddress qxSocket::getBroadcastAddress()
{
    qxHostAddress address;
    qxHostAddress mask;
    if (!findInterface(address, mask)) return {};
    return qxHostAddress(address.asULong() | ~mask.asULong());
}

qxHostAddress qxSocket::getNetworkMask()
{
    qxHostAddress address;
    qxHostAddress mask;
    findInterface(address, mask);
    return mask;
}

// The interface that the socket is bound to; stores an error when there is none.
bool qxSocket::findInterface(qxHostAddress& address, qxHostAddress& mask)
{
    address = getBindAddress().getHost();
    if (address.isNull()) return false;
    int error = 0;
    for (const qxPlatformInterface& found : qxPlatformInterfaces(error)) {
        if (found.mask.family == QX_PLATFORM_NO_FAMILY) continue;
        if (qxFromPlatform(found.address).getHost() != address) continue;
        mask = qxFromPlatform(found.mask).getHost();
        return true;
    }
    report(error != 0 ? qxPlatformSocketFault(error) : QX_SOCKET_NO_DEVICE);
    return false;
}
