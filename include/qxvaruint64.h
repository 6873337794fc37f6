// An unsigned integer that takes as many bytes as it needs.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializedata.h"

/// An unsigned 64-bit integer in groups of 7 bits, the lowest first; every byte but the last has bit 7 set.
///
/// 127 is 7F, 300 is AC 02. Numbers below 2^7, 2^14 and so on to 2^56 take 1, 2 and so on to 8 bytes, all others
/// 9. Numbers of 2^63 and more must not be sent: their ninth byte calls for a tenth, which is never written.
///
/// Errors: reading goes on until a byte without bit 7, whatever number of bytes that takes; the groups then wrap
///         around. Bytes behind the end of the data are what the adapter gives for them. Where it gives no end
///         of the number either, reading stops once the adapter has an error, or after ten bytes.
class QX_API qxVarUInt64 : public qxSerializeData
{
public:
    static constexpr unsigned int MAX_SIZE = 9; ///< bytes that are written at most

    qxVarUInt64(const qxUInt64& value = 0) : m_value(value) {}
    operator qxUInt64() const { return m_value; }

    void write(qxSerializeAdapter* adapter) override;
    void read(qxSerializeAdapter* adapter) override;

    /// The exact number of bytes, 1 to 9.
    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

private:
    qxUInt64 m_value;
};
