// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxthread.h"

#include <atomic>
#include <thread>

namespace
{

constexpr unsigned int TIMES = 200;

std::atomic<std::uint64_t> s_count;

class Counting : public qxThread
{
public:
    ~Counting() noexcept(false) override { stop(1); }

protected:
    void process() override { ++s_count; }
};

// The next run joins the thread of the one before.
std::uint64_t runOurs()
{
    static Counting thread;
    s_count = 0;
    for (unsigned int i = 0; i < TIMES; ++i) {
        thread.run(0);
        while (thread.isRunning(0)) qxThread::qxDelayFunction(0);
    }
    return s_count;
}

std::uint64_t runTheirs()
{
    s_count = 0;
    for (unsigned int i = 0; i < TIMES; ++i) std::thread([] { ++s_count; }).join();
    return s_count;
}

void startAndJoin(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", runOurs);
    work.add("std::thread", runTheirs);
}
const qxBenchEntry START_AND_JOIN("thread/start-and-join", QX_BENCH_NANOSECONDS, startAndJoin);

std::uint64_t numberOurs()
{
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < TIMES; ++i) sum += qxThread::getThreadEnum(0) < 10000;
    return sum;
}

std::uint64_t numberTheirs()
{
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < TIMES; ++i) sum += std::this_thread::get_id() != std::thread::id();
    return sum;
}

void ownNumber(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", numberOurs);
    work.add("std::this_thread::get_id", numberTheirs);
}
const qxBenchEntry OWN_NUMBER("thread/own-number", QX_BENCH_NANOSECONDS, ownNumber);

} // namespace
