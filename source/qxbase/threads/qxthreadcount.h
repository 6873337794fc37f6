// What all threads have in common.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Counts one working thread more, or one less.
///
/// Threads: any.
void qxCountWorkingThread(bool isWorking);

/// Whether priorities are applied; see qxThread::useThreadPriorities.
bool qxAreThreadPrioritiesUsed();
