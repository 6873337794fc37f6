// Plain values as keys of dictionaries.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <bit>
#include <cstdint>

/// A pointer as a key: the object's identity, whatever it holds.
class qxInstanceCompareInterface
{
public:
    qxInstanceCompareInterface(const void* instance = nullptr) : m_instance(instance) {}

    const void* getInstance() const { return m_instance; }
    unsigned int hash() const
    {
        return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(m_instance) & 0xFFFFFFFF);
    }
    bool operator==(const qxInstanceCompareInterface& other) const { return m_instance == other.m_instance; }

private:
    const void* m_instance;
};

/// A 32-bit number as a key.
class qxUInt32CompareInterface
{
public:
    qxUInt32CompareInterface(unsigned int value = 0) : m_value(value) {}

    unsigned int getValue() const { return m_value; }
    unsigned int hash() const { return m_value; }
    bool operator==(const qxUInt32CompareInterface& other) const { return m_value == other.m_value; }

private:
    unsigned int m_value;
};

/// A 64-bit number as a key.
class qxUInt64CompareInterface
{
public:
    qxUInt64CompareInterface(qxUInt64 value = 0) : m_value(value) {}

    qxUInt64 getValue() const { return m_value; }

    /// The sum of both halves.
    unsigned int hash() const
    {
        return static_cast<unsigned int>(m_value & 0xFFFFFFFF) + static_cast<unsigned int>(m_value >> 32);
    }
    bool operator==(const qxUInt64CompareInterface& other) const { return m_value == other.m_value; }

private:
    qxUInt64 m_value;
};

/// A floating-point number as a key. Numbers are told apart by their bits: +0.0 and -0.0 are two keys, and a
/// value that is not a number equals itself.
class qxValueCompareInterface
{
public:
    qxValueCompareInterface(double value = 0.0) : m_value(value) {}

    double getValue() const { return m_value; }

    /// The sum of both halves of the bits.
    unsigned int hash() const { return qxUInt64CompareInterface(bits()).hash(); }
    bool operator==(const qxValueCompareInterface& other) const { return bits() == other.bits(); }

private:
    qxUInt64 bits() const { return std::bit_cast<qxUInt64>(m_value); }

    double m_value;
};
