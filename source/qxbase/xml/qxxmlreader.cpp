// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlreader.h"

#include <algorithm>
#include <random>

namespace
{

struct Seeds {
    qxUInt64 first;
    qxUInt64 second;
};

/// Different in each process, so that nobody can prepare names of one hash.
const Seeds& seeds()
{
    static const Seeds made = [] {
        std::random_device random;
        const auto word = [&random] { return static_cast<qxUInt64>(random()) << 32 | random(); };
        return Seeds{word() | 1, word() | 1};
    }();
    return made;
}

/// Gives the memory of a large document back, and keeps that of a small one for the next.
template <class Item>
void release(std::vector<Item>& items)
{
    constexpr std::size_t KEPT = 65536;
    if (items.capacity() * sizeof(Item) > KEPT) std::vector<Item>().swap(items);
}

qxUInt64 mix(qxUInt64 left, qxUInt64 right)
{
    __extension__ typedef unsigned __int128 Wide;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<qxUInt64>(product) ^ static_cast<qxUInt64>(product >> 64);
}

std::size_t seededHash(std::string_view text)
{
    const Seeds& seed = seeds();
    qxUInt64 hash = seed.first ^ text.size();
    while (!text.empty()) {
        qxUInt64 word = 0;
        const std::size_t taken = std::min<std::size_t>(text.size(), sizeof word);
        std::memcpy(&word, text.data(), taken);
        hash = mix(hash ^ word, seed.second);
        text.remove_prefix(taken);
    }
    return static_cast<std::size_t>(mix(hash, seed.first));
}

} // namespace

void qxXmlBytes::grow(std::size_t count)
{
    const std::size_t room = 2 * (m_used + count) + 64;
    auto bytes = std::make_unique_for_overwrite<char[]>(room);
    if (m_used > 0) std::memcpy(bytes.get(), m_bytes.get(), m_used);
    m_bytes = std::move(bytes);
    m_room = room;
}

void qxXmlBytes::clear()
{
    m_used = 0;
    if (m_room <= 65536) return;
    m_bytes.reset();
    m_room = 0;
}

qxXmlNameCache::Slot& qxXmlNameCache::enter(const char16_t* tokens, std::size_t length, qxUInt64 key)
{
    Slot*& place = m_slots[key >> 56];
    if (!place) place = m_owned.emplace_back(std::make_unique_for_overwrite<Slot>()).get();
    Slot& slot = *place;
    slot.byteCount = static_cast<unsigned int>(qxTokensToUTF8(tokens, length, slot.bytes));
    slot.hasText = false;
    slot.key = key;
    slot.stamp = ++m_lastStamp;
    slot.length = static_cast<unsigned int>(length);
    std::memcpy(slot.tokens, tokens, length * sizeof(char16_t));
    return slot;
}

qxXmlNameCache::Slot& qxXmlNameCache::enterLong(const char16_t* tokens, std::size_t length, qxUInt64 key)
{
    std::vector<char> bytes(3 * length);
    m_long.byteCount = static_cast<unsigned int>(qxTokensToUTF8(tokens, length, bytes.data()));
    m_long.text = qxString(bytes.data(), m_long.byteCount);
    m_long.key = key;
    m_long.stamp = ++m_lastStamp;
    return m_long;
}

bool qxXmlAttributeList::appendToMany(std::size_t first, const qxXmlNameCache::Slot& slot)
{
    const std::size_t index = m_attributes.size();
    if (m_indexFirst != first || m_indexed != index || m_index.empty()) buildIndex(first);
    if (findIndexed(first, index, slot.view()) != index) return false;
    add(slot);
    enterIndex(index);
    return true;
}

std::size_t qxXmlAttributeList::find(std::size_t first, std::size_t end, std::string_view name) const
{
    if (end - first > FEW && m_indexFirst == first && m_indexed >= end) return findIndexed(first, end, name);
    for (std::size_t i = first; i < end; ++i) {
        if (nameOf(i) == name) return i;
    }
    return end;
}

std::size_t qxXmlAttributeList::findIndexed(std::size_t first, std::size_t end, std::string_view name) const
{
    const std::size_t mask = m_index.size() - 1;
    for (std::size_t place = seededHash(name) & mask; m_index[place] != 0; place = (place + 1) & mask) {
        const std::size_t index = first + m_index[place] - 1;
        if (nameOf(index) == name) return index < end ? index : end;
    }
    return end;
}

void qxXmlAttributeList::enterIndex(std::size_t index)
{
    if ((index - m_indexFirst + 1) * 2 > m_index.size()) return buildIndex(m_indexFirst);
    const std::size_t mask = m_index.size() - 1;
    std::size_t place = seededHash(nameOf(index)) & mask;
    while (m_index[place] != 0) place = (place + 1) & mask;
    m_index[place] = static_cast<unsigned int>(index - m_indexFirst + 1);
    m_indexed = index + 1;
}

void qxXmlAttributeList::buildIndex(std::size_t first)
{
    const std::size_t count = m_attributes.size() - first;
    m_index.assign(std::bit_ceil(4 * count), 0);
    m_indexFirst = first;
    for (std::size_t i = first; i < m_attributes.size(); ++i) enterIndex(i);
}

void qxXmlAttributeList::clear()
{
    m_attributes.clear();
    release(m_attributes);
    m_bytes.clear();
    m_index.clear();
    release(m_index);
    m_indexFirst = m_indexed = 0;
}

const qxString* qxXmlReaderState::textOf(const char16_t* tokens, std::size_t count)
{
    if (count > qxString::MAX_LENGTH) return nullptr; // a token takes a byte or more
    text.cut(0);
    char* const bytes = text.reserve(3 * count);
    const std::size_t length = qxTokensToUTF8(tokens, count, bytes);
    return length > qxString::MAX_LENGTH ? nullptr : &texts.make(bytes, length);
}

void qxXmlReaderState::clear()
{
    levels.clear();
    release(levels);
    release(m_nameTokens);
    m_nameTokensUsed = 0;
    attributes.clear();
    text.clear();
    isInIntSubset = false;
    isAttributePending = false;
    m_refused.clear();
}
