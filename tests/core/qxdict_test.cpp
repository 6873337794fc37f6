// SPDX-License-Identifier: see LICENSE

#include "qxdict.h"

#include "qxkeys.h"
#include "qxstring.h"
#include "qxtype.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"

#include <cmath>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

using NumberDict = qxDict<qxUInt32CompareInterface, const char>;

/// A key that counts how often its class compares, and hashes as it is told.
class CountingKey
{
public:
    CountingKey(int value, unsigned int hash) : m_value(value), m_hash(hash) {}
    unsigned int hash() const { return m_hash; }
    bool operator==(const CountingKey& other) const
    {
        ++comparisons;
        return m_value == other.m_value;
    }

    inline static int comparisons = 0;

private:
    int m_value;
    unsigned int m_hash;
};

/// All items of a key, in the order in which find gives them.
template <class Dict, class Key>
std::string itemsOf(const Dict& dict, const Key& key)
{
    std::string text;
    const char* item = dict.find(key);
    for (; item; item = dict.find(key, item)) text += item;
    return text;
}

TEST(qxDict, growsAtTwoEntriesABucketUnlessToldNotTo)
{
    NumberDict dict(10);
    EXPECT_EQ(NumberDict().getBuckets(), 11U);
    const std::vector<char> data(200);
    const struct {
        unsigned int entries;
        bool isAutoGrow;
        unsigned int buckets;
    } rows[] = {{20, true, 10}, {21, true, 43}, {199, false, 43}, {200, true, 175}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.entries);
        dict.setAutoGrow(row.isAutoGrow);
        while (dict.entries() < row.entries) dict.enter(dict.entries() * 1000, &data[dict.entries()]);
        EXPECT_EQ(dict.getBuckets(), row.buckets); // at most one growth an entry
        for (unsigned int i = 0; i < row.entries; ++i) EXPECT_EQ(dict.find(i * 1000), &data[i]);
    }
}

TEST(qxDict, stepsThroughTheEntriesOfAKeyInTheirOrder)
{
    NumberDict dict(1, false); // everything in one bucket
    dict.enter(1, "a");
    dict.enter(2, "x");
    dict.enter(1, "b");
    dict.enter(1, "c");

    EXPECT_EQ(itemsOf(dict, 1U), "abc");
    EXPECT_EQ(itemsOf(dict, 2U), "x");
    EXPECT_EQ(dict.find(1, "unknown"), nullptr);
    EXPECT_EQ(dict.find(3), nullptr);
    EXPECT_EQ(dict.find(2, dict.find(1)), nullptr); // the item of another key
    for (const unsigned int buckets : {7U, 100U, 1U, 0U}) {
        dict.setBuckets(buckets);
        EXPECT_EQ(dict.getBuckets(), buckets == 0 ? 1 : buckets);
        EXPECT_EQ(itemsOf(dict, 1U), "abc");
    }
    const char* const twice = "d";
    for (const char* item : {twice, twice, "e"}) dict.enter(4, item);
    EXPECT_EQ(dict.find(4, twice), twice); // what was entered twice is not let behind
}

TEST(qxDict, aKeyMayBeTheEntrysOwn)
{
    qxDict<qxString, const char> dict;
    for (int i = 0; i < 50; ++i) dict.enter(qxString::str("a key with its own memory, %d", i), "a");
    for (const auto& [key, data] : dict) EXPECT_TRUE(dict.remove(key));

    EXPECT_TRUE(dict.isEmpty());
}

TEST(qxDict, findsTheSameKeyAgainWithOneComparison)
{
    qxDict<CountingKey, const char> dict(1);
    for (int i = 0; i < 20; ++i) dict.enter(CountingKey(i, 5), "a"); // all hashes equal
    dict.enter(CountingKey(20, 5), "b");
    EXPECT_STREQ(dict.find(CountingKey(20, 5)), "b");
    CountingKey::comparisons = 0;
    EXPECT_STREQ(dict.find(CountingKey(20, 5)), "b");
    EXPECT_EQ(CountingKey::comparisons, 1);

    dict.setCaching(false);
    CountingKey::comparisons = 0;
    EXPECT_STREQ(dict.find(CountingKey(20, 5)), "b");
    EXPECT_STREQ(dict.find(CountingKey(20, 5)), "b");
    EXPECT_EQ(CountingKey::comparisons, 42);
}

TEST(qxDict, storedHashesSpareComparisonsAndSurviveGrowth)
{
    // The record in a dictionary hashes by its own address: only the hash that was stored finds it again.
    qxType type(nullptr, "type");
    qxDict<qxType, const char> types(1);
    types.enter(type, "a");
    types.setBuckets(97);
    EXPECT_STREQ(types.find(type), "a");

    qxDict<CountingKey, const char> dict(1, false);
    for (int i = 0; i < 10; ++i) dict.enter(CountingKey(i, static_cast<unsigned int>(i)), "a");
    CountingKey::comparisons = 0;
    EXPECT_STREQ(dict.find(CountingKey(9, 9)), "a");
    EXPECT_EQ(CountingKey::comparisons, 1);
}

