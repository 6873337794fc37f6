// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <filesystem>
#include <memory>

namespace
{

constexpr unsigned int QUEUE = qxSerializeAdapterFile::QUEUE_SIZE;

/// A folder with a file "a" of ten bytes, and what opens and changes it.
class qxSerializeAdapterFileWriteTest : public testing::Test
{
protected:
    qxSerializeAdapterFileWriteTest() : name(folder.write("a", "0123456789")) {}

    void open(qxSerializeAction action, unsigned char update = 0)
    {
        file.reset();
        file = std::make_unique<qxSerializeAdapterFile>(name.c_str(), action, update);
    }
    void writeText(const std::string& text)
    {
        file->write(text.data(), static_cast<unsigned int>(text.size()));
    }
    std::string content() const { return folder.read("a"); }
    qxUInt64 sizeOnDisk() const { return std::filesystem::file_size(name); }

    /// Closes the file and returns what it then holds.
    std::string closed()
    {
        file.reset();
        return content();
    }

    const TestFolder folder;
    const std::string name;
    std::unique_ptr<qxSerializeAdapterFile> file;
};

TEST_F(qxSerializeAdapterFileWriteTest, replacesTheContent)
{
    open(QX_SERIALIZE_OUTPUT);
    EXPECT_EQ(content(), "");
    EXPECT_EQ(file->canSeek(), 0);
    EXPECT_EQ(file->supportAction(QX_SERIALIZE_OUTPUT), 1);
    EXPECT_EQ(file->supportAction(QX_SERIALIZE_INPUT), 0);
    file->write('a');
    writeText("bc");
    EXPECT_EQ(file->length(), 3U);
    EXPECT_EQ(closed(), "abc");
}

TEST_F(qxSerializeAdapterFileWriteTest, updatingAppends)
{
    const struct {
        qxSerializeAction action;
        unsigned char update;
    } rows[] = {{QX_SERIALIZE_OUTPUT, 1}, {QX_SERIALIZE_APPEND, 0}, {QX_SERIALIZE_APPEND, 1}};
    for (const auto& row : rows) {
        folder.write("a", "0123456789");
        open(row.action, row.update);
        EXPECT_EQ(file->canSeek(), 1);
        EXPECT_EQ(file->supportAction(QX_SERIALIZE_OUTPUT), 1);
        EXPECT_EQ(file->supportAction(QX_SERIALIZE_APPEND), 0);
        EXPECT_EQ(file->length(), 10U);
        writeText("ab");
        EXPECT_EQ(file->length(), 12U);
        EXPECT_EQ(closed(), "0123456789ab");
    }
}

TEST_F(qxSerializeAdapterFileWriteTest, updatingCreatesAMissingFile)
{
    std::filesystem::remove(name);
    open(QX_SERIALIZE_OUTPUT, 1);
    EXPECT_FALSE(file->hasError());
    writeText("new");
    EXPECT_EQ(closed(), "new");
}

TEST_F(qxSerializeAdapterFileWriteTest, singleBytesReachTheFileAMillionAtATime)
{
    open(QX_SERIALIZE_OUTPUT);
    for (unsigned int i = 0; i < QUEUE; ++i) file->write(static_cast<unsigned char>(i));
    EXPECT_EQ(sizeOnDisk(), 0U);
    file->write('x');
    EXPECT_EQ(sizeOnDisk(), 1000000U);
    EXPECT_EQ(file->length(), 1000001U);
    file->flush();
    EXPECT_EQ(sizeOnDisk(), 1000001U);
}

TEST_F(qxSerializeAdapterFileWriteTest, blocksReachTheFileWhenTheQueueIsFull)
{
    const struct {
        unsigned int first;
        unsigned int second;
        unsigned int onDisk; // after the second
    } rows[] = {
        {10, QUEUE - 10, 0}, {10, QUEUE - 9, 10},         {QUEUE, 1, QUEUE},
        {QUEUE, 0, 0},       {10, QUEUE + 1, QUEUE + 11}, // too much for the queue
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.first) + " " + std::to_string(row.second));
        open(QX_SERIALIZE_OUTPUT);
        writeText(std::string(row.first, '1'));
        writeText(std::string(row.second, '2'));
        EXPECT_EQ(sizeOnDisk(), row.onDisk);
        EXPECT_EQ(file->length(), row.first + row.second);
        EXPECT_TRUE(closed() == std::string(row.first, '1') + std::string(row.second, '2'));
    }
}

TEST_F(qxSerializeAdapterFileWriteTest, readingRaises)
{
    open(QX_SERIALIZE_OUTPUT, 1);
    const char* const text = "Can use QX_SERIALIZE_OUTPUT on a file opened for reading !\n";
    unsigned char buffer[4];
    EXPECT_EQ(warningText([&] { file->read(); }), text);
    EXPECT_EQ(warningText([&] { file->read(buffer, 4); }), text);
    EXPECT_EQ(warningText([&] { file->hasData(11); }), text);
    file->pushBack('x'); // bytes given back are there all the same
    EXPECT_EQ(file->read(), 'x');
}

TEST_F(qxSerializeAdapterFileWriteTest, withoutUpdateASeekStaysInsideTheFile)
{
    open(QX_SERIALIZE_OUTPUT);
    writeText("abcdef");
    EXPECT_EQ(file->seek(7, QX_ORIGIN_START), 0U);
    EXPECT_EQ(file->reset(7), 0);
    EXPECT_EQ(file->seek(1, QX_ORIGIN_END), 0U);
    EXPECT_EQ(file->seek(-2, QX_ORIGIN_END), 4U);
    writeText("X");
    EXPECT_EQ(file->length(), 5U);
    EXPECT_EQ(file->seek(6, QX_ORIGIN_START), 6U);
    writeText("Y");
    EXPECT_EQ(closed(), "abcdXfY");
}

