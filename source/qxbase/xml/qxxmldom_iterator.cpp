// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "xml/qxxmltree.h"

#include <algorithm>
#include <string>
#include <vector>

qxXMLDomIterator::qxXMLDomIterator(qxXmlDom& document) : m_parent(&document) {}

qxXmlItem* qxXMLDomIterator::operator()()
{
    if (!m_parent) return nullptr;
    if (m_current && m_current->getFirstChild()) {
        m_parent = m_current;
        take(m_parent->getFirstChild(), nullptr);
        return m_current;
    }
    // Behind the current item, or where it stood: then what stood before it tells the place.
    qxXmlItem* before = m_current ? m_current.get() : m_before.get();
    qxXmlItem* next = before ? before->getNextSibling() : m_parent->getFirstChild();
    while (!next) {
        before = m_parent;
        m_parent = m_parent->getParent();
        if (!m_parent) break; // behind the last item of the document
        next = before->getNextSibling();
    }
    take(next, next ? before : nullptr);
    return m_current;
}

bool qxXMLDomIterator::remove()
{
    if (!m_current) return false;
    qxXmlTree::removeBehind(*m_parent, m_before, m_current);
    m_current = nullptr;
    return true;
}

void qxXMLDomIterator::take(qxXmlItem* item, qxXmlItem* before)
{
    m_before = before;
    m_current = item;
}

qxString qxXMLDomIterator::getContext() const
{
    return makePath(true);
}

qxString qxXMLDomIterator::getContextName() const
{
    return makePath(false);
}

qxString qxXMLDomIterator::makePath(bool withIndices) const
{
    std::vector<std::string> steps; // the last one first
    std::size_t length = 0;
    for (const qxXmlItem* item = m_current; item && item->getParent(); item = item->getParent()) {
        const std::string_view name = qxXmlTree::getName(*item);
        unsigned int index = 1;
        const qxXmlItem* other = item->getParent()->getFirstChild();
        for (; withIndices && other != item; other = other->getNextSibling()) {
            if (qxXmlTree::getName(*other) == name) ++index;
        }
        steps.emplace_back(name);
        if (withIndices && index > 1) steps.back() += "[" + std::to_string(index) + "]";
        length += steps.back().size() + 1;
        if (length > qxString::MAX_LENGTH) return qxString();
    }
    std::string path;
    std::for_each(steps.rbegin(), steps.rend(), [&path](const std::string& step) {
        if (!path.empty()) path += '/';
        path += step;
    });
    return qxString(path.data(), path.size());
}
