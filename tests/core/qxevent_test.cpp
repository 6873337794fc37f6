// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "qxtestsupport.h"

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace
{

constexpr unsigned int ENDLESS = 0xFFFFFFFF;

// Threads that sleep on an event, each once.
class Sleepers
{
public:
    Sleepers(const qxEvent& event, int count, unsigned int timeout) : m_event(event)
    {
        for (int i = 0; i < count; ++i)
            m_results.push_back(std::async(std::launch::async, [this, timeout] { return sleep(timeout); }));
        while (!areAsleep(count)) std::this_thread::yield();
    }

    // How many of them were woken, when all have returned.
    int countWoken()
    {
        int woken = 0;
        for (std::future<unsigned char>& result : m_results) woken += result.get();
        return woken;
    }

private:
    unsigned char sleep(unsigned int timeout)
    {
        m_event.waitLock();
        ++m_entered;
        return m_event.wait(timeout, 1);
    }

    bool areAsleep(int count)
    {
        m_event.waitLock(); // given back by a thread that has entered only when it sleeps
        const bool result = m_entered == count;
        m_event.unLock();
        return result;
    }

    const qxEvent& m_event;
    int m_entered = 0; // guarded by the event's lock
    std::vector<std::future<unsigned char>> m_results;
};

class Witness final : public qxEvent
{
public:
    explicit Witness(bool& isGone) : m_isGone(isGone) {}
    ~Witness() override { m_isGone = true; }

private:
    bool& m_isGone;
};

TEST(qxEvent, fireWakesAllSleepersAndFireOnlyOneWakesOne)
{
    qxEvent event;
    Sleepers all(event, 3, ENDLESS);
    event.fire();
    EXPECT_EQ(all.countWoken(), 3);

    Sleepers others(event, 3, 200);
    event.fireOnlyOne();
    EXPECT_EQ(others.countWoken(), 1);
}

TEST(qxEvent, waitingChangesTheHoldingsAndSeesNoFireFromBefore)
{
    const struct {
        bool keepsLock;
        unsigned char locked;
        unsigned int before;
        unsigned int after;
    } rows[] = {
        {false, 0, 0, 0}, {false, 0, 1, 1}, {false, 1, 1, 0}, {false, 1, 2, 1}, {false, 1, 0, 0},
        {true, 0, 0, 1},  {true, 0, 1, 2},  {true, 1, 1, 1},  {true, 1, 2, 2},  {true, 1, 0, 1},
    };
    for (const auto& row : rows) {
        for (const unsigned int timeout : {0U, 1U}) {
            SCOPED_TRACE(testing::Message() << row.keepsLock << int{row.locked} << row.before << timeout);
            qxEvent event;
            event.fire();
            event.fireOnlyOne();
            for (unsigned int i = 0; i < row.before; ++i) event.waitLock();
            EXPECT_EQ(
                row.keepsLock ? event.waitAndLock(timeout, row.locked) : event.wait(timeout, row.locked), 0);
            EXPECT_EQ(event.getSpinLockCount(), row.after);
            EXPECT_EQ(event.getOwnerThreadID() != 0, row.after != 0);
            while (event.getSpinLockCount() > 0) event.unLock();
        }
    }
}

TEST(qxEvent, aSleepGivesBackAllHoldings)
{
    qxEvent event;
    event.waitLock();
    event.waitLock();
    bool isChanged = false; // guarded by the event's lock
    std::thread other([&] {
        event.waitLock();
        isChanged = true;
        event.fire();
        event.unLock();
    });
    while (!isChanged) ASSERT_EQ(event.waitAndLock(ENDLESS, 1), 1);

    EXPECT_EQ(event.getSpinLockCount(), 2U);
    event.unLock();
    event.unLock();
    other.join();
}

TEST(qxEvent, copiedHoldersShareItButACopyIsFree)
{
    const qxRefPointer<qxEvent> event(new qxEvent);
    const qxRefPointer<qxEvent> other(event);
    EXPECT_EQ(other.get(), event.get());

    event->waitLock();
    qxEvent copy(*event);
    EXPECT_EQ(copy.isLocked(), 0);
    EXPECT_EQ(copy.wait(1, 0), 0);
    event->unLock();
}

TEST(qxEvent, threadsHoldItWhileAnotherIsInsideItsLock)
{
    bool isGone = false;
    qxRefPointer<qxEvent> event(new Witness(isGone));
    event->waitLock();
    onThreads(4, [&] {
        for (int n = 0; n < 5000; ++n) qxRefPointer<qxEvent> holder(event.get());
    });
    event->unLock();

    EXPECT_EQ(event->getRef(), 1U);
    EXPECT_FALSE(event->checkDelete());
    EXPECT_EQ(event->unrefNoDelete(), 0U);
    event->ref();
    EXPECT_FALSE(isGone);
    event = nullptr;
    EXPECT_TRUE(isGone);
}

TEST(qxEvent, theLastOfSeveralThreadsDeletesIt)
{
    for (int round = 0; round < 200; ++round) {
        bool isGone = false;
        qxEvent* const event = new Witness(isGone);
        for (int i = 0; i < 3; ++i) event->ref();
        onThreads(3, [&] { event->unref(); });
        ASSERT_TRUE(isGone);
    }
}

} // namespace
