// Text that grows until it becomes a qxString.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstddef>
#include <cstring>

/// Raises the fatal error of every text that would pass 65,535 bytes.
[[noreturn]] void qxThrowTooManyCharacters();

/// Collects bytes in fixed room first and on the heap when that is full.
///
/// Lifetime: belongs on the stack.
/// Errors:   more than 65,535 bytes raise qxFatalError before anything is allocated for them.
class qxTextBuilder
{
public:
    qxTextBuilder() = default;
    ~qxTextBuilder();
    qxTextBuilder(const qxTextBuilder&) = delete;
    qxTextBuilder& operator=(const qxTextBuilder&) = delete;

    const char* bytes() const { return m_bytes; }
    std::size_t length() const { return m_length; }

    /// The bytes with a zero behind them, for which there is always room.
    const char* text()
    {
        m_bytes[m_length] = 0;
        return m_bytes;
    }

    /// Room for `count` bytes more, which the caller writes. Valid until the next call.
    char* extend(std::size_t count)
    {
        if (count > m_room - m_length) grow(count);
        char* const place = m_bytes + m_length;
        m_length += count;
        return place;
    }

    void append(char c) { *extend(1) = c; }
    void append(const char* bytes, std::size_t count) { copy(extend(count), bytes, count); }
    void fill(char c, std::size_t count) { std::memset(extend(count), c, count); }

    /// As memcpy. Most pieces of a text are so short that the call would cost more than the copy.
    static void copy(char* to, const char* from, std::size_t count)
    {
        if (count > 16) {
            copyLong(to, from, count);
        } else if (count >= 8) { // two words that may overlap
            std::memcpy(to, from, 8);
            std::memcpy(to + count - 8, from + count - 8, 8);
        } else if (count >= 4) {
            std::memcpy(to, from, 4);
            std::memcpy(to + count - 4, from + count - 4, 4);
        } else if (count != 0) {
            to[0] = from[0];
            to[count / 2] = from[count / 2];
            to[count - 1] = from[count - 1];
        }
    }

private:
    void grow(std::size_t count);
    static void copyLong(char* to, const char* from, std::size_t count);

    char m_fixed[512];
    char* m_bytes = m_fixed;
    std::size_t m_length = 0;
    std::size_t m_room = sizeof m_fixed - 1; // without that for the zero
};
