// Makes dynamic values whose parts come one after another.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamicparts.h"

#include <string_view>
#include <vector>

/// Takes a value and those in it in the order in which their blocks lie in one another, the outermost first, and writes
/// the block of the outermost in one go when all sizes are known. Depth costs memory only. All of it comes from outside:
/// addresses mean nothing.
class qxDynamicBuilder
{
public:
    /// What stands before a value in the block around it.
    struct Head {
        std::string_view name; ///< in containers; without a zero
        qxUInt64 references = 0;
    };

    qxDynamicBuilder() = default;
    ~qxDynamicBuilder();
    qxDynamicBuilder(const qxDynamicBuilder&) = delete;
    qxDynamicBuilder& operator=(const qxDynamicBuilder&) = delete;

    /// Adds a value that holds no others. One holder of the tag is taken over.
    void add(const qxDynamicTag* tag, const Head& head, std::string_view block);

    /// Begins an array, a chain, a container or a value with a time. What is added up to its close is in it.
    void open(qxDynamicKind kind, const Head& head, double time = 0.0);

    /// Ends the innermost value that was begun.
    void close();

    /// The values in the innermost one that was begun, so far.
    qxUInt64 getCount() const { return m_nodes[m_open.back()].count; }

    /// Makes `value` the outermost one, which has ended; false when its block is longer than one may be.
    bool build(qxDynamicType& value);

private:
    struct Node {
        const qxDynamicTag* tag;
        qxUInt64 name; // where it begins among the bytes
        qxUInt64 references;
        qxUInt64
            data; // where the block begins among the bytes; of one that holds others the bits of its time
        qxUInt64 size;  // of the block; while it is open of the values in it
        qxUInt64 count; // of the values in it
        unsigned int nameLength;
        qxDynamicKind around; // what the value around it is; "void" for the outermost
    };

    Node& append(const qxDynamicTag* tag, const Head& head);
    void countIn(const Node& node);
    unsigned char* putHead(unsigned char* place, const Node& node) const;
    unsigned char* putContent(unsigned char* place, const Node& node) const;
    const char* bytesAt(qxUInt64 place) const { return m_bytes.data() + place; }

    std::vector<Node> m_nodes;
    std::vector<std::size_t> m_open; // those that have not ended, the innermost last
    std::vector<char> m_bytes;       // names and the blocks of values that hold no others
    bool m_hasAddresses = false;
};
