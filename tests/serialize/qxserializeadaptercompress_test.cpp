// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptercompress.h"

#include "qxserializeadapterqueue.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

namespace
{

using Stream = qxRefPointer<qxSerializeAdapter>;

// "hello hello hello\n" as another program compressed it, with a name in the header.
const char FOREIGN[] = "\x1F\x8B\x08\x08\x00\x00\x00\x00\x02\xFF\x61\x00\xCB\x48\xCD\xC9\xC9\x57\xC8\x40"
                       "\x90\x5C\x00\x3B\x7C\x8A\xDF\x12\x00\x00\x00";

Stream streamOf(const std::string& text)
{
    Stream stream(new qxSerializeAdapterQueue);
    writeText(*stream, text);
    return stream;
}

std::string packed(const std::string& bytes, int level = qxSerializeAdapterCompress::DEFAULT_LEVEL)
{
    const Stream stream = streamOf("");
    qxSerializeAdapterCompress writer(stream, QX_SERIALIZE_OUTPUT, level);
    writeText(writer, bytes);
    EXPECT_TRUE(writer.close());
    return readAll(*stream);
}

/// What is read from `bytes`, with the error behind.
std::string unpacked(const std::string& bytes)
{
    qxSerializeAdapterCompress reader(streamOf(bytes), QX_SERIALIZE_INPUT);
    const std::string result = readAll(reader);
    return reader.hasError() ? result + "|" + reader.getError().getString() : result;
}

std::string noise(std::size_t count)
{
    std::string bytes(count, '\0');
    unsigned int value = 1;
    for (char& c : bytes) c = static_cast<char>((value = value * 69069U + 1U) >> 24);
    return bytes;
}

TEST(qxSerializeAdapterCompress, readsWhatItWrote)
{
    const std::string texts[] = {"", "a", "hello hello hello\n", noise(300000), std::string(1000000, 'x')};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.size());
        for (const int level : {-5, 0, 1, 9, 100}) EXPECT_EQ(unpacked(packed(text, level)), text);
    }
    EXPECT_LT(packed(texts[4]).size(), 2000U);
    EXPECT_EQ(packed("a").substr(0, 10),
              std::string("\x1F\x8B\x08\0\0\0\0\0\0\xFF", 10)); // no time, no system
}

TEST(qxSerializeAdapterCompress, readsWhatOthersWrote)
{
    const std::string foreign(FOREIGN, sizeof(FOREIGN) - 1);
    EXPECT_EQ(unpacked(foreign), "hello hello hello\n");
    EXPECT_EQ(unpacked(foreign + packed("") + packed("more")), "hello hello hello\nmore");
}

TEST(qxSerializeAdapterCompress, everyCutIsTold)
{
    const std::string whole = packed("hello hello hello\n") + packed("more");
    const std::size_t first = packed("hello hello hello\n").size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (size == first) continue; // a whole member
        SCOPED_TRACE(size);
        const std::string result = unpacked(whole.substr(0, size));
        const std::string error = "|Compressed data ends too early at offset " + std::to_string(size);
        EXPECT_TRUE(result.ends_with(error)) << result;
    }
}

TEST(qxSerializeAdapterCompress, damageIsTold)
{
    const std::string whole = packed("hello hello hello\n");
    const auto changed = [&](std::size_t place) {
        std::string bytes = whole;
        bytes[place] = static_cast<char>(bytes[place] ^ 0x55);
        return unpacked(bytes);
    };
    EXPECT_EQ(unpacked("hello"), "|No compressed data at offset 2");
    EXPECT_EQ(unpacked(whole + "x"), "hello hello hello\n|Other bytes behind the compressed data at offset " +
                                         std::to_string(whole.size()));
    EXPECT_EQ(unpacked(whole + std::string(1, '\0')),
              "hello hello hello\n|Other bytes behind the compressed data at offset " +
                  std::to_string(whole.size()));
    const std::string damaged = "hello hello hello\n|Wrong compressed data at offset ";
    EXPECT_EQ(changed(whole.size() - 8), damaged + std::to_string(whole.size() - 4)); // the checksum
    EXPECT_EQ(changed(whole.size() - 1), damaged + std::to_string(whole.size()));     // the length
    EXPECT_NE(changed(10).find("|Wrong compressed data at offset "), std::string::npos);
}

TEST(qxSerializeAdapterCompress, aFewBytesThatBecomeManyAreRead)
{
    // A member in a member: 200 MB of zeros become 200 KB, and those 1 KB.
    const Stream inner = streamOf("");
    {
        qxSerializeAdapterCompress writer(new qxSerializeAdapterCompress(inner, QX_SERIALIZE_OUTPUT),
                                          QX_SERIALIZE_OUTPUT);
        const std::string zeros(1000000, '\0');
        for (int i = 0; i < 200; ++i) writeText(writer, zeros);
    }
    EXPECT_LT(inner->length(), 3000U);
    qxSerializeAdapterCompress reader(new qxSerializeAdapterCompress(inner, QX_SERIALIZE_INPUT),
                                      QX_SERIALIZE_INPUT);
    unsigned char block[50000];
    qxUInt64 total = 0;
    while (const unsigned int count = reader.read(block, sizeof(block))) {
        total += count;
        ASSERT_LE(reader.length(), 65536U);
    }
    EXPECT_EQ(total, 200000000U);
    EXPECT_FALSE(reader.hasError());
}

TEST(qxSerializeAdapterCompress, aFlushMakesAllReadable)
{
    const Stream stream = streamOf("");
    qxSerializeAdapterCompress writer(stream, QX_SERIALIZE_OUTPUT);
    qxSerializeAdapterCompress reader(stream, QX_SERIALIZE_INPUT);
    for (const std::string text : {"first", "second", "third"}) {
        writeText(writer, text);
        writer.flush();
        EXPECT_TRUE(reader.hasData(static_cast<unsigned int>(text.size())));
        EXPECT_EQ(readBlock(reader, static_cast<unsigned int>(text.size())), text);
    }
}

} // namespace
