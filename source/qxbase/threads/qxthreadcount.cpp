// SPDX-License-Identifier: see LICENSE

#include "threads/qxthreadcount.h"

#include "qxthread.h"

#include "core/qxneverdestroyed.h"
#include "core/qxprocessguard.h"

namespace
{

template <class Value>
struct Shared {
    qxMutex lock; // guards the value
    Value value{};
};

Shared<unsigned int>& workingThreads()
{
    static qxNeverDestroyed<Shared<unsigned int>> shared;
    return shared.get();
}

Shared<bool>& prioritiesOff()
{
    static qxNeverDestroyed<Shared<bool>> shared;
    return shared.get();
}

} // namespace

void qxCountWorkingThread(bool isWorking)
{
    Shared<unsigned int>& threads = workingThreads();
    const qxProcessGuard guard(threads.lock);
    isWorking ? ++threads.value : --threads.value;
}

unsigned int qxThread::getWorkingCount()
{
    Shared<unsigned int>& threads = workingThreads();
    const qxProcessGuard guard(threads.lock);
    return threads.value;
}

bool qxAreThreadPrioritiesUsed()
{
    Shared<bool>& off = prioritiesOff();
    const qxProcessGuard guard(off.lock);
    return !off.value;
}

void qxThread::useThreadPriorities(unsigned char on)
{
    Shared<bool>& off = prioritiesOff();
    const qxProcessGuard guard(off.lock);
    off.value = on == 0;
}
