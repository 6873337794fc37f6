// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include "qxtestfolder.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

// A fresh folder, one open file in it, and the error number of the last call.
class qxPlatformFileTest : public testing::Test
{
protected:
    ~qxPlatformFileTest() override { close(); }

    std::string path(const char* name) const { return folder.name(name); }

    bool open(const std::string& name, qxPlatformFileMode mode)
    {
        close();
        file = qxPlatformFileOpen(name.c_str(), mode, error);
        return file != nullptr;
    }

    void close()
    {
        int ignored = 0;
        EXPECT_TRUE(qxPlatformFileClose(file, ignored));
        file = nullptr;
    }

    std::size_t write(const std::string& text)
    {
        return qxPlatformFileWrite(file, text.data(), text.size(), error);
    }

    std::string read(std::size_t count)
    {
        std::string text(count, '?');
        text.resize(qxPlatformFileRead(file, text.data(), count, error));
        return text;
    }

    // Replaces `target` by a new file that holds "new".
    bool replace(const std::string& target)
    {
        std::string temporary;
        close();
        file = qxPlatformFileTemporary(target.c_str(), temporary, error);
        if (!file) return false;
        write("new");
        qxPlatformFileSync(file, error);
        close();
        return qxPlatformFileReplace(temporary.c_str(), target.c_str(), error);
    }

    struct stat statusOf(const char* name) const
    {
        struct stat status = {};
        stat(path(name).c_str(), &status);
        return status;
    }

    const TestFolder folder;
    qxPlatformFile* file = nullptr;
    int error = -1;
};

TEST_F(qxPlatformFileTest, modesDoWhatTheyPromise)
{
    const struct {
        qxPlatformFileMode mode;
        int missing;         // error for a file that does not exist
        const char* content; // what is left of "old text" after writing "new"
        bool canRead;
    } rows[] = {
        {QX_PLATFORM_FILE_READ, ENOENT, "old text", true},
        {QX_PLATFORM_FILE_WRITE, 0, "new", false},
        {QX_PLATFORM_FILE_UPDATE, ENOENT, "new text", true},
        {QX_PLATFORM_FILE_CREATE, 0, "new", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mode);
        EXPECT_EQ(open(path("missing"), row.mode), row.missing == 0);
        EXPECT_EQ(error, row.missing);
        fs::remove(path("missing"));
        EXPECT_FALSE(open(folder.path(), row.mode));
        EXPECT_EQ(error, EISDIR);

        folder.write("file", "old text");
        ASSERT_TRUE(open(path("file"), row.mode));
        EXPECT_EQ(write("new"), row.mode == QX_PLATFORM_FILE_READ ? 0U : 3U);
        EXPECT_EQ(error, row.mode == QX_PLATFORM_FILE_READ ? EBADF : 0);
        EXPECT_EQ(folder.read("file"), row.content); // nothing is buffered
        read(1);
        EXPECT_EQ(error, row.canRead ? 0 : EBADF);
        EXPECT_TRUE(qxPlatformFileFlush(file, error) && qxPlatformFileSync(file, error));
    }
}

TEST_F(qxPlatformFileTest, takesNamesInUtf8AndRemovesFiles)
{
    ASSERT_TRUE(open(path("Grüße 世界"), QX_PLATFORM_FILE_WRITE));
    EXPECT_TRUE(fs::exists(folder.path() / u8"Grüße 世界"));
    EXPECT_TRUE(qxPlatformFileRemove(path("Grüße 世界").c_str(), error));
    EXPECT_EQ(error, 0);
    EXPECT_FALSE(qxPlatformFileRemove(path("Grüße 世界").c_str(), error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_FALSE(qxPlatformFileRemove(folder.path().c_str(), error));
    EXPECT_EQ(error, EISDIR);
}

TEST_F(qxPlatformFileTest, positionsAndSizesHave64Bits)
{
    constexpr unsigned long long FAR = (5ULL << 32) + 7;
    ASSERT_TRUE(open(path("sparse"), QX_PLATFORM_FILE_CREATE));
    ASSERT_TRUE(qxPlatformFileSeek(file, FAR, error));
    ASSERT_EQ(write("end"), 3U);

    EXPECT_EQ(qxPlatformFilePosition(file, error), FAR + 3);
    EXPECT_EQ(qxPlatformFileSize(file, error), FAR + 3);
    ASSERT_TRUE(qxPlatformFileSeek(file, FAR + 1, error));
    EXPECT_EQ(read(9), "nd");
    EXPECT_EQ(error, 0); // the end is no failure
    EXPECT_TRUE(qxPlatformFileSeek(file, FAR * 2, error));
    EXPECT_EQ(read(1), "");
    EXPECT_FALSE(qxPlatformFileSeek(file, 1ULL << 63, error));
    EXPECT_EQ(error, EINVAL);
}

TEST_F(qxPlatformFileTest, aFullDiskCutsTheWriteShort)
{
    if (!open("/dev/full", QX_PLATFORM_FILE_WRITE)) GTEST_SKIP() << "needs /dev/full";

    EXPECT_EQ(write("lost"), 0U);
    EXPECT_EQ(error, ENOSPC);
}

TEST_F(qxPlatformFileTest, signalsDoNotCutAReadShort)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const pid_t reader = getpid();
    const pid_t writer = fork();
    if (writer == 0) {
        open(path("pipe"), QX_PLATFORM_FILE_WRITE);
        for (int i = 0; i < 5; ++i) {
            kill(reader, SIGUSR1);
            usleep(2000);
            write("x");
        }
        _exit(0);
    }
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &before); // without SA_RESTART
    ASSERT_TRUE(open(path("pipe"), QX_PLATFORM_FILE_READ));

    EXPECT_EQ(read(5), "xxxxx");
    EXPECT_EQ(error, 0);
    EXPECT_EQ(qxPlatformFileSize(file, error), 0U);
    EXPECT_TRUE(qxPlatformFileSync(file, error)); // no disk to wait for
    waitpid(writer, nullptr, 0);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(qxPlatformFileTest, replacesAFileAndKeepsItsPermissions)
{
    for (const unsigned int mode : {0600U, 0666U, 0755U, 04755U}) {
        SCOPED_TRACE(mode);
        folder.write("file", "the old text");
        ASSERT_EQ(chmod(path("file").c_str(), mode), 0);
        std::ifstream reader(path("file"));

        EXPECT_TRUE(replace(path("file")));
        EXPECT_EQ(error, 0);
        EXPECT_EQ(folder.read("file"), "new");
        EXPECT_EQ(statusOf("file").st_mode & 07777, mode);
        EXPECT_EQ(folder.count(), 1U);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}),
                  "the old text"); // for who has it open
    }
}

