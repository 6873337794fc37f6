// What the library asks of threads.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"

/// Identity and delays of the calling thread.
///
/// Threads: any.
class QX_API qxThread
{
public:
    /// The platform's id of the calling thread; never 0 or 1, which stand for readers and shared writers.
    static unsigned int getThreadID();

    /// Sleeps `milliseconds`; firing `event`, when there is one, ends the sleep early. With 0 and no event it
    /// yields the processor.
    static void qxDelayFunction(unsigned int milliseconds, qxEvent* event = nullptr);

    /// Waits busily for `microseconds`; 0 yields the processor.
    static void qxMicroDelayFunction(unsigned int microseconds);
};
