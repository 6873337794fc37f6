// SPDX-License-Identifier: see LICENSE

#include "qxlist.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <cmath>
#include <string>

namespace
{

/// A list that writes what its hooks are called with.
class LoggingList : public qxList<const char>
{
public:
    std::string log;

protected:
    void onInsert(const char* item) override { log += std::string("+") + item; }
    void onRemove(const char* item) override { log += std::string("-") + item; }
};

template <class List>
std::string textOf(const List& list)
{
    std::string text;
    for (const char* item : list) text += item;
    return text;
}

std::string valuesOf(const qxRefList<TestObject>& list)
{
    std::string text;
    for (const TestObject* object : list) text += std::to_string(object->value) + " ";
    return text;
}

TEST(qxList, insertsAtTheTail)
{
    qxList<const char> list;
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.getFirst(), nullptr);
    list.insert("a");
    list.insert("b");
    list.insert("a");

    EXPECT_EQ(textOf(list), "aba");
    EXPECT_EQ(list.entries(), 3U);
    EXPECT_STREQ(list.getFirst(), "a");
    EXPECT_STREQ(list.getLast(), "a");
}

TEST(qxList, sortsWithTheNewestFirstAmongEqualValues)
{
    qxList<const char> list;

    EXPECT_FALSE(list.insertSorted("old 2 ", 2));
    EXPECT_FALSE(list.insertSorted("1 ", 1));
    EXPECT_TRUE(list.insertSorted("new 2 ", 2));
    EXPECT_FALSE(list.insertSorted("3 ", 3));
    EXPECT_FALSE(list.insertSorted("1.5 ", 1.5));
    EXPECT_TRUE(list.insertSorted("new 1 ", 1));
    EXPECT_EQ(textOf(list), "new 1 1 1.5 new 2 old 2 3 ");
    EXPECT_STREQ(list.getLast(), "3 ");
}

TEST(qxList, aValueThatIsNoNumberGoesToTheHead)
{
    qxList<const char> list;
    list.insertSorted("1", 1);
    EXPECT_FALSE(list.insertSorted("nan", std::nan("")));
    list.insertSorted("2", 2);

    EXPECT_EQ(textOf(list), "nan12");
}

TEST(qxList, removesTheFirstEntryOfAnItem)
{
    const char* const a = "a";
    const char* const b = "b";
    const struct {
        const char* item;
        const char* left;
        const char* last;
    } rows[] = {{a, "ba", a}, {b, "aa", a}, {"c", "aba", a}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.item);
        qxList<const char> list;
        for (const char* item : {a, b, a}) list.insert(item);

        const bool isThere = list.contains(row.item);
        EXPECT_EQ(list.remove(row.item), isThere);
        EXPECT_EQ(textOf(list), row.left);
        EXPECT_EQ(list.entries(), textOf(list).size());
        list.insert("z"); // behind the right last node
        EXPECT_EQ(textOf(list), std::string(row.left) + "z");
    }
}

TEST(qxList, removingTheLastItemMovesTheTail)
{
    qxList<const char> list;
    const char* const b = "b";
    list.insert("a");
    list.insert(b);
    list.remove(b);
    list.insert("c");

    EXPECT_EQ(textOf(list), "ac");
}

TEST(qxList, callsItsHooks)
{
    LoggingList list;
    list.insert("a");
    list.insertSorted("b", 1);
    list.remove(list.getFirst());
    list.insert("c");
    list.clear();

    EXPECT_EQ(list.log, "+a+b-a+c-b-c");
}

TEST(qxList, theItemJustGivenMayBeRemoved)
{
    for (const bool isRecycling : {true, false}) {
        SCOPED_TRACE(isRecycling);
        qxList<const char> list;
        list.setRecycling(isRecycling);
        for (const char* item : {"a", "b", "c", "d"}) list.insert(item);
        std::string seen;
        for (const char* item : list) {
            seen += item;
            list.remove(item);
            if (*item == 'a') list.insert("e"); // takes the recycled node
        }
        EXPECT_EQ(seen, "abcde");
        EXPECT_TRUE(list.isEmpty());
    }
}

TEST(qxList, copiesKeepTheOrderTheValuesAndTheSwitch)
{
    qxList<const char> source;
    source.setRecycling(false);
    source.insertSorted("1", 1);
    source.insertSorted("3", 3);
    qxList<const char> copy(source);
    qxList<const char> assigned;
    assigned.insert("old");
    assigned = source;

    for (qxList<const char>* list : {&copy, &assigned}) {
        EXPECT_FALSE(list->isRecycling());
        list->insertSorted("2", 2);
        EXPECT_EQ(textOf(*list), "123");
        EXPECT_EQ(list->entries(), 3U);
    }
    EXPECT_EQ(textOf(source), "13");
}

TEST(qxList, assigningItselfChangesNothing)
{
    LoggingList list;
    list.insert("a");
    const LoggingList& same = list;
    list = same;

    EXPECT_EQ(textOf(list), "a");
    EXPECT_EQ(list.log, "+a");
}

