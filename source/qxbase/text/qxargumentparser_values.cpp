// SPDX-License-Identifier: see LICENSE

#include "qxargumentparser.h"

#include "text/qxnumberscanner.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>

namespace
{

template <class Value>
Value convert(const qxString& text)
{
    using Limits = std::numeric_limits<Value>;
    if constexpr (std::same_as<Value, qxString>) {
        return text;
    } else if constexpr (std::same_as<Value, float>) {
        const double number = text.real();
        if (std::fabs(number) > Limits::max())
            return static_cast<float>(std::copysign(Limits::infinity(), number));
        return static_cast<float>(number);
    } else if constexpr (std::same_as<Value, double>) {
        return text.real();
    } else if constexpr (std::same_as<Value, qxUInt64>) {
        return qxUnsignedOf(qxScanNumber(text.getString(), text.getString() + text.length(), '.'));
    } else {
        return static_cast<Value>(std::clamp<qxInt64>(text.num(), Limits::min(), Limits::max()));
    }
}

} // namespace

template <class Value>
Value qxArgumentParser::findOptionValue(const qxString& name, const Value& whenMissing, unsigned int index,
                                        unsigned char caseSensitive, unsigned char silent)
{
    unsigned int position = 0;
    unsigned int count = 0;
    if (!hasOption(name, caseSensitive, &position, &count)) return whenMissing;
    if (index < count - 1) return convert<Value>(m_tokens[position + 1 + index]);
    if (silent == 0)
        m_error = qxString::str("Missing argument %d for option '-%s'", qxUInt64{index} + 1, name);
    return whenMissing;
}

template <class Value>
Value qxArgumentParser::findArgumentValue(unsigned int index, const Value& whenMissing,
                                          unsigned char withoutValues) const
{
    if (index >= getArgumentCount(withoutValues)) return whenMissing;
    return convert<Value>(m_arguments[index].text);
}

qxString qxArgumentParser::getOptionValue(const qxString& name, const qxString& whenMissing,
                                          unsigned int index, unsigned char caseSensitive,
                                          unsigned char silent)
{
    return findOptionValue<qxString>(name, whenMissing, index, caseSensitive, silent);
}

signed char qxArgumentParser::getOptionValue(const qxString& name, signed char whenMissing,
                                             unsigned int index, unsigned char caseSensitive,
                                             unsigned char silent)
{
    return findOptionValue<signed char>(name, whenMissing, index, caseSensitive, silent);
}

unsigned char qxArgumentParser::getOptionValue(const qxString& name, unsigned char whenMissing,
                                               unsigned int index, unsigned char caseSensitive,
                                               unsigned char silent)
{
    return findOptionValue<unsigned char>(name, whenMissing, index, caseSensitive, silent);
}

short qxArgumentParser::getOptionValue(const qxString& name, short whenMissing, unsigned int index,
                                       unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<short>(name, whenMissing, index, caseSensitive, silent);
}

unsigned short qxArgumentParser::getOptionValue(const qxString& name, unsigned short whenMissing,
                                                unsigned int index, unsigned char caseSensitive,
                                                unsigned char silent)
{
    return findOptionValue<unsigned short>(name, whenMissing, index, caseSensitive, silent);
}

int qxArgumentParser::getOptionValue(const qxString& name, int whenMissing, unsigned int index,
                                     unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<int>(name, whenMissing, index, caseSensitive, silent);
}

unsigned int qxArgumentParser::getOptionValue(const qxString& name, unsigned int whenMissing,
                                              unsigned int index, unsigned char caseSensitive,
                                              unsigned char silent)
{
    return findOptionValue<unsigned int>(name, whenMissing, index, caseSensitive, silent);
}

qxInt64 qxArgumentParser::getOptionValue(const qxString& name, qxInt64 whenMissing, unsigned int index,
                                         unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<qxInt64>(name, whenMissing, index, caseSensitive, silent);
}

qxUInt64 qxArgumentParser::getOptionValue(const qxString& name, qxUInt64 whenMissing, unsigned int index,
                                          unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<qxUInt64>(name, whenMissing, index, caseSensitive, silent);
}

float qxArgumentParser::getOptionValue(const qxString& name, float whenMissing, unsigned int index,
                                       unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<float>(name, whenMissing, index, caseSensitive, silent);
}

double qxArgumentParser::getOptionValue(const qxString& name, double whenMissing, unsigned int index,
                                        unsigned char caseSensitive, unsigned char silent)
{
    return findOptionValue<double>(name, whenMissing, index, caseSensitive, silent);
}

qxString qxArgumentParser::getArgumentValue(unsigned int index, const qxString& whenMissing,
                                            unsigned char withoutValues) const
{
    return findArgumentValue<qxString>(index, whenMissing, withoutValues);
}

signed char qxArgumentParser::getArgumentValue(unsigned int index, signed char whenMissing,
                                               unsigned char withoutValues) const
{
    return findArgumentValue<signed char>(index, whenMissing, withoutValues);
}

unsigned char qxArgumentParser::getArgumentValue(unsigned int index, unsigned char whenMissing,
                                                 unsigned char withoutValues) const
{
    return findArgumentValue<unsigned char>(index, whenMissing, withoutValues);
}

short qxArgumentParser::getArgumentValue(unsigned int index, short whenMissing,
                                         unsigned char withoutValues) const
{
    return findArgumentValue<short>(index, whenMissing, withoutValues);
}

unsigned short qxArgumentParser::getArgumentValue(unsigned int index, unsigned short whenMissing,
                                                  unsigned char withoutValues) const
{
    return findArgumentValue<unsigned short>(index, whenMissing, withoutValues);
}

int qxArgumentParser::getArgumentValue(unsigned int index, int whenMissing, unsigned char withoutValues) const
{
    return findArgumentValue<int>(index, whenMissing, withoutValues);
}

unsigned int qxArgumentParser::getArgumentValue(unsigned int index, unsigned int whenMissing,
                                                unsigned char withoutValues) const
{
    return findArgumentValue<unsigned int>(index, whenMissing, withoutValues);
}

qxInt64 qxArgumentParser::getArgumentValue(unsigned int index, qxInt64 whenMissing,
                                           unsigned char withoutValues) const
{
    return findArgumentValue<qxInt64>(index, whenMissing, withoutValues);
}

qxUInt64 qxArgumentParser::getArgumentValue(unsigned int index, qxUInt64 whenMissing,
                                            unsigned char withoutValues) const
{
    return findArgumentValue<qxUInt64>(index, whenMissing, withoutValues);
}

float qxArgumentParser::getArgumentValue(unsigned int index, float whenMissing,
                                         unsigned char withoutValues) const
{
    return findArgumentValue<float>(index, whenMissing, withoutValues);
}

double qxArgumentParser::getArgumentValue(unsigned int index, double whenMissing,
                                          unsigned char withoutValues) const
{
    return findArgumentValue<double>(index, whenMissing, withoutValues);
}
