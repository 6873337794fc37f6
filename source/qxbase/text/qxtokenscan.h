// Searching runs of 16-bit tokens eight at a time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <bit>
#include <cstddef>
#include <cstring>

// The compilers' portable vectors: what the machine has is used, and one that has none loses only speed.

/// Eight tokens.
typedef unsigned short qxTokenVector __attribute__((vector_size(16)));

/// Eight answers: 0xFFFF for yes, 0 for no.
typedef short qxTokenAnswers __attribute__((vector_size(16)));

inline qxTokenVector qxLoadTokens(const char16_t* tokens)
{
    qxTokenVector vector;
    std::memcpy(&vector, tokens, sizeof vector);
    return vector;
}

/// The index of the first yes; 8 when there is none.
inline unsigned int qxFirstAnswer(qxTokenAnswers answers)
{
    typedef unsigned char Bytes __attribute__((vector_size(8)));
    const auto bits = std::bit_cast<qxUInt64>(__builtin_convertvector(answers, Bytes));
    const bool isLittle = std::endian::native == std::endian::little;
    return static_cast<unsigned int>(isLittle ? std::countr_zero(bits) : std::countl_zero(bits)) / 8;
}

/// Writes the low bytes of eight tokens.
inline void qxStoreLowBytes(char* out, qxTokenVector tokens)
{
    typedef unsigned char Bytes __attribute__((vector_size(8)));
    const Bytes bytes = __builtin_convertvector(tokens, Bytes);
    std::memcpy(out, &bytes, sizeof bytes);
}

/// The first token from `from` on for which `isStop` says yes, or `end`. `isStop` takes a qxTokenVector or one
/// token and answers the same for both.
template <class Stop>
inline const char16_t* qxFindToken(const char16_t* from, const char16_t* end, Stop&& isStop)
{
    while (end - from >= 8) {
        const unsigned int index = qxFirstAnswer(isStop(qxLoadTokens(from)));
        from += index;
        if (index < 8) return from;
    }
    while (from < end && !isStop(static_cast<unsigned short>(*from))) ++from;
    return from;
}

/// How many tokens get a yes.
template <class Test>
inline std::size_t qxCountTokens(const char16_t* from, const char16_t* end, Test&& test)
{
    std::size_t count = 0;
    while (end - from >= 8) {
        qxTokenAnswers yes = {}; // each lane counts down
        const std::ptrdiff_t blocks = (end - from) / 8 < 0x4000 ? (end - from) / 8 : 0x4000;
        for (std::ptrdiff_t i = 0; i < blocks; ++i, from += 8) yes += test(qxLoadTokens(from));
        for (unsigned int lane = 0; lane < 8; ++lane) count -= static_cast<std::size_t>(yes[lane]);
    }
    for (; from < end; ++from) count += test(static_cast<unsigned short>(*from)) ? 1 : 0;
    return count;
}
