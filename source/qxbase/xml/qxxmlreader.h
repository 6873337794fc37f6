// What the XML reader keeps while it reads: open elements, their attributes, names and texts ready to hand out.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "core/qxstringrefill.h"
#include "qxstring.h"
#include "text/qxtokencodec.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

/// Bytes that grow at the end. Some memory behind them can be read.
class qxXmlBytes
{
public:
    const char* data() const { return m_bytes.get(); }
    char* end() { return m_bytes.get() + m_used; }
    std::size_t size() const { return m_used; }

    /// Makes room for `count` bytes more and returns where they belong.
    char* reserve(std::size_t count)
    {
        if (m_room - m_used < count + BEHIND) grow(count + BEHIND);
        return end();
    }

    /// Takes bytes that were written behind the end.
    void add(std::size_t count) { m_used += count; }
    void append(const char* bytes, std::size_t count)
    {
        std::memcpy(reserve(count), bytes, count);
        m_used += count;
    }
    void cut(std::size_t size) { m_used = size; }

    /// Forgets all and gives much memory back.
    void clear();

private:
    static constexpr std::size_t BEHIND = 16;

    void grow(std::size_t count);

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_room = 0;
    std::size_t m_used = 0;
};

/// Whether two runs of 1 or more tokens are equal. Up to three tokens behind both are read.
inline bool qxSameTokens(const char16_t* left, const char16_t* right, std::size_t count)
{
    const auto difference = [left, right](std::size_t index) {
        qxUInt64 one = 0;
        qxUInt64 other = 0;
        std::memcpy(&one, left + index, sizeof one);
        std::memcpy(&other, right + index, sizeof other);
        return one ^ other;
    };
    if (count < 4) return (difference(0) & ((1ULL << (16 * count)) - 1)) == 0;
    for (std::size_t i = 0; i + 4 <= count; i += 4) {
        if (difference(i) != 0) return false;
    }
    return difference(count - 4) == 0;
}

/// Names as they stand in the document, as UTF-8, and as strings once they are asked for as such.
///
/// Documents use few names over and over: a name that is found costs a comparison instead of a conversion. A
/// name that comes takes the place of another with the same key, so the cache does not grow.
class qxXmlNameCache
{
public:
    static constexpr std::size_t LONGEST = 28; ///< tokens of a name that is kept
    static constexpr std::size_t BYTES =
        LONGEST * 3 + 12; ///< room for such a name as UTF-8, a multiple of 16

    struct Slot {
        qxUInt64 key = 0;           ///< equal for equal names, mostly different for others
        unsigned int stamp = 0;     ///< changes with the name
        unsigned int length = 0;    ///< tokens; 0 for a name that is longer than the kept ones
        unsigned int byteCount = 0; ///< of the name as UTF-8
        bool hasText = true;        ///< `text` is the name; of longer ones it always is
        char16_t tokens[LONGEST];
        char bytes[BYTES];
        qxString text;

        std::string_view view() const
        {
            return length != 0 ? std::string_view(bytes, byteCount)
                               : std::string_view(text.getString(), text.length());
        }

        const qxString& name()
        {
            if (!hasText) qxStringRefill::set(text, bytes, byteCount);
            hasText = true;
            return text;
        }
    };

    /// The slot that holds the name of 1 or more tokens, made when it is not there. Up to three tokens behind
    /// the name are read, but mean nothing. The slot holds until the next call.
    Slot& find(const char16_t* tokens, std::size_t length)
    {
        const qxUInt64 key = keyOf(tokens, length);
        if (length > LONGEST) return enterLong(tokens, length, key);
        Slot* const slot = m_slots[key >> 56];
        const bool isKept =
            slot && slot->key == key && slot->length == length && qxSameTokens(slot->tokens, tokens, length);
        return isKept ? *slot : enter(tokens, length, key);
    }

private:
    /// Made of the first and the last four tokens.
    static qxUInt64 keyOf(const char16_t* tokens, std::size_t length)
    {
        qxUInt64 head = 0;
        qxUInt64 tail = 0;
        std::memcpy(&head, tokens, sizeof head);
        if (length < 4)
            head &= (1ULL << (16 * length)) - 1;
        else
            std::memcpy(&tail, tokens + length - 4, sizeof tail);
        return (head ^ (tail << 13 | tail >> 51) ^ length) * 0x9E3779B97F4A7C15ULL;
    }

