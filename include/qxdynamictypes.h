// The classes that make dynamic values of further tags and read them back.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"

/// "void".
///
/// Errors: a value of another tag raises qxFatalError; so it does in all these classes, unless they say otherwise.
class QX_API qxDynamicTypeVoid : public qxDynamicType
{
public:
    qxDynamicTypeVoid() = default;
    explicit qxDynamicTypeVoid(const qxDynamicType& value);
};

/// "llnum": a signed 64-bit integer.
class QX_API qxDynamicTypeInt64 : public qxDynamicType
{
public:
    explicit qxDynamicTypeInt64(qxInt64 number = 0);
    explicit qxDynamicTypeInt64(const qxDynamicType& value);

    qxInt64 getInt64() const;
};

/// "error": the text of an error.
///
/// Errors: it can be made of any value, and tells whether that is an error; getError raises when it is none.
class QX_API qxDynamicTypeError : public qxDynamicType
{
public:
    explicit qxDynamicTypeError(const qxString& text);
    explicit qxDynamicTypeError(const char* text);
    explicit qxDynamicTypeError(const qxDynamicType& value) : qxDynamicType(value) {}

    bool isError() const;
    qxString getError() const;
};

/// "array": values in a row.
///
/// Taking an array apart costs no copies of larger elements, which share its block; one of them is enough to keep
/// the whole block in memory.
class QX_API qxDynamicTypeArray : public qxDynamicType
{
public:
    /// Copies `count` items.
    qxDynamicTypeArray(const qxDynamicType* items, std::size_t count);
    explicit qxDynamicTypeArray(const qxArray<qxDynamicType>& items);
    explicit qxDynamicTypeArray(const qxDynamicType& value);

    qxArray<qxDynamicType> getArray() const;
};

/// "chain": as an array; what it means that the tag is another one is the application's to say.
class QX_API qxDynamicTypeChain : public qxDynamicType
{
public:
    /// Copies `count` items.
    qxDynamicTypeChain(const qxDynamicType* items, std::size_t count);
    explicit qxDynamicTypeChain(const qxArray<qxDynamicType>& items);
    explicit qxDynamicTypeChain(const qxDynamicType& value);

    qxArray<qxDynamicType> getArray() const;
};

/// "ttag": a value and the time that belongs to it.
class QX_API qxDynamicTypeTimeTagged : public qxDynamicType
{
public:
    /// In which unit `timeTag` counts is the application's to say; the library's clock counts in seconds.
    qxDynamicTypeTimeTagged(const qxDynamicType& data, double timeTag);
    explicit qxDynamicTypeTimeTagged(const qxDynamicType& value);

    qxDynamicType getData() const;
    double getTimeTag() const;
};

/// A tag of the application's own, with a block in the application's layout. Other processes carry such values
/// without knowing them.
///
/// Errors: a tag of the library's, an empty one and one that holds a zero raise qxFatalError.
class QX_API qxDynamicTypeCustom : public qxDynamicType
{
public:
    /// Copies `count` bytes and shares the objects of `references`.
    qxDynamicTypeCustom(const qxString& tag, const unsigned char* bytes, std::size_t count,
                        const qxDynRefList& references = qxDynRefList());

    /// Raises unless `value` has the tag.
    qxDynamicTypeCustom(const qxString& tag, const qxDynamicType& value);
};
