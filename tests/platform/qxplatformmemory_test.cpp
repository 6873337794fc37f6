// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmemory.h"

#include "platform/qxtestsystem.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace
{

TEST(qxPlatformMemory, reservesFarMoreThanThereIsButNotAnything)
{
    const std::size_t page = qxPlatformMemoryPageSize();
    EXPECT_TRUE(std::has_single_bit(page));

    unsigned char* start = static_cast<unsigned char*>(qxPlatformMemoryReserve(std::size_t{1} << 36));
    ASSERT_NE(start, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(start) % page, 0U);
    EXPECT_FALSE(isAccessible(start));
    EXPECT_EQ(qxPlatformMemoryReserve(SIZE_MAX / 2 - page + 1), nullptr);
    EXPECT_FALSE(qxPlatformMemoryCommit(reinterpret_cast<void*>(page * 3), page)); // never handed out
}

TEST(qxPlatformMemory, committedPagesAreZeroAlsoTheSecondTime)
{
    const std::size_t page = qxPlatformMemoryPageSize();
    unsigned char* start = static_cast<unsigned char*>(qxPlatformMemoryReserve(16 * page));
    ASSERT_NE(start, nullptr);
    unsigned char* middle = start + 4 * page;

    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass);
        ASSERT_TRUE(qxPlatformMemoryCommit(middle, 2 * page));
        for (std::size_t i = 0; i < 2 * page; ++i) {
            ASSERT_EQ(middle[i], 0);
            middle[i] = 0xAB;
        }
        EXPECT_FALSE(isAccessible(middle - 1));
        EXPECT_FALSE(isAccessible(middle + 2 * page));
        qxPlatformMemoryDecommit(middle, 2 * page);
        EXPECT_FALSE(isAccessible(middle));
    }
}

} // namespace
