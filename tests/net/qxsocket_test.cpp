// SPDX-License-Identifier: see LICENSE

#include "qxnettest.h"

#include <algorithm>

namespace
{

TEST(qxSocket, streamsCarryBytesBothWays)
{
    for (const qxSocketAddress& here : {IPV4_HERE, IPV6_HERE}) {
        SCOPED_TRACE(here.asString().getString());
        Pair pair(here);
        EXPECT_EQ(sendText(pair.client, "question"), 8);
        EXPECT_EQ(receiveText(*pair.server), "question");
        EXPECT_EQ(sendText(*pair.server, "answer"), 6);
        EXPECT_EQ(receiveText(pair.client, 3), "ans");
        EXPECT_EQ(receiveText(pair.client), "wer");
        EXPECT_EQ(pair.client.getConnectAddress(), pair.server->getBindAddress());
        EXPECT_TRUE(pair.server->isConnectedTo(pair.client.getBindAddress()));
        EXPECT_TRUE(pair.client.isBindTo(pair.server->getConnectAddress()));
        EXPECT_FALSE(pair.client.isBindTo(pair.server->getBindAddress()));
        EXPECT_FALSE(pair.client.hasSocketError() || pair.server->hasSocketError());
    }
}

TEST(qxSocket, datagramsCarryTheirSenders)
{
    for (const qxSocketAddress& here : {IPV4_HERE, IPV6_HERE}) {
        SCOPED_TRACE(here.asString().getString());
        Datagrams first(here);
        Datagrams second(here);
        EXPECT_EQ(first.sendTo("abc", 3, second.getBindAddress()), 3);
        EXPECT_EQ(first.sendTo("", 0, second.getBindAddress()), 0);
        qxSocketAddress sender;
        char buffer[16];
        EXPECT_EQ(second.receiveFrom(buffer, sizeof(buffer), sender), 3);
        EXPECT_EQ(sender, first.getBindAddress());
        EXPECT_EQ(second.receiveFrom(buffer, sizeof(buffer), sender), 0);
        EXPECT_TRUE(first.connect(second.getBindAddress()));
        EXPECT_EQ(sendText(first, "connected"), 9);
        EXPECT_EQ(receiveText(second), "connected");
    }
}

TEST(qxSocket, aDatagramThatIsTooLongGivesItsStart)
{
    Datagrams first;
    Datagrams second;
    ASSERT_EQ(first.sendTo("0123456789", 10, second.getBindAddress()), 10);
    ASSERT_EQ(first.sendTo("next", 4, second.getBindAddress()), 4);
    EXPECT_EQ(receiveText(second, 4), "0123");
    EXPECT_EQ(second.getSocketError(), QX_SOCKET_TRUNCATED);
    second.clearSocketError();
    EXPECT_EQ(receiveText(second, 4), "next"); // what did not fit is gone
    EXPECT_FALSE(second.hasSocketError());
    const std::string huge(70000, 'x');
    EXPECT_EQ(first.sendTo(huge.data(), 70000, second.getBindAddress()), -1);
    EXPECT_EQ(first.getSocketError(), QX_SOCKET_TRUNCATED);
}

TEST(qxSocket, aStreamOfManyBlocksArrivesWhole)
{
    Pair pair;
    std::string bytes(3000000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 + i / 251);
    std::thread sender([&] {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const int count =
                pair.client.send(bytes.data() + sent, static_cast<unsigned int>(bytes.size() - sent));
            if (count < 0) break;
            sent += static_cast<std::size_t>(count);
        }
        pair.client.close(0);
    });
    std::string received;
    for (std::string block; !(block = receiveText(*pair.server, 65536)).empty();) received += block;
    sender.join();
    EXPECT_TRUE(received == bytes);
}

TEST(qxSocket, aCallOnNoSocketFails)
{
    qxSocket socket;
    EXPECT_FALSE(socket.isActive());
    EXPECT_TRUE(socket.isBlocking());
    EXPECT_EQ(socket.send("x", 1), -1);
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_DESCRIPTOR);
    EXPECT_EQ(socket.getPendingBytes(), 0U);
    EXPECT_TRUE(socket.getBindAddress().isNull());
    EXPECT_FALSE(socket.isBindTo({}) || socket.isConnectedTo({})); // no address is none to be bound to
    EXPECT_TRUE(socket.getBroadcastAddress().isNull());
    EXPECT_FALSE(socket.isReadyToSend(100));
    EXPECT_FALSE(socket.accept());
    socket.close(1);
    EXPECT_FALSE(socket.hasSocketError());
    EXPECT_TRUE(socket.isBlocking());
}

