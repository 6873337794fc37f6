// How threads begin that can be ended.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformnotnow.h"

/// Makes the calling thread one that can be ended, and runs `body(argument)`. It begins inside qxPlatformEnterNotNow.
///
/// When the thread is ended it stops there, and nothing behind that is run. Only under a sanitizer this function returns
/// then.
void qxPlatformRunEndable(qxPlatformEnding& ending, void (*body)(void*), void* argument);
