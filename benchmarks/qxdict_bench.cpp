// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxdict.h"
#include "qxkeys.h"
#include "qxstring.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{

constexpr char ITEMS[200'000] = {}; // the i-th key is entered with the i-th of these

// The i-th key of each kind, as if by chance: multiples of one number would fall into the buckets of a modulus more evenly
// than real keys do. The mixing is the finalizer of SplitMix64.
std::uint64_t makeNumber(unsigned int i)
{
    std::uint64_t number = (i + 1) * 0x9E3779B97F4A7C15U;
    number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9U;
    number = (number ^ number >> 27) * 0x94D049BB133111EBU;
    return number ^ number >> 31;
}

std::string makeText(unsigned int i)
{
    char text[30];
    std::snprintf(text, sizeof(text), "scene-%016llx", static_cast<unsigned long long>(makeNumber(i)));
    return text;
}

template <class Key>
Key makeKey(unsigned int i);

template <>
qxString makeKey(unsigned int i)
{
    return makeText(i).c_str();
}

template <>
std::string makeKey(unsigned int i)
{
    return makeText(i);
}

template <>
qxUInt64CompareInterface makeKey(unsigned int i)
{
    return qxUInt64CompareInterface(makeNumber(i));
}

template <>
std::uint64_t makeKey(unsigned int i)
{
    return makeNumber(i);
}

// The two dictionaries under one interface.
template <class Key>
struct Ours {
    using KeyType = Key;
    qxDict<Key, const char> entries;

    void enter(const Key& key, const char* item) { entries.enter(key, item); }
    const char* find(const Key& key) const { return entries.find(key); }
};

template <class Key>
struct Standard {
    using KeyType = Key;
    std::unordered_map<Key, const char*> entries;

    void enter(const Key& key, const char* item) { entries.emplace(key, item); }
    const char* find(const Key& key) const
    {
        const auto found = entries.find(key);
        return found == entries.end() ? nullptr : found->second;
    }
};

template <class Key>
std::vector<Key> makeKeys(unsigned int first, unsigned int count)
{
    std::vector<Key> keys;
    keys.reserve(count);
    for (unsigned int i = 0; i < count; ++i) keys.push_back(makeKey<Key>(first + i));
    return keys;
}

template <class Dictionary, class Keys>
void enterAll(Dictionary& dictionary, const Keys& keys)
{
    const char* item = ITEMS;
    for (const auto& key : keys) dictionary.enter(key, item++);
}

template <class Dictionary>
qxBenchWork enterWork(unsigned int count)
{
    return [keys = makeKeys<typename Dictionary::KeyType>(0, count)] {
        Dictionary dictionary;
        enterAll(dictionary, keys);
        return static_cast<std::uint64_t>(dictionary.find(keys.back()) - ITEMS);
    };
}

// Finds `sought`, in an order of chance, in a dictionary of `keys`.
template <class Dictionary, class Keys>
qxBenchWork findWork(const Keys& keys, Keys sought)
{
    const auto dictionary = std::make_shared<Dictionary>();
    enterAll(*dictionary, keys);
    std::shuffle(sought.begin(), sought.end(), std::mt19937(1)); // the same order in every dictionary and run
    return [dictionary, sought] {
        std::uint64_t sum = 0;
        for (const auto& key : sought)
            if (const char* item = dictionary->find(key)) sum += static_cast<std::uint64_t>(item - ITEMS) + 1;
        return sum;
    };
}

template <class Dictionary>
qxBenchWork hitWork(unsigned int count)
{
    const auto keys = makeKeys<typename Dictionary::KeyType>(0, count);
    return findWork<Dictionary>(keys, keys);
}

template <class Dictionary>
qxBenchWork missWork(unsigned int count)
{
    using Key = typename Dictionary::KeyType;
    return findWork<Dictionary>(makeKeys<Key>(0, count), makeKeys<Key>(count, count));
}

// Names that differ in a decimal number only: the hash of strings spreads these badly.
template <class Dictionary>
qxBenchWork numberedWork(unsigned int count)
{
    std::vector<typename Dictionary::KeyType> keys;
    for (unsigned int i = 0; i < count; ++i) keys.push_back(("node" + std::to_string(i)).c_str());
    return findWork<Dictionary>(keys, keys);
}

// Finds the same key again and again.
template <class Dictionary>
qxBenchWork repeatWork(unsigned int count)
{
    using Key = typename Dictionary::KeyType;
    const auto dictionary = std::make_shared<Dictionary>();
    enterAll(*dictionary, makeKeys<Key>(0, count));
    return [dictionary, count, key = makeKey<Key>(count / 2)] {
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < count; ++i) {
            qxBenchKeep(key);
            sum += static_cast<std::uint64_t>(dictionary->find(key) - ITEMS);
        }
        return sum;
    };
}

