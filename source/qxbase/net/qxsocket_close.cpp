// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "qxguard.h"
#include "qxsocket.h"
#include "qxthread.h"
#include "qxtime.h"

#include <algorithm>

namespace
{

constexpr unsigned int STEP = 10;           // milliseconds between two looks at a peer that still sends
constexpr unsigned int LONGEST_WAKE = 2000; // passes of a millisecond; nothing known needs more than one

} // namespace

qxSocket::~qxSocket() noexcept(false)
{
    stopTicker();
    closeQuietly(false);
}

void qxSocket::close(unsigned char graceful)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    {
        const qxBodyGuard guard(m_opening);
        error = closeQuietly(graceful != 0);
    }
    if (error != QX_SOCKET_NO_ERROR && m_useExceptions) raise(error);
}

// Returns the first error on the way. Call with m_opening held, or when nobody else knows the socket.
qxSocketError qxSocket::closeQuietly(bool isGraceful)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    if (isActive()) {
        clearSocketError(); // what went wrong before does not shorten the wait
        const bool isStream = m_type == QX_SOCKET_STREAM;
        int number = 0;
        if (!qxPlatformSocketStopSending(m_handle, number) && isStream) store(qxPlatformSocketFault(number));
        if (isStream && isGraceful && !m_isListening && !hasSocketError()) awaitPeer();
        error = getSocketError();
        closeHandle();
    }
    {
        const qxBodyGuard guard(m_bufferLock);
        m_buffer.clear();
    }
    m_isListening = 0;
    m_isConnecting = 0;
    m_isBlocking = 1;
    clearSocketError();
    return error;
}

// Closing with bytes that nobody has read would reset the connection, and might take away from the peer what it has not read
// itself: they are thrown away meanwhile.
void qxSocket::awaitPeer()
{
    const double end = qxTime::systemSeconds() + m_closeWait * 1e-3;
    int number = 0;
    qxPlatformSocketSetBlocking(m_handle, false, number); // another thread may take what is there
    while (number == 0) {
        const double left = (end - qxTime::systemSeconds()) * 1e3;
        if (left < 0.0) return;
        const int ready = qxPlatformSocketWaitToReceive(m_handle, static_cast<unsigned int>(left), number);
        if (ready == 0) return;
        if (number == 0 && isAtEnd(end, number)) return store(QX_SOCKET_PEER_CLOSED);
        if (number == 0) qxThread::qxDelayFunction(STEP);
    }
    store(qxPlatformSocketFault(number));
}

// Throws away what the peer has sent; true when there is nothing although the socket can be read.
bool qxSocket::isAtEnd(double end, int& number)
{
    unsigned int count = 0;
    if (!qxPlatformSocketPending(m_handle, count, number)) return false;
    if (count == 0) return m_closeOnNoData;
    unsigned char unread[16384];
    bool ignored = false;
    int error = 0;
    while (qxPlatformSocketReceive(m_handle, QX_PLATFORM_RECEIVE_STREAM, unread, sizeof(unread), nullptr,
                                   ignored, error) > 0)
        if (qxTime::systemSeconds() > end) break;
    return false;
}

void qxSocket::closeHandle()
{
    const qxPlatformSocket handle = m_handle;
    unsigned int users = m_users.fetch_or(CLOSED) | CLOSED; // before their calls end: so they know why
    int ignored = 0;
    qxPlatformSocketStopReceiving(handle, ignored);
    for (unsigned int pass = 0; users != CLOSED && pass < LONGEST_WAKE; ++pass) {
        qxPlatformSocketWake(handle);
        if (pass > 0) qxThread::qxDelayFunction(1);
        users = m_users | CLOSED;
    }
    qxPlatformSocketClose(handle);
    m_handle = QX_PLATFORM_NO_SOCKET;
}
