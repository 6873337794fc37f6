// What dynamic values are made of, for the sources of this floor.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamictag.h"
#include "qxdynamictype.h"

#include <bit>
#include <span>

using qxDynamicBytes = std::span<const unsigned char>;

/// The memory of a block of more than a few bytes: its head, which counts the holders, and the bytes. They are
/// written once and never change when there is more than one holder.
struct qxDynamicBlock {
    std::atomic<std::size_t> holders = 1;

    static qxDynamicBlock* make(unsigned int size);
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(this + 1); }
    void unref();
};

/// The references of a value and of its copies.
struct qxDynamicReferences {
    std::atomic<unsigned int> holders = 1;
    qxDynRefList list;

    void unref();
};

/// Makes values and takes them apart.
class qxDynamicParts
{
public:
    static const qxDynamicTag& tag(const qxDynamicType& value)
    {
        const qxDynamicTag* const own = value.m_content.tag;
        return own ? *own : *qxDynamicTag::get(QX_DYNAMIC_VOID);
    }
    static qxDynamicKind kind(const qxDynamicType& value)
    {
        return value.m_content.tag ? value.m_content.tag->kind : QX_DYNAMIC_VOID;
    }
    static qxDynamicBytes bytes(const qxDynamicType& value)
    {
        return {value.getDataBytes(), value.getDataLength()};
    }

    /// Makes `value` one with this tag, of which it takes one holder over, and a block of `size` bytes without
    /// references. Returns the block, which must be filled at once.
    static unsigned char* prepare(qxDynamicType& value, const qxDynamicTag* tag, qxUInt64 size)
    {
        if (size > qxDynamicType::Content::ROOM || tag->kind == QX_DYNAMIC_CUSTOM)
            return prepareCounted(value, tag, size);
        qxDynamicType::Content content;
        content.tag = tag->kind == QX_DYNAMIC_VOID ? nullptr : tag;
        content.size = static_cast<unsigned int>(size);
        value.replace(content);
        return value.m_content.data.inside;
    }
    static unsigned char* prepare(qxDynamicType& value, qxDynamicKind kind, qxUInt64 size)
    {
        return prepare(value, qxDynamicTag::get(kind), size);
    }

    /// A value with the tag, of which it takes one holder over, and a piece of the block of `source`.
    static qxDynamicType cut(const qxDynamicType& source, const qxDynamicTag* tag, qxDynamicBytes piece);

    /// The value that was prepared keeps `objects` alive.
    static void setReferences(qxDynamicType& value, qxDynRefList&& objects);

    static bool isForeign(const qxDynamicType& value) { return value.m_content.isForeign; }
    static void setForeign(qxDynamicType& value, bool isForeign) { value.m_content.isForeign = isForeign; }

private:
    static unsigned char* prepareCounted(qxDynamicType& value, const qxDynamicTag* tag, qxUInt64 size);
};

/// Numbers in blocks stand with the most significant byte first.
template <class Integer>
void qxPutBigEndian(unsigned char* place, Integer value)
{
    for (std::size_t i = 0; i < sizeof(Integer); ++i)
        place[i] = static_cast<unsigned char>(value >> 8 * (sizeof(Integer) - 1 - i));
}

template <class Integer>
Integer qxGetBigEndian(const unsigned char* bytes)
{
    Integer value = 0;
    for (std::size_t i = 0; i < sizeof(Integer); ++i) value = static_cast<Integer>(value << 8 | bytes[i]);
    return value;
}

inline double qxGetDouble(const unsigned char* bytes)
{
    return std::bit_cast<double>(qxGetBigEndian<qxUInt64>(bytes));
}

inline float qxGetFloat(const unsigned char* bytes)
{
    return std::bit_cast<float>(qxGetBigEndian<unsigned int>(bytes));
}

/// The GUID of the 16 bytes.
qxGUID qxGetGUID(const unsigned char* bytes);
