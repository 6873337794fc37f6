// The text type of the library.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargument.h"
#include "qxforward.h"
#include "qxtype.h"
#include "qxutf8.h"

#include <atomic>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// UTF-8 text of at most 65,535 bytes.
///
/// Each string owns its bytes and ends them with a zero byte that does not count. A unique string instead
/// points into the process-wide table of unique strings, which gives every text in it an ID from 1 to 65,535;
/// such strings compare by ID. Comparing an equal ordinary string with a unique one turns the ordinary one
/// unique, although both are constant.
///
/// A string converts to `const char*`, to an integer and to a double; order two strings with sortval or
/// compare, not with `<`, which does not compile. Indices and counts are bytes.
///
/// The hash is cached. Edits of single characters through operator()(index) and substitute(char, char) leave
/// it as it was, so an edited string may differ from an equal text; every other change refreshes it.
///
/// Lifetime: a value; strings that are unique must not be used after qxUniqueString::cleanAllUniqueId, nor
///           ordinary ones that were once found equal to a unique one.
/// Threads:  a string is not shared between threads without a lock, not even for comparing; constants that
///           threads compare should be made unique first.
/// Errors:   misuse and texts that would be too long raise qxFatalError; out of memory is reported and throws
///           std::bad_alloc.
class QX_API qxString
{
public:
    static constexpr unsigned int MAX_LENGTH = 65535; ///< bytes without the terminator

    qxString() noexcept : m_text(nullptr), m_lengthAndID(0), m_hash(0) {}
    qxString(const char* text);

    /// Copies exactly `length` bytes, zero bytes included; a null `text` gives an empty string.
    qxString(const char* text, std::size_t length);
    qxString(const wchar_t* text);

    /// Encodes `count` units; with `is8Bit` set the low 8 bits of each are taken as a byte instead.
    qxString(const wchar_t* text, std::size_t count, unsigned char is8Bit = 0);

    /// `value` written in `base` (2 to 16) with at least `width` characters, padded with zeros.
    template <std::integral Integer>
    qxString(Integer value, unsigned int base, unsigned int width) : qxString()
    {
        setNumber(static_cast<qxInt64>(value), base, width, std::is_unsigned_v<Integer>);
    }

    /// `value` formatted by `format`, which takes one argument.
    qxString(double value, const qxString& format);

    qxString(const qxString& other);
    qxString(qxString&& other) noexcept;
    virtual qxType* getType() const; // the first virtual operation, the destructor is the second
    virtual ~qxString();
    qxString& operator=(const qxString& other);
    qxString& operator=(qxString&& other) noexcept;
    qxString& operator=(const char* text);

    static qxType s_type;
    static qxType* getClassType();

    // Access

    unsigned short length() const { return static_cast<unsigned short>(m_lengthAndID); }
    bool isEmpty() const { return m_lengthAndID == 0; }
    bool operator!() const { return m_lengthAndID == 0; }
    const char* getString() const { return m_text ? m_text : ""; }
    operator const char*() const { return getString(); }
    unsigned short getUniqueID() const { return static_cast<unsigned short>(m_lengthAndID >> 16); }
    bool isUnique() const { return m_lengthAndID > MAX_LENGTH; }

    /// The cached hash of the text; equal texts have equal hashes as long as no single character was edited.
    unsigned int hash() const
    {
        const unsigned int known = cachedHash();
        return known != 0 || length() == 0 ? known : resolveHash();
    }

    /// The hash that strings cache. It does not depend on the machine. A `length` of 0 means that the text is
    /// measured up to its terminator, at most 65,535 bytes.
    static unsigned int hash(const char* text, unsigned int length);

    /// The XOR over all bytes, each sign-extended to 64 bits and shifted left by 8 x its index modulo 64.
    qxUInt64 wrapHash() const;

    /// One byte to read or change. A unique string first becomes an ordinary one.
    char& operator()(unsigned int index);
    char operator()(unsigned int index) const;

    /// `count` bytes from `index` on.
    qxString operator()(unsigned int index, unsigned int count) const;

    // Wide text

