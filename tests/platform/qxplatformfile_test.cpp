// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

// A fresh folder, the files in it, and the error number of the last call.
class qxPlatformFileTest : public testing::Test
{
protected:
    qxPlatformFileTest()
    {
        std::string pattern = (fs::temp_directory_path() / "qxplatformfile-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
    }

    ~qxPlatformFileTest() override
    {
        close();
        fs::remove_all(m_folder);
    }

    std::string path(const char* name) const { return (m_folder / name).string(); }

    bool open(const std::string& name, qxPlatformFileMode mode)
    {
        close();
        m_file = qxPlatformFileOpen(name.c_str(), mode, m_error);
        return m_file != nullptr;
    }

    void close()
    {
        int error = 0;
        EXPECT_TRUE(qxPlatformFileClose(m_file, error));
        m_file = nullptr;
    }

    std::size_t write(const std::string& text)
    {
        return qxPlatformFileWrite(m_file, text.data(), text.size(), m_error);
    }

    std::string read(std::size_t count)
    {
        std::string text(count, '?');
        text.resize(qxPlatformFileRead(m_file, text.data(), count, m_error));
        return text;
    }

    static void put(const std::string& name, const std::string& text) { std::ofstream(name) << text; }

    static std::string contentOf(const std::string& name)
    {
        std::ifstream stream(name);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // Replaces `target` by a new file that holds `text`.
    bool replace(const std::string& target, const std::string& text)
    {
        std::string temporary;
        close();
        m_file = qxPlatformFileTemporary(target.c_str(), temporary, m_error);
        if (!m_file) return false;
        write(text);
        qxPlatformFileSync(m_file, m_error);
        close();
        return qxPlatformFileReplace(temporary.c_str(), target.c_str(), m_error);
    }

    static unsigned int modeOf(const std::string& name)
    {
        struct stat status = {};
        stat(name.c_str(), &status);
        return status.st_mode & 07777;
    }

    std::size_t filesInFolder() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(m_folder), {}));
    }

    fs::path m_folder;
    qxPlatformFile* m_file = nullptr;
    int m_error = -1;
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
        EXPECT_EQ(m_error, row.missing);
        fs::remove(path("missing"));

        put(path("file"), "old text");
        ASSERT_TRUE(open(path("file"), row.mode));
        EXPECT_EQ(write("new"), row.mode == QX_PLATFORM_FILE_READ ? 0U : 3U);
        EXPECT_EQ(m_error, row.mode == QX_PLATFORM_FILE_READ ? EBADF : 0);
        read(1);
        EXPECT_EQ(m_error, row.canRead ? 0 : EBADF);
        close();
        EXPECT_EQ(contentOf(path("file")), row.content);
    }
}

TEST_F(qxPlatformFileTest, refusesDirectories)
{
    for (const auto mode :
         {QX_PLATFORM_FILE_READ, QX_PLATFORM_FILE_WRITE, QX_PLATFORM_FILE_UPDATE, QX_PLATFORM_FILE_CREATE}) {
        SCOPED_TRACE(mode);
        EXPECT_FALSE(open(m_folder.string(), mode));
        EXPECT_EQ(m_error, EISDIR);
    }
    EXPECT_FALSE(qxPlatformFileRemove(m_folder.c_str(), m_error));
    EXPECT_EQ(m_error, EISDIR);
}

