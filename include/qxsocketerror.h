// What can go wrong with a socket.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// The error of a socket; qxSocket::getSocketErrorText has a text for each.
enum qxSocketError : unsigned int {
    QX_SOCKET_NO_ERROR = 0, ///< nothing went wrong
    QX_SOCKET_SYSTEM_ERROR =
        1, ///< never stored: qxSocket::setSocketError takes the system's last error for it
    QX_SOCKET_UNKNOWN_ERROR = 2, ///< an error of the system that has no code of its own
    QX_SOCKET_PROTOCOL_FAMILY = 3,
    QX_SOCKET_ADDRESS_FAMILY = 4,
    QX_SOCKET_PERMISSION_DENIED = 5,
    QX_SOCKET_PROTOCOL_NOT_SUPPORTED = 6,
    QX_SOCKET_NOT_INITIALISED = 7, ///< the system's network was not started
    QX_SOCKET_PEER_CLOSED = 8,     ///< while closing: the peer has stopped sending
    QX_SOCKET_NOT_ACTIVE = 10,
    QX_SOCKET_HOST_NOT_REACHABLE = 11,
    QX_SOCKET_NETWORK_NOT_REACHABLE = 12,
    QX_SOCKET_UNKNOWN_OPTION = 13,
    QX_SOCKET_INVALID_DESCRIPTOR = 14, ///< there is no socket, or it was closed
    QX_SOCKET_INVALID_ARGUMENT = 15,
    QX_SOCKET_ADDRESS_IN_USE = 16,
    QX_SOCKET_ADDRESS_NOT_AVAILABLE = 17,
    QX_SOCKET_IS_CONNECTED = 18,
    QX_SOCKET_NOT_CONNECTED = 19,
    QX_SOCKET_CONNECTION_RESET = 20,
    QX_SOCKET_CONNECTION_ABORTED = 21,
    QX_SOCKET_CONNECTION_REFUSED = 22,
    QX_SOCKET_TIMED_OUT = 23,
    QX_SOCKET_WOULD_BLOCK = 24, ///< also a connect that has begun on a socket that does not block
    QX_SOCKET_TRUNCATED = 25,   ///< the datagram was longer than the buffer; its start was received
    QX_SOCKET_ABORTED = 26,     ///< the socket was closed by another thread meanwhile
    QX_SOCKET_NO_DEVICE = 27
};