TEST(qxSocket, aFamilyThatTheSystemLacksIsAnError)
{
    qxSocket socket;
    EXPECT_FALSE(socket.create(QX_SOCKET_INFRARED, QX_SOCKET_DATAGRAM));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_ADDRESS_FAMILY);
    EXPECT_FALSE(socket.isActive());
}

TEST(qxSocket, withoutBlockingNothingWaits)
{
    Pair pair;
    ASSERT_TRUE(pair.client.setBlocking(0));
    EXPECT_FALSE(pair.client.isBlocking());
    EXPECT_EQ(receiveText(pair.client), "error 24");
    ASSERT_TRUE(pair.client.setBlocking(1));
    EXPECT_TRUE(pair.client.isBlocking());
    sendText(*pair.server, "x");
    EXPECT_EQ(receiveText(pair.client), "x");

    Listener listener;
    ASSERT_TRUE(listener.setBlocking(0));
    EXPECT_FALSE(listener.accept());
    EXPECT_EQ(listener.getSocketError(), QX_SOCKET_WOULD_BLOCK);
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(client.connect(listener.getBindAddress()));
    ASSERT_TRUE(listener.isReadyToReceive(PATIENCE));
    const qxRefPointer<qxSocket> accepted = listener.accept();
    ASSERT_TRUE(accepted);
    EXPECT_TRUE(accepted->isBlocking());
    std::thread late([&client] { // what arrives after the call began is received only by one that waits
        sendText(client, "late");
    });
    EXPECT_EQ(receiveText(*accepted), "late");
    late.join();
}

TEST(qxSocket, connectsWithoutBlocking)
{
    Listener listener;
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(client.setBlocking(0));
    if (!client.connect(listener.getBindAddress())) {
        EXPECT_EQ(client.getSocketError(), QX_SOCKET_WOULD_BLOCK);
        client.clearSocketError();
        EXPECT_TRUE(client.isReadyToSend(PATIENCE));
    }
    EXPECT_FALSE(client.hasSocketError());
    EXPECT_TRUE(client.isConnectedTo(listener.getBindAddress()));
    EXPECT_FALSE(client.isBlocking());
}

TEST(qxSocket, aRefusedConnectionSaysSo)
{
    qxSocketAddress nobody;
    {
        Listener listener;
        nobody = listener.getBindAddress();
    }
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_FALSE(client.connect(nobody));
    EXPECT_EQ(client.getSocketError(), QX_SOCKET_CONNECTION_REFUSED);

    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_FALSE(client.connect(nobody, PATIENCE));
    EXPECT_EQ(client.getSocketError(), QX_SOCKET_CONNECTION_REFUSED);
    EXPECT_TRUE(client.isBlocking());

    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(client.setBlocking(0));
    if (!client.connect(nobody) && client.getSocketError() == QX_SOCKET_WOULD_BLOCK) {
        client.isReadyToSend(PATIENCE);
    }
    EXPECT_EQ(client.getSocketError(), QX_SOCKET_CONNECTION_REFUSED);
}

TEST(qxSocket, connectsInAGivenTime)
{
    Listener listener;
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(client.connect(listener.getBindAddress(), PATIENCE));
    EXPECT_TRUE(client.isBlocking());
    EXPECT_FALSE(client.hasSocketError());
    const qxRefPointer<qxSocket> server = listener.accept();
    sendText(client, "hello");
    EXPECT_EQ(receiveText(*server), "hello");
}

TEST(qxSocket, waitsAsLongAsItWasTold)
{
    Pair pair;
    EXPECT_GE(secondsOf([&] { EXPECT_FALSE(pair.client.isReadyToReceive(30)); }), 0.0299);
    EXPECT_FALSE(pair.client.isReadyToReceive(0));
    EXPECT_TRUE(pair.client.isReadyToSend(0));
    EXPECT_FALSE(pair.client.hasSocketError());
    sendText(*pair.server, "12345");
    EXPECT_TRUE(pair.client.isReadyToReceive(0xFFFFFFFF)); // the longest there is
    EXPECT_EQ(pair.client.getPendingBytes(), 5U);
    receiveText(pair.client);
    EXPECT_EQ(pair.client.getPendingBytes(), 0U);
    pair.server->close(0);
    EXPECT_TRUE(pair.client.isReadyToReceive(PATIENCE)); // the end can be read
    EXPECT_EQ(receiveText(pair.client), "");
}