    /// Wide units that the text takes, without a terminator; counting stops at invalid UTF-8. Where wide
    /// units have 16 bits a character beyond U+FFFF takes two.
    unsigned int getWideStringLength() const;

    /// The first `count` characters (0: all) in a buffer of this thread's, which its next call overwrites.
    const wchar_t* getWideString(unsigned int count = 0) const;

    /// Decodes into `buffer`, which has room for the length and a terminator, and returns the units without
    /// it. With `is8Bit` set each byte becomes one unit.
    unsigned int getWideString(wchar_t* buffer, unsigned char is8Bit = 0) const;

    /// The text as bytes, and as wide units, each with a terminator that counts.
    qxArray<char> getBSTR() const;
    qxArray<wchar_t> getWideBSTR() const;

    // Searching and slicing

    /// The first index from `start` on that holds `c`; without one the length, or `start` when that lies
    /// beyond.
    unsigned int find(char c, unsigned int start = 0) const
    {
        if (start >= length()) return start;
        const void* const hit = std::memchr(m_text + start, c, length() - start);
        return hit ? static_cast<unsigned int>(static_cast<const char*>(hit) - m_text) : length();
    }

    /// True when this string begins with `other`. `matched` receives the number of equal leading characters.
    bool compare(const qxString& other, bool caseSensitive = true, unsigned short* matched = nullptr) const;

    /// True when `other` occurs at `start` or later; `position` then receives where.
    bool contains(const qxString& other, unsigned int start = 0, bool caseSensitive = true,
                  unsigned short* position = nullptr) const;
    bool isFirst(char c, bool caseSensitive = true) const;
    bool isFirst(const qxString& text, bool caseSensitive = true) const;
    bool isLast(char c, bool caseSensitive = true) const;
    bool isLast(const qxString& text, bool caseSensitive = true) const;

    /// The first `count` bytes, or with `inverse` everything behind them.
    qxString left(unsigned int count, bool inverse = false) const;

    /// The last `count` bytes, or with `inverse` everything before them.
    qxString right(unsigned int count, bool inverse = false) const;

    /// The text before the first occurrence of `pattern`, with `shortest` false before the last one; empty
    /// when there is none.
    qxString leftOf(const qxString& pattern, bool shortest = true, bool caseSensitive = true) const;

    /// The text behind the last occurrence of `pattern`, with `shortest` false behind the first one; empty
    /// when there is none.
    qxString rightOf(const qxString& pattern, bool shortest = true, bool caseSensitive = true) const;

    /// Removes `c` from the chosen ends.
    qxString& strip(char c, bool leading = true, bool trailing = true);

    /// Removes spaces, tabs, line feeds and carriage returns from the chosen ends.
    qxString& stripWhiteSpace(bool leading = true, bool trailing = true);

    /// Replaces every `from` in place, leaves the cached hash as it was, and returns how many there were.
    unsigned int substitute(char from, char to);

    /// A new string with every occurrence of `from` replaced; an empty `from` replaces nothing.
    qxString substitute(const qxString& from, const qxString& to) const;

    // Changing

    void clear();

    /// ASCII letters change their case, all other bytes stay.
    qxString& toLower();
    qxString& toUpper();

    /// Reverses the characters; a sequence of several bytes stays whole.
    qxString& reverse();

    static qxString spaces(unsigned int count, char c = ' ');

    qxString& operator+=(const qxString& text);
    qxString& operator+=(const char* text);
    qxString& operator+=(char c)
    {
        const unsigned int length = m_lengthAndID; // unless it is unique
        if (isUnique() || length == 0 || !hasRoomBehind(length)) return appendByte(c);
        char* const end = m_text + length;
        m_lengthAndID = length + 1;
        setHashPending();
        end[0] = c;
        end[1] = 0;
        return *this;
    }
    qxString& operator+=(wchar_t c);

    /// Appends exactly `count` bytes; they may be this string's own.
    qxString& append(const char* bytes, std::size_t count);

    // Values

    /// The text as an integer: white space, a sign and digits; a fraction and an exponent count and are then
    /// cut off. No number gives 0, one beyond 64 bits the nearest. Defined above the number scanner.
    qxInt64 num() const;
    operator qxInt64() const { return num(); }

