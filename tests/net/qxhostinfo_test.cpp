// SPDX-License-Identifier: see LICENSE

#include "qxhostinfo.h"

#include "qxtestrows.h"
#include "qxtestsupport.h"

namespace
{

std::string addressesOf(const std::string& name)
{
    std::string texts;
    const qxHostInfo info = qxHostInfo::getHostInfo(qxString(name.data(), name.size()));
    for (const qxHostAddress& address : info.getAddresses())
        texts += (texts.empty() ? "" : " ") + std::string(address.asString().getString());
    return texts;
}

TEST(qxHostInfo, knowsAddressesAndThisMachineWithoutAsking)
{
    expectRows(addressesOf, "10.1.2.3 => 10.1.2.3", "::1 => ::1", "localhost => 127.0.0.1 ::1",
               "LocalHost. => 127.0.0.1 ::1", "a.localhost => 127.0.0.1 ::1");
    const qxHostInfo info = qxHostInfo::getHostInfo("localhost");
    EXPECT_EQ(info.getName(), "localhost");
    EXPECT_EQ(info.getAddress().asString(), "127.0.0.1");
    EXPECT_EQ(info.getAddress(QX_HOST_ADDRESS_IPV6).asString(), "::1");
}

TEST(qxHostInfo, saysWhichNamesThereAreNot)
{
    const MessageRecorder recorder;
    for (const std::string& name :
         {std::string("no-such-host.invalid"), std::string("invalid."), std::string(), std::string(256, 'a'),
          std::string("local\0host", 10), std::string("%s%n.invalid")}) {
        EXPECT_TRUE(qxHostInfo::getHostInfo(qxString(name.data(), name.size())).isEmpty());
    }
    ASSERT_EQ(recorder.messages().size(), 6U);
    EXPECT_EQ(recorder.messages()[0],
              (RecordedMessage{"QuaxoSDK", QX_LEVEL_WARNING, "Host 'no-such-host.invalid' not found"}));
    EXPECT_EQ(recorder.messages()[2].text, "Host '' not found");
    EXPECT_EQ(recorder.messages()[5].text, "Host '%s%n.invalid' not found");
    EXPECT_TRUE(qxHostInfo::getHostInfo("invalid").getAddress().isNull());
}

TEST(qxHostInfo, knowsItsOwnMachine)
{
    const MessageRecorder recorder;
    const qxHostInfo info = qxHostInfo::getHostInfo();
    EXPECT_FALSE(info.isEmpty());
    EXPECT_FALSE(info.getName().isEmpty());
    const bool isAlone = info.getAddress().isLoopback();
    ASSERT_EQ(recorder.messages().size(), isAlone ? 1U : 0U);
    if (!isAlone) return;
    EXPECT_EQ(recorder.messages()[0], (RecordedMessage{"QuaxoSDK", QX_LEVEL_NOTICE,
                                                       "Local Host interface only resolved to 127.0.0.1"}));
}

} // namespace