TEST(qxSocket, aPortIsTakenByOneListenerOnly)
{
    Listener listener;
    const qxSocketAddress place = listener.getBindAddress();
    qxSocket second;
    ASSERT_TRUE(second.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_FALSE(second.bind(place) && second.listen());
    EXPECT_EQ(second.getSocketError(), QX_SOCKET_ADDRESS_IN_USE);

    Datagrams first;
    qxSocket other;
    ASSERT_TRUE(other.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
    EXPECT_FALSE(other.bind(first.getBindAddress()));
    EXPECT_EQ(other.getSocketError(), QX_SOCKET_ADDRESS_IN_USE);
}

TEST(qxSocket, aServerTakesItsPortAgainAtOnce)
{
    qxSocketAddress place;
    {
        Listener listener;
        place = listener.getBindAddress();
        qxSocket client;
        ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
        ASSERT_TRUE(client.connect(place));
        listener.accept()->close(0); // the side that closes first keeps the port a while
        EXPECT_EQ(receiveText(client), "");
    }
    const Listener again(place);
}

TEST(qxSocket, IPv6AndIPv4ShareAPort)
{
    qxSocket six;
    ASSERT_TRUE(six.create(QX_SOCKET_IPV6, QX_SOCKET_STREAM));
    ASSERT_TRUE(six.bind(qxSocketAddress(qxHostAddress::any(QX_HOST_ADDRESS_IPV6), 0)));
    ASSERT_TRUE(six.listen());
    const unsigned short port = six.getBindAddress().getPort();
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_FALSE(client.connect(qxSocketAddress(qxHostAddress::loopback(), port)));
    EXPECT_EQ(client.getSocketError(), QX_SOCKET_CONNECTION_REFUSED);
}

TEST(qxSocket, bytesGivenBackAreReceivedFirst)
{
    Pair pair;
    sendText(*pair.server, "stream");
    ASSERT_TRUE(pair.client.isReadyToReceive(PATIENCE));
    pair.client.bufferPushBack("56", 2);
    pair.client.bufferPushBack("1234", 4, IPV4_HERE);
    EXPECT_EQ(pair.client.bufferGetPendingBytes(), 12U);
    EXPECT_EQ(pair.client.getPendingBytes(), 6U);
    char buffer[16] = {};
    EXPECT_EQ(pair.client.bufferReceive(buffer, 3), 3);
    qxSocketAddress sender;
    EXPECT_EQ(pair.client.bufferReceiveFrom(buffer + 3, 13, sender), 3);
    EXPECT_EQ(sender, IPV4_HERE);
    EXPECT_STREQ(buffer, "123456");
    EXPECT_EQ(pair.client.bufferReceiveFrom(buffer, 16, sender), 6);
    EXPECT_EQ(sender, pair.server->getBindAddress());
    pair.client.bufferPushBack("old", 3);
    pair.client.close(0);
    EXPECT_EQ(pair.client.bufferReceive(buffer, 16), -1);
}

TEST(qxSocket, broadcastAndMulticastPrepareTheirSockets)
{
    qxSocket socket;
    ASSERT_TRUE(socket.enableBroadcast(0, qxHostAddress::loopback()));
    EXPECT_EQ(socket.getSocketType(), QX_SOCKET_DATAGRAM);
    EXPECT_EQ(socket.getNetworkMask().asString(), "255.0.0.0");
    EXPECT_EQ(socket.getBroadcastAddress().asString(), "127.255.255.255");
    ASSERT_TRUE(socket.enableBroadcast(0));
    EXPECT_NE(socket.getBindAddress().getPort(), 0);
    EXPECT_TRUE(socket.getNetworkMask().isNull()); // on all interfaces it is none of them
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_NO_DEVICE);
    EXPECT_FALSE(socket.enableMulticast(qxHostAddress("10.0.0.1"), 0)); // no group
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_ARGUMENT);
    EXPECT_FALSE(socket.isActive());
}