TEST_F(qxPlatformFileTest, takesNamesInUtf8)
{
    ASSERT_TRUE(open(path("Grüße 世界"), QX_PLATFORM_FILE_WRITE));
    EXPECT_TRUE(fs::exists(m_folder / u8"Grüße 世界"));
    EXPECT_TRUE(qxPlatformFileRemove(path("Grüße 世界").c_str(), m_error));
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(qxPlatformFileTest, shortReadsTellTheEndFromAFailure)
{
    put(path("file"), "12345");
    ASSERT_TRUE(open(path("file"), QX_PLATFORM_FILE_READ));

    EXPECT_EQ(read(3), "123");
    EXPECT_EQ(read(3), "45");
    EXPECT_EQ(m_error, 0);
    EXPECT_EQ(read(3), "");
    EXPECT_EQ(m_error, 0);
}

TEST_F(qxPlatformFileTest, nothingIsBuffered)
{
    ASSERT_TRUE(open(path("file"), QX_PLATFORM_FILE_WRITE));
    write("seen at once");

    EXPECT_EQ(contentOf(path("file")), "seen at once");
    EXPECT_TRUE(qxPlatformFileFlush(m_file, m_error));
    EXPECT_TRUE(qxPlatformFileSync(m_file, m_error));
    EXPECT_EQ(m_error, 0);
}

TEST_F(qxPlatformFileTest, positionsAndSizesHave64Bits)
{
    constexpr unsigned long long FAR = (5ULL << 32) + 7;
    ASSERT_TRUE(open(path("sparse"), QX_PLATFORM_FILE_CREATE));
    ASSERT_TRUE(qxPlatformFileSeek(m_file, FAR, m_error));
    ASSERT_EQ(write("end"), 3U);

    EXPECT_EQ(qxPlatformFilePosition(m_file, m_error), FAR + 3);
    EXPECT_EQ(qxPlatformFileSize(m_file, m_error), FAR + 3);
    ASSERT_TRUE(qxPlatformFileSeek(m_file, FAR + 1, m_error));
    EXPECT_EQ(read(9), "nd");
    EXPECT_TRUE(qxPlatformFileSeek(m_file, FAR * 2, m_error)); // behind the end is allowed
    EXPECT_EQ(read(1), "");
    EXPECT_FALSE(qxPlatformFileSeek(m_file, 1ULL << 63, m_error));
    EXPECT_EQ(m_error, EINVAL);
}

TEST_F(qxPlatformFileTest, aFullDiskCutsTheWriteShort)
{
    if (!open("/dev/full", QX_PLATFORM_FILE_WRITE)) GTEST_SKIP() << "needs /dev/full";

    EXPECT_EQ(write("lost"), 0U);
    EXPECT_EQ(m_error, ENOSPC);
}

TEST_F(qxPlatformFileTest, signalsDoNotCutAReadShort)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const pid_t reader = getpid();
    const pid_t writer = fork();
    if (writer == 0) {
        int error = 0;
        qxPlatformFile* pipe = qxPlatformFileOpen(path("pipe").c_str(), QX_PLATFORM_FILE_WRITE, error);
        for (int i = 0; i < 5; ++i) {
            kill(reader, SIGUSR1);
            usleep(2000);
            qxPlatformFileWrite(pipe, "x", 1, error);
        }
        _exit(0);
    }
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &before); // without SA_RESTART
    ASSERT_TRUE(open(path("pipe"), QX_PLATFORM_FILE_READ));

    EXPECT_EQ(read(5), "xxxxx");
    EXPECT_EQ(m_error, 0);
    EXPECT_EQ(qxPlatformFileSize(m_file, m_error), 0U);
    EXPECT_TRUE(qxPlatformFileSync(m_file, m_error)); // no disk to wait for
    waitpid(writer, nullptr, 0);
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(qxPlatformFileTest, replacesAFileAndKeepsItsPermissions)
{
    for (const unsigned int mode : {0600U, 0644U, 0666U, 0755U, 04755U}) {
        SCOPED_TRACE(mode);
        put(path("file"), "old");
        ASSERT_EQ(chmod(path("file").c_str(), mode), 0);

        EXPECT_TRUE(replace(path("file"), "new"));
        EXPECT_EQ(m_error, 0);
        EXPECT_EQ(contentOf(path("file")), "new");
        EXPECT_EQ(modeOf(path("file")), mode);
        EXPECT_EQ(filesInFolder(), 1U);
    }
}

TEST_F(qxPlatformFileTest, aNewFileHasTheUsualPermissions)
{
    const mode_t mask = umask(027);
    EXPECT_TRUE(replace(path("file"), "new"));
    umask(mask);

    EXPECT_EQ(contentOf(path("file")), "new");
    EXPECT_EQ(modeOf(path("file")), 0640U);
}

