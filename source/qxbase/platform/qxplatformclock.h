// The operating system's steady clock and its calendar clock.
// SPDX-License-Identifier: see LICENSE

#pragma once

/// Seconds since a fixed moment that differs from one start of the machine to the next. Never goes
/// back and does not follow changes of the calendar clock; steps of a microsecond or less.
///
/// Threads: any. Errors: none.
double qxPlatformSteadySeconds();

/// Seconds since 1970-01-01 00:00:00, UTC, as the calendar clock shows them: it jumps when somebody
/// sets it. Steps of a millisecond or less.
///
/// Threads: any. Errors: none.
double qxPlatformUtcSeconds();
