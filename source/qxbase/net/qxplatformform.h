// Addresses in the form of the platform floor, and the start of the network.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformsocket.h"
#include "qxsocketaddress.h"

/// Threads, errors: any, none; as all functions here.
qxPlatformAddress qxToPlatform(const qxSocketAddress& address);
qxSocketAddress qxFromPlatform(const qxPlatformAddress& address);

/// Makes the system's network ready; when that fails, sends the warning "Network initialisation error".
bool qxStartNetwork();
