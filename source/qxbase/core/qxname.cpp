// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

qxNameInterface::qxNameInterface(const qxNameInterface& other) : m_name(nullptr)
{
    *this = other;
}

qxNameInterface& qxNameInterface::operator=(const qxNameInterface& other)
{
    if (this == &other) return *this;
    // Permanent texts belong to everybody; every other copy has a text of its own, since it may be used by
    // another thread.
    const bool isOwn = other.m_name && !other.m_name->isPermanent();
    take(isOwn ? new qxSharedName(*other.m_name) : other.m_name);
    return *this;
}

void qxNameInterface::setName(const qxString& name)
{
    take(name.isEmpty() ? nullptr : new qxSharedName(name));
}

qxString qxNameInterface::getName() const
{
    const qxString* const name = m_name;
    return name ? *name : qxString();
}

unsigned int qxNameInterface::getDataSize(qxSerializeAdapter*) const
{
    return (m_name ? m_name->length() : 0U) + 1U;
}

void qxNameInterface::take(qxSharedName* name)
{
    if (name) name->hold();
    if (m_name) m_name->release();
    m_name = name;
}
