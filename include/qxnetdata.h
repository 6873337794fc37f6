// What a socket has received, as a message.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxreference.h"
#include "qxsocketaddress.h"

/// Received bytes and who sent them; see qxSocket::poll.
///
/// Lifetime: counted.
/// Threads:  does not change once it is handed on: any may read it.
class QX_API qxNetData : public qxThreadSafeReference
{
public:
    QX_DECLARE_TYPE;

    qxNetData(const unsigned char* bytes, unsigned int length, const qxSocketAddress& sender);

    qxReference* clone() const override;

    /// False: holders share it.
    bool useDeepCopy() override { return false; }

    const unsigned char* getBytes() const { return m_bytes.getData(); }
    unsigned int getLength() const { return m_bytes.entries(); }
    const qxArray<unsigned char>& getData() const { return m_bytes; }
    const qxSocketAddress& getSender() const { return m_sender; }

private:
    const qxArray<unsigned char> m_bytes;
    const qxSocketAddress m_sender;
};
