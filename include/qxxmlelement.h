// The elements of an XML document and their attributes.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlitem.h"

struct qxXmlAttributeBlock;

/// A name and a value, as qxXmlElement::getAttributeList gives them.
class QX_API qxXmlAttribute : public qxReference, public qxNameInterface
{
public:
    qxXmlAttribute(const qxString& name, const qxString& value);

    qxXmlAttribute* clone() const override;

    const qxString& getValue() const { return m_value; }
    void setValue(const qxString& value) { m_value = value; }

private:
    qxString m_value;
};

/// An element: its name is the tag name. It has attributes in the order in which they were set first.
class QX_API qxXmlElement : public qxXmlItem
{
public:
    explicit qxXmlElement(const qxString& name = qxString());
    ~qxXmlElement() noexcept(false) override;

    QX_DECLARE_TYPE;

    qxXmlElement* clone() const override;
    void debugOutput(qxString indent, qxString label, qxDebugFlags flags) override;

    /// Knows "name=value": true when the attribute is there and has that value.
    bool indexEvalExpression(const qxString& name, const qxString& expression) override;

    /// `missing` when there is no such attribute.
    qxString getAttribute(const qxString& name, const qxString& missing = qxString()) const;
    bool hasAttribute(const qxString& name) const;

    /// Sets the attribute to `format`, filled in with up to sixteen arguments as in qxString::format. A text
    /// that may hold "%" goes through setAttributeText.
    template <class... Arguments>
    void setAttribute(const qxString& name, const qxString& format, const Arguments&... arguments)
    {
        setAttributeText(name, qxString::str(format, arguments...));
    }

    /// Sets the attribute to `value` as it stands.
    void setAttributeText(const qxString& name, const qxString& value);

    /// False when there is no such attribute.
    bool removeAttribute(const qxString& name);
    void removeAttributes();
    unsigned int attributeEntries() const;

    /// The next attribute at the cursor; false behind the last one, and `name` and `value` stay.
    bool getNextAttribute(qxString& name, qxString& value);
    void resetAttributeIterator();

    /// Copies of all attributes; changing them changes nothing here.
    qxRefList<qxXmlAttribute> getAttributeList() const;

protected:
    qxXmlElement(const qxXmlElement& other);
    qxXmlElement(const qxString& name, Kind kind);

private:
    friend class qxXmlTree;
    explicit qxXmlElement(qxSharedName* name);

    qxXmlAttributeBlock* m_attributes; // null when there are none
};

/// An element whose content is data of the application's own, which a registered handler reads and writes.
class QX_API qxXmlCustomData : public qxXmlElement
{
public:
    explicit qxXmlCustomData(const qxString& name = qxString(), qxReference* data = nullptr);

    QX_DECLARE_TYPE;

    /// Clones or shares the data as its copy mode says.
    qxXmlCustomData* clone() const override;
    bool releaseRefs() override;

    qxReference* getData() const { return m_data; }
    void setData(qxReference* data) { m_data = data; }

protected:
    qxXmlCustomData(const qxXmlCustomData& other) = default;

private:
    friend class qxXmlTree;

    qxRefPointer<qxReference> m_data;
};
