// SPDX-License-Identifier: see LICENSE

#include "net/qxplatformform.h"

#include "net/qxaddresstext.h"
#include "qxmessage.h"

#include <cstring>

qxPlatformAddress qxToPlatform(const qxSocketAddress& address)
{
    qxPlatformAddress result;
    const qxHostAddress& host = address.getHost();
    if (host.isNull()) return result;
    result.family = host.getType() == QX_HOST_ADDRESS_IPV4 ? QX_PLATFORM_IPV4 : QX_PLATFORM_IPV6;
    result.port = address.getPort();
    result.scope = host.getScope();
    std::memcpy(result.bytes, host.getBytes(), sizeof(result.bytes));
    return result;
}

qxSocketAddress qxFromPlatform(const qxPlatformAddress& address)
{
    if (address.family == QX_PLATFORM_IPV4)
        return qxSocketAddress(qxHostAddress(qxIPv4Number(address.bytes)), address.port);
    if (address.family == QX_PLATFORM_IPV6)
        return qxSocketAddress(qxHostAddress(address.bytes, address.scope), address.port);
    return {};
}

bool qxStartNetwork()
{
    int error = 0;
    if (qxPlatformSocketStart(error)) return true;
    qxMessage::message(QX_LEVEL_WARNING, "Network initialisation error");
    return false;
}
