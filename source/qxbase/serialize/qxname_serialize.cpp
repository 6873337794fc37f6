// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

#include "qxserializestring.h"
#include "serialize/qxcuttext.h"
#include "serialize/qxterminatedtext.h"

namespace
{

constexpr unsigned int MAX_NAME = 256; // bytes on a stream, without the terminator

} // namespace

void qxNameInterface::write(qxSerializeAdapter* adapter) const
{
    qxSerializeString name;
    if (m_name) name = qxCutText(*m_name, MAX_NAME);
    name.write(adapter);
}

void qxNameInterface::read(qxSerializeAdapter* adapter)
{
    qxString name;
    qxReadTerminatedText(*adapter, 0, MAX_NAME + 1,
                         name); // one byte more shows whether the cut splits a character
    setName(qxCutText(name, MAX_NAME));
}
