// SPDX-License-Identifier: see LICENSE

#include "qxcleanup.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <atomic>
#include <memory>
#include <thread>

namespace
{

/// Makes objects that write their number into `log` when they go.
class qxCleanupReferenceTest : public testing::Test
{
protected:
    ~qxCleanupReferenceTest() override { EXPECT_EQ(TestObject::alive, 0); }

    TestObject* object(int number)
    {
        TestObject* const made = new TestObject(number);
        made->onDelete = [this, number] { log += std::to_string(number) + " "; };
        return made;
    }

    std::string log;
};

TEST_F(qxCleanupReferenceTest, releasesOneLevelOnly)
{
    const qxCleanupReference one(object(1), 1);
    const qxCleanupReference two(object(2), 2);
    const qxCleanupReference three(object(3), 3);

    qxCleanupReference::cleanUpReferences(2);
    EXPECT_EQ(log, "2 ");
    EXPECT_TRUE(!two && one && three);
    qxCleanupReference::cleanUpReferences(7); // an unknown level
    EXPECT_EQ(log, "2 ");
}

TEST_F(qxCleanupReferenceTest, releasesTheLowestLevelAndTheNewestFirst)
{
    const qxCleanupReference first(object(50), 5);
    const qxCleanupReference lowest(object(-20), -2);
    const qxCleanupReference middle(object(30), 3);
    const qxCleanupReference newer(object(31), 3);
    const qxCleanupReference last(object(51), 5);

    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "-20 31 30 51 50 ");
    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "-20 31 30 51 50 ");
}

TEST_F(qxCleanupReferenceTest, aDestroyedHolderIsOutOfTheRegistry)
{
    {
        qxCleanupReference emptied(object(1), 1);
        emptied = nullptr; // keeps its place in the registry
        const qxCleanupReference full(object(2), 1);
    }
    EXPECT_EQ(log, "1 2 ");
    qxCleanupReference::cleanUpReferences(-1); // would touch them
}

TEST_F(qxCleanupReferenceTest, anEmptiedHolderCanBeCleanedUpAndFilledAgain)
{
    qxCleanupReference holder(object(1), 4);
    holder = nullptr;
    qxCleanupReference::cleanUpReferences(4);
    holder = object(2);
    EXPECT_EQ(holder.getLevel(), 4);

    qxCleanupReference::cleanUpReferences(4);
    EXPECT_EQ(log, "1 2 ");
}

TEST_F(qxCleanupReferenceTest, aCopyIsRegisteredToo)
{
    const qxCleanupReference shared(TestObject::shared(), 1);
    const qxCleanupReference sharedCopy(shared);
    const qxCleanupReference deep(new TestObject, 2);
    const qxCleanupReference deepCopy(deep);
    EXPECT_EQ(sharedCopy.get(), shared.get());
    EXPECT_NE(deepCopy.get(), deep.get());
    EXPECT_EQ(deepCopy.getLevel(), 2);

    qxCleanupReference::cleanUpReferences(2);
    EXPECT_TRUE(!deep && !deepCopy && shared);
    qxCleanupReference::cleanUpReferences(1);
    EXPECT_TRUE(!shared && !sharedCopy);
}

TEST_F(qxCleanupReferenceTest, assigningAHolderTakesItsLevel)
{
    qxCleanupReference holder(object(1), 1);
    const qxCleanupReference other(object(2), 2);
    holder = other;
    EXPECT_EQ(log, "1 ");
    EXPECT_EQ(holder.getLevel(), 2);
    EXPECT_EQ(other->getRef(), 2U);

    qxCleanupReference::cleanUpReferences(1);
    EXPECT_TRUE(holder);
    qxCleanupReference::cleanUpReferences(2);
    EXPECT_TRUE(!holder && !other);
}

TEST_F(qxCleanupReferenceTest, assigningMakesAHolderTheNewest)
{
    qxCleanupReference first(object(1), 1);
    const qxCleanupReference second(object(2), 1);
    first = object(3);
    EXPECT_EQ(log, "1 ");

    qxCleanupReference::cleanUpReferences(1);
    EXPECT_EQ(log, "1 3 2 ");
}

TEST_F(qxCleanupReferenceTest, assigningWhatItHoldsChangesNothing)
{
    qxCleanupReference first(object(1), 1);
    const qxCleanupReference second(object(2), 1);
    first = first.get();
    const qxCleanupReference& same = first;
    first = same;
    EXPECT_EQ(first->getRef(), 1U);

    qxCleanupReference::cleanUpReferences(1);
    EXPECT_EQ(log, "2 1 "); // still older than the second
}

TEST_F(qxCleanupReferenceTest, anObjectMayTakeOtherHoldersAlong)
{
    auto second = std::make_unique<qxCleanupReference>(object(2), 1);
    TestObject* const last = object(1);
    last->onDelete = [&] { second.reset(); };
    const qxCleanupReference first(last, 1); // goes before the second, as the newest

    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "2 ");
}

TEST_F(qxCleanupReferenceTest, holdersThatRegisterMeanwhileStay)
{
    qxCleanupReference late; // at level 0
    qxCleanupReference refilled(object(2), 1);
    TestObject* const first = object(1);
    first->onDelete = [&] {
        late = object(3);
        refilled = object(4);
    };
    const qxCleanupReference holder(first, 1);

    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_TRUE(late && refilled);
    EXPECT_EQ(log, "2 ");
    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "2 3 4 ");
}

TEST_F(qxCleanupReferenceTest, aCleanUpMayStartAnother)
{
    const qxCleanupReference high(object(9), 9);
    TestObject* const first = object(1);
    first->onDelete = [&] { qxCleanupReference::cleanUpReferences(9); };
    const qxCleanupReference holder(first, 1);
    const qxCleanupReference between(object(5), 5);

    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "9 5 ");
}

TEST_F(qxCleanupReferenceTest, anErrorLeavesTheRegistryUsable)
{
    const qxCleanupReference later(object(2), 2);
    {
        TestObject* const faulty = object(1);
        const qxCleanupReference holder(faulty, 1);
        faulty->onDelete = [faulty] { faulty->ref(); };
        EXPECT_EQ(fatalText([] { qxCleanupReference::cleanUpReferences(-1); }),
                  "REFERENCE MISMATCH ! Deleted referenced object with nonzero reference count");
    }
    // Another thread must find the lock free.
    std::thread([] { qxCleanupReference::cleanUpReferences(-1); }).join();
    EXPECT_EQ(log, "2 ");
}

TEST(qxCleanupReference, threadsRegisterAtOnce)
{
    std::atomic<bool> isOver{false};
    std::thread cleaner([&] {
        while (!isOver) qxCleanupReference::cleanUpReferences(100);
    });
    const auto work = [] {
        for (int i = 0; i < 500; ++i) {
            qxCleanupReference holder(new qxReference, 1);
            holder = new qxReference;
            qxCleanupReference other;
            other = holder;
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    isOver = true;
    cleaner.join();
}

} // namespace
