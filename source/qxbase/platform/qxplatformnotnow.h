// Moments at which a thread must not be ended.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <atomic>

/// How a thread that qxPlatformThreadStart has started stands with its end.
struct qxPlatformEnding {
    std::atomic<unsigned int> notNow{0}; // the thread's own; read by others only while that stands still
    std::atomic<bool> isWanted{false};
    std::atomic<bool> isDone{false};
};

#if defined(__ELF__)

// Initial-exec: found as an offset from the thread's base, also in the shared library. Null in all other threads.
extern constinit
    __attribute__((tls_model("initial-exec"))) thread_local qxPlatformEnding* qxPlatformOwnEnding;

inline qxPlatformEnding* qxPlatformGetOwnEnding()
{
    return qxPlatformOwnEnding;
}

#else

qxPlatformEnding* qxPlatformGetOwnEnding();

#endif

/// Ends the calling thread if that is wanted and now.
void qxPlatformEndWhenWanted(qxPlatformEnding& ending);

/// Between these two the calling thread is not ended by qxPlatformThreadEnd: it goes at the last leave. They stand around
/// what all threads share, such as the heap, and take a nanosecond or two. They may be nested; nothing that is waited for
/// inside may need the thread that ends this one.
///
/// Threads: any. Errors: none.
inline void qxPlatformEnterNotNow()
{
    qxPlatformEnding* const ending = qxPlatformGetOwnEnding();
    if (!ending) return;
    ending->notNow.store(ending->notNow.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst); // what ends a thread comes as an interruption of it
}

inline void qxPlatformLeaveNotNow()
{
    qxPlatformEnding* const ending = qxPlatformGetOwnEnding();
    if (!ending) return;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    const unsigned int count = ending->notNow.load(std::memory_order_relaxed) - 1;
    ending->notNow.store(count, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (count == 0 && ending->isWanted.load(std::memory_order_acquire)) qxPlatformEndWhenWanted(*ending);
}

/// Keeps the calling thread from being ended while it lives.
class qxPlatformNotNow
{
public:
    qxPlatformNotNow() { qxPlatformEnterNotNow(); }
    ~qxPlatformNotNow() { qxPlatformLeaveNotNow(); }
    qxPlatformNotNow(const qxPlatformNotNow&) = delete;
    qxPlatformNotNow& operator=(const qxPlatformNotNow&) = delete;
};

/// Calls `work` in such a moment. Threads that cannot be ended pay for a look.
template <class Work>
inline auto qxPlatformCallNotNow(const Work& work)
{
    if (!qxPlatformGetOwnEnding()) return work();
    const qxPlatformNotNow notNow;
    return work();
}