TEST(qxSocket, membersOfAGroupReceiveWhatIsSentToIt)
{
    const qxHostAddress group("239.255.77.78");
    qxSocket first;
    qxSocket second;
    ASSERT_TRUE(first.enableMulticast(group, 0, qxHostAddress::loopback(), 0));
    const unsigned short port = first.getBindAddress().getPort();
    ASSERT_TRUE(second.enableMulticast(group, port, qxHostAddress::loopback(), 0));
    EXPECT_EQ(second.getOption(QX_SOCKET_OPTION_MULTICAST_TTL).getNumber(), 0.0);
    ASSERT_EQ(first.sendTo("all", 3, qxSocketAddress(group, port)), 3);
    for (qxSocket* const member : {&first, &second}) {
        ASSERT_TRUE(member->isReadyToReceive(PATIENCE));
        EXPECT_EQ(receiveText(*member), "all");
    }
}

TEST(qxSocket, tellsThreeOfItsOptions)
{
    const MessageRecorder recorder;
    Datagrams socket;
    EXPECT_TRUE(socket.setReceiveBufferSize(20000));
    EXPECT_GE(socket.getOption(QX_SOCKET_OPTION_RECEIVE_BUFFER).getNumber(), 20000.0);
    EXPECT_TRUE(socket.setOption(QX_SOCKET_OPTION_SEND_BUFFER, 10000));
    EXPECT_GE(socket.getOption(QX_SOCKET_OPTION_SEND_BUFFER).getNumber(), 10000.0);
    EXPECT_TRUE(socket.setOption(QX_SOCKET_OPTION_MULTICAST_TTL, 7));
    EXPECT_EQ(socket.getOption(QX_SOCKET_OPTION_MULTICAST_TTL), qxDynamicType(7));
    EXPECT_TRUE(socket.setOption(QX_SOCKET_OPTION_MULTICAST_INTERFACE, "127.0.0.1"));
    EXPECT_TRUE(socket.setOption(QX_SOCKET_OPTION_MULTICAST_INTERFACE, 0x7F000001));
    EXPECT_TRUE(socket.setOption(QX_SOCKET_OPTION_MULTICAST_LOOP, 0));
    EXPECT_TRUE(recorder.messages().empty());
}

TEST(qxSocket, saysWhyItDoesNotTellAnOption)
{
    MessageRecorder recorder;
    qxSocket socket;
    EXPECT_TRUE(socket.getOption(static_cast<qxSocketOption>(13)).is("void"));
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_TRUE(socket.getOption(static_cast<qxSocketOption>(13)).is("void"));
    EXPECT_TRUE(socket.getOption(static_cast<qxSocketOption>(0xFFFFFFFF)).is("void"));
    const std::vector<std::string> first = {"qxSocket not created", "Unknown socket option",
                                            "Unknown socket option"};
    EXPECT_EQ(recorder.texts(), first);
    recorder.clear();
    Datagrams datagrams;
    for (unsigned int option = 0; option < 13; ++option)
        datagrams.getOption(static_cast<qxSocketOption>(option));
    EXPECT_EQ(recorder.texts(), std::vector<std::string>(10, "Socket option not supported"));
    EXPECT_EQ(recorder.messages()[0].level, QX_LEVEL_WARNING);
    EXPECT_FALSE(socket.hasSocketError());
}

TEST(qxSocket, refusesValuesThatAreNoNumbers)
{
    const MessageRecorder recorder;
    qxSocket socket;
    ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    for (const unsigned int option : {0U, 1U, 2U, 3U, 4U, 5U, 9U, 10U}) {
        SCOPED_TRACE(option);
        const bool isForRoot = option == QX_SOCKET_OPTION_DEBUG; // at some systems
        EXPECT_TRUE(socket.setOption(static_cast<qxSocketOption>(option), 0) || isForRoot);
    }
    socket.clearSocketError();
    EXPECT_FALSE(socket.setOption(QX_SOCKET_OPTION_LINGER, "long"));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_INVALID_ARGUMENT);
    EXPECT_FALSE(socket.setOption(QX_SOCKET_OPTION_LINGER, 1e300));
    EXPECT_FALSE(socket.setOption(QX_SOCKET_OPTION_MULTICAST_INTERFACE, "::1"));
    EXPECT_FALSE(socket.setOption(static_cast<qxSocketOption>(13), 1));
    EXPECT_EQ(socket.getSocketError(), QX_SOCKET_UNKNOWN_OPTION);
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Unknown socket option"});
}

} // namespace
