// SPDX-License-Identifier: see LICENSE

#include "qxholders.h"

#include <memory>
#include <mutex>

namespace
{

class HandCountedGuarded : public HandCounted
{
public:
    void ref() override
    {
        const std::lock_guard guard(m_lock);
        ++m_count;
    }
    void unref() override
    {
        if (countDown() == 0) delete this;
    }

private:
    unsigned int countDown()
    {
        const std::lock_guard guard(m_lock);
        return --m_count;
    }

    std::mutex m_lock; // guards the count
    unsigned int m_count = 0;
};

// Code that has objects of both kinds cannot take plain counts without a call.
const qxBenchEntry PLAIN("holder/plain-beside-thread-safe", QX_BENCH_NANOSECONDS,
                         comparePlainHolders<HandCountedGuarded>);

void threadSafe(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", copyAndDestroy(shared<qxThreadSafeReference>()));
    work.add("count guarded by std::mutex", copyAndDestroy(HandHolder<HandCounted>(new HandCountedGuarded)));
    work.add("std::shared_ptr", copyAndDestroy(std::make_shared<int>(0))); // an atomic count
}
const qxBenchEntry THREAD_SAFE("holder/thread-safe", QX_BENCH_NANOSECONDS, threadSafe);

} // namespace
