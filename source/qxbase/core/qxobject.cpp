// SPDX-License-Identifier: see LICENSE

#include "qxobject.h"

QX_DEFINE_TYPE(qxUserData, qxReference)
QX_DEFINE_TYPE(qxObject, qxUserData)

qxUserData::~qxUserData() noexcept(false) = default;

qxUserData* qxUserData::clone() const
{
    return new qxUserData(*this);
}

qxObject::~qxObject() noexcept(false) = default;

qxObject* qxObject::clone() const
{
    return new qxObject(*this);
}
