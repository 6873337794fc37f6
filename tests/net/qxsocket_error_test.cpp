// SPDX-License-Identifier: see LICENSE

#include "qxnettest.h"

#include <cerrno>

namespace
{

TEST(qxSocketError, hasATextForEachCode)
{
    const char* const texts[] = {
        "Operation aborted",
        "Unknown socket error",
        "Unknown socket error",
        "Protocol family is not supported",
        "Address family is not supported",
        "Permission denied",
        "Protocol not supported in domain",
        "Unknown socket error",
        "Unknown socket error",
        "Unknown socket error",
        "Socket not configured or active",
        "Host not reachable",
        "Network not reachable",
        "Option unknown at the level indicated",
        "Invalid descriptor",
        "Invalid argument",
        "Address already in use",
        "Cannot assign requested address",
        "Is already connected",
        "Is not connected",
        "Connection was reset",
        "Connection was aborted",
        "Connection was refused",
        "Connection timed out",
        "Operation would block",
        "Message was truncated",
        "Operation aborted",
        "No such device",
        "Unknown socket error",
    };
    unsigned int code = 0;
    for (const char* const text : texts) {
        SCOPED_TRACE(code);
        EXPECT_EQ(qxSocket::getSocketErrorText(static_cast<qxSocketError>(code++)),
                  std::string("qxSocket error: ") + text);
    }
    EXPECT_STREQ(qxSocket::getSocketErrorText(static_cast<qxSocketError>(0xFFFFFFFF)),
                 "qxSocket error: Unknown socket error");
}

TEST(qxSocketError, isStoredUntilItIsCleared)
{
    qxSocket socket;
    EXPECT_FALSE(socket.hasSocketError());
    EXPECT_FALSE(socket.listen());
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_DESCRIPTOR);
    EXPECT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_NO_ERROR); // closing what there was clears it
    EXPECT_EQ(socket.send("x", 1), -1);
    EXPECT_TRUE(socket.hasSocketError());
    socket.clearSocketError();
    EXPECT_FALSE(socket.hasSocketError());
    socket.setSocketError(QX_SOCKET_TIMED_OUT);
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_TIMED_OUT);
    socket.setSocketError(QX_SOCKET_NO_ERROR);
    EXPECT_FALSE(socket.hasSocketError());
}

TEST(qxSocketError, isRaisedOnRequest)
{
    qxSocket socket;
    socket.useExceptions(1);
    const std::string bad = "qxSocket error: Invalid descriptor";
    char byte = 0;
    qxSocketAddress sender;
    EXPECT_EQ(warningText([&] { socket.bind(IPV4_HERE); }), bad);
    EXPECT_EQ(warningText([&] { socket.listen(); }), bad);
    EXPECT_EQ(warningText([&] { socket.accept(); }), bad);
    EXPECT_EQ(warningText([&] { socket.connect(IPV4_HERE); }), bad);
    EXPECT_EQ(warningText([&] { socket.connect(IPV4_HERE, 1); }), bad);
    EXPECT_EQ(warningText([&] { socket.send(&byte, 1); }), bad);
    EXPECT_EQ(warningText([&] { socket.sendTo(&byte, 1, IPV4_HERE); }), bad);
    EXPECT_EQ(warningText([&] { socket.receive(&byte, 1); }), bad);
    EXPECT_EQ(warningText([&] { socket.receiveFrom(&byte, 1, sender); }), bad);
    EXPECT_EQ(warningText([&] { socket.isReadyToReceive(1); }), bad);
    EXPECT_EQ(warningText([&] { socket.getPendingBytes(); }), bad);
    EXPECT_EQ(warningText([&] { socket.setBlocking(0); }), bad);
    EXPECT_EQ(warningText([&] { socket.getBindAddress(); }), bad);
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_DESCRIPTOR);
    EXPECT_EQ(warningText([&] { socket.setSocketError(QX_SOCKET_TRUNCATED); }),
              "qxSocket error: Message was truncated");
    socket.setSocketError(QX_SOCKET_NO_ERROR);
    EXPECT_EQ(socket.poll(), 0);
}

TEST(qxSocketError, aRaisedErrorLeavesNoneAtTheSystem)
{
    Pair pair;
    pair.client.useExceptions(1);
    EXPECT_EQ(warningText([&] { pair.client.connect(IPV4_HERE); }), "qxSocket error: Is already connected");
    pair.client.useExceptions(0);
    pair.client.setSocketError(QX_SOCKET_SYSTEM_ERROR);
    EXPECT_EQ(pair.client.getSocketError(), QX_SOCKET_NO_ERROR);
}

TEST(qxSocketError, closingRaisesWhenItIsDone)
{
    qxSocket socket;
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    socket.useExceptions(1);
    EXPECT_EQ(warningText([&] { socket.close(1); }), "qxSocket error: Is not connected");
    EXPECT_FALSE(socket.isActive());
    EXPECT_FALSE(socket.hasSocketError());
    ASSERT_TRUE(
        socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM)); // and again: opening raises only its own errors
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
}

} // namespace
