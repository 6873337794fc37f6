// SPDX-License-Identifier: see LICENSE

// Over the loopback address: each case is the same exchange with a second thread that uses the system's calls, so that only
// one side differs.

#include "qxbench.h"

#include "qxsocket.h"

#include <memory>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#if defined(QX_PEER_ASIO)
#include <boost/asio.hpp>
#endif
#if defined(QX_PEER_POCONET)
#include <Poco/Net/DatagramSocket.h>
#include <Poco/Net/StreamSocket.h>
#endif

namespace
{

constexpr unsigned int SMALL = 64; // bytes of a message
constexpr unsigned int LARGE = 65536;
constexpr unsigned int ROUNDS = 2000;
constexpr unsigned int LARGE_BLOCKS = 1500;
constexpr unsigned int SMALL_BLOCKS = 20000;
constexpr unsigned int CONNECTIONS = 300;

sockaddr_in loopback(unsigned short port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

const sockaddr* general(const sockaddr_in& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

unsigned short bindTo(int socket)
{
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof(address);
    if (::bind(socket, general(address), length) != 0) std::abort();
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

/// The other side, a thread of its own with the system's calls: takes one peer after another.
class Server
{
public:
    enum Kind { RETURNS, TAKES, CLOSES, RETURNS_DATAGRAMS }; // what it does with bytes

    explicit Server(Kind kind) : m_kind(kind)
    {
        m_socket = ::socket(AF_INET, kind == RETURNS_DATAGRAMS ? SOCK_DGRAM : SOCK_STREAM, 0);
        m_port = bindTo(m_socket);
        if (kind != RETURNS_DATAGRAMS) ::listen(m_socket, 128);
        m_thread = std::thread([this] { run(); });
    }
    ~Server()
    {
        ::shutdown(m_socket, SHUT_RDWR);
        m_thread.join();
        ::close(m_socket);
    }

    unsigned short port() const { return m_port; }

private:
    void run()
    {
        if (m_kind == RETURNS_DATAGRAMS) return echoDatagrams();
        for (int peer = 0; (peer = ::accept(m_socket, nullptr, nullptr)) >= 0; ::close(peer))
            if (m_kind != CLOSES) talk(peer);
    }

    void talk(int peer)
    {
        const int on = 1;
        ::setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
        std::vector<char> block(LARGE);
        for (ssize_t count = 0; (count = ::recv(peer, block.data(), block.size(), 0)) > 0;)
            if (m_kind == RETURNS) ::send(peer, block.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL);
    }

    void echoDatagrams()
    {
        char block[SMALL];
        sockaddr_in sender = {};
        for (;;) {
            socklen_t length = sizeof(sender);
            const ssize_t count =
                ::recvfrom(m_socket, block, sizeof(block), 0, reinterpret_cast<sockaddr*>(&sender), &length);
            if (count <= 0) return;
            ::sendto(m_socket, block, static_cast<std::size_t>(count), 0, general(sender), length);
        }
    }

    const Kind m_kind;
    int m_socket = -1;
    unsigned short m_port = 0;
    std::thread m_thread;
};

// The contenders: connect, send all, receive some, end of sending.

class Ours
{
public:
    explicit Ours(unsigned short port)
    {
        m_socket.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM);
        m_socket.connect(qxSocketAddress(qxHostAddress::loopback(), port));
    }
    void noDelay() { m_socket.setOption(QX_SOCKET_OPTION_NO_DELAY, 1); }
    void send(const char* bytes, unsigned int count) { m_socket.send(bytes, count); }
    int receive(char* bytes, unsigned int count) { return m_socket.receive(bytes, count); }

private:
    qxSocket m_socket;
};

class Raw
{
public:
    explicit Raw(unsigned short port) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        const sockaddr_in address = loopback(port);
        if (::connect(m_socket, general(address), sizeof(address)) != 0) std::abort();
    }
    ~Raw() { ::close(m_socket); }
    void noDelay()
    {
        const int on = 1;
        ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    }
    void send(const char* bytes, unsigned int count) { ::send(m_socket, bytes, count, MSG_NOSIGNAL); }
    int receive(char* bytes, unsigned int count)
    {
        return static_cast<int>(::recv(m_socket, bytes, count, 0));
    }

private:
    const int m_socket;
};

#if defined(QX_PEER_ASIO)
boost::asio::io_context& context()
{
    static boost::asio::io_context one;
    return one;
}

class Asio
{
public:
    explicit Asio(unsigned short port) : m_socket(context())
    {
        m_socket.connect({boost::asio::ip::address_v4::loopback(), port});
    }
    void noDelay() { m_socket.set_option(boost::asio::ip::tcp::no_delay(true)); }
    void send(const char* bytes, unsigned int count) { m_socket.send(boost::asio::buffer(bytes, count)); }
    int receive(char* bytes, unsigned int count)
    {
        boost::system::error_code error;
        return static_cast<int>(m_socket.receive(boost::asio::buffer(bytes, count), 0, error));
    }

private:
    boost::asio::ip::tcp::socket m_socket;
};
#endif

#if defined(QX_PEER_POCONET)
class PocoNet
{
public:
    explicit PocoNet(unsigned short port) : m_socket(Poco::Net::SocketAddress("127.0.0.1", port)) {}
    void noDelay() { m_socket.setNoDelay(true); }
    void send(const char* bytes, unsigned int count) { m_socket.sendBytes(bytes, static_cast<int>(count)); }
    int receive(char* bytes, unsigned int count)
    {
        return m_socket.receiveBytes(bytes, static_cast<int>(count));
    }

private:
    Poco::Net::StreamSocket m_socket;
};
#endif

template <class Client>
std::uint64_t pingPong(Client& client)
{
    char block[SMALL] = {};
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < ROUNDS; ++i) {
        block[0] = static_cast<char>(i);
        client.send(block, SMALL);
        for (unsigned int done = 0; done < SMALL;)
            done += static_cast<unsigned int>(client.receive(block + done, SMALL - done));
        sum = qxBenchChecksum(block, SMALL, sum);
    }
    return sum;
}

template <class Client>
std::uint64_t push(Client& client, unsigned int size, unsigned int blocks)
{
    const std::vector<char> block(size, 'x');
    for (unsigned int i = 0; i < blocks; ++i) client.send(block.data(), size);
    return blocks;
}

// Sends from a peer of our own, through `receive` of each contender.
class Source
{
public:
    Source()
    {
        m_socket = ::socket(AF_INET, SOCK_STREAM, 0);
        m_port = bindTo(m_socket);
        ::listen(m_socket, 1);
        m_thread = std::thread([this] {
            const std::vector<char> block(LARGE, 'x');
            for (int peer = 0; (peer = ::accept(m_socket, nullptr, nullptr)) >= 0; ::close(peer))
                for (unsigned int i = 0; i < LARGE_BLOCKS; ++i)
                    if (::send(peer, block.data(), LARGE, MSG_NOSIGNAL) < 0) break;
        });
    }
    ~Source()
    {
        ::shutdown(m_socket, SHUT_RDWR);
        m_thread.join();
        ::close(m_socket);
    }

