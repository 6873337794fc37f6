// Sockets on the loopback addresses for tests.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxsocket.h"

#include "qxtestsupport.h"

#include <string>

inline const qxSocketAddress IPV4_HERE(qxHostAddress::loopback(QX_HOST_ADDRESS_IPV4), 0);
inline const qxSocketAddress IPV6_HERE(qxHostAddress::loopback(QX_HOST_ADDRESS_IPV6), 0);
constexpr unsigned int PATIENCE = 10000; // milliseconds; nothing here needs them

inline int sendText(qxSocket& socket, const std::string& text)
{
    return socket.send(text.data(), static_cast<unsigned int>(text.size()));
}

/// What comes in one block of `room` bytes at most; "error" and the code, when that fails.
inline std::string receiveText(qxSocket& socket, unsigned int room = 1000)
{
    std::string text(room, '\0');
    const int count = socket.receive(text.data(), room);
    if (count < 0) return "error " + std::to_string(socket.getSocketError());
    text.resize(static_cast<std::size_t>(count));
    return text;
}

/// A stream socket that listens at a port that the system chose.
struct Listener : qxSocket {
    explicit Listener(const qxSocketAddress& address = IPV4_HERE)
    {
        const bool isIPv6 = address.getType() == QX_HOST_ADDRESS_IPV6;
        EXPECT_TRUE(create(isIPv6 ? QX_SOCKET_IPV6 : QX_SOCKET_IPV4, QX_SOCKET_STREAM));
        EXPECT_TRUE(bind(address));
        EXPECT_TRUE(listen());
    }
};

/// Two stream sockets that are connected.
struct Pair {
    explicit Pair(const qxSocketAddress& address = IPV4_HERE)
    {
        Listener listener(address);
        const bool isIPv6 = address.getType() == QX_HOST_ADDRESS_IPV6;
        EXPECT_TRUE(client.create(isIPv6 ? QX_SOCKET_IPV6 : QX_SOCKET_IPV4, QX_SOCKET_STREAM));
        EXPECT_TRUE(client.connect(listener.getBindAddress()));
        server = listener.accept();
    }

    qxSocket client;
    qxRefPointer<qxSocket> server;
};

/// A datagram socket that is bound to a port that the system chose.
struct Datagrams : qxSocket {
    explicit Datagrams(const qxSocketAddress& address = IPV4_HERE)
    {
        const bool isIPv6 = address.getType() == QX_HOST_ADDRESS_IPV6;
        EXPECT_TRUE(create(isIPv6 ? QX_SOCKET_IPV6 : QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
        EXPECT_TRUE(bind(address));
    }
};
