// How the clock follows the machine's counter.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

/// A moment on the clock and on the counter. The clock is read as a distance from it.
struct qxClockAnchor {
    double seconds;   ///< on the clock; 0: there is no anchor yet
    qxUInt64 counter; ///< what the counter showed then
};

/// What the clock shows, and the anchor for the next readings: another one when the counter has jumped.
struct qxClockReading {
    double seconds;
    bool hasJumped;
    qxClockAnchor next;
};

/// Reads the clock at `counter`, whose steps are `period` seconds. A counter behind the anchor takes the clock back
/// with it; so far ahead that the distance is no signed number, it takes the anchor along.
inline qxClockReading qxReadClock(const qxClockAnchor& anchor, qxUInt64 counter, double period)
{
    constexpr qxUInt64 FARTHEST = 0x7FFFFFFFFFFFFFFF;
    const qxUInt64 distance = counter - anchor.counter;
    if (counter < anchor.counter) {
        // Signed, or the clock would leap ahead by the whole range of the counter.
        const double seconds =
            anchor.seconds + static_cast<double>(static_cast<qxInt64>(distance - 1)) * period;
        return {seconds, true, {seconds, counter}};
    }
    if (distance > FARTHEST) {
        const double seconds = anchor.seconds + static_cast<double>(distance) * period;
        return {seconds, true, {seconds, counter}};
    }
    return {anchor.seconds + static_cast<double>(static_cast<qxInt64>(distance)) * period, false, anchor};
}
