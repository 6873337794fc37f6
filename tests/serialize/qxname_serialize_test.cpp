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

TEST(qxNameInterface, isWrittenAndReadUpToAZeroAndCutBetweenCharacters)
{
    const std::string ascii(255, 'a');
    const struct {
        std::string name;
        std::string kept;
    } rows[] = {
        {"", ""},
        {"abc", "abc"},
        {ascii + "b", ascii + "b"},
        {ascii + "bc", ascii + "b"},
        {ascii + "\xC3\xA9", ascii},             // would be split
        {"b" + ascii + "\xC3\xA9", "b" + ascii}, // just does not fit
        {ascii.substr(1) + "\xC3\xA9", ascii.substr(1) + "\xC3\xA9"},
        {ascii.substr(2) + "\xF0\x9F\x98\x80", ascii.substr(2)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(written(row.name), row.kept + '\0');
        std::string rest;
        EXPECT_EQ(read(row.name + std::string("\0x", 2), rest), row.kept);
        EXPECT_EQ(rest, "x");
        EXPECT_EQ(read(row.name, rest), row.kept); // to the end of the data
    }
    std::string rest;
    EXPECT_EQ(read(std::string(100000, 'x') + std::string("\0y", 2), rest), std::string(256, 'x'));
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
