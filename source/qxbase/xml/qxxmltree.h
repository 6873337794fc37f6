// The inside of document trees, for the library's own work on them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlelement.h"
#include "qxxmlitem.h"
#include "qxxmltext.h"
#include "qxxmlvalue.h"

#include "xml/qxxmlattributes.h"

#include <memory>
#include <string_view>

class qxXmlNames;

/// Access to what items keep private, and the steps from which walks over trees are made. None of the walks
/// recurses.
class qxXmlTree
{
public:
    using Kind = qxXmlItem::Kind;
    static constexpr Kind ITEM = qxXmlItem::ITEM;
    static constexpr Kind DOCUMENT = qxXmlItem::DOCUMENT;
    static constexpr Kind ELEMENT = qxXmlItem::ELEMENT;
    static constexpr Kind CUSTOM_DATA = qxXmlItem::CUSTOM_DATA;
    static constexpr Kind CHAR_DATA = qxXmlItem::CHAR_DATA;
    static constexpr Kind CDATA = qxXmlItem::CDATA;
    static constexpr Kind COMMENT = qxXmlItem::COMMENT;
    static constexpr Kind REFERENCE = qxXmlItem::REFERENCE;
    static constexpr Kind PI = qxXmlItem::PI;
    static constexpr Kind DYNAMIC_TYPE = qxXmlItem::DYNAMIC_TYPE;
    static constexpr Kind OBJECT = qxXmlItem::OBJECT;

    static Kind getKind(const qxXmlItem& item) { return static_cast<Kind>(item.m_kind); }
    static bool isElement(const qxXmlItem& item)
    {
        return item.m_kind == ELEMENT || item.m_kind == CUSTOM_DATA;
    }

    /// True for an object of the library's own class of its kind: what a class derived from it overrides need
    /// not be called then.
    static bool isPlain(const qxXmlItem& item);

    /// The item behind `item` in document order beneath `root`, null at the end.
    template <class Item>
    static Item* getNext(Item* item, const qxXmlItem* root)
    {
        if (Item* const child = item->getFirstChild()) return child;
        return getNextBehind(item, root);
    }

    /// The same, but what is beneath `item` is left out.
    template <class Item>
    static Item* getNextBehind(Item* item, const qxXmlItem* root)
    {
        for (; item != root; item = item->m_parent) {
            if (Item* const next = item->getNextSibling()) return next;
        }
        return nullptr;
    }

    static std::string_view getName(const qxXmlItem& item)
    {
        const qxSharedName* const name = item.getSharedName();
        return name ? std::string_view(name->getString(), name->length()) : std::string_view();
    }
    static const qxSharedName* getSharedName(const qxXmlItem& item) { return item.getSharedName(); }

    /// The text of an item that holds one: of CHAR_DATA, CDATA, COMMENT and REFERENCE.
    static std::string_view getText(const qxXmlItem& item);
    static std::string_view getTarget(const qxXmlPI& item) { return view(item.m_target); }
    static std::string_view getData(const qxXmlPI& item) { return view(item.m_data); }

    static qxXmlAttributeBlock*& getAttributes(qxXmlElement& element) { return element.m_attributes; }
    static const qxXmlAttributeBlock* getAttributes(const qxXmlElement& element)
    {
        return element.m_attributes;
    }
    static const qxXmlElement& asElement(const qxXmlItem& item)
    {
        return static_cast<const qxXmlElement&>(item);
    }

    // Building. An item that is appended has no parent and is not above the parent.

    static qxXmlElement* newElement(qxSharedName* name) { return new qxXmlElement(name); }
    static qxXmlCharData* newCharData(std::string_view text)
    {
        return new qxXmlCharData(text.data(), static_cast<unsigned int>(text.size()));
    }
    static void append(qxXmlItem& parent, qxXmlItem* child) { parent.append(child); }

    /// Removes `child`, which stands behind `before`; null for the first.
    static void removeBehind(qxXmlItem& parent, qxXmlItem* before, qxXmlItem* child);
    static void appendText(qxXmlCharData& item, std::string_view text)
    {
        item.m_text.append(text.data(), static_cast<unsigned int>(text.size()));
    }

    /// A copy of a plain item without its children; its names come from `names`.
    static qxXmlItem* newCopy(const qxXmlItem& item, qxXmlNames& names);

    /// `copy`, a new copy of `item` without its children, with clones of them.
    template <class Item>
    static Item* finishClone(Item* copy, const Item& item)
    {
        std::unique_ptr<Item> owner(copy);
        copy->cloneChildren(item);
        return owner.release();
    }

    // The include instruction that an item came from; see qxxmlincludes.h. 0 for none.

    static unsigned int getInclude(const qxXmlItem& item) { return item.m_include; }
    static void setInclude(qxXmlItem& item, unsigned int include) { item.m_include = include & 0xFFFFFF; }

private:
    static std::string_view view(const qxXmlTextBytes& text) { return {text.getBytes(), text.getLength()}; }
};
