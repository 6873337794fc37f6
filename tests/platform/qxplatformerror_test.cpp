// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformerror.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>

namespace
{

TEST(qxPlatformError, describesNumbers)
{
    const struct {
        int error;
        const char* text;
    } rows[] = {
        {ENOENT, "No such file or directory"},
        {EISDIR, "Is a directory"},
        {ENOSPC, "No space left on device"},
        {98765, "Unknown error 98765"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.error);
        EXPECT_EQ(qxPlatformErrorText(row.error), row.text);
    }
}

TEST(qxPlatformError, lastErrorIsThatOfTheFailedCall)
{
    ASSERT_LT(open("/no such folder/file", O_RDONLY), 0);

    EXPECT_EQ(qxPlatformLastError(), ENOENT);
}

} // namespace
