// Type records, the single-inheritance tree that they form, and the interface of typed classes.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// The record of one class in the type tree: its name and the record of its parent.
///
/// Lifetime: one static record a class, made when the library or application is loaded and alive until it is
///           unloaded. The parent is taken by address only, so records may be built in any order.
/// Threads:  records do not change after they are built; any thread may ask them.
class QX_API qxType
{
public:
    /// Copies `name`, which should be shorter than 255 characters: of a longer one the first 256 bytes are
    /// kept. `parent` is null for a root. Out of memory is reported and throws std::bad_alloc.
    qxType(qxType* parent, const char* name);

    /// The copy has the same parent and the same name pointer as `other` but does not own the name, so
    /// `other` must outlive it.
    qxType(const qxType& other);
    qxType& operator=(const qxType& other);
    virtual ~qxType();

    const char* getName() const { return m_name; }
    qxType* getParent() const { return m_parent; }

    /// True when `type` is an ancestor; a type is not derived from itself.
    bool isDerivedFrom(const qxType* type) const;

    /// True when both records point at the same name text; texts are not compared.
    bool operator==(const qxType& other) const { return m_name == other.m_name; }

    /// The low 32 bits of this record's address: a copy equals its source but hashes differently.
    unsigned int hash() const;

private:
    qxType* m_parent;
    const char* m_name;
    unsigned char m_ownsName;
};

/// What every typed class answers: which record is its own.
class QX_API qxTypeInterface
{
public:
    virtual qxType* getType() const = 0;

    /// The name of the type, or null when there is no record.
    const char* getTypeName() const;

    /// True when the type is `type` itself.
    bool isExactType(const qxType* type) const;

    /// True when the type is `type` or derived from it.
    bool isOfType(const qxType* type) const;

protected:
    qxTypeInterface() = default;
    qxTypeInterface(const qxTypeInterface&) {}
    qxTypeInterface& operator=(const qxTypeInterface&) { return *this; }
    ~qxTypeInterface() = default; // not virtual: getType is the interface's one virtual operation
};

/// Stands in the public part of a typed class.
#define QX_DECLARE_TYPE                                                                                      \
    static qxType s_type;                                                                                    \
    static qxType* getClassType();                                                                           \
    qxType* getType() const override

/// Stands in the source of a typed class whose parent in the type tree is `PARENT`.
#define QX_DEFINE_TYPE(CLASS, PARENT)                                                                        \
    qxType CLASS::s_type(&PARENT::s_type, #CLASS);                                                           \
    QX_DEFINE_TYPE_ANSWERS(CLASS)

/// Stands in the source of a typed class that is a root of the type tree.
#define QX_DEFINE_ROOT_TYPE(CLASS)                                                                           \
    qxType CLASS::s_type(nullptr, #CLASS);                                                                   \
    QX_DEFINE_TYPE_ANSWERS(CLASS)

#define QX_DEFINE_TYPE_ANSWERS(CLASS)                                                                        \
    qxType* CLASS::getClassType()                                                                            \
    {                                                                                                        \
        return &s_type;                                                                                      \
    }                                                                                                        \
    qxType* CLASS::getType() const                                                                           \
    {                                                                                                        \
        return &s_type;                                                                                      \
    }
