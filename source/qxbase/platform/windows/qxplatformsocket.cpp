// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformsocket.h"

#include "platform/windows/qxplatformaddress_windows.h"

#include <algorithm>

namespace
{

constexpr unsigned int LONGEST_BLOCK = 0x7FFFFFFF;
constexpr DWORD NO_INHERIT = 0x80;                 // WSA_FLAG_NO_HANDLE_INHERIT, which the headers may lack
constexpr DWORD REPORT_LOST_DATAGRAM = 0x9800000C; // SIO_UDP_CONNRESET, which they lack too

bool report(bool done, int& error)
{
    error = done ? 0 : WSAGetLastError();
    return done;
}

SOCKET handle(qxPlatformSocket socket)
{
    return static_cast<SOCKET>(socket);
}

// With select: here it takes any handle, and the system's poll says nothing of connections that were refused.
int wait(qxPlatformSocket socket, bool toSend, unsigned int milliseconds, int& error)
{
    timeval time = {static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000)};
    fd_set wanted;
    wanted.fd_count = 1;
    wanted.fd_array[0] = handle(socket);
    fd_set failed = wanted;
    const int result = select(0, toSend ? nullptr : &wanted, toSend ? &wanted : nullptr, &failed, &time);
    if (!report(result != SOCKET_ERROR, error)) return -1;
    return result > 0;
}

// As recvfrom on a socket that does not block, whatever this one does: a request that would have to wait is taken back.
// Looking first would not do, since another thread may take what is there.
int receiveAtOnce(qxPlatformSocket socket, char* data, int size, qxSystemAddress& address, int& length)
{
    WSAOVERLAPPED request = {};
    request.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); // others may wait for the handle itself
    if (!request.hEvent) return SOCKET_ERROR;
    WSABUF buffer = {static_cast<u_long>(size), data};
    DWORD flags = 0;
    DWORD received = 0;
    const bool isDone = WSARecvFrom(handle(socket), &buffer, 1, &received, &flags, &address.any, &length,
                                    &request, nullptr) == 0;
    int error = isDone ? 0 : WSAGetLastError();
    if (error == WSA_IO_PENDING) {
        CancelIoEx(reinterpret_cast<HANDLE>(socket), &request);
        const BOOL hasCome = WSAGetOverlappedResult(handle(socket), &request, &received, TRUE, &flags);
        error = hasCome ? 0 : WSAGetLastError();
        if (error == WSA_OPERATION_ABORTED) error = WSAEWOULDBLOCK;
    }
    CloseHandle(request.hEvent);
    WSASetLastError(error);
    return error == 0 ? static_cast<int>(received) : SOCKET_ERROR;
}

} // namespace

bool qxPlatformSocketStart(int& error)
{
    static const int result = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data); // not given back: sockets are used until the process ends
    }();
    error = result;
    return result == 0;
}

int qxPlatformSocketLastError()
{
    return WSAGetLastError();
}

void qxPlatformSocketClearError()
{
    WSASetLastError(0);
}