    /// The text as a floating-point number with this decimal point; no number gives 0. Defined above the
    /// number scanner.
    double real(char decimalPoint = '.') const;
    operator double() const { return real(); }

    /// Up to four numbers separated by dots, such as a version: 16 bits each, the first one highest. Defined
    /// above the number scanner.
    qxInt64 dotValue(char separator = '.') const;

    /// True for "yes", "true" and numbers of 1 or more, whatever their case and the white space around.
    /// Defined above the number scanner.
    bool yesNo() const;

    /// The sum over the bytes of byte(i) x 256^-i: a key that orders strings by their first bytes.
    double sortval() const;

    /// Sets the text to `value` as an identifier: "_" and the digits; for a negative one "_n" and the digits.
    qxString& identifier(qxInt64 value);

    // Conversions in place

    /// Takes each byte as one character of ISO 8859-1 and encodes it.
    qxString& convertAsciiToUTF8();

    /// The reverse; characters above 255 become "?".
    qxString& convertUTF8ToAscii();

    /// Reads what convertUTF8ToNumList writes; "0x" aside, separator and prefix hold no hexadecimal digit.
    qxString& convertNumListToUTF8();

    /// Replaces the text by its characters' codes in hexadecimal, `prefix` before each, `separator` between.
    qxString& convertUTF8ToNumList(const qxString& separator, const qxString& prefix);

    /// Writes control characters and the backslash as the escapes of C, others as \xHH; with `escape8Bit` set
    /// the bytes of 128 and more as well.
    qxString& convertCtrlToText(bool escape8Bit = false);

    /// Reads what convertCtrlToText writes.
    qxString& convertTextToCtrl();

    /// True when the text holds \x escapes of bytes of 128 and more.
    bool hasEscapedUTF8Chars() const;

    /// True when all bytes are below 128.
    bool isAsciiString() const;

    /// Exchanges ASCII letters and digits among themselves under `key`; the same call undoes it.
    qxString& scramble(unsigned int key);

    // Formatting

    /// Sets the text to `format` with its conversions filled in, as C's printf does it, with these additions:
    /// "%n$" for the n-th argument, "%S" for wide text, "%b" for binary. Lengths such as "l" are accepted and
    /// mean nothing. Floating-point numbers have at most 15 significant digits; infinity is "<inf>".
    template <class... Arguments>
    qxString& format(const qxString& format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        return formatArguments(format.getString(), format.length(), list.values, list.count);
    }
    template <class... Arguments>
    qxString& format(const char* format, const Arguments&... arguments)
    {
        const qxArgumentList<Arguments...> list = {{qxArgument(arguments)...}};
        return formatArguments(format, list.values, list.count);
    }

    /// A new string made by format.
    template <class... Arguments>
    static qxString str(const qxString& format, const Arguments&... arguments)
    {
        qxString result;
        result.format(format, arguments...);
        return result;
    }
    template <class... Arguments>
    static qxString str(const char* format, const Arguments&... arguments)
    {
        qxString result;
        result.format(format, arguments...);
        return result;
    }

    /// What format calls: `count` arguments, at most sixteen, in an array.
    qxString& formatArguments(const char* format, const qxArgument* arguments, unsigned int count);
    qxString& formatArguments(const char* format, std::size_t length, const qxArgument* arguments,
                              unsigned int count);

    // Unique strings

    /// Enters the text in the table of unique strings under `id`, or under the first free ID when that is 0,
    /// and makes this string unique. False when the table is full, and for an empty text without an ID. A
    /// text or an ID that is already used otherwise raises qxFatalError.
    ///
    /// Threads: the table has a lock of its own.
    bool makeUnique(unsigned short id = 0);

    /// Makes this string unique when its text is in the table already; else changes nothing and returns
    /// false.
    bool checkUnique();

    bool operator==(const qxString& other) const
    {
        if (m_lengthAndID != other.m_lengthAndID) return equalsMixed(other);
        if (isUnique()) return true;
        const unsigned int left = cachedHash();
        const unsigned int right = other.cachedHash();
        if (left == right) return hasSameBytes(other.m_text);
        return (left == 0 || right == 0) && equalsInFull(other);
    }
    bool operator!=(const qxString& other) const { return !(*this == other); }

