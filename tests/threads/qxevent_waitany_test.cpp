// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "qxlist.h"
#include "qxtestsupport.h"
#include "qxtime.h"

#include <atomic>
#include <thread>
#include <vector>

namespace
{

// Fires events again and again while it lives: when exactly the waiters sleep cannot be known.
class Firing
{
public:
    explicit Firing(std::vector<qxEvent*> events)
        : m_thread([this, events] {
              while (!m_isOver) {
                  for (const qxEvent* event : events) event->fire();
                  std::this_thread::yield();
              }
          })
    {}

    ~Firing()
    {
        m_isOver = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

class qxEventWaitAny : public testing::Test
{
protected:
    qxEventWaitAny()
    {
        for (qxRefPointer<qxEvent>& event : m_events) {
            event = new qxEvent;
            m_list.insert(event);
        }
    }

    ~qxEventWaitAny() noexcept override = default; // holders and lists may raise, fixtures must not

    qxRefPointer<qxEvent> m_events[3];
    qxRefList<qxEvent> m_list;
};

TEST_F(qxEventWaitAny, returnsTheEventThatFires)
{
    for (const qxRefPointer<qxEvent>& event : m_events) {
        const Firing firing({event});
        EXPECT_EQ(qxEvent::wait(m_list, 0xFFFFFFFF), event.get());
    }
}

TEST_F(qxEventWaitAny, aFireWithTheEventsLockHeldWakesIt)
{
    std::atomic<bool> isWaiting{false};
    std::thread firing([&] {
        while (!isWaiting) std::this_thread::yield();
        while (isWaiting) {
            m_events[1]->waitLock();
            m_events[1]->fireOnlyOne();
            m_events[1]->unLock();
        }
    });
    isWaiting = true;
    EXPECT_EQ(qxEvent::wait(m_list, 0xFFFFFFFF), m_events[1].get());
    isWaiting = false;
    firing.join();
}

TEST_F(qxEventWaitAny, returnsNullAfterTheTime)
{
    const struct {
        bool isEmpty;
        unsigned int timeout;
        double least; // seconds
    } rows[] = {{false, 30, 0.03}, {true, 30, 0.03}, {false, 0, 0.0}, {true, 0, 0.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.isEmpty << row.timeout);
        const double start = qxTime::systemSeconds();
        EXPECT_EQ(qxEvent::wait(row.isEmpty ? qxRefList<qxEvent>() : m_list, row.timeout), nullptr);
        EXPECT_GE(qxTime::systemSeconds() - start, row.least);
    }
}

TEST_F(qxEventWaitAny, aFireBeforeItIsLost)
{
    for (const qxRefPointer<qxEvent>& event : m_events) event->fire();
    EXPECT_EQ(qxEvent::wait(m_list, 20), nullptr);
}

TEST_F(qxEventWaitAny, aNullEndsTheList)
{
    qxRefList<qxEvent> list;
    list.insert(m_events[0]);
    list.insert(nullptr);
    list.insert(m_events[1]);
    const Firing firing({m_events[1]});
    EXPECT_EQ(qxEvent::wait(list, 30), nullptr);
}

TEST_F(qxEventWaitAny, leavesTheEventsToTheirHoldersSoon)
{
    {
        const Firing firing({m_events[2]});
        EXPECT_EQ(qxEvent::wait(m_list, 0xFFFFFFFF), m_events[2].get());
    }
    for (const qxRefPointer<qxEvent>& event : m_events) {
        while (event->getRef() != 2) std::this_thread::yield(); // the waiters go within some milliseconds
        EXPECT_EQ(event->isLocked(), 0);
    }
}

TEST_F(qxEventWaitAny, doesNotWaitForAnEventWhoseLockIsHeld)
{
    m_events[0]->waitLock();
    {
        const Firing firing({m_events[1]});
        EXPECT_EQ(qxEvent::wait(m_list, 0xFFFFFFFF), m_events[1].get());
    }
    m_events[0]->unLock();
}

TEST_F(qxEventWaitAny, severalThreadsMayWaitForTheSameEvents)
{
    std::atomic<int> woken{0};
    std::vector<std::thread> threads;
    {
        const Firing firing({m_events[0], m_events[1], m_events[2]});
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                for (int n = 0; n < 5; ++n) woken += qxEvent::wait(m_list, 0xFFFFFFFF) != nullptr;
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
    EXPECT_EQ(woken, 15);
}

} // namespace
