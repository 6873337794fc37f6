// SPDX-License-Identifier: see LICENSE

#include "qxnetdata.h"

QX_DEFINE_TYPE(qxNetData, qxThreadSafeReference)

qxNetData::qxNetData(const unsigned char* bytes, unsigned int length, const qxSocketAddress& sender)
    : m_bytes(bytes, length), m_sender(sender)
{}

qxReference* qxNetData::clone() const
{
    return new qxNetData(getBytes(), getLength(), m_sender);
}
