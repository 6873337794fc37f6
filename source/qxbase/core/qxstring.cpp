// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxtextbuilder.h"
#include "core/qxutf8scan.h"
#include "qxerror.h"
#include "qxmemory.h"
#include "qxnumbertext.h"
#include "qxutf8.h"

#include <algorithm>
#include <functional>

QX_DEFINE_ROOT_TYPE(qxString)

namespace
{

char* newBytes(std::size_t room)
{
    char* const bytes = static_cast<char*>(qx_malloc(room));
    if (!bytes) qxThrowBadAlloc(__FILE__, __LINE__);
    return bytes;
}

unsigned int hashWordAt(const char* text)
{
    unsigned int word = 0;
    std::memcpy(&word, text, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
    return word;
}

} // namespace

qxString::qxString(const char* text) : qxString()
{
    *this = text;
}

qxString::qxString(const char* text, std::size_t length) : qxString()
{
    if (!text) return;
    setBytes(text, length);
    resolveHash();
}

qxString::qxString(double value, const qxString& format) : qxString()
{
    const qxArgument argument(value);
    formatArguments(format.getString(), format.length(), &argument, 1);
    resolveHash();
}

qxString::qxString(const qxString& other)
    : m_text(other.m_text), m_lengthAndID(other.m_lengthAndID), m_hash(other.cachedHash())
{
    if (isUnique() || isEmpty()) return;
    m_text = newBytes(roomFor(length()));
    std::memcpy(m_text, other.m_text, length() + 1U);
}

qxString::qxString(qxString&& other) noexcept
    : m_text(other.m_text), m_lengthAndID(other.m_lengthAndID), m_hash(other.m_hash)
{
    other.m_text = nullptr;
    other.m_lengthAndID = 0;
    other.m_hash = 0;
}

qxString::~qxString()
{
    if (m_text && !isUnique()) qx_free(m_text); // most empty ones go here
}

qxString& qxString::operator=(const qxString& other)
{
    if (this == &other) return *this;
    if (other.isUnique()) {
        releaseText();
        m_text = other.m_text;
        m_lengthAndID = other.m_lengthAndID;
    } else {
        setBytes(other.m_text, other.length());
    }
    m_hash = other.cachedHash();
    return *this;
}

qxString& qxString::operator=(qxString&& other) noexcept
{
    std::swap(m_text, other.m_text);
    std::swap(m_lengthAndID, other.m_lengthAndID);
    std::swap(m_hash, other.m_hash);
    return *this;
}

qxString& qxString::operator=(const char* text)
{
    setBytes(text, text ? std::strlen(text) : 0);
    resolveHash();
    return *this;
}

unsigned int qxString::hash(const char* text, unsigned int length)
{
    if (length == 0 && text) {
        const void* const end = std::memchr(text, 0, MAX_LENGTH);
        length = end ? static_cast<unsigned int>(static_cast<const char*>(end) - text) : MAX_LENGTH;
    }
    unsigned int result = length;
    for (unsigned int left = length / 4; left > 0; --left, text += 4)
        result ^= (hashWordAt(text) ^ (left - 1)) | (result * 2);
    if (length % 4 == 0) return (result * 2) ^ result;

    unsigned int tail = 0;
    for (unsigned int i = 0; i < length % 4; ++i) {
        // deliberate: a byte of 128 or more sets all bits above it; stored hashes depend on that
        tail = (tail << 8) | static_cast<unsigned int>(static_cast<signed char>(text[i]));
    }
    return ((result * 2) | tail) ^ result;
}

qxUInt64 qxString::wrapHash() const
{
    qxUInt64 result = 0;
    for (unsigned int i = 0; i < length(); ++i)
        result ^= static_cast<qxUInt64>(static_cast<signed char>(m_text[i])) << (8 * i % 64);
    return result;
}

char& qxString::operator()(unsigned int index)
{
    if (index >= length()) qxExceptionThrows::qxThrowFatal("qxString(index) out of bounds");
    m_hash = hash(); // the hash of the text before the edit stays, however the caller uses the reference
    detach();
    return m_text[index];
}

char qxString::operator()(unsigned int index) const
{
    if (index >= length()) qxExceptionThrows::qxThrowFatal("qxString(index) out of bounds");
    return m_text[index];
}

qxString qxString::operator()(unsigned int index, unsigned int count) const
{
    if (index > length() || count > length() - index)
        qxExceptionThrows::qxThrowFatal("qxString(index,len) out of bounds");
    qxString result;
    result.setBytes(m_text + index, count);
    return result;
}

void qxString::clear()
{
    releaseText();
}

qxString qxString::spaces(unsigned int count, char c)
{
    if (count > MAX_LENGTH) qxThrowTooManyCharacters();
    qxString result;
    if (count == 0) return result;
    result.makeRoom(count);
    std::memset(result.m_text, c, count);
    return result;
}

qxString& qxString::operator+=(const qxString& text)
{
    return append(text.m_text, text.length());
}

qxString& qxString::operator+=(const char* text)
{
    return append(text, text ? std::strlen(text) : 0);
}

qxString& qxString::operator+=(wchar_t c)
{
    char bytes[6];
    return append(bytes, qxUInt32ToUTF8(bytes, static_cast<unsigned int>(c)));
}

qxString& qxString::append(const char* bytes, std::size_t count)
{
    if (count == 0) return *this;
    if (count > MAX_LENGTH - length()) qxThrowTooManyCharacters();

    // The bytes may lie in the buffer that is about to move.
    const unsigned int oldLength = length();
    const std::less<const char*> isBefore;
    const bool isOwn = oldLength != 0 && !isBefore(bytes, m_text) && !isBefore(m_text + oldLength, bytes);
    const std::size_t offset = isOwn ? static_cast<std::size_t>(bytes - m_text) : 0;
    makeRoom(oldLength + static_cast<unsigned int>(count));
    std::memmove(m_text + oldLength, isOwn ? m_text + offset : bytes, count);
    m_text[length()] = 0;
    return *this;
}

// What += does when the buffer is full, shared or not there yet.
qxString& qxString::appendByte(char c)
{
    if (length() == MAX_LENGTH) qxThrowTooManyCharacters();
    const unsigned int oldLength = length();
    makeRoom(oldLength + 1);
    m_text[oldLength] = c;
    return *this;
}

void qxString::setNumber(qxInt64 value, unsigned int base, unsigned int width, bool isUnsigned)
{
    constexpr unsigned int WIDEST = 64 + 1; // binary digits and a sign
    if (width > MAX_LENGTH) qxThrowTooManyCharacters();
    char digits[WIDEST + 1];
    const unsigned int count = qxLtoA(digits, value, base, std::min(width, WIDEST), nullptr, isUnsigned);
    setBytes(digits, count);
    if (count != 0 && width > WIDEST) { // more zeros behind the sign
        const unsigned int sign = digits[0] == '-' ? 1 : 0;
        makeRoom(width);
        std::memset(m_text + sign, '0', width - count);
        std::memcpy(m_text + sign + (width - count), digits + sign, count - sign);
    }
    resolveHash();
}

unsigned int qxString::resolveHash() const
{
    if (length() == 0) return 0;
    const unsigned int value = hash(m_text, length());
    std::atomic_ref<unsigned int>(m_hash).store(value, std::memory_order_relaxed);
    return value;
}

// Replaces the text; the bytes may be this string's own. The hash is pending afterwards.
void qxString::setBytes(const char* bytes, std::size_t count)
{
    if (count > MAX_LENGTH) qxThrowTooManyCharacters();
    if (count == 0) return releaseText();
    const unsigned int newLength = static_cast<unsigned int>(count);
    const unsigned int room = roomFor(newLength);
    const bool isReusable = !isEmpty() && !isUnique() && room == roomFor(length());
    char* const target = isReusable ? m_text : newBytes(room);
    std::memmove(target, bytes, newLength);
    target[newLength] = 0;
    if (!isReusable && !isUnique()) qx_free(m_text);
    m_text = target;
    m_lengthAndID = newLength;
    setHashPending();
}

// Changes the length to 1 or more bytes and keeps what fits of them; a longer text ends in bytes that the caller
// sets. The text is owned and its hash pending afterwards.
void qxString::makeRoom(unsigned int newLength)
{
    const unsigned int room = roomFor(newLength);
    if (isUnique() || isEmpty()) {
        char* const bytes = newBytes(room);
        if (!isEmpty()) std::memcpy(bytes, m_text, std::min(length() + 1U, newLength));
        m_text = bytes;
    } else if (room != roomFor(length())) {
        void* const bytes = qx_realloc(m_text, room);
        if (!bytes) qxThrowBadAlloc(__FILE__, __LINE__);
        m_text = static_cast<char*>(bytes);
    }
    m_text[newLength] = 0;
    m_lengthAndID = newLength;
    setHashPending();
}

// Takes an own copy of a unique text; the hash stays.
void qxString::detach()
{
    if (!isUnique()) return;
    char* const bytes = newBytes(roomFor(length()));
    std::memcpy(bytes, m_text, length() + 1U);
    m_text = bytes;
    m_lengthAndID = length();
}

// The bytes of a text that is not empty, to be changed by the caller; the hash is pending.
char* qxString::editBytes()
{
    detach();
    setHashPending();
    return m_text;
}

void qxString::releaseText()
{
    if (!isUnique()) qx_free(m_text);
    m_text = nullptr;
    m_lengthAndID = 0;
    m_hash = 0;
}

// The lengths are equal; one string is unique or the hash of one is pending.
bool qxString::equalsInFull(const qxString& other) const
{
    if (!hasSameBytes(other.m_text)) return false;
    if (hash() != other.hash()) return false; // one of them was edited and keeps the hash of its old text
    if (isUnique()) other.adopt(*this);
    if (other.isUnique()) adopt(other);
    return true;
}

// Turns this ordinary string into the unique one that it was found equal to.
void qxString::adopt(const qxString& unique) const
{
    if (isUnique()) return;
    qx_free(m_text);
    m_text = unique.m_text;
    m_lengthAndID = unique.m_lengthAndID;
}

qxString operator+(const qxString& left, const qxString& right)
{
    qxString result(left);
    result += right;
    return result;
}

qxString operator+(const qxString& left, const char* right)
{
    qxString result(left);
    result += right;
    return result;
}

qxString operator+(const char* left, const qxString& right)
{
    qxString result(left);
    result += right;
    return result;
}

qxString operator+(const qxString& left, char right)
{
    qxString result(left);
    result += right;
    return result;
}

qxString operator+(const qxString& left, wchar_t right)
{
    qxString result(left);
    result += right;
    return result;
}
