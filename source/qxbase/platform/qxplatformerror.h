// The operating system's error numbers and their descriptions.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

/// The error number that the last failed call of the system left for this thread. Almost any call may
/// change it: functions of this floor that can fail hand theirs out themselves.
///
/// Threads: any; every thread has its own. Errors: none.
int qxPlatformLastError();

/// The system's description of the error number `error` in English, UTF-8, without a full stop or a
/// line end. A number that the system does not know gives a text that contains it.
///
/// Threads: any. Errors: none.
std::string qxPlatformErrorText(int error);
