// The items that an XML document is made of: what they have in common.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdebug.h"
#include "qxlist.h"
#include "qxname.h"
#include "qxreference.h"
#include "qxstring.h"

class qxXmlSax;

/// Chooses what asString gives.
typedef unsigned int qxXmlStringFlags;

constexpr qxXmlStringFlags QX_XML_STRING_TEXT = 1;       ///< character data, CDATA and references
constexpr qxXmlStringFlags QX_XML_STRING_TAGS = 2;       ///< tags, comments and processing instructions
constexpr qxXmlStringFlags QX_XML_STRING_ATTRIBUTES = 4; ///< attributes in the tags
constexpr qxXmlStringFlags QX_XML_STRING_ALL = 7;

/// One item of a document tree: a name and an ordered list of children.
///
/// A path leads from one item to another: names separated by "/". "." is the item, ".." its parent, a leading
/// "/" starts at the topmost parent and "//" looks at any depth below. A name may be followed by an index in
/// brackets: a number from 1, "last()", or "name=value" for the value of an attribute ("@name" and quotes
/// around the value are accepted). The candidates of each step are tried in document order, all of them:
/// "a/b" finds the b in the second a.
///
/// Lifetime: reference counted; a parent holds its children, a child only knows its parent, and forgets it
///           when it leaves or the parent goes. No operation recurses on the depth of the tree, except through
///           classes of applications that override write or clone.
/// Threads:  a tree is used by one thread at a time, and so are items that were taken out of it: they share
///           their names with it. A clone is independent.
/// Errors:   children that cannot be added are refused with a warning.
class QX_API qxXmlItem : public qxReference, public qxNameInterface, public qxDebugInterface
{
public:
    explicit qxXmlItem(const qxString& name = qxString());
    ~qxXmlItem() noexcept(false) override;
    qxXmlItem& operator=(const qxXmlItem&) = delete;

    QX_DECLARE_TYPE;

    /// A deep copy without a parent and with all cursors at the start. A class of an application that
    /// overrides it copies itself, then calls cloneChildren.
    qxXmlItem* clone() const override;

    /// Adds `item` to the children of the item that `path` leads to; false, and nothing is changed, when
    /// there is none or it refuses.
    virtual bool addItem(const qxString& path, qxXmlItem* item);

    /// The first item that `path` leads to, null when there is none.
    virtual qxXmlItem* findItem(const qxString& path);

    /// All items that `path` leads to, each once, the one that findItem finds first.
    qxRefList<qxXmlItem> findItems(const qxString& path);

    /// The text of this item and of everything beneath it, and its markup as `flags` say. Raises
    /// qxFatalError when that is too long for a string.
    virtual qxString asString(qxXmlStringFlags flags = QX_XML_STRING_TEXT) const;

    void debugOutput(qxString indent, qxString label, qxDebugFlags flags) override;

    /// Each level is indented by two blanks more.
    void debugOutputTraverse(qxString indent, qxString label, qxDebugFlags flags) override;

    /// Writes this item and everything beneath it with the write... operations of `writer`. Only elements,
    /// documents and plain items write their children.
    virtual void write(qxXmlSax* writer);

    /// True when the path step `name`[`expression`] may select this item; neither a number nor "last()" comes
    /// here. The base knows no expression.
    virtual bool indexEvalExpression(const qxString& name, const qxString& expression);

    /// Appends `child`, which is taken away from its present parent first. Null, this item itself and those
    /// above it are refused: a warning is sent and false returned.
    bool addChild(qxXmlItem* child);

    /// False when `child` is no child of this item.
    bool removeChild(qxXmlItem* child);
    void removeChildren();

    /// The number of children.
    unsigned int childEntries() const { return m_childCount; }

    /// The children as a list of their own; they stay children of this item.
    qxRefList<qxXmlItem> getChildList() const;

    /// The next child at this item's cursor, null behind the last one. A child that is added later is still
    /// given; a child that is removed does not disturb the cursor.
    qxXmlItem* getNextChild();
    void resetChildIterator() { m_cursor = nullptr; }

    /// Puts the cursors of children and attributes of this item and everything beneath it to the start.
    void resetAllChildIterators();

    qxXmlItem* getParent() const { return m_parent; }
    qxXmlItem* getFirstChild() const { return m_last ? m_last->m_next : nullptr; }
    qxXmlItem* getLastChild() const { return m_last; }
    qxXmlItem* getNextSibling() const { return m_parent && m_parent->m_last != this ? m_next : nullptr; }

    /// Joins neighbouring character data beneath this item, and predefined references that follow character
    /// data. A predefined reference at the start of such a run stays a reference. A run ends before it gets
    /// too long for a string.
    void mergeStandardReferencesAndText();

protected:
    /// What an item is, for the library's own work on trees. Derived classes keep the kind of their base.
    enum Kind : unsigned char {
        ITEM,
        DOCUMENT,
        ELEMENT,
        CUSTOM_DATA,
        CHAR_DATA,
        CDATA,
        COMMENT,
        REFERENCE,
        PI,
        DYNAMIC_TYPE,
        OBJECT
    };

    qxXmlItem(qxSharedName* name, Kind kind);

    /// Without the children, the parent and the cursor.
    qxXmlItem(const qxXmlItem& other);

    /// Adds clones of the children of `other`, which is not beneath this item.
    void cloneChildren(const qxXmlItem& other);

private:
    friend class qxXmlTree;

    void append(qxXmlItem* child);
    void unlink(qxXmlItem* before, qxXmlItem* child);
    qxXmlItem* childBefore(const qxXmlItem* child) const;

    // The children form a circle: the last one's next is the first. An item without a parent has no next.
    qxXmlItem* m_parent;
    qxXmlItem* m_next;
    qxXmlItem* m_last;
    qxXmlItem* m_cursor; // the child given last, null at the start
    unsigned int m_childCount;
    unsigned int m_include : 24; // the include instruction that this item came from, 0 for none
    unsigned int m_kind : 8;
};
