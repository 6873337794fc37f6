// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <filesystem>
#include <thread>
#include <vector>

namespace
{

constexpr unsigned int QUEUE = qxSerializeAdapterFile::QUEUE_SIZE;

/// `count` bytes that show when one is missing or doubled.
std::string pattern(std::size_t count)
{
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 31 % 251);
    return bytes;
}

TEST(qxSerializeAdapterFileRead, readsByteByByteToTheEnd)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "0123456789").c_str());
    EXPECT_EQ(file.length(), 10U);
    EXPECT_EQ(readAll(file), "0123456789");
    EXPECT_EQ(fatalText([&] { file.read(); }), "qxQueue:pop out of data");
    EXPECT_FALSE(file.hasError());
}

TEST(qxSerializeAdapterFileRead, tellsWhatItIs)
{
    const TestFolder folder;
    const std::string name = folder.write("sub/a.xml", "x");
    qxSerializeAdapterFile file(name.c_str());
    EXPECT_EQ(file.getFileName(), name.c_str());
    EXPECT_EQ(file.getName(), name.c_str());
    EXPECT_EQ(file.getURLBase(), ("file:" + folder.name("sub/")).c_str());
    EXPECT_EQ(file.canSeek(), 1);
    EXPECT_EQ(file.supportAction(QX_SERIALIZE_INPUT), 1);
    EXPECT_EQ(file.supportAction(QX_SERIALIZE_OUTPUT), 0);
    EXPECT_EQ(file.supportAction(QX_SERIALIZE_APPEND), 0);
}

TEST(qxSerializeAdapterFileRead, readsBlocksOfEverySize)
{
    const TestFolder folder;
    const std::string content = pattern(3 * QUEUE + 77);
    const std::string name = folder.write("a", content);
    for (const bool chunks : {false, true}) {
        for (const unsigned int size :
             {7919U, 16383U, 16384U, 65536U, QUEUE - 1, QUEUE, QUEUE + 1, 2 * QUEUE + 5}) {
            SCOPED_TRACE(std::to_string(size) + (chunks ? " large" : " small"));
            qxSerializeAdapterFile file(name.c_str());
            file.readLargeChunks(chunks);
            std::string bytes(1, static_cast<char>(file.read())); // leaves a part in the queue
            std::string block;
            while (!(block = readBlock(file, size)).empty()) {
                bytes += block;
                if (file.hasData()) bytes += static_cast<char>(file.read());
                ASSERT_EQ(file.length(), content.size() - bytes.size());
            }
            EXPECT_TRUE(bytes == content);
        }
    }
}

TEST(qxSerializeAdapterFileRead, aByteTakesALargeChunkIntoTheQueue)
{
    const TestFolder folder;
    const std::string name = folder.write("a", pattern(3 * QUEUE));
    qxSerializeAdapterFile file(name.c_str());
    file.read();
    EXPECT_EQ(file.length(), 2999999U);

    // The queue is a copy: what it holds outlives the file's content.
    std::filesystem::resize_file(name, 0);
    std::string rest = readBlock(file, QUEUE - 1);
    EXPECT_TRUE(rest == pattern(QUEUE).substr(1));
}

TEST(qxSerializeAdapterFileRead, seekModeReadsNoMoreThanAskedFor)
{
    const TestFolder folder;
    const std::string name = folder.write("a", "0123456789");
    qxSerializeAdapterFile file(name.c_str());
    EXPECT_EQ(file.readLargeChunks(), 1);
    file.setSeekMode(1);
    EXPECT_EQ(file.readLargeChunks(), 0);
    EXPECT_EQ(file.read(), '0');
    EXPECT_EQ(readBlock(file, 2), "12");

    folder.write("a", "abcdefghij");
    EXPECT_EQ(file.read(), 'd');
    file.setSeekMode(0);
    EXPECT_EQ(file.readLargeChunks(), 1);
}

TEST(qxSerializeAdapterFileRead, aFileThatShrinksIsAnError)
{
    const TestFolder folder;
    const std::string name = folder.write("a", pattern(2 * QUEUE));
    qxSerializeAdapterFile file(name.c_str());
    file.read();
    std::filesystem::resize_file(name, QUEUE + 500);

    std::string rest = readBlock(file, 2 * QUEUE);
    EXPECT_TRUE(rest == pattern(QUEUE + 500).substr(1));
    EXPECT_EQ(file.getError(), ("Could not read from file '" + name + "'").c_str());
    EXPECT_EQ(file.length(), 0U);
    EXPECT_EQ(file.hasData(), 0);
}

