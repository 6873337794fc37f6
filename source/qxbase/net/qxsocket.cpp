// SPDX-License-Identifier: see LICENSE

#include "qxsocket.h"

#include "net/qxsocketuse.h"
#include "qxerror.h"
#include "qxguard.h"

QX_DEFINE_TYPE(qxSocket, qxThreadTicker)

namespace
{

constexpr int FAILED = -1; // what calls that answer yes or no give for no

int answer(bool isDone)
{
    return isDone ? 1 : FAILED;
}

qxPlatformFamily toPlatform(qxSocketFamily family)
{
    if (family == QX_SOCKET_IPV4) return QX_PLATFORM_IPV4;
    return family == QX_SOCKET_IPV6 ? QX_PLATFORM_IPV6 : QX_PLATFORM_INFRARED;
}

} // namespace

qxSocket::qxSocket() : m_handle(QX_PLATFORM_NO_SOCKET) {}

unsigned char qxSocket::create(qxSocketFamily family, qxSocketType type)
{
    if (createQuietly(family, type)) return 1;
    if (m_useExceptions) raise(getSocketError());
    return 0;
}

unsigned char qxSocket::createQuietly(qxSocketFamily family, qxSocketType type)
{
    qxStartNetwork();
    const qxBodyGuard guard(m_opening);
    closeQuietly(true);
    if (family == QX_SOCKET_INFRARED || type != QX_SOCKET_DATAGRAM) type = QX_SOCKET_STREAM;
    int error = 0;
    const qxPlatformSocket handle = qxPlatformSocketOpen(toPlatform(family), type == QX_SOCKET_STREAM, error);
    if (handle == QX_PLATFORM_NO_SOCKET) {
        store(qxPlatformSocketFault(error));
        return 0;
    }
    adopt(handle, type);
    return 1;
}

// Takes the open `handle`, when nobody uses the socket.
void qxSocket::adopt(qxInt64 handle, qxSocketType type)
{
    m_handle = handle;
    m_type = type;
    m_isBlocking = 1;
    m_users &= ~CLOSED;
}

unsigned char qxSocket::isActive() const
{
    return (m_users & CLOSED) == 0;
}

unsigned char qxSocket::bind(const qxSocketAddress& address)
{
    const qxPlatformAddress place = qxToPlatform(address);
    const bool isStream = m_type == QX_SOCKET_STREAM;
    return use([&](qxPlatformSocket socket, int& error) {
               return answer(qxPlatformSocketBind(socket, isStream, place, error));
           }) > 0;
}

unsigned char qxSocket::listen(unsigned int backlog)
{
    const bool isDone = use([backlog](qxPlatformSocket socket, int& error) {
                            return answer(qxPlatformSocketListen(socket, backlog, error));
                        }) > 0;
    if (isDone) m_isListening = 1;
    return isDone;
}

qxRefPointer<qxSocket> qxSocket::accept()
{
    qxRefPointer<qxSocket> peer(new qxSocket); // first: without memory the peer stays where it waits
    qxPlatformSocket accepted = QX_PLATFORM_NO_SOCKET;
    const int result = use([&accepted](qxPlatformSocket socket, int& error) {
        accepted = qxPlatformSocketAccept(socket, error);
        return answer(accepted != QX_PLATFORM_NO_SOCKET);
    });
    if (result < 0) return nullptr;
    peer->adopt(accepted, QX_SOCKET_STREAM);
    return peer;
}

unsigned char qxSocket::connect(const qxSocketAddress& address)
{
    const qxPlatformAddress place = qxToPlatform(address);
    m_isConnecting = !m_isBlocking;
    return use([&place](qxPlatformSocket socket, int& error) {
               return answer(qxPlatformSocketConnect(socket, place, error));
           }) > 0;
}

unsigned char qxSocket::connect(const qxSocketAddress& address, unsigned int ms)
{
    const qxPlatformAddress place = qxToPlatform(address);
    const bool isBlocking = m_isBlocking;
    bool isLate = false;
    qxSocketError error = QX_SOCKET_NO_ERROR;
    const int result = run(
        [&](qxPlatformSocket socket, int& number) {
            if (isBlocking && !qxPlatformSocketSetBlocking(socket, false, number)) return FAILED;
            if (!qxPlatformSocketConnect(socket, place, number) &&
                qxPlatformSocketFault(number) == QX_SOCKET_WOULD_BLOCK) {
                const int ready = qxPlatformSocketWaitToSend(socket, ms, number);
                isLate = ready == 0;
                if (ready > 0) qxPlatformSocketOutcome(socket, number);
            }
            int ignored = 0;
            if (isBlocking) qxPlatformSocketSetBlocking(socket, true, ignored);
            return answer(number == 0 && !isLate);
        },
        error);
    if (result < 0) report(isLate && error != QX_SOCKET_ABORTED ? QX_SOCKET_TIMED_OUT : error);
    return result > 0;
}

