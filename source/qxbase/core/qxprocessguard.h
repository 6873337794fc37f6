// The guard of locks that the whole process shares.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformnotnow.h"
#include "qxguard.h"

/// As qxBodyGuard for a process-wide lock: the thread is not ended while it holds that, or nobody would get it any more.
class qxProcessGuard
{
public:
    explicit qxProcessGuard(const qxMutex& lock) : m_guard(lock) {}

private:
    const qxPlatformNotNow m_notNow; // stands before the lock is taken, and after it is free
    const qxBodyGuard m_guard;
};
