// The address of one end of a connection.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxhostaddress.h"

/// The type of a socket address is that of its machine's.
typedef qxHostAddressType qxSocketAddressType;

/// A machine and a port.
///
/// Lifetime, threads and errors: as qxHostAddress.
class QX_API qxSocketAddress
{
public:
    /// None.
    constexpr qxSocketAddress() = default;
    qxSocketAddress(const qxHostAddress& host, unsigned short port) : m_host(host), m_port(port) {}

    /// As parse; none for what is no address.
    explicit qxSocketAddress(const qxString& text) { parse(text, *this); }
    explicit qxSocketAddress(const char* text) : qxSocketAddress(qxString(text)) {}

    /// Reads "127.0.0.1:80" and "[::1]:80": names are for qxHostInfo. False leaves `address` as it was.
    static bool parse(const qxString& text, qxSocketAddress& address);

    /// Takes "HOST:PORT", "[HOST]:PORT", ":PORT" or "PORT" apart, where HOST may be a name and is empty if there is none; in
    /// brackets it is one of IPv6, which needs them. False, and nothing changed, for other texts and for ports beyond 65,535.
    static bool split(const qxString& text, qxString& host, unsigned short& port);

    qxSocketAddressType getType() const { return m_host.getType(); }
    const qxHostAddress& getHost() const { return m_host; }
    unsigned short getPort() const { return m_port; }
    void setPort(unsigned short port) { m_port = port; }
    bool isNull() const { return m_host.isNull(); }
    bool isValid() const { return m_host.isValid(); }

    bool operator==(const qxSocketAddress&) const = default;
    unsigned int hash() const;

    /// The form that parse reads; empty for none.
    qxString asString() const;

    /// Those of the machine; the port is not in the number, except that the long one of IPv4 is address x 65536 + port.
    unsigned int asULong() const { return m_host.asULong(); }
    qxUInt64 asLongLong() const;

private:
    qxHostAddress m_host;
    unsigned short m_port = 0; // in this machine's byte order
};
