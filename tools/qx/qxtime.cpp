// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "qxcommands.h"
#include "qxoutput.h"

#include <cmath>
#include <cstring>

namespace
{

constexpr unsigned int INTEGERS = 6;    // year to second
constexpr unsigned int MOST_DIGITS = 3; // of a width or precision
constexpr std::size_t LONGEST = 50000;  // of a format in bytes: filled in, it still fits a string

double parseSeconds(const std::string& text)
{
    const double seconds = parseNumber<double>(text, "number of seconds");
    if (!std::isfinite(seconds)) throw qxUsageError("'" + text + "' is no number of seconds");
    return seconds;
}

/// Reads a format from front to back.
class FormatCheck
{
public:
    explicit FormatCheck(const std::string& format)
        : m_at(format.c_str()), m_isShort(format.size() <= LONGEST)
    {}

    /// Whether it asks for integers only, and for no more than there are.
    bool isGood()
    {
        unsigned int conversions = 0;
        while ((m_at = std::strchr(m_at, '%'))) {
            ++m_at;
            if (take("%")) continue;
            if (++conversions > INTEGERS || !takeConversion()) return false;
        }
        return m_isShort;
    }

private:
    bool take(const char* characters)
    {
        if (*m_at == 0 || !std::strchr(characters, *m_at)) return false;
        ++m_at;
        return true;
    }

    // "n$", flags, width, precision and letter.
    bool takeConversion()
    {
        if (m_at[0] >= '1' && m_at[0] < '1' + static_cast<int>(INTEGERS) && m_at[1] == '$') m_at += 2;
        while (take("-+ #0")) {}
        if (!takeNumber()) return false;
        if (take(".") && !takeNumber()) return false;
        return take("duoOxXbB");
    }

    bool takeNumber()
    {
        unsigned int digits = 0;
        while (take("0123456789")) ++digits;
        return digits <= MOST_DIGITS;
    }

    const char* m_at;
    const bool m_isShort;
};

qxStatus runTime(qxReport&, const qxCommandLine& line)
{
    const std::string format = line.getOptionText("--format");
    if (!FormatCheck(format).isGood())
        throw qxUsageError("'" + format + "' is no format of six integers at most");

    const double seconds =
        line.getArgumentCount() == 0 ? qxTime::now().seconds() : parseSeconds(line.getArgumentText(0));
    const qxTime time(seconds + (line.hasOption("--local") ? qxTime::getLocalTimeOffset() : 0.0));
    writeOutput(std::string(viewOf(time.asString(format.c_str()))) + "\n");
    return qxStatus::DONE;
}

} // namespace

void declareTime(qxTool& tool)
{
    tool.add("time", "prints the time as a date", runTime)
        .addArgument("SECONDS", "a moment after 1970-01-01 00:00:00 UTC; without it now",
                     QX_ARGUMENT_OPTIONAL)
        .addOption("--format", "F", "how year, month, day, hour, minute and second are written",
                   qxTime::TEXT_FORMAT)
        .addOption("--local", "", "in the time zone of the system; without it in UTC");
}
