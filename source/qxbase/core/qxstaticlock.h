// A lock that is ready before any code has run.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformnotnow.h"

#include <atomic>
#include <chrono>
#include <thread>

/// A plain lock for state that the compiler makes: it needs no construction and no destruction, which std::mutex does on
/// some systems. What it guards takes moments: who finds it taken gives its time away and looks again, since the waits of
/// std::atomic miss wakes on some systems. For std::lock_guard and std::unique_lock.
///
/// Threads: any; a thread that locks twice waits for itself. One that holds it is not ended meanwhile.
class qxStaticLock
{
public:
    void lock()
    {
        qxPlatformEnterNotNow();
        if (tryTake()) return;
        for (unsigned int pass = 0; !tryTake(); ++pass) {
            if (pass < PASSES_WITHOUT_A_SLEEP)
                std::this_thread::yield();
            else
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void unlock()
    {
        m_isTaken.store(false, std::memory_order_release);
        qxPlatformLeaveNotNow();
    }

private:
    // Asks before it takes, so that those who wait do not pull the word from one processor to another.
    bool tryTake()
    {
        return !m_isTaken.load(std::memory_order_relaxed) &&
               !m_isTaken.exchange(true, std::memory_order_acquire);
    }

    static constexpr unsigned int PASSES_WITHOUT_A_SLEEP = 100;

    std::atomic<bool> m_isTaken{false};
};
