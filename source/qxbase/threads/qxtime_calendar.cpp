// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "core/qxprecision.h"
#include "qxerror.h"
#include "qxstring.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr unsigned int FIRST_YEAR = 1970;
constexpr int DAY = 86400; // seconds
constexpr unsigned int DECIMALS = 5;
constexpr double SMALLEST_STEP = 1e-5; // in so many decimals

// Days of the year before each month, and those of the whole year; of leap years in the second row.
constexpr unsigned short DAYS_BEFORE_MONTH[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

struct Date {
    unsigned int year;
    unsigned char month; // from 1 on
    unsigned char day;   // from 1 on
};

bool isLeapYear(unsigned int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// The leap years up to and including `year`.
qxUInt64 countLeapYears(unsigned int year)
{
    return qxUInt64{year} / 4 - year / 100 + year / 400;
}

qxUInt64 daysBeforeYear(unsigned int year)
{
    return qxUInt64{year - FIRST_YEAR} * 365 + countLeapYears(year - 1) - countLeapYears(FIRST_YEAR - 1);
}

// Whether its whole part is a 64-bit number.
bool isInRange(double value)
{
    constexpr double LIMIT = 9223372036854775808.0; // 2^63
    return value > -LIMIT && value < LIMIT;
}

// The whole part modulo 2^32, of negative values as well; 0 for what no 64-bit number holds.
unsigned int truncate(double value)
{
    if (!isInRange(value)) return 0;
    return static_cast<unsigned int>(static_cast<qxInt64>(value) & 0xFFFFFFFF);
}

Date dateOf(double seconds)
{
    unsigned int days = truncate(seconds) / unsigned{DAY};
    unsigned int year = FIRST_YEAR + days / 366; // or later
    while (days >= daysBeforeYear(year + 1)) ++year;
    days -= static_cast<unsigned int>(daysBeforeYear(year));
    const unsigned short* const before = DAYS_BEFORE_MONTH[isLeapYear(year)];
    unsigned int month = days / 32; // or the next
    if (days >= before[month + 1]) ++month;
    return {year, static_cast<unsigned char>(month + 1),
            static_cast<unsigned char>(days - before[month] + 1)};
}

// Rounded, but never up to the `unit` that it is below.
double roundBelow(double value, double unit)
{
    if (!(value < unit) || value == static_cast<int>(value)) return value;
    return std::min(qxPrecision(value, DECIMALS), unit - SMALLEST_STEP);
}

// The remainder of whole days: years and months are made of such.
double daySecondsOf(double seconds)
{
    if (!isInRange(seconds)) return std::fmod(seconds, DAY);
    const auto whole = static_cast<qxInt64>(seconds); // cheaper in whole numbers, and as exact
    return static_cast<double>(whole % DAY) + (seconds - static_cast<double>(whole));
}

struct TimeOfDay {
    unsigned char hour;
    unsigned char minute;
    double seconds; // within the minute
};

// Whole numbers modulo 2^32 again.
TimeOfDay timeOfDay(double daySeconds)
{
    const int whole = static_cast<int>(truncate(daySeconds)); // less than a day in either direction
    const auto hour = static_cast<unsigned char>(static_cast<unsigned int>(whole / 3600) % 24);
    const auto minute = static_cast<unsigned char>(static_cast<unsigned int>(whole / 60) % 60);
    return {hour, minute, roundBelow(daySeconds - hour * 3600 - minute * 60, 60.0)};
}

} // namespace

qxTime::qxTime(unsigned int year, unsigned char month, unsigned char day, double daySeconds)
{
    if (year < FIRST_YEAR) qxExceptionThrows::qxThrowWarning("qxTime ( year parameter in time < 1970 )");
    if (month < 1 || month > 12)
        qxExceptionThrows::qxThrowWarning("qxTime ( month parameter in time is invalid )");
    if (day < 1 || day > daysPerMonth(month, year))
        qxExceptionThrows::qxThrowWarning("qxTime ( day parameter in time is invalid )");
    if (!(daySeconds >= 0.0 && daySeconds < DAY)) // so written, what is not a number fails too
        qxExceptionThrows::qxThrowWarning("qxTime ( daysecond parameter in time is invalid )");

    const qxUInt64 days = daysBeforeYear(year) + DAYS_BEFORE_MONTH[isLeapYear(year)][month - 1] + day - 1U;
    m_seconds = static_cast<double>(days) * DAY + daySeconds;
    m_hasDaySeconds = 1;
    m_daySeconds = roundBelow(daySeconds, DAY);
}

unsigned int qxTime::year() const
{
    return dateOf(m_seconds).year;
}

unsigned char qxTime::month() const
{
    return dateOf(m_seconds).month;
}

unsigned char qxTime::day() const
{
    return dateOf(m_seconds).day;
}

unsigned char qxTime::hour() const
{
    return timeOfDay(daySeconds()).hour;
}

unsigned char qxTime::minute() const
{
    return timeOfDay(daySeconds()).minute;
}

double qxTime::daySeconds() const
{
    if (!m_hasDaySeconds) {
        m_daySeconds = daySecondsOf(m_seconds);
        m_hasDaySeconds = 1;
    }
    return m_daySeconds;
}

double qxTime::minuteSeconds() const
{
    return timeOfDay(daySeconds()).seconds;
}

qxString qxTime::asString(const qxString& format) const
{
    const Date date = dateOf(m_seconds);
    const TimeOfDay time = timeOfDay(daySeconds());
    return qxString::str(format, date.year, date.month, date.day, time.hour, time.minute,
                         static_cast<int>(truncate(time.seconds)));
}

unsigned char qxTime::daysPerMonth(unsigned char month, unsigned int year)
{
    if (month < 1 || month > 12) return 0;
    const unsigned short* const before = DAYS_BEFORE_MONTH[isLeapYear(year)];
    return static_cast<unsigned char>(before[month] - before[month - 1]);
}

unsigned int qxTime::daysPerYear(unsigned int year)
{
    return isLeapYear(year) ? 366 : 365;
}