TEST_F(qxPlatformFileTest, keepsTheOwnerWhereItMay)
{
    put(path("file"), "old");
    if (chown(path("file").c_str(), 1234, 5678) != 0) GTEST_SKIP() << "needs the right to give files away";
    EXPECT_TRUE(replace(path("file"), "new"));

    struct stat status = {};
    ASSERT_EQ(stat(path("file").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 5678U);
}

TEST_F(qxPlatformFileTest, replacesWhatALinkLeadsTo)
{
    const struct {
        const char* link;   // text of the link "link"
        const char* target; // the file it leads to, which may not exist yet
        bool exists;
    } rows[] = {
        {"file", "file", true},
        {"folder/file", "folder/file", true},
        {"second", "folder/deep", true}, // over another link
        {"folder/fresh", "folder/fresh", false},
    };
    fs::create_directory(path("folder"));
    fs::create_symlink("folder/deep", path("second"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.link);
        fs::remove(path("link"));
        fs::create_symlink(row.link, path("link"));
        if (row.exists) put(path(row.target), "old");

        EXPECT_TRUE(replace(path("link"), "new"));
        EXPECT_EQ(fs::read_symlink(path("link")), row.link);
        EXPECT_FALSE(fs::is_symlink(path(row.target)));
        EXPECT_EQ(contentOf(path(row.target)), "new");
    }
}

TEST_F(qxPlatformFileTest, anOpenReaderKeepsTheOldFile)
{
    put(path("file"), "the old text");
    std::ifstream reader(path("file"));
    EXPECT_TRUE(replace(path("file"), "new"));

    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "the old text");
}

TEST_F(qxPlatformFileTest, replacesOnlyPlainFiles)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", path("null"));
    fs::create_symlink("loop", path("loop"));
    put(path("file"), "old");
    const struct {
        std::string name;
        bool replaceable;
        int replaceableError;
        int temporaryError;
    } rows[] = {
        {path("file"), true, 0, 0},
        {path("new"), true, 0, 0},
        {m_folder.string(), false, 0, EISDIR},
        {path("pipe"), false, 0, EOPNOTSUPP},
        {path("null"), false, 0, EOPNOTSUPP},
        {path("loop"), false, ELOOP, ELOOP},
        {path("file/below"), false, ENOTDIR, ENOTDIR},
        {"", false, ENOENT, ENOENT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(qxPlatformFileIsReplaceable(row.name.c_str(), m_error), row.replaceable);
        EXPECT_EQ(m_error, row.replaceableError);
        EXPECT_EQ(replace(row.name, "new"), row.replaceable);
        EXPECT_EQ(m_error, row.temporaryError);
    }
}

TEST_F(qxPlatformFileTest, aFailedReplaceLeavesBothFiles)
{
    put(path("temporary"), "new");
    EXPECT_FALSE(qxPlatformFileReplace(path("temporary").c_str(), path("no/file").c_str(), m_error));
    EXPECT_EQ(m_error, ENOENT);
    EXPECT_EQ(contentOf(path("temporary")), "new");

    EXPECT_FALSE(qxPlatformFileReplace(path("missing").c_str(), path("temporary").c_str(), m_error));
    EXPECT_EQ(m_error, ENOENT);
    EXPECT_EQ(contentOf(path("temporary")), "new");
}

TEST_F(qxPlatformFileTest, aWriteProtectedFileIsNotReplaced)
{
    constexpr uid_t SOMEBODY = 65534;
    put(path("file"), "old");
    chmod(path("file").c_str(), 0444);
    const bool isAdministrator = geteuid() == 0; // who may write everything
    if (isAdministrator) {
        ASSERT_EQ(chown(m_folder.c_str(), SOMEBODY, SOMEBODY), 0);
        ASSERT_EQ(seteuid(SOMEBODY), 0);
    }
    const bool replaced = replace(path("file"), "new");
    if (isAdministrator) {
        ASSERT_EQ(seteuid(0), 0);
    }

    EXPECT_FALSE(replaced);
    EXPECT_EQ(m_error, EACCES);
    EXPECT_EQ(contentOf(path("file")), "old");
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(qxPlatformFileTest, temporaryFilesHaveNamesOfTheirOwn)
{
    std::string first;
    std::string second;
    qxPlatformFile* one = qxPlatformFileTemporary(path("file").c_str(), first, m_error);
    qxPlatformFile* two = qxPlatformFileTemporary(path("file").c_str(), second, m_error);
    ASSERT_TRUE(one && two);

    EXPECT_NE(first, second);
    EXPECT_EQ(fs::path(first).parent_path(), m_folder);
    EXPECT_EQ(filesInFolder(), 2U);
    EXPECT_TRUE(qxPlatformFileClose(one, m_error));
    EXPECT_TRUE(qxPlatformFileClose(two, m_error));
}

TEST_F(qxPlatformFileTest, removesFilesAndSaysWhatIsMissing)
{
    put(path("file"), "x");
    EXPECT_TRUE(qxPlatformFileRemove(path("file").c_str(), m_error));
    EXPECT_EQ(m_error, 0);
    EXPECT_FALSE(qxPlatformFileRemove(path("file").c_str(), m_error));
    EXPECT_EQ(m_error, ENOENT);
}

} // namespace
