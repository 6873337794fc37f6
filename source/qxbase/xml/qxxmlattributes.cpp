// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlattributes.h"

#include "qxmemory.h"

#include "xml/qxxmlnames.h"

#include <cstring>

namespace
{

using Block = qxXmlAttributeBlock;

static_assert(sizeof(Block) % alignof(Block::Record) == 0, "records follow the head");

std::size_t getRoom(const Block& block)
{
    return block.size - sizeof(Block) - block.count * sizeof(Block::Record) - block.valueSize;
}

/// Bytes of the values that are still those of a record.
std::size_t getLiveSize(const Block& block)
{
    std::size_t size = 0;
    for (unsigned int i = 0; i < block.count; ++i) size += block.getRecords()[i].value & 0xFFFF;
    return size;
}

Block* newBlock(std::size_t size)
{
    size = (size + 15) & ~static_cast<std::size_t>(15); // the heap would round it up anyway
    Block* const block = static_cast<Block*>(qx_new(size));
    *block = Block{size, 0, 0, 0, 0};
    return block;
}

void placeValue(Block& block, Block::Record& record, std::string_view value)
{
    block.valueSize += value.size();
    record.value = static_cast<std::uint64_t>(block.valueSize) << 16 | value.size();
    char* const end = reinterpret_cast<char*>(&block) + block.size;
    if (!value.empty()) std::memcpy(end - block.valueSize, value.data(), value.size());
}

/// A block with `extra` bytes to spare that takes over the records of `from`; that one is only memory then.
Block* moveRecords(const Block& from, std::size_t extra)
{
    const std::size_t live = getLiveSize(from);
    Block* const block = newBlock(sizeof(Block) + from.count * sizeof(Block::Record) + live + extra);
    block->count = from.count;
    block->cursor = from.cursor;
    std::memcpy(block->getRecords(), from.getRecords(), from.count * sizeof(Block::Record));
    if (live == from.valueSize) { // no gaps: the places, which count from the end, stay right
        std::memcpy(reinterpret_cast<char*>(block) + block->size - live,
                    reinterpret_cast<const char*>(&from) + from.size - live, live);
        block->valueSize = live;
        return block;
    }
    for (unsigned int i = 0; i < from.count; ++i)
        placeValue(*block, block->getRecords()[i], from.getValue(i));
    return block;
}

void freeMemory(Block* block)
{
    if (!block) return;
    if (block->isBorrowed)
        qxXmlAttributeScratch::release(*block);
    else
        qx_delete(block);
}

/// Makes room for `extra` bytes. Returns the memory to free when it is no longer read, or null.
Block* makeRoom(Block*& block, std::size_t extra)
{
    if (block && getRoom(*block) >= extra) return nullptr;
    Block* const old = block;
    if (old)
        block = moveRecords(*old, extra + (old->size + extra) / 2);
    else
        block = newBlock(sizeof(Block) + extra);
    return old;
}

} // namespace

unsigned int qxXmlFindAttribute(const qxXmlAttributeBlock* block, std::string_view name)
{
    if (!block) return QX_XML_NO_ATTRIBUTE;
    for (unsigned int i = 0; i < block->count; ++i) {
        if (block->getName(i) == name) return i;
    }
    return QX_XML_NO_ATTRIBUTE;
}

qxXmlAttributeBlock* qxXmlNewAttributes(std::size_t count, std::size_t valueSize)
{
    return newBlock(sizeof(Block) + count * sizeof(Block::Record) + valueSize);
}

void qxXmlAppendAttribute(qxXmlAttributeBlock*& block, qxSharedName* name, std::string_view value)
{
    Block* const old = makeRoom(block, sizeof(Block::Record) + value.size());
    Block::Record& record = block->getRecords()[block->count];
    record.name = name;
    if (name) name->hold();
    ++block->count;
    placeValue(*block, record, value);
    freeMemory(old);
}

void qxXmlReplaceAttribute(qxXmlAttributeBlock*& block, unsigned int index, std::string_view value)
{
    const std::string_view present = block->getValue(index);
    if (value.size() > present.size()) {
        Block* const old = makeRoom(block, value.size());
        placeValue(*block, block->getRecords()[index], value);
        freeMemory(old);
        return;
    }
    Block::Record& record = block->getRecords()[index];
    char* const start = reinterpret_cast<char*>(block) + block->size - (record.value >> 16);
    if (!value.empty()) std::memmove(start, value.data(), value.size());
    record.value = (record.value & ~static_cast<std::uint64_t>(0xFFFF)) | value.size();
}

void qxXmlRemoveAttribute(qxXmlAttributeBlock& block, unsigned int index)
{
    Block::Record* const records = block.getRecords();
    if (records[index].name) records[index].name->release();
    std::memmove(records + index, records + index + 1, (block.count - index - 1) * sizeof(Block::Record));
    --block.count;
    if (block.cursor > index) block.cursor = (block.cursor - 1) & 0x7FFFFFFF;
    if (block.count == 0) block.valueSize = 0;
}

void qxXmlFreeAttributes(qxXmlAttributeBlock*& block)
{
    if (!block) return;
    for (unsigned int i = 0; i < block->count; ++i) {
        if (qxSharedName* const name = block->getRecords()[i].name) name->release();
    }
    freeMemory(block);
    block = nullptr;
}

qxXmlAttributeBlock* qxXmlCopyAttributes(const qxXmlAttributeBlock* block, qxXmlNames& names)
{
    if (!block || block->count == 0) return nullptr;
    Block* const copy = moveRecords(*block, 0);
    for (unsigned int i = 0; i < copy->count; ++i) copy->getRecords()[i].name = nullptr;
    copy->cursor = 0;
    try {
        for (unsigned int i = 0; i < copy->count; ++i) {
            qxSharedName* const name = names.getCopy(block->getRecords()[i].name);
            if (name) name->hold();
            copy->getRecords()[i].name = name;
        }
    } catch (...) { // out of memory for a name
        Block* unfinished = copy;
        qxXmlFreeAttributes(unfinished);
        throw;
    }
    return copy;
}

qxXmlAttributeScratch::qxXmlAttributeScratch() : qxXmlAttributeBlock()
{
    // The records are looked for where the head ends.
    static_assert(sizeof(qxXmlAttributeScratch) ==
                      sizeof(qxXmlAttributeScratchUser) + sizeof(qxXmlAttributeBlock) + sizeof m_room,
                  "there is no gap before the room");
    size = sizeof(qxXmlAttributeBlock) + sizeof m_room;
    isBorrowed = 1;
}

qxXmlAttributeScratch::~qxXmlAttributeScratch()
{
    try {
        finish();
    } catch (const std::bad_alloc&) {
        qxXmlFreeAttributes(*user);
    }
}

void qxXmlAttributeScratch::lend(qxXmlAttributeBlock*& block)
{
    valueSize = 0;
    count = 0;
    cursor = 0;
    user = &block;
    block = this;
}

void qxXmlAttributeScratch::moveOut()
{
    *user = count == 0 ? nullptr : moveRecords(*this, 0);
    user = nullptr;
}
