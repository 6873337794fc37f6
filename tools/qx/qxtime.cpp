// SPDX-License-Identifier: see LICENSE

#include "qxtime.h"

#include "qxcommands.h"
#include "qxoptions.h"
#include "qxoutput.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace
{

constexpr unsigned int INTEGERS = 6;    // year to second
constexpr unsigned int MOST_DIGITS = 3; // of a width or precision
constexpr std::size_t LONGEST = 50000;  // of a format in bytes: filled in, it still fits a string

double parseSeconds(const std::string& text)
{
    double seconds = 0.0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, seconds);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(seconds))
        throw qxUsageError("'" + text + "' is no number of seconds");
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

} // namespace

qxStatus runTime(qxReport&, const std::vector<std::string>& words)
{
    const qxOptions options(words, {{"--format", true}, {"--local", false}});
    const std::vector<std::string>& arguments = options.getArguments();
    if (arguments.size() > 1) throw qxUsageError("time takes one number of seconds at most");
    const std::string format = options.get("--format").value_or(qxTime::TEXT_FORMAT);
    if (!FormatCheck(format).isGood())
        throw qxUsageError("'" + format + "' is no format of six integers at most");

    const double seconds = arguments.empty() ? qxTime::now().seconds() : parseSeconds(arguments[0]);
    const qxTime time(seconds + (options.has("--local") ? qxTime::getLocalTimeOffset() : 0.0));
    writeOutput(std::string(viewOf(time.asString(format.c_str()))) + "\n");
    return qxStatus::DONE;
}
