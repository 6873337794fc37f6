// The values within values: how they lie in the blocks of arrays, chains, containers and values with a time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamicparts.h"

/// The first byte of a tag that travels as an ID of a unique string, or that begins with this byte itself.
constexpr unsigned char QX_DYNAMIC_ESCAPE = 252;

/// Bytes that the value takes in its binary form, with the tag as a text.
qxUInt64 qxDynamicFormSize(const qxDynamicTag& tag, qxUInt64 length);

/// Writes the binary form up to the block, tag as text, and returns the place behind it.
unsigned char* qxPutDynamicHead(unsigned char* place, const qxDynamicTag& tag, qxUInt64 length);

inline unsigned int qxVarSize(qxUInt64 value)
{
    unsigned int size = 1;
    for (; value > 0x7F; value >>= 7) ++size;
    return size;
}

unsigned char* qxPutVar(unsigned char* place, qxUInt64 value);

/// One value within a block.
struct qxDynamicElement {
    std::string_view name; // in containers
    qxUInt64 references = 0;
    std::string_view tag;
    qxDynamicBytes data;
};

/// Goes through a block from its start. What does not fit makes a step return false.
class qxDynamicCursor
{
public:
    explicit qxDynamicCursor(qxDynamicBytes bytes) : m_next(bytes.data()), m_end(m_next + bytes.size()) {}

    bool takeVar(qxUInt64& value);
    bool takeName(std::string_view& name);

    /// A value from its tag to its block.
    bool takeForm(qxDynamicElement& element);

    /// As they stand in arrays and chains, and with `hasName` in containers.
    bool takeElement(qxDynamicElement& element, bool hasName);
    bool skip(std::size_t count);

    const unsigned char* getNext() const { return m_next; }
    std::size_t getRest() const { return static_cast<std::size_t>(m_end - m_next); }

private:
    const unsigned char* m_next;
    const unsigned char* m_end;
};

constexpr std::size_t QX_DYNAMIC_TIME_SIZE = 8; // bytes of the time before the value

/// True for tags whose blocks hold values.
constexpr bool qxHoldsDynamicElements(qxDynamicKind kind)
{
    return kind == QX_DYNAMIC_ARRAY || kind == QX_DYNAMIC_CHAIN || kind == QX_DYNAMIC_CONT ||
           kind == QX_DYNAMIC_TTAG;
}

/// True when the block is one of the tag, with all that is in it; then `hasAddresses` tells whether there are pointers
/// in it. Needs time in proportion to its length and memory in proportion to its depth.
bool qxIsDynamicBlock(qxDynamicKind kind, qxDynamicBytes block, bool& hasAddresses);

/// Makes `value` an array or a chain of the items, or a container when there are `names`.
void qxPutDynamicElements(qxDynamicType& value, qxDynamicKind kind, const qxDynamicType* items,
                          std::size_t count, const qxString* names = nullptr);

/// The element of the block of `value`; those before it refer to `objectsBefore` objects.
qxDynamicType qxGetDynamicElement(const qxDynamicType& value, const qxDynamicElement& element,
                                  qxUInt64 objectsBefore);

/// Takes the values out of a block that was found good. Gives the names where they are asked for.
qxArray<qxDynamicType> qxGetDynamicElements(const qxDynamicType& value, qxArray<qxString>* names = nullptr);
