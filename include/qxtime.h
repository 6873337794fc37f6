// The library's clock.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// Time as seconds since 1970-01-01 00:00:00 UTC.
///
/// Threads: any.
class QX_API qxTime
{
public:
    /// Seconds since 1970, UTC: a whole second at the first call, then driven by the steady clock only, so it
    /// never goes back and does not follow later changes of the system's clock.
    static double systemSeconds();
};
