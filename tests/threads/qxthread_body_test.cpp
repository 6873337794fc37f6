// SPDX-License-Identifier: see LICENSE

// Bodies that do what bodies should not do.

#include "qxthreadtest.h"

#include <atomic>
#include <stdexcept>

namespace
{

using Messages = std::vector<RecordedMessage>;

// Runs the body on a thread of its own and then on this one, and returns the messages of each.
std::pair<Messages, Messages> messagesOf(const std::function<void(TestThread&)>& body)
{
    const auto record = [&](bool isChained) {
        const MessageRecorder recorder;
        const unsigned int working = settledWorkingCount();
        TestThread thread(body);
        isChained ? thread.chain() : thread.run(0);
        thread.awaitEnd();
        EXPECT_EQ(qxThread::getWorkingCount(), working);
        return recorder.messages();
    };
    return {record(false), record(true)};
}

TEST(qxThreadBody, whatItRaisesIsReportedOnce)
{
    const struct {
        std::function<void(TestThread&)> body;
        RecordedMessage message;
    } rows[] = {
        {[](TestThread&) { qxExceptionThrows::qxThrowFatal("gone %d", 1); }, {"QuaxoSDK", 0x5200, "gone 1"}},
        {[](TestThread&) { qxExceptionThrows::qxThrowWarning("gone %d", 2); },
         {"QuaxoSDK", 0x4200, "gone 2"}},
        {[](TestThread&) { throw std::runtime_error("100 %s lost"); }, {"QuaxoSDK", 0x5200, "100 %s lost"}},
        {[](TestThread&) { throw 42; },
         {"QuaxoSDK", 0x5200, "A body was left by an exception of unknown type"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message.text);
        const auto [run, chained] = messagesOf(row.body);
        EXPECT_EQ(run, Messages{row.message});
        EXPECT_EQ(chained, Messages{row.message});
    }
}

class Reporting : public TestThread
{
public:
    using TestThread::TestThread;
    ~Reporting() noexcept(false) override { stop(1); }

    std::string calls;

protected:
    void onCrash(qxStackInfo* info) override { calls += info ? "crash with stack" : "crash"; }
    void onBaseException(const qxBaseError& error) override
    {
        calls += error.getErrorString().getString();
        qxExceptionThrows::qxThrowFatal("raised by the report");
    }
};

TEST(qxThreadBody, mayReportInItsOwnWay)
{
    const MessageRecorder recorder;
    Reporting raising([](TestThread&) { qxExceptionThrows::qxThrowFatal("one"); });
    EXPECT_EQ(raising.chain(), 1);
    EXPECT_EQ(raising.calls, "one");
    Reporting crashing([](TestThread&) { throw std::logic_error("two"); });
    EXPECT_EQ(crashing.chain(), 1);
    EXPECT_EQ(crashing.calls, "crash");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"two"});
}

TEST(qxThreadBody, mayStopAndStartItself)
{
    std::atomic<int> runs{0};
    TestThread thread([&](TestThread& self) {
        ++runs;
        self.run(1);
        self.chain();
        self.stop(1);
        EXPECT_EQ(self.isStopping(1), 1);
    });
    thread.run(0);
    thread.awaitEnd();
    EXPECT_EQ(runs, 1);
}

TEST(qxThreadBody, autoDeleteDeletesTheObjectAtTheEnd)
{
    for (const bool wait : {false, true}) {
        for (const bool isRaising : {false, true}) {
            const MessageRecorder recorder;
            std::atomic<bool> isDeleted{false};
            TestThread* const thread = new TestThread([&](TestThread&) {
                if (isRaising) throw std::runtime_error("lost");
            });
            thread->onDelete = [&] { isDeleted = true; };
            thread->setAutoDelete(1);
            thread->run(wait);
            EXPECT_TRUE(comesTrue([&] { return isDeleted.load(); }));
        }
    }
}

TEST(qxThreadBody, mayDeleteItsObject)
{
    const unsigned int working = settledWorkingCount();
    for (const bool isChained : {false, true}) {
        const MessageRecorder recorder;
        const auto isReported = [&recorder] {
            qxMessage::waitLock();
            const bool isThere = !recorder.messages().empty();
            qxMessage::unLock();
            return isThere;
        };
        TestThread* const thread = new TestThread([](TestThread& self) {
            delete &self;
            qxExceptionThrows::qxThrowWarning("without an object");
        });
        isChained ? thread->chain() : thread->run(0);
        EXPECT_TRUE(comesTrue(isReported));
        EXPECT_EQ(recorder.texts(), std::vector<std::string>{"without an object"});
    }
    EXPECT_EQ(qxThread::getWorkingCount(), working);
}

// Somebody waits in `stop` while the object goes.
TEST(qxThreadBody, anObjectThatGoesWaitsForThoseInsideStop)
{
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> isDeleted{false};
        TestThread* const thread = new TestThread([](TestThread& self) {
            while (!self.isStopping(0)) qxThread::qxDelayFunction(0);
        });
        thread->onDelete = [&] { isDeleted = true; };
        thread->setAutoDelete(1);
        thread->run(0);
        thread->stop(1);
        EXPECT_TRUE(comesTrue([&] { return isDeleted.load(); }));
    }
}

} // namespace
