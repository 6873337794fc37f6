// SPDX-License-Identifier: see LICENSE

#include "qxxmlvalue.h"

#include "xml/qxxmltree.h"

QX_DEFINE_TYPE(qxXmlDynamicType, qxXmlItem)
QX_DEFINE_TYPE(qxXmlObject, qxXmlItem)

qxXmlDynamicType::qxXmlDynamicType(const qxString& name, const qxDynamicType& value)
    : qxXmlItem(nullptr, DYNAMIC_TYPE), m_value(value)
{
    setName(name);
}

qxXmlDynamicType* qxXmlDynamicType::clone() const
{
    return qxXmlTree::finishClone(new qxXmlDynamicType(*this), *this);
}

qxXmlObject::qxXmlObject(const qxString& name, qxObject* object)
    : qxXmlItem(nullptr, OBJECT), m_object(object)
{
    setName(name);
}

qxXmlObject* qxXmlObject::clone() const
{
    return qxXmlTree::finishClone(new qxXmlObject(*this), *this);
}

bool qxXmlObject::releaseRefs()
{
    m_object = nullptr;
    return qxXmlItem::releaseRefs();
}
