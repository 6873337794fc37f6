// SPDX-License-Identifier: see LICENSE

#include "qxnettest.h"

#include <functional>

namespace
{

TEST(qxSocketClose, gracefullyWaitsForThePeersEnd)
{
    Pair pair;
    std::string received;
    std::thread peer([&] {
        received = receiveText(*pair.server); // ends when the client stops sending
        sendText(*pair.server, "too late for you");
        pair.server->close(0);
    });
    EXPECT_LT(secondsOf([&] { pair.client.close(1); }), 1.9);
    peer.join();
    EXPECT_EQ(received, "");
    EXPECT_FALSE(pair.client.isActive());
    EXPECT_FALSE(pair.client.hasSocketError());
    EXPECT_TRUE(pair.client.isBlocking());
}

TEST(qxSocketClose, neverWaitsLongerThanItsLimit)
{
    const struct {
        const char* what;
        unsigned char endsWithoutData;
        bool peerIsGone;
        bool hasUnread;
        double least; // seconds
    } rows[] = {
        {"a peer that says nothing", 1, false, false, 0.05},
        {"unread bytes and a peer that stays", 1, false, true, 0.05},
        {"a peer that is gone", 1, true, false, 0.0},
        {"unread bytes and a peer that is gone", 1, true, true, 0.0},
        {"a peer that is gone, and the switch off", 0, true, true, 0.05},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Pair pair;
        pair.client.setCloseWait(50);
        pair.client.setCloseOnNoDataInRead(row.endsWithoutData);
        if (row.hasUnread) sendText(*pair.server, "nobody reads this");
        if (row.peerIsGone) pair.server->close(0);
        ASSERT_TRUE(!(row.hasUnread || row.peerIsGone) || pair.client.isReadyToReceive(PATIENCE));
        const double seconds = secondsOf([&] { pair.client.close(1); });
        EXPECT_GE(seconds, row.least - 0.001);
        EXPECT_LT(seconds, 1.0);
        EXPECT_FALSE(pair.client.isActive());
    }
    EXPECT_EQ(qxSocket().getCloseWait(), 2000U);
    EXPECT_EQ(qxSocket().getCloseOnNoDataInRead(), 1);
}

TEST(qxSocketClose, doesNotWaitWhereThereIsNoPeer)
{
    Listener listener;
    EXPECT_LT(secondsOf([&] { listener.close(1); }), 1.0);
    Datagrams datagrams;
    EXPECT_LT(secondsOf([&] { datagrams.close(1); }), 1.0);
    qxSocket alone;
    ASSERT_TRUE(alone.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    EXPECT_LT(secondsOf([&] { alone.close(1); }), 1.0);
}

TEST(qxSocketClose, unreadBytesDoNotTakeAwayWhatThePeerHasNotRead)
{
    Pair pair;
    sendText(*pair.server, "unread");
    ASSERT_TRUE(pair.client.isReadyToReceive(PATIENCE));
    sendText(pair.client, "last words");
    pair.client.setCloseWait(10);
    pair.client.close(1);
    EXPECT_EQ(receiveText(*pair.server), "last words");
    EXPECT_EQ(receiveText(*pair.server), "");
}

/// Runs `body` on a thread of its own until it is in its call, as far as that can be told.
class Blocked
{
public:
    explicit Blocked(std::function<void()> body)
        : m_thread([this, body] {
              m_begun.countDown();
              body();
          })
    {
        m_begun.wait();
    }
    ~Blocked() { m_thread.join(); }

private:
    TestLatch m_begun{1};
    std::thread m_thread;
};

// Whether the call has already begun to wait does not matter: the outcome is the same.
TEST(qxSocketClose, endsTheCallsOfOtherThreads)
{
    for (int round = 0; round < 20; ++round) {
        Pair pair;
        std::string received;
        {
            const Blocked blocked([&] { received = receiveText(pair.client); });
            pair.client.close(0);
        }
        EXPECT_TRUE(received == "error 26" || received == "error 14" || received == "error 0") << received;

        Listener listener;
        bool hasPeer = true;
        {
            const Blocked blocked([&] { hasPeer = listener.accept(); });
            listener.close(0);
        }
        EXPECT_FALSE(hasPeer);

        Datagrams datagrams;
        int count = 1;
        {
            const Blocked blocked([&] {
                char byte = 0;
                count = datagrams.receive(&byte, 1);
            });
            datagrams.close(0);
        }
        EXPECT_EQ(count, -1);

        Pair waiting;
        bool isReady = true;
        {
            const Blocked blocked([&] { isReady = waiting.client.isReadyToReceive(0xFFFFFFFF); });
            waiting.client.close(0);
        }
        EXPECT_FALSE(isReady);
    }
}

TEST(qxSocketClose, endsASendThatThePeerDoesNotTake)
{
    Pair pair;
    const std::string block(1000000, 'x');
    int last = 1;
    {
        const Blocked blocked([&] {
            while ((last = sendText(pair.client, block)) > 0) {}
        });
        pair.client.isReadyToSend(0);
        pair.client.close(0);
    }
    EXPECT_EQ(last, -1);
}

TEST(qxSocketClose, aClosedSocketCanBeOpenedAgainWhileOthersUseIt)
{
    qxSocket socket;
    std::atomic<bool> isOver{false};
    std::thread user([&] {
        char bytes[16];
        while (!isOver) socket.receive(bytes, sizeof(bytes));
    });
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
        ASSERT_TRUE(socket.bind(IPV4_HERE));
        socket.close(0);
    }
    isOver = true;
    user.join();
}

TEST(qxSocketClose, theDestructorDoesNotWaitAndRaisesNothing)
{
    Pair pair;
    auto socket = std::make_unique<qxSocket>();
    ASSERT_TRUE(socket->create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    socket->useExceptions(1);
    pair.server->useExceptions(1);
    EXPECT_LT(secondsOf([&] {
                  socket = nullptr;
                  pair.server = nullptr;
              }),
              1.0);
    EXPECT_EQ(receiveText(pair.client), "");
}

} // namespace
