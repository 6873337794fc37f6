// SPDX-License-Identifier: see LICENSE

#include "dynamic/qxdynamicparts.h"

#include "qxmemory.h"

#include <algorithm>
#include <new>

qxDynamicBlock* qxDynamicBlock::make(unsigned int size)
{
    return new (qx_new(sizeof(qxDynamicBlock) + std::size_t{size})) qxDynamicBlock;
}

void qxDynamicBlock::unref()
{
    if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1) qx_delete(this);
}

void qxDynamicReferences::unref()
{
    if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

unsigned char* qxDynamicParts::prepareCounted(qxDynamicType& value, const qxDynamicTag* tag, qxUInt64 size)
{
    using Content = qxDynamicType::Content;
    qxDynamicType made; // gives the tag back when there is no memory
    Content& content = made.m_content;
    content.tag = tag->kind == QX_DYNAMIC_VOID ? nullptr : tag;
    content.holds = tag->kind == QX_DYNAMIC_CUSTOM;
    if (size > qxDynamicType::MAX_LENGTH) qxThrowBadAlloc(__FILE__, __LINE__);
    if (size > Content::ROOM) {
        content.data.outside.block = qxDynamicBlock::make(static_cast<unsigned int>(size));
        content.data.outside.bytes = content.data.outside.block->bytes();
        content.holds = true;
    }
    content.size = static_cast<unsigned int>(size);
    value = std::move(made);
    return size > Content::ROOM ? value.m_content.data.outside.block->bytes() : value.m_content.data.inside;
}

qxDynamicType qxDynamicParts::cut(const qxDynamicType& source, const qxDynamicTag* tag, qxDynamicBytes piece)
{
    using Content = qxDynamicType::Content;
    qxDynamicType value;
    if (piece.size() <= Content::ROOM) {
        std::copy(piece.begin(), piece.end(), prepare(value, tag, piece.size()));
    } else {
        Content& content = value.m_content;
        content.tag = tag->kind == QX_DYNAMIC_VOID ? nullptr : tag;
        content.data.outside = {source.m_content.data.outside.block, piece.data()};
        content.data.outside.block->holders.fetch_add(1, std::memory_order_relaxed);
        content.size = static_cast<unsigned int>(piece.size());
        content.holds = true;
    }
    value.m_content.isForeign = source.m_content.isForeign;
    return value;
}

void qxDynamicParts::setReferences(qxDynamicType& value, qxDynRefList&& objects)
{
    if (objects.isEmpty()) return;
    auto* const references = new qxDynamicReferences;
    references->list = std::move(objects);
    value.m_content.references = references;
    value.m_content.holds = true;
}

qxGUID qxGetGUID(const unsigned char* bytes)
{
    qxGUIDRecord record;
    record.Data1 = qxGetBigEndian<unsigned int>(bytes);
    record.Data2 = qxGetBigEndian<unsigned short>(bytes + 4);
    record.Data3 = qxGetBigEndian<unsigned short>(bytes + 6);
    std::copy_n(bytes + 8, 8, record.Data4);
    return record;
}
