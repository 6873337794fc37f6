// SPDX-License-Identifier: see LICENSE

#include "qxrefinstance.h"

#include "qxtestsupport.h"

namespace
{

TEST(qxRefInstanceArray, holdsObjectsAndGivesThemByTheirID)
{
    const qxRefPointer<qxReference> first(new qxReference);
    const qxRefPointer<qxReference> second(new qxReference);
    {
        qxRefInstanceArray array;
        for (const unsigned int id : {0U, 1U, 2U}) EXPECT_EQ(array.add(id == 1 ? second : first), id);
        qxRefInstanceArray copy;
        copy.add(new qxReference); // goes by the assignment
        copy = array;
        const qxRefInstanceArray& same = copy;
        copy = same;
        array.clear();
        EXPECT_EQ(array.getCount(), 0U);

        EXPECT_EQ(copy.get(0), first.get());
        EXPECT_EQ(copy.get(1), second.get());
        EXPECT_EQ(copy.get(2), first.get());
        EXPECT_EQ(copy.get(3), nullptr);
        EXPECT_EQ(copy.get(0xFFFFFFFF), nullptr);
        EXPECT_EQ(first->getRef(), 3U);
    }
    EXPECT_EQ(first->getRef(), 1U);
}

TEST(qxRefInstanceDictionary, givesTheIDOfAnObject)
{
    const qxRefPointer<qxReference> first(new qxReference);
    const qxRefPointer<qxReference> second(new qxReference);
    qxRefInstanceDictionary dictionary;
    EXPECT_TRUE(dictionary.enter(first, 7));
    EXPECT_FALSE(dictionary.enter(first, 8));
    EXPECT_EQ(first->getRef(), 2U);

    unsigned int id = 99;
    EXPECT_FALSE(dictionary.find(second, id));
    EXPECT_EQ(id, 99U);
    EXPECT_TRUE(dictionary.find(first, id));
    EXPECT_EQ(id, 7U);

    qxRefInstanceDictionary copy;
    copy = dictionary;
    dictionary.clear();
    EXPECT_FALSE(dictionary.find(first, id));
    EXPECT_TRUE(copy.find(first, id));
    EXPECT_EQ(first->getRef(), 2U);
}

/// Cannot be let go without an error.
class Faulty final : public qxReference
{
public:
    void unref() override
    {
        qxReference::unref();
        qxExceptionThrows::qxThrowFatal("faulty");
    }
};

TEST(qxRefInstanceArray, anObjectThatRaisesLeavesTheRestInOrder)
{
    const qxRefPointer<qxReference> object(new qxReference);
    EXPECT_EQ(fatalText([&] {
                  qxRefInstanceArray array;
                  array.add(object);
                  array.add(new Faulty);
                  try {
                      array.clear();
                  } catch (const qxFatalError&) {
                      EXPECT_EQ(array.getCount(), 1U);
                      array.clear();
                      throw;
                  }
              }),
              "faulty");
    EXPECT_EQ(object->getRef(), 1U);
}

} // namespace
