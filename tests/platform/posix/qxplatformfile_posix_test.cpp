// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfiletest.h"

#include <cerrno>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

class qxPlatformFilePosix : public qxPlatformFileTest
{
protected:
    struct stat statusOf(const char* name) const
    {
        struct stat status = {};
        stat(path(name).c_str(), &status);
        return status;
    }
};

TEST_F(qxPlatformFilePosix, aFullDiskCutsTheWriteShort)
{
    if (!open("/dev/full", QX_PLATFORM_FILE_WRITE)) GTEST_SKIP() << "needs /dev/full";

    EXPECT_EQ(write("lost"), 0U);
    EXPECT_EQ(error, ENOSPC);
}

TEST_F(qxPlatformFilePosix, signalsDoNotCutAReadShort)
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

TEST_F(qxPlatformFilePosix, replacesAFileAndKeepsItsPermissions)
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

TEST_F(qxPlatformFilePosix, aNewFileHasTheUsualPermissions)
{
    const mode_t mask = umask(027);
    EXPECT_TRUE(replace(path("file")));
    umask(mask);

    EXPECT_EQ(folder.read("file"), "new");
    EXPECT_EQ(statusOf("file").st_mode & 07777, 0640U);
}

TEST_F(qxPlatformFilePosix, keepsTheOwnerWhereItMay)
{
    const std::string name = folder.write("file", "old");
    if (chown(name.c_str(), 1234, 5678) != 0) GTEST_SKIP() << "needs the right to give files away";
    EXPECT_TRUE(replace(name));

    EXPECT_EQ(statusOf("file").st_uid, 1234U);
    EXPECT_EQ(statusOf("file").st_gid, 5678U);
}

TEST_F(qxPlatformFilePosix, replacesWhatALinkLeadsTo)
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

TEST_F(qxPlatformFilePosix, replacesOnlyPlainFiles)
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
        {folder.name(), false, 0, EISDIR},
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

TEST_F(qxPlatformFilePosix, aWriteProtectedFileIsNotReplaced)
{
    constexpr uid_t SOMEBODY = 65534;
    chmod(folder.write("file", "old").c_str(), 0444);
    const bool isAdministrator = geteuid() == 0; // who may write everything
    if (isAdministrator) {
        ASSERT_EQ(chown(folder.name().c_str(), SOMEBODY, SOMEBODY), 0);
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

} // namespace
