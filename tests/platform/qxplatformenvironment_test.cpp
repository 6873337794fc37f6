// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformenvironment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace
{

constexpr const char* NAME = "QX_PLATFORM_TEST";

TEST(qxPlatformEnvironment, setsGetsAndRemoves)
{
    std::string value = "untouched";
    EXPECT_FALSE(qxPlatformGetEnvironment(NAME, value));
    EXPECT_EQ(value, "untouched");

    for (const char* text : {"", "one", "zwölf = 12"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(qxPlatformSetEnvironment(NAME, text));
        EXPECT_TRUE(qxPlatformGetEnvironment(NAME, value));
        EXPECT_EQ(value, text);
        EXPECT_STREQ(std::getenv(NAME), text);
    }
    EXPECT_TRUE(qxPlatformUnsetEnvironment(NAME));
    EXPECT_TRUE(qxPlatformUnsetEnvironment(NAME));
    EXPECT_FALSE(qxPlatformGetEnvironment(NAME, value));
}

TEST(qxPlatformEnvironment, refusesBadNames)
{
    for (const char* name : {"", "A=B"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(qxPlatformSetEnvironment(name, "x"));
        EXPECT_FALSE(qxPlatformUnsetEnvironment(name));
    }
}

// Every new variable makes the system's table move.
TEST(qxPlatformEnvironment, readersSurviveAGrowingTable)
{
    constexpr int COUNT = 500;
    const auto nameOf = [](int i) { return NAME + std::to_string(i); };
    qxPlatformSetEnvironment(NAME, "there");
    std::thread writer([&] {
        for (int i = 0; i < COUNT; ++i) qxPlatformSetEnvironment(nameOf(i).c_str(), "x");
        for (int i = 0; i < COUNT; ++i) qxPlatformUnsetEnvironment(nameOf(i).c_str());
    });
    for (int i = 0; i < 20 * COUNT; ++i) {
        std::string value;
        ASSERT_TRUE(qxPlatformGetEnvironment(NAME, value));
        ASSERT_EQ(value, "there");
    }
    writer.join();
    qxPlatformUnsetEnvironment(NAME);
}

} // namespace
