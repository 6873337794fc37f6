// SPDX-License-Identifier: see LICENSE

#include "text/qxcharset.h"

#include "core/qxascii.h"
#include "core/qxutf8scan.h"

#include <algorithm>

namespace
{

constexpr char32_t LARGEST = 0x10FFFF;
constexpr char32_t NO_CHARACTER = LARGEST + 1; // a code beyond all characters

/// The next character of a set's text, which is not at its end; one given by its code is taken as a whole.
char32_t takeCharacter(std::string_view& text)
{
    if (text.size() > 2 && text[0] == '#' && text[1] == 'x' && qxHexValue(text[2]) >= 0) {
        text.remove_prefix(2);
        char32_t code = 0;
        for (; !text.empty() && qxHexValue(text[0]) >= 0; text.remove_prefix(1)) {
            code =
                std::min<char32_t>(code * 16 + static_cast<unsigned int>(qxHexValue(text[0])), NO_CHARACTER);
        }
        return code;
    }
    unsigned int size = 0;
    const unsigned int code = qxReadUTF8(text.data(), text.size(), size);
    text.remove_prefix(std::max(size, 1U));
    return size == 0 ? 0xFFFD : code;
}

} // namespace

qxCharSet qxCharSet::fromText(std::string_view text)
{
    qxCharSet set;
    const bool isNegated = text.starts_with('^');
    if (isNegated) text.remove_prefix(1);
    while (!text.empty()) {
        const char32_t first = takeCharacter(text);
        char32_t last = first;
        if (text.size() > 1 && text[0] == '-') { // at the end it stands for itself
            text.remove_prefix(1);
            last = takeCharacter(text);
        }
        set.addRange(first, last);
    }
    set.sort();
    if (isNegated) set.negate();
    return set;
}

qxCharSet qxCharSet::ofCharacter(char32_t code)
{
    qxCharSet set;
    set.addRange(code, code);
    return set;
}

qxCharSet qxCharSet::ofCharacters(std::string_view characters)
{
    qxCharSet set;
    for (const char c : characters)
        set.addRange(static_cast<unsigned char>(c), static_cast<unsigned char>(c));
    return set;
}

bool qxCharSet::overlaps(const qxCharSet& other) const
{
    for (unsigned int i = 0; i < BITS / 64; ++i) {
        if ((m_bits[i] & other.m_bits[i]) != 0) return true;
    }
    if (m_isNegated && other.m_isNegated) return true; // nobody lists all there are
    return m_isNegated ? other.isAboveIn(*this) : isAboveIn(other);
}

/// True when some character that is in the ranges, which are not negated, is in `other`, too.
bool qxCharSet::isAboveIn(const qxCharSet& other) const
{
    return std::any_of(m_ranges.begin(), m_ranges.end(), [&other](const Range& range) {
        const bool isListed =
            std::any_of(other.m_ranges.begin(), other.m_ranges.end(), [&](const Range& listed) {
                return other.m_isNegated ? listed.first <= range.first && range.last <= listed.last
                                         : listed.first <= range.last && range.first <= listed.last;
            });
        return isListed != other.m_isNegated;
    });
}

void qxCharSet::addRange(char32_t first, char32_t last)
{
    for (char32_t code = first; code <= last && code < BITS; ++code) m_bits[code / 64] |= 1ULL << (code % 64);
    first = std::max(first, static_cast<char32_t>(BITS));
    last = std::min(last, LARGEST);
    if (first <= last) m_ranges.push_back({first, last});
}

void qxCharSet::negate()
{
    for (qxUInt64& bits : m_bits) bits = ~bits;
    m_isNegated = !m_isNegated;
}

bool qxCharSet::isAbove(char32_t code) const
{
    const auto behind =
        std::upper_bound(m_ranges.begin(), m_ranges.end(), code,
                         [](char32_t value, const Range& range) { return value < range.first; });
    const bool isListed = behind != m_ranges.begin() && code <= std::prev(behind)->last;
    return isListed != m_isNegated;
}

/// Puts the ranges in order and joins those that touch.
void qxCharSet::sort()
{
    std::sort(m_ranges.begin(), m_ranges.end(),
              [](const Range& a, const Range& b) { return a.first < b.first; });
    std::vector<Range> joined;
    for (const Range& range : m_ranges) {
        if (!joined.empty() && range.first <= joined.back().last + 1)
            joined.back().last = std::max(joined.back().last, range.last);
        else
            joined.push_back(range);
    }
    m_ranges = std::move(joined);
}
