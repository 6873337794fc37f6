// Feeds formats from outside to the formatter: whatever they ask for, the answer is a text that fits a string or
// a qxFatalError.
// SPDX-License-Identifier: see LICENSE

#include "qxerror.h"
#include "qxmessage.h"
#include "qxstring.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace
{

// The values that formats trip over, whatever the conversion.
const double DOUBLES[] = {0.0,
                          -0.0,
                          0.1,
                          -1.5,
                          1e300,
                          -1e-300,
                          123456789012345678.0,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
const long long INTEGERS[] = {
    0, -1, 255, 70000, -70000, std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()};

// A star may ask for any width, and a text may stand where a number is wanted.
qxArgument argumentFor(unsigned char choice, const qxString& text)
{
    switch (choice % 6) {
    case 0:
        return DOUBLES[choice / 6 % std::size(DOUBLES)];
    case 1:
        return INTEGERS[choice / 6 % std::size(INTEGERS)];
    case 2:
        return text;
    case 3:
        return L"wide \u00e9"; // read as narrow text it is a text too: where a pointer points, its program knows
    case 4:
        return nullptr;
    default:
        return static_cast<int>(choice);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    constexpr std::size_t ARGUMENTS = 16;
    if (size < ARGUMENTS) return 0;
    const char* const format = reinterpret_cast<const char*>(data) + ARGUMENTS;
    const std::size_t length = size - ARGUMENTS;
    const qxString text(format, length < 100 ? length : 100);

    qxArgument arguments[ARGUMENTS];
    for (std::size_t i = 0; i < ARGUMENTS; ++i) arguments[i] = argumentFor(data[i], text);
    qxString result("before");
    try {
        result.formatArguments(format, length, arguments, data[0] % (ARGUMENTS + 1));
    } catch (const qxFatalError&) {
        if (result != "before") std::abort(); // a refused format changes nothing
        return 0;
    }
    if (result.getString()[result.length()] != 0) std::abort();
    // Without a percent sign a format stands for itself.
    if (!std::memchr(format, '%', length) && result != qxString(format, length)) std::abort();
    return 0;
}
