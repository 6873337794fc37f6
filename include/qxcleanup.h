// Holders of long-lived objects that an application releases in groups.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"

// The base's destructor is not virtual, this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A holder that is entered in a process-wide registry under a level while it holds an object, so that
/// cleanUpReferences can release it.
///
/// Lifetime: a registered holder is known by its address; it is therefore never moved, only copied.
/// Threads:  the registry has a lock of its own, held in constructors, assignments, destructors and the
///           clean-up; one holder is used by one thread at a time.
class QX_API qxCleanupReference : public qxRefPointer<qxReference>
{
public:
    qxCleanupReference();
    qxCleanupReference(qxReference* object, int level);

    /// Clones or shares the object as every holder does, and takes the level over.
    qxCleanupReference(const qxCleanupReference& other);
    virtual ~qxCleanupReference() noexcept(false);

    /// Shares the object and takes the level over.
    qxCleanupReference& operator=(const qxCleanupReference& other);

    /// Keeps the level. Null releases the object.
    qxCleanupReference& operator=(qxReference* object);

    int getLevel() const { return m_level; }

    /// Releases what the registered holders of exactly this `level` hold, the newest first; −1 releases all,
    /// the lowest level first. Holders that register meanwhile are left alone. The objects go while the
    /// registry is locked.
    static void cleanUpReferences(int level);

private:
    void assign(qxReference* object, int level);
    void enter(); // call with the registry locked
    void leave(); // call with the registry locked

    int m_level;
    qxUInt64 m_registration; // its number in the registry, 0 for none
};

#pragma GCC diagnostic pop
