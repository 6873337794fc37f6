// SPDX-License-Identifier: see LICENSE

// URLs of connections: "tcp://HOST:PORT" and "udp://HOST:PORT".

#include "net/qxaddresstext.h"
#include "qxhostinfo.h"
#include "qxserializeadaptersocket.h"
#include "serialize/qxurlschemes.h"

#include <algorithm>
#include <string_view>

namespace
{

constexpr unsigned int CONNECT_WAIT = 10000; // milliseconds, where the URL does not say how long

struct Place {
    qxString host;
    unsigned short port = 0;
    unsigned int wait = qxSerializeAdapterSocket::FOREVER; // milliseconds
};

// Reads what stands behind the scheme: "//" or not, the place, "/" or not, and the attribute "wait"; false for others.
bool readPlace(const qxString& url, Place& place)
{
    std::string_view rest(url.getString(), url.length());
    rest.remove_prefix(rest.find(':') + 1);
    const std::size_t mark = std::min(rest.find('?'), rest.size());
    std::string_view attributes = rest.substr(mark);
    rest = rest.substr(0, mark);
    if (rest.starts_with("//")) rest.remove_prefix(2);
    if (rest.ends_with('/')) rest.remove_suffix(1);
    while (!attributes.empty()) {
        attributes.remove_prefix(1);
        const std::string_view attribute = attributes.substr(0, attributes.find('&'));
        attributes.remove_prefix(attribute.size());
        if (attribute.starts_with("wait=") &&
            !qxReadDecimal(attribute.substr(5), qxSerializeAdapterSocket::FOREVER, place.wait))
            return false;
    }
    return qxSocketAddress::split(qxString(rest.data(), rest.size()), place.host, place.port) &&
           !place.host.isEmpty() && place.port != 0;
}

// Takes the first of the host's addresses that answers, or that is this machine's when it is to be received at.
qxRefPointer<qxSerializeAdapter> open(const qxString& url, qxSocketType type, bool receives)
{
    Place place;
    if (!readPlace(url, place)) return nullptr;
    qxRefPointer<qxSocket> socket(new qxSocket);
    const qxHostInfo host = qxHostInfo::getHostInfo(place.host);
    if (host.isEmpty()) return nullptr; // which has been said
    qxSocketError error = QX_SOCKET_NO_ERROR;
    for (const qxHostAddress& address : host.getAddresses()) {
        const bool isIPv4 = address.getType() == QX_HOST_ADDRESS_IPV4;
        const qxSocketAddress end(address, place.port);
        const bool isOpen =
            socket->create(isIPv4 ? QX_SOCKET_IPV4 : QX_SOCKET_IPV6, type) &&
            (receives ? socket->bind(end) : socket->connect(end, std::min(place.wait, CONNECT_WAIT)));
        error = isOpen ? QX_SOCKET_NO_ERROR : socket->getSocketError();
        if (isOpen) break;
    }
    const qxRefPointer<qxSerializeAdapterSocket> adapter(new qxSerializeAdapterSocket(socket, true));
    adapter->setWait(place.wait);
    if (error != QX_SOCKET_NO_ERROR) adapter->setError(qxSocket::getSocketErrorText(error));
    return adapter.get();
}

qxRefPointer<qxSerializeAdapter> openTCP(const qxString& url, qxSerializeAction)
{
    return open(url, QX_SOCKET_STREAM, false);
}

qxRefPointer<qxSerializeAdapter> openUDP(const qxString& url, qxSerializeAction action)
{
    return open(url, QX_SOCKET_DATAGRAM, action == QX_SERIALIZE_INPUT);
}

[[maybe_unused]] const bool isTCPAdded = qxAddURLScheme("tcp", openTCP);
[[maybe_unused]] const bool isUDPAdded = qxAddURLScheme("udp", openUDP);

} // namespace
