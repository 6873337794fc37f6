// SPDX-License-Identifier: see LICENSE

#include "net/qxnettest.h"
#include "qxthread.h"
#include "tools/qxtooltest.h"

#include <future>

namespace
{

/// Runs the tool beside the test, which is its peer.
class NetTool : public Tool
{
protected:
    void start(const std::string& words, const std::string& input = {})
    {
        m_status = std::async(std::launch::async, [=, this] { return run(words, input); });
    }
    int finish() { return m_status.get(); }

    static std::string text(const qxSocketAddress& address) { return address.asString().getString(); }

    /// A place at which nobody listens.
    static qxSocketAddress freePlace()
    {
        Listener listener;
        return listener.getBindAddress();
    }

    /// Connects as soon as the tool listens.
    static void connect(qxSocket& socket, const qxSocketAddress& place)
    {
        do {
            ASSERT_TRUE(socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM));
            qxThread::qxDelayFunction(1);
        } while (!socket.connect(place));
    }

    static std::string receiveAll(qxSocket& socket)
    {
        std::string all;
        for (std::string block; !(block = receiveText(socket, 65536)).empty();) all += block;
        return all;
    }

private:
    std::future<int> m_status;
};

std::string manyBytes()
{
    std::string bytes(300000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 253);
    return bytes;
}

TEST_F(NetTool, resolvesNames)
{
    expectAnswers(
        "", "net resolve localhost => 127.0.0.1\n::1\n", "net resolve -4 localhost => 127.0.0.1\n",
        "net -6 resolve localhost => ::1\n", "net resolve 10.1.2.3 => 10.1.2.3\n",
        "net resolve no-such-host.invalid => 1 qx: warning: Host 'no-such-host.invalid' not found\n",
        "net resolve -6 10.1.2.3 => 1 qx: warning: Host '10.1.2.3' not found\n");
}

TEST_F(NetTool, probesPlaces)
{
    Listener listener;
    const std::string place = text(listener.getBindAddress());
    EXPECT_EQ(answer("net probe " + place), place + "\n");
    EXPECT_EQ(answer("net probe -6 " + place), "1 qx: warning: Host '127.0.0.1' not found\n");
    listener.close(0);
    EXPECT_EQ(answer("net probe " + place), "1 qx: error: qxSocket error: Connection was refused\n");
    EXPECT_EQ(answer("net probe no-such-host.invalid:80"),
              "1 qx: warning: Host 'no-such-host.invalid' not found\n");
}

TEST_F(NetTool, printsWhatAPeerSends)
{
    const qxSocketAddress place = freePlace();
    start("net listen " + text(place) + " --wait 60000");
    qxSocket peer;
    connect(peer, place);
    const std::string bytes = manyBytes();
    for (std::size_t sent = 0; sent < bytes.size();) {
        const int count = peer.send(bytes.data() + sent, static_cast<unsigned int>(bytes.size() - sent));
        ASSERT_GT(count, 0);
        sent += static_cast<std::size_t>(count);
    }
    peer.close(1);
    EXPECT_EQ(finish(), 0);
    EXPECT_TRUE(out == bytes);
    EXPECT_EQ(err, "");
}

TEST_F(NetTool, sendsItsInput)
{
    Listener listener;
    const std::string bytes = manyBytes();
    start("net send " + text(listener.getBindAddress()), bytes);
    const qxRefPointer<qxSocket> peer = listener.accept();
    EXPECT_TRUE(receiveAll(*peer) == bytes);
    peer->close(0);
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(out + err, "");
}

TEST_F(NetTool, exchangesDatagrams)
{
    Datagrams socket;
    EXPECT_EQ(answer("net send --udp " + text(socket.getBindAddress()), "one datagram"), "");
    EXPECT_EQ(receiveText(socket), "one datagram");

    const qxSocketAddress place = Datagrams().getBindAddress();
    start("net listen --udp " + text(place) + " --wait 60000");
    for (bool isOver = false; !isOver; qxThread::qxDelayFunction(5)) { // until it is there to hear it
        socket.sendTo("heard", 5, place);
        isOver = content("../out") == "heard";
    }
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(out + err, "heard");
}

TEST_F(NetTool, saysWhatWentWrong)
{
    Listener listener;
    const std::string taken = text(listener.getBindAddress());
    EXPECT_EQ(answer("net listen " + taken), "4 qx: error: qxSocket error: Address already in use\n");
    EXPECT_EQ(answer("net send " + text(freePlace())),
              "4 qx: error: qxSocket error: Connection was refused\n");
    EXPECT_EQ(run("net listen 127.0.0.1:0 --wait 20"), 5);
    EXPECT_TRUE(err.starts_with("qx: port ")) << err;
    EXPECT_TRUE(err.ends_with("qx: error: qxSocket error: Connection timed out\n")) << err;
    EXPECT_EQ(run("net listen --udp 127.0.0.1:0 --wait 20"), 5);
    for (const char* const words :
         {"probe x", "probe :80", "probe 1.2.3.4:0", "probe ::1:80", "listen 1:2:3", "listen x", "send :1",
          "probe 1.2.3.4:80 --wait soon", "resolve", "probe"}) {
        SCOPED_TRACE(words);
        EXPECT_EQ(run(std::string("net ") + words), 2);
    }
}

} // namespace
