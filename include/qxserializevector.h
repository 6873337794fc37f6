// Vectors and matrices of floating-point numbers on a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializebinary.h"

/// COUNT numbers of 4 bytes, one after the other: what the vectors and matrices share.
///
/// Each member has a byte order of its own; the constructors give all of them the same one.
///
/// Errors: when the stream ends within them, all members stay; the error is the adapter's. A wrong index raises
///         qxFatalError.
template <unsigned int COUNT>
class qxSerializeFloats : public qxSerializeData
{
public:
    static constexpr unsigned int SIZE = COUNT * qxSerializeBinary<float>::SIZE; ///< bytes on the stream

    /// The flag `bigEndian` is 1 for the most significant byte first, 0 for the least significant one.
    explicit qxSerializeFloats(unsigned char bigEndian = 1)
    {
        for (qxSerializeBinary<float>& member : m_members) member.setBigEndian(bigEndian);
    }

    qxSerializeBinary<float>& operator[](unsigned int index)
    {
        requireMember(index);
        return m_members[index];
    }
    const qxSerializeBinary<float>& operator[](unsigned int index) const
    {
        requireMember(index);
        return m_members[index];
    }

    void write(qxSerializeAdapter* adapter) override
    {
        unsigned char bytes[SIZE];
        unsigned char* place = bytes;
        for (const qxSerializeBinary<float>& member : m_members) {
            member.encode(place);
            place += member.SIZE;
        }
        adapter->write(bytes, SIZE);
    }

    void read(qxSerializeAdapter* adapter) override
    {
        unsigned char bytes[SIZE];
        if (adapter->readWhole(bytes, SIZE) != SIZE) return;
        const unsigned char* place = bytes;
        for (qxSerializeBinary<float>& member : m_members) {
            member.decode(place);
            place += member.SIZE;
        }
    }

    unsigned int getDataSize(qxSerializeAdapter*) override { return SIZE; }

private:
    static void requireMember(unsigned int index)
    {
        if (index >= COUNT) throwFatalTemplateError("Index out of bounds in vector");
    }

    qxSerializeBinary<float> m_members[COUNT];
};

/// 2 members, 8 bytes.
class qxSerializeVec2 : public qxSerializeFloats<2>
{
public:
    using qxSerializeFloats<2>::qxSerializeFloats;
};

/// 3 members, 12 bytes.
class qxSerializeVec3 : public qxSerializeFloats<3>
{
public:
    using qxSerializeFloats<3>::qxSerializeFloats;
};

/// 4 members, 16 bytes.
class qxSerializeVec4 : public qxSerializeFloats<4>
{
public:
    using qxSerializeFloats<4>::qxSerializeFloats;
};

/// 9 members, 36 bytes; row by row in the library's own use.
class qxSerializeMatrix3 : public qxSerializeFloats<9>
{
public:
    using qxSerializeFloats<9>::qxSerializeFloats;
};

/// 16 members, 64 bytes; row by row in the library's own use.
class qxSerializeMatrix4 : public qxSerializeFloats<16>
{
public:
    using qxSerializeFloats<16>::qxSerializeFloats;
};
