// Sockets: connections and datagrams between programs.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"
#include "qxmutex.h"
#include "qxnetdata.h"
#include "qxnotifymanager.h"
#include "qxsocketaddress.h"
#include "qxsocketerror.h"
#include "qxthreadticker.h"

#include <atomic>
#include <vector>

enum qxSocketFamily : unsigned int {
    QX_SOCKET_IPV4 = 0,
    QX_SOCKET_INFRARED = 1, ///< always a stream; most systems have none any more
    QX_SOCKET_IPV6 = 2      ///< takes no IPv4
};

enum qxSocketType : unsigned int { QX_SOCKET_STREAM = 0, QX_SOCKET_DATAGRAM = 1 };

/// Values are numbers; 1 and 0 switch on and off.
enum qxSocketOption : unsigned int {
    QX_SOCKET_OPTION_DEBUG = 0,
    QX_SOCKET_OPTION_BROADCAST = 1,
    QX_SOCKET_OPTION_REUSE = 2, ///< taking an address that another socket has
    QX_SOCKET_OPTION_KEEP_ALIVE = 3,
    QX_SOCKET_OPTION_LINGER =
        4, ///< seconds that closing waits for what is still to be sent; 0 drops it, below 0 is off
    QX_SOCKET_OPTION_NO_DELAY = 5,
    QX_SOCKET_OPTION_MULTICAST_TTL = 6,
    QX_SOCKET_OPTION_MULTICAST_INTERFACE = 7, ///< an IPv4 address, as a number or a text
    QX_SOCKET_OPTION_MULTICAST_LOOP = 8,
    QX_SOCKET_OPTION_DONT_ROUTE = 9,
    QX_SOCKET_OPTION_OUT_OF_BAND_INLINE = 10,
    QX_SOCKET_OPTION_RECEIVE_BUFFER = 11, ///< bytes; some systems make and report twice as many
    QX_SOCKET_OPTION_SEND_BUFFER = 12     ///< bytes
};

/// One socket of the operating system: a stream or datagrams.
///
/// Operations go straight to the system. What fails stores its error, which stays until the next one or clearSocketError,
/// and answers 0, -1 or nothing. A signal ends no wait.
///
/// As a ticker (startTicker) a stream socket looks for received bytes at each tick and hands them to its notify receivers as
/// qxNetData; poll does so once, without a thread.
///
/// Lifetime: counted, or on the stack while nobody holds it. The destructor closes without waiting. **A derived class with
///           an onTick of its own calls stopTicker in its destructor.**
/// Threads:  any, all operations: close ends the calls in which others wait. The last error is one for all.
/// Errors:   stored; with useExceptions also raised as qxWarningError. The destructor and ticks raise nothing.
class QX_API qxSocket : public qxThreadTicker, public qxNotifyManager
{
public:
    QX_DECLARE_TYPE;

    qxSocket();
    ~qxSocket() noexcept(false) override;

    /// False: a socket cannot be cloned.
    bool useDeepCopy() override { return false; }

    // Beginning and ending

    /// Closes what there is, gracefully, and opens a new socket that blocks. Returns 1 when there is one.
    unsigned char create(qxSocketFamily family, qxSocketType type);

    /// Ends the connection; calls of other threads on the socket return, with the error 26 unless they were done. With
    /// `graceful` a stream first stops sending and waits until the peer has done so too, getCloseWait at most; what comes
    /// until then is thrown away, and with CloseOnNoDataInRead the wait ends with the error 8 at the end of the peer's data.
    /// Without errors and blocking afterwards. With useExceptions the first error on the way is raised at the end.
    void close(unsigned char graceful);

    /// Milliseconds that close waits for the peer at most; 2,000 at first.
    void setCloseWait(unsigned int milliseconds) { m_closeWait = milliseconds; }
    unsigned int getCloseWait() const { return m_closeWait; }

