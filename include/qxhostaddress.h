// The address of a machine in the network.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxstring.h"

enum qxHostAddressType : unsigned char {
    QX_HOST_ADDRESS_NONE = 0,
    QX_HOST_ADDRESS_IPV4 = 1,
    QX_HOST_ADDRESS_IPV6 = 2
};

/// An address of IPv4 or IPv6, or none.
///
/// Lifetime: a value.
/// Threads:  one object is used by one thread at a time, or read by many.
/// Errors:   a text that is no address gives none.
class QX_API qxHostAddress
{
public:
    /// None.
    constexpr qxHostAddress() = default;

    /// IPv4 from a number: 0x7F000001 is 127.0.0.1.
    explicit qxHostAddress(unsigned int address);

    /// IPv6 from its 16 bytes, in the order of the network; `scope` is the number of the interface that the address is
    /// meant on, 0 for any.
    explicit qxHostAddress(const unsigned char (&bytes)[16], unsigned int scope = 0);

    /// As parse; none for what is no address.
    explicit qxHostAddress(const qxString& text) { parse(text, *this); }
    explicit qxHostAddress(const char* text) : qxHostAddress(qxString(text)) {}

    /// Reads four decimal numbers without needless zeros, or the hexadecimal groups of IPv6: with "::" once, the last two
    /// groups as IPv4 if one likes, and behind "%" the number or the name of an interface. Not in brackets. False leaves
    /// `address` as it was.
    static bool parse(const qxString& text, qxHostAddress& address);

    /// All interfaces of this machine: 0.0.0.0 or "::".
    static qxHostAddress any(qxHostAddressType type = QX_HOST_ADDRESS_IPV4);

    /// This machine itself: 127.0.0.1 or "::1".
    static qxHostAddress loopback(qxHostAddressType type = QX_HOST_ADDRESS_IPV4);

    qxHostAddressType getType() const { return m_type; }
    bool isNull() const { return m_type == QX_HOST_ADDRESS_NONE; }
    bool isValid() const { return !isNull(); }
    bool isAny() const { return *this == any(m_type); }
    bool isLoopback() const; ///< 127.0.0.0 to 127.255.255.255, and "::1"
    bool isMulticast() const;
    bool isLinkLocal() const;

    bool operator==(const qxHostAddress&) const = default;
    unsigned int hash() const;

    /// The bytes in the order of the network: 4, 16 or none.
    const unsigned char* getBytes() const { return m_bytes; }
    unsigned int getLength() const { return isNull() ? 0 : m_type == QX_HOST_ADDRESS_IPV4 ? 4 : 16; }
    unsigned int getScope() const { return m_scope; }

    /// The shortest form, IPv6 in lower case with "::" for the longest run of zeros; empty for none.
    qxString asString() const;

    /// IPv4 as a number; of IPv6 the last 32 bits.
    unsigned int asULong() const;

    /// IPv4 as a number; of IPv6 the last 64 bits, which tell the machines of one network apart.
    qxUInt64 asLongLong() const;

private:
    qxHostAddressType m_type = QX_HOST_ADDRESS_NONE;
    unsigned char m_bytes[16] = {}; // zeros behind an IPv4 address
    unsigned int m_scope = 0;
};
