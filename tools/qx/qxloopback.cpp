// SPDX-License-Identifier: see LICENSE

#include "qxloopback.h"

#include "qxserializeadaptersocket.h"

#include <algorithm>
#include <thread>

namespace
{

constexpr unsigned int BLOCK = 10000; // bytes; no divisor of anything, so that pieces never fit

// The checksum that gzip and Ethernet use.
unsigned int checksum(std::string_view bytes)
{
    unsigned int sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
    }
    return ~sum;
}

void write(qxSerializeAdapter& adapter, std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size(); i += BLOCK) {
        const std::string_view block = bytes.substr(i, BLOCK);
        adapter.write(block.data(), static_cast<unsigned int>(block.size()));
    }
}

std::string readAll(qxSerializeAdapter& adapter)
{
    std::string all;
    unsigned char block[BLOCK];
    for (unsigned int count = 0; (count = adapter.read(block, BLOCK)) > 0;)
        all.append(reinterpret_cast<const char*>(block), count);
    return all;
}

} // namespace

qxLoopbackResult exchangeOnLoopback(std::string_view bytes)
{
    qxLoopbackResult result;
    qxSocket listener;
    const bool isListening = listener.create(QX_SOCKET_IPV4, QX_SOCKET_STREAM) &&
                             listener.bind({qxHostAddress::loopback(), 0}) && listener.listen();
    result.place = listener.getBindAddress();
    const qxRefPointer<qxSocket> client(new qxSocket);
    if (!isListening || !client->create(QX_SOCKET_IPV4, QX_SOCKET_STREAM) || !client->connect(result.place))
        return result;
    const qxRefPointer<qxSocket> server = listener.accept();
    if (!server) return result;

    std::thread sender([&client, bytes] { // gracefully closed at its end
        qxSerializeAdapterSocket adapter(client, true);
        write(adapter, bytes);
    });
    {
        qxSerializeAdapterSocket adapter(server);
        const std::string received = readAll(adapter);
        server->close(0);
        result.received = received.size();
        result.receivedChecksum = checksum(received);
    }
    sender.join();
    result.sentChecksum = checksum(bytes);
    return result;
}
