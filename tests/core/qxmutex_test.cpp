// SPDX-License-Identifier: see LICENSE

#include "qxmutex.h"

#include "qxtestsupport.h"
#include "qxthread.h"

#include <cstdint>
#include <cstdio>
#include <new>

namespace
{

/// Whether another thread can take the lock; it gives it back.
bool isFreeForOthers(const qxMutex& lock)
{
    return onAnotherThread([&] {
        const bool isTaken = lock.tryLock();
        lock.unLock(); // ignored where it was not taken
        return isTaken;
    });
}

TEST(qxMutex, isGivenBackAsOftenAsItWasTaken)
{
    const qxMutex lock; // all operations are const
    lock.unLock();      // one too many is ignored
    for (int i = 0; i < 2; ++i) lock.waitLock();
    EXPECT_EQ(lock.tryLock(), 1);

    for (unsigned int held = 3; held > 0; --held) {
        EXPECT_EQ(lock.isLocked(), 1);
        EXPECT_EQ(onAnotherThread([&] { return lock.isLocked(); }), 1);
        EXPECT_EQ(lock.getSpinLockCount(), held); // asking changes nothing
        EXPECT_FALSE(isFreeForOthers(lock));      // nor does an unlock by somebody else
        lock.unLock();
    }
    EXPECT_EQ(lock.isLocked(), 0);
    EXPECT_EQ(lock.getSpinLockCount(), 0U);
    EXPECT_TRUE(isFreeForOthers(lock));
}

TEST(qxMutex, keepsOtherThreadsOut)
{
    const qxMutex lock;
    int sum = 0;
    onThreads(4, [&] {
        for (int n = 0; n < 5000; ++n) {
            lock.waitLock();
            lock.waitLock();
            ++sum;
            lock.unLock();
            lock.unLock();
        }
    });
    EXPECT_EQ(sum, 20000);
}

TEST(qxMutex, tellsItsOwnerOnlyWhenItTracksHim)
{
    for (const bool isTracking : {false, true}) {
        SCOPED_TRACE(isTracking);
        qxMutex lock(isTracking);
        lock.waitLock();
        ASSERT_EQ(lock.tryLock(), 1);

        EXPECT_EQ(lock.getOwnerThreadID(), isTracking ? qxThread::getThreadID() : 0U);
        EXPECT_EQ(lock.getSpinLockCount(), 2U);
        lock.unLock();
        lock.unLock();
        EXPECT_EQ(lock.getOwnerThreadID(), 0U);
    }
}

TEST(qxMutex, copyingTakesOverWhetherTheOwnerIsTrackedAndNothingElse)
{
    const qxMutex untracked(0);
    untracked.waitLock();
    qxMutex copy(untracked);
    EXPECT_EQ(copy.isLocked(), 0);
    copy.waitLock();
    EXPECT_EQ(copy.getOwnerThreadID(), 0U);

    copy = qxMutex(1);
    EXPECT_FALSE(isFreeForOthers(copy));
    EXPECT_EQ(copy.getOwnerThreadID(), qxThread::getThreadID());
    copy.unLock();
    EXPECT_EQ(copy.isLocked(), 0);
    untracked.unLock();
}

TEST(qxMutex, warnsWhenItIsDestroyedHeld)
{
    MessageRecorder recorder;
    alignas(qxMutex) unsigned char room[sizeof(qxMutex)];
    qxMutex* const lock = new (room) qxMutex;
    lock->waitLock();
    lock->~qxMutex();

    char text[100];
    std::snprintf(text, sizeof(text), "qxMutex (%lx) deleted with unbalanced Lock/unLock",
                  static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(room)));
    const std::vector<RecordedMessage> expected = {{"QuaxoSDK", 0x4200, text}};
    EXPECT_EQ(recorder.messages(), expected);
}

TEST(qxMutex, destroyedHeldDuringAnotherErrorLetsThatOneThrough)
{
    struct Raising final : qxMessageReceiverInterface {
        void onMessage(const qxString&, qxMessageLevel, const char*) override
        {
            qxExceptionThrows::qxThrowFatal("from the receiver");
        }
    } receiver;
    qxMessage::addMessageReceiver(&receiver);

    EXPECT_EQ(fatalText([] {
                  qxMutex lock;
                  lock.waitLock();
                  qxExceptionThrows::qxThrowFatal("the first one");
              }),
              "the first one");
}

} // namespace
