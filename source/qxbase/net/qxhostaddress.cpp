// SPDX-License-Identifier: see LICENSE

#include "qxhostaddress.h"

#include "net/qxaddresstext.h"
#include "platform/qxplatformhost.h"

#include <cstring>

namespace
{

constexpr std::size_t LONGEST_INTERFACE = 255; // bytes of its name

// Reads the number or name of an interface.
bool readScope(std::string_view text, unsigned int& scope)
{
    if (text.empty() || text.size() > LONGEST_INTERFACE || text.find('\0') != text.npos) return false;
    if (qxReadDecimal(text, 0xFFFFFFFF, scope)) return true;
    scope = qxPlatformInterfaceNumber(std::string(text).c_str());
    return scope != 0;
}

} // namespace

qxHostAddress::qxHostAddress(unsigned int address) : m_type(QX_HOST_ADDRESS_IPV4)
{
    for (unsigned int i = 0; i < 4; ++i) m_bytes[i] = static_cast<unsigned char>(address >> (24 - 8 * i));
}

qxHostAddress::qxHostAddress(const unsigned char (&bytes)[16], unsigned int scope)
    : m_type(QX_HOST_ADDRESS_IPV6), m_scope(scope)
{
    std::memcpy(m_bytes, bytes, sizeof(m_bytes));
}

bool qxHostAddress::parse(const qxString& text, qxHostAddress& address)
{
    const std::string_view whole(text.getString(), text.length());
    unsigned char bytes[16] = {};
    if (qxReadIPv4(whole, bytes)) {
        address = qxHostAddress(qxIPv4Number(bytes));
        return true;
    }
    const std::size_t percent = whole.find('%');
    unsigned int scope = 0;
    if (!qxReadIPv6(whole.substr(0, percent), bytes)) return false;
    if (percent != whole.npos && !readScope(whole.substr(percent + 1), scope)) return false;
    address = qxHostAddress(bytes, scope);
    return true;
}

qxHostAddress qxHostAddress::any(qxHostAddressType type)
{
    qxHostAddress result;
    result.m_type = type;
    return result;
}

qxHostAddress qxHostAddress::loopback(qxHostAddressType type)
{
    if (type == QX_HOST_ADDRESS_IPV4) return qxHostAddress(0x7F000001);
    qxHostAddress result = any(type);
    if (type == QX_HOST_ADDRESS_IPV6) result.m_bytes[15] = 1;
    return result;
}

bool qxHostAddress::isLoopback() const
{
    if (m_type == QX_HOST_ADDRESS_IPV4) return m_bytes[0] == 127;
    return m_type == QX_HOST_ADDRESS_IPV6 && *this == loopback(m_type);
}

bool qxHostAddress::isMulticast() const
{
    if (m_type == QX_HOST_ADDRESS_IPV4) return (m_bytes[0] & 0xF0) == 0xE0;
    return m_type == QX_HOST_ADDRESS_IPV6 && m_bytes[0] == 0xFF;
}

bool qxHostAddress::isLinkLocal() const
{
    if (m_type == QX_HOST_ADDRESS_IPV4) return m_bytes[0] == 169 && m_bytes[1] == 254;
    return m_type == QX_HOST_ADDRESS_IPV6 && m_bytes[0] == 0xFE && (m_bytes[1] & 0xC0) == 0x80;
}

unsigned int qxHostAddress::hash() const
{
    return qxString::hash(reinterpret_cast<const char*>(m_bytes), sizeof(m_bytes)) + m_scope * 31 + m_type;
}

qxString qxHostAddress::asString() const
{
    if (isNull()) return {};
    if (m_type == QX_HOST_ADDRESS_IPV4) return qxWriteIPv4(m_bytes).c_str();
    std::string text = qxWriteIPv6(m_bytes);
    if (m_scope != 0) text += "%" + std::to_string(m_scope);
    return text.c_str();
}

unsigned int qxHostAddress::asULong() const
{
    return static_cast<unsigned int>(asLongLong());
}

qxUInt64 qxHostAddress::asLongLong() const
{
    const unsigned int length = getLength();
    qxUInt64 number = 0;
    for (unsigned int i = length > 8 ? length - 8 : 0; i < length; ++i) number = number << 8 | m_bytes[i];
    return number;
}
