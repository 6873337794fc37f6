// Stopwatches.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxname.h"

/// A stopwatch with a name, on the clock qxTime::systemSeconds. It runs from its construction on; all times are
/// seconds.
///
/// Lifetime: a value.
/// Threads:  one object is used by one thread at a time.
class QX_API qxTimer : public qxNameInterface
{
public:
    explicit qxTimer(const qxString& name = qxString());

    /// The time that it shows.
    double getTime();

    /// When it shows at least `limit`, sends a message with its name, its time and the frequency that this
    /// would be.
    void notifyTime(const double& limit, qxMessageLevel level);

    /// Starts again at 0 now, or with `fromLastReading` at the last getTime or notifyTime, so that nothing
    /// between two laps is lost.
    void reset(unsigned char fromLastReading = 0);

    /// Makes it show `seconds` now.
    void setTime(const double& seconds);

private:
    double m_start; // on the clock
    double m_last;  // when it was last read or set
};
