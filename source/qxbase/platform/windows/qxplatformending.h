// The threads that can be ended.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformnotnow.h"

/// Makes the calling thread one that can be ended; null makes it one that cannot.
void qxPlatformSetOwnEnding(qxPlatformEnding* ending);