TEST(qxList, movingTakesTheNodes)
{
    LoggingList first;
    first.insert("a");
    LoggingList second;
    second.insert("b");
    static_cast<qxList<const char>&>(second) = static_cast<qxList<const char>&&>(first);

    EXPECT_EQ(textOf(second), "a");
    EXPECT_EQ(second.log, "+b-b");
    EXPECT_TRUE(first.isEmpty());
    const qxList<const char> third(std::move(static_cast<qxList<const char>&>(second)));
    EXPECT_EQ(textOf(third), "a");
}

TEST(qxRefList, holdsItsItems)
{
    TestObject* const object = new TestObject;
    qxRefList<TestObject> list;
    list.insert(object);
    list.insertSorted(object, 0);
    EXPECT_EQ(object->getRef(), 2U);
    list.remove(object);
    EXPECT_EQ(object->getRef(), 1U);
    list.remove(object);
    EXPECT_EQ(TestObject::alive, 0);

    list.insert(new TestObject);
    list.clear();
    EXPECT_EQ(TestObject::alive, 0);
    {
        qxRefList<TestObject> other;
        other.insert(new TestObject);
    }
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxRefList, copiesCloneOrShare)
{
    qxRefList<TestObject> list;
    list.insert(new TestObject(1));
    list.insert(TestObject::shared(2));
    list.insert(nullptr);
    const qxRefList<TestObject> copy(list);
    qxRefList<TestObject> assigned;
    assigned = list;

    for (const qxRefList<TestObject>* other : {&copy, static_cast<const qxRefList<TestObject>*>(&assigned)}) {
        EXPECT_NE(other->getFirst(), list.getFirst());
        EXPECT_EQ(other->getFirst()->getRef(), 1U);
        EXPECT_EQ(*++other->begin(), *++list.begin());
        EXPECT_EQ(other->getLast(), nullptr);
    }
    EXPECT_EQ(list.getFirst()->getRef(), 1U);
    EXPECT_EQ((*++list.begin())->getRef(), 3U);
}

TEST(qxRefList, handsTheCopyModeToAllItems)
{
    qxRefList<TestObject> list;
    list.insert(new TestObject(1));
    list.insert(nullptr);
    list.insert(new TestObject(2));
    list.setCopyMode(QX_COPY_SHARED);

    EXPECT_FALSE(list.getFirst()->useDeepCopy());
    EXPECT_FALSE(list.getLast()->useDeepCopy());
}

TEST(qxRefList, movingNeitherClonesNorCounts)
{
    qxRefList<TestObject> list;
    list.insert(new TestObject(1));
    qxRefList<TestObject> moved(std::move(list));
    EXPECT_EQ(TestObject::alive, 1);
    list.insert(new TestObject(2));
    list = std::move(moved);

    EXPECT_EQ(valuesOf(list), "1 ");
    EXPECT_EQ(list.getFirst()->getRef(), 1U);
    EXPECT_EQ(TestObject::alive, 1);
}

TEST(qxRefList, anItemThatGoesMayUseTheList)
{
    qxRefList<TestObject> list;
    TestObject* const second = new TestObject(2);
    TestObject* const first = new TestObject(1);
    list.insert(first);
    list.insert(second);
    std::string met;
    first->onDelete = [&] {
        met = valuesOf(list);
        list.remove(second);
        list.insert(new TestObject(3));
    };
    list.remove(first);

    EXPECT_EQ(met, "2 ");
    EXPECT_EQ(valuesOf(list), "3 ");
    EXPECT_EQ(list.entries(), 1U);
    list.getFirst()->onDelete = [&] { list.insert(new TestObject(4)); };
    list.clear(); // takes what comes meanwhile as well
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxRefList, assigningAListThatGoesWithTheOldItems)
{
    auto* const inner = new qxRefList<TestObject>;
    inner->insert(new TestObject(7));
    qxRefList<TestObject> list;
    list.insert(new TestObject(1));
    list.getFirst()->onDelete = [&] { delete inner; };
    list = *inner;

    EXPECT_EQ(valuesOf(list), "7 ");
    EXPECT_EQ(TestObject::alive, 1);
}

TEST(qxRefList, anErrorLeavesTheListWholeAndLosesNothing)
{
    qxRefList<qxReference> list;
    list.insert(new TestObject(1));
    list.insert(new qxReference); // cannot be cloned
    const char* const text = "Unimplemented clone called for type 'qxReference'";
    EXPECT_EQ(fatalText([&] { qxRefList<qxReference> copy(list); }), text);

    qxRefList<qxReference> target;
    target.insert(new TestObject(2));
    EXPECT_EQ(fatalText([&] { target = list; }), text);
    EXPECT_EQ(target.entries(), 1U);
    EXPECT_EQ(TestObject::alive, 2);
}

TEST(qxRefList, aDestructorThatRaisesDoesNotKeepTheOthers)
{
    auto* const list = new qxRefList<TestObject>;
    TestObject* const faulty = new TestObject(1);
    faulty->onDelete = [faulty] { faulty->ref(); };
    list->insert(faulty);
    list->insert(new TestObject(2));

    EXPECT_EQ(fatalText([&] { delete list; }),
              "REFERENCE MISMATCH ! Deleted referenced object with nonzero reference count");
    EXPECT_EQ(TestObject::alive, 0);
}

} // namespace
