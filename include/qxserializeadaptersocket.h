// A socket as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"
#include "qxsocket.h"

#include <memory>

/// Reads what a socket receives and sends what is written.
///
/// A read waits for one byte at least and gives what is there then: who needs more asks again, or calls readWhole. The
/// data ends when the peer has closed, with an empty datagram, and with an error.
///
/// What is written is collected and goes out when there is enough of it, with flush, before a read waits, and when the
/// adapter goes. To datagram sockets, which are connected before, a datagram at a time of DATAGRAM_SIZE bytes at most.
///
/// Lifetime: counted; holds its socket. The destructor waits for a peer that takes nothing, as closing does.
/// Threads:  one at a time, as every adapter; another may close the socket, which ends the data.
/// Errors:   those of the socket, as texts of the adapter; after one nothing is sent or received.
class QX_API qxSerializeAdapterSocket final : public qxSerializeAdapter
{
public:
    static constexpr unsigned int FOREVER = 0xFFFFFFFF;
    static constexpr unsigned int DATAGRAM_SIZE = 1400; ///< bytes, which pass any network in one piece

    /// With `closes` the destructor closes the socket gracefully. The socket is this adapter's alone meanwhile, but for its
    /// closing, and raises nothing any more.
    explicit qxSerializeAdapterSocket(qxSocket* socket, bool closes = false);
    ~qxSerializeAdapterSocket() noexcept(false) override;

    QX_DECLARE_TYPE;

    qxSocket* getSocket() const { return m_socket; }

    /// Milliseconds for which the peer may leave a read or write waiting; FOREVER at first. The time over is the error 23.
    void setWait(unsigned int milliseconds) { m_wait = milliseconds; }
    unsigned int getWait() const { return m_wait; }

    /// Sends what was written so far.
    void flush() override;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;
    qxUInt64 length_imp() override;
    unsigned char hasData_imp() override;

private:
    void fillWindow(unsigned int wanted) override;

    unsigned int receive(unsigned char* buffer, unsigned int count);
    bool isReady(bool toSend, unsigned int wait);
    bool isReadyAgain(bool toSend, unsigned int wait);
    void sendAll(unsigned int wait);
    void sendBlock(const unsigned char* bytes, unsigned int count, unsigned int wait);
    void fail(qxSocketError error);

    const qxRefPointer<qxSocket> m_socket;
    const bool m_closes;
    const bool m_isStream;
    unsigned int m_wait = FOREVER;
    bool m_isAtEnd = false;                      // of what the peer sends
    bool m_isOver = false;                       // nothing is sent or received any more
    std::unique_ptr<unsigned char[]> m_received; // what the window is on
    std::unique_ptr<unsigned char[]> m_written;
    unsigned int m_writtenCount = 0;
};
