// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlincludes.h"
#include "xml/qxxmlnames.h"
#include "xml/qxxmlreferences.h"
#include "xml/qxxmltree.h"

#include <memory>
#include <typeinfo>

namespace
{

constexpr std::size_t MAX_TEXT = qxString::MAX_LENGTH;

// Joins the children of one item. `text` is the character data that a run of text is gathered in, null outside a
// run.
class RunMerger
{
public:
    explicit RunMerger(qxXmlItem& parent) : m_parent(parent), m_before(nullptr), m_text(nullptr) {}

    void run()
    {
        qxXmlItem* next = nullptr;
        for (qxXmlItem* item = m_parent.getFirstChild(); item; item = next) {
            next = item->getNextSibling();
            if (!merge(*item)) m_before = item;
        }
    }

private:
    /// True when the item was taken into the run and is gone.
    bool merge(qxXmlItem& item)
    {
        const qxXmlTree::Kind kind = qxXmlTree::getKind(item);
        if (kind == qxXmlTree::CHAR_DATA) {
            if (m_text && append(qxXmlTree::getText(item))) return remove(item);
            m_text = static_cast<qxXmlCharData*>(&item);
            return false;
        }
        if (kind == qxXmlTree::REFERENCE && m_text) {
            const char character = qxXmlPredefinedCharacter(qxXmlTree::getText(item));
            if (character != 0 && append({&character, 1})) return remove(item);
        }
        m_text = nullptr;
        return false;
    }

    bool append(std::string_view text)
    {
        if (qxXmlTree::getText(*m_text).size() + text.size() > MAX_TEXT) return false;
        qxXmlTree::appendText(*m_text, text);
        return true;
    }

    bool remove(qxXmlItem& item)
    {
        qxXmlTree::removeBehind(m_parent, m_before, &item);
        return true;
    }

    qxXmlItem& m_parent;
    qxXmlItem* m_before; // the last child that stays
    qxXmlCharData* m_text;
};

} // namespace

void qxXmlItem::mergeStandardReferencesAndText()
{
    for (qxXmlItem* item = this; item; item = qxXmlTree::getNext(item, this)) {
        if (item->m_childCount > 1) RunMerger(*item).run();
    }
}

qxXmlItem* qxXmlItem::clone() const
{
    std::unique_ptr<qxXmlItem> copy(new qxXmlItem(*this));
    copy->cloneChildren(*this);
    return copy.release();
}

void qxXmlItem::cloneChildren(const qxXmlItem& other)
{
    qxXmlNames names;
    qxXmlItem* into = this;
    const qxXmlItem* from = other.getFirstChild();
    while (from) {
        const bool isPlain = qxXmlTree::isPlain(*from);
        qxXmlItem* const copy = isPlain ? qxXmlTree::newCopy(*from, names) : from->clone();
        into->append(copy);
        if (from->m_include != 0) {
            qxXmlIncludes::hold(from->m_include);
            copy->m_include = from->m_include;
        }
        if (isPlain && from->m_last) { // the children of others are cloned with them
            into = copy;
            from = from->getFirstChild();
            continue;
        }
        while (from != &other && !from->getNextSibling()) {
            from = from->m_parent;
            if (from != &other) into = into->m_parent;
        }
        from = from == &other ? nullptr : from->getNextSibling();
    }
}

bool qxXmlTree::isPlain(const qxXmlItem& item)
{
    switch (getKind(item)) {
    case qxXmlItem::ITEM:
        return typeid(item) == typeid(qxXmlItem);
    case qxXmlItem::DOCUMENT:
        return false; // a document as a child does its own work
    case qxXmlItem::ELEMENT:
        return typeid(item) == typeid(qxXmlElement);
    case qxXmlItem::CUSTOM_DATA:
        return typeid(item) == typeid(qxXmlCustomData);
    case qxXmlItem::CHAR_DATA:
        return typeid(item) == typeid(qxXmlCharData);
    case qxXmlItem::CDATA:
        return typeid(item) == typeid(qxXmlCDATA);
    case qxXmlItem::COMMENT:
        return typeid(item) == typeid(qxXmlComment);
    case qxXmlItem::REFERENCE:
        return typeid(item) == typeid(qxXmlEntityReference);
    case qxXmlItem::PI:
        return typeid(item) == typeid(qxXmlPI);
    case qxXmlItem::DYNAMIC_TYPE:
        return typeid(item) == typeid(qxXmlDynamicType);
    case qxXmlItem::OBJECT:
        return typeid(item) == typeid(qxXmlObject);
    }
    return false;
}

qxXmlItem* qxXmlTree::newCopy(const qxXmlItem& item, qxXmlNames& names)
{
    switch (getKind(item)) {
    case qxXmlItem::ELEMENT: {
        std::unique_ptr<qxXmlElement> copy(new qxXmlElement(names.getCopy(item.getSharedName())));
        copy->m_attributes = qxXmlCopyAttributes(asElement(item).m_attributes, names);
        copy->setCopyMode(item.getCopyMode());
        return copy.release();
    }
    case qxXmlItem::CUSTOM_DATA:
        return new qxXmlCustomData(static_cast<const qxXmlCustomData&>(item));
    case qxXmlItem::CHAR_DATA:
        return new qxXmlCharData(static_cast<const qxXmlCharData&>(item));
    case qxXmlItem::CDATA:
        return new qxXmlCDATA(static_cast<const qxXmlCDATA&>(item));
    case qxXmlItem::COMMENT:
        return new qxXmlComment(static_cast<const qxXmlComment&>(item));
    case qxXmlItem::REFERENCE:
        return new qxXmlEntityReference(static_cast<const qxXmlEntityReference&>(item));
    case qxXmlItem::PI:
        return new qxXmlPI(static_cast<const qxXmlPI&>(item));
    case qxXmlItem::DYNAMIC_TYPE:
        return new qxXmlDynamicType(static_cast<const qxXmlDynamicType&>(item));
    case qxXmlItem::OBJECT:
        return new qxXmlObject(static_cast<const qxXmlObject&>(item));
    case qxXmlItem::ITEM:
    case qxXmlItem::DOCUMENT:
        break;
    }
    return new qxXmlItem(item);
}

void qxXmlTree::removeBehind(qxXmlItem& parent, qxXmlItem* before, qxXmlItem* child)
{
    parent.unlink(before ? before : parent.m_last, child);
    child->unref();
}

std::string_view qxXmlTree::getText(const qxXmlItem& item)
{
    switch (getKind(item)) {
    case qxXmlItem::CHAR_DATA:
        return view(static_cast<const qxXmlCharData&>(item).m_text);
    case qxXmlItem::CDATA:
        return view(static_cast<const qxXmlCDATA&>(item).m_text);
    case qxXmlItem::COMMENT:
        return view(static_cast<const qxXmlComment&>(item).m_text);
    case qxXmlItem::REFERENCE:
        return view(static_cast<const qxXmlEntityReference&>(item).m_reference);
    default:
        return {};
    }
}
