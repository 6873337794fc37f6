// SPDX-License-Identifier: see LICENSE

#include "qxsocketaddress.h"

#include "net/qxaddresstext.h"

bool qxSocketAddress::parse(const qxString& text, qxSocketAddress& address)
{
    qxString name;
    unsigned short port = 0;
    qxHostAddress host;
    if (!split(text, name, port) || !qxHostAddress::parse(name, host)) return false;
    address = qxSocketAddress(host, port);
    return true;
}

bool qxSocketAddress::split(const qxString& text, qxString& host, unsigned short& port)
{
    const std::string_view whole(text.getString(), text.length());
    const std::size_t colon = whole.rfind(':');
    const bool hasHost = colon != whole.npos;
    std::string_view name = whole.substr(0, hasHost ? colon : 0);
    unsigned int number = 0;
    if (!qxReadDecimal(hasHost ? whole.substr(colon + 1) : whole, 0xFFFF, number)) return false;

    const bool isBracketed = name.starts_with('[') && name.ends_with(']');
    if (isBracketed) name = name.substr(1, name.size() - 2);
    if (name.find_first_of("[]") != name.npos || (name.find(':') != name.npos) != isBracketed) return false;
    host = qxString(name.data(), name.size());
    port = static_cast<unsigned short>(number);
    return true;
}

unsigned int qxSocketAddress::hash() const
{
    return m_host.hash() * 31 + m_port;
}

qxString qxSocketAddress::asString() const
{
    if (isNull()) return {};
    const char* const format = getType() == QX_HOST_ADDRESS_IPV6 ? "[%s]:%d" : "%s:%d";
    return qxString::str(format, m_host.asString(), m_port);
}

qxUInt64 qxSocketAddress::asLongLong() const
{
    const qxUInt64 number = m_host.asLongLong();
    return getType() == QX_HOST_ADDRESS_IPV4 ? number << 16 | m_port : number;
}
