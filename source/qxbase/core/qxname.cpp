// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

qxNameInterface::qxNameInterface() = default;

qxNameInterface::qxNameInterface(const qxString& name)
{
    setName(name);
}

qxNameInterface::qxNameInterface(const qxNameInterface& other)
    : m_name(other.m_name ? std::make_unique<qxString>(*other.m_name) : nullptr)
{}

qxNameInterface& qxNameInterface::operator=(const qxNameInterface& other)
{
    if (this != &other) m_name = other.m_name ? std::make_unique<qxString>(*other.m_name) : nullptr;
    return *this;
}

qxNameInterface::~qxNameInterface() noexcept(false) = default;

void qxNameInterface::setName(const qxString& name)
{
    m_name = name.isEmpty() ? nullptr : std::make_unique<qxString>(name);
}

qxString qxNameInterface::getName() const
{
    return m_name ? *m_name : qxString();
}

unsigned int qxNameInterface::getDataSize(qxSerializeAdapter*) const
{
    return (m_name ? m_name->length() : 0U) + 1U;
}
