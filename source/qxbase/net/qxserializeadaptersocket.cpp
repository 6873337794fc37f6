// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptersocket.h"

#include "qxmessage.h"

#include <algorithm>
#include <cstring>
#include <utility>

QX_DEFINE_TYPE(qxSerializeAdapterSocket, qxSerializeAdapter)

namespace
{

constexpr unsigned int BUFFER_SIZE = 65536;  // bytes; no datagram has more
constexpr unsigned int STREAM_PIECE = 16384; // bytes that are collected for a stream

} // namespace

qxSerializeAdapterSocket::qxSerializeAdapterSocket(qxSocket* socket, bool closes)
    : m_socket(socket), m_closes(closes), m_isStream(socket->getSocketType() == QX_SOCKET_STREAM)
{
    socket->useExceptions(0); // its errors are this adapter's from now on
}

qxSerializeAdapterSocket::~qxSerializeAdapterSocket() noexcept(false)
{
    sendAll(std::min(m_wait, m_socket->getCloseWait()));
    if (m_closes) m_socket->close(1);
}

void qxSerializeAdapterSocket::flush()
{
    qxSerializeAdapter::flush();
    sendAll(m_wait);
}

void qxSerializeAdapterSocket::fail(qxSocketError error)
{
    m_isOver = true;
    m_writtenCount = 0;
    const char* const text = qxSocket::getSocketErrorText(error);
    setError(qxMessage::translate(qxMessage::getDefaultSender(), text));
}

void qxSerializeAdapterSocket::write_imp(unsigned char* bytes, unsigned int count)
{
    const unsigned int room = m_isStream ? STREAM_PIECE : DATAGRAM_SIZE;
    if (!m_written) m_written = std::make_unique_for_overwrite<unsigned char[]>(room);
    while (count > 0 && !m_isOver) {
        if (m_isStream && m_writtenCount == 0 && count >= room) {
            sendBlock(bytes, count, m_wait);
            return;
        }
        const unsigned int part = std::min(count, room - m_writtenCount);
        std::memcpy(m_written.get() + m_writtenCount, bytes, part);
        m_writtenCount += part;
        bytes += part;
        count -= part;
        if (m_writtenCount == room) sendAll(m_wait);
    }
}

void qxSerializeAdapterSocket::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

void qxSerializeAdapterSocket::sendAll(unsigned int wait)
{
    const unsigned int count = std::exchange(m_writtenCount, 0);
    if (count > 0 && !m_isOver) sendBlock(m_written.get(), count, wait);
}

// A blocking socket waits itself, unless it must not wait for ever.
void qxSerializeAdapterSocket::sendBlock(const unsigned char* bytes, unsigned int count, unsigned int wait)
{
    const bool isLimited = m_socket->isBlocking() && wait != FOREVER;
    if (isLimited) m_socket->setBlocking(0);
    while (count > 0 && !m_isOver) {
        const int sent = m_socket->send(bytes, count);
        if (sent < 0) {
            if (!isReadyAgain(true, wait)) break;
            continue;
        }
        bytes += sent;
        count -= static_cast<unsigned int>(sent);
    }
    if (isLimited && m_socket->isActive()) m_socket->setBlocking(1);
}

// After a call that failed: waits if it only would have had to wait.
bool qxSerializeAdapterSocket::isReadyAgain(bool toSend, unsigned int wait)
{
    if (m_socket->getSocketError() == QX_SOCKET_WOULD_BLOCK) {
        m_socket->clearSocketError();
        if (isReady(toSend, wait)) return true;
    }
    fail(m_socket->hasSocketError() ? m_socket->getSocketError() : QX_SOCKET_TIMED_OUT);
    return false;
}

bool qxSerializeAdapterSocket::isReady(bool toSend, unsigned int wait)
{
    do {
        if (toSend ? m_socket->isReadyToSend(wait) : m_socket->isReadyToReceive(wait)) return true;
    } while (wait == FOREVER && m_socket->isActive() && !m_socket->hasSocketError());
    return false;
}

// What is there in one piece, of which there is a byte at least; 0 at the end.
unsigned int qxSerializeAdapterSocket::receive(unsigned char* buffer, unsigned int count)
{
    sendAll(m_wait); // or both sides might wait for each other
    while (!m_isOver && !m_isAtEnd) {
        if (m_wait != FOREVER && m_socket->bufferGetPendingBytes() == 0 && !isReady(false, m_wait)) {
            fail(m_socket->hasSocketError() ? m_socket->getSocketError() : QX_SOCKET_TIMED_OUT);
            break;
        }
        const int received = m_socket->bufferReceive(buffer, count);
        if (received > 0) return static_cast<unsigned int>(received);
        m_isAtEnd = received == 0 || !isReadyAgain(false, m_wait);
    }
    return 0;
}

void qxSerializeAdapterSocket::fillWindow(unsigned int)
{
    if (m_window.next < m_window.end || m_isAtEnd || m_isOver) return;
    if (!m_received) m_received = std::make_unique_for_overwrite<unsigned char[]>(BUFFER_SIZE);
    const unsigned int count = receive(m_received.get(), BUFFER_SIZE);
    m_window.next = m_received.get();
    m_window.end = m_window.next + count;
}

// A datagram that does not fit would lose its end: only a stream goes past the buffer.
unsigned int qxSerializeAdapterSocket::read_imp(unsigned char* buffer, unsigned int count)
{
    if (count == 0) return 0;
    if (m_window.next >= m_window.end) {
        if (m_isStream && count >= BUFFER_SIZE) return receive(buffer, count);
        fillWindow(count);
    }
    const unsigned int part = std::min(count, static_cast<unsigned int>(m_window.end - m_window.next));
    if (part > 0) std::memcpy(buffer, m_window.next, part);
    m_window.next += part;
    return part;
}

unsigned char qxSerializeAdapterSocket::read_imp()
{
    unsigned char byte = 0; // what comes behind the end
    read_imp(&byte, 1);
    return byte;
}

qxUInt64 qxSerializeAdapterSocket::length_imp()
{
    const auto there = static_cast<qxUInt64>(m_window.end - m_window.next);
    return m_isAtEnd || m_isOver ? there : there + m_socket->bufferGetPendingBytes();
}

unsigned char qxSerializeAdapterSocket::hasData_imp()
{
    fillWindow(1);
    return m_window.next < m_window.end;
}
