// Names that the items of one tree share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxname.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

/// The names that a tree met of late. A document has few different names and many items: nearly all of them find
/// theirs here.
///
/// A name that others with the same place displaced is made anew when it comes again, so that names chosen to
/// collide cost memory, never time.
///
/// Threads: as the tree.
class qxXmlNames
{
public:
    qxXmlNames() = default;
    ~qxXmlNames();
    qxXmlNames(const qxXmlNames&) = delete;
    qxXmlNames& operator=(const qxXmlNames&) = delete;

    /// The shared name with this text, of at most 65,535 bytes; valid until the next call, unless somebody holds
    /// it. Null for an empty text.
    qxSharedName* get(std::string_view text)
    {
        if (text.empty()) return nullptr;
        const std::uint64_t head = getHead(text);
        const Place& place = m_places[getPlace(text, head)];
        if (place[0].is(text, head)) return place[0].name;
        if (place[1].is(text, head)) return place[1].name;
        return enter(text, head);
    }

    /// What an item of this tree has for `other`, a name of another tree; permanent names belong to all.
    qxSharedName* getCopy(qxSharedName* other)
    {
        if (!other || other->isPermanent()) return other;
        return get({other->getString(), other->length()});
    }

private:
    static constexpr unsigned int FEW_BITS = 4;
    static constexpr unsigned int MANY_BITS = 8;
    static constexpr unsigned int FEW = 1U << FEW_BITS;
    static constexpr unsigned int MANY = 1U << MANY_BITS;

    struct Entry {
        std::uint64_t head; // the first eight bytes
        std::size_t length; // 0 when there is no name
        qxSharedName* name;

        bool is(std::string_view text, std::uint64_t textHead) const
        {
            if (head != textHead || length != text.size()) return false;
            return length <= 8 || std::memcmp(name->getString() + 8, text.data() + 8, length - 8) == 0;
        }
    };

    typedef Entry Place[2]; // the two that came last

    // Few bytes are read as pieces that overlap.
    static std::uint64_t getHead(std::string_view text)
    {
        const char* const bytes = text.data();
        const std::size_t size = text.size();
        if (size >= 8) return load<std::uint64_t>(bytes);
        if (size >= 4) {
            const std::uint64_t last = load<std::uint32_t>(bytes + size - 4);
            return load<std::uint32_t>(bytes) | last << 8 * (size - 4);
        }
        const auto byte = [bytes](std::size_t i) {
            return static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
        };
        return byte(0) | byte(size / 2) | byte(size - 1);
    }

    std::size_t getPlace(std::string_view text, std::uint64_t head) const
    {
        std::uint64_t mixed = head ^ text.size();
        if (text.size() > 8) {
            const std::uint64_t tail = load<std::uint64_t>(text.data() + text.size() - 8);
            mixed ^= tail << 13 | tail >> 51;
        }
        return static_cast<std::size_t>(mixed * 0x9E3779B97F4A7C15 >> m_shift);
    }

    template <class Number>
    static Number load(const char* bytes)
    {
        Number number;
        std::memcpy(&number, bytes, sizeof number);
        return number;
    }

    qxSharedName* enter(std::string_view text, std::uint64_t head);
    void makeMany();

    Place m_few[FEW] = {}; // enough for most documents, which are short
    std::unique_ptr<Place[]> m_many;
    Place* m_places = m_few;
    unsigned int m_shift = 64 - FEW_BITS;
    unsigned int m_entered = 0;
};

/// Keeps a name for the length of a scope.
class qxXmlNameHolder
{
public:
    explicit qxXmlNameHolder(qxSharedName* name) : m_name(name)
    {
        if (m_name) m_name->hold();
    }
    ~qxXmlNameHolder()
    {
        if (m_name) m_name->release();
    }
    qxXmlNameHolder(const qxXmlNameHolder&) = delete;
    qxXmlNameHolder& operator=(const qxXmlNameHolder&) = delete;

    qxSharedName* get() const { return m_name; }

private:
    qxSharedName* m_name;
};
