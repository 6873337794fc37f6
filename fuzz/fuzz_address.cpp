// SPDX-License-Identifier: see LICENSE

// Addresses and places as texts: what can be read is written so that it reads back the same.

#include "qxsocketaddress.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

void checkHost(const qxString& text)
{
    qxHostAddress address;
    if (!qxHostAddress::parse(text, address)) return require(address.isNull());
    qxHostAddress again;
    require(qxHostAddress::parse(address.asString(), again));
    require(again == address && again.hash() == address.hash());
}

void checkPlace(const qxString& text)
{
    qxString host;
    unsigned short port = 0;
    const bool isSplit = qxSocketAddress::split(text, host, port);
    qxSocketAddress address;
    const bool isRead = qxSocketAddress::parse(text, address);
    require(isSplit || !isRead);
    if (!isRead) return require(address.isNull());
    qxSocketAddress again;
    require(qxSocketAddress::parse(address.asString(), again));
    require(again == address && address.getPort() == port);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > qxString::MAX_LENGTH) return 0;
    const qxString text(reinterpret_cast<const char*>(data), size);
    checkHost(text);
    checkPlace(text);
    return 0;
}
