// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmltreebuilder.h"

#include "xml/qxxmlreferences.h"

#include <random>

namespace
{

constexpr unsigned int FEW = 12; // attributes that are compared one by one

// The hash of std::string_view is the same for every process; documents could be made for it. What comes out here
// depends on a number that nobody outside knows, in every step.
std::size_t hashSeeded(std::string_view text)
{
    static const std::size_t seed = std::random_device()() | static_cast<std::size_t>(std::random_device()())
                                                                 << 32;
    std::size_t hash = seed;
    for (const char byte : text) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= seed | 1;
        hash ^= hash >> 29;
    }
    return hash;
}

} // namespace

qxXmlTreeBuilder::qxXmlTreeBuilder(qxXmlItem& document, bool joins, bool strips)
    : m_joins(joins), m_strips(strips), m_manyOwner(nullptr)
{
    m_open.push_back({0, &document, nullptr});
}

void qxXmlTreeBuilder::openElement(std::string_view name, unsigned int level)
{
    if (level == 0) level = 1; // the document stays open
    qxXmlItem& parent = getParent(level - 1);
    qxXmlItem* const before = parent.getLastChild();
    qxXmlElement* const element = qxXmlTree::newElement(m_names.get(name));
    qxXmlTree::append(parent, element);
    m_open.push_back({level, element, before});
}

void qxXmlTreeBuilder::closeElement(unsigned int level)
{
    if (level != 0) getParent(level - 1);
}

void qxXmlTreeBuilder::setAttribute(const qxString& name, std::string_view value, unsigned int level)
{
    qxXmlItem& item = getParent(level);
    if (m_open.back().level != level || !qxXmlTree::isElement(item)) return;
    if (value.find('&') != std::string_view::npos) {
        m_value.clear();
        qxXmlDecodeReferences(value, m_value);
        value = m_value;
    }

    qxXmlElement& element = static_cast<qxXmlElement&>(item);
    qxXmlAttributeBlock*& attributes = qxXmlTree::getAttributes(element);
    const std::string_view text(name.getString(), name.length());
    if (!attributes) {
        m_scratch.finish();
        m_scratch.lend(attributes);
    }
    if (attributes->count >= FEW && m_manyOwner != &element) {
        m_manyOwner = &element;
        m_manyHashes.clear();
        for (unsigned int i = 0; i < attributes->count; ++i)
            m_manyHashes.insert(hashSeeded(attributes->getName(i)));
    }
    const unsigned int index =
        isKnown(*attributes, text) ? qxXmlFindAttribute(attributes, text) : QX_XML_NO_ATTRIBUTE;
    if (index == QX_XML_NO_ATTRIBUTE)
        qxXmlAppendAttribute(attributes, m_names.get(text), value);
    else
        qxXmlReplaceAttribute(attributes, index, value);
}

void qxXmlTreeBuilder::takeAttributes(const qxXmlAttributeList& attributes, std::size_t first,
                                      std::size_t end, unsigned int level)
{
    qxXmlItem& item = getParent(level);
    if (m_open.back().level != level || !qxXmlTree::isElement(item)) return;
    qxXmlAttributeBlock*& block = qxXmlTree::getAttributes(static_cast<qxXmlElement&>(item));
    if (block) return;
    std::size_t size = 0;
    for (std::size_t i = first; i < end; ++i) size += attributes.valueOf(i).size();
    block = qxXmlNewAttributes(end - first, size); // references only get shorter when they are decoded
    for (std::size_t i = first; i < end; ++i) {
        std::string_view value = attributes.valueOf(i);
        if (!attributes.isPlain(i) && value.find('&') != std::string_view::npos) {
            m_value.clear();
            qxXmlDecodeReferences(value, m_value);
            value = m_value;
        }
        qxXmlAppendAttribute(block, m_names.get(attributes.nameOf(i)), value);
    }
}

// False when the name is certainly new.
bool qxXmlTreeBuilder::isKnown(const qxXmlAttributeBlock& attributes, std::string_view name)
{
    return attributes.count < FEW || !m_manyHashes.insert(hashSeeded(name)).second;
}

void qxXmlTreeBuilder::addText(std::string_view text, unsigned int level)
{
    if (text.empty()) return;
    qxXmlItem& parent = getParent(level);
    qxXmlItem* const last = m_joins ? parent.getLastChild() : nullptr;
    if (last && qxXmlTree::getKind(*last) == qxXmlTree::CHAR_DATA &&
        qxXmlTree::getText(*last).size() + text.size() <= qxString::MAX_LENGTH)
        qxXmlTree::appendText(static_cast<qxXmlCharData&>(*last), text);
    else
        qxXmlTree::append(parent, qxXmlTree::newCharData(text));
}

void qxXmlTreeBuilder::replaceElement(qxXmlItem* item, unsigned int level)
{
    getParent(level);
    Open& open = m_open.back();
    if (open.level != level || !qxXmlTree::isElement(*open.item)) {
        addItem(item, level);
        return;
    }
    m_scratch.finish();
    m_manyOwner = nullptr;
    if (qxXmlTree::isElement(*item))
        std::swap(qxXmlTree::getAttributes(static_cast<qxXmlElement&>(*item)),
                  qxXmlTree::getAttributes(static_cast<qxXmlElement&>(*open.item)));
    qxXmlItem& parent = *open.item->getParent();
    qxXmlTree::removeBehind(parent, open.before, open.item);
    qxXmlTree::append(parent, item);
    open.item = item;
}
