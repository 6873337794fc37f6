// The items of an XML document that hold values and objects.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"
#include "qxobject.h"
#include "qxxmlitem.h"

/// A dynamic value. As an item of a tree its name is what qxXmlSax::writeDynamicType takes as name; paths find it where
/// that can be a step of one.
class QX_API qxXmlDynamicType : public qxXmlItem
{
public:
    explicit qxXmlDynamicType(const qxString& name = "qxDyn", const qxDynamicType& value = qxDynamicType());

    QX_DECLARE_TYPE;

    qxXmlDynamicType* clone() const override;

    const qxDynamicType& getDynamicType() const { return m_value; }
    void setDynamicType(const qxDynamicType& value) { m_value = value; }

protected:
    qxXmlDynamicType(const qxXmlDynamicType& other) = default;

private:
    friend class qxXmlTree;

    qxDynamicType m_value;
};

/// An object. As an item of a tree its name is what qxXmlSax::writeObject takes as name.
class QX_API qxXmlObject : public qxXmlItem
{
public:
    explicit qxXmlObject(const qxString& name = "qxObj", qxObject* object = nullptr);

    QX_DECLARE_TYPE;

    /// Clones or shares the object as its copy mode says.
    qxXmlObject* clone() const override;
    bool releaseRefs() override;

    qxObject* getObject() const { return m_object; }
    void setObject(qxObject* object) { m_object = object; }

protected:
    qxXmlObject(const qxXmlObject& other) = default;

private:
    friend class qxXmlTree;

    qxRefPointer<qxObject> m_object;
};
