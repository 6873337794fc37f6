// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformlock.h"

#include "platform/qxplatformnotnow.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <new>

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace
{

// Built on the kernel's wait for a word and not on the system's condition variable, which may hand a wake to
// a thread that came after it (and would go back to sleep here while the right one sleeps on), and which
// does not promise that a woken thread may destroy it while the waking call is still on its way out.
//
// The word holds, from the low end: 32 bits of wake number, 16 of wakes that nobody has taken yet, 16 of
// sleepers. Changing it is all that a wake does to the room; the kernel's call after that only names the
// address. There are never more wakes than sleepers.
struct Condition {
    std::atomic<std::uint64_t> word{0};
};

constexpr std::uint64_t WAKE = std::uint64_t{1} << 32;
constexpr std::uint64_t SLEEPER = std::uint64_t{1} << 48;
constexpr std::uint64_t MOST_SLEEPERS = 0xFFFF;

constexpr unsigned int STOP_POLL_MILLISECONDS = 10;

static_assert(sizeof(pthread_mutex_t) <= QX_PLATFORM_LOCK_ROOM && alignof(pthread_mutex_t) <= 8);
static_assert(sizeof(Condition) <= QX_PLATFORM_CONDITION_ROOM && alignof(Condition) <= 8);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

unsigned int numberIn(std::uint64_t word)
{
    return static_cast<unsigned int>(word);
}

std::uint64_t wakesIn(std::uint64_t word)
{
    return (word >> 32) & MOST_SLEEPERS;
}

std::uint64_t sleepersIn(std::uint64_t word)
{
    return word >> 48;
}

pthread_mutex_t* lockIn(void* room)
{
    return static_cast<pthread_mutex_t*>(room);
}

Condition& conditionIn(void* room)
{
    return *static_cast<Condition*>(room);
}

void* numberAddress(Condition& condition)
{
    constexpr int offset = std::endian::native == std::endian::little ? 0 : 4;
    return reinterpret_cast<unsigned char*>(&condition.word) + offset;
}

void wakeThreads(void* number, int most)
{
    syscall(SYS_futex, number, FUTEX_WAKE_PRIVATE, most, nullptr, nullptr, 0);
}

enum class Pause { WOKEN, OTHER, TIMED_OUT };

// Sleeps while the number is `seen`; a null deadline never comes.
Pause pauseThread(void* number, unsigned int seen, const timespec* deadline)
{
    const long result = syscall(SYS_futex, number, FUTEX_WAIT_BITSET_PRIVATE, seen, deadline, nullptr,
                                FUTEX_BITSET_MATCH_ANY);
    if (result == 0) return Pause::WOKEN;
    return errno == ETIMEDOUT ? Pause::TIMED_OUT : Pause::OTHER;
}

timespec deadlineAfter(unsigned int milliseconds)
{
    timespec moment;
    clock_gettime(CLOCK_MONOTONIC, &moment);
    moment.tv_sec += milliseconds / 1000;
    moment.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (moment.tv_nsec >= 1000000000) {
        moment.tv_nsec -= 1000000000;
        ++moment.tv_sec;
    }
    return moment;
}

// Counts the caller among the sleepers and gives the wake number of that moment; false if there is no
// place left.
bool addSleeper(Condition& condition, unsigned int& start)
{
    std::uint64_t word = condition.word.load();
    do {
        if (sleepersIn(word) == MOST_SLEEPERS) return false;
    } while (!condition.word.compare_exchange_weak(word, word + SLEEPER));
    start = numberIn(word);
    return true;
}

bool isBefore(const timespec& left, const timespec& right)
{
    return left.tv_sec != right.tv_sec ? left.tv_sec < right.tv_sec : left.tv_nsec < right.tv_nsec;
}

// When a sleep ends without a wake: at the deadline, if any, or soon after `stop`, if any, became true.
struct Limit {
    const timespec* deadline;
    const std::atomic<bool>* stop;
};

Pause pauseThread(void* number, unsigned int seen, const Limit& limit)
{
    if (!limit.stop) return pauseThread(number, seen, limit.deadline);
    const timespec look = deadlineAfter(STOP_POLL_MILLISECONDS);
    const bool deadlineFirst = limit.deadline && isBefore(*limit.deadline, look);
    const Pause pause = pauseThread(number, seen, deadlineFirst ? limit.deadline : &look);
    const bool isOver = deadlineFirst || limit.stop->load();
    return pause == Pause::TIMED_OUT && !isOver ? Pause::OTHER : pause;
}

// Sleeps until there is a wake that was sent after `start`, takes it and returns true, or until the
// limit. The caller has been counted and is not when this returns.
bool awaitWake(Condition& condition, unsigned int start, const Limit& limit)
{
    Pause pause = Pause::OTHER;
    bool passedOn = false;
    for (;;) {
        std::uint64_t word = condition.word.load();
        while (numberIn(word) != start && wakesIn(word) > 0) {
            if (condition.word.compare_exchange_weak(word, word - SLEEPER - WAKE)) return true;
        }
        if (pause == Pause::TIMED_OUT) {
            if (condition.word.compare_exchange_strong(word, word - SLEEPER)) return false;
            continue;
        }
        // The kernel picked this thread for a wake that was sent before it came: let those look whom it is
        // for.
        if (pause == Pause::WOKEN && numberIn(word) == start && wakesIn(word) > 0 && !passedOn) {
            passedOn = true;
            wakeThreads(numberAddress(condition), INT_MAX);
        }
        pause = pauseThread(numberAddress(condition), numberIn(word), limit);
    }
}

void wake(Condition& condition, std::uint64_t most)
{
    void* const number = numberAddress(condition);
    std::uint64_t word = condition.word.load();
    std::uint64_t next = 0;
    do {
        const std::uint64_t sleepers = sleepersIn(word);
        if (sleepers == 0) return;
        const std::uint64_t wakes = std::min(sleepers, wakesIn(word) + most);
        next = sleepers * SLEEPER + wakes * WAKE + (numberIn(word) + 1U);
    } while (!condition.word.compare_exchange_weak(word, next));
    wakeThreads(number, most == 1 ? 1 : INT_MAX); // the room may be gone by now
}

} // namespace

void qxPlatformLockCreate(void* room)
{
    pthread_mutex_init(new (room) pthread_mutex_t, nullptr); // with default attributes it cannot fail
}

void qxPlatformLockDestroy(void* room)
{
    pthread_mutex_destroy(lockIn(room));
}

void qxPlatformLockEnter(void* room)
{
    pthread_mutex_lock(lockIn(room));
}

bool qxPlatformLockTryEnter(void* room)
{
    return pthread_mutex_trylock(lockIn(room)) == 0;
}

void qxPlatformLockLeave(void* room)
{
    // Once it is free, those who wait are still to be woken.
    qxPlatformCallNotNow([room] { return pthread_mutex_unlock(lockIn(room)); });
}

void qxPlatformConditionCreate(void* room)
{
    new (room) Condition;
}

void qxPlatformConditionDestroy(void* room)
{
    conditionIn(room).~Condition();
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
    const bool limited = milliseconds != QX_PLATFORM_NO_LIMIT;
    const timespec deadline = limited ? deadlineAfter(milliseconds) : timespec{};

    Condition& condition = conditionIn(room);
    unsigned int start = 0;
    if (!addSleeper(condition, start)) return false;
    pthread_mutex_unlock(lockIn(lockRoom));
    const bool woken = awaitWake(condition, start, Limit{limited ? &deadline : nullptr, stop});
    pthread_mutex_lock(lockIn(lockRoom));
    return woken;
}
