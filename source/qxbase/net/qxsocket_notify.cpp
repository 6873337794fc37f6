// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "qxsocket.h"

#include <algorithm>

namespace
{

constexpr unsigned int LARGEST_MESSAGE = 65536; // bytes; no datagram has more

} // namespace

unsigned char qxSocket::poll()
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    const bool isThere = receivePass(error);
    if (error != QX_SOCKET_NO_ERROR) report(error); // then there was nothing, and this object still is
    return isThere;
}

void qxSocket::onTick(double, double)
{
    if (m_type != QX_SOCKET_STREAM) return;
    qxSocketError error = QX_SOCKET_NO_ERROR;
    receivePass(error);
}

// With an error nothing was handed on. A receiver may end this object: it is not touched behind that.
bool qxSocket::receivePass(qxSocketError& error)
{
    if (!isActive() || m_isListening) return false;
    const qxRefPointer<qxNetData> data = takeData(error);
    if (error != QX_SOCKET_NO_ERROR) store(error);
    if (!data) return false;
    if (m_stopOnFirst) stopTicker();
    notify(data);
    return true;
}

// What can be received without waiting; null when there is nothing.
qxRefPointer<qxNetData> qxSocket::takeData(qxSocketError& error)
{
    const bool isStream = m_type == QX_SOCKET_STREAM;
    unsigned int count = LARGEST_MESSAGE;
    const int result = run(
        [&](qxPlatformSocket socket, int& number) {
            if (!isStream) return qxPlatformSocketWaitToReceive(socket, 0, number);
            if (!qxPlatformSocketPending(socket, count, number)) return -1;
            return count > 0 ? 1 : 0;
        },
        error);
    if (result <= 0) return nullptr;

    std::vector<unsigned char> bytes(std::min(count, LARGEST_MESSAGE));
    qxSocketAddress sender;
    const int received = receiveBytes(bytes.data(), static_cast<unsigned int>(bytes.size()), &sender,
                                      QX_PLATFORM_RECEIVE_AT_ONCE, error);
    if (received < 0 && error == QX_SOCKET_WOULD_BLOCK) error = QX_SOCKET_NO_ERROR; // another thread took it
    if (received < 0 || error != QX_SOCKET_NO_ERROR || (isStream && received == 0)) return nullptr;
    return qxRefPointer<qxNetData>(new qxNetData(bytes.data(), static_cast<unsigned int>(received), sender));
}
