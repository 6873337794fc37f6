// A plain value as a counted object.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"

#include <utility>

/// Holds one `T`, so that plain values such as strings can be held by reference containers. `Base` is
/// qxReference or a class derived from it that can be made without arguments.
///
/// Lifetime, Threads and Errors: as `Base`. The type record is that of `Base`.
template <class T, class Base = qxReference>
class qxRefData : public Base
{
public:
    qxRefData() : m_data() {}
    explicit qxRefData(const T& data) : m_data(data) {}
    explicit qxRefData(T&& data) : m_data(std::move(data)) {}

    /// A copy with a count of 0, the same copy mode and a copy of the value.
    qxRefData* clone() const override { return new qxRefData(*this); }

    qxRefData& operator=(const T& data)
    {
        m_data = data;
        return *this;
    }

    T& getData() { return m_data; }
    const T& getData() const { return m_data; }
    operator T&() { return m_data; }
    operator const T&() const { return m_data; }

private:
    T m_data;
};
