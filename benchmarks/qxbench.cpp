// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <latch>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double ROUND_SECONDS = 0.02; // a round repeats short work until about so long

struct Entry {
    std::string name;
    qxBenchUnit unit;
    void (*prepare)(qxBenchCase&);
};

struct Row {
    std::string name;
    std::string contender;
    const char* unit;
    double median;
    double least;
    double most;
    double ratio;
};

struct Options {
    std::vector<std::string> groups; // empty: all
    std::string json;
    int rounds = 15;
};

std::vector<Entry>& entries()
{
    static std::vector<Entry> all; // filled before main by the objects of other files
    return all;
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The costs of one contender, one a round; its repeats a round are chosen on the way.
struct Measured {
    std::vector<double> seconds; // of one call of the work
    int repeats = 1;
};

[[noreturn]] void failWrongResult(const std::string& name, const std::string& contender)
{
    std::fprintf(stderr, "%s: the result of %s is not ours\n", name.c_str(), contender.c_str());
    std::_Exit(1);
}

// The first call of each contender warms up, sets its repeats and checks its result.
void warmUp(const std::string& name, const qxBenchCase& work, std::vector<Measured>& measured,
            std::uint64_t expected)
{
    for (std::size_t i = 0; i < work.contenders.size(); ++i) {
        const Clock::time_point start = Clock::now();
        if (work.contenders[i].work() != expected) failWrongResult(name, work.contenders[i].name);
        const double once = std::max(secondsSince(start), 1e-9);
        measured[i].repeats = static_cast<int>(std::clamp(ROUND_SECONDS / once, 1.0, 1e6));
    }
}

void progress(const std::string& text)
{
    static const bool shown = isatty(STDERR_FILENO) != 0;
    if (shown) std::fprintf(stderr, "\r\033[K%s", text.c_str());
}

// The contenders take turns, so that whatever else the machine does meets all of them alike.
std::vector<Measured> measureTimes(const std::string& name, const qxBenchCase& work, int rounds)
{
    const std::uint64_t expected = work.contenders.front().work();
    std::vector<Measured> measured(work.contenders.size());
    warmUp(name, work, measured, expected);
    for (int round = 0; round < rounds; ++round) {
        progress(name + ": round " + std::to_string(round + 1) + " of " + std::to_string(rounds));
        for (std::size_t i = 0; i < work.contenders.size(); ++i) {
            std::uint64_t result = expected;
            const Clock::time_point start = Clock::now();
            for (int repeat = 0; repeat < measured[i].repeats; ++repeat) result = work.contenders[i].work();
            measured[i].seconds.push_back(secondsSince(start) / measured[i].repeats);
            if (result != expected) failWrongResult(name, work.contenders[i].name);
        }
    }
    progress("");
    return measured;
}

// Bytes after `label` in this process's state; the system writes them in KiB.
double statusBytes(const char* label)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(label)) return std::atof(line.c_str() + std::strlen(label)) * 1024.0;
    return 0.0;
}

// Runs in a process of its own: prints the growth of the peak memory and the checksum.
int printMemory(const std::string& name, const std::string& contender)
{
    for (const Entry& entry : entries()) {
        if (entry.name != name) continue;
        qxBenchCase work;
        entry.prepare(work);
        for (const qxBenchCase::Contender& one : work.contenders) {
            if (one.name != contender) continue;
            std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts anew from what is resident
            const double before = statusBytes("VmRSS:");
            const std::uint64_t result = one.work();
            std::printf("%.0f %llx\n", statusBytes("VmHWM:") - before,
                        static_cast<unsigned long long>(result));
            return 0;
        }
    }
    return 1;
}

double measureMemory(const std::string& name, const std::string& contender, unsigned long long& result)
{
    const std::string command =
        "/proc/" + std::to_string(getpid()) + "/exe --memory-of '" + name + "' '" + contender + "'";
    FILE* const output = popen(command.c_str(), "r");
    double bytes = 0.0;
    const bool ok = output != nullptr && std::fscanf(output, "%lf %llx", &bytes, &result) == 2;
    if (output == nullptr || pclose(output) != 0 || !ok) {
        std::fprintf(stderr, "%s: the memory of %s cannot be measured\n", name.c_str(), contender.c_str());
        std::_Exit(1);
    }
    return bytes;
}

// The median of the ratios of single rounds: a round in which the machine was busy was so for both.
double ratio(const std::vector<double>& theirs, const std::vector<double>& ours)
{
    std::vector<double> ratios(ours.size());
    std::transform(theirs.begin(), theirs.end(), ours.begin(), ratios.begin(), std::divides<>());
    return median(std::move(ratios));
}

std::vector<Row> timeRows(const Entry& entry, const qxBenchCase& work, int rounds)
{
    const std::vector<Measured> measured = measureTimes(entry.name, work, rounds);
    std::vector<Row> rows;
    for (std::size_t i = 0; i < measured.size(); ++i) {
        const std::vector<double>& seconds = measured[i].seconds;
        const auto [least, most] = std::minmax_element(seconds.begin(), seconds.end());
        const bool isSpeed = entry.unit == QX_BENCH_MEGABYTES;
        const auto shown = [&](double cost) {
            return isSpeed ? work.amount / cost * 1e-6 : cost / work.amount * 1e9;
        };
        rows.push_back({entry.name, work.contenders[i].name, isSpeed ? "MB/s" : "ns", shown(median(seconds)),
                        shown(isSpeed ? *most : *least), shown(isSpeed ? *least : *most),
                        ratio(seconds, measured.front().seconds)});
    }
    return rows;
}

