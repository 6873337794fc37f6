// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "xml/qxxmlreferences.h"
#include "xml/qxxmltree.h"
#include "xml/qxxmlvaluewriter.h"

namespace
{

// Gathers what asString gives.
class TextCollector
{
public:
    explicit TextCollector(qxXmlStringFlags flags) : m_flags(flags) {}

    /// What comes before the children of `item`.
    void open(const qxXmlItem& item)
    {
        switch (qxXmlTree::getKind(item)) {
        case qxXmlTree::ELEMENT:
        case qxXmlTree::CUSTOM_DATA:
            if (m_flags & QX_XML_STRING_TAGS) openTag(qxXmlTree::asElement(item));
            return;
        case qxXmlTree::CHAR_DATA:
            if (m_flags & QX_XML_STRING_TEXT) addText(qxXmlTree::getText(item));
            return;
        case qxXmlTree::REFERENCE:
            if (m_flags & QX_XML_STRING_TEXT) addReference(qxXmlTree::getText(item));
            return;
        case qxXmlTree::CDATA:
            if (m_flags & QX_XML_STRING_TEXT) addSection(qxXmlTree::getText(item));
            return;
        case qxXmlTree::COMMENT:
            if (m_flags & QX_XML_STRING_TAGS) add("<!--", qxXmlTree::getText(item), "-->");
            return;
        case qxXmlTree::PI:
            if (m_flags & QX_XML_STRING_TAGS) addInstruction(static_cast<const qxXmlPI&>(item));
            return;
        case qxXmlTree::DYNAMIC_TYPE:
            addValue(static_cast<const qxXmlDynamicType&>(item));
            return;
        case qxXmlTree::OBJECT:
            if (m_flags & QX_XML_STRING_TAGS) addObject(qxXmlTree::getName(item));
            return;
        case qxXmlTree::ITEM:
        case qxXmlTree::DOCUMENT:
            return;
        }
    }

    /// What comes behind the children of `item`.
    void close(const qxXmlItem& item)
    {
        if (!(m_flags & QX_XML_STRING_TAGS) || !qxXmlTree::isElement(item)) return;
        if (item.getFirstChild()) add("</", qxXmlTree::getName(item), ">");
    }

    void addFinished(const qxString& text) { m_text.append(text.getString(), text.length()); }

    /// Raises qxFatalError when it is too long for a string.
    qxString getString() const { return qxString(m_text.data(), m_text.size()); }
    bool isTooLong() const { return m_text.size() > qxString::MAX_LENGTH; }

private:
    void openTag(const qxXmlElement& element)
    {
        add("<", qxXmlTree::getName(element), "");
        const qxXmlAttributeBlock* const attributes = qxXmlTree::getAttributes(element);
        if (m_flags & QX_XML_STRING_ATTRIBUTES && attributes) {
            for (unsigned int i = 0; i < attributes->count; ++i) {
                add(" ", attributes->getName(i), "=\"");
                addText(attributes->getValue(i));
                m_text += '"';
            }
        }
        m_text += element.getFirstChild() ? ">" : "/>";
    }

    void addReference(std::string_view name)
    {
        if (m_flags & QX_XML_STRING_TAGS || !qxXmlAppendReference(name, m_text)) add("&", name, ";");
    }

    void addSection(std::string_view text)
    {
        if (m_flags & QX_XML_STRING_TAGS)
            add("<![CDATA[", text, "]]>");
        else
            m_text += text;
    }

    void addInstruction(const qxXmlPI& instruction)
    {
        add("<?", qxXmlTree::getTarget(instruction), " ");
        add("", qxXmlTree::getData(instruction), "?>");
    }

    void addObject(std::string_view name)
    {
        m_text += "<qxObj name=\"";
        addText(name);
        m_text += "\"/>";
    }

    void addValue(const qxXmlDynamicType& item)
    {
        if (m_flags & QX_XML_STRING_TAGS)
            m_text += qxXmlValueText(item.getDynamicType(), item.getName());
        else if (m_flags & QX_XML_STRING_TEXT)
            addFinished(item.getDynamicType().asString());
    }

    void addText(std::string_view text)
    {
        if (!(m_flags & QX_XML_STRING_TAGS)) {
            m_text += text;
            return;
        }
        for (const char c : text) {
            switch (c) {
            case '<':
                m_text += "&lt;";
                break;
            case '>':
                m_text += "&gt;";
                break;
            case '&':
                m_text += "&amp;";
                break;
            case '"':
                m_text += "&quot;";
                break;
            case '\'':
                m_text += "&apos;";
                break;
            default:
                m_text += c;
            }
        }
    }