    unsigned short port() const { return m_port; }

private:
    int m_socket = -1;
    unsigned short m_port = 0;
    std::thread m_thread;
};

template <class Client>
std::uint64_t pull(const Source& source)
{
    Client client(source.port());
    std::vector<char> block(LARGE);
    std::uint64_t total = 0;
    for (int count = 0; (count = client.receive(block.data(), LARGE)) > 0;)
        total += static_cast<unsigned int>(count);
    return total;
}

// All contenders, each by a generic function of its type.
template <class Add>
void addAll(Add add)
{
    add.template operator()<Ours>("qxbase");
    add.template operator()<Raw>("system calls");
#if defined(QX_PEER_ASIO)
    add.template operator()<Asio>("boost asio");
#endif
#if defined(QX_PEER_POCONET)
    add.template operator()<PocoNet>("POCO Net");
#endif
}

// A server has one peer at a time: each contender has its own, which the work keeps.
void preparePingPong(qxBenchCase& bench)
{
    bench.amount = ROUNDS;
    addAll([&]<class Client>(const char* name) {
        auto server = std::make_shared<Server>(Server::RETURNS);
        auto client = std::make_shared<Client>(server->port());
        client->noDelay();
        bench.add(name, [server, client] { return pingPong(*client); });
    });
}

void prepareBulkSend(qxBenchCase& bench)
{
    bench.amount = double{LARGE} * LARGE_BLOCKS;
    addAll([&]<class Client>(const char* name) {
        auto server = std::make_shared<Server>(Server::TAKES);
        auto client = std::make_shared<Client>(server->port());
        bench.add(name, [server, client] { return push(*client, LARGE, LARGE_BLOCKS); });
    });
}

void prepareBulkReceive(qxBenchCase& bench)
{
    bench.amount = double{LARGE} * LARGE_BLOCKS;
    auto source = std::make_shared<Source>();
    addAll(
        [&]<class Client>(const char* name) { bench.add(name, [source] { return pull<Client>(*source); }); });
}

void prepareSmallMessages(qxBenchCase& bench)
{
    bench.amount = SMALL_BLOCKS;
    addAll([&]<class Client>(const char* name) {
        auto server = std::make_shared<Server>(Server::TAKES);
        auto client = std::make_shared<Client>(server->port());
        client->noDelay();
        bench.add(name, [server, client] { return push(*client, SMALL, SMALL_BLOCKS); });
    });
}

void prepareConnect(qxBenchCase& bench)
{
    bench.amount = CONNECTIONS;
    auto server = std::make_shared<Server>(Server::CLOSES); // which closes first and keeps the fading ports
    addAll([&]<class Client>(const char* name) {
        bench.add(name, [server] {
            char byte = 0;
            std::uint64_t ends = 0;
            for (unsigned int i = 0; i < CONNECTIONS; ++i)
                ends += Client(server->port()).receive(&byte, 1) == 0;
            return ends;
        });
    });
}

// Datagrams are sent to an address each and come back with one.

class OurDatagrams
{
public:
    explicit OurDatagrams(unsigned short port) : m_server(qxHostAddress::loopback(), port)
    {
        m_socket.create(QX_SOCKET_IPV4, QX_SOCKET_DATAGRAM);
        m_socket.bind(qxSocketAddress(qxHostAddress::loopback(), 0));
    }
    void exchange(char* block)
    {
        m_socket.sendTo(block, SMALL, m_server);
        m_socket.receiveFrom(block, SMALL, m_sender);
    }

private:
    qxSocket m_socket;
    const qxSocketAddress m_server;
    qxSocketAddress m_sender;
};

class RawDatagrams
{
public:
    explicit RawDatagrams(unsigned short port)
        : m_socket(::socket(AF_INET, SOCK_DGRAM, 0)), m_server(loopback(port))
    {
        bindTo(m_socket);
    }
    ~RawDatagrams() { ::close(m_socket); }
    void exchange(char* block)
    {
        socklen_t length = sizeof(m_sender);
        ::sendto(m_socket, block, SMALL, 0, general(m_server), sizeof(m_server));
        ::recvfrom(m_socket, block, SMALL, 0, reinterpret_cast<sockaddr*>(&m_sender), &length);
    }

private:
    const int m_socket;
    const sockaddr_in m_server;
    sockaddr_in m_sender = {};
};

#if defined(QX_PEER_ASIO)
class AsioDatagrams
{
public:
    explicit AsioDatagrams(unsigned short port)
        : m_socket(context(), {boost::asio::ip::address_v4::loopback(), 0}),
          m_server(boost::asio::ip::address_v4::loopback(), port)
    {}
    void exchange(char* block)
    {
        m_socket.send_to(boost::asio::buffer(block, SMALL), m_server);
        m_socket.receive_from(boost::asio::buffer(block, SMALL), m_sender);
    }

private:
    boost::asio::ip::udp::socket m_socket;
    const boost::asio::ip::udp::endpoint m_server;
    boost::asio::ip::udp::endpoint m_sender;
};
#endif

#if defined(QX_PEER_POCONET)
class PocoDatagrams
{
public:
    explicit PocoDatagrams(unsigned short port)
        : m_socket(Poco::Net::SocketAddress("127.0.0.1", 0)), m_server("127.0.0.1", port)
    {}
    void exchange(char* block)
    {
        m_socket.sendTo(block, SMALL, m_server);
        m_socket.receiveFrom(block, SMALL, m_sender);
    }

private:
    Poco::Net::DatagramSocket m_socket;
    const Poco::Net::SocketAddress m_server;
    Poco::Net::SocketAddress m_sender;
};
#endif

template <class Client>
void addDatagrams(qxBenchCase& bench, const char* name)
{
    auto server = std::make_shared<Server>(Server::RETURNS_DATAGRAMS);
    auto client = std::make_shared<Client>(server->port());
    bench.add(name, [server, client] {
        char block[SMALL] = {};
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < ROUNDS; ++i) {
            block[0] = static_cast<char>(i);
            client->exchange(block);
            sum = qxBenchChecksum(block, SMALL, sum);
        }
        return sum;
    });
}

