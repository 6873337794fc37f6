// SPDX-License-Identifier: see LICENSE

#include "qxlist.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <cmath>
#include <iterator>
#include <string>
#include <vector>

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

TEST(qxList, sortsWithTheNewestFirstAmongEqualValues)
{
    const struct {
        double value;
        bool hadEqual;
        const char* list;
    } rows[] = {
        {2, false, "a"},         {1, false, "ba"},
        {2, true, "bca"},        {3, false, "bcad"},
        {1.5, false, "becad"},   {1, true, "fbecad"},
        {3, true, "fbecagd"},    {std::nan(""), false, "hfbecagd"}, // no number goes to the head
        {4, false, "hfbecagdi"},
    };
    const char* const items[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i"};
    qxList<const char> list;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(items[i]);
        EXPECT_EQ(list.insertSorted(items[i], rows[i].value), rows[i].hadEqual);
        EXPECT_EQ(textOf(list), rows[i].list);
    }
    EXPECT_STREQ(list.getLast(), "i");
}

TEST(qxList, insertsAtTheTailAndRemovesTheFirstEntryOfAnItem)
{
    const char* const a = "a";
    const char* const b = "b";
    const struct {
        std::vector<const char*> items;
        const char* removed;
        const char* left;
    } rows[] = {
        {{a, b, a}, a, "ba"}, {{a, b, a}, b, "aa"}, {{a, b, a}, "c", "aba"},
        {{a, b}, b, "a"},     {{a}, a, ""},         {{}, a, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.left);
        qxList<const char> list;
        EXPECT_TRUE(list.isEmpty() && !list.getFirst() && !list.getLast());
        for (const char* item : row.items) list.insert(item);

        const bool isThere = list.contains(row.removed);
        EXPECT_EQ(list.remove(row.removed), isThere);
        EXPECT_EQ(textOf(list), row.left);
        EXPECT_EQ(list.entries(), textOf(list).size());
        list.insert("z"); // behind the right last node
        EXPECT_EQ(textOf(list), std::string(row.left) + "z");
        EXPECT_STREQ(list.getLast(), "z");
    }
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
    const qxList<const char>& same = assigned;
    assigned = same;

    for (qxList<const char>* list : {&copy, &assigned}) {
        EXPECT_FALSE(list->isRecycling());
        list->insertSorted("2", 2);
        EXPECT_EQ(textOf(*list), "123");
        EXPECT_EQ(list->entries(), 3U);
    }
    EXPECT_EQ(textOf(source), "13");
}

TEST(qxList, movingTakesTheNodesAndCallsNoHookForThem)
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
    {
        qxRefList<TestObject> list;
        list.insert(object);
        list.insertSorted(object, 0);
        EXPECT_EQ(object->getRef(), 2U);
        list.remove(object);
        EXPECT_EQ(object->getRef(), 1U);
        list.clear();
        EXPECT_EQ(TestObject::alive, 0);
        list.insert(new TestObject);
    }
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxRefList, copiesCloneOrShareAndMovesDoNeither)
{
    qxRefList<TestObject> list;
    list.insert(new TestObject(1));
    list.insert(TestObject::shared(2));
    list.insert(nullptr);
    const qxRefList<TestObject> copy(list);
    qxRefList<TestObject> assigned;
    assigned.insert(new TestObject(3));
    assigned = list;

    for (const qxRefList<TestObject>* other : {&copy, static_cast<const qxRefList<TestObject>*>(&assigned)}) {
        EXPECT_NE(other->getFirst(), list.getFirst());
        EXPECT_EQ(other->getFirst()->getRef(), 1U);
        EXPECT_EQ(*++other->begin(), *++list.begin());
        EXPECT_EQ(other->getLast(), nullptr);
    }
    const TestObject* const first = list.getFirst();
    qxRefList<TestObject> moved(std::move(list));
    assigned = std::move(moved);
    const qxRefList<TestObject>& same = assigned;
    assigned = same;
    EXPECT_EQ(assigned.getFirst(), first);
    EXPECT_EQ(first->getRef(), 1U);
    EXPECT_EQ((*++assigned.begin())->getRef(), 2U); // the copy's and this one
    EXPECT_EQ(TestObject::alive, 3);

    assigned.setCopyMode(QX_COPY_SHARED);
    for (TestObject* item : assigned) EXPECT_TRUE(!item || !item->useDeepCopy());
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
    list->insert(TestObject::faulty());
    list->insert(new TestObject(2));

    EXPECT_EQ(fatalText([&] { delete list; }), TestObject::DELETED_WHILE_HELD);
    EXPECT_EQ(TestObject::alive, 0);
}

} // namespace
