// SPDX-License-Identifier: see LICENSE

#include "serialize/qxurl.h"

#include "platform/qxplatformfile.h"
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

// Whether `url` is a plain path, or "file:" and one, to which most characters are as good as others.
bool isPath(string_view url)
{
    const string_view scheme = qxURLScheme(url);
    if (scheme.empty()) return true;
    const std::string lower = qxString(scheme.data(), scheme.size()).toLower().getString();
    return lower == "file" && !url.substr(scheme.size() + 1).starts_with("//");
}

// A name and "=", without folders: what can hardly be meant as the rest of a path.
bool looksLikeAttributes(string_view text)
{
    if (text.find('/') != string_view::npos) return false;
    const string_view name = text.substr(0, std::min(text.find('='), text.size()));
    const auto isNameCharacter = [](char c) { return isSchemeCharacter(c) || c == '_' || c == '%'; };
    return !name.empty() && name.size() < text.size() &&
           std::all_of(name.begin(), name.end(), isNameCharacter);
}

// Where what is behind the path begins: at "?" or "#".
std::size_t findPathEnd(string_view url)
{
    if (!isPath(url)) return std::min(url.find_first_of("?#", qxURLScheme(url).size() + 1), url.size());
    const std::size_t mark = url.rfind('?');
    return mark != string_view::npos && looksLikeAttributes(url.substr(mark + 1)) ? mark : url.size();
}

bool isSeparator(char c, bool isInPath)
{
    return isInPath ? qxPlatformFileIsSeparator(c) : c == '/';
}

// Behind the last separator of `path`.
std::size_t findName(string_view path, bool isInPath)
{
    std::size_t name = path.size();
    while (name > 0 && !isSeparator(path[name - 1], isInPath)) --name;
    return name;
}

// How many parts of an absolute path can not be left by ".."; what stands at its start is a drive, or a server and what
// that shares. The first "/" is not among them.
std::size_t countRoots(string_view path)
{
    if (path.starts_with('/')) return 3;
    return isDrive(path) ? 1 : 0;
}

// Takes "." and ".." out of a path as far as that goes.
std::string straighten(string_view path)
{
    const bool isAbsolute = path.starts_with('/');
    if (isAbsolute) path.remove_prefix(1);
    const std::size_t roots = countRoots(path);
    std::vector<string_view> parts;
    bool endsInFolder = false;
    for (;;) {
        const std::size_t end = path.find('/');
        const string_view part = path.substr(0, end);
        endsInFolder = part == "." || part == "..";
        if (part == ".." && parts.size() > roots && parts.back() != "..")
            parts.pop_back();
        else if (part != "." && !(part == ".." && isAbsolute && roots == 0))
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
    base = qxURLBody(base);
    const bool isInPath = isPath(base);
    const string_view attributes =
        url.substr(isInPath ? findPathEnd(url) : std::min(url.find_first_of("?#"), url.size()));
    url.remove_suffix(attributes.size());
    std::string result(base.substr(0, findPath(base)));
    std::string path(base.substr(result.size()));
    if (!url.empty() && isSeparator(url[0], isInPath)) {
        const bool hasHost = result.find("//") != std::string::npos;
        return (hasHost ? result.append(url) : std::string(url)).append(attributes);
    }
    const bool isWholeFolder = path.empty() ? !result.ends_with('/') && result.find("//") == std::string::npos
                                            : isSeparator(path.back(), isInPath);
    if (!isWholeFolder) path += '/';
    path += url;
    path = straighten(path);
    if (result.empty() && !qxURLScheme(path).empty()) result = "./"; // or a file's name would become a scheme
    return (result + path).append(attributes);
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
    std::string folder(view.substr(0, findName(view, true)));
    for (char& c : folder)
        if (qxPlatformFileIsSeparator(c)) c = '/';
    std::string url = "file:";
    if (!folder.starts_with("//")) {
        url += folder;
    } else { // what follows "file://" is decoded
        url += "//";
        for (const char c : folder) {
            if (c == '%' || c == '?' || c == '#')
                url += c == '%' ? "%25" : c == '?' ? "%3F" : "%23";
            else
                url += c;
        }
    }
    return url.size() <= MAX_LENGTH ? qxString(url.data(), url.size()) : qxString();
}

string_view qxURLAttributes(string_view url)
{
    const std::size_t mark = findPathEnd(url);
    if (mark == url.size() || url[mark] != '?') return {};
    const string_view attributes = url.substr(mark + 1);
    return isPath(url) ? attributes : attributes.substr(0, attributes.find('#'));
}

string_view qxURLBody(string_view url)
{
    return url.substr(0, findPathEnd(url));
}

bool qxURLAttribute(string_view attributes, string_view name, std::string& value)
{
    while (!attributes.empty()) {
        const string_view attribute = attributes.substr(0, attributes.find('&'));
        attributes.remove_prefix(std::min(attribute.size() + 1, attributes.size()));
        const std::size_t equals = std::min(attribute.find('='), attribute.size());
        if (decodePercent(attribute.substr(0, equals)) != name) continue;
        value = decodePercent(attribute.substr(std::min(equals + 1, attribute.size())));
        return true;
    }
    return false;
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
    const string_view document = qxURLBody(viewOf(url));
    const std::size_t path = std::min(findPath(document), document.size());
    const std::size_t name = findName(document.substr(path), isPath(document));
    return qxString(document.data(), path + name);
}

qxString qxSerializeAdapter::getURLPath(const qxString& url)
{
    const qxString scheme = getURLScheme(url);
    std::string path;
    const bool isFile = scheme.isEmpty() || scheme == "file";
    if (!isFile || !qxURLToPath(qxURLBody(viewOf(url)), path)) return qxString();
    return qxString(path.data(), path.size());
}

qxString qxSerializeAdapter::getURLAttributeValue(const qxString& url, const qxString& name,
                                                  const qxString& defaultValue)
{
    std::string value;
    if (!qxURLAttribute(qxURLAttributes(viewOf(url)), viewOf(name), value)) return defaultValue;
    return value.size() <= MAX_LENGTH ? qxString(value.data(), value.size()) : defaultValue;
}

qxString qxSerializeAdapter::getURLBaseEncoding(const qxString& url)
{
    return getURLAttributeValue(url, "encoding").toLower();
}
