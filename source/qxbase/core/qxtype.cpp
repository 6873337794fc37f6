// SPDX-License-Identifier: see LICENSE

#include "qxtype.h"

#include "qxmemory.h"

#include <cstdint>
#include <cstring>

namespace
{

constexpr std::size_t MAX_NAME_LENGTH = 255; // what is measured; one byte more is copied

/// `name` as a record keeps it.
char* copyName(const char* name)
{
    std::size_t length = 0;
    while (length < MAX_NAME_LENGTH && name[length] != 0) ++length;
    // Of a longer name the byte that is copied last is no terminator: the one behind it is ours.
    char* const copy = static_cast<char*>(qx_malloc(length + 2));
    if (!copy) qxThrowBadAlloc(__FILE__, __LINE__);
    std::memcpy(copy, name, length + 1);
    copy[length + 1] = 0;
    return copy;
}

} // namespace

qxType::qxType(qxType* parent, const char* name)
    : m_parent(parent), m_name(name ? copyName(name) : nullptr), m_ownsName(name != nullptr)
{}

qxType::qxType(const qxType& other) : m_parent(other.m_parent), m_name(other.m_name), m_ownsName(0) {}

qxType& qxType::operator=(const qxType& other)
{
    if (this == &other) return *this;
    if (m_ownsName) qx_free(const_cast<char*>(m_name));
    m_parent = other.m_parent;
    m_name = other.m_name;
    m_ownsName = 0;
    return *this;
}

qxType::~qxType()
{
    if (m_ownsName) qx_free(const_cast<char*>(m_name));
}

bool qxType::isDerivedFrom(const qxType* type) const
{
    for (const qxType* ancestor = m_parent; ancestor; ancestor = ancestor->m_parent) {
        if (ancestor == type) return true;
    }
    return false;
}

unsigned int qxType::hash() const
{
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(this) & 0xFFFFFFFF);
}

const char* qxTypeInterface::getTypeName() const
{
    const qxType* const type = getType();
    return type ? type->getName() : nullptr;
}

bool qxTypeInterface::isExactType(const qxType* type) const
{
    return getType() == type;
}

bool qxTypeInterface::isOfType(const qxType* type) const
{
    const qxType* const own = getType();
    return own == type || (own && own->isDerivedFrom(type));
}
