// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformmachine.h"

#include <gtest/gtest.h>

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
        if (count < 16) continue;
        const std::vector<unsigned char> last(bytes.end() - 24, bytes.end() - 8);
        EXPECT_NE(last, std::vector<unsigned char>(16, 0));
        ASSERT_TRUE(qxPlatformRandomBytes(bytes.data(), count, error));
        EXPECT_NE(std::vector<unsigned char>(bytes.end() - 24, bytes.end() - 8), last);
    }
}

} // namespace
