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

    void write(qxXmlItem& root)
    {
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
        if (include != 0 && !writesIncluded(item)) {
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
        case qxXmlTree::ITEM:
        case qxXmlTree::DOCUMENT:
            return;
        }
    }

    void openElement(const qxXmlElement& element)
    {
        m_writer.writeElementStart(qxXmlTree::getName(element));
        const qxXmlAttributeBlock* const attributes = qxXmlTree::getAttributes(element);
        if (!attributes) return;
        for (unsigned int i = 0; i < attributes->count; ++i) {
            m_writer.writeAttribute(attributes->getName(i), attributes->getValue(i),
                                    qxXmlWriterState::AS_TEXT);
        }
    }

    void close(const qxXmlItem& item)
    {
        if (qxXmlTree::isElement(item)) m_writer.writeElementEnd();
    }

    /// As the document says that the item belongs to; outside a document items are just items.
    bool writesIncluded(const qxXmlItem& item)
    {
        if (!m_document.first) {
            const qxXmlItem* top = &item;
            while (top->getParent()) top = top->getParent();
            const bool isDocument = qxXmlTree::getKind(*top) == qxXmlTree::DOCUMENT;
            m_document = {true, !isDocument || static_cast<const qxXmlDom*>(top)->getWriteIncludedXml()};
        }
        return m_document.second;
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
    std::pair<bool, bool> m_document = {false, true}; // whether it was looked for, and its switch
    std::pair<const qxXmlItem*, unsigned int> m_lastInstruction = {nullptr, 0};
    std::set<std::pair<const qxXmlItem*, unsigned int>> m_instructions; // those written, with their parents
};

} // namespace

void qxXmlItem::write(qxXmlSax* writer)
{
    qxXmlWriterState::of(*writer).runBatch([this, writer] { TreeWriter(*writer).write(*this); });
}
