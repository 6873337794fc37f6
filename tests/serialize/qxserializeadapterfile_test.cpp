// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "qxserializeadaptermemory.h"
#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <filesystem>
#include <memory>
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

/// A folder, and a file "a" in it that is open for reading.
class qxSerializeAdapterFileRead : public testing::Test
{
protected:
    qxSerializeAdapterFile& open(const std::string& content = "0123456789")
    {
        file = std::make_unique<qxSerializeAdapterFile>(folder.write("a", content).c_str());
        return *file;
    }

    const TestFolder folder;
    const std::string name = folder.name("a");
    std::unique_ptr<qxSerializeAdapterFile> file;
};

TEST_F(qxSerializeAdapterFileRead, readsByteByByteToTheEnd)
{
    open();
    EXPECT_EQ(file->length(), 10U);
    EXPECT_EQ(readAll(*file), "0123456789");
    EXPECT_EQ(fatalText([&] { file->read(); }), "qxQueue:pop out of data");
    EXPECT_FALSE(file->hasError());
}

TEST_F(qxSerializeAdapterFileRead, tellsWhatItIsAndRefusesToWrite)
{
    open("x");
    EXPECT_EQ(file->getFileName(), name.c_str());
    EXPECT_EQ(file->getName(), name.c_str());
    EXPECT_EQ(file->getURLBase(), ("file:" + folder.name("")).c_str());
    EXPECT_EQ(file->canSeek(), 1);
    EXPECT_EQ(file->supportAction(QX_SERIALIZE_INPUT), 1);
    EXPECT_EQ(file->supportAction(QX_SERIALIZE_OUTPUT), 0);
    EXPECT_EQ(file->supportAction(QX_SERIALIZE_APPEND), 0);

    const char* const text = "Can use QX_SERIALIZE_INPUT on a file opened for writing !\n";
    EXPECT_EQ(warningText([&] { file->write('b'); }), text);
    EXPECT_EQ(warningText([&] { file->write("bc", 2); }), text);
    EXPECT_EQ(readAll(*file), "x");
}

TEST_F(qxSerializeAdapterFileRead, readsBlocksOfEverySize)
{
    const std::string content = pattern(3 * QUEUE + 77);
    for (const bool chunks : {false, true}) {
        for (const unsigned int size :
             {7919U, 16383U, 16384U, 65536U, QUEUE - 1, QUEUE, QUEUE + 1, 2 * QUEUE + 5}) {
            SCOPED_TRACE(std::to_string(size) + (chunks ? " large" : " small"));
            open(content);
            file->readLargeChunks(chunks);
            std::string bytes(1, static_cast<char>(file->read())); // leaves a part in the queue
            std::string block;
            while (!(block = readBlock(*file, size)).empty()) {
                bytes += block;
                if (file->hasData()) bytes += static_cast<char>(file->read());
                ASSERT_EQ(file->length(), content.size() - bytes.size());
            }
            EXPECT_TRUE(bytes == content);
        }
    }
}

TEST_F(qxSerializeAdapterFileRead, aByteTakesALargeChunkIntoTheQueue)
{
    open(pattern(3 * QUEUE)).read();
    EXPECT_EQ(file->length(), 2999999U);

    // The queue is a copy: what it holds outlives the file's content.
    std::filesystem::resize_file(name, 0);
    EXPECT_TRUE(readBlock(*file, QUEUE - 1) == pattern(QUEUE).substr(1));
}

TEST_F(qxSerializeAdapterFileRead, seekModeReadsNoMoreThanAskedFor)
{
    EXPECT_EQ(open().readLargeChunks(), 1);
    file->setSeekMode(1);
    EXPECT_EQ(file->readLargeChunks(), 0);
    EXPECT_EQ(file->read(), '0');
    EXPECT_EQ(readBlock(*file, 2), "12");

    folder.write("a", "abcdefghij");
    EXPECT_EQ(file->read(), 'd');
    file->setSeekMode(0);
    EXPECT_EQ(file->readLargeChunks(), 1);
}

TEST_F(qxSerializeAdapterFileRead, aFileThatShrinksIsAnError)
{
    for (const bool takesAll : {false, true}) {
        open(pattern(2 * QUEUE)).read();
        std::filesystem::resize_file(name, QUEUE + 500);
        if (takesAll) file->pushBackAdapterData(); // gets less than the length said

        EXPECT_TRUE(readBlock(*file, 2 * QUEUE) == pattern(QUEUE + 500).substr(1));
        EXPECT_EQ(file->getError(), ("Could not read from file '" + name + "'").c_str());
        EXPECT_EQ(file->length(), 0U);
        EXPECT_EQ(file->hasData(), 0);
    }
}

TEST_F(qxSerializeAdapterFileRead, whatCannotBeOpened)
{
    const struct {
        std::string name;
        const char* reason; // null for no error, empty where systems differ
    } rows[] = {
        {folder.name("missing%s"), "No such file or directory"},
        {folder.name(), "Is a directory"},
        {folder.write("file", "x") + "/inside", ""},
        {std::string("a\0b", 3), "the name has a zero byte"},
        {std::string(40000, 'x'), ""},
        {"", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.substr(0, 100));
        qxSerializeAdapterFile none(qxString(row.name.data(), row.name.size()));
        const std::string start = "Could not open '" + row.name.substr(0, 32768) + "' for reading (";
        const qxString error = none.getError();
        const std::string text(error, error.length());
        if (row.reason && *row.reason == 0) {
            EXPECT_EQ(text.substr(0, start.size()), start);
        } else {
            EXPECT_EQ(text, row.reason ? start + row.reason + ")" : "");
        }
        EXPECT_EQ(none.length(), 0U);
        EXPECT_EQ(none.hasData(), 0);
        EXPECT_EQ(readBlock(none, 5), "");
        EXPECT_EQ(none.seek(0, QX_ORIGIN_START), 0U);
        EXPECT_EQ(none.reset(0), 0);
    }
    EXPECT_FALSE(qxSerializeAdapterFile("", QX_SERIALIZE_OUTPUT).hasError());
}

