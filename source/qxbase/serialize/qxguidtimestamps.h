// Which timestamps identifiers were made with.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <algorithm>
#include <atomic>

/// A number that only grows, such as the last timestamp that was given away. Zero at first.
///
/// Threads: any at once.
class qxGrowingNumber
{
public:
    qxUInt64 get() const { return m_number.load(std::memory_order_relaxed); }

    /// Takes the first number from `wanted` on that is above all before.
    qxUInt64 takeFrom(qxUInt64 wanted)
    {
        qxUInt64 before = get();
        qxUInt64 taken;
        do {
            taken = std::max(wanted, before + 1);
        } while (!m_number.compare_exchange_weak(before, taken, std::memory_order_relaxed));
        return taken;
    }

    void raiseTo(qxUInt64 number)
    {
        qxUInt64 before = get();
        while (before < number &&
               !m_number.compare_exchange_weak(before, number, std::memory_order_relaxed)) {}
    }

private:
    std::atomic<qxUInt64> m_number{0};
};

/// The last timestamps of all threads.
class qxGuidTimestamps
{
public:
    static constexpr unsigned int SLOTS = 10000;          ///< of qxThread::getThreadEnum
    static constexpr unsigned int SEQUENCE_MASK = 0x3FFF; ///< of a thread id: what an identifier has room for

    /// The timestamp for an identifier of this thread: `now`, or the first behind it that makes it a new one.
    qxUInt64 take(unsigned int slot, unsigned int threadID, qxUInt64 now)
    {
        qxGrowingNumber& own = m_ofSlot[std::min(slot, SLOTS)];
        const qxUInt64 taken = m_ofSequence[threadID & SEQUENCE_MASK].takeFrom(std::max(now, own.get() + 1));
        own.raiseTo(taken);
        return taken;
    }

private:
    // Threads without a slot share the last entry. A slot that goes to another thread keeps its number, which only makes
    // time grow.
    qxGrowingNumber m_ofSlot[SLOTS + 1];

    // Two threads whose ids agree in these bits would make the same identifier at the same time.
    qxGrowingNumber m_ofSequence[SEQUENCE_MASK + 1];
};