void prepareDatagrams(qxBenchCase& bench)
{
    bench.amount = ROUNDS;
    addDatagrams<OurDatagrams>(bench, "qxbase");
    addDatagrams<RawDatagrams>(bench, "system calls");
#if defined(QX_PEER_ASIO)
    addDatagrams<AsioDatagrams>(bench, "boost asio");
#endif
#if defined(QX_PEER_POCONET)
    addDatagrams<PocoDatagrams>(bench, "POCO Net");
#endif
}

const qxBenchEntry s_pingPong("net/TCP ping-pong of 64 bytes", QX_BENCH_NANOSECONDS, preparePingPong);
const qxBenchEntry s_bulkSend("net/TCP bulk sent in 64 KB", QX_BENCH_MEGABYTES, prepareBulkSend);
const qxBenchEntry s_bulkReceive("net/TCP bulk received in 64 KB", QX_BENCH_MEGABYTES, prepareBulkReceive);
const qxBenchEntry s_small("net/TCP messages of 64 bytes sent", QX_BENCH_NANOSECONDS, prepareSmallMessages);
const qxBenchEntry s_connect("net/TCP connect and close", QX_BENCH_NANOSECONDS, prepareConnect);
const qxBenchEntry s_datagrams("net/UDP ping-pong of 64 bytes", QX_BENCH_NANOSECONDS, prepareDatagrams);

} // namespace
