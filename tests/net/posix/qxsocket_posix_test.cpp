// SPDX-License-Identifier: see LICENSE

#include "net/qxnettest.h"

#include <csignal>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

sockaddr_in toSystem(const qxSocketAddress& address)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_port = htons(address.getPort());
    result.sin_addr.s_addr = htonl(address.asULong());
    return result;
}

TEST(qxSocketPosix, aPeerThatResets)
{
    Listener listener;
    const int peer = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in place = toSystem(listener.getBindAddress());
    ASSERT_EQ(connect(peer, reinterpret_cast<const sockaddr*>(&place), sizeof(place)), 0);
    const qxRefPointer<qxSocket> server = listener.accept();
    const linger drop = {1, 0};
    ASSERT_EQ(setsockopt(peer, SOL_SOCKET, SO_LINGER, &drop, sizeof(drop)), 0);
    ::close(peer);
    EXPECT_TRUE(server->isReadyToReceive(PATIENCE));
    EXPECT_EQ(receiveText(*server), "error 20");
    EXPECT_LT(secondsOf([&] { server->close(1); }), 1.0);
}

TEST(qxSocketPosix, aBrokenPipeIsAResetToo)
{
    Pair pair;
    sendText(pair.client, "unread");
    ASSERT_TRUE(pair.server->isReadyToReceive(PATIENCE));
    pair.server->close(0);
    while (sendText(pair.client, "x") > 0) {}
    EXPECT_EQ(sendText(pair.client, "x"), -1);
    EXPECT_EQ(pair.client.getSocketError(), QX_SOCKET_CONNECTION_RESET);
}

std::atomic<int> s_signals{0};

/// Sends signals to the thread that made it until it goes.
class Signals
{
public:
    Signals()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) { ++s_signals; }; // without SA_RESTART: calls are interrupted
        sigaction(SIGUSR1, &action, nullptr);
        const pthread_t target = pthread_self();
        m_thread = std::thread([this, target] {
            while (!m_isOver) {
                pthread_kill(target, SIGUSR1);
                std::this_thread::yield();
            }
        });
    }
    ~Signals()
    {
        m_isOver = true;
        m_thread.join();
        signal(SIGUSR1, SIG_DFL);
    }

    /// Lets `work` run on another thread once some more signals came.
    void afterSome(std::function<void()> work)
    {
        const int now = s_signals;
        m_work = std::async(std::launch::async, [now, work] {
            while (s_signals < now + 20) std::this_thread::yield();
            work();
        });
    }

private:
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
    std::future<void> m_work;
};

TEST(qxSocketPosix, signalsEndNoWait)
{
    Pair pair;
    Listener listener;
    qxSocket late;
    ASSERT_TRUE(late.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    const qxSocketAddress place = listener.getBindAddress();
    Signals signals;
    EXPECT_GE(secondsOf([&] { EXPECT_FALSE(pair.client.isReadyToReceive(60)); }), 0.0599);

    signals.afterSome([&] { sendText(*pair.server, "a"); });
    EXPECT_TRUE(pair.client.isReadyToReceive(PATIENCE));
    EXPECT_EQ(receiveText(pair.client), "a");

    signals.afterSome([&] { sendText(*pair.server, "b"); });
    EXPECT_EQ(receiveText(pair.client), "b");

    signals.afterSome([&] { late.connect(place); });
    EXPECT_TRUE(listener.accept());
    EXPECT_FALSE(pair.client.hasSocketError() || listener.hasSocketError());
}

TEST(qxSocketPosix, waitsWithHandlesBeyondTheOldLimit)
{
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit before = limit;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_cur < 1200) GTEST_SKIP() << "the system allows no more files";
    std::vector<int> files;
    while (files.empty() || files.back() < 1100) {
        files.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        ASSERT_GE(files.back(), 0);
    }
    {
        Pair pair;
        EXPECT_FALSE(pair.client.isReadyToReceive(0));
        sendText(*pair.server, "high");
        EXPECT_TRUE(pair.client.isReadyToReceive(PATIENCE));
        EXPECT_EQ(receiveText(pair.client), "high");
        EXPECT_TRUE(pair.client.isReadyToSend(0));
    }
    for (const int file : files) ::close(file);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(qxSocketPosix, runningOutOfHandlesIsAnErrorAndLosesNone)
{
    Listener listener;
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    // Each way is gone once before: sanitizers take handles of their own to look at a type for the first time.
    qxSocket first;
    ASSERT_TRUE(first.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(first.connect(listener.getBindAddress()));
    EXPECT_TRUE(listener.accept());
    EXPECT_FALSE(first.accept());
    ASSERT_TRUE(client.connect(listener.getBindAddress()));
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit before = limit;
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &limit);
    qxSocket other;
    EXPECT_FALSE(other.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_FALSE(listener.accept());
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(other.getSocketError(), QX_SOCKET_UNKNOWN_ERROR);
    EXPECT_EQ(listener.getSocketError(), QX_SOCKET_UNKNOWN_ERROR);
    EXPECT_TRUE(listener.accept()); // the peer is still there
}

// What a program started meanwhile would inherit. All descriptors are looked at: nobody tells which are the sockets'.
TEST(qxSocketPosix, programsInheritNoSocket)
{
    const Pair pair;
    const Datagrams datagrams;
    int sockets = 0;
    for (int descriptor = 0; descriptor < 1000; ++descriptor) {
        int type = 0;
        socklen_t length = sizeof(type);
        sockaddr_in place = {};
        socklen_t size = sizeof(place);
        if (getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) != 0) continue;
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&place), &size);
        if (place.sin_family != AF_INET) continue; // of the system's own
        ++sockets;
        EXPECT_TRUE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC) << descriptor;
    }
    EXPECT_GE(sockets, 3);
}

