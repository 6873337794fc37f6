// SPDX-License-Identifier: see LICENSE

#include "serialize/qxurl.h"

#include "qxserializeadapter.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace
{

using std::string_view;

constexpr unsigned int MAX_LENGTH = qxString::MAX_LENGTH;

string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSchemeCharacter(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

// The value of a hexadecimal digit, -1 for another character.
int digitValue(char c)
{
    const string_view digits = "0123456789abcdef";
    const std::size_t value = digits.find(isLetter(c) ? static_cast<char>(c | 0x20) : c);
    return value == string_view::npos ? -1 : static_cast<int>(value);
}

bool isDrive(string_view url)
{
    return url.size() >= 2 && isLetter(url[0]) && url[1] == ':';
}

// Where the path begins: behind "scheme:" and behind "//host".
std::size_t findPath(string_view url)
{
    const string_view scheme = qxURLScheme(url);
    if (scheme.empty()) return 0;
    const std::size_t start = scheme.size() + 1;
    if (!url.substr(start).starts_with("//")) return start;
    return std::min(url.find('/', start + 2), url.size());
}

// Where the path ends: a question mark or number sign is part of a path, but ends that of a real URL.
std::size_t findPathEnd(string_view url, std::size_t path)
{
    const string_view scheme = qxURLScheme(url);
    if (scheme.empty() || path <= scheme.size() + 1) return url.size();
    return std::min(url.find_first_of("?#", path), url.size());
}

// Takes "." and ".." out of a path as far as that goes.
std::string straighten(string_view path)
{
    const bool isAbsolute = path.starts_with('/');
    if (isAbsolute) path.remove_prefix(1);
    std::vector<string_view> parts;
    bool endsInFolder = false;
    for (;;) {
        const std::size_t end = path.find('/');
        const string_view part = path.substr(0, end);
        endsInFolder = part == "." || part == "..";
        if (part == ".." && !parts.empty() && parts.back() != "..")
            parts.pop_back();
        else if (part != "." && !(part == ".." && isAbsolute))
            parts.push_back(part);
        if (end == string_view::npos) break;
        path.remove_prefix(end + 1);
    }
    if (endsInFolder && !(parts.empty() && !isAbsolute)) parts.emplace_back();

    std::string result = isAbsolute ? "/" : "";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) result += '/';
        result += parts[i];
    }
    return result;
}

std::string join(string_view url, string_view base)
{
    std::string result(base.substr(0, findPath(base)));
    std::string path(base.substr(result.size()));
    if (url.starts_with('/')) {
        const bool hasHost = result.find("//") != std::string::npos;
        return hasHost ? result.append(url) : std::string(url);
    }
    const bool isWholeFolder =
        path.empty() ? !result.ends_with('/') && result.find("//") == std::string::npos : path.ends_with('/');
    if (!isWholeFolder) path += '/';
    path += url;
    return result + straighten(path);
}

// Replaces %HH by the byte; a percent sign without two digits stands for itself.
std::string decodePercent(string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? digitValue(text[i + 1]) : -1;
        const int low = high >= 0 ? digitValue(text[i + 2]) : -1;
        result += low < 0 ? text[i] : static_cast<char>(high * 16 + low);
        if (low >= 0) i += 2;
    }
    return result;
}

bool readNumber(string_view text, qxUInt64& value)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex) text.remove_prefix(2);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, isHex ? 16 : 10);
    return error == std::errc() && stop == end;
}

} // namespace

bool qxURLIsScheme(string_view name)
{
    return name.size() >= 2 && isLetter(name[0]) && std::all_of(name.begin(), name.end(), isSchemeCharacter);
}

string_view qxURLScheme(string_view url)
{
    const string_view name = url.substr(0, std::min(url.find(':'), url.size()));
    return name.size() < url.size() && qxURLIsScheme(name) ? name : string_view();
}

qxString qxURLFolderOfPath(const qxString& path)
{
    const string_view view = viewOf(path);
    const string_view folder = view.substr(0, view.rfind('/') + 1); // no slash: npos + 1 is 0
    std::string url = "file:";
    if (!folder.starts_with("//")) {
        url += folder;
    } else { // what follows "file://" is decoded
        url += "//";
        for (const char c : folder) url += c == '%' ? std::string("%25") : std::string(1, c);
    }
    return url.size() <= MAX_LENGTH ? qxString(url.data(), url.size()) : qxString();
}

bool qxURLToPath(string_view url, std::string& path)
{
    const string_view rest = qxURLScheme(url).empty() ? url : url.substr(qxURLScheme(url).size() + 1);
    path = rest;
    if (!qxURLScheme(url).empty() && rest.starts_with("//")) {
        const std::size_t start = std::min(rest.find('/', 2), rest.size());
        const string_view host = rest.substr(2, start - 2);
        if (!host.empty() && host != "localhost") return false;
        path = decodePercent(rest.substr(start));
    }
    return !path.empty() && path.find('\0') == std::string::npos;
}

bool qxURLToMemory(string_view text, void*& address, unsigned int& length)
{
    const std::size_t comma = text.find(',');
    qxUInt64 first = 0;
    qxUInt64 count = 0;
    if (comma == string_view::npos || !readNumber(text.substr(0, comma), first) ||
        !readNumber(text.substr(comma + 1), count))
        return false;
    if (first == 0 || count > 0xFFFFFFFF || first + count < first) return false;
    address = reinterpret_cast<void*>(first);
    length = static_cast<unsigned int>(count);
    return true;
}

qxString qxSerializeAdapter::getURLScheme(const qxString& url)
{
    const string_view scheme = qxURLScheme(viewOf(url));
    return qxString(scheme.data(), scheme.size()).toLower();
}

qxString qxSerializeAdapter::resolveURL(const qxString& url, const qxString& base)
{
    const string_view view = viewOf(url);
    if (base.isEmpty() || view.empty() || isDrive(view) || !qxURLScheme(view).empty()) return url;
    const std::string joined = join(view, viewOf(base));
    return joined.size() <= MAX_LENGTH ? qxString(joined.data(), joined.size()) : qxString();
}

qxString qxSerializeAdapter::getURLFolder(const qxString& url)
{
    const string_view view = viewOf(url);
    const std::size_t path = findPath(view);
    const string_view document = view.substr(0, findPathEnd(view, path));
    const std::size_t slash = document.rfind('/');
    const bool hasFolder = slash != string_view::npos && slash >= path;
    return qxString(document.data(), hasFolder ? slash + 1 : path);
}