    /// On at first. Off, closing waits its whole time for a peer that has nothing more to say.
    void setCloseOnNoDataInRead(unsigned char on) { m_closeOnNoData = on; }
    unsigned char getCloseOnNoDataInRead() const { return m_closeOnNoData; }

    /// Whether there is a socket.
    unsigned char isActive() const;
    qxSocketType getSocketType() const { return m_type; }

    // Connecting

    /// Takes the address of this end; port 0 lets the system choose one, see getBindAddress. A stream socket may take a
    /// port whose last connections are just fading, but none that another listens at.
    unsigned char bind(const qxSocketAddress& address);

    /// Peers may connect from now on; `backlog` of them wait for accept.
    unsigned char listen(unsigned int backlog = 128);

    /// A new socket, which blocks, for the next peer; null after an error.
    qxRefPointer<qxSocket> accept();

    /// On a socket that does not block, the error 24 says that it has begun: isReadyToSend tells when it is through.
    unsigned char connect(const qxSocketAddress& address);

    /// Connects within `ms` milliseconds, or stores the error 23.
    unsigned char connect(const qxSocketAddress& address, unsigned int ms);

    /// None where there is none, which is an error too.
    qxSocketAddress getBindAddress();
    qxSocketAddress getConnectAddress();
    unsigned char isBindTo(const qxSocketAddress& address);
    unsigned char isConnectedTo(const qxSocketAddress& address);

    // Bytes, at most 2,147,483,647 at once. All answer how many, or -1

    int send(const void* bytes, unsigned int count);
    int sendTo(const void* bytes, unsigned int count, const qxSocketAddress& address);

    /// 0 at the end of a stream. A datagram that is longer than `count` stores the error 25 and gives its first bytes.
    int receive(void* buffer, unsigned int count);
    int receiveFrom(void* buffer, unsigned int count, qxSocketAddress& sender);

    // Received bytes that were given back: the operations of the buffer take them first

    /// Gives a block back so that it is received again, in its order. Closing forgets it.
    void bufferPushBack(const void* bytes, unsigned int count, const qxSocketAddress& sender = {});

    /// What was given back, and only when there is nothing, from the socket.
    int bufferReceive(void* buffer, unsigned int count);

    /// As above; the sender of bytes given back is the one of the latest block.
    int bufferReceiveFrom(void* buffer, unsigned int count, qxSocketAddress& sender);

    /// Bytes given back and those that getPendingBytes counts.
    unsigned int bufferGetPendingBytes();

    // Waiting

    unsigned char setBlocking(unsigned char blocking);
    unsigned char isBlocking() const { return m_isBlocking; }

    /// Waits `ms` milliseconds at most until bytes, a peer, the end or an error can be had without waiting. Of a connection
    /// that was begun without waiting, isReadyToSend stores the error when it has failed.
    unsigned char isReadyToReceive(unsigned int ms);
    unsigned char isReadyToSend(unsigned int ms);

    /// Bytes that can be received without waiting; 0 after an error too.
    unsigned int getPendingBytes();

    // Broadcast and multicast

    /// Makes it a new IPv4 datagram socket that may broadcast, bound to `port` on the interface of `address`, or on all.
    unsigned char enableBroadcast(unsigned short port, const qxHostAddress& address = {});

    /// Makes it a new IPv4 datagram socket at `port` in the group `group`, on the interface of the address `through` or the
    /// system's choice. What it sends passes `ttl` routers at most and comes back to members on this machine.
    unsigned char enableMulticast(const qxHostAddress& group, unsigned short port,
                                  const qxHostAddress& through, unsigned char ttl);
    unsigned char enableMulticast(const qxHostAddress& group, unsigned short port, unsigned char ttl = 1);

    /// Of the interface whose IPv4 address the socket is bound to; none, and the error 27, without one.
    qxHostAddress getBroadcastAddress();
    qxHostAddress getNetworkMask();

    // Options

    /// A number for the options 6, 11 and 12; "void", and a warning, for all others and when the system has no answer.
    qxDynamicType getOption(qxSocketOption option);

