// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxevent.h"
#include "qxthread.h"

#include <thread>

namespace
{

constexpr unsigned int TIMES = 200;

// Its end is awaited asleep, as a join does. The next run joins the thread of the one before.
class Counting : public qxThread
{
public:
    ~Counting() noexcept(false) override { stop(1); }

    void runToItsEnd()
    {
        m_end.waitLock();
        run(0);
        m_end.wait(0xFFFFFFFF, 1);
        while (isRunning(0)) qxDelayFunction(0); // it is on its last steps
    }

    std::uint64_t count = 0;

protected:
    void process() override
    {
        ++count;
        m_end.waitLock(); // the other one sleeps
        m_end.unLock();
        m_end.fire();
    }

private:
    qxEvent m_end;
};

std::uint64_t runOurs()
{
    static Counting thread;
    thread.count = 0;
    for (unsigned int i = 0; i < TIMES; ++i) thread.runToItsEnd();
    return thread.count;
}

std::uint64_t runTheirs()
{
    std::uint64_t count = 0;
    for (unsigned int i = 0; i < TIMES; ++i) std::thread([&count] { ++count; }).join();
    return count;
}

void startAndJoin(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", runOurs);
    work.add("std::thread", runTheirs);
}
const qxBenchEntry START_AND_JOIN("thread/start-and-join", QX_BENCH_NANOSECONDS, startAndJoin);

} // namespace
