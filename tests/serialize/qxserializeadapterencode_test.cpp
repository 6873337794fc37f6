// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterencode.h"

#include "qxserializeadaptermemory.h"
#include "qxserializeadapterqueue.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

namespace
{

using Stream = qxRefPointer<qxSerializeAdapter>;

Stream streamOf(const std::string& text)
{
    Stream stream(new qxSerializeAdapterQueue);
    writeText(*stream, text);
    return stream;
}

/// What an `Encoder` makes of `bytes`, written in blocks of `step`.
template <class Encoder>
std::string encoded(const std::string& bytes, std::size_t step)
{
    const Stream text = streamOf("");
    Encoder encoder(text, QX_SERIALIZE_OUTPUT);
    for (std::size_t i = 0; i < bytes.size(); i += step) {
        writeText(encoder, bytes.substr(i, step));
        if (i % 2) encoder.flush();
    }
    EXPECT_TRUE(encoder.close());
    return readAll(*text);
}

/// What it reads from `text`, with the error behind.
template <class Decoder>
std::string decoded(const std::string& text)
{
    Decoder decoder(streamOf(text), QX_SERIALIZE_INPUT);
    const std::string bytes = readAll(decoder);
    return decoder.hasError() ? bytes + "|" + decoder.getError().getString() : bytes;
}

std::string allBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 2654435761U >> 16);
    return bytes;
}

