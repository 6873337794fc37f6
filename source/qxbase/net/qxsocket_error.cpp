// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "qxerror.h"
#include "qxsocket.h"

void qxSocket::setSocketError(qxSocketError error)
{
    if (error == QX_SOCKET_SYSTEM_ERROR) error = qxPlatformSocketFault(qxPlatformSocketLastError());
    if (error == QX_SOCKET_NO_ERROR) return clearSocketError();
    report(error);
}

void qxSocket::report(qxSocketError error)
{
    store(error);
    if (m_useExceptions) raise(error);
}

void qxSocket::raise(qxSocketError error)
{
    qxPlatformSocketClearError();
    qxExceptionThrows::qxThrowWarning(getSocketErrorText(error));
}

const char* qxSocket::getSocketErrorText(qxSocketError error)
{
    switch (error) {
    case QX_SOCKET_NO_ERROR:
    case QX_SOCKET_ABORTED:
        return "qxSocket error: Operation aborted";
    case QX_SOCKET_PROTOCOL_FAMILY:
        return "qxSocket error: Protocol family is not supported";
    case QX_SOCKET_ADDRESS_FAMILY:
        return "qxSocket error: Address family is not supported";
    case QX_SOCKET_PERMISSION_DENIED:
        return "qxSocket error: Permission denied";
    case QX_SOCKET_PROTOCOL_NOT_SUPPORTED:
        return "qxSocket error: Protocol not supported in domain";
    case QX_SOCKET_NOT_ACTIVE:
        return "qxSocket error: Socket not configured or active";
    case QX_SOCKET_HOST_NOT_REACHABLE:
        return "qxSocket error: Host not reachable";
    case QX_SOCKET_NETWORK_NOT_REACHABLE:
        return "qxSocket error: Network not reachable";
    case QX_SOCKET_UNKNOWN_OPTION:
        return "qxSocket error: Option unknown at the level indicated";
    case QX_SOCKET_INVALID_DESCRIPTOR:
        return "qxSocket error: Invalid descriptor";
    case QX_SOCKET_INVALID_ARGUMENT:
        return "qxSocket error: Invalid argument";
    case QX_SOCKET_ADDRESS_IN_USE:
        return "qxSocket error: Address already in use";
    case QX_SOCKET_ADDRESS_NOT_AVAILABLE:
        return "qxSocket error: Cannot assign requested address";
    case QX_SOCKET_IS_CONNECTED:
        return "qxSocket error: Is already connected";
    case QX_SOCKET_NOT_CONNECTED:
        return "qxSocket error: Is not connected";
    case QX_SOCKET_CONNECTION_RESET:
        return "qxSocket error: Connection was reset";
    case QX_SOCKET_CONNECTION_ABORTED:
        return "qxSocket error: Connection was aborted";
    case QX_SOCKET_CONNECTION_REFUSED:
        return "qxSocket error: Connection was refused";
    case QX_SOCKET_TIMED_OUT:
        return "qxSocket error: Connection timed out";
    case QX_SOCKET_WOULD_BLOCK:
        return "qxSocket error: Operation would block";
    case QX_SOCKET_TRUNCATED:
        return "qxSocket error: Message was truncated";
    case QX_SOCKET_NO_DEVICE:
        return "qxSocket error: No such device";
    default:
        return "qxSocket error: Unknown socket error";
    }
}
