// Names of machines.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxhostaddress.h"

/// What is known of a machine: its name and its addresses.
///
/// Lifetime: a value.
/// Threads:  one object is used by one thread at a time, or read by many; getHostInfo may be called by any.
class QX_API qxHostInfo
{
public:
    /// Of no machine.
    qxHostInfo() = default;
    qxHostInfo(const qxString& name, const qxArray<qxHostAddress>& addresses);

    /// The machine of this name, which may be an address; asks the system, which may ask the network and wait for it. The
    /// name "localhost" and those that end in ".localhost" are this machine, and those that end in ".invalid" never exist:
    /// nobody is asked for them. Empty, and the warning "Host '%s' not found", when there is no such machine.
    static qxHostInfo getHostInfo(const qxString& name);

    /// This machine, with the addresses of its interfaces, those behind which the network is first. Where it has none but
    /// the loopback address, a notice says so; empty, with a warning, when its name cannot be read.
    static qxHostInfo getHostInfo();

    bool isEmpty() const { return m_addresses.entries() == 0; }
    const qxString& getName() const { return m_name; }
    const qxArray<qxHostAddress>& getAddresses() const { return m_addresses; }

    /// The first address, or the first of this type; none when there is none.
    qxHostAddress getAddress(qxHostAddressType type = QX_HOST_ADDRESS_NONE) const;

private:
    qxString m_name;
    qxArray<qxHostAddress> m_addresses;
};
