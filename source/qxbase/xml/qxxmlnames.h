// Names that the items of one tree share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxname.h"

#include <cstring>

/// The names that a tree met of late. A document has few different names and many items: nearly all of them find
/// theirs here.
///
/// A name that another one with the same place displaced is made anew when it comes again, so that names chosen
/// to collide cost memory, never time.
///
/// Threads: as the tree.
class qxXmlNames
{
public:
    qxXmlNames() = default;
    ~qxXmlNames();
    qxXmlNames(const qxXmlNames&) = delete;
    qxXmlNames& operator=(const qxXmlNames&) = delete;

    /// The shared name with this text; valid until the next call, unless somebody holds it. Null for an empty
    /// text.
    qxSharedName* get(const qxString& text)
    {
        const unsigned int hash = text.hash();
        qxSharedName*& place = m_names[(hash ^ hash >> 8 ^ hash >> 16) % COUNT];
        // Bytes, not strings, are compared: that would turn one of them unique when the other one is.
        if (place && place->hash() == hash && place->length() == text.length() &&
            std::memcmp(place->getString(), text.getString(), text.length()) == 0)
            return place;
        return replace(place, text);
    }

    /// What an item of this tree has for `other`, a name of another tree; permanent names belong to all.
    qxSharedName* getCopy(qxSharedName* other)
    {
        return !other || other->isPermanent() ? other : get(*other);
    }

private:
    static constexpr unsigned int COUNT = 512;

    static qxSharedName* replace(qxSharedName*& place, const qxString& text);

    qxSharedName* m_names[COUNT] = {};
};

/// Keeps a name for the length of a scope.
class qxXmlNameHolder
{
public:
    explicit qxXmlNameHolder(qxSharedName* name) : m_name(name)
    {
        if (m_name) m_name->hold();
    }
    ~qxXmlNameHolder()
    {
        if (m_name) m_name->release();
    }
    qxXmlNameHolder(const qxXmlNameHolder&) = delete;
    qxXmlNameHolder& operator=(const qxXmlNameHolder&) = delete;

    qxSharedName* get() const { return m_name; }

private:
    qxSharedName* m_name;
};
