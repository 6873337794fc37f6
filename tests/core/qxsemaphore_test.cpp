// SPDX-License-Identifier: see LICENSE

#include "qxsemaphore.h"

#include "qxtestsupport.h"
#include "qxthread.h"

#include <atomic>
#include <thread>

namespace
{

TEST(qxSemaphore, grantsByOwnerValueAndMaximum)
{
    const struct {
        unsigned int owner, count, maximum; // the semaphore
        unsigned int value;                 // the request
        unsigned char granted;
    } rows[] = {
        {0, 0, 0, 0, 1}, {0, 0, 0, 7, 1}, {7, 0, 0, 8, 1}, // free: any value
        {7, 1, 0, 7, 1}, {7, 1, 0, 8, 0}, {0, 1, 0, 7, 0}, // held: its own value
        {7, 1, 2, 7, 1}, {7, 2, 2, 7, 0}, {7, 3, 2, 7, 0}, // the maximum holds for its owner too
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.owner << row.count << row.maximum << row.value);
        qxSemaphore semaphore(row.owner, row.count, row.maximum);
        EXPECT_EQ(semaphore.tryLock(row.value, 0), row.granted);
        EXPECT_EQ(semaphore.getSpinLockCount(), row.count + row.granted);
        EXPECT_EQ(semaphore.getOwnerValue(), row.granted ? row.value : row.owner);
    }
}

TEST(qxSemaphore, keepsItsOwnerValueWhenItBecomesFree)
{
    qxSemaphore semaphore;
    ASSERT_EQ(semaphore.waitLock(5), 1);
    semaphore.unLock();
    EXPECT_EQ(semaphore.getSpinLockCount(), 0U);
    EXPECT_EQ(semaphore.getOwnerValue(), 5U);

    semaphore.unLock(); // one too many is ignored
    EXPECT_EQ(semaphore.getSpinLockCount(), 0U);
}

TEST(qxSemaphore, tryLockSleepsWholePeriodsOnly)
{
    qxSemaphore semaphore(1, 1);
    const struct {
        unsigned int timeout;
        double least; // seconds
    } rows[] = {{0, 0.0}, {9, 0.0}, {10, 0.0099}, {25, 0.0198}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.timeout);
        EXPECT_GE(secondsOf([&] { EXPECT_EQ(semaphore.tryLock(2, row.timeout), 0); }), row.least);
    }
}

TEST(qxSemaphore, setMaxLockCountReturnsTheOneBefore)
{
    qxSemaphore semaphore;
    EXPECT_EQ(semaphore.setMaxLockCount(2), 0U);
    for (const int granted : {1, 1, 0}) EXPECT_EQ(semaphore.tryLock(5, 0), granted);

    EXPECT_EQ(semaphore.setMaxLockCount(1), 2U); // nobody is thrown out
    EXPECT_EQ(semaphore.getSpinLockCount(), 2U);
    semaphore.unLock();
    EXPECT_EQ(semaphore.tryLock(5, 0), 0);
    EXPECT_EQ(semaphore.setMaxLockCount(0), 1U);
    EXPECT_EQ(semaphore.tryLock(5, 0), 1);
}

TEST(qxSemaphore, anyThreadMayGiveBack)
{
    qxSemaphore semaphore;
    semaphore.waitLock(1);
    std::thread other([&] { semaphore.unLock(); });
    EXPECT_EQ(semaphore.waitLock(2), 1);
    other.join();
}

TEST(qxSemaphore, aCopyIsHeldAsItsSource)
{
    qxSemaphore semaphore(3, 0, 2);
    semaphore.waitLock(4);
    qxSemaphore copy(semaphore);
    qxSemaphore assigned;
    assigned = semaphore;
    semaphore.unLock();

    for (qxSemaphore* held : {&copy, &assigned}) {
        EXPECT_EQ(held->getOwnerValue(), 4U);
        EXPECT_EQ(held->getSpinLockCount(), 1U);
        EXPECT_EQ(held->setMaxLockCount(0), 2U);
    }
}

TEST(qxReadWriteMutex, admitsBesideWhoIsInside)
{
    enum Way { READ, SHARED_WRITE, WRITE };
    const auto tryLock = [](const qxReadWriteMutex& lock, Way way) {
        return way == READ           ? lock.tryLockRead()
               : way == SHARED_WRITE ? lock.tryLockSharedWrite()
                                     : lock.tryLockWrite();
    };
    const struct {
        Way inside;
        Way request;
        unsigned char own;   // granted to the thread that is inside
        unsigned char other; // granted to another
    } rows[] = {
        {READ, READ, 1, 1},         {READ, SHARED_WRITE, 0, 0},         {READ, WRITE, 0, 0},
        {SHARED_WRITE, READ, 0, 0}, {SHARED_WRITE, SHARED_WRITE, 1, 1}, {SHARED_WRITE, WRITE, 0, 0},
        {WRITE, READ, 0, 0},        {WRITE, SHARED_WRITE, 0, 0},        {WRITE, WRITE, 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.inside << row.request);
        const qxReadWriteMutex lock;
        ASSERT_EQ(tryLock(lock, row.inside), 1);
        EXPECT_EQ(lock.getOwnerValue(),
                  row.inside == WRITE ? qxThread::getThreadID() : row.inside == SHARED_WRITE);
        EXPECT_EQ(tryLock(lock, row.request), row.own);
        if (row.own) lock.unLock();
        EXPECT_EQ(onAnotherThread([&] { return tryLock(lock, row.request); }), row.other);
    }
}

TEST(qxReadWriteMutex, readersAndWritersExcludeEachOther)
{
    const qxReadWriteMutex lock;
    int value = 0;
    std::atomic<int> torn{0};
    onThreads(4, [&](unsigned int number) {
        for (int n = 0; n < 300; ++n) {
            const bool isWriter = number % 2 == 0;
            if (isWriter)
                lock.waitLockWrite();
            else
                lock.waitLockRead();
            if (value % 2 != 0) ++torn;
            for (int i = 0; isWriter && i < 2; ++i) ++value;
            lock.unLock();
        }
    });
    EXPECT_EQ(value, 1200);
    EXPECT_EQ(torn, 0);
}

} // namespace
