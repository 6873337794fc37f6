// How the operations of a socket reach the system.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "net/qxplatformform.h"
#include "qxsocket.h"

#include <utility>

/// One call that is under way: the handle stays this socket's until it ends.
class qxSocket::Use
{
public:
    explicit Use(qxSocket& socket) : m_users(socket.m_users)
    {
        m_isIn = (m_users.fetch_add(1) & CLOSED) == 0;
    }
    ~Use() { --m_users; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    bool isIn() const { return m_isIn; }

    /// Whether the socket is being closed by another thread.
    bool isClosing() const { return (m_users & CLOSED) != 0; }

private:
    std::atomic<unsigned int>& m_users;
    bool m_isIn;
};

/// Runs `call` with the handle and a place for the system's number; gives its answer, which is below 0 after a failure, and
/// stores nothing.
template <class Call>
int qxSocket::run(const Call& call, qxSocketError& error)
{
    const Use use(*this);
    error = QX_SOCKET_INVALID_DESCRIPTOR;
    if (!use.isIn()) return -1;

    int number = 0;
    const int result = call(m_handle.load(), number);
    // What ends for no reason of its own has been ended by who closes.
    if (result <= 0 && use.isClosing()) {
        error = QX_SOCKET_ABORTED;
        return -1;
    }
    error = result < 0 ? qxPlatformSocketFault(number) : QX_SOCKET_NO_ERROR;
    return result;
}

/// As run, and reports the error.
template <class Call>
int qxSocket::use(const Call& call)
{
    qxSocketError error = QX_SOCKET_NO_ERROR;
    const int result = run(call, error);
    if (error != QX_SOCKET_NO_ERROR) report(error);
    return result;
}
