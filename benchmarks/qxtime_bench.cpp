// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxstring.h"
#include "qxtime.h"

#include <ctime>
#if defined(QX_PEER_FMT)
#include <fmt/chrono.h>
#endif

namespace
{

constexpr unsigned int READINGS = 1000;
constexpr unsigned int DATES = 1000;

void readClock(qxBenchCase& work)
{
    work.amount = READINGS;
    work.add("qxbase", [] {
        for (unsigned int i = 0; i < READINGS; ++i) qxBenchKeep(qxTime::systemSeconds());
        return READINGS;
    });
    work.add("clock_gettime", [] {
        for (unsigned int i = 0; i < READINGS; ++i) {
            timespec now;
            clock_gettime(CLOCK_MONOTONIC, &now);
            qxBenchKeep(now);
        }
        return READINGS;
    });
}
const qxBenchEntry READ_CLOCK("clock/read", QX_BENCH_NANOSECONDS, readClock);

std::time_t momentOf(unsigned int number)
{
    return static_cast<std::time_t>(number) * 4294967; // from 1970 to 2106
}

void writeDate(qxBenchCase& work)
{
    work.amount = DATES;
    work.add("qxbase", [format = qxString("%4d-%02d-%02d %02d:%02d:%02d")] {
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < DATES; ++i) {
            const qxString text = qxTime(static_cast<double>(momentOf(i))).asString(format);
            sum = qxBenchChecksum(text.getString(), text.length(), sum);
        }
        return sum;
    });
#if defined(QX_PEER_FMT)
    work.add("fmt::format, gmtime", [] {
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < DATES; ++i) {
            const std::string text = fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::gmtime(momentOf(i)));
            sum = qxBenchChecksum(text.data(), text.length(), sum);
        }
        return sum;
    });
#endif
    work.add("strftime, gmtime_r", [] {
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < DATES; ++i) {
            const std::time_t moment = momentOf(i);
            std::tm fields;
            gmtime_r(&moment, &fields);
            char text[40];
            const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
            sum = qxBenchChecksum(text, length, sum);
        }
        return sum;
    });
}
const qxBenchEntry WRITE_DATE("clock/date-to-text", QX_BENCH_NANOSECONDS, writeDate);

} // namespace