qxSocketError qxPlatformSocketFault(int error)
{
    switch (error) {
    case 0:
        return QX_SOCKET_NO_ERROR;
    case WSAEPFNOSUPPORT:
        return QX_SOCKET_PROTOCOL_FAMILY;
    case WSAEAFNOSUPPORT:
        return QX_SOCKET_ADDRESS_FAMILY;
    case WSAEACCES:
        return QX_SOCKET_PERMISSION_DENIED;
    case WSAEPROTONOSUPPORT:
        return QX_SOCKET_PROTOCOL_NOT_SUPPORTED;
    case WSANOTINITIALISED:
        return QX_SOCKET_NOT_INITIALISED;
    case WSAEHOSTUNREACH:
    case WSAEHOSTDOWN:
        return QX_SOCKET_HOST_NOT_REACHABLE;
    case WSAENETUNREACH:
    case WSAENETDOWN:
        return QX_SOCKET_NETWORK_NOT_REACHABLE;
    case WSAENOPROTOOPT:
        return QX_SOCKET_UNKNOWN_OPTION;
    case WSAEBADF:
    case WSAENOTSOCK:
        return QX_SOCKET_INVALID_DESCRIPTOR;
    case WSAEINVAL:
        return QX_SOCKET_INVALID_ARGUMENT;
    case WSAEADDRINUSE:
        return QX_SOCKET_ADDRESS_IN_USE;
    case WSAEADDRNOTAVAIL:
        return QX_SOCKET_ADDRESS_NOT_AVAILABLE;
    case WSAEISCONN:
        return QX_SOCKET_IS_CONNECTED;
    case WSAENOTCONN:
        return QX_SOCKET_NOT_CONNECTED;
    case WSAECONNRESET:
    case WSAENETRESET:
    case WSAESHUTDOWN:
        return QX_SOCKET_CONNECTION_RESET;
    case WSAECONNABORTED:
        return QX_SOCKET_CONNECTION_ABORTED;
    case WSAECONNREFUSED:
        return QX_SOCKET_CONNECTION_REFUSED;
    case WSAETIMEDOUT:
        return QX_SOCKET_TIMED_OUT;
    case WSAEWOULDBLOCK:
    case WSAEINPROGRESS:
    case WSAEALREADY:
        return QX_SOCKET_WOULD_BLOCK;
    case WSAEMSGSIZE:
        return QX_SOCKET_TRUNCATED;
    case WSAEINTR:
    case WSA_OPERATION_ABORTED:
        return QX_SOCKET_ABORTED;
    case ERROR_DEV_NOT_EXIST:
        return QX_SOCKET_NO_DEVICE;
    default:
        return QX_SOCKET_UNKNOWN_ERROR;
    }
}

qxPlatformSocket qxPlatformSocketOpen(qxPlatformFamily family, bool isStream, int& error)
{
    if (!qxPlatformSocketStart(error)) return QX_PLATFORM_NO_SOCKET;
    constexpr int infrared = 26;
    const int domain = family == QX_PLATFORM_IPV4   ? AF_INET
                       : family == QX_PLATFORM_IPV6 ? AF_INET6
                                                    : infrared;
    const SOCKET result = WSASocketW(domain, isStream ? SOCK_STREAM : SOCK_DGRAM, 0, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | NO_INHERIT);
    if (!report(result != INVALID_SOCKET, error)) return QX_PLATFORM_NO_SOCKET;

    const DWORD on = 1;
    if (domain == AF_INET6 &&
        setsockopt(result, IPPROTO_IPV6, IPV6_V6ONLY, reinterpret_cast<const char*>(&on), sizeof(on)) != 0) {
        error = WSAGetLastError();
        closesocket(result);
        return QX_PLATFORM_NO_SOCKET;
    }
    DWORD off = 0;
    DWORD ignored = 0;
    if (!isStream) // or one that reached nobody ends the receiving of all others
        WSAIoctl(result, REPORT_LOST_DATAGRAM, &off, sizeof(off), nullptr, 0, &ignored, nullptr, nullptr);
    return static_cast<qxPlatformSocket>(result);
}

void qxPlatformSocketClose(qxPlatformSocket socket)
{
    closesocket(handle(socket));
}

bool qxPlatformSocketStopSending(qxPlatformSocket socket, int& error)
{
    return report(shutdown(handle(socket), SD_SEND) == 0, error);
}

bool qxPlatformSocketStopReceiving(qxPlatformSocket socket, int& error)
{
    return report(shutdown(handle(socket), SD_RECEIVE) == 0, error);
}

void qxPlatformSocketWake(qxPlatformSocket socket)
{
    shutdown(handle(socket), SD_BOTH);
    CancelIoEx(reinterpret_cast<HANDLE>(socket), nullptr); // what the other does not end
}

bool qxPlatformSocketBind(qxPlatformSocket socket, bool, const qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    const int length = qxToSystemAddress(address, system);
    return report(bind(handle(socket), &system.any, length) == 0, error);
}

bool qxPlatformSocketListen(qxPlatformSocket socket, unsigned int backlog, int& error)
{
    const int length = static_cast<int>(std::min<unsigned int>(backlog, 0x7FFFFFFF));
    return report(listen(handle(socket), length) == 0, error);
}