    Slot& enter(const char16_t* tokens, std::size_t length, qxUInt64 key);
    Slot& enterLong(const char16_t* tokens, std::size_t length, qxUInt64 key);

    std::array<Slot*, 256> m_slots{}; // null until they are needed: most documents are short
    std::vector<std::unique_ptr<Slot>> m_owned;
    Slot m_long; // made anew each time
    unsigned int m_lastStamp = 0;
};

/// Strings for texts of every length, one for each size of buffer, so that no text needs memory of its own.
class qxXmlTextStrings
{
public:
    /// A string of these bytes, at most 65,535; valid until the next call. Up to 15 bytes behind them are read,
    /// but mean nothing.
    const qxString& make(const char* bytes, std::size_t count)
    {
        if (count == 0) return m_empty;
        qxString& text = m_strings[sizeClass(count)];
        qxStringRefill::set(text, bytes, count);
        return text;
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

    /// True when the value is known to hold no reference.
    bool isPlain(std::size_t index) const { return m_attributes[index].isPlain; }

    /// Appends an attribute without a value; false when one of this name is there from `first` on, the
    /// attributes of one element.
    bool append(std::size_t first, const qxXmlNameCache::Slot& slot)
    {
        const std::size_t index = m_attributes.size();
        if (index - first >= FEW) return appendToMany(first, slot);
        for (std::size_t i = first; i < index; ++i) {
            if (m_attributes[i].key == slot.key && nameOf(i) == slot.view()) return false;
        }
        add(slot);
        return true;
    }

    /// Appends an attribute whose name and value, without references, were written behind the end of the bytes. False when it may be
    /// there already, or when there are many: then append finds out.
    bool appendWritten(std::size_t first, const qxXmlNameCache::Slot& slot, std::size_t valueLength)
    {
        const std::size_t index = m_attributes.size();
        if (index - first >= FEW) return false;
        for (std::size_t i = first; i < index; ++i) {
            if (m_attributes[i].key == slot.key) return false;
        }
        m_attributes.push_back({m_bytes.size(), slot.byteCount,
                                static_cast<unsigned int>(valueLength) & 0x7FFFFFFF, 1, slot.key});
        m_bytes.add(slot.byteCount + valueLength);
        return true;
    }

    /// The memory behind the last attribute's name: its value is written there.
    qxXmlBytes& bytes() { return m_bytes; }

    /// Makes the bytes behind the last attribute's name its value.
    void takeValue()
    {
        Attribute& last = m_attributes.back();
        last.valueLength = (m_bytes.size() - last.begin - last.nameLength) & 0x7FFFFFFF;
    }

    /// Replaces the last attribute's value.
    void setValue(const qxString& value)
    {
        m_bytes.cut(m_attributes.back().begin + m_attributes.back().nameLength);
        m_bytes.append(value.getString(), value.length());
        takeValue();
    }

    /// The attribute of this name from `first` up to `end`; `end` when there is none.
    std::size_t find(std::size_t first, std::size_t end, std::string_view name) const;

    /// Removes the attributes from `first` on.
    void cut(std::size_t first)
    {
        if (m_attributes.size() == first) return;
        m_bytes.cut(m_attributes[first].begin);
        m_attributes.resize(first);
        if (m_indexed > first) m_indexed = m_indexFirst = first;
    }

    void clear();

private:
    static constexpr std::size_t FEW = 16; // attributes of an element that are compared one by one

    struct Attribute {
        std::size_t begin; // of the name in the bytes; the value stands behind it
        unsigned int nameLength;
        unsigned int valueLength : 31;
        unsigned int isPlain : 1; // the value holds no reference
        qxUInt64 key;             // of the name's slot
    };

    void add(const qxXmlNameCache::Slot& slot)
    {
        const std::string_view name = slot.view();
        m_attributes.push_back({m_bytes.size(), static_cast<unsigned int>(name.size()), 0, 0, slot.key});
        m_bytes.append(name.data(), name.size());
    }

    bool appendToMany(std::size_t first, const qxXmlNameCache::Slot& slot);
    std::size_t findIndexed(std::size_t first, std::size_t end, std::string_view name) const;
    void enterIndex(std::size_t index);
    void buildIndex(std::size_t first);

    std::vector<Attribute> m_attributes;
    qxXmlBytes m_bytes;

    // An open hash table over the attributes of the element that has many; its hash is seeded, so that no
    // document can choose names that fall together.
    std::vector<unsigned int> m_index; // of attributes from m_indexFirst on, plus 1; 0 is free
    std::size_t m_indexFirst = 0;
    std::size_t m_indexed = 0; // the attributes from m_indexFirst to here are entered
};

/// Takes elements and text in place of the callbacks for them: without strings, and the attributes of an element all at
/// once.
class qxXmlContentTaker
{
public:
    virtual void openElement(std::string_view name, unsigned int level) = 0;

