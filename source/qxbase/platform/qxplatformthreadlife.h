// Threads that the library starts: their begin, end and priority.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// A thread that was started and not closed yet.
///
/// Threads: the operations on one of these are called by one thread at a time; the body may ask about its own and close
///          it. Errors: as said.
struct qxPlatformThread;

/// Starts `body(argument)` on a new thread with a stack of the system's default size. The body must not let C++
/// exceptions out. Null when the system refuses.
qxPlatformThread* qxPlatformThreadStart(void (*body)(void*), void* argument);

/// What qxPlatformThreadId answers on the thread, and the system's own handle of it.
unsigned int qxPlatformThreadIdOf(const qxPlatformThread& thread);
void* qxPlatformThreadHandleOf(const qxPlatformThread& thread);

/// Whether this is the calling thread.
bool qxPlatformThreadIsSelf(const qxPlatformThread& thread);

/// False once the body has returned or the thread was ended.
bool qxPlatformThreadIsActive(const qxPlatformThread& thread);

/// Lets go of a thread. Another one's end is waited for; the calling thread goes by itself when its body returns.
void qxPlatformThreadClose(qxPlatformThread* thread);

/// Ends another thread wherever it is, but not between qxPlatformEnterNotNow and the leave, and without running anything
/// more of it: what it holds stays held. The exit code is 0xFFFFFFFF where there is one.
///
/// `qxPlatformThreadAwaitEnd` returns when the thread is gone; until then it may still be there, and wait for what the caller
/// holds.
void qxPlatformThreadEnd(qxPlatformThread& thread);
void qxPlatformThreadAwaitEnd(qxPlatformThread& thread);

/// Ends the calling thread, which must be one of these, in the same way. Inside qxPlatformEnterNotNow it returns, and the
/// thread goes at the leave.
void qxPlatformThreadEndSelf();

/// Sets the priority, -2 to 2 with 0 for the normal one. What the system does not allow is ignored.
void qxPlatformThreadSetPriority(const qxPlatformThread& thread, int priority);

/// Waits, at most 100 milliseconds, until all these threads are gone: those that close themselves take a moment for it.
/// For the moment at which the library is unloaded; does nothing where the system has ended them by then.
void qxPlatformThreadAwaitClosed();
