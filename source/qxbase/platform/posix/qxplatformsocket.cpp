// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformsocket.h"

#include "platform/posix/qxplatformaddress_posix.h"
#include "platform/qxplatformclock.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

constexpr unsigned int LONGEST_WAIT = 0x7FFFFFFF; // milliseconds; more would be taken for "without end"
constexpr unsigned int LONGEST_BLOCK = 0x7FFFFFFF;

bool report(bool done, int& error)
{
    error = done ? 0 : errno;
    return done;
}

int handle(qxPlatformSocket socket)
{
    return static_cast<int>(socket);
}

// Calls until no signal comes in between.
template <class Call>
auto repeat(const Call& call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

int wait(qxPlatformSocket socket, short event, short answers, unsigned int milliseconds, int& error)
{
    pollfd entry = {handle(socket), event, 0};
    milliseconds = std::min(milliseconds, LONGEST_WAIT);
    const double end = milliseconds > 0 ? qxPlatformSteadySeconds() + milliseconds * 1e-3 : 0.0;
    int result = poll(&entry, 1, static_cast<int>(milliseconds));
    while (result < 0 && errno == EINTR) {
        const double left = milliseconds > 0 ? end - qxPlatformSteadySeconds() : 0.0;
        result = poll(&entry, 1, left > 0.0 ? static_cast<int>(std::ceil(left * 1e3)) : 0);
    }
    if (result > 0 && (entry.revents & POLLNVAL)) {
        error = EBADF;
        return -1;
    }
    if (!report(result >= 0, error)) return -1;
    return (entry.revents & answers) != 0;
}

int endConnect(qxPlatformSocket socket)
{
    int error = 0;
    while (wait(socket, POLLOUT, POLLOUT | POLLERR | POLLHUP, LONGEST_WAIT, error) == 0) {}
    if (error == 0) qxPlatformSocketOutcome(socket, error);
    return error;
}

} // namespace

bool qxPlatformSocketStart(int& error)
{
    error = 0;
    return true;
}

int qxPlatformSocketLastError()
{
    return errno;
}

void qxPlatformSocketClearError()
{
    errno = 0;
}

qxSocketError qxPlatformSocketFault(int error)
{
    switch (error) {
    case 0:
        return QX_SOCKET_NO_ERROR;
    case EPFNOSUPPORT:
        return QX_SOCKET_PROTOCOL_FAMILY;
    case EAFNOSUPPORT:
        return QX_SOCKET_ADDRESS_FAMILY;
    case EACCES:
    case EPERM:
        return QX_SOCKET_PERMISSION_DENIED;
    case EPROTONOSUPPORT:
        return QX_SOCKET_PROTOCOL_NOT_SUPPORTED;
    case EHOSTUNREACH:
    case EHOSTDOWN:
        return QX_SOCKET_HOST_NOT_REACHABLE;
    case ENETUNREACH:
    case ENETDOWN:
        return QX_SOCKET_NETWORK_NOT_REACHABLE;
    case ENOPROTOOPT:
        return QX_SOCKET_UNKNOWN_OPTION;
    case EBADF:
    case ENOTSOCK:
        return QX_SOCKET_INVALID_DESCRIPTOR;
    case EINVAL:
        return QX_SOCKET_INVALID_ARGUMENT;
    case EADDRINUSE:
        return QX_SOCKET_ADDRESS_IN_USE;
    case EADDRNOTAVAIL:
        return QX_SOCKET_ADDRESS_NOT_AVAILABLE;
    case EISCONN:
        return QX_SOCKET_IS_CONNECTED;
    case ENOTCONN:
        return QX_SOCKET_NOT_CONNECTED;
    case ECONNRESET:
    case EPIPE:
    case ENETRESET:
        return QX_SOCKET_CONNECTION_RESET;
    case ECONNABORTED:
        return QX_SOCKET_CONNECTION_ABORTED;
    case ECONNREFUSED:
        return QX_SOCKET_CONNECTION_REFUSED;
    case ETIMEDOUT:
        return QX_SOCKET_TIMED_OUT;
    case EAGAIN:
    case EINPROGRESS:
    case EALREADY:
        return QX_SOCKET_WOULD_BLOCK;
    case EMSGSIZE:
        return QX_SOCKET_TRUNCATED;
    case EINTR:
        return QX_SOCKET_ABORTED;
    case ENODEV:
    case ENXIO:
        return QX_SOCKET_NO_DEVICE;
    default:
        return QX_SOCKET_UNKNOWN_ERROR;
    }
}

qxPlatformSocket qxPlatformSocketOpen(qxPlatformFamily family, bool isStream, int& error)
{
    constexpr int infrared = 23; // what it was; not every system's headers name it
    const int domain = family == QX_PLATFORM_IPV4   ? AF_INET
                       : family == QX_PLATFORM_IPV6 ? AF_INET6
                                                    : infrared;
    const int descriptor = socket(domain, (isStream ? SOCK_STREAM : SOCK_DGRAM) | SOCK_CLOEXEC, 0);
    if (!report(descriptor >= 0, error)) return QX_PLATFORM_NO_SOCKET;

    const int on = 1;
    if (domain == AF_INET6 && setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof(on)) != 0) {
        error = errno;
        close(descriptor);
        return QX_PLATFORM_NO_SOCKET;
    }
    return descriptor;
}

void qxPlatformSocketClose(qxPlatformSocket socket)
{
    close(handle(socket)); // not repeated when interrupted: the descriptor is free by then
}

