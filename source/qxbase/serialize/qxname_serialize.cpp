// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

#include "qxserializeadapter.h"
#include "serialize/qxcuttext.h"

namespace
{

constexpr unsigned int MAX_NAME = 256; // bytes on a stream, without the terminator

} // namespace

void qxNameInterface::write(qxSerializeAdapter* adapter) const
{
    if (m_name) {
        const qxString name = qxCutText(*m_name, MAX_NAME);
        adapter->write(name.getString(), name.length());
    }
    adapter->write(static_cast<unsigned char>(0));
}

void qxNameInterface::read(qxSerializeAdapter* adapter)
{
    char name[MAX_NAME + 1]; // one byte more shows whether the cut splits a character
    unsigned int length = 0;
    while (adapter->hasData()) {
        const unsigned char byte = adapter->read();
        if (byte == 0) break;
        if (length < sizeof(name)) name[length++] = static_cast<char>(byte);
    }
    setName(qxCutText(qxString(name, length), MAX_NAME));
}
