// What the XML reader keeps while it reads: open elements, their attributes, names and texts ready to hand out.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"
#include "text/qxtokencodec.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

/// Names as they stand in the document, with the strings made of them.
///
/// Documents use few names over and over: a name that is found costs a comparison instead of a conversion. A
/// name that comes takes the place of another with the same key, so the cache does not grow.
class qxXmlNameCache
{
public:
    static constexpr std::size_t LONGEST = 30; ///< tokens of a name that is kept

    struct Slot {
        unsigned int stamp = 0; ///< changes with the name
        unsigned int length = 0;
        char16_t tokens[LONGEST + 2];
        qxString name;
    };

    /// The slot that holds the name of 1 or more tokens, made when it is not there. Up to three tokens behind
    /// the name are read, but mean nothing. The slot holds until the next call.
    Slot& find(const char16_t* tokens, std::size_t length)
    {
        Slot& slot = length <= LONGEST ? m_slots[keyOf(tokens, length)] : m_long;
        if (slot.length != length || std::memcmp(slot.tokens, tokens, length * sizeof(char16_t)) != 0)
            enter(slot, tokens, length);
        return slot;
    }

private:
    static std::size_t keyOf(const char16_t* tokens, std::size_t length)
    {
        qxUInt64 head = 0;
        qxUInt64 tail = 0;
        std::memcpy(&head, tokens, sizeof head);
        if (length < 4) {
            head &= (1ULL << (16 * length)) - 1;
        } else {
            std::memcpy(&tail, tokens + length - 4, sizeof tail);
        }
        const qxUInt64 mixed = (head ^ (tail << 13 | tail >> 51) ^ length) * 0x9E3779B97F4A7C15ULL;
        return static_cast<std::size_t>(mixed >> 56);
    }

    void enter(Slot& slot, const char16_t* tokens, std::size_t length);

    std::array<Slot, 256> m_slots;
    Slot m_long; // its `length` stays 0: it is made anew each time
    unsigned int m_lastStamp = 0;
};

/// Strings for texts of every length, one for each size of buffer, so that no text needs memory of its own.
class qxXmlTextStrings
{
public:
    /// A string of these bytes, at most 65,535; valid until the next call.
    const qxString& make(const char* bytes, std::size_t count)
    {
        if (count == 0) return m_empty;
        return m_strings[sizeClass(count)].assign(bytes, count);
    }

private:
    /// Lengths of one class have buffers of one size.
    static std::size_t sizeClass(std::size_t count)
    {
        if (count < 64) return count / 16;
        const auto bits = static_cast<std::size_t>(std::bit_width(count)); // 7 to 16
        return 4 + (bits - 7) * 4 + ((count >> (bits - 3)) & 3);
    }

    qxString m_empty;
    std::array<qxString, 44> m_strings;
};

/// The attributes of all open elements, in one piece of memory.
class qxXmlAttributeList
{
public:
    struct Attribute {
        std::size_t begin; ///< of the name in the bytes; the value stands behind it
        unsigned int nameLength;
        unsigned int valueLength;
    };

    std::size_t size() const { return m_attributes.size(); }
    std::string_view nameOf(std::size_t index) const
    {
        return {m_bytes.data() + m_attributes[index].begin, m_attributes[index].nameLength};
    }
    std::string_view valueOf(std::size_t index) const
    {
        const Attribute& attribute = m_attributes[index];
        return {m_bytes.data() + attribute.begin + attribute.nameLength, attribute.valueLength};
    }

    /// Appends an attribute without a value; false when one of this name is there from `first` on, the
    /// attributes of one element.
    bool append(std::size_t first, const qxString& name);

    /// Gives the last attribute its value.
    void setValue(const char16_t* tokens, std::size_t count);
    void setValue(const qxString& value);

    /// The attribute of this name from `first` up to `end`; `end` when there is none.
    std::size_t find(std::size_t first, std::size_t end, std::string_view name) const;

    /// Removes the attributes from `first` on.
    void cut(std::size_t first)
    {
        if (m_attributes.size() == first) return;
        m_used = m_attributes[first].begin;
        m_attributes.resize(first);
        if (m_indexed > first) m_indexed = m_indexFirst = first;
    }

