// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxstring.h"

#include <cstdio>
#include <cstring>
#if defined(QX_PEER_FMT)
#include <fmt/printf.h>
#endif

namespace
{

constexpr int LINES = 1000;
constexpr char FORMAT[] = "%s %d %08.3f %x";
constexpr char WORD[] = "temperature";

double valueOf(int line)
{
    return line * 0.37109375;
}

unsigned int flagsOf(int line)
{
    return static_cast<unsigned int>(line) * 2654435761U;
}

// Only a few bytes of each text: a checksum of all would cost as much as the formatting.
std::uint64_t sample(const char* text, std::size_t length)
{
    return length + static_cast<unsigned char>(text[length - 1]) * 3U +
           static_cast<unsigned char>(text[length / 2]) * 7U +
           static_cast<unsigned char>(text[length - 6]) * 11U;
}

void format(qxBenchCase& work)
{
    work.amount = LINES;
    work.add("qxbase", [text = qxString()]() mutable {
        std::uint64_t sum = 0;
        for (int line = 0; line < LINES; ++line) {
            text.format(FORMAT, WORD, line, valueOf(line), flagsOf(line));
            sum += sample(text.getString(), text.length());
        }
        return sum;
    });
    work.add("snprintf", [] {
        std::uint64_t sum = 0;
        for (int line = 0; line < LINES; ++line) {
            char text[100];
            const int length =
                std::snprintf(text, sizeof(text), FORMAT, WORD, line, valueOf(line), flagsOf(line));
            sum += sample(text, static_cast<std::size_t>(length));
        }
        return sum;
    });
#if defined(QX_PEER_FMT)
    work.add("fmt::sprintf", [] {
        std::uint64_t sum = 0;
        for (int line = 0; line < LINES; ++line) {
            const std::string text = fmt::sprintf(FORMAT, WORD, line, valueOf(line), flagsOf(line));
            sum += sample(text.data(), text.length());
        }
        return sum;
    });
#endif
}
const qxBenchEntry FORMAT_LINE("format/line", QX_BENCH_NANOSECONDS, format);

} // namespace
