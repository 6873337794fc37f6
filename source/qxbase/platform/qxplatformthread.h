// The identity of the calling thread, and how it gives its time away.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Number of the calling thread: the system's own, as debuggers and process lists show it. No two
/// threads of the process that live at the same time share one; it may return after a thread's end.
///
/// Never 0 or 1, which lock owners use with meanings of their own; a thread that the system numbers so
/// gets a value that the system never gives. After a fork the child's thread has its new number.
/// The first call of a thread asks the system, the others read a variable.
///
/// Threads: any. Errors: none.
unsigned int qxPlatformThreadId();

/// A number that the calling thread has noted for itself; 0 at its start. Reading it takes a nanosecond or two.
///
/// Threads: any. Errors: none.
unsigned int qxPlatformThreadNote();
void qxPlatformSetThreadNote(unsigned int note);

/// Sleeps `milliseconds` or a little longer, also when signals arrive; 0 yields.
///
/// Threads: any. Errors: none.
void qxPlatformSleep(unsigned int milliseconds);

/// Lets another thread that is ready run first, if there is one.
///
/// Threads: any. Errors: none.
void qxPlatformYield();

/// Has `before` called by a thread that is about to fork the process, and `after` by the same thread in the parent and
/// by the only one of the child. Taking a lock in the one and leaving it in the other keeps what it guards in order for
/// the child. They stay for as long as the library is loaded; of several guards the last `before` is called first.
///
/// Threads: any. Errors: none; nothing happens on a system whose processes do not fork.
void qxPlatformGuardForks(void (*before)(), void (*after)());