std::vector<Row> memoryRows(const Entry& entry, const qxBenchCase& work)
{
    std::vector<Row> rows;
    unsigned long long expected = 0;
    for (const qxBenchCase::Contender& contender : work.contenders) {
        progress(entry.name + ": " + contender.name);
        unsigned long long result = 0;
        const double value = measureMemory(entry.name, contender.name, result) / work.amount;
        if (rows.empty()) expected = result;
        if (result != expected) failWrongResult(entry.name, contender.name);
        rows.push_back({entry.name, contender.name, "bytes/byte", value, value, value,
                        rows.empty() ? 1.0 : value / rows.front().median});
    }
    progress("");
    return rows;
}

void printRow(const Row& row)
{
    std::printf("%-41s %-26s %10.2f %-10s %6.2f\n", row.name.c_str(), row.contender.c_str(), row.median,
                row.unit, row.ratio);
    std::fflush(stdout);
}

// Names here hold no character that JSON would want escaped.
bool writeJson(const std::string& name, const std::vector<Row>& rows)
{
    FILE* const file = std::fopen(name.c_str(), "w");
    if (file == nullptr) return false;
    std::fprintf(file, "[");
    const char* separator = "\n";
    for (const Row& row : rows) {
        std::fprintf(file,
                     "%s  {\"group\": \"%s\", \"contender\": \"%s\", \"median\": %.6g, \"least\": %.6g, "
                     "\"most\": %.6g, "
                     "\"unit\": \"%s\", \"ratio\": %.4g}",
                     separator, row.name.c_str(), row.contender.c_str(), row.median, row.least, row.most,
                     row.unit, row.ratio);
        separator = ",\n";
    }
    std::fprintf(file, "\n]\n");
    return std::fclose(file) == 0;
}

bool isChosen(const Entry& entry, const std::vector<std::string>& groups)
{
    return groups.empty() || std::any_of(groups.begin(), groups.end(), [&](const std::string& group) {
               return entry.name == group || entry.name.starts_with(group + "/");
           });
}

int usage()
{
    std::fprintf(stderr, "usage: qxbench [--json FILE] [--rounds N] [group...]\ngroups and their cases:\n");
    for (const Entry& entry : entries()) std::fprintf(stderr, "  %s\n", entry.name.c_str());
    return 2;
}

// False when the arguments make no sense.
bool readOptions(int count, char** arguments, Options& options)
{
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--json" && i + 1 < count) {
            options.json = arguments[++i];
        } else if (argument == "--rounds" && i + 1 < count) {
            options.rounds = std::atoi(arguments[++i]);
        } else if (argument.starts_with("-")) {
            return false;
        } else {
            options.groups.push_back(argument);
            const auto named = [&](const Entry& entry) { return isChosen(entry, {argument}); };
            if (std::none_of(entries().begin(), entries().end(), named)) return false;
        }
    }
    return options.rounds > 0;
}

int run(const Options& options)
{
    if (QX_BENCH_MISSING[0]) std::fprintf(stderr, "peers that are not installed: %s\n", QX_BENCH_MISSING);
    std::printf("%-41s %-26s %10s %-10s %6s\n", "group", "contender", "median", "unit", "ratio");
    std::vector<Row> rows;
    for (const Entry& entry : entries()) {
        if (!isChosen(entry, options.groups)) continue;
        qxBenchCase work;
        entry.prepare(work);
        if (work.contenders.empty()) continue;
        const bool isMemory = entry.unit == QX_BENCH_MEMORY;
        for (const Row& row : isMemory ? memoryRows(entry, work) : timeRows(entry, work, options.rounds)) {
            printRow(row);
            rows.push_back(row);
        }
    }
    if (!options.json.empty() && !writeJson(options.json, rows)) {
        std::fprintf(stderr, "%s cannot be written\n", options.json.c_str());
        return 4;
    }
    return 0;
}

} // namespace

qxBenchEntry::qxBenchEntry(const char* name, qxBenchUnit unit, void (*prepare)(qxBenchCase&))
{
    entries().push_back({name, unit, prepare});
}

std::uint64_t qxBenchChecksum(const void* bytes, std::size_t count, std::uint64_t before)
{
    // Four independent lanes of eight bytes, so that the processor need not wait for one multiplication to end.
    constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15U;
    const auto* next = static_cast<const unsigned char*>(bytes);
    std::uint64_t lanes[4] = {before + count, 1, 2, 3};
    for (; count >= 32; count -= 32, next += 32) {
        std::uint64_t words[4];
        std::memcpy(words, next, sizeof(words));
        for (int i = 0; i < 4; ++i) lanes[i] = (lanes[i] ^ words[i]) * FACTOR;
    }
    for (; count > 0; --count, ++next) lanes[0] = (lanes[0] ^ *next) * FACTOR;
    std::uint64_t sum = 0;
    for (const std::uint64_t lane : lanes) sum = (sum ^ (lane >> 29) ^ lane) * FACTOR;
    return sum;
}

int main(int count, char** arguments)
{
    if (count == 4 && std::strcmp(arguments[1], "--memory-of") == 0)
        return printMemory(arguments[2], arguments[3]);
    std::sort(entries().begin(), entries().end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    Options options;
    if (!readOptions(count, arguments, options)) return usage();

    // In a program of one thread the C library leaves locks out; the applications that we measure for have more.
    std::latch done(1);
    const std::jthread other([&done] { done.wait(); });
    const int status = run(options);
    done.count_down();
    return status;
}
