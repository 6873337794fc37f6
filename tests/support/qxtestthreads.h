// Threads and time for tests.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <type_traits>
#include <vector>

/// Runs `body` on a thread of its own, to its end, and returns what it returns.
template <typename Body>
auto onAnotherThread(Body&& body)
{
    return std::async(std::launch::async, body).get();
}

/// Runs `body` on `count` threads at once, to their ends. It may take the number of its thread, from 0 on.
template <typename Body>
void onThreads(unsigned int count, Body&& body)
{
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i) {
        const auto run = [&body]([[maybe_unused]] unsigned int number) {
            if constexpr (std::is_invocable_v<Body&, unsigned int>)
                body(number);
            else
                body();
        };
        threads.emplace_back(run, i);
    }
    for (std::thread& thread : threads) thread.join();
}

/// Counts down to 0 once, and lets threads wait for that. std::latch and std::condition_variable miss wakes on some
/// systems.
class TestLatch
{
public:
    explicit TestLatch(unsigned int count) : m_count(count) {}

    void countDown() { --m_count; }

    void wait() const
    {
        while (m_count != 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    void countDownAndWait()
    {
        countDown();
        wait();
    }

private:
    std::atomic<unsigned int> m_count;
};

/// Runs `body` and returns the seconds that it took.
template <typename Body>
double secondsOf(Body&& body)
{
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