bool qxPlatformSocketStopSending(qxPlatformSocket socket, int& error)
{
    return report(shutdown(handle(socket), SHUT_WR) == 0, error);
}

bool qxPlatformSocketStopReceiving(qxPlatformSocket socket, int& error)
{
    return report(shutdown(handle(socket), SHUT_RD) == 0, error);
}

void qxPlatformSocketWake(qxPlatformSocket socket)
{
    shutdown(handle(socket),
             SHUT_RDWR); // an unconnected socket's calls end too, although this gives an error
}

bool qxPlatformSocketBind(qxPlatformSocket socket, bool isStream, const qxPlatformAddress& address,
                          int& error)
{
    const int on = 1;
    if (isStream && setsockopt(handle(socket), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0)
        return report(false, error);
    qxSystemAddress system;
    const socklen_t length = qxToSystemAddress(address, system);
    return report(bind(handle(socket), &system.any, length) == 0, error);
}

bool qxPlatformSocketListen(qxPlatformSocket socket, unsigned int backlog, int& error)
{
    const int length = static_cast<int>(std::min<unsigned int>(backlog, 0x7FFFFFFF));
    return report(listen(handle(socket), length) == 0, error);
}

qxPlatformSocket qxPlatformSocketAccept(qxPlatformSocket socket, int& error)
{
    const int descriptor =
        repeat([socket] { return accept4(handle(socket), nullptr, nullptr, SOCK_CLOEXEC); });
    if (!report(descriptor >= 0, error)) return QX_PLATFORM_NO_SOCKET;
    if (qxPlatformSocketSetBlocking(descriptor, true, error)) return descriptor;
    close(descriptor);
    return QX_PLATFORM_NO_SOCKET;
}

bool qxPlatformSocketConnect(qxPlatformSocket socket, const qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    const socklen_t length = qxToSystemAddress(address, system);
    if (report(connect(handle(socket), &system.any, length) == 0, error)) return true;
    if (error == EINTR) error = endConnect(socket); // it goes on without us
    return error == 0;
}

int qxPlatformSocketSend(qxPlatformSocket socket, const void* bytes, unsigned int count,
                         const qxPlatformAddress* address, int& error)
{
    count = std::min(count, LONGEST_BLOCK);
    qxSystemAddress system;
    const socklen_t length = address ? qxToSystemAddress(*address, system) : 0;
    const ssize_t sent = repeat([&] {
        return sendto(handle(socket), bytes, count, MSG_NOSIGNAL, address ? &system.any : nullptr, length);
    });
    report(sent >= 0, error);
    return static_cast<int>(sent);
}

int qxPlatformSocketReceive(qxPlatformSocket socket, unsigned int how, void* buffer, unsigned int count,
                            qxPlatformAddress* sender, bool& isTruncated, int& error)
{
    count = std::min(count, LONGEST_BLOCK);
    qxSystemAddress system;
    system.any.sa_family = AF_UNSPEC; // streams give no address
    socklen_t length = sizeof(system);
    int flags = how & QX_PLATFORM_RECEIVE_AT_ONCE ? MSG_DONTWAIT : 0;
    if (!(how & QX_PLATFORM_RECEIVE_STREAM))
        flags |= MSG_TRUNC; // so a datagram tells its whole length; streams would lose bytes
    const ssize_t received = repeat([&] {
        return recvfrom(handle(socket), buffer, count, flags, sender ? &system.any : nullptr,
                        sender ? &length : nullptr);
    });
    report(received >= 0, error);
    if (sender && received >= 0) *sender = qxFromSystemAddress(system.any);
    isTruncated = received > static_cast<ssize_t>(count);
    return isTruncated ? static_cast<int>(count) : static_cast<int>(received);
}

bool qxPlatformSocketSetBlocking(qxPlatformSocket socket, bool isBlocking, int& error)
{
    int on = isBlocking ? 0 : 1;
    return report(ioctl(handle(socket), FIONBIO, &on) == 0, error);
}

int qxPlatformSocketWaitToReceive(qxPlatformSocket socket, unsigned int milliseconds, int& error)
{
    return wait(socket, POLLIN, POLLIN | POLLHUP | POLLERR, milliseconds, error);
}

int qxPlatformSocketWaitToSend(qxPlatformSocket socket, unsigned int milliseconds, int& error)
{
    return wait(socket, POLLOUT, POLLOUT | POLLERR, milliseconds, error);
}

bool qxPlatformSocketPending(qxPlatformSocket socket, unsigned int& count, int& error)
{
    int bytes = 0;
    const bool done = report(ioctl(handle(socket), FIONREAD, &bytes) == 0, error);
    count = done && bytes > 0 ? static_cast<unsigned int>(bytes) : 0;
    return done;
}

void qxPlatformSocketOutcome(qxPlatformSocket socket, int& error)
{
    socklen_t length = sizeof(error);
    if (getsockopt(handle(socket), SOL_SOCKET, SO_ERROR, &error, &length) != 0) error = errno;
}

bool qxPlatformSocketLocalAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    socklen_t length = sizeof(system);
    if (!report(getsockname(handle(socket), &system.any, &length) == 0, error)) return false;
    address = qxFromSystemAddress(system.any);
    return true;
}

bool qxPlatformSocketPeerAddress(qxPlatformSocket socket, qxPlatformAddress& address, int& error)
{
    qxSystemAddress system;
    socklen_t length = sizeof(system);
    if (!report(getpeername(handle(socket), &system.any, &length) == 0, error)) return false;
    address = qxFromSystemAddress(system.any);
    return true;
}
