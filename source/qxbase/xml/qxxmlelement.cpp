// SPDX-License-Identifier: see LICENSE

#include "qxxmlelement.h"

#include "qxmessage.h"

#include "xml/qxxmlchars.h"
#include "xml/qxxmlnames.h"
#include "xml/qxxmltree.h"

#include <memory>

QX_DEFINE_TYPE(qxXmlElement, qxXmlItem)
QX_DEFINE_TYPE(qxXmlCustomData, qxXmlElement)

namespace
{

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

qxString toString(std::string_view text)
{
    return qxString(text.data(), text.size());
}

qxXmlAttributeBlock* copyAttributes(const qxXmlAttributeBlock* attributes)
{
    if (!attributes) return nullptr;
    qxXmlNames names;
    return qxXmlCopyAttributes(attributes, names);
}

} // namespace

qxXmlAttribute::qxXmlAttribute(const qxString& name, const qxString& value)
    : qxNameInterface(name), m_value(value)
{}

qxXmlAttribute* qxXmlAttribute::clone() const
{
    return new qxXmlAttribute(*this);
}

qxXmlElement::qxXmlElement(const qxString& name) : qxXmlElement(name, ELEMENT) {}

qxXmlElement::qxXmlElement(const qxString& name, Kind kind) : qxXmlItem(nullptr, kind), m_attributes(nullptr)
{
    setName(name);
}

qxXmlElement::qxXmlElement(qxSharedName* name) : qxXmlItem(name, ELEMENT), m_attributes(nullptr) {}

qxXmlElement::qxXmlElement(const qxXmlElement& other)
    : qxXmlItem(other), m_attributes(copyAttributes(other.m_attributes))
{}

qxXmlElement::~qxXmlElement() noexcept(false)
{
    if (m_attributes) qxXmlFreeAttributes(m_attributes);
}

qxXmlElement* qxXmlElement::clone() const
{
    return qxXmlTree::finishClone(new qxXmlElement(*this), *this);
}

bool qxXmlElement::indexEvalExpression(const qxString&, const qxString& expression)
{
    const std::string_view text = view(expression);
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return false;

    std::string_view name = qxStripXmlSpace(text.substr(0, equals));
    if (!name.empty() && name.front() == '@') name.remove_prefix(1);
    std::string_view value = qxStripXmlSpace(text.substr(equals + 1));
    if (value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\''))
        value = value.substr(1, value.size() - 2);

    const unsigned int index = qxXmlFindAttribute(m_attributes, name);
    return index != QX_XML_NO_ATTRIBUTE && m_attributes->getValue(index) == value;
}

qxString qxXmlElement::getAttribute(const qxString& name, const qxString& missing) const
{
    const unsigned int index = qxXmlFindAttribute(m_attributes, view(name));
    return index == QX_XML_NO_ATTRIBUTE ? missing : toString(m_attributes->getValue(index));
}

bool qxXmlElement::hasAttribute(const qxString& name) const
{
    return qxXmlFindAttribute(m_attributes, view(name)) != QX_XML_NO_ATTRIBUTE;
}

void qxXmlElement::setAttributeText(const qxString& name, const qxString& value)
{
    const unsigned int index = qxXmlFindAttribute(m_attributes, view(name));
    if (index != QX_XML_NO_ATTRIBUTE) {
        qxXmlReplaceAttribute(m_attributes, index, view(value));
        return;
    }
    const qxXmlNameHolder ownName(name.isEmpty() ? nullptr
                                                 : new qxSharedName(name.getString(), name.length()));
    qxXmlAppendAttribute(m_attributes, ownName.get(), view(value));
}

bool qxXmlElement::removeAttribute(const qxString& name)
{
    const unsigned int index = qxXmlFindAttribute(m_attributes, view(name));
    if (index == QX_XML_NO_ATTRIBUTE) return false;
    qxXmlRemoveAttribute(*m_attributes, index);
    return true;
}

void qxXmlElement::removeAttributes()
{
    qxXmlFreeAttributes(m_attributes);
}

unsigned int qxXmlElement::attributeEntries() const
{
    return m_attributes ? m_attributes->count : 0;
}

bool qxXmlElement::getNextAttribute(qxString& name, qxString& value)
{
    if (!m_attributes || m_attributes->cursor >= m_attributes->count) return false;
    const unsigned int index = m_attributes->cursor;
    name = toString(m_attributes->getName(index));
    value = toString(m_attributes->getValue(index));
    m_attributes->cursor = (index + 1) & 0x7FFFFFFF;
    return true;
}

void qxXmlElement::resetAttributeIterator()
{
    if (m_attributes) m_attributes->cursor = 0;
}

qxRefList<qxXmlAttribute> qxXmlElement::getAttributeList() const
{
    qxRefList<qxXmlAttribute> list;
    for (unsigned int i = 0; i < attributeEntries(); ++i) {
        list.insert(
            new qxXmlAttribute(toString(m_attributes->getName(i)), toString(m_attributes->getValue(i))));
    }
    return list;
}

qxXmlCustomData::qxXmlCustomData(const qxString& name, qxReference* data)
    : qxXmlElement(name, CUSTOM_DATA), m_data(data)
{}

qxXmlCustomData* qxXmlCustomData::clone() const
{
    return qxXmlTree::finishClone(new qxXmlCustomData(*this), *this);
}

bool qxXmlCustomData::releaseRefs()
{
    m_data = nullptr;
    return qxXmlElement::releaseRefs();
}
