// The library's clock and its calendar.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <atomic>
#include <compare>

/// A moment: seconds since 1970-01-01 00:00:00, in UTC unless it was made with the local offset.
///
/// The calendar reaches from 1970 to 2106-02-07 06:28:15. It takes the seconds modulo 2^32: later and negative
/// moments, though ordered and counted rightly, show the date of another one. The time of day is right for every
/// moment from 1970 on.
///
/// Lifetime: a value.
/// Threads:  one object is used by one thread at a time, even to ask it: it keeps the time of day once it was
///           asked for. The static operations may be called from any thread.
/// Errors:   a date that does not exist raises qxWarningError.
class QX_API qxTime
{
public:
    /// Now, as now(0).
    qxTime();
    qxTime(double seconds) : m_seconds(seconds) {}

    /// `month` and `day` count from 1; `daySeconds` are those since midnight, below 86400.
    qxTime(unsigned int year, unsigned char month, unsigned char day, double daySeconds);
    qxTime(unsigned int year, unsigned char month, unsigned char day, double hour, double minute,
           double second)
        : qxTime(year, month, day, hour * 3600.0 + minute * 60.0 + second)
    {}

    double seconds() const { return m_seconds; }

    unsigned int year() const;
    unsigned char month() const;
    unsigned char day() const;
    unsigned char hour() const;
    unsigned char minute() const;

    /// Seconds since midnight; in five decimals when the moment was made from a date.
    double daySeconds() const;

    /// Seconds within the minute, below 60, in five decimals.
    double minuteSeconds() const;

    /// The usual formats for asString: "2024-11-09 04:02:28", and what suits names of files, "2024_11_09__04_02_28".
    static constexpr const char* TEXT_FORMAT = "%4d-%02d-%02d %02d:%02d:%02d";
    static constexpr const char* FILE_NAME_FORMAT = "%4d_%02d_%02d__%02d_%02d_%02d";

    /// `format` filled in with six integers: year, month, day, hour, minute and whole second.
    qxString asString(const qxString& format = TEXT_FORMAT) const;

    bool operator==(const qxTime& other) const { return m_seconds == other.m_seconds; }
    std::partial_ordering operator<=>(const qxTime& other) const { return m_seconds <=> other.m_seconds; }

    double operator+(const qxTime& other) const { return m_seconds + other.m_seconds; }
    double operator+(double seconds) const { return m_seconds + seconds; }
    double operator-(const qxTime& other) const { return m_seconds - other.m_seconds; }
    double operator-(double seconds) const { return m_seconds - seconds; }

    /// The time of the application: the clock plus the system time offset, and with `local` set plus the local
    /// offset.
    static qxTime now(unsigned char local = 0);

    /// The clock: seconds since 1970, UTC. It starts at a whole second, so it may be up to one behind the
    /// system's clock, and from then on follows the machine's counter only: no setting of the system's clock moves
    /// it, and it goes on while the machine sleeps. It goes back only should the counter do so.
    static double systemSeconds();

    /// Seconds since the library was loaded.
    static double uptimeSeconds() { return systemSeconds() - s_systemStartTime; }

    /// The clock's step in seconds. Asks the system for timers of one millisecond.
    static double getTimeResolution();

    /// Seconds by which the system's time zone is ahead of UTC at present; negative west of it.
    static double getLocalTimeOffset();

    /// Seconds from the clock to the application's time, 0 at first.
    static double getSystemTimeOffset() { return s_systemTimeOffset; }
    static void setSystemTimeOffset(double seconds) { s_systemTimeOffset = seconds; }

    /// Sets the system time offset so that now(local) gives `seconds` at this moment. The system's clock and
    /// systemSeconds stay as they are.
    static void setTime(double seconds, unsigned char local = 0);

    /// 0 for a month that does not exist.
    static unsigned char daysPerMonth(unsigned char month, unsigned int year);
    static unsigned int daysPerYear(unsigned int year);

private:
    static std::atomic<double> s_systemStartTime;
    static std::atomic<double> s_systemTimeOffset;

    double m_seconds;
    mutable unsigned char m_hasDaySeconds = 0; // whether the next field is set
    mutable double m_daySeconds = 0.0;
};