TEST(qxSerializeAdapterFileRead, whatCannotBeOpened)
{
    const TestFolder folder;
    const struct {
        std::string name;
        const char* reason;
    } rows[] = {
        {folder.name("missing%s"), "No such file or directory"},
        {folder.path().string(), "Is a directory"},
        {folder.write("file", "x") + "/inside", "Not a directory"},
        {std::string("a\0b", 3), "the name has a zero byte"},
        {std::string(40000, 'x'), "File name too long"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.substr(0, 100));
        qxSerializeAdapterFile file(qxString(row.name.data(), row.name.size()));
        const std::string error =
            "Could not open '" + row.name.substr(0, 32768) + "' for reading (" + row.reason + ")";
        EXPECT_EQ(std::string(file.getError(), file.getError().length()), error);
        EXPECT_EQ(file.length(), 0U);
        EXPECT_EQ(file.hasData(), 0);
        EXPECT_EQ(readBlock(file, 5), "");
        EXPECT_EQ(file.seek(0, QX_ORIGIN_START), 0U);
        EXPECT_EQ(file.reset(0), 0);
    }
}

TEST(qxSerializeAdapterFileRead, anEmptyNameOpensNothing)
{
    for (const qxSerializeAction action : {QX_SERIALIZE_INPUT, QX_SERIALIZE_OUTPUT}) {
        qxSerializeAdapterFile file("", action);
        EXPECT_FALSE(file.hasError());
        EXPECT_EQ(file.length(), 0U);
        EXPECT_EQ(file.seek(0, QX_ORIGIN_START), 0U);
    }
}

TEST(qxSerializeAdapterFileRead, theTextsPassThroughTheTranslator)
{
    /// Puts texts in brackets, and their sender before them.
    class Translator final : public qxMessageTranslatorInterface
    {
        qxString onTranslate(const qxString& sender, qxMessageLevel, const qxString& format) override
        {
            return "[" + sender + ":" + format + "]";
        }
    } translator;
    const TestFolder folder;
    qxMessage::setMessageTranslator(&translator);
    qxSerializeAdapterFile file(folder.name("none").c_str());
    qxSerializeAdapterFile writer(folder.name("no/ne").c_str(), QX_SERIALIZE_OUTPUT);
    qxMessage::setMessageTranslator(nullptr);

    EXPECT_EQ(file.getError(), ("[QuaxoSDK:Could not open ']" + folder.name("none") +
                                "[QuaxoSDK:' for reading] (No such file or directory)")
                                   .c_str());
    EXPECT_EQ(writer.getError(), ("[QuaxoSDK:Could not open ']" + folder.name("no/ne") +
                                  "[QuaxoSDK:' for writing] (No such file or directory)")
                                     .c_str());
}

TEST(qxSerializeAdapterFileRead, writingRaises)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "x").c_str());
    const char* const text = "Can use QX_SERIALIZE_INPUT on a file opened for writing !\n";
    EXPECT_EQ(warningText([&] { file.write('b'); }), text);
    EXPECT_EQ(warningText([&] { file.write("bc", 2); }), text);
    EXPECT_EQ(readAll(file), "x");
}

TEST(qxSerializeAdapterFileRead, seeksFromEveryOrigin)
{
    const TestFolder folder;
    const struct {
        qxInt64 offset;
        qxOriginPos origin;
        qxUInt64 result; // from position 3 of 10 bytes
        const char* rest;
    } rows[] = {
        {4, 0, 4, "456789"},   {0, 0, 0, "0123456789"}, {2, 1, 5, "56789"},    {-3, 1, 0, "0123456789"},
        {0, 1, 3, "3456789"},  {-1, 2, 9, "9"},         {0, 2, 10, ""},        {5, 2, 15, ""},
        {2, 7, 5, "56789"}, // any other origin is the current position
        {-1, 0, 0, "3456789"}, {-11, 2, 0, "3456789"},  {-4, 1, 0, "3456789"},
    };
    const std::string name = folder.write("a", "0123456789");
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.offset) + " from " + std::to_string(row.origin));
        qxSerializeAdapterFile file(name.c_str());
        readBlock(file, 3);
        EXPECT_EQ(file.seek(row.offset, row.origin), row.result);
        EXPECT_EQ(file.length(), std::string(row.rest).size());
        EXPECT_EQ(readAll(file), row.rest);
    }
}

