// 128-bit identifiers.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"
#include "qxtime.h"

#include <concepts>
#include <cstddef>

/// The last eight bytes of a GUID.
struct qxGUIDBytes {
    constexpr qxGUIDBytes(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3,
                          unsigned char b4, unsigned char b5, unsigned char b6, unsigned char b7)
        : bytes{b0, b1, b2, b3, b4, b5, b6, b7}
    {}

    unsigned char bytes[8];
};

/// A 128-bit identifier; the null GUID has 16 zero bytes.
///
/// Its text form is "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}". Its 16 bytes can also be seen as two halves or as
/// four words, each a little-endian number.
///
/// Lifetime: a value.
/// Threads:  one object is used by one thread at a time; new ones may be made by any threads at once.
/// Errors:   a text that is no GUID gives the null GUID and sends a warning that shows what is wrong with it.
class QX_API qxGUID
{
public:
    /// The null GUID.
    constexpr qxGUID() : m_record{} {}
    constexpr qxGUID(const qxGUIDRecord& record) : m_record(record) {}
    constexpr qxGUID(unsigned int data1, unsigned short data2, unsigned short data3, const qxGUIDBytes& data4)
        : m_record{data1,
                   data2,
                   data3,
                   {data4.bytes[0], data4.bytes[1], data4.bytes[2], data4.bytes[3], data4.bytes[4],
                    data4.bytes[5], data4.bytes[6], data4.bytes[7]}}
    {}

    /// From the two halves, the one with the first field first.
    qxGUID(qxUInt64 first, qxUInt64 second);
    template <std::integral First, std::integral Second>
    qxGUID(First first, Second second) : qxGUID(static_cast<qxUInt64>(first), static_cast<qxUInt64>(second))
    {}

    /// From the four words.
    qxGUID(unsigned int first, unsigned int second, unsigned int third, unsigned int fourth);

    /// Reads the text form; the braces may be missing and digits may have either case. An empty text gives the
    /// null GUID without a warning.
    explicit qxGUID(const qxString& text);

    /// Reads the text form from `length` characters; with 0 the text is measured, at most 65,535 characters. An
    /// empty or null text is no GUID.
    explicit qxGUID(const char* text, std::size_t length = 0);
    explicit qxGUID(const wchar_t* text, std::size_t length = 0);

    /// The text form: with braces, digits in upper case.
    qxString asString() const;

    /// Makes it a new GUID, as generateGUID does.
    void generate();

    /// A new GUID from the time, the thread and the machine (version 1). No two of one process are equal, and those
    /// of one thread grow with the time.
    static qxGUID generateGUID();

    /// A new GUID from the system's secure source of random bytes (version 4). Should that fail, sends a warning and
    /// returns the null GUID.
    static qxGUID generateGUID4();

    /// A new GUID from the time in milliseconds and random bytes (version 7), which fail as above. Those of one
    /// process are all different, and sorted by their texts they stand in the order in which they were made.
    static qxGUID generateGUID7();

    /// When a time-based GUID was made, to a microsecond; time 0 for any other.
    qxTime getGenerationTime() const;

    /// Makes it the null GUID.
    void reset() { *this = qxGUID(); }

    bool isNull() const;

    // What the version says: how the identifier was made.
    bool isTimeBased() const { return getVersion() == 0x1000; }
    bool isNameBased() const { return getVersion() == 0x3000; }
    bool isRandomBased() const { return getVersion() == 0x4000; }

    /// Always false; nothing should rely on it.
    bool isStandardDCE() const { return false; }

    qxGUIDRecord& getGUID() { return m_record; }
    const qxGUIDRecord& getGUID() const { return m_record; }
    const qxGUIDRecord& getConstGUID() const { return m_record; }
    operator const qxGUIDRecord&() const { return m_record; }

    /// Gives the two halves, the one with the first field first.
    void getGUID(qxUInt64& first, qxUInt64& second) const;
    template <std::unsigned_integral Half>
    requires(sizeof(Half) == 8) void getGUID(Half& first, Half& second) const
    {
        qxUInt64 halves[2];
        getGUID(halves[0], halves[1]);
        first = halves[0];
        second = halves[1];
    }

    /// Gives the four words.
    void getGUID(unsigned int& first, unsigned int& second, unsigned int& third, unsigned int& fourth) const;

    bool operator==(const qxGUID& other) const { return isEqual(other.m_record); }
    bool operator==(const qxGUIDRecord& other) const { return isEqual(other); }

    /// Compares the first halves as numbers, then the second halves: neither the order of the texts nor that of
    /// the bytes.
    bool operator<(const qxGUID& other) const;

    /// The exclusive or of the four words.
    unsigned int hash() const;

private:
    bool isEqual(const qxGUIDRecord& other) const;
    unsigned int getVersion() const { return m_record.Data3 & 0xF000U; }

    qxGUIDRecord m_record;
};
