// Sockets of the operating system.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxsocketerror.h"

// Every function with an `error` sets it: to 0 when it did what was asked, else to the system's number, for which
// qxPlatformSocketFault has a code. A signal that comes in between ends no function here. Nothing raises a signal either:
// a peer that is gone is an error.
//
// Threads: any; several may use one socket at once.

/// A socket of the system. Programs started by this one do not inherit it.
typedef long long qxPlatformSocket;
constexpr qxPlatformSocket QX_PLATFORM_NO_SOCKET = -1;

enum qxPlatformFamily : unsigned char {
    QX_PLATFORM_NO_FAMILY,
    QX_PLATFORM_IPV4,
    QX_PLATFORM_IPV6,
    QX_PLATFORM_INFRARED ///< for opening only; most systems have none any more
};

/// Where a socket is or sends to.
struct qxPlatformAddress {
    qxPlatformFamily family = QX_PLATFORM_NO_FAMILY;
    unsigned short port = 0;      // in this machine's byte order
    unsigned int scope = 0;       // of IPv6: the number of the interface, 0 for any
    unsigned char bytes[16] = {}; // in the order of the network; IPv4 has the first four
};

/// Numbers as those of qxSocketOption.
enum qxPlatformSocketOption : unsigned int {
    QX_PLATFORM_OPTION_DEBUG,
    QX_PLATFORM_OPTION_BROADCAST,
    QX_PLATFORM_OPTION_REUSE,
    QX_PLATFORM_OPTION_KEEP_ALIVE,
    QX_PLATFORM_OPTION_LINGER, ///< seconds; below 0 is off
    QX_PLATFORM_OPTION_NO_DELAY,
    QX_PLATFORM_OPTION_MULTICAST_TTL,
    QX_PLATFORM_OPTION_MULTICAST_INTERFACE, ///< an IPv4 address as a number
    QX_PLATFORM_OPTION_MULTICAST_LOOP,
    QX_PLATFORM_OPTION_DONT_ROUTE,
    QX_PLATFORM_OPTION_OUT_OF_BAND_INLINE,
    QX_PLATFORM_OPTION_RECEIVE_BUFFER,
    QX_PLATFORM_OPTION_SEND_BUFFER
};

/// Makes the system's network ready, once for the process; what fails stays so.
bool qxPlatformSocketStart(int& error);

/// The error that the last failed call of the system left for this thread, and forgetting it.
int qxPlatformSocketLastError();
void qxPlatformSocketClearError();

/// The library's code of the system's `error`; of 0 too.
qxSocketError qxPlatformSocketFault(int error);

/// A new blocking socket. One of IPv6 takes no IPv4, whatever the system's own default is.
qxPlatformSocket qxPlatformSocketOpen(qxPlatformFamily family, bool isStream, int& error);

/// Frees the handle; no call of another thread may use it any more, or it may meet another socket.
void qxPlatformSocketClose(qxPlatformSocket socket);

/// Tells the peer that nothing more is sent, and the system that nothing more is received.
bool qxPlatformSocketStopSending(qxPlatformSocket socket, int& error);
bool qxPlatformSocketStopReceiving(qxPlatformSocket socket, int& error);

/// Ends the calls in which other threads wait on the socket. Some systems wake only what waits at this moment: the caller
/// repeats it until they are out.
void qxPlatformSocketWake(qxPlatformSocket socket);

/// A stream socket may take a port whose last connections are still fading away, where the system needs to be told so.
bool qxPlatformSocketBind(qxPlatformSocket socket, bool isStream, const qxPlatformAddress& address,
                          int& error);
bool qxPlatformSocketListen(qxPlatformSocket socket, unsigned int backlog, int& error);

/// The socket of the next peer, which blocks whatever `socket` does.
qxPlatformSocket qxPlatformSocketAccept(qxPlatformSocket socket, int& error);
bool qxPlatformSocketConnect(qxPlatformSocket socket, const qxPlatformAddress& address, int& error);

/// Bytes that the system took, or -1. Null for `address` is the connected peer.
int qxPlatformSocketSend(qxPlatformSocket socket, const void* bytes, unsigned int count,
                         const qxPlatformAddress* address, int& error);

/// How to receive; flags.
enum qxPlatformReceiving : unsigned char {
    QX_PLATFORM_RECEIVE_STREAM = 1, ///< no datagrams
    QX_PLATFORM_RECEIVE_AT_ONCE = 2 ///< the error "would block" instead of a wait
};

/// Bytes received, 0 at the end of a stream, or -1. `sender` may be null. A datagram that is longer than `count` gives its
/// first bytes and `isTruncated`.
int qxPlatformSocketReceive(qxPlatformSocket socket, unsigned int how, void* buffer, unsigned int count,
                            qxPlatformAddress* sender, bool& isTruncated, int& error);

bool qxPlatformSocketSetBlocking(qxPlatformSocket socket, bool isBlocking, int& error);

/// Waits until the socket can be received from, or be sent to, at most `milliseconds`; 1 when it can, what has failed
/// included, 0 when the time is over, -1 with an error.
int qxPlatformSocketWaitToReceive(qxPlatformSocket socket, unsigned int milliseconds, int& error);
int qxPlatformSocketWaitToSend(qxPlatformSocket socket, unsigned int milliseconds, int& error);

/// Bytes that can be received at once; of datagrams those of the first, and on some systems of all.
bool qxPlatformSocketPending(qxPlatformSocket socket, unsigned int& count, int& error);

/// What became of a connection that was begun without waiting: `error` is its own, and is forgotten by the system.
void qxPlatformSocketOutcome(qxPlatformSocket socket, int& error);

bool qxPlatformSocketLocalAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error);
bool qxPlatformSocketPeerAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error);

bool qxPlatformSocketSetOption(qxPlatformSocket socket, qxPlatformSocketOption option, int value, int& error);

/// Of the options only the three that are numbers on every system: the time to live and the sizes of the buffers.
bool qxPlatformSocketGetOption(qxPlatformSocket socket, qxPlatformSocketOption option, int& value,
                               int& error);

/// Joins the IPv4 group at `group` on the interface with the address `through`, or on the system's choice with none.
bool qxPlatformSocketJoin(qxPlatformSocket socket, const qxPlatformAddress& group,
                          const qxPlatformAddress& through, int& error);