TEST_F(qxSerializeAdapterFileWriteTest, anUpdateOverwritesInTheMiddle)
{
    open(QX_SERIALIZE_OUTPUT, 1);
    EXPECT_EQ(file->seek(2, QX_ORIGIN_START), 2U);
    EXPECT_EQ(file->length(), 2U);
    writeText("AB");
    EXPECT_EQ(file->length(), 4U);
    file->flush(); // goes to the end
    writeText("C");
    EXPECT_EQ(file->seek(13, QX_ORIGIN_START), 13U); // beyond the end
    writeText("D");
    EXPECT_EQ(closed(), std::string("01AB456789C\0\0D", 14));
}

TEST_F(qxSerializeAdapterFileWriteTest, aLongOverwriteGoesOnBehindItself)
{
    folder.write("a", std::string(3 * QUEUE, '.'));
    open(QX_SERIALIZE_OUTPUT, 1);
    file->seek(100, QX_ORIGIN_START);
    for (int i = 0; i < 4; ++i) writeText(std::string(QUEUE / 2, static_cast<char>('a' + i)));
    std::string expected(3 * QUEUE, '.');
    for (int i = 0; i < 4; ++i)
        expected.replace(100 + static_cast<std::size_t>(i) * (QUEUE / 2), QUEUE / 2,
                         std::string(QUEUE / 2, static_cast<char>('a' + i)));
    EXPECT_TRUE(closed() == expected);
}

TEST_F(qxSerializeAdapterFileWriteTest, theCurrentPositionWhenWritingIsTheEnd)
{
    open(QX_SERIALIZE_OUTPUT, 1);
    file->seek(3, QX_ORIGIN_START);
    writeText("x");
    EXPECT_EQ(file->seek(-1, QX_ORIGIN_CURRENT), 9U);
    writeText("y");
    EXPECT_EQ(closed(), "012x45678y");
}

TEST_F(qxSerializeAdapterFileWriteTest, whatCannotBeOpenedKeepsNothing)
{
    qxSerializeAdapterFile none(folder.name("no/file").c_str(), QX_SERIALIZE_OUTPUT);
    EXPECT_EQ(
        none.getError(),
        ("Could not open '" + folder.name("no/file") + "' for writing (No such file or directory)").c_str());
    const std::string block(600000, 'x');
    MessageRecorder recorder;
    for (int i = 0; i < 5; ++i) none.write(block.data(), 600000);
    none.write('x');
    EXPECT_EQ(none.length(), 1000000U);
    EXPECT_EQ(none.getError(), ("Could not flush to file '" + folder.name("no/file") + "'").c_str());
    EXPECT_EQ(none.reset(0), 0);
    EXPECT_EQ(none.length(), 0U);
    EXPECT_TRUE(recorder.messages().empty());
}

TEST_F(qxSerializeAdapterFileWriteTest, aDirectoryCannotBeWritten)
{
    qxSerializeAdapterFile directory(folder.path().c_str(), QX_SERIALIZE_OUTPUT, 1);
    EXPECT_EQ(directory.getError(),
              ("Could not open '" + folder.path().string() + "' for writing (Is a directory)").c_str());
}

TEST_F(qxSerializeAdapterFileWriteTest, aFullDiskIsAnError)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs a device that is always full";
    const std::string error = "Could not flush to file '/dev/full' (No space left on device)";
    MessageRecorder recorder;
    {
        qxSerializeAdapterFile full("/dev/full", QX_SERIALIZE_OUTPUT);
        full.write("abc", 3);
        EXPECT_FALSE(full.hasError());
        full.flush();
        EXPECT_EQ(full.getError(), error.c_str());
        const std::string block(QUEUE, 'x');
        full.setError("");
        full.write(block.data(), QUEUE);
        EXPECT_EQ(full.getError(), error.c_str());
        EXPECT_EQ(full.length(), 1000000U);
        EXPECT_TRUE(recorder.messages().empty());
    }
    const std::vector<RecordedMessage> expected = {{"QuaxoSDK", QX_LEVEL_WARNING, error}};
    EXPECT_EQ(recorder.messages(), expected); // nobody could ask the adapter any more
}

/// Raises at every message.
class RaisingReceiver final : public qxMessageReceiverInterface
{
public:
    RaisingReceiver() { qxMessage::addMessageReceiver(this); }
    void onMessage(const qxString&, qxMessageLevel, const char*) override { throw std::string("raised"); }
};

TEST_F(qxSerializeAdapterFileWriteTest, aReceiverMayRaiseWhenTheFileIsClosed)
{
    RaisingReceiver receiver;
    const auto closeUnwritten = [&](bool unwinding) {
        qxSerializeAdapterFile none(folder.name("no/file").c_str(), QX_SERIALIZE_OUTPUT);
        none.write('x');
        if (unwinding) throw std::string("first");
    };
    const auto caught = [&](bool unwinding) {
        try {
            closeUnwritten(unwinding);
        } catch (const std::string& text) {
            return text;
        }
        return std::string();
    };
    EXPECT_EQ(caught(false), "raised");
    EXPECT_EQ(caught(true), "first");
}

TEST_F(qxSerializeAdapterFileWriteTest, anEmptyFileThatCouldNotBeOpenedGoesQuietly)
{
    MessageRecorder recorder;
    {
        const qxSerializeAdapterFile none(folder.name("no/file").c_str(), QX_SERIALIZE_OUTPUT);
    }
    EXPECT_TRUE(recorder.messages().empty());
}

} // namespace