qxSocketAddress qxSocket::getBindAddress()
{
    qxPlatformAddress address;
    use([&address](qxPlatformSocket socket, int& error) {
        return answer(qxPlatformSocketLocalAddress(socket, address, error));
    });
    return qxFromPlatform(address);
}

qxSocketAddress qxSocket::getConnectAddress()
{
    qxPlatformAddress address;
    use([&address](qxPlatformSocket socket, int& error) {
        return answer(qxPlatformSocketPeerAddress(socket, address, error));
    });
    return qxFromPlatform(address);
}

unsigned char qxSocket::isBindTo(const qxSocketAddress& address)
{
    return getBindAddress() == address && !address.isNull();
}

unsigned char qxSocket::isConnectedTo(const qxSocketAddress& address)
{
    return getConnectAddress() == address && !address.isNull();
}

int qxSocket::send(const void* bytes, unsigned int count)
{
    return use([=](qxPlatformSocket socket, int& error) {
        return qxPlatformSocketSend(socket, bytes, count, nullptr, error);
    });
}

int qxSocket::sendTo(const void* bytes, unsigned int count, const qxSocketAddress& address)
{
    const qxPlatformAddress place = qxToPlatform(address);
    return use([=, &place](qxPlatformSocket socket, int& error) {
        return qxPlatformSocketSend(socket, bytes, count, &place, error);
    });
}

int qxSocket::receive(void* buffer, unsigned int count)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    const int result = receiveBytes(buffer, count, nullptr, 0, error);
    if (error != QX_SOCKET_NO_ERROR) report(error);
    return result;
}

int qxSocket::receiveFrom(void* buffer, unsigned int count, qxSocketAddress& sender)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    const int result = receiveBytes(buffer, count, &sender, 0, error);
    if (error != QX_SOCKET_NO_ERROR) report(error);
    return result;
}

// Where a stream's bytes come from the system does not say at each block.
int qxSocket::receiveBytes(void* buffer, unsigned int count, qxSocketAddress* sender, unsigned int how,
                           qxSocketError& error)
{
    const bool isStream = m_type == QX_SOCKET_STREAM;
    bool isTruncated = false;
    qxPlatformAddress address;
    const int result = run(
        [&](qxPlatformSocket socket, int& number) {
            const int received =
                qxPlatformSocketReceive(socket, how | (isStream ? QX_PLATFORM_RECEIVE_STREAM : 0), buffer,
                                        count, sender ? &address : nullptr, isTruncated, number);
            int ignored = 0;
            if (sender && received >= 0 && isStream) qxPlatformSocketPeerAddress(socket, address, ignored);
            return received;
        },
        error);
    if (sender && result >= 0) *sender = qxFromPlatform(address);
    if (isTruncated) error = QX_SOCKET_TRUNCATED;
    return result;
}

unsigned char qxSocket::setBlocking(unsigned char blocking)
{
    const bool isDone = use([blocking](qxPlatformSocket socket, int& error) {
                            return answer(qxPlatformSocketSetBlocking(socket, blocking != 0, error));
                        }) > 0;
    if (isDone) m_isBlocking = blocking != 0;
    return isDone;
}

unsigned char qxSocket::isReadyToReceive(unsigned int ms)
{
    return use([ms](qxPlatformSocket socket, int& error) {
               return qxPlatformSocketWaitToReceive(socket, ms, error);
           }) > 0 &&
           isActive();
}

unsigned char qxSocket::isReadyToSend(unsigned int ms)
{
    int outcome = 0;
    const int result = use([&](qxPlatformSocket socket, int& error) {
        const int ready = qxPlatformSocketWaitToSend(socket, ms, error);
        if (ready > 0 && m_isConnecting.exchange(0)) qxPlatformSocketOutcome(socket, outcome);
        return ready;
    });
    if (outcome != 0) report(qxPlatformSocketFault(outcome));
    return result > 0 && isActive();
}

unsigned int qxSocket::getPendingBytes()
{
    unsigned int count = 0;
    use([&count](qxPlatformSocket socket, int& error) {
        return answer(qxPlatformSocketPending(socket, count, error));
    });
    return count;
}
