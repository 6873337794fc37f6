// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformhost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace
{

const unsigned char LOOPBACK[4] = {127, 0, 0, 1};

bool isLoopback(const qxPlatformAddress& address)
{
    return address.family == QX_PLATFORM_IPV4 && std::memcmp(address.bytes, LOOPBACK, 4) == 0;
}

TEST(qxPlatformHost, listsTheAddressesOfThisMachine)
{
    int error = -1;
    const std::vector<qxPlatformInterface> all = qxPlatformInterfaces(error);
    EXPECT_EQ(error, 0);
    const auto found = std::find_if(all.begin(), all.end(),
                                    [](const qxPlatformInterface& one) { return isLoopback(one.address); });
    ASSERT_NE(found, all.end());
    EXPECT_EQ(found->mask.family, QX_PLATFORM_IPV4);
    EXPECT_EQ(found->mask.bytes[0], 255);
    EXPECT_EQ(found->mask.bytes[3], 0);
    EXPECT_FALSE(qxPlatformHostName().empty());
    EXPECT_EQ(qxPlatformInterfaceNumber("no such interface"), 0U);
}

TEST(qxPlatformHost, resolvesEachAddressOnce)
{
    const std::vector<qxPlatformAddress> found = qxPlatformResolve("127.0.0.1");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(isLoopback(found[0]));
}

} // namespace
