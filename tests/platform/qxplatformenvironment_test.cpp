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
        if (*text == 'o') { // others depend on the C library
            EXPECT_STREQ(std::getenv(NAME), text);
        }
    }
    EXPECT_TRUE(qxPlatformUnsetEnvironment(NAME));
    EXPECT_TRUE(qxPlatformUnsetEnvironment(NAME)); // need not be set
    EXPECT_FALSE(qxPlatformGetEnvironment(NAME, value));

    for (const char* name : {"", "A=B"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(qxPlatformSetEnvironment(name, "x"));
        EXPECT_FALSE(qxPlatformUnsetEnvironment(name));
    }
}

TEST(qxPlatformEnvironment, readersSurviveAGrowingTable)
{
    constexpr int COUNT = 500; // every new variable makes the system's table move
    const auto nameOf = [](int i) { return NAME + std::to_string(i); };
    qxPlatformSetEnvironment(NAME, "there");
    std::thread writer([&] {
        for (int i = 0; i < COUNT; ++i) qxPlatformSetEnvironment(nameOf(i).c_str(), "x");
        for (int i = 0; i < COUNT; ++i) qxPlatformUnsetEnvironment(nameOf(i).c_str());
    });
    std::string value;
    for (int i = 0; i < 20 * COUNT; ++i)
        EXPECT_TRUE(qxPlatformGetEnvironment(NAME, value) && value == "there");
    writer.join();
    qxPlatformUnsetEnvironment(NAME);
}

} // namespace
