// SPDX-License-Identifier: see LICENSE

#include "qxnettest.h"

#include "qxevent.h"
#include "qxguard.h"

#include <functional>

namespace
{

/// Keeps what it is told, and does what a test wants then.
class Receiver : public qxNotifyReceiverInterface
{
public:
    explicit Receiver(std::function<void()> work = {}) : m_work(std::move(work)) {}

    void onNotify(qxNotifyManager*, qxReference* message) override
    {
        const auto& data = static_cast<const qxNetData&>(*message);
        EXPECT_TRUE(message->isExactType(qxNetData::getClassType()));
        if (m_work) m_work();
        const qxBodyGuard guard(m_change);
        m_text.append(reinterpret_cast<const char*>(data.getBytes()), data.getLength());
        m_sender = data.getSender();
        ++m_count;
        m_change.fire();
    }

    /// Waits until so many bytes came.
    void awaitBytes(std::size_t count)
    {
        const qxBodyGuard guard(m_change);
        while (m_text.size() < count) m_change.waitAndLock(0xFFFFFFFF, 1);
    }

    std::string text() const
    {
        const qxBodyGuard guard(m_change);
        return m_text;
    }
    qxSocketAddress sender() const { return m_sender; }
    int count() const { return m_count; }

private:
    qxEvent m_change; // its lock guards the rest
    std::string m_text;
    qxSocketAddress m_sender;
    int m_count = 0;
    const std::function<void()> m_work;
};

TEST(qxSocketNotify, pollHandsOnWhatIsThereAndDoesNotWait)
{
    Receiver receiver;
    Pair pair;
    pair.client.addNotifyReceiver(&receiver);
    EXPECT_EQ(pair.client.poll(), 0);
    sendText(*pair.server, "news");
    ASSERT_TRUE(pair.client.isReadyToReceive(PATIENCE));
    EXPECT_EQ(pair.client.poll(), 1);
    EXPECT_EQ(receiver.text(), "news");
    EXPECT_EQ(receiver.sender(), pair.server->getBindAddress());
    EXPECT_EQ(pair.client.poll(), 0);
    pair.server->close(0);
    ASSERT_TRUE(pair.client.isReadyToReceive(PATIENCE));
    EXPECT_EQ(pair.client.poll(), 0); // the end is no data
    EXPECT_FALSE(pair.client.hasSocketError());
}

// Of two that see the same byte, one finds nothing when it comes to take it.
TEST(qxSocketNotify, pollsOfSeveralThreadsDoNotWaitForEachOther)
{
    Pair pair;
    std::atomic<int> bytes{0};
    const auto take = [&] {
        while (bytes < 500) bytes += pair.client.poll();
    };
    std::thread first(take);
    std::thread second(take);
    for (int i = 1; i <= 500; ++i) {
        sendText(*pair.server, "x");
        while (bytes < i) std::this_thread::yield();
    }
    first.join();
    second.join();
    EXPECT_FALSE(pair.client.hasSocketError());
}

TEST(qxSocketNotify, pollHandsOnOneDatagram)
{
    Receiver receiver;
    Datagrams first;
    Datagrams second;
    second.addNotifyReceiver(&receiver);
    EXPECT_EQ(second.poll(), 0);
    first.sendTo("one", 3, second.getBindAddress());
    first.sendTo("", 0, second.getBindAddress());
    first.sendTo("two", 3, second.getBindAddress());
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(second.isReadyToReceive(PATIENCE));
        EXPECT_EQ(second.poll(), 1);
        EXPECT_EQ(receiver.count(), i);
    }
    EXPECT_EQ(receiver.text(), "onetwo");
    EXPECT_EQ(receiver.sender(), first.getBindAddress());
}

TEST(qxSocketNotify, ticksHandOnWhatAStreamReceives)
{
    Receiver receiver;
    Pair pair;
    pair.client.addNotifyReceiver(&receiver);
    pair.client.startTicker(0.001, 60);
    std::string sent;
    for (int i = 0; i < 5; ++i) {
        const std::string text(static_cast<std::size_t>(i * 40000 + 1), static_cast<char>('a' + i));
        sendText(*pair.server, text);
        receiver.awaitBytes((sent += text).size());
    }
    EXPECT_TRUE(receiver.text() == sent);
    EXPECT_TRUE(pair.client.isTicking());
}

