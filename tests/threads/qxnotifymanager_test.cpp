// SPDX-License-Identifier: see LICENSE

#include "qxnotifymanager.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <functional>
#include <memory>

namespace
{

/// Writes its name when it is told something, and does what a test wants.
class Receiver : public qxNotifyReceiverInterface
{
public:
    Receiver(std::string& log, const char* name, std::function<void()> work = {})
        : m_log(log), m_name(name), m_work(std::move(work))
    {}

    void onNotify(qxNotifyManager*, qxReference* message) override
    {
        m_log += m_name;
        if (message) m_log += std::to_string(static_cast<TestObject*>(message)->value);
        if (m_work) m_work();
    }

private:
    std::string& m_log;
    const char* const m_name;
    const std::function<void()> m_work;
};

TEST(qxNotifyManager, tellsItsReceiversInTheirOrder)
{
    std::string log;
    Receiver first(log, "a");
    Receiver second(log, "b");
    qxNotifyManager manager;
    EXPECT_FALSE(manager.hasNotifyReceivers());
    manager.notify(nullptr);
    manager.addNotifyReceiver(&first);
    manager.addNotifyReceiver(&second);
    manager.addNotifyReceiver(&first);
    manager.addNotifyReceiver(nullptr);
    manager.notify(nullptr);
    manager.notify(new TestObject(7)); // which goes then
    EXPECT_EQ(TestObject::alive, 0);
    manager.removeNotifyReceiver(&first);
    manager.removeNotifyReceiver(&first);
    manager.notify(nullptr);
    EXPECT_EQ(log, "aba7b7b");
    EXPECT_TRUE(manager.hasNotifyReceivers());
}

TEST(qxNotifyManager, receiversMayChangeTheList)
{
    std::string log;
    qxNotifyManager manager;
    Receiver third(log, "c");
    Receiver second(log, "b");
    Receiver first(log, "a", [&] {
        manager.removeNotifyReceiver(&first);
        manager.removeNotifyReceiver(&second); // not called any more
        manager.addNotifyReceiver(&third);     // only from the next message on
    });
    manager.addNotifyReceiver(&first);
    manager.addNotifyReceiver(&second);
    manager.notify(nullptr);
    EXPECT_EQ(log, "a");
    manager.notify(nullptr);
    EXPECT_EQ(log, "ac");
}

TEST(qxNotifyManager, aReceiverMayEndTheManager)
{
    std::string log;
    auto manager = std::make_unique<qxNotifyManager>();
    Receiver first(log, "a", [&] { manager = nullptr; });
    Receiver second(log, "b");
    manager->addNotifyReceiver(&first);
    manager->addNotifyReceiver(&second);
    manager->notify(new TestObject(1));
    EXPECT_EQ(log, "a1");
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxNotifyManager, whatAReceiverRaisesLeavesItUsable)
{
    std::string log;
    qxNotifyManager manager;
    Receiver first(log, "a", [] { qxExceptionThrows::qxThrowWarning("no"); });
    manager.addNotifyReceiver(&first);
    EXPECT_EQ(warningText([&] { manager.notify(nullptr); }), "no");
    manager.removeNotifyReceiver(&first); // does not wait for a call that is over
    manager.notify(nullptr);
    EXPECT_EQ(log, "a");
}

TEST(qxNotifyManager, removingWaitsForACallOnAnotherThread)
{
    std::string log;
    qxNotifyManager manager;
    TestLatch isInside(1);
    std::atomic<bool> isThrough{false};
    Receiver receiver(log, "a", [&] {
        isInside.countDown();
        for (int i = 0; i < 20; ++i) std::this_thread::yield();
        isThrough = true;
    });
    manager.addNotifyReceiver(&receiver);
    std::thread other([&] { manager.notify(nullptr); });
    isInside.wait();
    manager.removeNotifyReceiver(&receiver);
    EXPECT_TRUE(isThrough);
    other.join();
}

TEST(qxNotifyManager, manyNotifyWhileReceiversComeAndGo)
{
    class Counter : public qxNotifyReceiverInterface
    {
    public:
        void onNotify(qxNotifyManager*, qxReference*) override { ++count; }
        std::atomic<int> count{0};
    };
    qxNotifyManager manager;
    Counter always;
    manager.addNotifyReceiver(&always);
    onThreads(4, [&](unsigned int number) {
        for (int i = 0; i < 200; ++i) {
            if (number % 2 == 0) {
                manager.notify(nullptr);
                continue;
            }
            Counter shortLived;
            manager.addNotifyReceiver(&shortLived);
            manager.removeNotifyReceiver(&shortLived);
        }
    });
    EXPECT_EQ(always.count, 400);
}

} // namespace
