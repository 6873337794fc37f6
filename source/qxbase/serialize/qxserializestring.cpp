// SPDX-License-Identifier: see LICENSE

#include "qxserializestring.h"

#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "serialize/qxterminatedtext.h"

void qxSerializeString::write(qxSerializeAdapter* adapter)
{
    const unsigned int length = m_text.length();
    if (length > 0) adapter->write(m_text.getString(), length);
    if (m_usesTerminator) adapter->write(m_terminator);
}

void qxSerializeString::read(qxSerializeAdapter* adapter)
{
    const int terminator = m_usesTerminator ? m_terminator : QX_NO_TERMINATOR;
    if (qxReadTerminatedText(*adapter, terminator, qxString::MAX_LENGTH, m_text)) return;
    adapter->setError(qxMessage::translate(qxMessage::getDefaultSender(), "Too many characters in qxString"));
}

unsigned int qxSerializeString::getDataSize(qxSerializeAdapter*)
{
    return m_text.length() + 1U;
}
