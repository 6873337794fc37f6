// SPDX-License-Identifier: see LICENSE

#include "qxserializeguid.h"

#include "qxserializebinary.h"

#include <cstring>

namespace
{

// Puts `value` at `bytes`, the most significant byte first, and returns what is behind it.
template <class T>
unsigned char* put(unsigned char* bytes, T value)
{
    qxSerializeBinary<T>(value).encode(bytes);
    return bytes + sizeof(T);
}

template <class T>
T take(const unsigned char*& bytes)
{
    qxSerializeBinary<T> value;
    value.decode(bytes);
    bytes += sizeof(T);
    return value;
}

} // namespace

void qxSerializeGUID::write(qxSerializeAdapter* adapter)
{
    const qxGUIDRecord& record = m_guid.getConstGUID();
    unsigned char bytes[SIZE];
    unsigned char* place = put<unsigned int>(bytes, record.Data1);
    place = put<unsigned short>(place, record.Data2);
    place = put<unsigned short>(place, record.Data3);
    std::memcpy(place, record.Data4, sizeof(record.Data4));
    adapter->write(bytes, SIZE);
}

void qxSerializeGUID::read(qxSerializeAdapter* adapter)
{
    unsigned char bytes[SIZE];
    if (adapter->readWhole(bytes, SIZE) != SIZE) return;
    const unsigned char* place = bytes;
    qxGUIDRecord& record = m_guid.getGUID();
    record.Data1 = take<unsigned int>(place);
    record.Data2 = take<unsigned short>(place);
    record.Data3 = take<unsigned short>(place);
    std::memcpy(record.Data4, place, sizeof(record.Data4));
}

unsigned int qxSerializeGUID::getDataSize(qxSerializeAdapter*)
{
    return SIZE;
}
