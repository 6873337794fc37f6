// SPDX-License-Identifier: see LICENSE

#include "qxreference.h"

#include "qxarray.h"
#include "qxevent.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <atomic>
#include <vector>

namespace
{

using Holder = qxRefPointer<TestObject>;

constexpr const char* SPELT = "REFERENCE MISMATCH ! Unref an object with zero reference count.";
constexpr const char* MISSPELT = "REFRENCE MISMATCH ! Unref an object with zero reference count.";

class SafeObject : public qxThreadSafeReference
{
public:
    explicit SafeObject(std::atomic<int>* deletions = nullptr) : m_deletions(deletions) {}
    SafeObject(const SafeObject&) = default;
    ~SafeObject() noexcept(false) override
    {
        if (m_deletions) ++*m_deletions;
    }

    /// Stands for what another thread may do between the end of the count and the deletion.
    bool checkDelete() override
    {
        if (isTakenBeforeDeletion) ref();
        isTakenBeforeDeletion = false;
        return qxThreadSafeReference::checkDelete();
    }

    bool isTakenBeforeDeletion = false;

private:
    std::atomic<int>* m_deletions;
};

template <class Object>
class qxReferenceCount : public testing::Test
{};
using CountedClasses = testing::Types<TestObject, SafeObject, qxEvent>;
TYPED_TEST_SUITE(qxReferenceCount, CountedClasses);

TYPED_TEST(qxReferenceCount, startsAtZeroAndCountsHolders)
{
    TypeParam object;
    EXPECT_EQ(object.getRef(), 0U);
    object.ref();
    object.ref();
    EXPECT_EQ(object.getRef(), 2U);
    object.unref();
    EXPECT_FALSE(object.checkDelete());
    EXPECT_EQ(object.unrefNoDelete(), 0U);
    EXPECT_EQ(fatalText([&] { object.unrefNoDelete(); }), MISSPELT);
    EXPECT_EQ(object.getRef(), 0U);
}

TYPED_TEST(qxReferenceCount, aCopyTakesTheModeAndNoHolders)
{
    TypeParam copied;
    copied.setCopyMode(QX_COPY_SHARED);
    copied.ref();
    TypeParam copy(copied);
    TypeParam object;
    static_cast<qxReference&>(object) = copied;

    for (TypeParam* const other : {&copy, &object}) {
        EXPECT_EQ(other->getRef(), 0U);
        EXPECT_EQ(other->getCopyMode(), QX_COPY_SHARED);
    }
    copied.unrefNoDelete();
}

TEST(qxReference, tellsTheTwoUnrefsApart)
{
    EXPECT_EQ(fatalText([] { TestObject().unref(); }), SPELT);
    EXPECT_EQ(fatalText([] { qxEvent().unref(); }), SPELT);
    EXPECT_EQ(fatalText([] { SafeObject().unref(); }), MISSPELT);
}

TEST(qxReference, goesWithItsLastHolderOrDirectly)
{
    TestObject* object = new TestObject;
    object->ref();
    EXPECT_EQ(object->unrefNoDelete(), 0U);
    EXPECT_EQ(TestObject::alive, 1);
    EXPECT_TRUE(object->checkDelete());
    EXPECT_EQ(TestObject::alive, 0);

    object = new TestObject;
    object->ref();
    object->unref();
    EXPECT_EQ(TestObject::alive, 0);

    delete new TestObject;
    TestObject* const held = new TestObject;
    held->ref();
    EXPECT_EQ(fatalText([&] { delete held; }), TestObject::DELETED_WHILE_HELD);
    EXPECT_EQ(TestObject::alive, 0); // it is gone all the same, its memory too
}

TEST(qxReference, faultsBesideAnotherExceptionAreMessages)
{
    MessageRecorder recorder;
    try {
        TestObject held;
        held.ref();
        TestObject uncounted;
        const qxRefPointer<TestObject> holder(&uncounted);
        uncounted.unrefNoDelete();
        throw 1;
    } catch (int) {}

    EXPECT_EQ(recorder.messages(),
              (std::vector<RecordedMessage>{{"QuaxoSDK", QX_LEVEL_FATAL, SPELT},
                                            {"QuaxoSDK", QX_LEVEL_FATAL, TestObject::DELETED_WHILE_HELD}}));
}

TEST(qxReference, cannotBeClonedUnlessItsClassSaysHow)
{
    const qxReference object;
    const SafeObject derived;

    EXPECT_EQ(fatalText([&] { object.clone(); }), "Unimplemented clone called for type 'qxReference'");
    EXPECT_EQ(fatalText([&] { derived.clone(); }), "Unimplemented clone called for type 'qxReference'");
}

TEST(qxReference, everyCopyModeButZeroShares)
{
    TestObject object;
    EXPECT_TRUE(object.useDeepCopy());
    for (const unsigned int mode : {1U, 2U, 0xFFFFFFFFU}) {
        object.setCopyMode(static_cast<qxCopyMode>(mode));
        EXPECT_FALSE(object.useDeepCopy());
        EXPECT_EQ(object.getCopyMode(), mode);
    }
    EXPECT_TRUE(object.releaseRefs());
}

TEST(qxThreadSafeReference, survivesWhenTakenBeforeTheDeletion)
{
    std::atomic<int> deletions{0};
    SafeObject* const object = new SafeObject(&deletions);
    object->ref();
    object->isTakenBeforeDeletion = true;

    object->unref();
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(object->getRef(), 1U);
    object->unref();
    EXPECT_EQ(deletions, 1);
}

TEST(qxThreadSafeReference, isCountedByManyThreads)
{
    std::atomic<int> deletions{0};
    for (int round = 0; round < 50; ++round) {
        SafeObject* const object = new SafeObject(&deletions);
        for (int i = 0; i < 3; ++i) object->ref(); // held for each thread before it starts
        onThreads(3, [object] {
            for (int n = 0; n < 100; ++n) qxRefPointer<SafeObject> holder(object);
            object->unref(); // whoever is last deletes it
        });
    }
    EXPECT_EQ(deletions, 50);
}

TEST(qxRefPointer, aCopyClonesOrShares)
{
    const Holder deep(new TestObject(1));
    const Holder shared(TestObject::shared(2));
    const Holder deepCopy(deep);
    const Holder sharedCopy(shared);
    const Holder emptyCopy((Holder()));

    EXPECT_NE(deepCopy.get(), deep.get());
    EXPECT_EQ(deepCopy->value, 1);
    EXPECT_EQ(deepCopy->getRef(), 1U);
    EXPECT_EQ(deep->getRef(), 1U);
    EXPECT_EQ(sharedCopy.get(), shared.get());
    EXPECT_EQ(shared->getRef(), 2U);
    EXPECT_FALSE(emptyCopy);
}

TEST(qxRefPointer, assignmentSharesWhateverTheMode)
{
    const Holder first(new TestObject(1));
    Holder second(new TestObject(2));
    second = first;
    EXPECT_EQ(second.get(), first.get());
    EXPECT_EQ(first->getRef(), 2U);
    EXPECT_EQ(TestObject::alive, 1);

    const Holder& same = second;
    second = same;
    second = first.get();
    EXPECT_EQ(first->getRef(), 2U);

    second = nullptr;
    EXPECT_TRUE(!second);
    EXPECT_EQ(first->getRef(), 1U);
}

TEST(qxRefPointer, movingNeitherClonesNorCounts)
{
    TestObject* const object = new TestObject;
    Holder first(object);
    Holder second(std::move(first));
    EXPECT_TRUE(!first);
    first = std::move(second);
    EXPECT_EQ(first.get(), object);
    EXPECT_EQ(object->getRef(), 1U);

    Holder same(object);
    first = std::move(same);
    EXPECT_TRUE(!same);
    qxDynamicArray<Holder> many(1);
    many.append(std::move(first));
    for (int i = 0; i < 3; ++i) many.append(Holder()); // moves the first one again and again
    EXPECT_EQ(many[0].get(), object);
    EXPECT_EQ(object->getRef(), 1U);
}

TEST(qxRefPointer, theOldObjectMeetsTheNewOneInTheHolder)
{
    Holder holder(new TestObject(1));
    TestObject* const next = new TestObject(2);
    TestObject* met = nullptr;
    holder->onDelete = [&] {
        met = holder.get();
        holder = next; // which changes nothing
    };
    holder = next;

    EXPECT_EQ(met, next);
    EXPECT_EQ(next->getRef(), 1U);
}

TEST(qxRefPointer, handsTheCopyModeOn)
{
    Holder holder(new TestObject);
    holder.setCopyMode(QX_COPY_SHARED);
    EXPECT_EQ(holder->getCopyMode(), QX_COPY_SHARED);

    holder = nullptr;
    holder.setCopyMode(QX_COPY_DEEP);
}

TEST(qxRefPointer, passesOnWhatTheDestructorRaises)
{
    EXPECT_EQ(fatalText([] { const Holder holder(TestObject::faulty()); }), TestObject::DELETED_WHILE_HELD);
    EXPECT_EQ(TestObject::alive, 0);
}

} // namespace
