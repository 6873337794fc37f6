// SPDX-License-Identifier: see LICENSE

#include "qxhostaddress.h"

#include "qxtestrows.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string readAndWrite(const std::string& text)
{
    qxHostAddress address;
    if (!qxHostAddress::parse(qxString(text.data(), text.size()), address)) return "none";
    return address.asString().getString();
}

TEST(qxHostAddress, readsAndWritesIPv4)
{
    expectRows(readAndWrite, "127.0.0.1 => 127.0.0.1", "0.0.0.0 => 0.0.0.0",
               "255.255.255.255 => 255.255.255.255", "256.0.0.1 => none", "1.2.3 => none",
               "1.2.3.4.5 => none", "01.2.3.4 => none", "1.2.3.4. => none", ".1.2.3.4 => none",
               "1..3.4 => none", "1.2.3.4  => none", "1.2.3.-4 => none", "1.2.3.0x4 => none",
               "1.2.3.99999999999 => none", " => none", "host => none");
}

TEST(qxHostAddress, readsAndWritesIPv6InTheShortestForm)
{
    expectRows(readAndWrite, ":: => ::", "::1 => ::1",
               "1:: => 1::", "0:0:0:0:0:0:0:0 => ::", "2001:DB8:0:0:1:0:0:1 => 2001:db8::1:0:0:1",
               "2001:0db8::0001 => 2001:db8::1", "1:0:2:3:4:5:6:7 => 1:0:2:3:4:5:6:7",
               "1:2:3:4:5:6:7:: => 1:2:3:4:5:6:7:0", "::2:3:4:5:6:7:8 => 0:2:3:4:5:6:7:8",
               "fe80::1%3 => fe80::1%3", "fe80::1%0 => fe80::1", "::ffff:1.2.3.4 => ::ffff:1.2.3.4",
               "::1.2.3.4 => ::102:304", "1:2:3:4:5:6:1.2.3.4 => 1:2:3:4:5:6:102:304",
               "64:ff9b::10.0.0.1 => 64:ff9b::a00:1");
}

TEST(qxHostAddress, refusesWhatIsNoIPv6)
{
    expectRows(readAndWrite, ": => none", "::: => none", "1::2::3 => none", "1:2:3:4:5:6:7 => none",
               "1:2:3:4:5:6:7:8:9 => none", "1:2:3:4:5:6:7:8:: => none", "::1:2:3:4:5:6:7:8 => none",
               "1:2:3:4::5:6:7:8 => none", "12345:: => none", "g:: => none", ":1:: => none", "::1: => none",
               "1:2:3:4:5:6:7:1.2.3.4 => none", "1.2.3.4:: => none", "::1.2.3.4:5 => none",
               "::01.2.3.4 => none", "[::1] => none", "::1%99999999999 => none", "::1% => none",
               "::1%no-such-interface => none", "1.2.3.4%1 => none", "::1/64 => none");
}

TEST(qxHostAddress, theNameOfAnInterfaceIsAsGoodAsItsNumber)
{
    const std::string long_name(70000, 'x');
    EXPECT_EQ(readAndWrite("fe80::1%" + long_name.substr(0, 60000)), "none");
    EXPECT_EQ(readAndWrite(std::string("::1%1\0", 6)), "none");
}

TEST(qxHostAddress, isANumberToo)
{
    const struct {
        const char* text;
        unsigned int number;
        qxUInt64 longNumber;
    } rows[] = {
        {"127.0.0.1", 0x7F000001, 0x7F000001},
        {"255.254.253.252", 0xFFFEFDFC, 0xFFFEFDFC},
        {"2001:db8::102:304:506:708", 0x05060708, 0x0102030405060708},
        {"none", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const qxHostAddress address(row.text);
        EXPECT_EQ(address.asULong(), row.number);
        EXPECT_EQ(address.asLongLong(), row.longNumber);
    }
    EXPECT_EQ(qxHostAddress(0xC0A80102), qxHostAddress("192.168.1.2"));
}

TEST(qxHostAddress, knowsItsKind)
{
    const auto kind = [](const std::string& text) {
        const qxHostAddress address(text.c_str());
        std::string result(1, "n46"[address.getType()]);
        if (address.isNull()) result += " null";
        if (address.isValid()) result += " valid";
        if (address.isAny()) result += " any";
        if (address.isLoopback()) result += " loopback";
        if (address.isMulticast()) result += " multicast";
        if (address.isLinkLocal()) result += " link";
        return result;
    };
    expectRows(kind, "0.0.0.0 => 4 valid any", ":: => 6 valid any", "127.8.8.8 => 4 valid loopback",
               "::1 => 6 valid loopback", "239.1.2.3 => 4 valid multicast", "ff02::1 => 6 valid multicast",
               "169.254.1.1 => 4 valid link", "febf::1 => 6 valid link", "8.8.8.8 => 4 valid");
    EXPECT_TRUE(qxHostAddress().isNull());
    EXPECT_FALSE(qxHostAddress().isValid());
    EXPECT_EQ(qxHostAddress().asString(), "");
}

TEST(qxHostAddress, differsByAllThatItIs)
{
    EXPECT_NE(qxHostAddress("fe80::1%1"), qxHostAddress("fe80::1%2"));
    EXPECT_NE(qxHostAddress("0.0.0.0"), qxHostAddress("::"));
    EXPECT_NE(qxHostAddress(), qxHostAddress("0.0.0.0"));
    EXPECT_EQ(qxHostAddress("1.2.3.4").hash(), qxHostAddress(0x01020304).hash());
    EXPECT_NE(qxHostAddress("1.2.3.4").hash(), qxHostAddress("1.2.3.5").hash());
}

} // namespace
