// The bases of what an application keeps in its trees and documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"
#include "qxtype.h"

/// Data of the application's own that belongs to something else.
///
/// Lifetime: reference counted.
/// Threads:  as the class derived from it says.
class QX_API qxUserData : public qxReference
{
public:
    qxUserData() = default;
    ~qxUserData() noexcept(false) override;

    QX_DECLARE_TYPE;

    qxUserData* clone() const override;

protected:
    qxUserData(const qxUserData& other) = default;
    qxUserData& operator=(const qxUserData& other) = default;
};

/// An object of the application's own that stands for itself.
///
/// Lifetime: reference counted.
/// Threads:  as the class derived from it says.
class QX_API qxObject : public qxUserData
{
public:
    qxObject() = default;
    ~qxObject() noexcept(false) override;

    QX_DECLARE_TYPE;

    qxObject* clone() const override;

protected:
    qxObject(const qxObject& other) = default;
    qxObject& operator=(const qxObject& other) = default;
};
