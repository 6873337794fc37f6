// SPDX-License-Identifier: see LICENSE

#include "qxargument.h"

#include "qxstring.h"
#include "qxtestsupport.h"

#include <cstdint>
#include <limits>
#include <type_traits>

namespace
{

// The queries of an argument, in the order void, double, pointer, signed, unsigned, string.
std::string kindsOf(const qxArgument& argument)
{
    std::string kinds;
    for (bool is : {argument.isVoid(), argument.isDouble(), argument.isPointer(), argument.isLongLong(),
                    argument.isULongLong(), argument.isString()})
        kinds += is ? '1' : '0';
    return kinds;
}

TEST(qxArgument, keepsSmallNumbersAsDoublesAndTheRestAsTheyAre)
{
    const auto doubles = [](auto... values) {
        for (const qxArgument& argument : {qxArgument(values)...}) EXPECT_EQ(kindsOf(argument), "010000");
    };
    doubles('a', static_cast<unsigned char>(1), static_cast<short>(1), static_cast<unsigned short>(1), 1, 1u,
            1L, 1UL, 1.5, 1.5f, 1.5L, true);

    const qxString text("text");
    const void* const pointer = &text;
    EXPECT_EQ(kindsOf(qxArgument()), "100000");
    EXPECT_EQ(kindsOf(qxArgument("text")), "001000");
    EXPECT_EQ(kindsOf(qxArgument(L"text")), "001000");
    EXPECT_EQ(kindsOf(qxArgument(pointer)), "001000");
    EXPECT_EQ(kindsOf(qxArgument(nullptr)), "001000");
    EXPECT_EQ(kindsOf(qxArgument(1LL)), "000100");
    EXPECT_EQ(kindsOf(qxArgument(1ULL)), "000010");
    EXPECT_EQ(kindsOf(qxArgument(text)), "000001");
    EXPECT_FALSE((std::is_constructible_v<qxArgument, const qxString*>));
}

TEST(qxArgument, neverRoundsALong)
{
    const long large = std::numeric_limits<long>::max();
    EXPECT_EQ(static_cast<qxInt64>(qxArgument(large)), large);
    EXPECT_EQ(static_cast<qxUInt64>(qxArgument(static_cast<unsigned long>(large))),
              static_cast<unsigned long>(large));
    EXPECT_EQ(static_cast<qxInt64>(qxArgument(-5L)), -5);
}

TEST(qxArgument, convertsNumbers)
{
    constexpr double TWO_TO_63 = 9223372036854775808.0;
    const struct {
        double value;
        qxInt64 asSigned;
        qxUInt64 asUnsigned;
    } rows[] = {
        {2.9, 2, 2},
        {-2.9, -2, static_cast<qxUInt64>(-2)},
        {TWO_TO_63, std::numeric_limits<qxInt64>::min(), 1ULL << 63},
        {1.5 * TWO_TO_63, std::numeric_limits<qxInt64>::min() / 2, 3ULL << 62},
        {1e30, std::numeric_limits<qxInt64>::max(), std::numeric_limits<qxUInt64>::max()},
        {-1e30, std::numeric_limits<qxInt64>::min(), 1ULL << 63},
        {std::numeric_limits<double>::infinity(), std::numeric_limits<qxInt64>::max(),
         std::numeric_limits<qxUInt64>::max()},
        {std::numeric_limits<double>::quiet_NaN(), 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(static_cast<qxInt64>(qxArgument(row.value)), row.asSigned);
        EXPECT_EQ(static_cast<qxUInt64>(qxArgument(row.value)), row.asUnsigned);
    }
    EXPECT_EQ(static_cast<double>(qxArgument(-3LL)), -3.0);
    EXPECT_EQ(static_cast<double>(qxArgument(std::numeric_limits<qxUInt64>::max())), 2 * TWO_TO_63);
    EXPECT_EQ(static_cast<qxUInt64>(qxArgument(-1LL)), std::numeric_limits<qxUInt64>::max());
    EXPECT_EQ(static_cast<double>(qxArgument()), 0.0);
}

TEST(qxArgument, convertsPointers)
{
    int there = 0;
    EXPECT_EQ(static_cast<void*>(qxArgument(&there)), &there);
    EXPECT_EQ(static_cast<qxUInt64>(qxArgument(&there)), reinterpret_cast<std::uintptr_t>(&there));
    EXPECT_EQ(static_cast<void*>(qxArgument(reinterpret_cast<qxUInt64>(&there))), &there);
    EXPECT_EQ(static_cast<void*>(qxArgument(1.0)), nullptr);
}

TEST(qxArgument, givesItsStringOnly)
{
    const qxString text("text");
    EXPECT_EQ(&qxArgument(text).getString(), &text);
    for (const qxArgument& argument : {qxArgument(), qxArgument("text"), qxArgument(1)}) {
        EXPECT_EQ(fatalText([&] { argument.getString(); }),
                  "Cant get qxString value out of non qxString qxArgument");
    }
}

} // namespace
