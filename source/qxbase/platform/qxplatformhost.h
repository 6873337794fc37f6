// Names and addresses of machines, as the operating system knows them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformsocket.h"

#include <string>
#include <vector>

/// One address of this machine.
struct qxPlatformInterface {
    qxPlatformAddress address;
    qxPlatformAddress mask; // of IPv4 only
};

/// The addresses of the interfaces that are up; empty with an error. Threads: any, as all functions here.
std::vector<qxPlatformInterface> qxPlatformInterfaces(int& error);

/// The number of the interface of this name; 0 when there is none.
unsigned int qxPlatformInterfaceNumber(const char* name);

/// The name of this machine in the network; empty when it cannot be read.
std::string qxPlatformHostName();

/// The addresses of the machine `name`, each once, as its own order gives them; may ask the network and wait for it. Empty
/// when there are none.
std::vector<qxPlatformAddress> qxPlatformResolve(const char* name);
