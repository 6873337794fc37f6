// SPDX-License-Identifier: see LICENSE

#include "net/qxsocketuse.h"
#include "qxguard.h"
#include "qxsocket.h"

#include <algorithm>
#include <iterator>

void qxSocket::bufferPushBack(const void* bytes, unsigned int count, const qxSocketAddress& sender)
{
    const auto* const first = static_cast<const unsigned char*>(bytes);
    const qxBodyGuard guard(m_bufferLock);
    m_buffer.insert(m_buffer.end(), std::make_reverse_iterator(first + count),
                    std::make_reverse_iterator(first));
    m_bufferSender = sender;
}

// Bytes taken out of what was given back.
unsigned int qxSocket::takeGivenBack(void* buffer, unsigned int count, qxSocketAddress* sender)
{
    const qxBodyGuard guard(m_bufferLock);
    const std::size_t taken = std::min<std::size_t>(count, m_buffer.size());
    std::copy_n(m_buffer.rbegin(), taken, static_cast<unsigned char*>(buffer));
    m_buffer.erase(m_buffer.end() - static_cast<std::ptrdiff_t>(taken), m_buffer.end());
    if (sender && taken > 0) *sender = m_bufferSender;
    return static_cast<unsigned int>(taken);
}

int qxSocket::bufferReceive(void* buffer, unsigned int count)
{
    count = std::min(count, LONGEST_BLOCK);
    const unsigned int taken = takeGivenBack(buffer, count, nullptr);
    return taken > 0 ? static_cast<int>(taken) : receive(buffer, count);
}

int qxSocket::bufferReceiveFrom(void* buffer, unsigned int count, qxSocketAddress& sender)
{
    count = std::min(count, LONGEST_BLOCK);
    const unsigned int taken = takeGivenBack(buffer, count, &sender);
    return taken > 0 ? static_cast<int>(taken) : receiveFrom(buffer, count, sender);
}

unsigned int qxSocket::bufferGetPendingBytes()
{
    std::size_t given = 0;
    {
        const qxBodyGuard guard(m_bufferLock);
        given = m_buffer.size();
    }
    return static_cast<unsigned int>(std::min<std::size_t>(given + getPendingBytes(), 0xFFFFFFFF));
}