TEST(qxSerializeAdapterBase64, writesOneLine)
{
    const struct {
        const char* bytes;
        const char* text;
    } rows[] = {
        {"", ""},        {"f", "Zg=="},        {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFB\xEF\xBE\xFF\xFF\xFF", "++++////"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        for (const std::size_t step : {1U, 2U, 3U, 100U})
            EXPECT_EQ(encoded<qxSerializeAdapterBase64>(row.bytes, step), row.text);
        EXPECT_EQ(decoded<qxSerializeAdapterBase64>(row.text), row.bytes);
    }
    const std::string line = encoded<qxSerializeAdapterBase64>(allBytes(200000), 200000);
    EXPECT_EQ(line.size(), 266668U);
    EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(decoded<qxSerializeAdapterBase64>(line), allBytes(200000));
    EXPECT_EQ(encoded<qxSerializeAdapterBase64>(allBytes(200000), 7777), line);
}

TEST(qxSerializeAdapterBase64, readsOverBlanksAndTellsFaults)
{
    const struct {
        const char* text;
        const char* result;
    } rows[] = {
        {" Zm\r\n9v\tYg = =\n", "foob"},
        {"Zm9v*g==", "foo|No character of Base64 at offset 4"},
        {"Zm9vYg==Zm9v", "foob|Base64 goes on behind its padding at offset 8"},
        {"Zm9vYg===", "foob|Wrong padding of Base64 at offset 8"},
        {"Zm9vY===", "foo|Wrong padding of Base64 at offset 5"},
        {"=", "|Wrong padding of Base64 at offset 0"},
        {"Zh==", "f|Wrong padding of Base64 at offset 2"}, // bits that make no byte are not 0
        {"Zm9vY", "foo|Base64 ends too early at offset 5"},
        {"Zm9vYg=", "foob|Base64 ends too early at offset 7"},
        {"Zm9vYg", "foob|Base64 ends too early at offset 6"},
        {"Zm9v\xFFg==", "foo|No character of Base64 at offset 4"},
        {"Zm9-", "fo|No character of Base64 at offset 3"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(decoded<qxSerializeAdapterBase64>(row.text), row.result) << row.text;
}

TEST(qxSerializeAdapterHex, writesUpperCaseAndReadsBoth)
{
    EXPECT_EQ(encoded<qxSerializeAdapterHex>(std::string("\0\x9A\xFF", 3), 1), "009AFF");
    EXPECT_EQ(encoded<qxSerializeAdapterHex>(allBytes(100000), 100000),
              encoded<qxSerializeAdapterHex>(allBytes(100000), 333));
    const struct {
        const char* text;
        const char* result;
    } rows[] = {
        {"", ""},
        {"4a6B\r\n6 c", "Jkl"},
        {"4a6", "J|Hexadecimal digits end too early at offset 3"},
        {"4aG0", "J|No hexadecimal digit at offset 2"},
        {"4a4=", "J|No hexadecimal digit at offset 3"},
    };
    for (const auto& row : rows) EXPECT_EQ(decoded<qxSerializeAdapterHex>(row.text), row.result) << row.text;
    const std::string all = allBytes(100000);
    EXPECT_EQ(decoded<qxSerializeAdapterHex>(encoded<qxSerializeAdapterHex>(all, 9999)), all);
}

TEST(qxSerializeAdapterFilter, offsetsOfFaultsCountFromTheStart)
{
    std::string text(300000, 'A');
    text[299998] = '*';
    qxSerializeAdapterBase64 decoder(streamOf(text), QX_SERIALIZE_INPUT);
    const std::string bytes = readBlock(decoder, 300000);
    EXPECT_EQ(bytes.size(), 224998U); // one byte of the faulty group was whole
    EXPECT_FALSE(decoder.hasData());
    EXPECT_STREQ(decoder.getError(), "No character of Base64 at offset 299998");
}

TEST(qxSerializeAdapterFilter, readsAsOtherStreamsDo)
{
    qxSerializeAdapterHex decoder(streamOf("6162636465"), QX_SERIALIZE_INPUT);
    EXPECT_TRUE(decoder.hasData(5));
    EXPECT_FALSE(decoder.hasData(6));
    EXPECT_EQ(decoder.read(), 'a');
    decoder.pushBack('x');
    EXPECT_EQ(readBlock(decoder, 3), "xbc");
    EXPECT_EQ(decoder.length(), 2U);
    EXPECT_EQ(decoder.read(nullptr, 1), 1U);
    EXPECT_EQ(readBlock(decoder, 9), "e");
    EXPECT_FALSE(decoder.hasError());
    EXPECT_TRUE(decoder.supportAction(QX_SERIALIZE_INPUT));
    EXPECT_FALSE(decoder.supportAction(QX_SERIALIZE_OUTPUT));
}

TEST(qxSerializeAdapterFilter, theOtherDirectionIsAnError)
{
    qxSerializeAdapterHex reader(streamOf("61"), QX_SERIALIZE_INPUT);
    reader.write('x');
    EXPECT_STREQ(reader.getError(), "The stream is open for reading");
    qxSerializeAdapterHex writer(streamOf(""), QX_SERIALIZE_OUTPUT);
    EXPECT_EQ(writer.read(), 0);
    EXPECT_STREQ(writer.getError(), "The stream is open for writing");
    qxSerializeAdapterHex closed(streamOf(""), QX_SERIALIZE_OUTPUT);
    EXPECT_TRUE(closed.close());
    closed.write('x');
    EXPECT_STREQ(closed.getError(), "The stream is closed");
}

TEST(qxSerializeAdapterFilter, takesOverErrorsOfTheOtherStream)
{
    const Stream small(new qxSerializeAdapterQueue(10));
    {
        qxSerializeAdapterHex writer(small, QX_SERIALIZE_OUTPUT);
        writeText(writer, "123456");
        EXPECT_FALSE(writer.close());
        EXPECT_STREQ(writer.getError(), "Queue Adapter written beyond its largest size");
    }
    small->setError("");
    MessageRecorder recorder;
    {
        qxSerializeAdapterBase64 writer(small, QX_SERIALIZE_OUTPUT);
        writer.write('x');
    }
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Queue Adapter written beyond its largest size"});
    EXPECT_EQ(small->getRef(), 1U);
}

TEST(qxSerializeAdapterFilter, aBlockOfMemoryKeepsWhatIsWritten)
{
    char block[10] = "";
    auto* const memory = new qxSerializeAdapterMemory(block, 10);
    qxSerializeAdapterHex writer(memory, QX_SERIALIZE_OUTPUT);
    writeText(writer, "JK");
    writer.flush();
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(memory->getCurrentPos(), 4U);
    EXPECT_STREQ(block, "4A4B");
}

TEST(qxSerializeAdapterFilter, needsAStream)
{
    EXPECT_EQ(fatalText([] { qxSerializeAdapterHex hex(nullptr, QX_SERIALIZE_INPUT); }),
              "qxSerializeAdapterFilter needs a stream");
}

TEST(qxSerializeAdapterFilter, theDestructorWritesTheEnd)
{
    const Stream text = streamOf("");
    {
        qxSerializeAdapterBase64 outer(new qxSerializeAdapterHex(text, QX_SERIALIZE_OUTPUT),
                                       QX_SERIALIZE_OUTPUT);
        outer.write('f');
    }
    EXPECT_EQ(readAll(*text), "5A673D3D");
}

} // namespace
