// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "xml/qxxmlincludes.h"
#include "xml/qxxmltree.h"
#include "xml/qxxmlwriter.h"

#include <set>
#include <utility>

namespace
{

// Writes a tree. The items of the library's own classes are written here, without recursion on their depth;
// objects of other classes write themselves.
class TreeWriter
{
public:
    explicit TreeWriter(qxXmlSax& sax) : m_sax(sax), m_writer(qxXmlWriterState::of(sax)) {}
    TreeWriter(const TreeWriter&) = delete;
    TreeWriter& operator=(const TreeWriter&) = delete;

    ~TreeWriter()
    {
        if (m_mixed) m_sax.setPlainOutput(false); // an operation was refused on the way
    }

    void write(qxXmlItem& root)
    {
        findDocument(root);
        open(root);
        qxXmlItem* item = hasContent(root) ? root.getFirstChild() : nullptr;
        while (item) {
            if (writeOne(*item)) {
                item = item->getFirstChild();
                continue;
            }
            while (item != &root && !item->getNextSibling()) {
                item = item->getParent();
                if (item != &root) close(*item);
            }
            item = item == &root ? nullptr : item->getNextSibling();
        }
        close(root);
    }

private:
    /// Writes an item, or the start of one whose children come next: then it returns true.
    bool writeOne(qxXmlItem& item)
    {
        const unsigned int include = qxXmlTree::getInclude(item);
        if (include != 0 && m_document && !m_document->getWriteIncludedXml()) {
            writeInstruction(*item.getParent(), include);
            return false;
        }
        if (!qxXmlTree::isPlain(item)) {
            item.write(&m_sax);
            return false;
        }
        open(item);
        if (hasContent(item) && item.getFirstChild()) return true;
        close(item);
        return false;
    }

    static bool hasContent(const qxXmlItem& item)
    {
        const qxXmlTree::Kind kind = qxXmlTree::getKind(item);
        return qxXmlTree::isElement(item) || kind == qxXmlTree::ITEM || kind == qxXmlTree::DOCUMENT;
    }

    void open(const qxXmlItem& item)
    {
        switch (qxXmlTree::getKind(item)) {
        case qxXmlTree::ELEMENT:
        case qxXmlTree::CUSTOM_DATA:
            openElement(qxXmlTree::asElement(item));
            if (qxXmlTree::getKind(item) == qxXmlTree::CUSTOM_DATA)
                m_sax.writeCustomData(item.getName(), static_cast<const qxXmlCustomData&>(item).getData(), 1);
            return;
        case qxXmlTree::CHAR_DATA:
            m_writer.writeCharData(qxXmlTree::getText(item), qxXmlWriterState::AS_TEXT);
            return;
        case qxXmlTree::CDATA:
            m_writer.writeCDATA(qxXmlTree::getText(item));
            return;
        case qxXmlTree::COMMENT:
            m_writer.writeComment(qxXmlTree::getText(item));
            return;
        case qxXmlTree::REFERENCE:
            m_writer.writeEntityReference(qxXmlTree::getText(item));
            return;
        case qxXmlTree::PI: {
            const qxXmlPI& instruction = static_cast<const qxXmlPI&>(item);
            m_writer.writePI(qxXmlTree::getTarget(instruction), qxXmlTree::getData(instruction));
            return;
        }
        case qxXmlTree::DYNAMIC_TYPE:
            writeDocumentType();
            m_sax.writeDynamicType(static_cast<const qxXmlDynamicType&>(item).getDynamicType(),
                                   item.getName());
            return;
        case qxXmlTree::OBJECT:
            writeDocumentType();
            m_sax.writeObject(static_cast<const qxXmlObject&>(item).getObject(), item.getName());
            return;
        case qxXmlTree::ITEM:
        case qxXmlTree::DOCUMENT:
            return;
        }
    }

    void openElement(const qxXmlElement& element)
    {
        writeDocumentType();
        m_writer.writeElementStart(qxXmlTree::getName(element));
        if (m_document && m_document->getKeepMixedContent() && !m_sax.isPlainOutput() && holdsText(element)) {
            m_mixed = &element;
            m_sax.setPlainOutput(true);
        }
        const qxXmlAttributeBlock* const attributes = qxXmlTree::getAttributes(element);
        if (!attributes) return;
        for (unsigned int i = 0; i < attributes->count; ++i) {
            m_writer.writeAttribute(attributes->getName(i), attributes->getValue(i),
                                    qxXmlWriterState::AS_TEXT);
        }
    }

    void close(const qxXmlItem& item)
    {
        if (!qxXmlTree::isElement(item)) return;
        m_writer.writeElementEnd();
        if (&item != m_mixed) return;
        m_mixed = nullptr;
        m_sax.setPlainOutput(false);
    }

    /// Looks for the document whose switches hold here; outside a document items are just items.
    void findDocument(const qxXmlItem& root)
    {
        const qxXmlItem* top = &root;
        while (top->getParent()) top = top->getParent();
        if (qxXmlTree::getKind(*top) == qxXmlTree::DOCUMENT) m_document = static_cast<const qxXmlDom*>(top);
    }

    /// Before the root element, when a document writes itself.
    void writeDocumentType()
    {
        const qxString& declaration = m_sax.getDocumentType();
        const bool isOwn = m_document && static_cast<const qxXmlSax*>(m_document) == &m_sax;
        if (!isOwn || m_writer.getLevel() != 0 || declaration.isEmpty() || m_hasDocumentType) return;
        m_hasDocumentType = true;
        if (!m_sax.isPlainOutput()) m_writer.writeGenericString("\n");
        m_writer.writeGenericString({declaration.getString(), declaration.length()});
    }

    static bool holdsText(const qxXmlElement& element)
    {
        for (const qxXmlItem* child = element.getFirstChild(); child; child = child->getNextSibling()) {
            const qxXmlTree::Kind kind = qxXmlTree::getKind(*child);
            if (kind == qxXmlTree::CHAR_DATA || kind == qxXmlTree::CDATA || kind == qxXmlTree::REFERENCE)
                return true;
        }
        return false;
    }

    /// Once for all the items of one parent that came from it.
    void writeInstruction(const qxXmlItem& parent, unsigned int include)
    {
        const std::pair<const qxXmlItem*, unsigned int> place(&parent, include);
        if (place == m_lastInstruction) return;
        m_lastInstruction = place;
        if (!m_instructions.insert(place).second) return;
        const qxString data = qxXmlIncludes::getData(include);
        m_writer.writePI("include", {data.getString(), data.length()});
    }

    qxXmlSax& m_sax;
    qxXmlWriterState& m_writer;
    const qxXmlDom* m_document = nullptr;
    const qxXmlItem* m_mixed = nullptr; // the open element that is written plain because it holds text
    bool m_hasDocumentType = false;
    std::pair<const qxXmlItem*, unsigned int> m_lastInstruction = {nullptr, 0};
    std::set<std::pair<const qxXmlItem*, unsigned int>> m_instructions; // those written, with their parents
};

} // namespace

void qxXmlItem::write(qxXmlSax* writer)
{
    qxXmlWriterState::of(*writer).runBatch([this, writer] { TreeWriter(*writer).write(*this); });
}