/// A dictionary, and the standard multimap that it must behave like: that keeps the order of equal keys too.
class qxDictAndMultimap : public testing::Test
{
protected:
    ~qxDictAndMultimap() noexcept override = default; // dictionaries may raise, fixtures must not

    void enter(unsigned int key, const char* item)
    {
        dict.enter(key, item);
        model.emplace(key, item);
    }

    /// Removes the first entry of the key or, unless `isFirst`, one of those that it has.
    void remove(unsigned int key, bool isFirst, unsigned int number)
    {
        const std::size_t there = model.count(key);
        if (there == 0) {
            EXPECT_FALSE(isFirst ? dict.remove(key) : dict.remove(key, "unknown"));
            return;
        }
        const auto removed = std::next(model.lower_bound(key), isFirst ? 0 : number % there);
        EXPECT_TRUE(isFirst ? dict.remove(key) : dict.remove(key, removed->second));
        model.erase(removed);
    }

    void expectEqual(unsigned int key)
    {
        const auto [first, last] = model.equal_range(key);
        const char* item = dict.find(key); // is remembered: what changes then must not be hidden
        for (auto place = first; place != last; ++place, item = dict.find(key, item))
            ASSERT_EQ(item, place->second);
        ASSERT_EQ(item, nullptr);
        ASSERT_EQ(dict.entries(), model.size());
    }

    NumberDict dict;
    std::multimap<unsigned int, const char*> model;
};

TEST_F(qxDictAndMultimap, areTheSameToARandomUser)
{
    std::mt19937 random(7);
    const auto below = [&random](unsigned int limit) { return static_cast<unsigned int>(random() % limit); };
    const std::vector<char> items(20000);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const unsigned int key = below(200);
        expectEqual(key);
        if (below(100) < (i / 4000 % 2 == 0 ? 70U : 40U)) // grows and shrinks in turn
            enter(key, &items[i]);
        else
            remove(key, below(2) == 0, below(1000));
        if (below(5000) == 0) {
            dict.clear();
            model.clear();
        }
        expectEqual(key);
        expectEqual(below(200));
    }
}

TEST(qxDict, iteratingGivesEveryEntryOnceAndItMayBeRemoved)
{
    NumberDict dict;
    EXPECT_EQ(dict.begin(), dict.end());
    std::set<unsigned int> keys;
    for (unsigned int i = 0; i < 500; ++i) dict.enter(i * i, "a");
    for (const auto& [key, data] : dict) {
        EXPECT_TRUE(keys.insert(key.getValue()).second);
        if (key.getValue() % 3 != 0) dict.remove(key, data);
    }
    EXPECT_EQ(keys.size(), 500U);
    EXPECT_EQ(*keys.rbegin(), 499U * 499U);
    EXPECT_EQ(dict.entries(), 167U); // of every third number
    EXPECT_TRUE(dict.find(36));
}

TEST(qxDict, copiesKeepOrderBucketsAndSwitches)
{
    NumberDict source(3, false);
    source.setCaching(false);
    source.setRecycling(false);
    for (const char* item : {"a", "b", "c"}) source.enter(1, item);
    const NumberDict copy(source);
    NumberDict assigned;
    assigned.enter(9, "old");
    EXPECT_TRUE(assigned.find(9));
    assigned = source;
    const NumberDict& same = assigned;
    assigned = same;
    source.clear();

    for (const NumberDict* dict : {&copy, &same}) {
        EXPECT_EQ(itemsOf(*dict, 1U), "abc");
        EXPECT_EQ(dict->entries(), 3U);
        EXPECT_EQ(dict->find(9), nullptr);
        EXPECT_EQ(dict->getBuckets(), 3U);
        EXPECT_FALSE(dict->isAutoGrow() || dict->isCaching() || dict->isRecycling());
    }
}

TEST(qxDict, movingTakesTheEntries)
{
    NumberDict first;
    first.enter(1, "a");
    EXPECT_TRUE(first.find(1));
    NumberDict second(std::move(first));
    EXPECT_STREQ(second.find(1), "a");
    first.enter(2, "b");
    EXPECT_EQ(first.find(1), nullptr); // nor is it remembered
    first = std::move(second);
    EXPECT_STREQ(first.find(1), "a");
    EXPECT_EQ(first.find(2), nullptr);
    EXPECT_EQ(second.find(1), nullptr);
}

TEST(qxDict, manyThreadsMayFindAtOnce)
{
    NumberDict dict;
    for (unsigned int i = 0; i < 100; ++i) dict.enter(i, "a");
    onThreads(2, [&dict] {
        for (unsigned int i = 0; i < 20000; ++i) ASSERT_TRUE(dict.find(i % 100));
    });
}

