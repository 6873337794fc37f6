// SPDX-License-Identifier: see LICENSE

#include "qxhostinfo.h"

#include "net/qxplatformform.h"
#include "platform/qxplatformhost.h"
#include "qxmessage.h"
#include "serialize/qxcuttext.h"

namespace
{

constexpr unsigned int LONGEST_NAME = 255; // bytes, as the rules for names in the network have it
constexpr unsigned int MAX_SHOWN = 1024;   // bytes of a name in a message

typedef qxArray<qxHostAddress> Addresses;

bool endsIn(const qxString& name, const char* domain)
{
    const qxString bare =
        name.isLast('.') ? name.right(1, true) : name; // a final dot only says that it is whole
    return bare.isLast(qxString(".") + domain, false) ||
           (bare.length() == qxString(domain).length() && bare.isFirst(qxString(domain), false));
}

// Names that no network knows are not asked for.
Addresses resolve(const qxString& name)
{
    Addresses result;
    qxHostAddress address;
    if (qxHostAddress::parse(name, address)) {
        result.append(address);
    } else if (endsIn(name, "localhost")) {
        result.append(qxHostAddress::loopback(QX_HOST_ADDRESS_IPV4));
        result.append(qxHostAddress::loopback(QX_HOST_ADDRESS_IPV6));
    } else if (!name.isEmpty() && name.length() <= LONGEST_NAME && !qxHasZeroByte(name) &&
               !endsIn(name, "invalid") && qxStartNetwork()) {
        for (const qxPlatformAddress& found : qxPlatformResolve(name.getString()))
            result.append(qxFromPlatform(found).getHost());
    }
    return result;
}

// How near the network an address is: the machine itself is the farthest.
unsigned int rank(const qxHostAddress& address)
{
    return address.isLoopback() ? 2 : address.isLinkLocal() ? 1 : 0;
}

} // namespace

qxHostInfo::qxHostInfo(const qxString& name, const qxArray<qxHostAddress>& addresses)
    : m_name(name), m_addresses(addresses)
{}

qxHostInfo qxHostInfo::getHostInfo(const qxString& name)
{
    const Addresses addresses = resolve(name);
    if (addresses.entries() > 0) return {name, addresses};
    qxMessage::message(QX_LEVEL_WARNING, "Host '%s' not found", qxCutText(name, MAX_SHOWN));
    return {};
}

qxHostInfo qxHostInfo::getHostInfo()
{
    if (!qxStartNetwork()) return {};
    const qxString name = qxPlatformHostName().c_str();
    if (name.isEmpty()) {
        qxMessage::message(QX_LEVEL_WARNING, "Host name not found");
        return {};
    }
    int error = 0;
    const std::vector<qxPlatformInterface> interfaces = qxPlatformInterfaces(error);
    Addresses addresses;
    for (const unsigned int wanted : {0U, 1U}) {
        for (const qxPlatformInterface& found : interfaces) {
            const qxHostAddress address = qxFromPlatform(found.address).getHost();
            if (rank(address) == wanted) addresses.append(address);
        }
    }
    if (addresses.entries() == 0) {
        qxMessage::message(QX_LEVEL_NOTICE, "Local Host interface only resolved to 127.0.0.1");
        addresses.append(qxHostAddress::loopback());
    }
    return {name, addresses};
}

qxHostAddress qxHostInfo::getAddress(qxHostAddressType type) const
{
    for (const qxHostAddress& address : m_addresses)
        if (type == QX_HOST_ADDRESS_NONE || address.getType() == type) return address;
    return {};
}
