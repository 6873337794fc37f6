// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxmutex.h"

#include <mutex>

namespace
{

constexpr unsigned int TIMES = 10000;

void take(const qxMutex& lock)
{
    lock.waitLock();
}

void give(const qxMutex& lock)
{
    lock.unLock();
}

void take(std::recursive_mutex& lock)
{
    lock.lock();
}

void give(std::recursive_mutex& lock)
{
    lock.unlock();
}

template <class Lock>
std::uint64_t takeAndGive()
{
    static Lock lock;
    for (unsigned int i = 0; i < TIMES; ++i) {
        take(lock);
        give(lock);
    }
    return TIMES;
}

void alone(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", takeAndGive<qxMutex>); // tracks its owner, as a qxMutex does unless told otherwise
    work.add("std::recursive_mutex", takeAndGive<std::recursive_mutex>);
}
const qxBenchEntry ALONE("mutex/lock-and-unlock", QX_BENCH_NANOSECONDS, alone);

template <class Lock>
std::uint64_t takeAndGiveInside()
{
    static Lock lock;
    take(lock);
    for (unsigned int i = 0; i < TIMES; ++i) {
        take(lock);
        give(lock);
    }
    give(lock);
    return TIMES;
}

void nested(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", takeAndGiveInside<qxMutex>);
    work.add("std::recursive_mutex", takeAndGiveInside<std::recursive_mutex>);
}
const qxBenchEntry NESTED("mutex/lock-and-unlock-nested", QX_BENCH_NANOSECONDS, nested);

} // namespace
