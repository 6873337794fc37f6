// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

TEST(qxPlatformMachine, hasOneIdentity)
{
    const std::string identity = qxPlatformMachineIdentity();
    EXPECT_NE(identity, "");
    EXPECT_EQ(identity.find_first_of(std::string("\n\r\0", 3)), std::string::npos);
    EXPECT_EQ(qxPlatformMachineIdentity(), identity);
}

TEST(qxPlatformMachine, givesAsManyRandomBytesAsWanted)
{
    for (const std::size_t count : {0U, 1U, 16U, 1000U, 5000000U}) { // the system may give many in parts
        SCOPED_TRACE(count);
        std::vector<unsigned char> bytes(count + 8, 0);
        int error = 1;
        ASSERT_TRUE(qxPlatformRandomBytes(bytes.data(), count, error) && error == 0);
        EXPECT_EQ(std::vector<unsigned char>(bytes.end() - 8, bytes.end()), std::vector<unsigned char>(8, 0));
        const std::vector<unsigned char> first = bytes;
        ASSERT_TRUE(qxPlatformRandomBytes(bytes.data(), count, error));
        if (count < 16) continue;
        bytes.erase(bytes.begin(), bytes.end() - 24); // the last ones count as well
        EXPECT_FALSE(std::equal(bytes.begin(), bytes.begin() + 16, first.end() - 24));
    }
}

} // namespace
