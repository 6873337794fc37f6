// SPDX-License-Identifier: see LICENSE

#include "qxarray.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <cstdint>
#include <limits>
#include <string>

namespace
{

template <class Array>
std::string textOf(const Array& array)
{
    std::string text;
    for (const auto& item : array) text += item + ' ';
    return text;
}

/// Copies raise once `copiesLeft` are made; counts the live ones.
class Fragile
{
public:
    Fragile() { ++alive; }
    Fragile(const Fragile&)
    {
        if (copiesLeft-- == 0) throw 1;
        ++alive;
    }
    ~Fragile() { --alive; }
    Fragile& operator=(const Fragile&) = default;

    inline static int alive = 0;
    inline static int copiesLeft = 0;
};

TEST(qxDynamicArray, growsToTheNextMultipleOfTheGranularity)
{
    const struct {
        unsigned int granularity;
        unsigned int needed;
        unsigned int capacity;
    } rows[] = {{16, 1, 16}, {16, 16, 16}, {16, 17, 32}, {16, 100, 112}, {10, 41, 50}, {1, 7, 7}, {0, 7, 7}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.needed);
        qxDynamicArray<int> array(row.granularity);
        EXPECT_EQ(array.getCapacity(), 0U);
        array.resize(row.needed);
        EXPECT_EQ(array.getCapacity(), row.capacity);
        EXPECT_EQ(array.entries(), row.needed);
    }
}

TEST(qxDynamicArray, refusesSizesThatDoNotFit)
{
    constexpr unsigned int LARGEST = std::numeric_limits<unsigned int>::max();
    struct Large {
        char bytes[65536];
    };
    qxMemoryControl::enableReports(false);
    qxDynamicArray<char> coarse(0xFFFFFFF0);
    coarse.reserve(0);
    EXPECT_THROW(coarse.reserve(0xFFFFFFF1), std::bad_alloc); // would round up beyond 32 bits
    qxDynamicArray<char> small;
    small.append('a');
    EXPECT_THROW(small.resize(LARGEST), std::bad_alloc);
    EXPECT_THROW(small.resize(std::size_t{LARGEST} + 1), std::bad_alloc);
    EXPECT_THROW(small.append("", std::numeric_limits<std::size_t>::max()), std::bad_alloc);
    qxDynamicArray<Large> large;
    EXPECT_THROW(large.reserve(LARGEST - 15), std::bad_alloc); // 256 TiB
    qxMemoryControl::enableReports(true);

    EXPECT_EQ(textOf(small).size(), 1U);
    EXPECT_EQ(small.getCapacity(), 16U);
}

TEST(qxDynamicArray, keepsItsItemsWhenItGrowsAlsoByAnItemOfItsOwn)
{
    const std::string text = "a text that needs memory of its own ";
    qxDynamicArray<std::string> texts(1);
    qxDynamicArray<int> numbers(2);
    for (int i = 0; i < 100; ++i) {
        texts.append(text + std::to_string(i));
        texts.append(texts[0]);
        numbers.append(i);
    }
    for (int i = 0; i < 100; ++i) {
        const auto index = static_cast<unsigned int>(i);
        EXPECT_EQ(texts[2 * index], text + std::to_string(i));
        EXPECT_EQ(texts[2 * index + 1], text + "0");
        EXPECT_EQ(numbers[index], i);
    }
}

TEST(qxDynamicArray, resizingMakesZerosAndAnIndexBeyondTheEndRaises)
{
    qxDynamicArray<int> array;
    array.append(5);
    array.resize(3);
    EXPECT_EQ(array[0] + array[1] + array[2], 5);
    array[2] = 9;
    array.resize(1);
    array.resize(3);
    EXPECT_EQ(array[2], 0);
    EXPECT_EQ(array.getCapacity(), 16U);

    const qxDynamicArray<int>& constant = array;
    for (const std::size_t index : {std::size_t{3}, std::size_t{16}, SIZE_MAX}) {
        EXPECT_EQ(fatalText([&] { array[index] = 1; }), "Template-Index out of bounds in array");
        EXPECT_EQ(fatalText([&] { (void)constant[index]; }), "Template-Index out of bounds in array");
    }
}

TEST(qxDynamicArray, copiesAndMoves)
{
    qxDynamicArray<std::string> source(4);
    for (const char* item : {"a", "b"}) source.append(item);
    qxDynamicArray<std::string> copy(source);
    qxDynamicArray<std::string> assigned;
    assigned.append("old");
    assigned = source;
    const qxDynamicArray<std::string>& same = assigned;
    assigned = same;
    source[0] = "c";
    qxDynamicArray<std::string> moved;
    moved.append("old");
    moved = std::move(source);

    EXPECT_EQ(source.entries(), 0U);
    EXPECT_EQ(textOf(copy) + textOf(assigned) + textOf(moved), "a b a b c b ");
    EXPECT_EQ(assigned.getGranularity(), 4U);
    copy.clear();
    EXPECT_EQ(copy.entries(), 0U);
    EXPECT_EQ(copy.getCapacity(), 4U);
}

TEST(qxDynamicArray, aCopyThatRaisesLosesNothing)
{
    Fragile::copiesLeft = 1000;
    {
        qxDynamicArray<Fragile> array(4);
        array.resize(4);
        Fragile::copiesLeft = 3; // growing copies four, besides the new one
        EXPECT_THROW(array.append(Fragile()), int);
        EXPECT_EQ(array.entries(), 4U);
        EXPECT_EQ(array.getCapacity(), 4U);

        Fragile::copiesLeft = 2;
        EXPECT_THROW(qxDynamicArray<Fragile> copy(array), int);
        EXPECT_EQ(Fragile::alive, 4);
    }
    EXPECT_EQ(Fragile::alive, 0);
}

TEST(qxDynamicArray, aDestructorThatRaisesDoesNotKeepTheOthers)
{
    const auto fillAndLetGo = [] {
        qxDynamicArray<qxRefPointer<TestObject>> array;
        for (TestObject* object : {new TestObject, new TestObject, TestObject::faulty()})
            array.append(qxRefPointer<TestObject>(object));
    };
    EXPECT_EQ(fatalText(fillAndLetGo), TestObject::DELETED_WHILE_HELD);
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxArray, isAsLargeAsItsItemsNeed)
{
    qxArray<int> array(3);
    EXPECT_EQ(array.entries(), 3U);
    EXPECT_EQ(array[2], 0);
    array.resize(5);
    array[4] = 7;
    EXPECT_EQ(array.getData()[4], 7);
    EXPECT_EQ(array.end() - array.begin(), 5);
    EXPECT_EQ(fatalText([&] { array[5] = 1; }), "Template-Index out of bounds in array");

    const std::string items[] = {"a", "b"};
    const qxArray<std::string> source(items, 2);
    qxArray<std::string> copy;
    copy = source;
    copy[0] = "c";
    EXPECT_EQ(textOf(source) + textOf(copy), "a b c b ");
}

} // namespace
