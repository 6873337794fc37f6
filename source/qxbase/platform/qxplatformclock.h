// The operating system's clocks: the steady one, the counter, the calendar and its zone.
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

/// Steps of the machine's counter. Never goes back, does not follow changes of the calendar clock, and goes on while the
/// machine sleeps.
///
/// Threads: any. Errors: none.
unsigned long long qxPlatformCounter();

/// Seconds of one step of the counter, a millisecond or less; always the same.
///
/// Threads: any. Errors: none.
double qxPlatformCounterPeriod();

/// Asks the system to let sleeps end within a millisecond; holds while the process runs. Nothing where they do so anyway.
///
/// Threads: any. Errors: none.
void qxPlatformRefineTimer();

/// Seconds by which the system's time zone is ahead of UTC at present, summer time included; negative west of it. A
/// change of the zone is seen.
///
/// Threads: any. Errors: none; 0 where the system has no zone.
int qxPlatformZoneSeconds();