TEST(qxSerializeAdapterFileRead, resetGoesToAPosition)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "0123456789").c_str());
    readBlock(file, 3);
    EXPECT_EQ(file.reset(8), 1);
    EXPECT_EQ(readAll(file), "89");
    EXPECT_EQ(file.reset(11), 1); // beyond the end there is nothing, which is no failure
    EXPECT_EQ(file.length(), 0U);
    EXPECT_EQ(file.reset(0), 1);
    EXPECT_EQ(file.length(), 10U);
}

TEST(qxSerializeAdapterFileRead, givingUpAPlaceDropsWhatWasGivenBack)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "0123456789").c_str());
    file.pushBack('x');
    file.seek(5, QX_ORIGIN_START);
    EXPECT_EQ(file.read(), '5');
    file.pushBack('x');
    file.seek(-1, QX_ORIGIN_START); // fails and changes nothing
    EXPECT_EQ(file.read(), 'x');
    EXPECT_EQ(file.read(), '6');
}

TEST(qxSerializeAdapterFileRead, flushDropsOnlyWhatWasGivenBack)
{
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("a", "0123456789").c_str());
    file.read();
    file.pushBack('x');
    file.flush();
    EXPECT_FALSE(file.hasError());
    EXPECT_EQ(file.length(), 9U);
    EXPECT_EQ(readAll(file), "123456789");
}

TEST(qxSerializeAdapterFileRead, filesBeyondFourGigabytes)
{
    const TestFolder folder;
    const std::string name = folder.write("a", "0123456789");
    const qxUInt64 size = 0x140000000;
    std::filesystem::resize_file(name, size); // the system keeps only the start
    qxSerializeAdapterFile file(name.c_str());
    EXPECT_EQ(file.length(), size);

    EXPECT_EQ(file.reset(0xFFFFFFFF), 1);
    EXPECT_EQ(file.length(), size - 0xFFFFFFFF);
    EXPECT_EQ(file.read(nullptr, 3), 3U); // over the border
    EXPECT_EQ(file.length(), size - 0x100000002);
    EXPECT_EQ(file.seek(0, QX_ORIGIN_CURRENT), 0x100000002U); // uses the low half only
    EXPECT_EQ(file.read(), '2');
}

TEST(qxSerializeAdapterFileRead, warnsThatSeekUsesTheLowHalf)
{
    const TestFolder folder;
    const std::string name = folder.write("a", "0123456789");
    qxSerializeAdapterFile file(name.c_str());
    MessageRecorder recorder;
    EXPECT_EQ(file.seek(0x100000004, QX_ORIGIN_START), 0x100000004U);
    EXPECT_EQ(file.read(), '4');
    const std::vector<RecordedMessage> expected = {
        {"QuaxoSDK", QX_LEVEL_WARNING,
         "Position 4294967300 of file '" + name + "' is beyond 4 GiB, 4 is used"}};
    EXPECT_EQ(recorder.messages(), expected);
}

/// Decodes what it reads: the base must not read past it.
class InvertedFile final : public qxSerializeAdapterFile
{
public:
    using qxSerializeAdapterFile::qxSerializeAdapterFile;

protected:
    using qxSerializeAdapterFile::read_imp;
    unsigned char read_imp() override
    {
        return static_cast<unsigned char>(~qxSerializeAdapterFile::read_imp());
    }
};

TEST(qxSerializeAdapterFileRead, aDerivedClassSeesEveryByte)
{
    const TestFolder folder;
    InvertedFile file(folder.write("a", "\xFE\xFD\xFC").c_str());
    EXPECT_EQ(readAll(file), "\1\2\3");
}

TEST(qxSerializeAdapterFileRead, threadsShareTheLargeBuffers)
{
    const TestFolder folder;
    const std::string name = folder.write("a", pattern(30000));
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int k = 0; k < 50; ++k) {
                qxSerializeAdapterFile first(name.c_str());
                qxSerializeAdapterFile second(name.c_str());
                first.read();
                if (readAll(second) != pattern(30000)) ++wrong;
                if (i == 0) qxSerializeAdapterFile::cleanUpLargeFiles();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
