// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeynames.h"

#include "core/qxutf8scan.h"
#include "qxutf8.h"
#include "xml/qxxmlchars.h"

#include <cstring>
#include <random>

namespace
{

constexpr char DIGITS[] = "0123456789ABCDEF";
constexpr unsigned int LONGEST_CODE = 6; // hexadecimal digits

// Stands in a name of an element at its start or behind that. ":" would make the name one of a name space.
bool isNameCharacter(unsigned int code, bool isFirst)
{
    if (code == ':') return false;
    if (code < 0x10000) return qxIsInXmlSet(isFirst ? QX_XML_NAME_STARTS : QX_XML_NAME_TOKENS, code);
    return code < 0xF0000;
}

void appendCode(unsigned int code, std::string& text)
{
    std::string digits;
    for (; code != 0 || digits.size() < 4; code >>= 4) digits.insert(digits.begin(), DIGITS[code & 15]);
    text += "_x" + digits + "_";
}

int digitOf(char c)
{
    const char* const digit = c != 0 ? std::strchr(DIGITS, c) : nullptr;
    return digit ? static_cast<int>(digit - DIGITS) : -1;
}

// Takes "_xHHHH_" off the start of `text`; false, and nothing is changed, when it does not begin with that.
bool takeCode(std::string_view& text, std::string& decoded)
{
    if (!text.starts_with("_x")) return false;
    unsigned int code = 0;
    std::size_t end = 2;
    for (; end < text.size() && end < 2 + LONGEST_CODE && digitOf(text[end]) >= 0; ++end)
        code = code << 4 | static_cast<unsigned int>(digitOf(text[end]));
    if (end == text.size() || text[end] != '_' || code == 0 || code > 0x10FFFF) return false;
    char bytes[8];
    decoded.append(bytes, qxUInt32ToUTF8(bytes, code));
    text.remove_prefix(end + 1);
    return true;
}

void split(std::string_view text, std::vector<std::string>& parts)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('/'), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

} // namespace

std::string qxNormalKeyPath(std::string_view path)
{
    std::string normal;
    normal.reserve(path.size());
    for (const char c : path) {
        const bool isSeparator = c == '/' || c == '\\';
        if (isSeparator && (normal.empty() || normal.back() == '/')) continue;
        normal += isSeparator ? '/' : c;
    }
    if (normal.ends_with('/')) normal.pop_back();
    return normal;
}

bool qxEncodeKeyName(std::string_view name, std::string& element)
{
    const bool isEmpty = name.empty();
    for (bool isFirst = true; !name.empty(); isFirst = false) {
        unsigned int size = 0;
        const unsigned int code = qxReadUTF8(name.data(), name.size(), size);
        const bool isSurrogate = code >= 0xD800 && code < 0xE000;
        if (size == 0 || code == 0 || code > 0x10FFFF || isSurrogate || size != qxUTF8Size(code))
            return false;
        if (isNameCharacter(code, isFirst) && !name.starts_with("_x"))
            element.append(name.data(), size);
        else
            appendCode(code, element);
        name.remove_prefix(size);
    }
    return !isEmpty;
}

std::string qxDecodeKeyName(std::string_view element)
{
    if (element.find("_x") == std::string_view::npos) return std::string(element);
    std::string decoded;
    for (std::string_view rest = element; !rest.empty();) {
        if (takeCode(rest, decoded)) continue;
        decoded += rest.front();
        rest.remove_prefix(1);
    }
    std::string again;
    return qxEncodeKeyName(decoded, again) && again == element ? decoded : std::string(element);
}

std::vector<std::string> qxKeyWay(std::string_view path, std::string_view name)
{
    std::vector<std::string> way;
    split(path, way);
    way.emplace_back(name);
    return way;
}

std::vector<std::string> qxWrittenKeyWay(std::string_view path, std::string_view name)
{
    std::vector<std::string> way;
    split(path, way);
    split(name, way);
    for (std::string& step : way) step = qxDecodeKeyName(step);
    return way == qxKeyWay(path, name) || name.empty() ? std::vector<std::string>() : way;
}

unsigned long long qxHashKeyText(std::string_view text)
{
    static const unsigned long long s_seed =
        std::random_device()() | static_cast<unsigned long long>(std::random_device()()) << 32;
    const auto mix = [](unsigned long long value) {
        value *= s_seed | 1; // a number that nobody outside knows, in every step
        return value ^ value >> 31;
    };
    unsigned long long hash = s_seed ^ text.size();
    const char* next = text.data();
    std::size_t left = text.size();
    unsigned long long word = 0;
    for (; left >= sizeof(word); left -= sizeof(word), next += sizeof(word)) {
        std::memcpy(&word, next, sizeof(word));
        hash = mix(hash ^ word);
    }
    word = 0;
    std::memcpy(&word, next, left);
    return mix(mix(hash ^ word) ^ s_seed);
}
