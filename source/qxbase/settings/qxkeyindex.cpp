// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeyindex.h"

#include "settings/qxkeyitems.h"
#include "settings/qxkeynames.h"

#include <bit>

namespace
{

// The hash of a way is a polynomial in this, so that it follows from the hashes of the ways from the root.
constexpr unsigned long long BASE = 0xD6E8FEB86659FD93ULL;

// Whether the name may stand for another.
bool isEncoded(std::string_view name)
{
    return name.find('_') != std::string_view::npos;
}

bool standsFor(std::string_view element, std::string_view name)
{
    if (element.size() <= name.size()) return element == name; // encoded names are longer
    return isEncoded(element) && qxDecodeKeyName(element) == name;
}

unsigned long long hashOf(std::string_view element)
{
    return isEncoded(element) ? qxHashKeyText(qxDecodeKeyName(element)) : qxHashKeyText(element);
}

// Whether the ways of `length` steps that end at the two elements have the same names.
bool isSameWay(const qxXmlItem* left, const qxXmlItem* right, unsigned int length)
{
    for (; length != 0 && left != right; --length) {
        const std::string_view name = qxXmlTree::getName(*left);
        const std::string_view other = qxXmlTree::getName(*right);
        if (name != other && qxDecodeKeyName(name) != qxDecodeKeyName(other)) return false;
        left = left->getParent();
        right = right->getParent();
    }
    return true;
}

bool isWay(const qxXmlItem* item, const std::vector<std::string>& way)
{
    for (std::size_t i = way.size(); i-- > 0; item = item->getParent())
        if (!item || !standsFor(qxXmlTree::getName(*item), way[i])) return false;
    return true;
}

bool isOfDocument(const qxXmlItem* item)
{
    for (; item; item = item->getParent())
        if (qxXmlTree::getInclude(*item) != 0) return false;
    return true;
}

} // namespace

void qxKeyIndex::clear()
{
    m_searches = 0;
    m_isWalked = false;
    m_nodes.clear();
    m_tables.clear();
}

const std::vector<qxKeyIndex::Node>& qxKeyIndex::getNodes()
{
    if (!m_isWalked) walk();
    return m_nodes;
}

void qxKeyIndex::walk()
{
    m_nodes.clear();
    std::vector<std::size_t> open; // nodes of the elements above, the root element first
    unsigned int depth = 0;
    for (qxXmlItem* item = m_document.getFirstChild(); item;) {
        Node* const parent = open.empty() ? nullptr : &m_nodes[open.back()];
        const qxXmlTree::Kind kind = qxXmlTree::getKind(*item);
        if (qxXmlTree::isElement(*item)) {
            const bool isOwn = (!parent || parent->isOwn) && qxXmlTree::getInclude(*item) == 0;
            const unsigned long long above = parent ? parent->hash : 0;
            m_nodes.push_back({static_cast<qxXmlElement*>(item), nullptr, nullptr, depth + 1, isOwn,
                               above * BASE + hashOf(qxXmlTree::getName(*item))});
        } else if (parent && kind == qxXmlTree::CHAR_DATA && !parent->text && !qxIsBlank(item)) {
            parent->text = item;
        } else if (parent && kind == qxXmlTree::CDATA && !parent->cdata) {
            parent->cdata = item;
        }
        if (qxXmlTree::isElement(*item) && item->getFirstChild()) {
            open.push_back(m_nodes.size() - 1);
            ++depth;
            item = item->getFirstChild();
            continue;
        }
        while (item != &m_document && !item->getNextSibling()) {
            item = item->getParent();
            if (item == &m_document) break;
            open.pop_back();
            --depth;
        }
        item = item == &m_document ? nullptr : item->getNextSibling();
    }
    m_isWalked = true;
}

qxKeyIndex::Entry& qxKeyIndex::enter(Table& table, unsigned long long hash, const qxXmlElement& element,
                                     unsigned int length)
{
    const std::size_t mask = table.slots.size() - 1;
    std::size_t i = hash & mask;
    for (; table.slots[i] != 0; i = (i + 1) & mask) {
        Entry& entry = table.entries[table.slots[i] - 1];
        if (entry.hash == hash && isSameWay(entry.element, &element, length)) return entry;
    }
    table.entries.push_back({hash, &element, {}});
    table.slots[i] = static_cast<unsigned int>(table.entries.size());
    return table.entries.back();
}

qxKeyIndex::Table& qxKeyIndex::tableFor(unsigned int length)
{
    const auto known = m_tables.find(length);
    if (known != m_tables.end()) return known->second;
    if (m_tables.size() == MOST_TABLES) m_tables.clear();

    const std::vector<Node>& nodes = getNodes();
    Table& table = m_tables[length];
    table.slots.resize(std::bit_ceil(nodes.size() + nodes.size() / 2 + 2));
    table.entries.reserve(nodes.size());
    unsigned long long factor = 1;
    for (unsigned int i = 0; i < length; ++i) factor *= BASE;

    std::vector<unsigned long long> above; // hashes of the ways from the root, by depth
    for (const Node& node : nodes) {
        above.resize(node.depth + 1);
        above[node.depth] = node.hash;
        if (node.depth < length) continue;
        const unsigned long long hash = node.hash - above[node.depth - length] * factor;
        qxKeyPlace& place = enter(table, hash, *node.element, length).place;
        if (!place.own && node.isOwn) place.own = node.element;
        if (!place.text) place.text = node.text;
        if (!place.cdata) place.cdata = node.cdata;
    }
    return table;
}

qxKeyPlace qxKeyIndex::find(const std::vector<std::string>& way)
{
    if (way.empty()) return {};
    if (!m_isWalked && m_searches++ < MOST_SEARCHES) return search(way);
    unsigned long long hash = 0;
    for (const std::string& step : way) hash = hash * BASE + qxHashKeyText(step);
    const Table& table = tableFor(static_cast<unsigned int>(way.size()));
    const std::size_t mask = table.slots.size() - 1;
    for (std::size_t i = hash & mask; table.slots[i] != 0; i = (i + 1) & mask) {
        const Entry& entry = table.entries[table.slots[i] - 1];
        if (entry.hash == hash && isWay(entry.element, way)) return entry.place;
    }
    return {};
}

qxKeyPlace qxKeyIndex::search(const std::vector<std::string>& way) const
{
    qxKeyPlace place;
    for (qxXmlItem* item = m_document.getFirstChild(); item; item = qxXmlTree::getNext(item, &m_document)) {
        if (!qxXmlTree::isElement(*item) || !isWay(item, way)) continue;
        if (!place.own && isOfDocument(item)) place.own = static_cast<qxXmlElement*>(item);
        for (qxXmlItem* child = item->getFirstChild(); child; child = child->getNextSibling()) {
            const qxXmlTree::Kind kind = qxXmlTree::getKind(*child);
            if (kind == qxXmlTree::CHAR_DATA && !place.text && !qxIsBlank(child)) place.text = child;
            if (kind == qxXmlTree::CDATA && !place.cdata) place.cdata = child;
        }
    }
    return place;
}
