// SPDX-License-Identifier: see LICENSE

#include "qxsocketaddress.h"

#include "qxtestrows.h"

#include <gtest/gtest.h>

namespace
{

TEST(qxSocketAddress, readsAndWritesAddresses)
{
    const auto readAndWrite = [](const std::string& text) -> std::string {
        qxSocketAddress address(qxHostAddress("9.9.9.9"), 9);
        const bool isRead = qxSocketAddress::parse(text.c_str(), address);
        EXPECT_EQ(isRead, address.getPort() != 9);
        return isRead ? address.asString().getString() : "none";
    };
    expectRows(readAndWrite, "127.0.0.1:80 => 127.0.0.1:80", "[::1]:65535 => [::1]:65535",
               "[FE80::1%2]:0 => [fe80::1%2]:0", "127.0.0.1 => none", "127.0.0.1: => none",
               "127.0.0.1:65536 => none", "127.0.0.1:-1 => none", "127.0.0.1:+1 => none", "::1:80 => none",
               "[::1] => none", "[::1]80 => none", "[127.0.0.1]:80 => none", "host:80 => none", ":80 => none",
               " => none");
    EXPECT_EQ(qxSocketAddress().asString(), "");
    EXPECT_TRUE(qxSocketAddress("nowhere").isNull());
}

TEST(qxSocketAddress, takesAHostAndItsPortApart)
{
    const auto split = [](const std::string& text) -> std::string {
        qxString host = "-";
        unsigned short port = 1;
        const bool isDone = qxSocketAddress::split(text.c_str(), host, port);
        EXPECT_TRUE(isDone || (host == "-" && port == 1));
        return isDone ? std::string(host.getString()) + " " + std::to_string(port) : "no";
    };
    expectRows(split, "example.org:443 => example.org 443", "[::1]:8080 => ::1 8080", ":7 =>  7", "7 =>  7",
               "a:b:7 => no", "[a:7 => no", "a]:7 => no", "[[a]]:7 => no", "[]:7 => no", "a:00080 => a 80",
               "a:7x => no", "a:4294967297 => no", "a => no");
}

TEST(qxSocketAddress, isNumbersToo)
{
    const qxSocketAddress address("1.2.3.4:258");
    EXPECT_EQ(address.asULong(), 0x01020304U);
    EXPECT_EQ(address.asLongLong(), 0x010203040102U);
    EXPECT_EQ(qxSocketAddress("[::5]:9").asLongLong(), 5U);
    EXPECT_EQ(address, qxSocketAddress(qxHostAddress(0x01020304), 258));
    EXPECT_NE(address, qxSocketAddress("1.2.3.4:259"));
    EXPECT_NE(address.hash(), qxSocketAddress("1.2.3.4:259").hash());
}

} // namespace
