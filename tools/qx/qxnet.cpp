// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxinput.h"
#include "qxoutput.h"

#include "qxhostinfo.h"
#include "qxsocket.h"
#include "qxtime.h"

#include <algorithm>
#include <optional>

namespace
{

constexpr unsigned int SLICE = 100;              // milliseconds between two looks at the interrupt key
constexpr unsigned int LARGEST_DATAGRAM = 65507; // bytes
constexpr unsigned int BLOCK = 65536;

/// The talk with the peer is over before its end.
struct Broken {
    qxStatus status;
    std::string text; // empty when all has been said
};

/// How long a peer may leave us waiting; from one peer's sign to the next.
class Patience
{
public:
    explicit Patience(const qxCommandLine& line)
    {
        if (!line.hasOption("--wait")) return;
        m_limit = parseNumber<unsigned int>(line.getOptionText("--wait"), "number of milliseconds");
    }

    /// Waits until `socket` is ready; an error of the socket is ready, too.
    void await(qxSocket& socket, bool toSend) const
    {
        const double begin = qxTime::systemSeconds();
        for (;;) {
            if (isInterrupted()) throw Broken{qxStatus::INTERRUPTED, {}};
            const double gone = (qxTime::systemSeconds() - begin) * 1e3;
            const double left = m_limit ? *m_limit - gone : SLICE;
            const auto slice = static_cast<unsigned int>(std::clamp<double>(left, 0.0, SLICE));
            if (toSend ? socket.isReadyToSend(slice) : socket.isReadyToReceive(slice)) return;
            if (socket.hasSocketError()) return;
            if (left <= 0.0) throw Broken{qxStatus::LIMIT, socket.getSocketErrorText(QX_SOCKET_TIMED_OUT)};
        }
    }

private:
    std::optional<unsigned int> m_limit; // milliseconds
};

/// What the options say about addresses.
bool isWanted(const qxCommandLine& line, const qxHostAddress& address)
{
    const bool isIPv4 = address.getType() == QX_HOST_ADDRESS_IPV4;
    const bool isRestricted = line.hasOption("-4") || line.hasOption("-6");
    return !isRestricted || line.hasOption(isIPv4 ? "-4" : "-6");
}

std::vector<qxHostAddress> resolve(const qxCommandLine& line, const qxString& name)
{
    const qxHostInfo info = qxHostInfo::getHostInfo(name);
    std::vector<qxHostAddress> addresses;
    for (const qxHostAddress& address : info.getAddresses())
        if (isWanted(line, address)) addresses.push_back(address);
    if (addresses.empty() && !info.isEmpty())
        qxMessage::message(QX_LEVEL_WARNING, "Host '%s' not found", name); // not with such an address
    return addresses;
}

/// The place that the argument names: a host, empty if it may be left out and is, and a port.
std::pair<qxString, unsigned short> readPlace(const qxCommandLine& line, bool needsHost)
{
    const std::string text = line.getArgumentText(0);
    qxString host;
    unsigned short port = 0;
    const bool isPlace = text.size() <= qxString::MAX_LENGTH &&
                         qxSocketAddress::split(text.c_str(), host, port) &&
                         !(needsHost && (host.isEmpty() || port == 0));
    if (!isPlace) throw qxUsageError("'" + text + "' is no " + (needsHost ? "HOST:PORT" : "[HOST:]PORT"));
    return {host, port};
}

bool create(qxSocket& socket, const qxHostAddress& address, bool isUDP)
{
    const bool isIPv4 = address.getType() == QX_HOST_ADDRESS_IPV4;
    return socket.create(isIPv4 ? QX_SOCKET_IPV4 : QX_SOCKET_IPV6,
                         isUDP ? QX_SOCKET_DATAGRAM : QX_SOCKET_STREAM);
}

std::string errorOf(const qxSocket& socket)
{
    return qxSocket::getSocketErrorText(socket.getSocketError());
}

/// Connects `socket` to the first of the host's addresses that answers.
void connect(qxSocket& socket, const qxCommandLine& line, const Patience& patience)
{
    const auto [host, port] = readPlace(line, true);
    Broken last = {qxStatus::NO, {}};
    for (const qxHostAddress& address : resolve(line, host)) {
        if (create(socket, address, line.hasOption("--udp")) && socket.setBlocking(0) &&
            !socket.connect({address, port}) && socket.getSocketError() == QX_SOCKET_WOULD_BLOCK) {
            socket.clearSocketError();
            patience.await(socket, true);
        }
        if (!socket.hasSocketError()) return;
        last = {qxStatus::NO_FILE, errorOf(socket)};
    }
    throw last;
}

/// Takes the place to listen at, and says which port it is when that was left open.
void listenAt(qxSocket& socket, const qxCommandLine& line, qxReport& report)
{
    const auto [host, port] = readPlace(line, false);
    std::vector<qxHostAddress> addresses = {
        qxHostAddress::any(line.hasOption("-6") ? QX_HOST_ADDRESS_IPV6 : QX_HOST_ADDRESS_IPV4)};
    if (!host.isEmpty()) addresses = resolve(line, host);
    if (addresses.empty()) throw Broken{qxStatus::NO, {}};
    const bool isUDP = line.hasOption("--udp");
    if (!create(socket, addresses[0], isUDP) || !socket.bind({addresses[0], port}) ||
        (!isUDP && !socket.listen()))
        throw Broken{qxStatus::NO_FILE, errorOf(socket)};
    if (port == 0) report.printNote("port " + std::to_string(socket.getBindAddress().getPort()));
}

/// Writes out what comes; false at the end.
bool receiveBlock(qxSocket& socket)
{
    std::string block(BLOCK, '\0');
    const int count = socket.receive(block.data(), BLOCK);
    if (count < 0) throw Broken{qxStatus::NO_FILE, errorOf(socket)};
    writeOutput({block.data(), static_cast<std::size_t>(count)});
    flushOutput();
    return count > 0;
}

void sendBlock(qxSocket& socket, std::string_view bytes, const Patience& patience)
{
    while (!bytes.empty()) {
        patience.await(socket, true);
        const int sent =
            socket.hasSocketError() ? -1 : socket.send(bytes.data(), static_cast<unsigned int>(bytes.size()));
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else {
            if (socket.getSocketError() != QX_SOCKET_WOULD_BLOCK)
                throw Broken{qxStatus::NO_FILE, errorOf(socket)};
            socket.clearSocketError();
        }
    }
}

/// Runs `body` and tells how it went.
template <class Body>
qxStatus talk(qxReport& report, const Body& body)
{
    try {
        body();
        return qxStatus::DONE;
    } catch (const Broken& broken) {
        if (!broken.text.empty()) report.printError(broken.text);
        return broken.status;
    }
}

qxStatus runResolve(qxReport&, const qxCommandLine& line)
{
    const std::string name = line.getArgumentText(0);
    if (name.size() > qxString::MAX_LENGTH) throw qxUsageError("a name is too long");
    const std::vector<qxHostAddress> addresses = resolve(line, name.c_str());
    for (const qxHostAddress& address : addresses)
        writeOutput(std::string(viewOf(address.asString())) + "\n");
    return addresses.empty() ? qxStatus::NO : qxStatus::DONE;
}

qxStatus runProbe(qxReport& report, const qxCommandLine& line)
{
    const Patience patience(line);
    const qxStatus status = talk(report, [&] {
        qxSocket socket;
        connect(socket, line, patience);
        writeOutput(std::string(viewOf(socket.getConnectAddress().asString())) + "\n");
    });
    return status == qxStatus::NO_FILE ? qxStatus::NO : status;
}

qxStatus runListen(qxReport& report, const qxCommandLine& line)
{
    const Patience patience(line);
    return talk(report, [&] {
        qxSocket listener;
        listenAt(listener, line, report);
        patience.await(listener, false);
        if (line.hasOption("--udp")) {
            receiveBlock(listener);
            return;
        }
        const qxRefPointer<qxSocket> peer = listener.accept();
        if (!peer) throw Broken{qxStatus::NO_FILE, errorOf(listener)};
        listener.close(0);
        do {
            patience.await(*peer, false);
        } while (receiveBlock(*peer));
    });
}

qxStatus runSend(qxReport& report, const qxCommandLine& line)
{
    const Patience patience(line);
    return talk(report, [&] {
        qxSocket socket;
        connect(socket, line, patience);
        const qxInput input = openInput("-");
        std::string bytes;
        if (line.hasOption("--udp")) {
            for (std::string block; readBlock(input, block);) {
                bytes += block;
                for (; bytes.size() > LARGEST_DATAGRAM; bytes.erase(0, LARGEST_DATAGRAM))
                    sendBlock(socket, std::string_view(bytes).substr(0, LARGEST_DATAGRAM), patience);
            }
            sendBlock(socket, bytes, patience);
            return;
        }
        while (readBlock(input, bytes)) sendBlock(socket, bytes, patience);
        socket.close(1);
    });
}

} // namespace

void declareNet(qxTool& tool)
{
    const char* const wait =
        "the longest wait for the other side in milliseconds; without it there is no limit";
    tool.addCommand("net", "talks with other programs")
        .addOption("-4", "", "with addresses of IPv4 only")
        .addOption("-6", "", "with addresses of IPv6 only");
    tool.add("net resolve", "prints the addresses of a machine", runResolve)
        .addArgument("NAME", "its name in the network");
    tool.add("net probe", "tells whether something listens at a place", runProbe)
        .addArgument("HOST:PORT", "the place, IPv6 as [HOST]:PORT")
        .addOption("--wait", "MS", wait);
    tool.add("net listen", "prints what one peer sends", runListen)
        .addArgument("[HOST:]PORT",
                     "the place to wait for it; port 0 is one that the system chooses and that is told")
        .addOption("--udp", "", "one datagram")
        .addOption("--wait", "MS", wait);
    tool.add("net send", "sends standard input", runSend)
        .addArgument("HOST:PORT", "the place where it goes")
        .addOption("--udp", "", "as datagrams")
        .addOption("--wait", "MS", wait);
}
