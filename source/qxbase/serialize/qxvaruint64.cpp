// SPDX-License-Identifier: see LICENSE

#include "qxvaruint64.h"

#include "serialize/qxadapterbytes.h"

#include <algorithm>
#include <bit>

namespace
{

constexpr unsigned char MORE = 0x80; // another byte follows
constexpr unsigned int LONGEST = 10; // bytes that 64 bits take

unsigned int sizeOf(qxUInt64 value)
{
    const auto groups = (static_cast<unsigned int>(std::bit_width(value | 1)) + 6) / 7;
    return std::min(groups, qxVarUInt64::MAX_SIZE);
}

void encode(qxUInt64 value, unsigned char* bytes, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) {
        const auto group = static_cast<unsigned char>(value & 0x7F);
        value >>= 7;
        bytes[i] = static_cast<unsigned char>(value != 0 ? group | MORE : group);
    }
}

// Takes whatever comes, one byte at a time.
qxUInt64 readBytes(qxSerializeAdapter& adapter)
{
    qxUInt64 value = 0;
    unsigned int shift = 0;
    for (unsigned int count = 1;; ++count) {
        const unsigned char byte = adapter.read();
        value += static_cast<qxUInt64>(byte & 0x7F) << shift;
        shift = (shift + 7) % 64; // deliberate: there is no limit on the number of bytes
        if (!(byte & MORE)) return value;
        if (!adapter.hasData() && (adapter.hasError() || count >= LONGEST)) return value;
    }
}

} // namespace

void qxVarUInt64::write(qxSerializeAdapter* adapter)
{
    const unsigned int size = sizeOf(m_value);
    if (unsigned char* const place = qxAdapterBytes::takeRoom(*adapter, size)) {
        encode(m_value, place, size);
        return;
    }
    unsigned char bytes[MAX_SIZE];
    encode(m_value, bytes, size);
    if (size == 1)
        adapter->write(bytes[0]);
    else
        adapter->write(bytes, size);
}

void qxVarUInt64::read(qxSerializeAdapter* adapter)
{
    const std::span<const unsigned char> bytes = qxAdapterBytes::peek(*adapter);
    const auto longest = static_cast<unsigned int>(std::min<std::size_t>(bytes.size(), MAX_SIZE));
    qxUInt64 value = 0;
    for (unsigned int i = 0; i < longest; ++i) {
        value |= static_cast<qxUInt64>(bytes[i] & 0x7F) << 7 * i;
        if (bytes[i] & MORE) continue;
        m_value = value;
        qxAdapterBytes::consume(*adapter, i + 1);
        return;
    }
    m_value = readBytes(*adapter);
}

unsigned int qxVarUInt64::getDataSize(qxSerializeAdapter*)
{
    return sizeOf(m_value);
}
