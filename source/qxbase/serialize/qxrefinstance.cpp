// SPDX-License-Identifier: see LICENSE

#include "qxrefinstance.h"

qxRefInstanceArray& qxRefInstanceArray::operator=(const qxRefInstanceArray& other)
{
    if (this == &other) return *this;
    clear();
    m_objects.reserve(other.m_objects.size());
    for (qxReference* const object : other.m_objects) add(object);
    return *this;
}

qxRefInstanceArray::~qxRefInstanceArray() noexcept(false)
{
    clear();
}

unsigned int qxRefInstanceArray::add(qxReference* object)
{
    m_objects.push_back(object);
    object->ref();
    return getCount() - 1;
}

void qxRefInstanceArray::clear()
{
    while (!m_objects.empty()) {
        qxReference* const object = m_objects.back();
        m_objects.pop_back(); // before the object goes: what it does then finds the array in order
        object->unref();
    }
}

qxRefInstanceDictionary& qxRefInstanceDictionary::operator=(const qxRefInstanceDictionary& other)
{
    if (this == &other) return *this;
    clear();
    m_ids.reserve(other.m_ids.size());
    for (const auto& [object, id] : other.m_ids) enter(object, id);
    return *this;
}

qxRefInstanceDictionary::~qxRefInstanceDictionary() noexcept(false)
{
    clear();
}

bool qxRefInstanceDictionary::enter(qxReference* object, unsigned int id)
{
    if (!m_ids.emplace(object, id).second) return false;
    object->ref();
    return true;
}

bool qxRefInstanceDictionary::find(qxReference* object, unsigned int& id) const
{
    const auto found = m_ids.find(object);
    if (found == m_ids.end()) return false;
    id = found->second;
    return true;
}

void qxRefInstanceDictionary::clear()
{
    while (!m_ids.empty()) {
        qxReference* const object = m_ids.begin()->first;
        m_ids.erase(m_ids.begin());
        object->unref();
    }
}
