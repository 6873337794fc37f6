// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterreplace.h"

#include "qxtestfolder.h"
#include "qxtestsupport.h"

#include <filesystem>
#include <memory>

namespace
{

namespace fs = std::filesystem;

/// A folder with a file "a", and a replacement of it.
class qxSerializeAdapterReplaceTest : public testing::Test
{
protected:
    qxSerializeAdapterReplaceTest() { folder.write("a", "old"); }

    void open(const std::string& file = "a")
    {
        adapter = std::make_unique<qxSerializeAdapterReplace>(folder.name(file).c_str());
    }

    const TestFolder folder;
    std::unique_ptr<qxSerializeAdapterReplace> adapter;
};

TEST_F(qxSerializeAdapterReplaceTest, replacesOrCreatesTheFileWhenCommitted)
{
    for (const char* const file : {"a", "b"}) {
        SCOPED_TRACE(file);
        const std::string before = folder.read(file);
        const std::size_t files = folder.count() + (before == "(none)");
        open(file);
        adapter->write("new content", 11);
        adapter->flush();
        EXPECT_EQ(folder.read(file), before);
        EXPECT_TRUE(adapter->commit());
        EXPECT_EQ(folder.read(file), "new content");
        EXPECT_EQ(folder.count(), files);
        EXPECT_FALSE(adapter->hasError());
        EXPECT_EQ(adapter->getName(), folder.name(file).c_str());
        EXPECT_EQ(adapter->getURLBase(), ("file:" + folder.name("")).c_str());
    }
}

TEST_F(qxSerializeAdapterReplaceTest, withoutCommitTheFileStays)
{
    MessageRecorder recorder;
    open();
    adapter->write("new", 3);
    EXPECT_EQ(folder.count(), 2U);
    adapter.reset();
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(folder.count(), 1U);
    EXPECT_TRUE(recorder.messages().empty());
}

TEST_F(qxSerializeAdapterReplaceTest, anErrorPreventsTheCommit)
{
    open();
    adapter->write("new", 3);
    adapter->setError("bad data");
    EXPECT_FALSE(adapter->commit());
    EXPECT_STREQ(adapter->getError(), "bad data");
    EXPECT_EQ(folder.read("a"), "old");
    EXPECT_EQ(folder.count(), 1U);
}

TEST_F(qxSerializeAdapterReplaceTest, afterTheCommitNothingIsWritten)
{
    open();
    EXPECT_TRUE(adapter->commit());
    adapter->write("more", 4);
    adapter->flush();
    EXPECT_EQ(adapter->getError(), ("Could not flush to file '" + folder.name("a") + "'").c_str());
    EXPECT_FALSE(adapter->commit());
    EXPECT_EQ(folder.read("a"), "");
    adapter->reset(0); // drops what cannot be written, or the destructor would warn
}

TEST_F(qxSerializeAdapterReplaceTest, aTargetThatTurnsIntoAFolderIsAnError)
{
    open("b");
    fs::create_directory(folder.name("b"));
    EXPECT_FALSE(adapter->commit());
    EXPECT_EQ(adapter->getError(),
              ("Could not replace file '" + folder.name("b") + "' (Is a directory)").c_str());
    EXPECT_EQ(folder.count(), 2U);
}

TEST_F(qxSerializeAdapterReplaceTest, whatCannotBeReplaced)
{
    fs::create_directory(folder.name("sub"));
    const struct {
        const char* file;
        const char* reason;
        bool canReplace;
    } rows[] = {
        {"sub", "Is a directory", false},
        {"no/file", "No such file or directory", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        open(row.file);
        const std::string name = folder.name(row.file);
        EXPECT_EQ(adapter->getError(),
                  ("Could not open '" + name + "' for writing (" + row.reason + ")").c_str());
        EXPECT_FALSE(adapter->commit());
        EXPECT_EQ(qxSerializeAdapterReplace::canReplace(name.c_str()), row.canReplace);
    }
    const std::string withZero = folder.name("a") + std::string("\0b", 2); // not the file before the zero
    const qxString zero(withZero.data(), withZero.size());
    EXPECT_TRUE(qxSerializeAdapterReplace(zero).hasError());
    EXPECT_FALSE(qxSerializeAdapterReplace::canReplace(zero));
    EXPECT_TRUE(qxSerializeAdapterReplace::canReplace(folder.name("a").c_str()));
    EXPECT_FALSE(qxSerializeAdapterReplace::canReplace(fs::exists("/dev/null") ? "/dev/null" : "NUL"));
}

} // namespace