TEST_F(qxPlatformFileTest, aNewFileHasTheUsualPermissions)
{
    const mode_t mask = umask(027);
    EXPECT_TRUE(replace(path("file")));
    umask(mask);

    EXPECT_EQ(folder.read("file"), "new");
    EXPECT_EQ(statusOf("file").st_mode & 07777, 0640U);
}

TEST_F(qxPlatformFileTest, keepsTheOwnerWhereItMay)
{
    const std::string name = folder.write("file", "old");
    if (chown(name.c_str(), 1234, 5678) != 0) GTEST_SKIP() << "needs the right to give files away";
    EXPECT_TRUE(replace(name));

    EXPECT_EQ(statusOf("file").st_uid, 1234U);
    EXPECT_EQ(statusOf("file").st_gid, 5678U);
}

TEST_F(qxPlatformFileTest, replacesWhatALinkLeadsTo)
{
    const struct {
        const char* link;   // text of the link "link"
        const char* target; // the file it leads to, which may not exist yet
        bool exists;
    } rows[] = {
        {"file", "file", true},
        {"second", "folder/deep", true}, // over another link
        {"folder/fresh", "folder/fresh", false},
    };
    fs::create_directory(path("folder"));
    fs::create_symlink("folder/deep", path("second"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.link);
        fs::remove(path("link"));
        fs::create_symlink(row.link, path("link"));
        if (row.exists) folder.write(row.target, "old");

        EXPECT_TRUE(replace(path("link")));
        EXPECT_EQ(fs::read_symlink(path("link")), row.link);
        EXPECT_FALSE(fs::is_symlink(path(row.target)));
        EXPECT_EQ(folder.read(row.target), "new");
    }
}

TEST_F(qxPlatformFileTest, replacesOnlyPlainFiles)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", path("null"));
    fs::create_symlink("loop", path("loop"));
    const struct {
        std::string name;
        bool replaceable;
        int replaceableError;
        int temporaryError;
    } rows[] = {
        {folder.write("file", "old"), true, 0, 0},
        {path("new"), true, 0, 0},
        {folder.path(), false, 0, EISDIR},
        {path("pipe"), false, 0, EOPNOTSUPP},
        {path("null"), false, 0, EOPNOTSUPP},
        {path("loop"), false, ELOOP, ELOOP},
        {path("file/below"), false, ENOTDIR, ENOTDIR},
        {"", false, ENOENT, ENOENT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(qxPlatformFileIsReplaceable(row.name.c_str(), error), row.replaceable);
        EXPECT_EQ(error, row.replaceableError);
        EXPECT_EQ(replace(row.name), row.replaceable);
        EXPECT_EQ(error, row.temporaryError);
    }
}

TEST_F(qxPlatformFileTest, aFailedReplaceLeavesBothFiles)
{
    const std::string temporary = folder.write("temporary", "new");
    EXPECT_FALSE(qxPlatformFileReplace(temporary.c_str(), path("no/file").c_str(), error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_FALSE(qxPlatformFileReplace(path("missing").c_str(), temporary.c_str(), error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_EQ(folder.read("temporary"), "new");
}

TEST_F(qxPlatformFileTest, aWriteProtectedFileIsNotReplaced)
{
    constexpr uid_t SOMEBODY = 65534;
    chmod(folder.write("file", "old").c_str(), 0444);
    const bool isAdministrator = geteuid() == 0; // who may write everything
    if (isAdministrator) {
        ASSERT_EQ(chown(folder.path().c_str(), SOMEBODY, SOMEBODY), 0);
        ASSERT_EQ(seteuid(SOMEBODY), 0);
    }
    const bool isReplaced = replace(path("file"));
    if (isAdministrator) {
        ASSERT_EQ(seteuid(0), 0);
    }

    EXPECT_FALSE(isReplaced);
    EXPECT_EQ(error, EACCES);
    EXPECT_EQ(folder.read("file"), "old");
    EXPECT_EQ(folder.count(), 1U);
}

TEST_F(qxPlatformFileTest, temporaryFilesHaveNamesOfTheirOwn)
{
    std::string names[2];
    for (std::string& name : names) {
        close();
        file = qxPlatformFileTemporary(path("file").c_str(), name, error);
        ASSERT_TRUE(file);
        EXPECT_EQ(fs::path(name).parent_path(), folder.path());
    }
    EXPECT_NE(names[0], names[1]);
    EXPECT_EQ(folder.count(), 2U);
}

} // namespace