TEST(qxRefDict, holdsItsItems)
{
    TestObject* const object = new TestObject;
    {
        qxRefDict<qxString, TestObject> dict(3, false);
        dict.enter("a", object);
        dict.enter("b", object);
        dict.enter("c", nullptr);
        EXPECT_EQ(object->getRef(), 2U);
        dict.remove("a");
        EXPECT_EQ(object->getRef(), 1U);
        dict.clear();
        EXPECT_EQ(TestObject::alive, 0);
        for (int i = 0; i < 10; ++i) dict.enter("a", new TestObject(i));
    }
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxRefDict, copiesCloneOrShare)
{
    qxRefDict<qxString, TestObject> dict;
    dict.enter("deep", new TestObject(1));
    dict.enter("shared", TestObject::shared(2));
    dict.enter("null", nullptr);
    const qxRefDict<qxString, TestObject> copy(dict);
    qxRefDict<qxString, TestObject> assigned;
    assigned = dict;

    for (const auto* other : {&copy, static_cast<const qxRefDict<qxString, TestObject>*>(&assigned)}) {
        EXPECT_EQ(other->entries(), 3U);
        EXPECT_NE(other->find("deep"), dict.find("deep"));
        EXPECT_EQ(other->find("deep")->getRef(), 1U);
        EXPECT_EQ(other->find("shared"), dict.find("shared"));
    }
    EXPECT_EQ(dict.find("shared")->getRef(), 3U);
    assigned.setCopyMode(QX_COPY_SHARED);
    EXPECT_FALSE(assigned.find("deep")->useDeepCopy());
}

TEST(qxRefDict, anItemThatGoesMayUseTheDictionary)
{
    qxRefDict<qxString, TestObject> dict(1); // so that the first one goes first
    dict.enter("a", new TestObject(1));
    dict.enter("b", new TestObject(2));
    dict.find("a")->onDelete = [&] {
        EXPECT_EQ(dict.find("a"), nullptr);
        EXPECT_TRUE(dict.remove("b"));
        for (int i = 0; i < 30; ++i) dict.enter(qxString::str("%d", i), new TestObject(i));
    };
    dict.clear(); // takes what comes meanwhile as well

    EXPECT_TRUE(dict.isEmpty());
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxRefDict, anErrorLeavesTheDictionaryWholeAndLosesNothing)
{
    qxRefDict<qxString, qxReference> dict;
    dict.enter("a", new TestObject(1));
    dict.enter("b", new qxReference); // cannot be cloned
    const char* const text = "Unimplemented clone called for type 'qxReference'";
    EXPECT_EQ(fatalText([&] { qxRefDict<qxString, qxReference> copy(dict); }), text);

    qxRefDict<qxString, qxReference> target;
    target.enter("c", new TestObject(2));
    EXPECT_EQ(fatalText([&] { target = dict; }), text);
    EXPECT_TRUE(target.find("c"));
    EXPECT_EQ(TestObject::alive, 2);
}

TEST(qxRefDict, aDestructorThatRaisesDoesNotKeepTheOthers)
{
    auto* const dict = new qxRefDict<qxString, TestObject>;
    for (const char* key : {"a", "b", "c"}) dict->enter(key, TestObject::faulty());
    MessageRecorder recorder;
    const std::string text = TestObject::DELETED_WHILE_HELD;

    EXPECT_EQ(fatalText([&] { delete dict; }), text);
    EXPECT_EQ(recorder.texts(), (std::vector<std::string>{text, text})); // of the other two
    EXPECT_EQ(TestObject::alive, 0);
}

TEST(qxKeys, hashAndEqualityAreThoseOfTheValue)
{
    const int numbers[2] = {1, 1};
    const qxInstanceCompareInterface key(&numbers[0]);
    EXPECT_TRUE(key == qxInstanceCompareInterface(&numbers[0]));
    EXPECT_FALSE(key == qxInstanceCompareInterface(&numbers[1]));
    EXPECT_EQ(key.getInstance(), &numbers[0]);
    EXPECT_EQ(qxInstanceCompareInterface(reinterpret_cast<void*>(0x123456789ABCDEF0)).hash(), 0x9ABCDEF0);

    EXPECT_EQ(qxUInt32CompareInterface(0x89ABCDEF).hash(), 0x89ABCDEF);
    EXPECT_EQ(qxUInt64CompareInterface(0x00000003'00000005).hash(), 8U);
    EXPECT_EQ(qxUInt64CompareInterface(0xFFFFFFFF'00000003).hash(), 2U); // wraps around
    EXPECT_FALSE(qxUInt64CompareInterface(0x00000003'00000005) == qxUInt64CompareInterface(8));
    EXPECT_EQ(qxValueCompareInterface(1.1).hash(), 0x3FF19999U + 0x9999999AU);
}

TEST(qxKeys, floatingPointNumbersAreToldApartByTheirBits)
{
    qxDict<qxValueCompareInterface, const char> dict;
    dict.enter(0.0, "+");
    dict.enter(-0.0, "-");
    dict.enter(std::nan(""), "n");
    EXPECT_EQ(itemsOf(dict, 0.0) + itemsOf(dict, -0.0) + itemsOf(dict, std::nan("")), "+-n");
}

} // namespace
