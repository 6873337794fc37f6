// Dynamic values with names.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"

/// "cont": attributes, which are values with names, in the order in which they came.
///
/// A name may occur more than once; the last one counts. Setting and removing one of n attributes moves all n: make
/// large containers in one go.
///
/// Errors: a value of another tag, and a name that holds a zero, raise qxFatalError.
class QX_API qxDynamicTypeContainer : public qxDynamicType
{
public:
    /// Without attributes.
    qxDynamicTypeContainer();

    /// Copies `count` names and values.
    qxDynamicTypeContainer(const qxString* names, const qxDynamicType* values, std::size_t count);
    explicit qxDynamicTypeContainer(const qxDynamicType& value);

    unsigned int entries() const;
    qxArray<qxString> getNames() const;

    /// The values in the order of the names.
    qxArray<qxDynamicType> getValues() const;

    bool hasAttribute(const qxString& name) const;

    /// The value of this name; "void" when there is none.
    qxDynamicType getAttribute(const qxString& name) const;

    /// Gives the attribute another value, in its place, or appends it.
    void setAttribute(const qxString& name, const qxDynamicType& value);

    /// Removes the attribute that counts; false when there is none.
    bool removeAttribute(const qxString& name);

    /// As in the base; a value of another tag is an error, too, and makes the container "void".
    void read(qxSerializeAdapter* adapter) override;

    /// Not possible for containers: stores an error on the adapter.
    void pushBack(qxSerializeAdapter* adapter) override;
};
