// SPDX-License-Identifier: see LICENSE

#include "qxcleanup.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

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

TEST_F(qxCleanupReferenceTest, releasesALevelOrAllTheLowestAndTheNewestFirst)
{
    const struct {
        int level;
        const char* log;
    } rows[] = {{-1, "-20 31 30 51 50 "}, {3, "31 30 "}, {-2, "-20 "}, {7, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.level);
        log.clear();
        const qxCleanupReference first(object(50), 5);
        const qxCleanupReference lowest(object(-20), -2);
        const qxCleanupReference middle(object(30), 3);
        const qxCleanupReference newer(object(31), 3);
        const qxCleanupReference last(object(51), 5);

        for (int i = 0; i < 2; ++i) qxCleanupReference::cleanUpReferences(row.level);
        EXPECT_EQ(log, row.log);
        EXPECT_EQ(!middle, log.find("30") != std::string::npos);
    }
}

TEST_F(qxCleanupReferenceTest, anEmptiedHolderCanBeCleanedUpFilledAndDestroyed)
{
    {
        qxCleanupReference holder(object(1), 4);
        holder = nullptr; // keeps its place in the registry
        qxCleanupReference::cleanUpReferences(4);
        holder = object(2);
        EXPECT_EQ(holder.getLevel(), 4);
        qxCleanupReference::cleanUpReferences(4);
        EXPECT_EQ(log, "1 2 ");

        holder = object(3);
        holder = nullptr;
        const qxCleanupReference full(object(4), 4);
    }
    EXPECT_EQ(log, "1 2 3 4 ");
    qxCleanupReference::cleanUpReferences(-1); // would touch what is still registered
}

TEST_F(qxCleanupReferenceTest, copiesAndAssignedHoldersAreRegisteredUnderTheLevelTheyTake)
{
    const qxCleanupReference shared(TestObject::shared(), 1);
    const qxCleanupReference sharedCopy(shared);
    const qxCleanupReference deep(new TestObject, 2);
    const qxCleanupReference deepCopy(deep);
    qxCleanupReference assigned(object(1), 1);
    assigned = deep;
    EXPECT_EQ(log, "1 ");
    EXPECT_EQ(sharedCopy.get(), shared.get());
    EXPECT_NE(deepCopy.get(), deep.get());
    EXPECT_EQ(assigned.get(), deep.get());
    EXPECT_EQ(deepCopy.getLevel(), 2);
    EXPECT_EQ(assigned.getLevel(), 2);

    qxCleanupReference::cleanUpReferences(1);
    EXPECT_TRUE(!shared && !sharedCopy && deep && deepCopy && assigned);
    qxCleanupReference::cleanUpReferences(2);
    EXPECT_TRUE(!deep && !deepCopy && !assigned);
}

TEST_F(qxCleanupReferenceTest, assigningAnotherObjectMakesAHolderTheNewest)
{
    qxCleanupReference first(object(1), 1);
    qxCleanupReference second(object(2), 1);
    const qxCleanupReference third(object(3), 1);
    first = first.get(); // what it holds already: nothing changes
    const qxCleanupReference& same = first;
    first = same;
    EXPECT_EQ(first->getRef(), 1U);
    second = object(4);
    EXPECT_EQ(log, "2 ");

    qxCleanupReference::cleanUpReferences(1);
    EXPECT_EQ(log, "2 4 3 1 ");
}

TEST_F(qxCleanupReferenceTest, anObjectThatGoesMayUseTheRegistry)
{
    auto taken = std::make_unique<qxCleanupReference>(object(2), 1);
    qxCleanupReference late; // at level 0
    qxCleanupReference refilled(object(3), 1);
    const qxCleanupReference high(object(9), 9);
    const qxCleanupReference between(object(5), 5);
    TestObject* const first = object(1);
    first->onDelete = [&] {
        taken.reset();
        late = object(6); // holders that register meanwhile stay
        refilled = object(7);
        qxCleanupReference::cleanUpReferences(9);
    };
    const qxCleanupReference holder(first, 1); // goes before the others, as the newest of the lowest level

    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "2 3 9 5 ");
    EXPECT_TRUE(late && refilled);
    qxCleanupReference::cleanUpReferences(-1);
    EXPECT_EQ(log, "2 3 9 5 6 7 ");
}

TEST_F(qxCleanupReferenceTest, anErrorLeavesTheRegistryUsable)
{
    const qxCleanupReference later(object(2), 2);
    {
        const qxCleanupReference holder(TestObject::faulty(), 1);
        EXPECT_EQ(fatalText([] { qxCleanupReference::cleanUpReferences(-1); }),
                  TestObject::DELETED_WHILE_HELD);
    }
    // Another thread must find the lock free.
    std::thread([] { qxCleanupReference::cleanUpReferences(-1); }).join();
    EXPECT_EQ(log, "2 ");
}

TEST(qxCleanupReference, threadsRegisterAtOnce)
{
    onThreads(3, [](unsigned int number) {
        for (int i = 0; i < 500; ++i) {
            if (number == 0) qxCleanupReference::cleanUpReferences(100);
            qxCleanupReference holder(new qxReference, 1);
            holder = new qxReference;
            qxCleanupReference other;
            other = holder;
        }
    });
}

} // namespace
