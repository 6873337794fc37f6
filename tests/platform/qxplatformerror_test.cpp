// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformerror.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>

namespace
{

TEST(qxPlatformError, describesTheNumberOfAFailedCall)
{
    ASSERT_LT(open("/no such folder/file", O_RDONLY), 0);
    EXPECT_EQ(qxPlatformErrorText(qxPlatformLastError()), "No such file or directory");
    EXPECT_EQ(qxPlatformErrorText(98765), "Unknown error 98765");
}

} // namespace
