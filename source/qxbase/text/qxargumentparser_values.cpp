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

template <class Value>
Value valueOr(const qxString* text, const Value& whenMissing)
{
    return text ? convert<Value>(*text) : whenMissing;
}

} // namespace

// Null when it is missing.
const qxString* qxArgumentParser::findOptionText(const qxString& name, unsigned int index,
                                                 unsigned char caseSensitive, unsigned char silent)
{
    unsigned int position = 0;
    unsigned int count = 0;
    if (!hasOption(name, caseSensitive, &position, &count)) return nullptr;
    if (index < count - 1) return &m_tokens[position + 1 + index];
    if (silent == 0)
        m_error = qxString::str("Missing argument %d for option '-%s'", qxUInt64{index} + 1, name);
    return nullptr;
}

const qxString* qxArgumentParser::findArgumentText(unsigned int index, unsigned char withoutValues) const
{
    return index < getArgumentCount(withoutValues) ? &m_arguments[index].text : nullptr;
}

qxString qxArgumentParser::getOptionValue(const qxString& name, const qxString& whenMissing,
                                          unsigned int index, unsigned char caseSensitive,
                                          unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

signed char qxArgumentParser::getOptionValue(const qxString& name, signed char whenMissing,
                                             unsigned int index, unsigned char caseSensitive,
                                             unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

unsigned char qxArgumentParser::getOptionValue(const qxString& name, unsigned char whenMissing,
                                               unsigned int index, unsigned char caseSensitive,
                                               unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

short qxArgumentParser::getOptionValue(const qxString& name, short whenMissing, unsigned int index,
                                       unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

unsigned short qxArgumentParser::getOptionValue(const qxString& name, unsigned short whenMissing,
                                                unsigned int index, unsigned char caseSensitive,
                                                unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

int qxArgumentParser::getOptionValue(const qxString& name, int whenMissing, unsigned int index,
                                     unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

unsigned int qxArgumentParser::getOptionValue(const qxString& name, unsigned int whenMissing,
                                              unsigned int index, unsigned char caseSensitive,
                                              unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

qxInt64 qxArgumentParser::getOptionValue(const qxString& name, qxInt64 whenMissing, unsigned int index,
                                         unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

qxUInt64 qxArgumentParser::getOptionValue(const qxString& name, qxUInt64 whenMissing, unsigned int index,
                                          unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

float qxArgumentParser::getOptionValue(const qxString& name, float whenMissing, unsigned int index,
                                       unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

double qxArgumentParser::getOptionValue(const qxString& name, double whenMissing, unsigned int index,
                                        unsigned char caseSensitive, unsigned char silent)
{
    return valueOr(findOptionText(name, index, caseSensitive, silent), whenMissing);
}

qxString qxArgumentParser::getArgumentValue(unsigned int index, const qxString& whenMissing,
                                            unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

signed char qxArgumentParser::getArgumentValue(unsigned int index, signed char whenMissing,
                                               unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

unsigned char qxArgumentParser::getArgumentValue(unsigned int index, unsigned char whenMissing,
                                                 unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

short qxArgumentParser::getArgumentValue(unsigned int index, short whenMissing,
                                         unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

unsigned short qxArgumentParser::getArgumentValue(unsigned int index, unsigned short whenMissing,
                                                  unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

int qxArgumentParser::getArgumentValue(unsigned int index, int whenMissing, unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

unsigned int qxArgumentParser::getArgumentValue(unsigned int index, unsigned int whenMissing,
                                                unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

qxInt64 qxArgumentParser::getArgumentValue(unsigned int index, qxInt64 whenMissing,
                                           unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

qxUInt64 qxArgumentParser::getArgumentValue(unsigned int index, qxUInt64 whenMissing,
                                            unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

float qxArgumentParser::getArgumentValue(unsigned int index, float whenMissing,
                                         unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}

double qxArgumentParser::getArgumentValue(unsigned int index, double whenMissing,
                                          unsigned char withoutValues) const
{
    return valueOr(findArgumentText(index, withoutValues), whenMissing);
}