    /// Compares the bytes up to the terminators; null is an empty text.
    bool operator==(const char* text) const { return std::strcmp(getString(), text ? text : "") == 0; }
    bool operator!=(const char* text) const { return !(*this == text); }

private:
    friend class qxStringRefill;
    friend class qxUniqueTable;

    static constexpr unsigned int ROOM_STEP = 16;

    /// Bytes in the buffer of a text of `length` bytes, a multiple of ROOM_STEP: a fixed rule, so that no field
    /// is needed.
    static unsigned int roomFor(unsigned int length)
    {
        const unsigned int bytes = length + 1;
        if (bytes <= 4 * ROOM_STEP) return (bytes + ROOM_STEP - 1) & ~(ROOM_STEP - 1);
        const unsigned int step = 1U << (std::bit_width(bytes) - 3); // a quarter of the power of two below
        return (bytes + step - 1) & ~(step - 1);
    }

    /// True when a text of `length` bytes can grow by one in its buffer.
    static bool hasRoomBehind(unsigned int length)
    {
        return (length + 1) % ROOM_STEP != 0 || length + 1 < roomFor(length);
    }

    unsigned int cachedHash() const
    {
        return std::atomic_ref<unsigned int>(m_hash).load(std::memory_order_relaxed);
    }
    void setHashPending() { std::atomic_ref<unsigned int>(m_hash).store(0, std::memory_order_relaxed); }
    unsigned int resolveHash() const;
    void setNumber(qxInt64 value, unsigned int base, unsigned int width, bool isUnsigned);
    void setBytes(const char* bytes, std::size_t count);
    void makeRoom(unsigned int length);
    void detach();
    char* editBytes();
    void releaseText();
    bool equalsInFull(const qxString& other) const;

    /// Compares strings that differ in length, in ID or in both: only a unique and an ordinary one of the same
    /// length can be equal.
    bool equalsMixed(const qxString& other) const
    {
        if (length() != other.length() || (isUnique() && other.isUnique())) return false;
        return equalsInFull(other);
    }
    qxString& appendByte(char c);

    /// True when the text, which is as long as this one, has the same bytes.
    bool hasSameBytes(const char* other) const
    {
        constexpr unsigned int WORD = sizeof(qxUInt64);
        const unsigned int count = length();
        if (count > 8 * WORD) return std::memcmp(m_text, other, count) == 0;
        if (count > WORD) { // fewer bytes are compared faster than the call takes
            for (unsigned int at = 0; at < count - WORD; at += WORD)
                if (differenceAt(other, at) != 0) return false;
            return differenceAt(other, count - WORD) == 0;
        }
        if (count == 0) return true;
        // A buffer has room for the whole word; its bytes behind the text do not count.
        const unsigned int unused = 8 * (WORD - count);
        const qxUInt64 difference = differenceAt(other, 0);
        return (std::endian::native == std::endian::little ? difference << unused : difference >> unused) ==
               0;
    }

    qxUInt64 differenceAt(const char* other, unsigned int at) const
    {
        return wordAt(m_text + at) ^ wordAt(other + at);
    }

    static qxUInt64 wordAt(const char* bytes)
    {
        qxUInt64 word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }
    void adopt(const qxString& unique) const;

    mutable char* m_text; // null exactly when the string is empty

    // The length in the lower half, the unique ID in the upper one (0: the text is owned). They are one word since
    // a loop that appends bytes waits long for a half word that it has just written.
    mutable unsigned int m_lengthAndID;
    mutable unsigned int m_hash; // 0 with a text: computed when it is asked for
};

QX_API qxString operator+(const qxString& left, const qxString& right);
QX_API qxString operator+(const qxString& left, const char* right);
QX_API qxString operator+(const char* left, const qxString& right);
QX_API qxString operator+(const qxString& left, char right);
QX_API qxString operator+(const qxString& left, wchar_t right);

inline bool operator==(const char* left, const qxString& right)
{
    return right == left;
}

inline bool operator!=(const char* left, const qxString& right)
{
    return right != left;
}
