// Numbers of fixed size on a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"
#include "qxserializedata.h"

#include <bit>
#include <cstring>
#include <type_traits>

/// What travels for a number of type T: `Wire`, an unsigned integer, and the ways there and back.
///
/// Numbers keep their size and their bits, `long` therefore that of the system. Characters of type wchar_t take
/// 2 bytes everywhere; one that needs more travels as U+FFFD, with a warning. Enumerations take 4 bytes.
template <class T>
struct qxWireForm {
    static_assert(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>,
                  "only numbers and enumerations travel");
    static_assert(sizeof(T) <= sizeof(qxUInt64), "numbers have at most 8 bytes");

    using Wire =
        std::conditional_t<sizeof(T) == 1, unsigned char,
                           std::conditional_t<sizeof(T) == 2, unsigned short,
                                              std::conditional_t<sizeof(T) == 4, unsigned int, qxUInt64>>>;

    static Wire toWire(T value) { return std::bit_cast<Wire>(value); }
    static T fromWire(Wire wire) { return std::bit_cast<T>(wire); }
};

template <class T>
requires std::is_enum_v<T>
struct qxWireForm<T> {
    static_assert(sizeof(T) <= sizeof(unsigned int), "enumerations travel in 4 bytes");

    using Wire = unsigned int;

    static Wire toWire(T value) { return static_cast<Wire>(value); }
    static T fromWire(Wire wire) { return static_cast<T>(wire); }
};

template <>
struct qxWireForm<wchar_t> {
    using Wire = unsigned short;

    static QX_API Wire toWire(wchar_t value);
    static wchar_t fromWire(Wire wire) { return static_cast<wchar_t>(wire); }
};

/// A number of fixed size, most or least significant byte first.
///
/// The instances of the library: unsigned char (1 byte), unsigned short and wchar_t (2), unsigned int, float and
/// enumerations (4), qxUInt64 and double (8). Floating-point numbers are those of IEEE 754.
///
/// Errors: when the stream ends within the number, the value stays; the error is the adapter's.
template <class T>
class qxSerializeBinary : public qxSerializeData
{
    using Form = qxWireForm<T>;
    using Wire = typename Form::Wire;

public:
    static constexpr unsigned int SIZE = sizeof(Wire); ///< bytes on the stream

    qxSerializeBinary() = default;

    /// The flag `bigEndian` is 1 for the most significant byte first, 0 for the least significant one.
    qxSerializeBinary(const T& value, unsigned char bigEndian = 1) : m_bigEndian(bigEndian), m_value(value) {}

    /// Sets the value only; the byte order stays.
    qxSerializeBinary& operator=(const T& value)
    {
        m_value = value;
        return *this;
    }
    operator T() const { return m_value; }
    const T& getValue() const { return m_value; }
    void setValue(const T& value) { m_value = value; }
    unsigned char getBigEndian() const { return m_bigEndian; }
    void setBigEndian(unsigned char bigEndian) { m_bigEndian = bigEndian; }

    void write(qxSerializeAdapter* adapter) override
    {
        unsigned char bytes[SIZE];
        encode(bytes);
        if constexpr (SIZE == 1)
            adapter->write(bytes[0]);
        else
            adapter->write(bytes, SIZE);
    }

    void read(qxSerializeAdapter* adapter) override
    {
        unsigned char bytes[SIZE];
        if (adapter->readWhole(bytes, SIZE) == SIZE) decode(bytes);
    }

    unsigned int getDataSize(qxSerializeAdapter*) override { return SIZE; }

    /// Puts the SIZE bytes of the stream into `bytes`.
    void encode(unsigned char* bytes) const
    {
        const Wire wire = inOrder(Form::toWire(m_value));
        std::memcpy(bytes, &wire, SIZE);
    }

    /// Takes the value from SIZE bytes of a stream.
    void decode(const unsigned char* bytes)
    {
        Wire wire;
        std::memcpy(&wire, bytes, SIZE);
        m_value = Form::fromWire(inOrder(wire));
    }

private:
    Wire inOrder(Wire wire) const
    {
        const bool isSame = (m_bigEndian != 0) == (std::endian::native == std::endian::big);
        return isSame ? wire : reversed(wire);
    }

    static Wire reversed(Wire wire) // compilers make one instruction of it
    {
        Wire result = 0;
        for (unsigned int i = 0; i < SIZE; ++i)
            result =
                static_cast<Wire>(result | static_cast<Wire>(wire >> 8 * i & 0xFF) << 8 * (SIZE - 1 - i));
        return result;
    }

    unsigned char m_bigEndian = 1;
    T m_value = T();
};
