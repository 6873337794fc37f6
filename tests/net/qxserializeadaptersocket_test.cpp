// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptersocket.h"

#include "qxserializebinary.h"
#include "qxserializestring.h"
#include "qxxmldom.h"

#include "qxnettest.h"
#include "qxteststream.h"

namespace
{

/// A stream adapter on one end of a connection, and the other end.
struct Ends {
    Pair pair;
    const qxRefPointer<qxSerializeAdapterSocket> adapter{new qxSerializeAdapterSocket(pair.server)};
};

TEST(qxSerializeAdapterSocket, doesNotWaitForBytesThatItDoesNotNeed)
{
    Ends ends;
    qxSerializeAdapter& adapter = *ends.adapter;
    EXPECT_EQ(adapter.length(), 0U);
    sendText(ends.pair.client, "abc");
    EXPECT_TRUE(adapter.hasData());
    EXPECT_EQ(adapter.length(), 3U);
    EXPECT_EQ(readBlock(adapter, 1000), "abc");
    sendText(ends.pair.client, "de");
    EXPECT_EQ(adapter.read(), 'd');
    EXPECT_EQ(adapter.read(), 'e');
    std::string large(200000, 'x');
    sendText(ends.pair.client, large);
    EXPECT_GT(readBlock(adapter, 200000).size(), 0U);
    EXPECT_FALSE(adapter.hasError());
}

TEST(qxSerializeAdapterSocket, endsWhenThePeerHasClosed)
{
    Ends ends;
    sendText(ends.pair.client, "the end");
    ends.pair.client.close(0);
    EXPECT_EQ(readAll(*ends.adapter), "the end");
    EXPECT_FALSE(ends.adapter->hasData());
    EXPECT_EQ(readBlock(*ends.adapter, 10), "");
    EXPECT_EQ(ends.adapter->length(), 0U);
    EXPECT_FALSE(ends.adapter->hasError());
}

TEST(qxSerializeAdapterSocket, valuesArriveThoughTheyComeInPieces)
{
    Ends ends;
    std::thread peer([&] {
        for (const char byte : {'\0', '\0', '\1', '\2'}) {
            ends.pair.client.send(&byte, 1);
            EXPECT_TRUE(ends.pair.client.isReadyToSend(PATIENCE));
            std::this_thread::yield();
        }
        sendText(ends.pair.client, std::string("name\0rest", 9));
    });
    qxSerializeBinary<unsigned int> number;
    number.read(ends.adapter);
    EXPECT_EQ(static_cast<unsigned int>(number), 258U);
    qxSerializeString text;
    text.read(ends.adapter);
    EXPECT_EQ(text, "name");
    EXPECT_TRUE(ends.adapter->hasData(4));
    EXPECT_EQ(readBlock(*ends.adapter, 4), "rest");
    peer.join();
}

TEST(qxSerializeAdapterSocket, sendsWhatWasWrittenBeforeItWaits)
{
    Ends ends;
    std::thread peer([&] {
        EXPECT_EQ(receiveText(ends.pair.client), "question");
        sendText(ends.pair.client, "answer");
    });
    for (const char c : std::string("question")) ends.adapter->write(static_cast<unsigned char>(c));
    EXPECT_EQ(readBlock(*ends.adapter, 100), "answer");
    peer.join();
    writeText(*ends.adapter, "more");
    EXPECT_FALSE(ends.pair.client.isReadyToReceive(0));
    ends.adapter->flush();
    EXPECT_EQ(receiveText(ends.pair.client), "more");
}

TEST(qxSerializeAdapterSocket, isReadByTheReadersOfDocuments)
{
    Ends ends;
    sendText(ends.pair.client, "<a><b>text</b></a>\n");
    ends.pair.client.close(0);
    qxXmlDom document;
    document.read(ends.adapter);
    EXPECT_FALSE(ends.adapter->hasError());
}

TEST(qxSerializeAdapterSocket, keepsTheSocketsErrors)
{
    Ends ends;
    ends.adapter->setWait(5);
    EXPECT_FALSE(ends.adapter->hasData());
    EXPECT_EQ(ends.adapter->getError(), "qxSocket error: Connection timed out");
    EXPECT_EQ(readBlock(*ends.adapter, 5), ""); // nothing is tried any more
    writeText(*ends.adapter, "x");
    ends.adapter->flush();
    EXPECT_FALSE(ends.pair.client.isReadyToReceive(0));

    Ends stalled;
    stalled.adapter->setWait(5);
    const std::string block(1000000, 'x');
    for (int i = 0; i < 50 && !stalled.adapter->hasError(); ++i) writeText(*stalled.adapter, block);
    EXPECT_EQ(stalled.adapter->getError(), "qxSocket error: Connection timed out");
    EXPECT_TRUE(stalled.pair.server->isBlocking());
}

TEST(qxSerializeAdapterSocket, endsWhenAnotherThreadClosesItsSocket)
{
    Ends ends;
    std::thread other([&] { ends.pair.server->close(0); });
    EXPECT_FALSE(ends.adapter->hasData());
    other.join();
    EXPECT_EQ(ends.adapter->length(), 0U);
}

TEST(qxSerializeAdapterSocket, closesItsSocketOnRequest)
{
    Pair pair;
    {
        const qxSerializeAdapterSocket keeps(pair.server);
    }
    EXPECT_TRUE(pair.server->isActive());
    {
        pair.server->setCloseWait(1);
        qxSerializeAdapterSocket closes(pair.server, true);
        writeText(closes, "bye");
    }
    EXPECT_FALSE(pair.server->isActive());
    EXPECT_EQ(receiveText(pair.client), "bye");
    EXPECT_EQ(receiveText(pair.client), "");
}

TEST(qxSerializeAdapterSocketURL, opensConnections)
{
    for (const qxSocketAddress& here : {IPV4_HERE, IPV6_HERE}) {
        for (const char* const form : {"tcp://%s", "tcp:%s", "TCP://%s/", "tcp://%s?wait=5000&x=y"}) {
            const MessageRecorder recorder;
            Listener listener(here);
            const qxString url = qxString::str(form, listener.getBindAddress().asString());
            SCOPED_TRACE(url.getString());
            const auto adapter = qxSerializeAdapter::getURLAdapter(url, QX_SERIALIZE_OUTPUT);
            ASSERT_TRUE(adapter);
            const qxRefPointer<qxSocket> server = listener.accept();
            writeText(*adapter, "hello");
            adapter->flush();
            EXPECT_EQ(receiveText(*server), "hello");
            sendText(*server, "back");
            EXPECT_EQ(readBlock(*adapter, 10), "back");
            server->close(0);
            EXPECT_TRUE(recorder.messages().empty());
        }
    }
}

TEST(qxSerializeAdapterSocketURL, sendsAndReceivesDatagrams)
{
    Datagrams receiver;
    {
        const qxString url = qxString("udp://") + receiver.getBindAddress().asString();
        const auto adapter = qxSerializeAdapter::getURLAdapter(url, QX_SERIALIZE_OUTPUT);
        ASSERT_TRUE(adapter);
        writeText(*adapter, "one ");
        writeText(*adapter, "datagram");
        adapter->flush();
        writeText(*adapter, std::string(3000, 'x'));
    }
    EXPECT_EQ(receiveText(receiver), "one datagram");
    for (const std::size_t size : {1400U, 1400U, 200U}) EXPECT_EQ(receiveText(receiver, 5000).size(), size);

    const qxSocketAddress place = receiver.getBindAddress();
    receiver.close(0);
    const qxString url = qxString("udp:") + place.asString() + "?wait=10000";
    const auto adapter = qxSerializeAdapter::getURLAdapter(url);
    ASSERT_TRUE(adapter);
    Datagrams sender;
    sender.sendTo("ab", 2, place);
    sender.sendTo("c", 1, place);
    sender.sendTo("", 0, place); // the end
    EXPECT_EQ(readAll(*adapter), "abc");
    EXPECT_FALSE(adapter->hasError());
}

TEST(qxSerializeAdapterSocketURL, saysWhyItCouldNotConnect)
{
    MessageRecorder recorder;
    qxSocketAddress nobody;
    {
        Listener listener;
        nobody = listener.getBindAddress();
    }
    const qxString refused = qxString("tcp://") + nobody.asString();
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter(refused));
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{std::string("URL Adapter (") + refused.getString() +
                                                         ") Error:qxSocket error: Connection was refused"});
    for (const char* const url : {"tcp://127.0.0.1", "tcp://:80", "tcp:", "tcp://127.0.0.1:0", "tcp://::1:80",
                                  "udp://127.0.0.1:99999", "tcp://127.0.0.1:1?wait=soon"}) {
        recorder.clear();
        EXPECT_FALSE(qxSerializeAdapter::getURLAdapter(url));
        EXPECT_EQ(recorder.texts(),
                  std::vector<std::string>{std::string("Could not create URL Adapter '") + url + "'"});
    }
    recorder.clear();
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("tcp://no-such-host.invalid:80"));
    EXPECT_EQ(recorder.messages()[0].text, "Host 'no-such-host.invalid' not found");
}

} // namespace