TEST(qxSocketNotify, theFirstBlockCanEndTheTicking)
{
    Receiver receiver;
    Pair pair;
    pair.client.addNotifyReceiver(&receiver);
    pair.client.setStopTickerOnFirstRecieve(1);
    pair.client.startTicker(0.001, 61);
    sendText(*pair.server, "first");
    receiver.awaitBytes(5);
    EXPECT_FALSE(pair.client.isTicking());
    sendText(*pair.server, "second");
    EXPECT_EQ(receiveText(pair.client), "second");
    EXPECT_EQ(receiver.text(), "first");
}

TEST(qxSocketNotify, ticksDoNothingForListenersAndDatagrams)
{
    class Ticked : public qxSocket
    {
    public:
        using qxSocket::onTick;
    };
    Ticked listener;
    ASSERT_TRUE(listener.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(listener.bind(IPV4_HERE));
    ASSERT_TRUE(listener.listen());
    listener.useExceptions(1);
    listener.onTick(0.0, 0.0);
    EXPECT_FALSE(listener.hasSocketError());

    Ticked datagrams;
    Datagrams first;
    ASSERT_TRUE(datagrams.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM));
    ASSERT_TRUE(datagrams.bind(IPV4_HERE));
    first.sendTo("x", 1, datagrams.getBindAddress());
    ASSERT_TRUE(datagrams.isReadyToReceive(PATIENCE));
    datagrams.onTick(0.0, 0.0);
    EXPECT_EQ(receiveText(datagrams), "x");
    datagrams.close(0);
    datagrams.onTick(0.0, 0.0);
    EXPECT_FALSE(datagrams.hasSocketError());
}

TEST(qxSocketNotify, aTickStoresAnErrorAndRaisesNothing)
{
    const MessageRecorder recorder;
    class Ticked : public qxSocket
    {
    public:
        using qxSocket::onTick;
    };
    Listener listener;
    Ticked client;
    ASSERT_TRUE(client.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    client.useExceptions(1);
    ASSERT_TRUE(client.connect(listener.getBindAddress()));
    const qxRefPointer<qxSocket> server = listener.accept();
    sendText(*server, "x");
    ASSERT_TRUE(client.isReadyToReceive(PATIENCE));
    server->setOption(QX_SOCKET_OPTION_LINGER, 0);
    server->close(0);
    client.onTick(0.0, 0.0); // whether the reset came before or behind the byte is the system's to say
    client.onTick(0.0, 0.0);
    EXPECT_TRUE(recorder.messages().empty());
}

TEST(qxSocketNotify, aReceiverMayEndTheSocket)
{
    auto pair = std::make_unique<Pair>();
    qxSocket* const socket = new qxSocket;
    Listener listener;
    ASSERT_TRUE(socket->create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
    ASSERT_TRUE(socket->connect(listener.getBindAddress()));
    const qxRefPointer<qxSocket> server = listener.accept();
    TestLatch isGone(1);
    Receiver receiver([&] {
        delete socket;
        isGone.countDown();
    });
    socket->addNotifyReceiver(&receiver);
    socket->startTicker(0.001, 62);
    sendText(*server, "end");
    isGone.wait();
    EXPECT_EQ(receiveText(*server), "");
    receiver.awaitBytes(3);
}

TEST(qxNetData, isAValueThatHoldersShare)
{
    const qxRefPointer<qxNetData> data(
        new qxNetData(reinterpret_cast<const unsigned char*>("abc"), 3, IPV4_HERE));
    const qxRefPointer<qxNetData> copy = data;
    EXPECT_EQ(copy, data);
    const qxRefPointer<qxReference> clone(data->clone());
    EXPECT_TRUE(clone->isExactType(qxNetData::getClassType()));
    EXPECT_EQ(static_cast<qxNetData*>(clone.get())->getData().entries(), 3U);
    EXPECT_STREQ(data->getTypeName(), "qxNetData");
}

} // namespace
