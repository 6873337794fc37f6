// The variables of the process's environment.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

// These functions may be called from any thread at once. Code that changes the environment past them
// must not run at the same time.

/// Gives the variable `name` in `value` and returns true; false, and `value` untouched, if it is not set.
/// A variable may be set and empty.
bool qxPlatformGetEnvironment(const char* name, std::string& value);

/// Sets the variable `name`, also for programs started later. Returns false when that is refused: an
/// empty name, one that holds '=', or no memory.
bool qxPlatformSetEnvironment(const char* name, const char* value);

/// Removes the variable `name`, which need not be set. Returns false for a name that is refused.
bool qxPlatformUnsetEnvironment(const char* name);