TEST(qxSocketPosix, theSystemsLastErrorCanBeTaken)
{
    const struct {
        int number;
        qxSocketError error;
    } rows[] = {
        {EPFNOSUPPORT, QX_SOCKET_PROTOCOL_FAMILY},
        {EAFNOSUPPORT, QX_SOCKET_ADDRESS_FAMILY},
        {EACCES, QX_SOCKET_PERMISSION_DENIED},
        {EPERM, QX_SOCKET_PERMISSION_DENIED},
        {EPROTONOSUPPORT, QX_SOCKET_PROTOCOL_NOT_SUPPORTED},
        {EHOSTUNREACH, QX_SOCKET_HOST_NOT_REACHABLE},
        {EHOSTDOWN, QX_SOCKET_HOST_NOT_REACHABLE},
        {ENETUNREACH, QX_SOCKET_NETWORK_NOT_REACHABLE},
        {ENETDOWN, QX_SOCKET_NETWORK_NOT_REACHABLE},
        {ENOPROTOOPT, QX_SOCKET_UNKNOWN_OPTION},
        {EBADF, QX_SOCKET_INVALID_DESCRIPTOR},
        {ENOTSOCK, QX_SOCKET_INVALID_DESCRIPTOR},
        {EINVAL, QX_SOCKET_INVALID_ARGUMENT},
        {EADDRINUSE, QX_SOCKET_ADDRESS_IN_USE},
        {EADDRNOTAVAIL, QX_SOCKET_ADDRESS_NOT_AVAILABLE},
        {EISCONN, QX_SOCKET_IS_CONNECTED},
        {ENOTCONN, QX_SOCKET_NOT_CONNECTED},
        {ECONNRESET, QX_SOCKET_CONNECTION_RESET},
        {EPIPE, QX_SOCKET_CONNECTION_RESET},
        {ENETRESET, QX_SOCKET_CONNECTION_RESET},
        {ECONNABORTED, QX_SOCKET_CONNECTION_ABORTED},
        {ECONNREFUSED, QX_SOCKET_CONNECTION_REFUSED},
        {ETIMEDOUT, QX_SOCKET_TIMED_OUT},
        {EWOULDBLOCK, QX_SOCKET_WOULD_BLOCK},
        {EINPROGRESS, QX_SOCKET_WOULD_BLOCK},
        {EALREADY, QX_SOCKET_WOULD_BLOCK},
        {EMSGSIZE, QX_SOCKET_TRUNCATED},
        {EINTR, QX_SOCKET_ABORTED},
        {ENODEV, QX_SOCKET_NO_DEVICE},
        {ENXIO, QX_SOCKET_NO_DEVICE},
        {ENOMEM, QX_SOCKET_UNKNOWN_ERROR},
        {0, QX_SOCKET_NO_ERROR},
    };
    qxSocket socket;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.number);
        errno = row.number;
        socket.setSocketError(QX_SOCKET_SYSTEM_ERROR);
        EXPECT_EQ(socket.getSocketError(), row.error);
    }
    socket.useExceptions(1);
    errno = ENOTSOCK;
    EXPECT_EQ(warningText([&] { socket.setSocketError(QX_SOCKET_SYSTEM_ERROR); }),
              "qxSocket error: Invalid descriptor");
    EXPECT_EQ(errno, 0);
}

// Some take any address that is asked for.
TEST(qxSocketPosix, anAddressOfNobodyCannotBeTaken)
{
    qxSocket socket;
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
    EXPECT_FALSE(socket.bind(qxSocketAddress("192.0.2.1:0")));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_ADDRESS_NOT_AVAILABLE);
}

TEST(qxSocketPosix, aHandleThatSomebodyElseHasClosedIsAnError)
{
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    qxSocket socket; // has that number now
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
    ::close(next);
    const MessageRecorder recorder;
    EXPECT_FALSE(socket.isReadyToReceive(1));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_DESCRIPTOR);
    EXPECT_TRUE(socket.getOption(QX_SOCKET_OPTION_RECEIVE_BUFFER).is("void"));
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Failed to get socket option"});
    EXPECT_EQ(recorder.messages()[0].level, QX_LEVEL_WARNING);
}

TEST(qxSocketPosix, aListenerMaySleepOnWithoutATick)
{
    Listener listener; // its count of pending bytes fails at the system
    EXPECT_EQ(listener.getPendingBytes(), 0U);
    EXPECT_EQ(listener.getSocketError(), QX_SOCKET_INVALID_ARGUMENT);
    listener.clearSocketError();
    EXPECT_EQ(listener.poll(), 0);
    EXPECT_FALSE(listener.hasSocketError());
}

} // namespace
