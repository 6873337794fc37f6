// SPDX-License-Identifier: see LICENSE

#include "qxserializestring.h"

#include "qxtesttexts.h"
#include "qxtestvalues.h"

namespace
{

std::string textOf(const qxSerializeString& data)
{
    return bytesOf(data);
}

TEST(qxSerializeString, isItsBytesAndATerminator)
{
    qxSerializeString data(qxString("abc"));
    EXPECT_EQ(wireOf(data), "61 62 63 00");
    EXPECT_EQ(data.getDataSize(nullptr), 4U);
    data.setTerminator('\n');
    EXPECT_EQ(wireOf(data), "61 62 63 0A");
    data.useTerminator(0);
    EXPECT_EQ(wireOf(data), "61 62 63");
    EXPECT_EQ(data.getDataSize(nullptr), 4U); // deliberate

    qxSerializeString empty('|');
    EXPECT_EQ(wireOf(empty), "7C");
    EXPECT_EQ(empty.getDataSize(nullptr), 1U);
    empty.useTerminator(0);
    EXPECT_EQ(wireOf(empty), "");
}

TEST(qxSerializeString, givesItsTextAway)
{
    qxSerializeString data("abc", ';');
    EXPECT_STREQ(data.getString(), "abc");
    EXPECT_EQ(data.getTerminator(), ';');
    EXPECT_EQ(data.usesTerminator(), 1);
    data = qxString("other");
    static_cast<qxString&>(data) += "s";
    EXPECT_EQ(wireOf(data), "6F 74 68 65 72 73 3B");
}

TEST(qxSerializeString, isReadUpToItsTerminatorOrTheEnd)
{
    const std::string large(40000, 'x');
    const struct {
        std::string bytes;
        int terminator; // -1: none
        std::string text;
        std::string rest;
    } rows[] = {
        {"", 0, "", ""},
        {"ab", 0, "ab", ""},
        {std::string("ab\0cd", 5), 0, "ab", "cd"},
        {std::string("\0ab", 3), 0, "", "ab"},
        {std::string("ab\0", 3).append(large), 0, "ab", large}, // far from the end
        {std::string(large).append(1, 0).append(large), 0, large, large},
        {std::string("a\0b\nc", 5), '\n', std::string("a\0b", 3), "c"},
        {std::string("a\xFF", 2).append(large), 0xFF, "a", large},
        {std::string("ab\0cd", 5), -1, std::string("ab\0cd", 5), ""},
        {"", -1, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes.substr(0, 10));
        forEachStream(row.bytes, [&](qxSerializeAdapter& stream) {
            qxSerializeString data("before", static_cast<unsigned char>(row.terminator));
            data.useTerminator(row.terminator >= 0);
            data.read(&stream);
            EXPECT_EQ(textOf(data), row.text);
            EXPECT_EQ(readAll(stream), row.rest);
            EXPECT_FALSE(stream.hasError());
        });
    }
}

TEST(qxSerializeString, ofATextThatIsTooLongKeepsTheFirst65535BytesAndTheStreamInStep)
{
    for (const std::size_t length : {65535U, 65536U, 200000U}) {
        SCOPED_TRACE(length);
        const std::string kept = std::string(65534, 'x') + 'y';
        const std::string bytes = kept + std::string(length - 65535, 'z');
        forEachStream(bytes + '\0' + "next", [&](qxSerializeAdapter& stream) {
            qxSerializeString data;
            data.read(&stream);
            EXPECT_EQ(textOf(data), kept);
            EXPECT_STREQ(stream.getError(), length > 65535 ? "Too many characters in qxString" : "");
            EXPECT_EQ(readAll(stream), "next");
        });
    }
}

/// Reads a string of its own before the first byte that it gives.
class Nested final : public TestStream
{
public:
    using TestStream::TestStream;

protected:
    using TestStream::read_imp;
    unsigned char read_imp() override
    {
        TestStream inner("inner text");
        qxSerializeString().read(&inner);
        return TestStream::read_imp();
    }
};

TEST(qxSerializeString, isReadWhileTheStreamReadsAnother)
{
    Nested stream(std::string("outer\0", 6));
    qxSerializeString data;
    data.read(&stream);
    EXPECT_EQ(textOf(data), "outer");
}

TEST(qxSerializeString, setsTextsOfAllLengthsOneAfterTheOther)
{
    std::string bytes;
    for (std::size_t i = 0; i < 200; ++i)
        bytes += std::string(i * 37 % 130, static_cast<char>('a' + i % 26)) + '\0';
    LentBlock lent(bytes);
    qxSerializeString data;
    TestStream again;
    while (lent.stream.hasData()) {
        data.read(&lent.stream);
        data.write(&again);
        EXPECT_EQ(static_cast<qxString&>(data).hash(), qxString(data.getString()).hash());
    }
    EXPECT_EQ(again.written, bytes);
}

} // namespace