    void clear();

private:
    static constexpr std::size_t FEW = 12; // attributes of an element that are compared one by one

    char* makeRoom(std::size_t bytes);
    std::size_t findIndexed(std::size_t first, std::size_t end, std::string_view name) const;
    void enterIndex(std::size_t index);
    void buildIndex(std::size_t first);

    std::vector<Attribute> m_attributes;
    std::vector<char> m_bytes;
    std::size_t m_used = 0; // of the bytes

    // An open hash table over the attributes of the element that has many; its hash is seeded, so that no
    // document can choose names that fall together.
    std::vector<unsigned int> m_index; // of attributes from m_indexFirst on, plus 1; 0 is free
    std::size_t m_indexFirst = 0;
    std::size_t m_indexed = 0; // the attributes from m_indexFirst to here are entered
};

/// One open element.
struct qxXmlLevel {
    std::size_t nameBegin; ///< in the tokens of names
    unsigned int nameLength;
    unsigned int stamp; ///< the name is still in `slot` when its stamp is this one
    qxXmlNameCache::Slot* slot;
    std::size_t firstAttribute;
    qxUInt64 contentsStart; ///< position behind the start tag; qxXmlReaderState::NOT_KEPT while not wanted
};

/// The state of one reader.
class qxXmlReaderState
{
public:
    static constexpr qxUInt64 NOT_KEPT = ~0ULL;

    bool isReading = false;
    bool isInIntSubset = false;      ///< of the document type, where few parameter references are allowed
    bool isAttributePending = false; ///< the last attribute has no value yet

    qxUInt64 valuePos = 0; ///< of the attribute value read last, without its quotes
    std::size_t valueLength = 0;
    qxString attributeName; ///< of the last attribute when its slot has gone

    qxXmlNameCache names;
    qxXmlTextStrings texts;
    qxXmlAttributeList attributes;
    std::vector<qxXmlLevel> levels; ///< the root first

    unsigned int level() const { return static_cast<unsigned int>(levels.size()); }

    /// Opens an element.
    void push(qxXmlNameCache::Slot& slot, const char16_t* tokens, std::size_t length)
    {
        const std::size_t begin = m_nameTokensUsed;
        if (m_nameTokens.size() - begin < length + 4) m_nameTokens.resize(2 * (begin + length) + 256);
        std::memcpy(m_nameTokens.data() + begin, tokens, length * sizeof(char16_t));
        m_nameTokensUsed += length;
        levels.push_back(
            {begin, static_cast<unsigned int>(length), slot.stamp, &slot, attributes.size(), NOT_KEPT});
    }

    void pop()
    {
        m_nameTokensUsed = levels.back().nameBegin;
        attributes.cut(levels.back().firstAttribute);
        levels.pop_back();
    }

    const char16_t* nameTokens(const qxXmlLevel& level) const
    {
        return m_nameTokens.data() + level.nameBegin;
    }

    /// The name of an open element; holds until another name is looked up.
    const qxString& nameOf(const qxXmlLevel& level)
    {
        if (level.slot->stamp == level.stamp) return level.slot->name;
        return names.find(nameTokens(level), level.nameLength).name;
    }

    /// The attributes of an open level, from 1: first to end.
    std::size_t firstAttribute(unsigned int level) const { return levels[level - 1].firstAttribute; }
    std::size_t endAttribute(unsigned int level) const
    {
        if (level < levels.size()) return levels[level].firstAttribute;
        return attributes.size() - (isAttributePending ? 1 : 0);
    }

    /// The attribute of an open level; its end when there is none.
    std::size_t findAttribute(unsigned int level, const qxString& name) const
    {
        return attributes.find(firstAttribute(level), endAttribute(level), {name.getString(), name.length()});
    }

    /// The tokens as a string; null when they take more than 65,535 bytes. Valid until the next call.
    const qxString* textOf(const char16_t* tokens, std::size_t count);

    /// Forgets all levels.
    void clear();

private:
    std::vector<char16_t> m_nameTokens;
    std::size_t m_nameTokensUsed = 0;
    std::vector<char> m_scratch;
};
