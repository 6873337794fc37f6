// The objects that dynamic values keep alive, and the vectors that they hold.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxlist.h"
#include "qxreference.h"

/// Counted objects in their order. A copy of the list shares them all, whatever their copy modes say.
///
/// Lifetime: a value; it holds its objects.
/// Threads and Errors: as qxRefList.
class qxDynRefList : public qxRefList<qxReference>
{
public:
    qxDynRefList() = default;
    qxDynRefList(const qxDynRefList& other) : qxRefList<qxReference>() { copyItems(other); }
    qxDynRefList(qxDynRefList&& other) noexcept = default;
    ~qxDynRefList() noexcept(false) override = default;
    qxDynRefList& operator=(const qxDynRefList& other) = default;
    qxDynRefList& operator=(qxDynRefList&& other) = default;

protected:
    qxReference* onCopy(qxReference* object) override { return object; }
};

/// Two floating-point numbers.
struct qxVec2 {
    float x = 0.0F;
    float y = 0.0F;

    bool operator==(const qxVec2&) const = default;
};

/// Three floating-point numbers.
struct qxVec3 {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;

    bool operator==(const qxVec3&) const = default;
};

/// Four floating-point numbers.
struct qxVec4 {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    float w = 0.0F;

    bool operator==(const qxVec4&) const = default;
};
