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
    void write(const std::string& text) { writeText(*file, text); }
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

TEST_F(qxSerializeAdapterFileWriteTest, replacesTheContentOrAppendsToIt)
{
    const struct {
        qxSerializeAction action;
        unsigned char update;
        const char* before; // null for no file
        const char* kept;
    } rows[] = {
        {QX_SERIALIZE_OUTPUT, 0, "old", ""},    {QX_SERIALIZE_OUTPUT, 1, "old", "old"},
        {QX_SERIALIZE_APPEND, 0, "old", "old"}, {QX_SERIALIZE_APPEND, 1, "old", "old"},
        {QX_SERIALIZE_OUTPUT, 0, nullptr, ""},  {QX_SERIALIZE_OUTPUT, 1, nullptr, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.action << int{row.update});
        if (row.before)
            folder.write("a", row.before);
        else
            std::filesystem::remove(name);
        const std::string kept = row.kept;
        open(row.action, row.update);
        EXPECT_EQ(content(), kept);
        EXPECT_EQ(file->canSeek(), row.action == QX_SERIALIZE_APPEND || row.update);
        EXPECT_EQ(file->supportAction(QX_SERIALIZE_OUTPUT), 1);
        EXPECT_EQ(file->supportAction(QX_SERIALIZE_INPUT), 0);
        EXPECT_EQ(file->supportAction(QX_SERIALIZE_APPEND), 0);
        file->write('a');
        write("bc");
        EXPECT_EQ(file->length(), kept.size() + 3);
        EXPECT_EQ(closed(), kept + "abc");
    }
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
        write(std::string(row.first, '1'));
        write(std::string(row.second, '2'));
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
    write("abcdef");
    EXPECT_EQ(file->seek(7, QX_ORIGIN_START), 0U);
    EXPECT_EQ(file->reset(7), 0);
    EXPECT_EQ(file->seek(1, QX_ORIGIN_END), 0U);
    EXPECT_EQ(file->seek(-2, QX_ORIGIN_END), 4U);
    write("X");
    EXPECT_EQ(file->length(), 5U);
    EXPECT_EQ(file->seek(6, QX_ORIGIN_START), 6U);
    write("Y");
    EXPECT_EQ(closed(), "abcdXfY");
}

TEST_F(qxSerializeAdapterFileWriteTest, anUpdateOverwritesInTheMiddle)
{
    open(QX_SERIALIZE_OUTPUT, 1);
    EXPECT_EQ(file->seek(2, QX_ORIGIN_START), 2U);
    EXPECT_EQ(file->length(), 2U);
    write("AB");
    EXPECT_EQ(file->length(), 4U);
    file->flush(); // goes to the end
    write("C");
    EXPECT_EQ(file->seek(-1, QX_ORIGIN_CURRENT), 10U); // from the end as well
    write("c");
    EXPECT_EQ(file->seek(13, QX_ORIGIN_START), 13U); // beyond the end
    write("D");
    EXPECT_EQ(closed(), std::string("01AB456789c\0\0D", 14));
}

TEST_F(qxSerializeAdapterFileWriteTest, aLongOverwriteGoesOnBehindItself)
{
    std::string expected(3 * QUEUE, '.');
    folder.write("a", expected);
    open(QX_SERIALIZE_OUTPUT, 1);
    file->seek(100, QX_ORIGIN_START);
    for (unsigned int i = 0; i < 4; ++i) {
        const std::string half(QUEUE / 2, static_cast<char>('a' + i));
        write(half);
        expected.replace(100 + i * half.size(), half.size(), half);
    }
    EXPECT_TRUE(closed() == expected);
}

TEST_F(qxSerializeAdapterFileWriteTest, whatCannotBeOpenedKeepsNothing)
{
    qxSerializeAdapterFile directory(folder.name().c_str(), QX_SERIALIZE_OUTPUT, 1);
    EXPECT_EQ(directory.getError(),
              ("Could not open '" + folder.name() + "' for writing (Is a directory)").c_str());

    const std::string missing = folder.name("no/file");
    MessageRecorder recorder;
    {
        qxSerializeAdapterFile none(missing.c_str(), QX_SERIALIZE_OUTPUT);
        EXPECT_EQ(none.getError(),
                  ("Could not open '" + missing + "' for writing (No such file or directory)").c_str());
        for (int i = 0; i < 5; ++i) writeText(none, std::string(600000, 'x'));
        none.write('x');
        EXPECT_EQ(none.length(), 1000000U);
        EXPECT_EQ(none.getError(), ("Could not flush to file '" + missing + "'").c_str());
        EXPECT_EQ(none.reset(0), 0);
        EXPECT_EQ(none.length(), 0U);
    }
    EXPECT_TRUE(recorder.messages().empty()); // it goes quietly when there is nothing to lose
}

TEST_F(qxSerializeAdapterFileWriteTest, aFullDiskIsAnError)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs a device that is always full";
    const std::string error = "Could not flush to file '/dev/full' (No space left on device)";
    MessageRecorder recorder;
    {
        qxSerializeAdapterFile full("/dev/full", QX_SERIALIZE_OUTPUT);
        writeText(full, "abc");
        EXPECT_FALSE(full.hasError());
        full.flush();
        EXPECT_EQ(full.getError(), error.c_str());
        full.setError("");
        writeText(full, std::string(QUEUE, 'x'));
        EXPECT_EQ(full.getError(), error.c_str());
        EXPECT_EQ(full.length(), 1000000U);
        EXPECT_TRUE(recorder.messages().empty());
    }
    const std::vector<RecordedMessage> expected = {{"QuaxoSDK", QX_LEVEL_WARNING, error}};
    EXPECT_EQ(recorder.messages(), expected); // nobody could ask the adapter any more
}

TEST_F(qxSerializeAdapterFileWriteTest, aReceiverMayRaiseWhenTheFileIsClosed)
{
    struct Raising final : qxMessageReceiverInterface {
        Raising() { qxMessage::addMessageReceiver(this); }
        void onMessage(const qxString&, qxMessageLevel, const char*) override
        {
            qxExceptionThrows::qxThrowFatal("raised");
        }
    } receiver;
    const auto closeUnwritten = [&](bool unwinding) {
        qxSerializeAdapterFile none(folder.name("no/file").c_str(), QX_SERIALIZE_OUTPUT);
        none.write('x');
        if (unwinding) qxExceptionThrows::qxThrowFatal("first");
    };
    EXPECT_EQ(fatalText([&] { closeUnwritten(false); }), "raised");
    EXPECT_EQ(fatalText([&] { closeUnwritten(true); }), "first");
}

} // namespace
