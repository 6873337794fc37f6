// Numbers rounded to some decimals.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <cmath>

/// `value` rounded to `decimals` digits behind the point, halves away from zero.
inline double qxPrecision(double value, unsigned int decimals)
{
    double scale = 1.0;
    for (; decimals > 0; --decimals) scale *= 10.0;
    const double scaled = value * scale;
    if (!(std::abs(scaled) < 4503599627370496.0)) return value; // from 2^52 on there are no halves
    qxInt64 whole = static_cast<qxInt64>(scaled);
    const double rest = scaled - static_cast<double>(whole);
    if (rest >= 0.5) ++whole;
    if (rest <= -0.5) --whole;
    return static_cast<double>(whole) / scale;
}
