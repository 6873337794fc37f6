// SPDX-License-Identifier: see LICENSE

#include "qxxmlpath.h"

#include "qxusage.h"

namespace
{

// The last "/" outside brackets; npos when there is none.
std::size_t lastSlash(const std::string& path)
{
    std::size_t place = std::string::npos;
    int depth = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '[') ++depth;
        if (path[i] == ']' && depth > 0) --depth;
        if (path[i] == '/' && depth == 0) place = i;
    }
    return place;
}

} // namespace

qxXmlPath::qxXmlPath(const std::string& path) : text(path), item(path)
{
    if (path.size() > qxString::MAX_LENGTH) throw qxUsageError("a path is too long");
    const std::size_t slash = lastSlash(path);
    if (slash == std::string::npos || slash + 1 >= path.size() || path[slash + 1] != '@') return;
    item = path.substr(0, slash);
    attribute = path.substr(slash + 2);
    if (attribute.empty()) throw qxUsageError("path '" + path + "' names no attribute");
}

std::vector<qxXmlItem*> findByPath(qxXmlDom& document, const qxXmlPath& path)
{
    std::vector<qxXmlItem*> found;
    for (qxXmlItem* const item : document.findItems(path.item.c_str())) {
        if (!path.attribute.empty()) {
            const auto* const element = dynamic_cast<const qxXmlElement*>(item);
            if (!element || !element->hasAttribute(path.attribute.c_str())) continue;
        }
        found.push_back(item);
    }
    return found;
}
