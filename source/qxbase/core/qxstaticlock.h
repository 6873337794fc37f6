// A lock that is ready before any code has run.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <atomic>

/// A plain lock for state that the compiler makes: it needs no construction and no destruction, which std::mutex does on
/// some systems. For std::lock_guard and std::unique_lock.
///
/// Threads: any; a thread that locks twice waits for itself.
class qxStaticLock
{
public:
    void lock()
    {
        unsigned int seen = FREE;
        if (m_word.compare_exchange_strong(seen, TAKEN, std::memory_order_acquire, std::memory_order_relaxed))
            return;
        // Whoever gets it this way does not know of others who wait, and lets one of them look in the end.
        while (m_word.exchange(AWAITED, std::memory_order_acquire) != FREE)
            m_word.wait(AWAITED, std::memory_order_relaxed);
    }

    void unlock()
    {
        if (m_word.exchange(FREE, std::memory_order_release) == AWAITED) m_word.notify_one();
    }

private:
    static constexpr unsigned int FREE = 0;
    static constexpr unsigned int TAKEN = 1;
    static constexpr unsigned int AWAITED = 2; // taken, and somebody may wait

    std::atomic<unsigned int> m_word{FREE};
};
