// The tags of dynamic values.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "core/qxuniquelookup.h"

#include <string_view>

/// The library's own tags in the order of their table, and all others.
enum qxDynamicKind : unsigned char {
    QX_DYNAMIC_VOID,
    QX_DYNAMIC_NUM,
    QX_DYNAMIC_LLNUM,
    QX_DYNAMIC_STR,
    QX_DYNAMIC_VEC2,
    QX_DYNAMIC_VEC3,
    QX_DYNAMIC_VEC4,
    QX_DYNAMIC_GUID,
    QX_DYNAMIC_PTR,
    QX_DYNAMIC_REF,
    QX_DYNAMIC_ERROR,
    QX_DYNAMIC_ARRAY,
    QX_DYNAMIC_CHAIN,
    QX_DYNAMIC_CONT,
    QX_DYNAMIC_TTAG,
    QX_DYNAMIC_CUSTOM
};

/// A tag. Those of the library live as long as it does; the others are counted, and never have the text of one of
/// the library's.
struct qxDynamicTag {
    std::string_view text; // with a zero behind it
    qxDynamicKind kind = QX_DYNAMIC_CUSTOM;
    mutable std::atomic<unsigned int> holders = 0;
    mutable std::atomic<qxUInt64> knownID =
        ~0ULL; // how often the table of unique strings had changed, and the ID

    /// The library's tag.
    static inline const qxDynamicTag* get(qxDynamicKind kind);

    /// The library's tag with this text, or null.
    static const qxDynamicTag* find(std::string_view text);

    /// The library's tag that the bytes, of which there are 8 or more, begin with, and a zero behind it; or null.
    static const qxDynamicTag* findAt(const unsigned char* bytes);

    /// True when a value can have the tag: it is not empty and holds no zero.
    static bool isPossible(std::string_view text);

    /// The library's tag, or a new one with one holder.
    static const qxDynamicTag* make(std::string_view text);

    /// The text's ID in the table of unique strings; 0 without one.
    unsigned short getUniqueID() const
    {
        const qxUInt64 known = knownID.load(std::memory_order_relaxed);
        if (known >> 16 != qxUniqueChanges.load(std::memory_order_acquire)) return findUniqueID();
        return static_cast<unsigned short>(known);
    }

    void ref() const noexcept
    {
        if (kind == QX_DYNAMIC_CUSTOM) holders.fetch_add(1, std::memory_order_relaxed);
    }
    void unref() const
    {
        if (kind == QX_DYNAMIC_CUSTOM) drop();
    }

private:
    unsigned short findUniqueID() const;
    void drop() const;
};

/// The library's tags in the order of their kinds.
extern const qxDynamicTag qxDynamicTags[QX_DYNAMIC_CUSTOM];

inline const qxDynamicTag* qxDynamicTag::get(qxDynamicKind kind)
{
    return &qxDynamicTags[kind];
}
