// Reading and writing an adapter's bytes where they lie, for this floor and those above.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <span>

/// Files and memory blocks lend the bytes that come next, so that they need not be copied.
///
/// Threads: as the adapter.
class qxAdapterBytes
{
public:
    /// The bytes that are read next, at most `wanted`. None at the end of the data, while the adapter holds
    /// bytes given back, and where it has nothing to lend: then read() is the way. They stay valid until the
    /// next operation on the adapter. May read from the file; an error is stored on the adapter.
    static std::span<const unsigned char> borrow(qxSerializeAdapter& adapter, unsigned int wanted)
    {
        if (adapter.m_head != adapter.m_tail) return {};
        if (adapter.m_window.next >= adapter.m_window.end) adapter.fillWindow(wanted);
        if (adapter.m_window.next >= adapter.m_window.end) return {};
        const auto there = static_cast<std::size_t>(adapter.m_window.end - adapter.m_window.next);
        return {adapter.m_window.next, there < wanted ? there : wanted};
    }

    /// As borrow, but only what lies there already: nothing is read ahead.
    static std::span<const unsigned char> peek(const qxSerializeAdapter& adapter)
    {
        if (adapter.m_head != adapter.m_tail) return {};
        return {adapter.m_window.next, adapter.getLent()};
    }

    /// Where the next `count` bytes are to be written at once; null when the adapter must be asked to write them.
    static unsigned char* takeRoom(qxSerializeAdapter& adapter, unsigned int count)
    {
        return count <= adapter.getRoom() ? adapter.takeRoom(count) : nullptr;
    }

    /// Reads the first `count` of the bytes borrowed last.
    static void consume(qxSerializeAdapter& adapter, unsigned int count) { adapter.m_window.next += count; }
};