constexpr unsigned int SMALL = 1000;
constexpr unsigned int LARGE = 100'000;

using OurTexts = Ours<qxString>;
using OurNumbers = Ours<qxUInt64CompareInterface>;
using StandardTexts = Standard<std::string>;
using StandardNumbers = Standard<std::uint64_t>;

template <class First, class Second, unsigned int COUNT>
void enter(qxBenchCase& work)
{
    work.amount = COUNT;
    work.add("qxbase", enterWork<First>(COUNT));
    work.add("std::unordered_map", enterWork<Second>(COUNT));
}
const qxBenchEntry ENTER_ROWS[] = {
    {"dictionary/enter-text-1000", QX_BENCH_NANOSECONDS, enter<OurTexts, StandardTexts, SMALL>},
    {"dictionary/enter-text-100000", QX_BENCH_NANOSECONDS, enter<OurTexts, StandardTexts, LARGE>},
    {"dictionary/enter-number-1000", QX_BENCH_NANOSECONDS, enter<OurNumbers, StandardNumbers, SMALL>},
    {"dictionary/enter-number-100000", QX_BENCH_NANOSECONDS, enter<OurNumbers, StandardNumbers, LARGE>},
};

template <class First, class Second, unsigned int COUNT>
void hit(qxBenchCase& work)
{
    work.amount = COUNT;
    work.add("qxbase", hitWork<First>(COUNT));
    work.add("std::unordered_map", hitWork<Second>(COUNT));
}
const qxBenchEntry HIT_ROWS[] = {
    {"dictionary/find-hit-text-1000", QX_BENCH_NANOSECONDS, hit<OurTexts, StandardTexts, SMALL>},
    {"dictionary/find-hit-text-100000", QX_BENCH_NANOSECONDS, hit<OurTexts, StandardTexts, LARGE>},
    {"dictionary/find-hit-number-1000", QX_BENCH_NANOSECONDS, hit<OurNumbers, StandardNumbers, SMALL>},
    {"dictionary/find-hit-number-100000", QX_BENCH_NANOSECONDS, hit<OurNumbers, StandardNumbers, LARGE>},
};

template <class First, class Second, unsigned int COUNT>
void miss(qxBenchCase& work)
{
    work.amount = COUNT;
    work.add("qxbase", missWork<First>(COUNT));
    work.add("std::unordered_map", missWork<Second>(COUNT));
}
const qxBenchEntry MISS_ROWS[] = {
    {"dictionary/find-miss-text-1000", QX_BENCH_NANOSECONDS, miss<OurTexts, StandardTexts, SMALL>},
    {"dictionary/find-miss-text-100000", QX_BENCH_NANOSECONDS, miss<OurTexts, StandardTexts, LARGE>},
    {"dictionary/find-miss-number-1000", QX_BENCH_NANOSECONDS, miss<OurNumbers, StandardNumbers, SMALL>},
    {"dictionary/find-miss-number-100000", QX_BENCH_NANOSECONDS, miss<OurNumbers, StandardNumbers, LARGE>},
};

template <class First, class Second, unsigned int COUNT>
void repeat(qxBenchCase& work)
{
    work.amount = COUNT;
    work.add("qxbase", repeatWork<First>(COUNT));
    work.add("std::unordered_map", repeatWork<Second>(COUNT));
}
const qxBenchEntry REPEAT_ROWS[] = {
    {"dictionary/repeat-text-1000", QX_BENCH_NANOSECONDS, repeat<OurTexts, StandardTexts, SMALL>},
    {"dictionary/repeat-text-100000", QX_BENCH_NANOSECONDS, repeat<OurTexts, StandardTexts, LARGE>},
    {"dictionary/repeat-number-1000", QX_BENCH_NANOSECONDS, repeat<OurNumbers, StandardNumbers, SMALL>},
    {"dictionary/repeat-number-100000", QX_BENCH_NANOSECONDS, repeat<OurNumbers, StandardNumbers, LARGE>},
};

void numbered(qxBenchCase& work)
{
    work.amount = SMALL;
    work.add("qxbase", numberedWork<OurTexts>(SMALL));
    work.add("std::unordered_map", numberedWork<StandardTexts>(SMALL));
}
const qxBenchEntry NUMBERED("dictionary/find-hit-numbered-text-1000", QX_BENCH_NANOSECONDS, numbered);

} // namespace
