// Whether an object is still there.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

struct qxMemoryMark;

/// The base of objects that may be deleted while code runs that has to do with them. Such code holds a qxMemoryWatch.
///
/// Lifetime: watches may outlive the object.
/// Threads:  as the derived class says.
/// Errors:   none of its own; noexcept(false) because classes whose destructors may raise have it as their base.
class QX_API qxMemoryCheck
{
public:
    qxMemoryCheck();
    qxMemoryCheck(const qxMemoryCheck& other); ///< is watched by nobody
    qxMemoryCheck& operator=(const qxMemoryCheck&) { return *this; }
    virtual ~qxMemoryCheck() noexcept(false);

private:
    friend class qxMemoryWatch;

    qxMemoryMark* m_mark; // shared with the watches
};

/// Tells whether the object that it was made for is still there.
///
/// Lifetime: made while the object is there; a value that may be copied.
/// Threads:  any. Whether an answer still holds a moment later is for the caller to know.
class QX_API qxMemoryWatch
{
public:
    explicit qxMemoryWatch(const qxMemoryCheck& object);
    qxMemoryWatch(const qxMemoryWatch& other);
    qxMemoryWatch& operator=(const qxMemoryWatch& other);
    ~qxMemoryWatch();

    /// False once the object's destructor is through.
    bool isAlive() const;

private:
    qxMemoryMark* m_mark;
};
