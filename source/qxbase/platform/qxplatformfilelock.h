// Locks between programs that change the same file.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// A lock on a file, held through a file beside it: that of its name with ".lock", which stays. The lock goes with the
/// process, however that ends.
///
/// Lifetime: made by qxPlatformFileLockTry, ended by qxPlatformFileLockRelease.
/// Threads:  any; two threads of a process keep each other out as two processes do.
struct qxPlatformFileLock;

/// Takes the lock on the file that `target` names or links to, which need not exist. Null when somebody else holds it
/// (`error` 0) and when that fails; never waits.
qxPlatformFileLock* qxPlatformFileLockTry(const char* target, int& error);

/// Null is allowed.
void qxPlatformFileLockRelease(qxPlatformFileLock* lock);
