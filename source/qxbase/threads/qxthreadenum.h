// The small numbers of threads.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Gives back the number of a thread that has ended or is about to; nothing when it has none.
///
/// Threads: any. Errors: none.
void qxReleaseThreadEnum(unsigned int threadID);
