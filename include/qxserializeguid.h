// Identifiers on a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxguid.h"
#include "qxserializedata.h"

/// A GUID in 16 bytes: its first field (4 bytes), the second and the third (2 each), all with the most
/// significant byte first, then its last eight bytes as they are.
///
/// The text form shows the digits in the same order.
///
/// Errors: when the stream ends within it, the value stays; the error is the adapter's.
class QX_API qxSerializeGUID : public qxSerializeData
{
public:
    static constexpr unsigned int SIZE = 16; ///< bytes on the stream

    qxSerializeGUID() = default;
    qxSerializeGUID(const qxGUID& guid) : m_guid(guid) {}
    operator qxGUID&() { return m_guid; }
    operator const qxGUID&() const { return m_guid; }

    void write(qxSerializeAdapter* adapter) override;
    void read(qxSerializeAdapter* adapter) override;
    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

private:
    qxGUID m_guid;
};
