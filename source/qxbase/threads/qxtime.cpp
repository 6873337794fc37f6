// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "platform/qxplatformclock.h"

#include <algorithm>
#include <cmath>

namespace
{

// The moment of the first reading on both clocks.
struct Anchor {
    double utc;    // whole seconds
    double steady; // seconds of the steady clock
};

} // namespace

double qxTime::systemSeconds()
{
    const double steady = qxPlatformSteadySeconds();
    static const Anchor anchor{std::trunc(qxPlatformUtcSeconds()), steady};
    // A thread may have read its clock before another one that set the anchor.
    return anchor.utc + std::max(0.0, steady - anchor.steady);
}
