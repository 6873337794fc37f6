// What a developer sees: the output of an attached debugger and the dialog of an assertion.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Whether a debugger watches this process. Asked of the system at most four times a second.
///
/// Threads: any. Errors: none; false where it cannot be told.
bool qxPlatformHasDebugger();

/// Sends `text` to the system's debug output; where it has none, to standard error while a debugger is attached, else
/// nowhere.
///
/// Threads: any. Errors: none.
void qxPlatformDebugOutput(const char* text);

/// The answers to qxPlatformAssertDialog.
enum qxPlatformAnswer {
    QX_PLATFORM_ANSWER_ABORT,
    QX_PLATFORM_ANSWER_RETRY,
    QX_PLATFORM_ANSWER_IGNORE,
};

/// Shows `title` and `body` and lets the user choose; only asks, does nothing about the answer.
///
/// On Windows the dialog is a window. Elsewhere: where standard input and standard error are a terminal and the process is
/// in its foreground, asks there for A, R or I until it gets one; the end of the input means ignore. Otherwise nobody is
/// there to answer: both texts go to standard error and the answer is ignore.
///
/// Threads: any; two dialogs at once would ask at once. Errors: none.
qxPlatformAnswer qxPlatformAssertDialog(const char* title, const char* body);