    void add(std::string_view before, std::string_view text, std::string_view behind)
    {
        m_text += before;
        m_text += text;
        m_text += behind;
    }

    qxXmlStringFlags m_flags;
    std::string m_text;
};

constexpr std::size_t MAX_SHOWN = 1000; // bytes of one text in a debug line

// As much of the text as a line shows, cut between two characters.
qxString shown(std::string_view text)
{
    std::size_t length = std::min(text.size(), MAX_SHOWN);
    while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) --length;
    return qxString(text.data(), length);
}

qxString shown(const qxString& text)
{
    return shown(std::string_view(text.getString(), text.length()));
}

void showText(const qxXmlItem& item, const qxString& indent)
{
    const qxString text = shown(qxXmlTree::getText(item));
    switch (qxXmlTree::getKind(item)) {
    case qxXmlTree::CHAR_DATA:
        qxMessage::message(QX_LEVEL_DEBUG, "%sCharData:%s", indent, text);
        return;
    case qxXmlTree::CDATA:
        qxMessage::message(QX_LEVEL_DEBUG, "%sCDATA:%s", indent, text);
        return;
    case qxXmlTree::COMMENT:
        qxMessage::message(QX_LEVEL_DEBUG, "%sComment:%s", indent, text);
        return;
    case qxXmlTree::REFERENCE:
        qxMessage::message(QX_LEVEL_DEBUG, "%sReference:%s", indent, text);
        return;
    case qxXmlTree::PI: {
        const qxXmlPI& instruction = static_cast<const qxXmlPI&>(item);
        qxMessage::message(QX_LEVEL_DEBUG, "%s %s=%s", indent, shown(qxXmlTree::getTarget(instruction)),
                           shown(qxXmlTree::getData(instruction)));
        return;
    }
    default:
        return;
    }
}

} // namespace

qxString qxXmlItem::asString(qxXmlStringFlags flags) const
{
    TextCollector collector(flags);
    collector.open(*this);
    const qxXmlItem* item = getFirstChild();
    while (item && !collector.isTooLong()) {
        const bool isPlain = qxXmlTree::isPlain(*item);
        if (isPlain)
            collector.open(*item);
        else
            collector.addFinished(item->asString(flags));
        if (isPlain && item->m_last) {
            item = item->getFirstChild();
            continue;
        }
        if (isPlain) collector.close(*item);
        while (item != this && !item->getNextSibling()) {
            item = item->m_parent;
            if (item != this) collector.close(*item);
        }
        item = item == this ? nullptr : item->getNextSibling();
    }
    collector.close(*this);
    return collector.getString();
}

void qxXmlItem::debugOutput(qxString indent, qxString label, qxDebugFlags flags)
{
    const qxString start = shown(indent);
    const std::string_view name = qxXmlTree::getName(*this);
    qxMessage::message(QX_LEVEL_DEBUG, "%s=%s", start + shown(label), shown(name));
    if (flags & QX_DEBUG_TEXT) showText(*this, start);
    if (flags & QX_DEBUG_COUNTS)
        qxMessage::message(QX_LEVEL_DEBUG, "%sChildren count:%ld", start, childEntries());
}

void qxXmlElement::debugOutput(qxString indent, qxString label, qxDebugFlags flags)
{
    qxXmlItem::debugOutput(indent, label, flags);
    const qxString start = shown(indent);
    if (flags & QX_DEBUG_COUNTS)
        qxMessage::message(QX_LEVEL_DEBUG, "%sAttribute count:%ld", start, attributeEntries());
    if (!(flags & QX_DEBUG_ATTRIBUTES)) return;
    for (unsigned int i = 0; i < attributeEntries(); ++i) {
        qxMessage::message(QX_LEVEL_DEBUG, "%s %s=%s", start, shown(m_attributes->getName(i)),
                           shown(m_attributes->getValue(i)));
    }
}

void qxXmlItem::debugOutputTraverse(qxString indent, qxString label, qxDebugFlags flags)
{
    const qxString start = shown(indent);
    std::size_t depth = 0;
    qxXmlItem* item = this;
    while (item) {
        const std::size_t blanks = std::min(2 * depth, MAX_SHOWN);
        item->debugOutput(start + qxString::spaces(static_cast<unsigned int>(blanks), ' '), label, flags);
        if (item->m_last) {
            item = item->getFirstChild();
            ++depth;
            continue;
        }
        for (; item != this && !item->getNextSibling(); --depth) item = item->m_parent;
        item = item == this ? nullptr : item->getNextSibling();
    }
}
