// Bytes that go from this program to itself.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxsocketaddress.h"

#include <string>
#include <string_view>

struct qxLoopbackResult {
    qxSocketAddress place;
    std::size_t received = 0; // bytes
    unsigned int sentChecksum = 0;
    unsigned int receivedChecksum = 0xFFFFFFFF;
};

/// Sends `bytes` through a connection on the loopback address and receives them at its other end.
qxLoopbackResult exchangeOnLoopback(std::string_view bytes);