    /// The attributes of the element that is open at `level`: those from `first` to `end`, 1 or more. After a fault
    /// in the document it is called once more for the innermost element, which may have them already.
    virtual void takeAttributes(const qxXmlAttributeList& attributes, std::size_t first, std::size_t end,
                                unsigned int level) = 0;
    virtual void takeText(std::string_view text, unsigned int level) = 0;
    virtual void closeElement(unsigned int level) = 0;

protected:
    ~qxXmlContentTaker() = default;
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
    static constexpr unsigned int HISTORY =
        64; ///< tokens that stay in the window; productions hold what they need

    bool isReading = false;
    bool isInIntSubset = false;      ///< of the document type, where few parameter references are allowed
    bool isAttributePending = false; ///< the last attribute has no value yet
    bool hasContent = false;         ///< the element that was opened last did not end with its start tag

    // Productions 91 to 93 try the content of an element, and give it back when it is not theirs.

    /// What should have stood in a value, and where something else did.
    struct Fault {
        const char* expected = nullptr;
        unsigned int line = 0;
        unsigned int column = 0;
    };

    bool isTrying = false;
    qxUInt64 tryEnd = NOT_KEPT; ///< position behind which that ends
    bool wantsFault = false;    ///< keep the first fault of a value in `fault`
    bool isQuiet = false;       ///< send no warnings
    Fault fault;

    /// False where too many elements around were given back after elements in them had been looked at: so each is
    /// looked at a few times at most.
    bool mayTry()
    {
        while (!m_refused.empty() && m_refused.back() >= level()) m_refused.pop_back();
        return m_refused.size() < MOST_REFUSED;
    }

    /// Counts the innermost element as given back.
    void refuse() { m_refused.push_back(level()); }

    qxXmlContentTaker* taker = nullptr; ///< who sets it clears it

    qxString attributeName; ///< of the last attribute when its slot has gone
    qxXmlBytes text;        ///< of the run that is being read

    qxXmlNameCache names;
    qxXmlTextStrings texts;
    qxXmlAttributeList attributes;
    std::vector<qxXmlLevel> levels; ///< the root first

    unsigned int level() const { return static_cast<unsigned int>(levels.size()); }

    /// Opens an element.
    void push(qxXmlNameCache::Slot& slot, const char16_t* tokens, std::size_t length)
    {
        const std::size_t begin = m_nameTokensUsed;
        if (m_nameTokens.size() - begin < length + 8) m_nameTokens.resize(2 * (begin + length) + 256);
        // Eight at a time is cheaper than exactly the tokens; the window can be read that far.
        for (std::size_t i = 0; i < length; i += 8)
            std::memcpy(m_nameTokens.data() + begin + i, tokens + i, 8 * sizeof(char16_t));
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
        if (level.slot->stamp == level.stamp) return level.slot->name();
        return names.find(nameTokens(level), level.nameLength).name();
    }

    /// The attributes of an open level, from 1: first to end.
    std::size_t firstAttribute(unsigned int level) const { return levels[level - 1].firstAttribute; }
    std::size_t endAttribute(unsigned int level) const
    {
        if (level < levels.size()) return levels[level].firstAttribute;
        return attributes.size() - (isAttributePending ? 1 : 0);
    }

    /// Gives the taker the attributes of the innermost element.
    void giveAttributes()
    {
        const std::size_t first = firstAttribute(level());
        const std::size_t end = endAttribute(level());
        if (first != end) taker->takeAttributes(attributes, first, end, level());
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
    static constexpr std::size_t MOST_REFUSED = 16;

    std::vector<unsigned int> m_refused; // levels
    std::vector<char16_t> m_nameTokens;
    std::size_t m_nameTokensUsed = 0;
};
