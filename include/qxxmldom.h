// XML documents as trees.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlelement.h"
#include "qxxmlitem.h"
#include "qxxmlsax.h"
#include "qxxmltext.h"
#include "qxxmlvalue.h"

#include <memory>

class qxXmlIncluder;
class qxXmlTreeBuilder;

/// A document as a tree of items: it reads and writes it, and is the item above its root element.
///
/// Five switches say how a document is read and written. With their defaults white space around text is
/// dropped and predefined references become part of the text, which suits settings and data but not prose:
/// text beside a reference loses blanks. A document that has to survive as it is, is read and written with
/// SkipWhiteSpaceCharData off; it is then written without indentation.
///
/// Callbacks of a subclass may look at the items that are being built but must not remove open elements.
///
/// Lifetime: reference counted, or on the stack; read empties the tree first.
/// Threads:  one document is used by one thread at a time.
/// Errors:   as the reader and writer; after a failed read the tree holds what came before the error.
///           Included documents that cannot be read are warnings.
class QX_API qxXmlDom : public qxXmlSax, public qxXmlItem
{
public:
    qxXmlDom();
    ~qxXmlDom() noexcept(false) override;

    // The reader and the item are typed both; the document's record stands below that of the item.
    QX_DECLARE_TYPE;
    const char* getTypeName() const { return qxXmlItem::getTypeName(); }
    bool isExactType(const qxType* type) const { return qxXmlItem::isExactType(type); }
    bool isOfType(const qxType* type) const { return qxXmlItem::isOfType(type); }

    /// Copies the tree, the switches and what the header of the document says.
    qxXmlDom* clone() const override;

    void read(qxSerializeAdapter* adapter) override;

    /// Writes the items, without a header, with the operations of `writer`.
    void write(qxXmlSax* writer) override;
    using qxXmlSax::getDataSize;
    using qxXmlSax::pushBack;
    using qxXmlSax::write;

    /// Text is stripped of white space at both ends and dropped when nothing is left. At first on.
    bool getSkipWhiteSpaceCharData() const { return m_skipWhiteSpaceCharData; }
    void setSkipWhiteSpaceCharData(bool on) { m_skipWhiteSpaceCharData = on; }

    /// Included documents are written with the document instead of the instruction. At first off.
    bool getWriteIncludedXml() const { return m_writeIncludedXml; }
    void setWriteIncludedXml(bool on) { m_writeIncludedXml = on; }

    /// The items of the document that an instruction <?include URL?> names take its place. $(key) in the URL
    /// stands for the user key; a relative URL is meant from the folder of the document that holds it. Included
    /// documents are read with the switches and functions of this one. At first on.
    bool getReadIncludedXml() const { return m_readIncludedXml; }
    void setReadIncludedXml(bool on) { m_readIncludedXml = on; }

    /// The five predefined references, and references to characters, become text. At first on.
    bool getMergeStandardReferences() const { return m_mergeStandardReferences; }
    void setMergeStandardReferences(bool on) { m_mergeStandardReferences = on; }

    /// Elements are indented also with SkipWhiteSpaceCharData off, except inside an element that holds text of
    /// its own: character data, CDATA or references. Prose is never damaged then. At first off.
    bool getKeepMixedContent() const { return m_keepMixedContent; }
    void setKeepMixedContent(bool on) { m_keepMixedContent = on; }

    unsigned char onElementStart(const qxString& name, unsigned int level) override;
    unsigned char onElementEnd(const qxString& name, unsigned int level) override;
    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int level) override;
    unsigned char onCharData(const qxString& text, unsigned int level) override;
    unsigned char onEntityReference(const qxString& name, unsigned int level,
                                    unsigned char inAttribute) override;
    unsigned char onProcessingInstruction(const qxString& target, const qxString& data,
                                          unsigned int level) override;
    unsigned char onCDATA(const qxString& text, unsigned int level) override;
    unsigned char onComment(const qxString& text, unsigned int level) override;

    /// The item takes the place of its element.
    unsigned char onDynamicType(const qxDynamicType& value, const qxString& name,
                                unsigned int level) override;
    unsigned char onObject(qxObject* object, const qxString& name, unsigned int level) override;
    unsigned char onCustomData(qxReference* data, const qxString& name, unsigned int level) override;
    unsigned char onWrite() override;

protected:
    /// For classes that override none of the calls above that make items: their trees are built as fast as those of this
    /// class itself.
    void promiseNoOwnItems() { m_hasNoOwnItems = true; }

private:
    friend class qxXmlIncluder;

    void copySettings(const qxXmlDom& other);
    qxXmlTreeBuilder& builder();

    bool m_skipWhiteSpaceCharData;
    bool m_writeIncludedXml;
    bool m_readIncludedXml;
    bool m_mergeStandardReferences;
    bool m_keepMixedContent;
    bool m_hasNoOwnItems = false;
    std::unique_ptr<qxXmlTreeBuilder> m_builder; // while a tree is built
    qxXmlIncluder* m_includer;                   // while a document is read that may include others
};

/// Goes through all items of a document, parents before their children.
///
/// Lifetime: the document must outlive it. The current item may be taken out with remove only; of the others
///           all but those above it may come and go.
class QX_API qxXMLDomIterator
{
public:
    explicit qxXMLDomIterator(qxXmlDom& document);
    qxXMLDomIterator(const qxXMLDomIterator&) = delete;
    qxXMLDomIterator& operator=(const qxXMLDomIterator&) = delete;

    /// The next item, null at the end.
    qxXmlItem* operator()();

    /// The path of the current item: findItem of the document finds it there. Empty before the first and
    /// behind the last item, and when it is too long for a string.
    qxString getContext() const;

    /// The same with the names only.
    qxString getContextName() const;

    /// Removes the current item with everything beneath it; the next one is what follows behind that. False
    /// when there is no current item.
    bool remove();

private:
    qxString makePath(bool withIndices) const;
    void take(qxXmlItem* item, qxXmlItem* before);

    qxXmlItem* m_parent;               // of the current item, or of the one that was removed
    qxRefPointer<qxXmlItem> m_before;  // the child of m_parent before it, null for the first
    qxRefPointer<qxXmlItem> m_current; // null before the first, behind the last and when it was removed
};
