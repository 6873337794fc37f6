// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformerror.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

namespace
{

TEST(qxPlatformError, describesTheNumberOfAFailedCall)
{
    ASSERT_FALSE(std::fopen("/no such folder/file", "rb"));
    EXPECT_EQ(qxPlatformErrorText(qxPlatformLastError()), "No such file or directory");
    EXPECT_EQ(qxPlatformErrorText(98765), "Unknown error 98765");
}

} // namespace
