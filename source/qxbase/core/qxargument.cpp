// SPDX-License-Identifier: see LICENSE

#include "qxargument.h"

#include "qxerror.h"

#include <bit>
#include <limits>

namespace
{

constexpr double TWO_TO_63 = 9223372036854775808.0;
constexpr double TWO_TO_64 = 18446744073709551616.0;

qxInt64 truncated(double value)
{
    if (value >= TWO_TO_64) return std::numeric_limits<qxInt64>::max();
    if (value >= TWO_TO_63) return std::bit_cast<qxInt64>(static_cast<qxUInt64>(value));
    if (value >= -TWO_TO_63) return static_cast<qxInt64>(value);
    return value < 0 ? std::numeric_limits<qxInt64>::min() : 0; // what is left is not a number
}

qxUInt64 truncatedUnsigned(double value)
{
    if (value >= TWO_TO_64) return std::numeric_limits<qxUInt64>::max();
    return std::bit_cast<qxUInt64>(truncated(value));
}

} // namespace

qxArgument::operator double() const
{
    switch (m_kind) {
    case DOUBLE_KIND:
        return m_double;
    case POINTER_KIND:
        return static_cast<double>(std::bit_cast<qxUInt64>(m_pointer));
    case INT64_KIND:
        return static_cast<double>(m_int64);
    case UINT64_KIND:
        return static_cast<double>(m_uint64);
    default:
        return 0.0;
    }
}

qxArgument::operator qxInt64() const
{
    switch (m_kind) {
    case DOUBLE_KIND:
        return truncated(m_double);
    case POINTER_KIND:
        return std::bit_cast<qxInt64>(m_pointer);
    case INT64_KIND:
        return m_int64;
    case UINT64_KIND:
        return std::bit_cast<qxInt64>(m_uint64);
    default:
        return 0;
    }
}

qxArgument::operator qxUInt64() const
{
    if (m_kind == DOUBLE_KIND) return truncatedUnsigned(m_double);
    return std::bit_cast<qxUInt64>(static_cast<qxInt64>(*this));
}

qxArgument::operator void*() const
{
    switch (m_kind) {
    case POINTER_KIND:
        return const_cast<void*>(m_pointer);
    case INT64_KIND:
        return std::bit_cast<void*>(m_int64);
    case UINT64_KIND:
        return std::bit_cast<void*>(m_uint64);
    case STRING_KIND:
        return const_cast<qxString*>(m_string);
    default:
        return nullptr;
    }
}

const qxString& qxArgument::getString() const
{
    if (m_kind != STRING_KIND)
        qxExceptionThrows::qxThrowFatal("Cant get qxString value out of non qxString qxArgument");
    return *m_string;
}
