// SPDX-License-Identifier: see LICENSE

#include "net/qxaddresstext.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr unsigned int GROUPS = 8;    // of IPv6
constexpr unsigned int NO_GROUP = 99; // where there is none

// The first part of `text` before `separator`, which is taken away with it.
std::string_view takePart(std::string_view& text, char separator)
{
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool readGroup(std::string_view text, unsigned char* bytes)
{
    if (text.empty() || text.size() > 4) return false;
    unsigned int value = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0) return false;
        value = value * 16 + static_cast<unsigned int>(digit);
    }
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
    return true;
}

// Reads groups with ":" between them, `room` at most, and returns how many; NO_GROUP for anything else.
unsigned int readGroups(std::string_view text, unsigned int room, bool mayEndInIPv4, unsigned char* bytes)
{
    if (text.empty()) return 0;
    if (text.ends_with(':')) return NO_GROUP;
    unsigned int count = 0;
    while (!text.empty()) {
        const std::string_view group = takePart(text, ':');
        if (text.empty() && mayEndInIPv4 && group.find('.') != group.npos) {
            if (count + 2 > room || !qxReadIPv4(group, bytes + count * 2)) return NO_GROUP;
            return count + 2;
        }
        if (count == room || !readGroup(group, bytes + count * 2)) return NO_GROUP;
        ++count;
    }
    return count;
}

unsigned int groupOf(const unsigned char* bytes, unsigned int index)
{
    return bytes[index * 2] * 256U + bytes[index * 2 + 1];
}

// The longest run of groups that are 0, the first of equal ones; a run of one is none.
struct ZeroRun {
    unsigned int start = NO_GROUP;
    unsigned int length = 1;
};

ZeroRun findZeros(const unsigned char* bytes)
{
    ZeroRun best;
    for (unsigned int start = 0; start < GROUPS; ++start) {
        unsigned int end = start;
        while (end < GROUPS && groupOf(bytes, end) == 0) ++end;
        if (end - start > best.length) best = {start, end - start};
        start = std::max(start, end);
    }
    return best;
}

} // namespace

bool qxReadIPv4(std::string_view text, unsigned char* bytes)
{
    for (unsigned int i = 0; i < 4; ++i) {
        if (i == 3 && text.find('.') != text.npos) return false;
        const std::string_view part = takePart(text, '.');
        unsigned int value = 0;
        // deliberate: with zeros in front some take it for octal
        if ((part.size() > 1 && part[0] == '0') || !qxReadDecimal(part, 255, value)) return false;
        bytes[i] = static_cast<unsigned char>(value);
    }
    return true;
}

bool qxReadIPv6(std::string_view text, unsigned char* bytes)
{
    const std::size_t gap = text.find("::");
    if (gap == text.npos) return readGroups(text, GROUPS, true, bytes) == GROUPS;

    unsigned char tail[16];
    // The gap stands for one group at least.
    const unsigned int before = readGroups(text.substr(0, gap), GROUPS - 1, false, bytes);
    if (before == NO_GROUP) return false;
    const unsigned int behind = readGroups(text.substr(gap + 2), GROUPS - 1 - before, true, tail);
    if (behind == NO_GROUP) return false;
    const unsigned int zeros = GROUPS - before - behind;
    std::memset(bytes + before * 2, 0, zeros * 2);
    std::memcpy(bytes + (before + zeros) * 2, tail, behind * 2);
    return true;
}

bool qxReadDecimal(std::string_view text, unsigned int maximum, unsigned int& number)
{
    if (text.empty() || text.size() > 10) return false;
    unsigned long long value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + static_cast<unsigned int>(c - '0');
    }
    if (value > maximum) return false;
    number = static_cast<unsigned int>(value);
    return true;
}

std::string qxWriteIPv4(const unsigned char* bytes)
{
    std::string text = std::to_string(bytes[0]);
    for (unsigned int i = 1; i < 4; ++i) text += "." + std::to_string(bytes[i]);
    return text;
}

std::string qxWriteIPv6(const unsigned char* bytes)
{
    static const unsigned char mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (std::memcmp(bytes, mapped, sizeof(mapped)) == 0) return "::ffff:" + qxWriteIPv4(bytes + 12);

    static const char digits[] = "0123456789abcdef";
    const ZeroRun zeros = findZeros(bytes);
    std::string text;
    for (unsigned int i = 0; i < GROUPS; ++i) {
        if (i == zeros.start) {
            text += "::";
            i += zeros.length - 1;
            continue;
        }
        if (!text.empty() && text.back() != ':') text += ':';
        const unsigned int group = groupOf(bytes, i);
        bool hasBegun = false;
        for (unsigned int shift = 16; shift > 0; shift -= 4) {
            const unsigned int digit = group >> (shift - 4) & 15;
            hasBegun = hasBegun || digit != 0 || shift == 4;
            if (hasBegun) text += digits[digit];
        }
    }
    return text;
}
