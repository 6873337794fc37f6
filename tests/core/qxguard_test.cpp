// SPDX-License-Identifier: see LICENSE

#include "qxguard.h"

#include "qxtestsupport.h"
#include "qxthread.h"

#include <type_traits>

namespace
{

static_assert(!std::is_copy_constructible_v<qxBodyGuard> && !std::is_copy_assignable_v<qxBodyGuard>);
static_assert(!std::is_copy_constructible_v<qxBodyReadGuard>);
static_assert(!std::is_copy_constructible_v<qxBodySharedWriteGuard>);
static_assert(!std::is_copy_constructible_v<qxBodyWriteGuard>);
static_assert(!std::is_copy_constructible_v<qxRecursiveBodyGuard>);

TEST(qxBodyGuard, holdsTheLockForItsScopeAlsoWhenTheBodyRaises)
{
    const qxMutex lock;
    EXPECT_EQ(fatalText([&] {
                  const qxBodyGuard outer(lock);
                  const qxBodyGuard inner(lock);
                  EXPECT_EQ(lock.getSpinLockCount(), 2U);
                  qxExceptionThrows::qxThrowFatal("out");
              }),
              "out");
    EXPECT_EQ(lock.isLocked(), 0);
}

template <class Guard>
unsigned int ownerValueUnder(const qxReadWriteMutex& lock)
{
    const Guard guard(lock);
    EXPECT_EQ(lock.getSpinLockCount(), 1U);
    return lock.getOwnerValue();
}

TEST(qxBodyReadGuard, eachKindTakesItsOwnLock)
{
    const qxReadWriteMutex lock;
    EXPECT_EQ(ownerValueUnder<qxBodySharedWriteGuard>(lock), 1U);
    EXPECT_EQ(ownerValueUnder<qxBodyReadGuard>(lock), 0U);
    EXPECT_EQ(ownerValueUnder<qxBodyWriteGuard>(lock), qxThread::getThreadID());
    EXPECT_EQ(lock.getSpinLockCount(), 0U);
}

TEST(qxRecursiveBodyGuard, countsTheDepthAndWarnsWhenThatIsZeroAtTheEnd)
{
    MessageRecorder recorder;
    unsigned int counter = 0;
    {
        const qxRecursiveBodyGuard outer(counter);
        EXPECT_EQ(outer.getRecursionDepth(), 1U);
        const qxRecursiveBodyGuard inner(counter);
        EXPECT_EQ(outer.getRecursionDepth(), 2U);
    }
    EXPECT_EQ(counter, 0U);
    EXPECT_TRUE(recorder.messages().empty());
    {
        const qxRecursiveBodyGuard guard(counter);
        counter = 0;
    }
    const std::vector<RecordedMessage> expected = {
        {"QuaxoSDK", 0x4000, "RECURSIVE MISMATCH ! Left recursion with zero recursion count."}};
    EXPECT_EQ(recorder.messages(), expected);
    EXPECT_EQ(counter, 0U);
}

} // namespace
