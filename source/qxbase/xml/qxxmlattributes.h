// The attributes of one element, in one piece of memory.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxname.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

class qxXmlNames;

/// Records of names and values grow from the start of the memory behind this head, the bytes of the values from
/// its end. Most elements have all of that in one allocation that fits.
///
/// The functions take the pointer that an element keeps, which is null as long as there was no attribute. Names
/// are told apart by their texts.
///
/// Threads: as the element.
struct qxXmlAttributeBlock {
    struct Record {
        qxSharedName* name;  // held; null is an empty name
        std::uint64_t value; // where it starts, in bytes before the end of the memory, x 65536 + its length
    };

    std::size_t size;      // of the whole memory, bytes
    std::size_t valueSize; // bytes at the end that values have, or had
    unsigned int count;
    unsigned int cursor : 31;    // the record that is given next
    unsigned int isBorrowed : 1; // the memory belongs to a qxXmlAttributeScratch

    Record* getRecords() { return reinterpret_cast<Record*>(this + 1); }
    const Record* getRecords() const { return reinterpret_cast<const Record*>(this + 1); }

    std::string_view getName(unsigned int index) const
    {
        const qxSharedName* const name = getRecords()[index].name;
        return name ? std::string_view(name->getString(), name->length()) : std::string_view();
    }

    std::string_view getValue(unsigned int index) const
    {
        const std::uint64_t value = getRecords()[index].value;
        return {reinterpret_cast<const char*>(this) + size - (value >> 16), value & 0xFFFF};
    }
};

constexpr unsigned int QX_XML_NO_ATTRIBUTE = 0xFFFFFFFF;

/// The index of the attribute, QX_XML_NO_ATTRIBUTE when there is none.
unsigned int qxXmlFindAttribute(const qxXmlAttributeBlock* block, std::string_view name);

/// A block without attributes but with room for `count`, whose values together have `valueSize` bytes.
qxXmlAttributeBlock* qxXmlNewAttributes(std::size_t count, std::size_t valueSize);

/// Appends an attribute that is not there yet. `value` has at most 65,535 bytes and may lie in the block itself.
void qxXmlAppendAttribute(qxXmlAttributeBlock*& block, qxSharedName* name, std::string_view value);
void qxXmlReplaceAttribute(qxXmlAttributeBlock*& block, unsigned int index, std::string_view value);
void qxXmlRemoveAttribute(qxXmlAttributeBlock& block, unsigned int index);

/// Removes all and gives the memory back.
void qxXmlFreeAttributes(qxXmlAttributeBlock*& block);

/// A copy that fits, with the cursor at the start; its names come from `names`.
qxXmlAttributeBlock* qxXmlCopyAttributes(const qxXmlAttributeBlock* block, qxXmlNames& names);

struct qxXmlAttributeScratchUser {
    qxXmlAttributeBlock** user =
        nullptr; // the pointer of the element that uses the room, null when none does
};

/// Room in which the attributes of an element gather while they are read, so that their final memory can be
/// taken in one piece. The element uses the room as its own block meanwhile: whoever looks at it sees all that
/// was read, and it may even go before it is finished.
class qxXmlAttributeScratch : private qxXmlAttributeScratchUser, private qxXmlAttributeBlock
{
public:
    qxXmlAttributeScratch();
    ~qxXmlAttributeScratch();
    qxXmlAttributeScratch(const qxXmlAttributeScratch&) = delete;
    qxXmlAttributeScratch& operator=(const qxXmlAttributeScratch&) = delete;

    /// Lends the free room to an element that has no attributes.
    void lend(qxXmlAttributeBlock*& block);

    /// Frees the room: what the element has there moves into memory of its own.
    void finish()
    {
        if (user) moveOut();
    }

    /// For an element that stops using the room in another way.
    static void release(qxXmlAttributeBlock& block)
    {
        static_cast<qxXmlAttributeScratch&>(block).user = nullptr;
    }

private:
    void moveOut();

    std::byte m_room[4096]; // behind the block's head, where its records are looked for
};
