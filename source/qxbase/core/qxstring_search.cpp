// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxascii.h"
#include "core/qxtextbuilder.h"
#include "core/qxtextsearch.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace
{

constexpr std::size_t NOWHERE = std::string_view::npos;

std::string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

std::string folded(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), qxToUpper);
    return result;
}

std::size_t findText(std::string_view text, std::string_view pattern, bool wantsLast, bool caseSensitive)
{
    if (!caseSensitive) return findText(folded(text), folded(pattern), wantsLast, true);
    return wantsLast ? qxFindLast(text, pattern) : qxFindFirst(text, pattern);
}

std::size_t countEqual(std::string_view left, std::string_view right, bool caseSensitive)
{
    const std::size_t count = std::min(left.size(), right.size());
    if (caseSensitive) return qxCountEqual(left.data(), right.data(), count);
    std::size_t matched = 0;
    while (matched < count && qxToUpper(left[matched]) == qxToUpper(right[matched])) ++matched;
    return matched;
}

bool isSame(char left, char right, bool caseSensitive)
{
    return left == right || (!caseSensitive && qxToUpper(left) == qxToUpper(right));
}

} // namespace

bool qxString::compare(const qxString& other, bool caseSensitive, unsigned short* matched) const
{
    const std::size_t equal = countEqual(viewOf(*this), viewOf(other), caseSensitive);
    if (matched) *matched = static_cast<unsigned short>(equal);
    return equal == other.length();
}

bool qxString::contains(const qxString& other, unsigned int start, bool caseSensitive,
                        unsigned short* position) const
{
    if (start > length()) return false;
    const std::size_t found = findText(viewOf(*this).substr(start), viewOf(other), false, caseSensitive);
    if (found == NOWHERE) return false;
    if (position) *position = static_cast<unsigned short>(start + found);
    return true;
}

bool qxString::isFirst(char c, bool caseSensitive) const
{
    return length() != 0 && isSame(m_text[0], c, caseSensitive);
}

bool qxString::isFirst(const qxString& text, bool caseSensitive) const
{
    return compare(text, caseSensitive);
}

bool qxString::isLast(char c, bool caseSensitive) const
{
    return length() != 0 && isSame(m_text[length() - 1], c, caseSensitive);
}

bool qxString::isLast(const qxString& text, bool caseSensitive) const
{
    if (text.length() > length()) return false;
    const std::string_view end = viewOf(*this).substr(length() - text.length());
    return countEqual(end, viewOf(text), caseSensitive) == text.length();
}

qxString qxString::left(unsigned int count, bool inverse) const
{
    const unsigned int split = std::min<unsigned int>(count, length());
    return inverse ? (*this)(split, length() - split) : (*this)(0, split);
}

qxString qxString::right(unsigned int count, bool inverse) const
{
    const unsigned int split = length() - std::min<unsigned int>(count, length());
    return inverse ? (*this)(0, split) : (*this)(split, length() - split);
}

qxString qxString::leftOf(const qxString& pattern, bool shortest, bool caseSensitive) const
{
    const std::size_t found = findText(viewOf(*this), viewOf(pattern), !shortest, caseSensitive);
    return found == NOWHERE ? qxString() : (*this)(0, static_cast<unsigned int>(found));
}

qxString qxString::rightOf(const qxString& pattern, bool shortest, bool caseSensitive) const
{
    const std::size_t found = findText(viewOf(*this), viewOf(pattern), shortest, caseSensitive);
    if (found == NOWHERE) return qxString();
    const unsigned int start = static_cast<unsigned int>(found) + pattern.length();
    return (*this)(start, length() - start);
}

qxString& qxString::strip(char c, bool leading, bool trailing)
{
    unsigned int first = 0;
    unsigned int behind = length();
    while (leading && first < behind && m_text[first] == c) ++first;
    while (trailing && behind > first && m_text[behind - 1] == c) --behind;
    if (behind - first != length()) setBytes(m_text + first, behind - first);
    return *this;
}

qxString& qxString::stripWhiteSpace(bool leading, bool trailing)
{
    unsigned int first = 0;
    unsigned int behind = length();
    while (leading && first < behind && qxIsWhiteSpace(m_text[first])) ++first;
    while (trailing && behind > first && qxIsWhiteSpace(m_text[behind - 1])) --behind;
    if (behind - first != length()) setBytes(m_text + first, behind - first);
    return *this;
}

unsigned int qxString::substitute(char from, char to)
{
    const unsigned int first = find(from);
    if (first >= length()) return 0;
    (*this)(first) = to; // the hash stays, and a unique text becomes an own one
    unsigned int count = 1;
    for (unsigned int index = first + 1; index < length(); ++index) {
        if (m_text[index] != from) continue;
        m_text[index] = to;
        ++count;
    }
    return count;
}

qxString qxString::substitute(const qxString& from, const qxString& to) const
{
    if (from.isEmpty()) return *this;
    qxTextBuilder builder;
    std::string_view rest = viewOf(*this);
    for (std::size_t found = 0; (found = qxFindFirst(rest, viewOf(from))) != NOWHERE;) {
        builder.append(rest.data(), found);
        builder.append(to.getString(), to.length());
        rest.remove_prefix(found + from.length());
    }
    builder.append(rest.data(), rest.size());
    qxString result;
    result.setBytes(builder.bytes(), builder.length());
    return result;
}
