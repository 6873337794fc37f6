// An optional name for objects.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxstring.h"

#include <memory>

/// Gives a class an optional name that can be written to and read from a byte stream.
///
/// Threads: one object is used by one thread at a time.
class QX_API qxNameInterface
{
public:
    qxNameInterface();

    /// An empty name is no name.
    explicit qxNameInterface(const qxString& name);
    qxNameInterface(const qxNameInterface& other);
    qxNameInterface& operator=(const qxNameInterface& other);
    virtual ~qxNameInterface() noexcept(false); // classes with this base may raise when they go

    void setName(const qxString& name);

    /// Empty when there is no name.
    qxString getName() const;
    bool hasName() const { return m_name != nullptr; }

    /// Bytes that write produces for names of up to 256 bytes: the length and a terminator.
    unsigned int getDataSize(qxSerializeAdapter* adapter) const;

    /// Writes at most 256 bytes of the name, whole characters, and a zero byte. Defined above the adapters.
    void write(qxSerializeAdapter* adapter) const;

    /// Reads up to a zero byte or the end of the data; keeps at most 256 bytes. Defined above the adapters.
    void read(qxSerializeAdapter* adapter);

private:
    std::unique_ptr<qxString> m_name;
};
