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

    /// A small number, 0 to 9,999, for a thread of this id or, with 0, for the calling one, to index arrays with. It
    /// stays the thread's until it ends, then another one may get it. 10,000 when there is none left.
    static unsigned int getThreadEnum(unsigned int threadID = 0);

    /// Sleeps `milliseconds`; firing `event`, when there is one, ends the sleep early. With 0 and no event it
    /// yields the processor.
    static void qxDelayFunction(unsigned int milliseconds, qxEvent* event = nullptr);

    /// Waits busily for `microseconds`; 0 yields the processor.
    static void qxMicroDelayFunction(unsigned int microseconds);
};
