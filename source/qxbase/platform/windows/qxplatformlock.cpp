// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformlock.h"

#include "platform/qxplatformclock.h"
#include "platform/windows/qxwindows.h"

#include <algorithm>
#include <new>

namespace
{

// The system's condition wakes whom it likes, also those who came after the wake, and for no reason. So wakes are
// counted: a sleeper takes one that was sent after it came, or sleeps on. Whoever wakes is inside `guard` until it has
// done with the room: a sleeper that has come out through `guard` may destroy it.
struct Condition {
    CRITICAL_SECTION guard;
    CONDITION_VARIABLE changed;
    unsigned int number;  // of wakes sent so far
    unsigned short wakes; // that nobody has taken yet; never more than there are sleepers
    unsigned short sleepers;
};

constexpr unsigned short MOST_SLEEPERS = 0xFFFF;
constexpr double STOP_POLL_MILLISECONDS = 10.0;
constexpr double LONGEST_PAUSE_MILLISECONDS = 1e9; // fits the system's counter

static_assert(sizeof(CRITICAL_SECTION) <= QX_PLATFORM_LOCK_ROOM && alignof(CRITICAL_SECTION) <= 8);
static_assert(sizeof(Condition) <= QX_PLATFORM_CONDITION_ROOM && alignof(Condition) <= 8);

CRITICAL_SECTION* lockIn(void* room)
{
    return static_cast<CRITICAL_SECTION*>(room);
}

Condition& conditionIn(void* room)
{
    return *static_cast<Condition*>(room);
}

class Inside
{
public:
    explicit Inside(Condition& condition) : m_guard(condition.guard) { EnterCriticalSection(&m_guard); }
    ~Inside() { LeaveCriticalSection(&m_guard); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    CRITICAL_SECTION& m_guard;
};

double milliseconds()
{
    return qxPlatformSteadySeconds() * 1e3;
}

void wake(Condition& condition, unsigned int most)
{
    const Inside inside(condition);
    if (condition.sleepers == 0) return;
    condition.wakes =
        static_cast<unsigned short>(std::min<unsigned int>(condition.sleepers, condition.wakes + most));
    ++condition.number;
    WakeAllConditionVariable(&condition.changed);
}

// Takes a wake sent after `start` and returns true, or false after `limit` milliseconds or soon after `stop` became
// true. Call inside, counted as a sleeper; the caller is not any more when this returns.
bool awaitWake(Condition& condition, unsigned int start, double limit, const std::atomic<bool>* stop)
{
    const double end = milliseconds() + limit;
    bool isOver = false;
    while (condition.number == start || condition.wakes == 0) {
        if (isOver) {
            --condition.sleepers;
            return false;
        }
        const double left = end - milliseconds();
        const double pause =
            std::clamp(left, 0.0, stop ? STOP_POLL_MILLISECONDS : LONGEST_PAUSE_MILLISECONDS);
        SleepConditionVariableCS(&condition.changed, &condition.guard, static_cast<DWORD>(pause + 0.999));
        isOver = milliseconds() >= end || (stop && stop->load());
    }
    --condition.sleepers;
    --condition.wakes;
    return true;
}

} // namespace

void qxPlatformLockCreate(void* room)
{
    InitializeCriticalSection(new (room) CRITICAL_SECTION);
}

void qxPlatformLockDestroy(void* room)
{
    DeleteCriticalSection(lockIn(room));
}

void qxPlatformLockEnter(void* room)
{
    EnterCriticalSection(lockIn(room));
}

bool qxPlatformLockTryEnter(void* room)
{
    CRITICAL_SECTION* const lock = lockIn(room);
    if (!TryEnterCriticalSection(lock)) return false;
    if (lock->RecursionCount == 1) return true;
    LeaveCriticalSection(lock); // the system would let its owner in again
    return false;
}

void qxPlatformLockLeave(void* room)
{
    LeaveCriticalSection(lockIn(room));
}

void qxPlatformConditionCreate(void* room)
{
    Condition& condition = *new (room) Condition{};
    InitializeCriticalSection(&condition.guard);
    InitializeConditionVariable(&condition.changed);
}

void qxPlatformConditionDestroy(void* room)
{
    DeleteCriticalSection(&conditionIn(room).guard);
}

void qxPlatformConditionWakeAll(void* room)
{
    wake(conditionIn(room), MOST_SLEEPERS);
}

void qxPlatformConditionWakeOne(void* room)
{
    wake(conditionIn(room), 1);
}

bool qxPlatformConditionSleep(void* room, void* lockRoom, unsigned int milliseconds,
                              const std::atomic<bool>* stop)
{
    constexpr double never = 1e300;
    qxPlatformRefineTimer();
    Condition& condition = conditionIn(room);
    bool isWoken = false;
    {
        const Inside inside(condition);
        if (condition.sleepers == MOST_SLEEPERS) return false;
        ++condition.sleepers;
        LeaveCriticalSection(lockIn(lockRoom));
        isWoken = awaitWake(condition, condition.number,
                            milliseconds == QX_PLATFORM_NO_LIMIT ? never : milliseconds, stop);
    }
    EnterCriticalSection(lockIn(lockRoom));
    return isWoken;
}