qxPlatformSocket qxPlatformSocketAccept(qxPlatformSocket socket, int& error)
{
    const SOCKET result = accept(handle(socket), nullptr, nullptr);
    if (!report(result != INVALID_SOCKET, error)) return QX_PLATFORM_NO_SOCKET;
    SetHandleInformation(reinterpret_cast<HANDLE>(result), HANDLE_FLAG_INHERIT, 0);
    const auto accepted = static_cast<qxPlatformSocket>(result);
    if (qxPlatformSocketSetBlocking(accepted, true, error)) return accepted;
    closesocket(result);
    return QX_PLATFORM_NO_SOCKET;
}

bool qxPlatformSocketConnect(qxPlatformSocket socket, const qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    const int length = qxToSystemAddress(address, system);
    return report(connect(handle(socket), &system.any, length) == 0, error);
}

int qxPlatformSocketSend(qxPlatformSocket socket, const void* bytes, unsigned int count,
                         const qxPlatformAddress* address, int& error)
{
    const int size = static_cast<int>(std::min(count, LONGEST_BLOCK));
    const auto* const data = static_cast<const char*>(bytes);
    qxSystemAddress system;
    const int length = address ? qxToSystemAddress(*address, system) : 0;
    const int sent = address ? sendto(handle(socket), data, size, 0, &system.any, length)
                             : send(handle(socket), data, size, 0);
    report(sent >= 0, error);
    return sent;
}

int qxPlatformSocketReceive(qxPlatformSocket socket, unsigned int how, void* buffer, unsigned int count,
                            qxPlatformAddress* sender, bool& isTruncated, int& error)
{
    const int size = static_cast<int>(std::min(count, LONGEST_BLOCK));
    auto* const data = static_cast<char*>(buffer);
    qxSystemAddress system;
    system.any.sa_family = AF_UNSPEC; // streams give no address
    int length = sizeof(system);
    const int received = how & QX_PLATFORM_RECEIVE_AT_ONCE ? receiveAtOnce(socket, data, size, system, length)
                         : sender ? recvfrom(handle(socket), data, size, 0, &system.any, &length)
                                  : recv(handle(socket), data, size, 0);
    isTruncated = received < 0 && WSAGetLastError() == WSAEMSGSIZE;
    report(received >= 0 || isTruncated, error);
    if (sender && error == 0) *sender = qxFromSystemAddress(system.any);
    return isTruncated ? size : received;
}

bool qxPlatformSocketSetBlocking(qxPlatformSocket socket, bool isBlocking, int& error)
{
    u_long on = isBlocking ? 0 : 1;
    return report(ioctlsocket(handle(socket), static_cast<long>(FIONBIO), &on) == 0, error);
}

int qxPlatformSocketWaitToReceive(qxPlatformSocket socket, unsigned int milliseconds, int& error)
{
    return wait(socket, false, milliseconds, error);
}

int qxPlatformSocketWaitToSend(qxPlatformSocket socket, unsigned int milliseconds, int& error)
{
    return wait(socket, true, milliseconds, error);
}

bool qxPlatformSocketPending(qxPlatformSocket socket, unsigned int& count, int& error)
{
    u_long bytes = 0;
    const bool done = report(ioctlsocket(handle(socket), FIONREAD, &bytes) == 0, error);
    count = done ? static_cast<unsigned int>(bytes) : 0;
    return done;
}

void qxPlatformSocketOutcome(qxPlatformSocket socket, int& error)
{
    int length = sizeof(error);
    if (getsockopt(handle(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &length) != 0)
        error = WSAGetLastError();
}

bool qxPlatformSocketLocalAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    int length = sizeof(system);
    if (!report(getsockname(handle(socket), &system.any, &length) == 0, error)) return false;
    address = qxFromSystemAddress(system.any);
    return true;
}

bool qxPlatformSocketPeerAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    int length = sizeof(system);
    if (!report(getpeername(handle(socket), &system.any, &length) == 0, error)) return false;
    address = qxFromSystemAddress(system.any);
    return true;
}
