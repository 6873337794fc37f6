// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

#include "qxteststream.h"

#include <gtest/gtest.h>

namespace
{

std::string written(const std::string& name)
{
    TestStream stream;
    qxNameInterface(name.c_str()).write(&stream);
    return stream.written;
}

std::string read(const std::string& bytes, std::string& rest)
{
    TestStream stream(bytes);
    qxNameInterface name("before");
    name.read(&stream);
    rest = stream.content;
    return name.getName().getString();
}

TEST(qxNameInterface, writesTheNameAndAZero)
{
    EXPECT_EQ(written("abc"), std::string("abc\0", 4));
    EXPECT_EQ(written(""), std::string("\0", 1));
}

TEST(qxNameInterface, longNamesAreCutBetweenCharacters)
{
    const std::string ascii(255, 'a');
    const struct {
        std::string name;
        std::string kept;
    } rows[] = {
        {ascii + "b", ascii + "b"},
        {ascii + "bc", ascii + "b"},
        {ascii + "\xC3\xA9", ascii},             // would be split
        {"b" + ascii + "\xC3\xA9", "b" + ascii}, // just does not fit
        {ascii.substr(1) + "\xC3\xA9", ascii.substr(1) + "\xC3\xA9"},
        {ascii.substr(2) + "\xF0\x9F\x98\x80", ascii.substr(2)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(written(row.name), row.kept + '\0');
        std::string rest;
        EXPECT_EQ(read(row.name + std::string("\0x", 2), rest), row.kept);
        EXPECT_EQ(rest, "x");
    }
}

TEST(qxNameInterface, readsToTheZeroOrTheEnd)
{
    std::string rest;
    EXPECT_EQ(read(std::string("ab\0cd", 5), rest), "ab");
    EXPECT_EQ(rest, "cd");
    EXPECT_EQ(read("ab", rest), "ab");
    EXPECT_EQ(read(std::string("\0x", 2), rest), "");
    EXPECT_EQ(rest, "x");
    std::string longName(100002, 'x');
    longName.replace(100000, 2, std::string("\0y", 2));
    EXPECT_EQ(read(longName, rest), std::string(256, 'x'));
    EXPECT_EQ(rest, "y");
}

TEST(qxNameInterface, theNameOfAnAdapterIsReachedByItsFullName)
{
    TestStream stream;
    TestStream other;
    other.setName("other");
    other.qxNameInterface::write(&stream);
    EXPECT_EQ(stream.written, std::string("other\0", 6));

    TestStream source(stream.written);
    stream.qxNameInterface::read(&source);
    EXPECT_STREQ(stream.getName(), "other");
}

} // namespace
