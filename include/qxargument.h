// The tagged value that carries arguments into formatted texts.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"

#include <cstddef>

/// One argument of a printf-style call: nothing, a number, a pointer or a string.
///
/// Integers that a double holds exactly and that have 32 bits or less are kept as a double, wider ones as
/// 64-bit integers, so nothing is ever rounded.
///
/// Lifetime: a string or pointer is kept by address and must outlive the argument.
class QX_API qxArgument
{
public:
    enum Kind : unsigned char { VOID_KIND, DOUBLE_KIND, POINTER_KIND, INT64_KIND, UINT64_KIND, STRING_KIND };

    qxArgument() : m_pointer(nullptr), m_kind(VOID_KIND) {}
    qxArgument(char value) : m_double(static_cast<signed char>(value)), m_kind(DOUBLE_KIND) {}
    qxArgument(signed char value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(unsigned char value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(short value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(unsigned short value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(int value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(unsigned int value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(long value) : qxArgument(static_cast<long long>(value))
    {
        if (value == static_cast<int>(value)) *this = static_cast<int>(value);
    }
    qxArgument(unsigned long value) : qxArgument(static_cast<unsigned long long>(value))
    {
        if (value == static_cast<unsigned int>(value)) *this = static_cast<unsigned int>(value);
    }
    qxArgument(long long value) : m_int64(value), m_kind(INT64_KIND) {}
    qxArgument(unsigned long long value) : m_uint64(value), m_kind(UINT64_KIND) {}
    qxArgument(double value) : m_double(value), m_kind(DOUBLE_KIND) {}
    qxArgument(long double value) : m_double(static_cast<double>(value)), m_kind(DOUBLE_KIND) {}
    qxArgument(const void* value) : m_pointer(value), m_kind(POINTER_KIND) {}
    qxArgument(std::nullptr_t) : m_pointer(nullptr), m_kind(POINTER_KIND) {}
    qxArgument(const qxString& value) : m_string(&value), m_kind(STRING_KIND) {}
    qxArgument(const qxString*) = delete; // would print the object's bytes as text

    bool isVoid() const { return m_kind == VOID_KIND; }
    bool isDouble() const { return m_kind == DOUBLE_KIND; }
    bool isPointer() const { return m_kind == POINTER_KIND; }
    bool isLongLong() const { return m_kind == INT64_KIND; }
    bool isULongLong() const { return m_kind == UINT64_KIND; }
    bool isString() const { return m_kind == STRING_KIND; }

    operator double() const;

    /// A double is truncated toward zero; from 2^63 on it is converted through the unsigned range, and beyond
    /// every 64-bit integer it saturates. A value that is not a number gives 0.
    operator qxInt64() const;
    operator qxUInt64() const;
    operator void*() const;

    /// Raises qxFatalError when the argument is no string.
    const qxString& getString() const;

private:
    union {
        double m_double;
        const void* m_pointer;
        qxInt64 m_int64;
        qxUInt64 m_uint64;
        const qxString* m_string;
    };
    Kind m_kind;
};

/// The arguments of one call as an array: at most sixteen.
template <class... Arguments>
struct qxArgumentList {
    static_assert(sizeof...(Arguments) <= 16, "a formatted text takes at most sixteen arguments");
    static constexpr unsigned int count = sizeof...(Arguments);

    qxArgument values[count == 0 ? 1 : count];
};
