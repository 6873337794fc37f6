// SPDX-License-Identifier: see LICENSE

#include "qxthreadticker.h"

#include "qxerror.h"
#include "qxtestsupport.h"
#include "qxtime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <set>

namespace
{

constexpr double SHORT = 0.002; // seconds

/// Counts its ticks and does what a test wants in each.
class Ticker : public qxThreadTicker
{
public:
    explicit Ticker(std::function<void(Ticker&)> work = {}) : m_work(std::move(work)) {}
    ~Ticker() noexcept(false) override { stopTicker(); }

    void awaitTicks(unsigned int count) const
    {
        while (ticks < count) qxThread::qxDelayFunction(1);
    }

    std::atomic<unsigned int> ticks{0};
    std::atomic<unsigned int> thread{0}; // of the latest tick
    double lastNow = 0.0;
    double steps = 0.0; // all together

private:
    void onTick(double now, double dt) override
    {
        lastNow = now;
        steps += dt;
        thread = qxThread::getThreadID();
        if (m_work) m_work(*this);
        ++ticks;
    }

    const std::function<void(Ticker&)> m_work;
};

TEST(qxThreadTicker, ticksInItsIntervalAndTellsTheTime)
{
    Ticker ticker;
    const double start = qxTime::systemSeconds();
    EXPECT_EQ(ticker.startTicker(0.02), 1);
    const double started = qxTime::systemSeconds();
    EXPECT_TRUE(ticker.isTicking());
    ticker.awaitTicks(3);
    ticker.stopTicker();
    EXPECT_GE(ticker.lastNow - ticker.steps, start - 1e-5); // the start of the first step
    EXPECT_LE(ticker.lastNow - ticker.steps, started + 1e-5);
    EXPECT_GE(qxTime::systemSeconds() - start, 0.06 - 1e-6);
    EXPECT_FALSE(ticker.isTicking());

    const unsigned int ticks = ticker.ticks;
    qxThread::qxDelayFunction(50);
    EXPECT_EQ(ticker.ticks, ticks);
}

TEST(qxThreadTicker, takesAnyInterval)
{
    for (const double interval : {0.0, -1.0, std::nan("")}) {
        SCOPED_TRACE(interval);
        Ticker ticker;
        const double start = qxTime::systemSeconds();
        ticker.startTicker(interval);
        ticker.awaitTicks(5);
        ticker.stopTicker();
        EXPECT_GE(qxTime::systemSeconds() - start, 5 * qxThreadTicker::SHORTEST_INTERVAL - 1e-6);
    }
    Ticker never;
    never.startTicker(INFINITY);
    qxThread::qxDelayFunction(5);
    EXPECT_EQ(never.ticks, 0U);
}

TEST(qxThreadTicker, sharesAThreadWithinAPoolOnly)
{
    Ticker first;
    Ticker second;
    Ticker other;
    Ticker urgent;
    first.startTicker(SHORT, 7);
    second.startTicker(SHORT, 7);
    other.startTicker(SHORT, 8);
    urgent.startTicker(SHORT, 7, QX_THREAD_LOWEST);
    for (Ticker* const ticker : {&first, &second, &other, &urgent}) ticker->awaitTicks(2);
    EXPECT_EQ(first.thread, second.thread);
    const std::set<unsigned int> threads = {first.thread, other.thread, urgent.thread,
                                            qxThread::getThreadID()};
    EXPECT_EQ(threads.size(), 4U);

    const qxRefPointer<qxThreadPoolTicker> pool = qxThreadPoolTicker::getPool(7);
    const qxRefPointer<qxThreadPoolTicker> copy = pool;
    EXPECT_EQ(copy, pool);
    EXPECT_EQ(pool->countTickers(), 2U);
    first.stopTicker();
    EXPECT_EQ(pool->countTickers(), 1U);
}

TEST(qxThreadTicker, stopsFromInsideAndStartsAgain)
{
    Ticker ticker([](Ticker& self) { self.stopTicker(); });
    for (unsigned int round = 1; round <= 3; ++round) { // each with a thread of its own
        ticker.startTicker(SHORT);
        ticker.awaitTicks(round);
        EXPECT_FALSE(ticker.isTicking());
        qxThread::qxDelayFunction(5);
        EXPECT_EQ(ticker.ticks, round);
    }
}

TEST(qxThreadTicker, stoppingFromOutsideWaitsForTheTick)
{
    std::atomic<bool> isInside{false};
    std::atomic<bool> isThrough{false};
    Ticker ticker([&](Ticker& self) {
        isInside = true;
        qxThread::qxDelayFunction(30);
        self.startTicker(SHORT); // does not outlive the one who stops it
        isThrough = true;
    });
    ticker.startTicker(SHORT);
    while (!isInside) qxThread::qxDelayFunction(1);
    ticker.stopTicker();
    EXPECT_TRUE(isThrough);
    EXPECT_FALSE(ticker.isTicking());
}

TEST(qxThreadTicker, movesToAnotherPoolFromInside)
{
    unsigned int before = 0;
    Ticker ticker([&before](Ticker& self) {
        if (self.ticks > 0) return;
        before = self.thread;
        self.startTicker(SHORT, 11);
    });
    ticker.startTicker(SHORT, 10);
    ticker.awaitTicks(3);
    ticker.stopTicker();
    EXPECT_NE(ticker.thread, before);
    EXPECT_EQ(qxThreadPoolTicker::getPool(10)->countTickers(), 0U);
}

class SelfDeleting : public qxThreadTicker
{
public:
    explicit SelfDeleting(std::atomic<bool>& isGone) : m_isGone(isGone) {}
    ~SelfDeleting() noexcept(false) override
    {
        stopTicker();
        m_isGone = true;
    }

private:
    void onTick(double, double) override { delete this; }

    std::atomic<bool>& m_isGone;
};

TEST(qxThreadTicker, mayDeleteItself)
{
    std::atomic<bool> isGone{false};
    (new SelfDeleting(isGone))->startTicker(SHORT, 12);
    while (!isGone) qxThread::qxDelayFunction(1);
    EXPECT_EQ(qxThreadPoolTicker::getPool(12)->countTickers(), 0U);
}

TEST(qxThreadTicker, reportsWhatATickRaisesAndGoesOn)
{
    const MessageRecorder recorder;
    Ticker ticker([](Ticker& self) {
        if (self.ticks++ == 0) qxExceptionThrows::qxThrowWarning("no good tick");
    });
    ticker.startTicker(SHORT);
    ticker.awaitTicks(3);
    ticker.stopTicker();
    ASSERT_EQ(recorder.messages().size(), 1U);
    EXPECT_EQ(recorder.messages()[0].text, "no good tick");
}

TEST(qxThreadTicker, manyStartAndStopAtOnce)
{
    onThreads(4, [] {
        for (int i = 0; i < 20; ++i) {
            Ticker tickers[3];
            for (Ticker& ticker : tickers) ticker.startTicker(0.001, 20 + static_cast<unsigned int>(i % 2));
            tickers[0].awaitTicks(1);
            tickers[1].stopTicker();
        }
    });
    EXPECT_EQ(qxThreadPoolTicker::getPool(20)->countTickers(), 0U);
}

} // namespace
