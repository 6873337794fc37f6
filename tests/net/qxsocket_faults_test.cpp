// SPDX-License-Identifier: see LICENSE

#include "qxnettest.h"

namespace
{

TEST(qxSocketFaults, sendingToAPeerThatIsGoneIsAnErrorAndNoSignal)
{
    Pair pair;
    sendText(pair.client, "unread");
    ASSERT_TRUE(pair.server->isReadyToReceive(PATIENCE));
    pair.server->close(0);
    int count = 0;
    for (int i = 0; i < 1000 && count >= 0; ++i) count = sendText(pair.client, "x");
    EXPECT_EQ(count, -1);
    EXPECT_TRUE(pair.client.getSocketError() == QX_SOCKET_CONNECTION_RESET ||
                pair.client.getSocketError() == QX_SOCKET_CONNECTION_ABORTED);
    EXPECT_EQ(sendText(pair.client, "x"), -1); // and again, when the system only says that the pipe is broken
}

TEST(qxSocketFaults, aPeerThatHasClosedHalf)
{
    struct Half : Pair {
        Half() { client.setCloseWait(1000); }
    } pair;
    std::thread closing([&] { pair.client.close(1); }); // stops sending first, and waits
    EXPECT_EQ(receiveText(*pair.server), "");
    EXPECT_EQ(sendText(*pair.server, "still talking"), 13);
    pair.server->close(0);
    closing.join();
}

TEST(qxSocketFaults, aPeerThatSendsAByteAtATime)
{
    Pair pair;
    std::thread peer([&] {
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(sendText(*pair.server, "."), 1);
            EXPECT_EQ(receiveText(*pair.server, 1), "!"); // only then the next
        }
        pair.server->close(0);
    });
    std::string received;
    for (std::string block; !(block = receiveText(pair.client)).empty();) {
        received += block;
        sendText(pair.client, "!");
    }
    peer.join();
    EXPECT_EQ(received, std::string(100, '.'));
}

TEST(qxSocketFaults, aPeerThatStallsDoesNotHoldWhoAsksInTime)
{
    Pair pair;
    ASSERT_TRUE(pair.client.setBlocking(0));
    const std::string block(100000, 'x');
    while (sendText(pair.client, block) > 0) {}
    EXPECT_EQ(pair.client.getSocketError(), QX_SOCKET_WOULD_BLOCK);
    EXPECT_FALSE(pair.client.isReadyToSend(5));
    while (pair.server->getPendingBytes() > 0) receiveText(*pair.server, 1000000);
    EXPECT_TRUE(pair.client.isReadyToSend(PATIENCE));
}

TEST(qxSocketFaults, anEarlierServerThatLeftItsPeersWaiting)
{
    auto listener = std::make_unique<Listener>();
    qxSocket client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(client.connect(listener->getBindAddress()));
    listener = nullptr; // never accepted
    const std::string answer = receiveText(client);
    EXPECT_TRUE(answer == "error 20" || answer == "error 21" || answer.empty()) << answer;
}

TEST(qxSocketFaults, tenThousandConnectionsOneAfterAnother)
{
    Listener listener;
    const qxSocketAddress place = listener.getBindAddress();
    qxSocket client;
    for (int i = 0; i < 10000; ++i) {
        ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM)) << i;
        // Reset at the end, or the ports that fade away would be missed by other tests.
        ASSERT_TRUE(client.setOption(QX_SOCKET_OPTION_LINGER, 0)) << i;
        ASSERT_TRUE(client.connect(place)) << i;
        const qxRefPointer<qxSocket> server = listener.accept();
        ASSERT_TRUE(server) << i;
        ASSERT_EQ(sendText(*server, "hello"), 5) << i;
        ASSERT_EQ(receiveText(client), "hello") << i;
        client.close(0);
    }
}

} // namespace