    /// Returns 1 when the system has taken the value; a value that is no number is the error 15.
    unsigned char setOption(qxSocketOption option, const qxDynamicType& value);
    unsigned char setReceiveBufferSize(unsigned int bytes);

    // Errors

    qxSocketError getSocketError() const { return static_cast<qxSocketError>(m_error.load()); }
    unsigned char hasSocketError() const { return m_error != QX_SOCKET_NO_ERROR; }
    void clearSocketError() { m_error = QX_SOCKET_NO_ERROR; }

    /// Stores it; QX_SOCKET_SYSTEM_ERROR is the last error of this thread at the system.
    void setSocketError(qxSocketError error);

    /// The text of any code.
    static const char* getSocketErrorText(qxSocketError error);

    /// With 1, errors that are stored are raised too, after the system's own error is cleared.
    void useExceptions(unsigned char on) { m_useExceptions = on; }

    // Received data as messages

    /// Hands what a stream has received, or one datagram, to the notify receivers as qxNetData: 65,536 bytes at most.
    /// Returns 1 when there was something; does not wait. A receiver may end the socket.
    unsigned char poll();

    /// With 1 the first block that is handed on ends the ticking.
    void setStopTickerOnFirstRecieve(unsigned char on) { m_stopOnFirst = on; }
    unsigned char getStopTickerOnFirstRecieve() const { return m_stopOnFirst; }

protected:
    void onTick(double now, double dt) override;

private:
    static constexpr unsigned int CLOSED = 0x80000000; // in m_users: nobody comes in any more
    static constexpr unsigned int LONGEST_BLOCK = 0x7FFFFFFF;

    class Use;
    template <class Call>
    int use(const Call& call);
    template <class Call>
    int run(const Call& call, qxSocketError& error);

    unsigned char createQuietly(qxSocketFamily family, qxSocketType type);
    qxSocketError closeQuietly(bool isGraceful);
    void awaitPeer();
    bool isAtEnd(double end, int& number);
    void closeHandle();
    void adopt(qxInt64 handle, qxSocketType type);
    int receiveBytes(void* buffer, unsigned int count, qxSocketAddress* sender, unsigned int how,
                     qxSocketError& error);
    bool receivePass(qxSocketError& error);
    qxRefPointer<qxNetData> takeData(qxSocketError& error);
    template <class Call>
    unsigned char createPrepared(const Call& prepare);
    bool findInterface(qxHostAddress& address, qxHostAddress& mask);
    unsigned int takeGivenBack(void* buffer, unsigned int count, qxSocketAddress* sender);
    unsigned char setNumber(qxSocketOption option, int value);
    void store(qxSocketError error) { m_error = error; }
    void report(qxSocketError error); // stores, and raises if that is wanted
    [[noreturn]] static void raise(qxSocketError error);

    std::atomic<qxInt64> m_handle;             // of the system; changes only while nobody uses it
    std::atomic<unsigned int> m_users{CLOSED}; // calls that are under way, and the flag
    std::atomic<unsigned int> m_error{QX_SOCKET_NO_ERROR};
    std::atomic<qxSocketType> m_type{QX_SOCKET_STREAM};
    std::atomic<unsigned int> m_closeWait{2000};
    std::atomic<unsigned char> m_isBlocking{1};
    std::atomic<unsigned char> m_isListening{0};
    std::atomic<unsigned char> m_isConnecting{0}; // begun without waiting
    std::atomic<unsigned char> m_useExceptions{0};
    std::atomic<unsigned char> m_closeOnNoData{1};
    std::atomic<unsigned char> m_stopOnFirst{0};
    qxMutex m_opening; // held by the one thread that opens or closes

    qxMutex m_bufferLock;                // guards the two fields below
    std::vector<unsigned char> m_buffer; // given back, the next byte last
    qxSocketAddress m_bufferSender;
};
