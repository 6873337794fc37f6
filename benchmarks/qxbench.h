// Runs contenders on the same work and compares them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The work of one contender: done once a call. Returns a checksum of its result, which must be the same for all
/// contenders of a case.
using qxBenchWork = std::function<std::uint64_t()>;

/// What a case measures. In all of them the ratio of a row is the contender's cost divided by ours.
enum qxBenchUnit {
    QX_BENCH_NANOSECONDS, ///< time of one operation
    QX_BENCH_MEGABYTES,   ///< speed in 10^6 bytes a second
    QX_BENCH_MEMORY ///< peak memory in bytes per byte of input, in a process of its own for each contender
};

/// One case under way: its file adds the contenders, ours first.
struct qxBenchCase {
    struct Contender {
        std::string name;
        qxBenchWork work;
    };

    /// Adds a contender. Ours is the first and is named "qxbase".
    void add(const std::string& name, qxBenchWork work) { contenders.push_back({name, std::move(work)}); }

    /// How much one call of the work does: operations, or bytes of input.
    double amount = 1.0;
    std::vector<Contender> contenders;
};

/// Enters a case under its name, "group/case"; declare one in an unnamed namespace for each. `prepare` is called when the
/// case is about to be measured: it makes the input, sets the amount and adds the contenders.
class qxBenchEntry
{
public:
    qxBenchEntry(const char* name, qxBenchUnit unit, void (*prepare)(qxBenchCase&));
};

/// Makes the compiler believe that `value` is used, and that memory may have changed.
template <typename Value>
inline void qxBenchKeep(const Value& value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

/// A checksum of bytes, cheap beside whatever made them; `before` chains several.
std::uint64_t qxBenchChecksum(const void* bytes, std::size_t count, std::uint64_t before = 0);
