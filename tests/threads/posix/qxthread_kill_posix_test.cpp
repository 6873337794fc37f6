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

} // namespace
