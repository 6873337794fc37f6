// User keys: the settings that the library itself asks for.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

/// The value of the user key `name`; empty when there is none.
///
/// Threads: any.
qxString qxGetUserKey(const char* name);

/// Replaces where user keys come from; null is the start: the variables of the environment.
void qxSetUserKeyLookup(qxString (*lookup)(const char* name));
