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

unsigned int wordAt(const char* text)
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
    m_hash = resolveHash();
}

qxString::qxString(double value, const qxString& format) : qxString()
{
    const qxArgument argument(value);
    formatArguments(format.getString(), format.length(), &argument, 1);
    m_hash = resolveHash();
}

qxString::qxString(const qxString& other)
    : m_text(nullptr), m_length(0), m_uniqueID(other.m_uniqueID), m_hash(other.cachedHash())
{
    if (m_uniqueID != 0) {
        m_text = other.m_text;
    } else if (other.m_length != 0) {
        m_text = newBytes(roomFor(other.m_length));
        std::memcpy(m_text, other.m_text, other.m_length + 1U);
    }
    m_length = other.m_length;
}

qxString::qxString(qxString&& other) noexcept
    : m_text(other.m_text), m_length(other.m_length), m_uniqueID(other.m_uniqueID), m_hash(other.m_hash)
{
    other.m_text = nullptr;
    other.m_length = 0;
    other.m_uniqueID = 0;
    other.m_hash = 0;
}

qxString::~qxString()
{
    if (m_uniqueID == 0) qx_free(m_text);
}

qxString& qxString::operator=(const qxString& other)
{
    if (this == &other) return *this;
    if (other.m_uniqueID != 0) {
        releaseText();
        m_text = other.m_text;
        m_length = other.m_length;
        m_uniqueID = other.m_uniqueID;
    } else {
        setBytes(other.m_text, other.m_length);
    }
    m_hash = other.cachedHash();
    return *this;
}

qxString& qxString::operator=(qxString&& other) noexcept
{
    std::swap(m_text, other.m_text);
    std::swap(m_length, other.m_length);
    std::swap(m_uniqueID, other.m_uniqueID);
    std::swap(m_hash, other.m_hash);
    return *this;
}

qxString& qxString::operator=(const char* text)
{
    setBytes(text, text ? std::strlen(text) : 0);
    m_hash = resolveHash();
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
        result ^= (wordAt(text) ^ (left - 1)) | (result * 2);
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
    for (unsigned int i = 0; i < m_length; ++i)
        result ^= static_cast<qxUInt64>(static_cast<signed char>(m_text[i])) << (8 * i % 64);
    return result;
}

char& qxString::operator()(unsigned int index)
{
    if (index >= m_length) qxExceptionThrows::qxThrowFatal("qxString(index) out of bounds");
    m_hash = hash(); // the hash of the text before the edit stays, however the caller uses the reference
    detach();
    return m_text[index];
}

char qxString::operator()(unsigned int index) const
{
    if (index >= m_length) qxExceptionThrows::qxThrowFatal("qxString(index) out of bounds");
    return m_text[index];
}

qxString qxString::operator()(unsigned int index, unsigned int count) const
{
    if (index > m_length || count > m_length - index)
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
    return append(text.m_text, text.m_length);
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
    if (count > MAX_LENGTH - m_length) qxThrowTooManyCharacters();

    // The bytes may lie in the buffer that is about to move.
    const unsigned int oldLength = m_length;
    const std::less<const char*> isBefore;
    const bool isOwn = m_text && !isBefore(bytes, m_text) && !isBefore(m_text + oldLength, bytes);
    const std::size_t offset = isOwn ? static_cast<std::size_t>(bytes - m_text) : 0;
    makeRoom(oldLength + static_cast<unsigned int>(count));
    std::memmove(m_text + oldLength, isOwn ? m_text + offset : bytes, count);
    m_text[m_length] = 0;
    return *this;
}

void qxString::setNumber(qxInt64 value, unsigned int base, unsigned int width, bool isUnsigned)
{
    constexpr unsigned int WIDEST = 64 + 1; // binary digits and a sign
    if (width > MAX_LENGTH) qxThrowTooManyCharacters();
    char digits[WIDEST + 1];
    unsigned int length = qxLtoA(digits, value, base, std::min(width, WIDEST), nullptr, isUnsigned);
    if (width > WIDEST && length != 0) {
        makeRoom(width);
        const unsigned int sign = digits[0] == '-' ? 1 : 0;
        std::memcpy(m_text, digits, sign);
        std::memset(m_text + sign, '0', width - length);
        std::memcpy(m_text + sign + (width - length), digits + sign, length - sign);
    } else {
        setBytes(digits, length);
    }
    m_hash = resolveHash();
}

unsigned int qxString::resolveHash() const
{
    if (m_length == 0) return 0;
    const unsigned int value = hash(m_text, m_length);
    std::atomic_ref<unsigned int>(m_hash).store(value, std::memory_order_relaxed);
    return value;
}

// Replaces the text; the bytes may be this string's own. The hash is pending afterwards.
void qxString::setBytes(const char* bytes, std::size_t count)
{
    if (count > MAX_LENGTH) qxThrowTooManyCharacters();
    const unsigned int length = static_cast<unsigned int>(count);
    if (length == 0) {
        releaseText();
        return;
    }
    char* target = m_text;
    const bool isReusable = m_text && m_uniqueID == 0 && roomFor(length) == roomFor(m_length);
    if (!isReusable) target = newBytes(roomFor(length));
    std::memmove(target, bytes, length);
    target[length] = 0;
    if (!isReusable && m_uniqueID == 0) qx_free(m_text);
    m_text = target;
    m_length = static_cast<unsigned short>(length);
    m_uniqueID = 0;
    setHashPending();
}

// Changes the length to 1 or more bytes and keeps what fits of them; a longer text ends in bytes that the
// caller sets. The text is owned and its hash pending afterwards.
void qxString::makeRoom(unsigned int length)
{
    if (m_uniqueID != 0 || !m_text) {
        char* const bytes = newBytes(roomFor(length));
        if (m_text) std::memcpy(bytes, m_text, std::min(m_length + 1U, length));
        m_text = bytes;
        m_uniqueID = 0;
    } else if (roomFor(length) != roomFor(m_length)) {
        void* const bytes = qx_realloc(m_text, roomFor(length));
        if (!bytes) qxThrowBadAlloc(__FILE__, __LINE__);
        m_text = static_cast<char*>(bytes);
    }
    m_text[length] = 0;
    m_length = static_cast<unsigned short>(length);
    setHashPending();
}

// Takes an own copy of a unique text; the hash stays.
void qxString::detach()
{
    if (m_uniqueID == 0) return;
    char* const bytes = newBytes(roomFor(m_length));
    std::memcpy(bytes, m_text, m_length + 1U);
    m_text = bytes;
    m_uniqueID = 0;
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
    if (m_uniqueID == 0) qx_free(m_text);
    m_text = nullptr;
    m_length = 0;
    m_uniqueID = 0;
    m_hash = 0;
}

// The lengths are equal, and a cached hash is missing or one of the two is unique.
bool qxString::equalsInFull(const qxString& other) const
{
    if (m_length == 0) return true;
    if (std::memcmp(m_text, other.m_text, m_length) != 0) return false;
    if (hash() != other.hash()) return false; // one of them was edited and keeps its old hash
    if (m_uniqueID != 0) other.adopt(*this);
    if (other.m_uniqueID != 0) adopt(other);
    return true;
}

// Turns this ordinary string into the unique one that it was found equal to.
void qxString::adopt(const qxString& unique) const
{
    if (m_uniqueID != 0) return;
    qx_free(m_text);
    m_text = unique.m_text;
    m_uniqueID = unique.m_uniqueID;
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
