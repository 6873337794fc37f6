// What objects tell about themselves for debugging.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxstring.h"

/// Chooses what debugOutput tells; see the constants below.
typedef unsigned int qxDebugFlags;

constexpr qxDebugFlags QX_DEBUG_ATTRIBUTES = 1; ///< the named values of an object
constexpr qxDebugFlags QX_DEBUG_TEXT = 2;       ///< its text
constexpr qxDebugFlags QX_DEBUG_COUNTS = 4;     ///< how many parts it has
constexpr qxDebugFlags QX_DEBUG_ALL = 7;

/// An object that describes itself through the message channel, at level Debug.
class QX_API qxDebugInterface
{
public:
    qxDebugInterface() = default;
    virtual ~qxDebugInterface() noexcept(false) {} // classes with this base may raise when they go

    /// Describes this object; every line begins with `indent`, the first one goes on with `label`.
    virtual void debugOutput(qxString indent, qxString label, qxDebugFlags flags) = 0;

    /// Describes this object and all that it is made of.
    virtual void debugOutputTraverse(qxString indent, qxString label, qxDebugFlags flags) = 0;

protected:
    qxDebugInterface(const qxDebugInterface&) = default;
    qxDebugInterface& operator=(const qxDebugInterface&) = default;
};
