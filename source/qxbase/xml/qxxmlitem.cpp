// SPDX-License-Identifier: see LICENSE

#include "qxxmlitem.h"

#include "qxmessage.h"

#include "xml/qxxmlincludes.h"
#include "xml/qxxmltree.h"

#include <exception>

QX_DEFINE_TYPE(qxXmlItem, qxReference)

qxXmlItem::qxXmlItem(const qxString& name)
    : qxNameInterface(name), m_parent(nullptr), m_next(nullptr), m_last(nullptr), m_cursor(nullptr),
      m_childCount(0), m_include(0), m_kind(ITEM)
{}

qxXmlItem::qxXmlItem(qxSharedName* name, Kind kind)
    : qxNameInterface(name), m_parent(nullptr), m_next(nullptr), m_last(nullptr), m_cursor(nullptr),
      m_childCount(0), m_include(0), m_kind(kind)
{}

qxXmlItem::qxXmlItem(const qxXmlItem& other)
    : qxReference(other), qxNameInterface(other), qxDebugInterface(other), m_parent(nullptr), m_next(nullptr),
      m_last(nullptr), m_cursor(nullptr), m_childCount(0), m_include(0), m_kind(other.m_kind)
{}

qxXmlItem::~qxXmlItem() noexcept(false)
{
    if (m_last) removeChildren();
}

bool qxXmlItem::addChild(qxXmlItem* child)
{
    if (!child) {
        qxMessage::message(QX_LEVEL_WARNING, "Can not add a null item to an XML item");
        return false;
    }
    bool isAbove = child == this;
    if (child->m_last) { // a child without children is above nothing
        for (const qxXmlItem* above = m_parent; above; above = above->m_parent) isAbove |= above == child;
    }
    if (isAbove) {
        qxMessage::message(QX_LEVEL_WARNING, "Can not add an XML item to itself or to an item beneath it");
        return false;
    }
    child->ref(); // its present parent may be its only holder
    if (child->m_parent) child->m_parent->removeChild(child);
    append(child);
    child->unrefNoDelete();
    return true;
}

bool qxXmlItem::removeChild(qxXmlItem* child)
{
    qxXmlItem* const before = child && child->m_parent == this ? childBefore(child) : nullptr;
    if (!before) return false;
    unlink(before, child);
    child->unref();
    return true;
}

void qxXmlItem::removeChildren()
{
    // The links of siblings make one list of all items that are still to go, however deep they are.
    qxXmlItem* list = m_last ? m_last->m_next : nullptr;
    if (m_last) m_last->m_next = nullptr;
    m_last = nullptr;
    m_cursor = nullptr;
    m_childCount = 0;

    std::exception_ptr fault;
    while (list) {
        qxXmlItem* const item = list;
        if (item->m_last && item->m_count == 1) { // it will go: its children before it
            list = item->m_last->m_next;
            item->m_last->m_next = item;
            item->m_last = nullptr;
            item->m_cursor = nullptr;
            item->m_childCount = 0;
            continue;
        }
        list = item->m_next;
        item->m_next = nullptr;
        item->m_parent = nullptr;
        if (item->m_include != 0) {
            qxXmlIncludes::release(item->m_include);
            item->m_include = 0;
        }
        try {
            item->unref();
        } catch (...) { // the others have to go all the same
            if (!fault) fault = std::current_exception();
        }
    }
    if (fault) std::rethrow_exception(fault);
}

qxRefList<qxXmlItem> qxXmlItem::getChildList() const
{
    qxRefList<qxXmlItem> list;
    for (qxXmlItem* child = getFirstChild(); child; child = child->getNextSibling()) list.insert(child);
    return list;
}

qxXmlItem* qxXmlItem::getNextChild()
{
    qxXmlItem* const next = m_cursor ? m_cursor->getNextSibling() : getFirstChild();
    if (next) m_cursor = next;
    return next;
}

void qxXmlItem::resetAllChildIterators()
{
    for (qxXmlItem* item = this; item; item = qxXmlTree::getNext(item, this)) {
        item->m_cursor = nullptr;
        if (qxXmlTree::isElement(*item)) static_cast<qxXmlElement*>(item)->resetAttributeIterator();
    }
}

void qxXmlItem::append(qxXmlItem* child)
{
    child->ref();
    child->m_parent = this;
    if (m_last) {
        child->m_next = m_last->m_next;
        m_last->m_next = child;
    } else {
        child->m_next = child;
    }
    m_last = child;
    ++m_childCount;
}

// `before` is what stands before the child in the circle: the last child for the first one.
void qxXmlItem::unlink(qxXmlItem* before, qxXmlItem* child)
{
    const bool isFirst = before == m_last;
    if (m_cursor == child) m_cursor = isFirst ? nullptr : before;
    if (before == child)
        m_last = nullptr;
    else
        before->m_next = child->m_next;
    if (m_last == child) m_last = before;
    --m_childCount;
    child->m_next = nullptr;
    child->m_parent = nullptr;
    if (child->m_include != 0) {
        qxXmlIncludes::release(child->m_include);
        child->m_include = 0;
    }
}

// Null for a child that is on its way out: removeChildren has taken it already.
qxXmlItem* qxXmlItem::childBefore(const qxXmlItem* child) const
{
    if (!m_last) return nullptr;
    qxXmlItem* before = m_last;
    do {
        if (before->m_next == child) return before;
        before = before->m_next;
    } while (before != m_last);
    return nullptr;
}
