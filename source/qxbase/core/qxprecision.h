// Numbers rounded to some decimals.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cmath>

/// `value` rounded to `decimals` digits behind the point, halves away from zero.
inline double qxPrecision(double value, unsigned int decimals)
{
    double scale = 1.0;
    for (; decimals > 0; --decimals) scale *= 10.0;
    const double scaled = std::round(value * scale);
    return std::isfinite(scaled) ? scaled / scale : value; // a value that large has no decimals
}