TEST_F(qxSerializeAdapterFileRead, theTextsPassThroughTheTranslator)
{
    /// Puts texts in brackets, and their sender before them.
    class Translator final : public qxMessageTranslatorInterface
    {
        qxString onTranslate(const qxString& sender, qxMessageLevel, const qxString& format) override
        {
            return "[" + sender + ":" + format + "]";
        }
    } translator;
    const std::string none = folder.name("no/ne");
    qxMessage::setMessageTranslator(&translator);
    qxSerializeAdapterFile reader(none.c_str());
    qxSerializeAdapterFile writer(none.c_str(), QX_SERIALIZE_OUTPUT);
    const std::string writerError = writer.getError().getString();
    writer.flush();
    qxSerializeAdapterMemory memory(nullptr, 0);
    memory.read();
    qxMessage::setMessageTranslator(nullptr);

    const std::string opening = "[QuaxoSDK:Could not open ']" + none;
    EXPECT_EQ(reader.getError(), (opening + "[QuaxoSDK:' for reading] (No such file or directory)").c_str());
    EXPECT_EQ(writerError, opening + "[QuaxoSDK:' for writing] (No such file or directory)");
    EXPECT_EQ(writer.getError(), ("[QuaxoSDK:Could not flush to file ']" + none + "'").c_str());
    EXPECT_STREQ(memory.getError(), "[QuaxoSDK:Memory Adapter read beyond end]");
}

TEST_F(qxSerializeAdapterFileRead, seeksFromEveryOrigin)
{
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
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.offset) + " from " + std::to_string(row.origin));
        readBlock(open(), 3);
        EXPECT_EQ(file->seek(row.offset, row.origin), row.result);
        EXPECT_EQ(file->length(), std::string(row.rest).size());
        EXPECT_EQ(readAll(*file), row.rest);
    }
    EXPECT_EQ(file->reset(8), 1);
    EXPECT_EQ(readAll(*file), "89");
    EXPECT_EQ(file->reset(11), 1); // beyond the end there is nothing, which is no failure
    EXPECT_EQ(file->length(), 0U);
}

TEST_F(qxSerializeAdapterFileRead, givingUpAPlaceDropsWhatWasGivenBack)
{
    open().pushBack('x');
    file->seek(5, QX_ORIGIN_START);
    EXPECT_EQ(file->read(), '5');
    file->pushBack('x');
    file->seek(-1, QX_ORIGIN_START); // fails and changes nothing
    EXPECT_EQ(file->read(), 'x');
    file->pushBack('x');
    file->flush(); // drops only that
    EXPECT_FALSE(file->hasError());
    EXPECT_EQ(file->length(), 4U);
    EXPECT_EQ(readAll(*file), "6789");
}

TEST_F(qxSerializeAdapterFileRead, beyondFourGigabytesSeekUsesTheLowHalfAndWarns)
{
    open();
    const qxUInt64 size = 0x140000000;
    std::filesystem::resize_file(name, size); // the system keeps only the start
    file = std::make_unique<qxSerializeAdapterFile>(name.c_str());
    EXPECT_EQ(file->length(), size);

    EXPECT_EQ(file->reset(0xFFFFFFFF), 1);
    EXPECT_EQ(file->length(), size - 0xFFFFFFFF);
    EXPECT_EQ(file->read(nullptr, 3), 3U); // over the border
    EXPECT_EQ(file->length(), size - 0x100000002);
    MessageRecorder recorder;
    EXPECT_EQ(file->seek(0, QX_ORIGIN_CURRENT), 0x100000002U);
    EXPECT_EQ(file->read(), '2');
    const std::vector<RecordedMessage> expected = {
        {"QuaxoSDK", QX_LEVEL_WARNING,
         "Position 4294967298 of file '" + name + "' is beyond 4 GiB, 2 is used"}};
    EXPECT_EQ(recorder.messages(), expected);
}

TEST_F(qxSerializeAdapterFileRead, aDerivedClassSeesEveryByte)
{
    InvertedStream<qxSerializeAdapterFile> inverted(folder.write("a", "\xFE\xFD\xFC").c_str());
    EXPECT_EQ(readAll(inverted), "\1\2\3");
}

TEST_F(qxSerializeAdapterFileRead, threadsShareTheLargeBuffers)
{
    const std::string content = pattern(30000);
    folder.write("a", content);
    onThreads(4, [&](unsigned int number) {
        for (int k = 0; k < 50; ++k) {
            qxSerializeAdapterFile first(name.c_str());
            qxSerializeAdapterFile second(name.c_str());
            first.read();
            EXPECT_TRUE(readAll(second) == content);
            if (number == 0) qxSerializeAdapterFile::cleanUpLargeFiles();
        }
    });
}

} // namespace
