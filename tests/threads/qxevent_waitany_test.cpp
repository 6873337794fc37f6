// SPDX-License-Identifier: see LICENSE

#include "qxevent.h"

#include "qxguard.h"
#include "qxlist.h"
#include "qxtestsupport.h"

#include <atomic>
#include <thread>
#include <vector>

namespace
{

// Fires events again and again while it lives, in every way: when exactly the waiters sleep cannot be known.
class Firing
{
public:
    explicit Firing(std::vector<qxEvent*> events)
        : m_thread([this, events] {
              for (unsigned int n = 0; !m_isOver; ++n) {
                  for (const qxEvent* event : events) fire(*event, n % 2 == 0);
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
    static void fire(const qxEvent& event, bool withLock)
    {
        if (!withLock) return event.fire();
        const qxBodyGuard guard(event);
        event.fireOnlyOne();
    }

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

TEST_F(qxEventWaitAny, returnsNullAfterTheTime)
{
    const struct {
        bool isEmpty;
        unsigned int timeout;
        double least; // seconds
    } rows[] = {{false, 30, 0.03}, {true, 30, 0.03}, {false, 0, 0.0}, {true, 0, 0.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.isEmpty << row.timeout);
        const qxRefList<qxEvent> events = row.isEmpty ? qxRefList<qxEvent>() : m_list;
        EXPECT_GE(secondsOf([&] { EXPECT_EQ(qxEvent::wait(events, row.timeout), nullptr); }), row.least);
    }
}

TEST_F(qxEventWaitAny, neitherAFireBeforeNorOneBehindANullIsSeen)
{
    for (const qxRefPointer<qxEvent>& event : m_events) event->fire();
    EXPECT_EQ(qxEvent::wait(m_list, 20), nullptr);

    qxRefList<qxEvent> list;
    for (qxEvent* const event : {m_events[0].get(), static_cast<qxEvent*>(nullptr), m_events[1].get()})
        list.insert(event);
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
    const Firing firing({m_events[0], m_events[1], m_events[2]});
    onThreads(3, [&] {
        for (int n = 0; n < 5; ++n) EXPECT_TRUE(qxEvent::wait(m_list, 0xFFFFFFFF));
    });
}

} // namespace
