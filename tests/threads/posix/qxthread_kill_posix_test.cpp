// SPDX-License-Identifier: see LICENSE

#include "threads/qxthreadtest.h"

#include "qxmemory.h"

#include <atomic>

namespace
{

TEST(qxThreadKill, manyEndedThreadsLeaveTheProcessInOrder)
{
    inOwnProcess([] {
        constexpr int KILLS = 200;
        std::atomic<unsigned int> rounds{0};
        for (int i = 0; i < KILLS; ++i) {
            const unsigned int before = rounds;
            TestThread thread([&](TestThread&) {
                for (;; ++rounds) {
                    void* const first = qx_malloc(300 + rounds % 5000);
                    void* const second = qx_malloc(rounds % 256);
                    qxMessage::message(QX_LEVEL_DEBUG, "dropped %d", 1);
                    const qxString text("some text that is longer than what fits inside");
                    qx_free(second);
                    qx_free(first);
                    if (rounds % 8 == 0) qxThread::qxDelayFunction(0);
                }
            });
            thread.run(1);
            ASSERT_TRUE(comesTrue([&] { return rounds != before; }));
            thread.kill();
        }
        void* const memory = qx_malloc(1000);
        EXPECT_TRUE(memory);
        qx_free(memory);
    });
}

class EndingReceiver final : public qxMessageReceiverInterface
{
public:
    explicit EndingReceiver(qxThread& thread) : m_thread(thread) { qxMessage::addMessageReceiver(this); }
    ~EndingReceiver() override { qxMessage::removeMessageReceiver(this); }

    void onMessage(const qxString&, qxMessageLevel, const char*) override
    {
        m_thread.kill();
        isReached = true;
    }

    std::atomic<bool> isReached{false};

private:
    qxThread& m_thread;
};

TEST(qxThreadKill, insideAMessageAThreadEndsItselfAfterThat)
{
    inOwnProcess([] {
        std::atomic<int> behind{0};
        TestThread thread([&](TestThread&) {
            qxMessage::message(QX_LEVEL_WARNING, "the end");
            ++behind;
        });
        {
            const EndingReceiver receiver(thread);
            thread.run(1);
            EXPECT_TRUE(comesTrue([&] { return receiver.isReached && !thread.isRunning(0); }));
        }
        const MessageRecorder recorder;
        thread.run(0); // joins the thread of before
        thread.awaitEnd();
        EXPECT_EQ(behind, 1);
        EXPECT_EQ(recorder.texts(), std::vector<std::string>{"the end"});
    });
}

} // namespace
