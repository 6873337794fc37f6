// Counted objects and the holder that keeps them alive.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemory.h"
#include "qxmutex.h"
#include "qxtype.h"

/// An object that counts its holders and goes when the last one lets it go.
///
/// Lifetime: starts with a count of 0 and may then be deleted directly, or live on the stack as long as
///           nobody holds it. Once held, the last unref deletes it.
/// Threads:  the count is a plain field; an object that threads share must be a qxThreadSafeReference or be
///           guarded by its owner.
/// Errors:   a count that goes wrong raises qxFatalError, also out of the destructor: the object is gone then
///           all the same. While another exception is under way the text is sent as a Fatal message instead
///           and the count stays as it is, since a second exception would end the process.
class QX_API qxReference : public qxSharedMemory, public qxTypeInterface
{
public:
    qxReference() : m_count(0), m_copyMode(QX_COPY_DEEP) {}

    /// The copy starts with a count of 0 and keeps the copy mode.
    qxReference(const qxReference& other)
        : qxSharedMemory(other), qxTypeInterface(other), m_count(0), m_copyMode(other.m_copyMode)
    {}

    /// Takes over the copy mode only: the holders of this object are still its own.
    qxReference& operator=(const qxReference& other)
    {
        m_copyMode = other.m_copyMode;
        return *this;
    }

    QX_DECLARE_TYPE;

    /// Raises qxFatalError when the object is still held.
    virtual ~qxReference() noexcept(false)
    {
        if (m_count != 0)
            raiseMismatch("REFERENCE MISMATCH ! Deleted referenced object with nonzero reference count");
    }

    /// A new object of the same class and value. Classes whose objects may be copied by holders override it;
    /// the base raises qxFatalError.
    virtual qxReference* clone() const;

    virtual void setCopyMode(const qxCopyMode& mode);

    /// True when a holder that is copied must clone this object.
    QX_ONE_COPY virtual bool useDeepCopy() { return m_copyMode == QX_COPY_DEEP; }

    /// Counts one holder more. The count is not checked for overflow.
    QX_ONE_COPY virtual void ref() { ++m_count; }

    /// Counts one holder less and deletes the object when that was the last.
    QX_ONE_COPY virtual void unref()
    {
        if (m_count == 0)
            raiseMismatch("REFERENCE MISMATCH ! Unref an object with zero reference count.");
        else if (--m_count == 0)
            delete this;
    }

    /// Counts one holder less, never deletes, and returns the new count.
    virtual unsigned int unrefNoDelete();

    /// Deletes the object and returns true when nobody holds it.
    virtual bool checkDelete();

    /// Classes that hold other objects drop them here, so that graphs with circles can be taken down.
    virtual bool releaseRefs();

    virtual unsigned int getRef() const { return m_count; }

    const qxCopyMode& getCopyMode() const { return m_copyMode; }

protected:
    /// Raises a fault of the count; returns when an exception is under way.
    static void raiseMismatch(const char* text);

    unsigned int m_count;

private:
    [[noreturn]] static void throwFatalException(const char* format, const char* argument);

    qxCopyMode m_copyMode;
};

/// A counted object whose holders may be on several threads.
///
/// Threads: the count is guarded by a lock of the object's own. A new reference may only be taken by somebody
///          who already holds one.
class QX_API qxThreadSafeReference : public qxReference
{
public:
    qxThreadSafeReference() = default;

    /// Copies the copy mode and whether the lock tracks its owner.
    qxThreadSafeReference(const qxThreadSafeReference& other) = default;
    qxThreadSafeReference& operator=(const qxThreadSafeReference& other) = default;
    ~qxThreadSafeReference() noexcept(false) override = default;

    void ref() override;
    void unref() override;
    unsigned int unrefNoDelete() override;
    bool checkDelete() override;
    unsigned int getRef() const override;

private:
    unsigned int countDown(); // returns the count before, 0 after a fault

    qxMutex m_lock; // guards the count
};

// The holder's destructor is not virtual: its one virtual operation is setCopyMode.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Holds one counted object, or none.
///
/// Copying a holder clones the object or shares it, as the object's useDeepCopy says; assigning always
/// shares; moving hands the object over.
///
/// Keep holders in the library's containers: std::vector copies what has a destructor that may raise when it
/// grows, so it would clone, and lets no error out.
///
/// Threads: one holder is used by one thread at a time.
/// Errors:  what the object's destructor raises.
template <class T>
class qxRefPointer
{
public:
    qxRefPointer(T* object = nullptr) : m_object(object)
    {
        if (m_object) m_object->ref();
    }

    qxRefPointer(const qxRefPointer& other) : m_object(copyOf(other.m_object))
    {
        if (m_object) m_object->ref();
    }

    qxRefPointer(qxRefPointer&& other) noexcept : m_object(other.m_object) { other.m_object = nullptr; }

    ~qxRefPointer() noexcept(false)
    {
        if (m_object) m_object->unref();
    }

    qxRefPointer& operator=(const qxRefPointer& other)
    {
        hold(other.m_object);
        return *this;
    }

    qxRefPointer& operator=(T* object)
    {
        hold(object);
        return *this;
    }

    qxRefPointer& operator=(qxRefPointer&& other)
    {
        if (this == &other) return *this;
        T* const old = m_object;
        m_object = other.m_object;
        other.m_object = nullptr;
        if (old) old->unref();
        return *this;
    }

    /// Hands the copy mode to the held object.
    virtual void setCopyMode(const qxCopyMode& mode)
    {
        if (m_object) m_object->setCopyMode(mode);
    }

    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    operator T*() const { return m_object; }
    bool operator!() const { return !m_object; }

    /// The held object; the holder keeps it.
    T* get() const { return m_object; }

protected:
    static T* copyOf(T* object)
    {
        return object && object->useDeepCopy() ? static_cast<T*>(object->clone()) : object;
    }

    void hold(T* object)
    {
        if (object == m_object) return;
        if (object) object->ref();
        T* const old = m_object;
        m_object = object; // in place before the old object goes: its destructor may look at this holder
        if (old) old->unref();
    }

    T* m_object;
};

#pragma GCC diagnostic pop
