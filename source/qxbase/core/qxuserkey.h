// User keys: the settings that the library itself asks for.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

/// The value of the user key `name`: what the settings say, and where they say nothing the variable of the environment.
/// Empty when there is neither. Defined above the settings.
///
/// Threads: any. It may take the message lock, then that of the settings.
qxString qxGetUserKey(const char* name);

/// A number that is another one after each change of the settings that this process has noticed.
unsigned int qxUserKeyVersion();
