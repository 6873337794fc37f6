// The tables with which graphs of shared objects are written and read.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"

#include <unordered_map>
#include <vector>

/// For reading: the objects met so far, by the ID under which the stream names them, from 0 on.
///
/// Lifetime: holds its objects.
/// Threads:  one at a time, as the adapter that has it.
class QX_API qxRefInstanceArray : public qxSharedMemory
{
public:
    qxRefInstanceArray() = default;
    qxRefInstanceArray(const qxRefInstanceArray&) = delete;
    qxRefInstanceArray& operator=(const qxRefInstanceArray& other);
    ~qxRefInstanceArray() noexcept(false);

    /// Enters `object`, which is not null, under the next ID and returns the ID.
    unsigned int add(qxReference* object);

    /// Null for an ID that was not entered.
    qxReference* get(unsigned int id) const { return id < m_objects.size() ? m_objects[id] : nullptr; }

    unsigned int getCount() const { return static_cast<unsigned int>(m_objects.size()); }
    void clear();

private:
    std::vector<qxReference*> m_objects; // counted by hand: their destructors may raise, a vector's may not
};

/// For writing: the IDs of the objects that are on the stream already.
///
/// Lifetime: holds its objects, so that no other can take the place of one.
/// Threads:  one at a time, as the adapter that has it.
class QX_API qxRefInstanceDictionary : public qxSharedMemory
{
public:
    qxRefInstanceDictionary() = default;
    qxRefInstanceDictionary(const qxRefInstanceDictionary&) = delete;
    qxRefInstanceDictionary& operator=(const qxRefInstanceDictionary& other);
    ~qxRefInstanceDictionary() noexcept(false);

    /// False when `object`, which is not null, has an ID already; it keeps that.
    bool enter(qxReference* object, unsigned int id);

    /// True when `object` was entered; `id` then receives its ID.
    bool find(qxReference* object, unsigned int& id) const;

    unsigned int getCount() const { return static_cast<unsigned int>(m_ids.size()); }
    void clear();

private:
    std::unordered_map<qxReference*, unsigned int> m_ids;
};
