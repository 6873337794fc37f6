// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include "settings/qxsettingstest.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

typedef std::vector<std::string> Texts;

class qxKeyDatabasePosix : public Settings
{
protected:
    mode_t modeOf(const char* name) const
    {
        struct stat status = {};
        lstat(url(name).c_str(), &status);
        return status.st_mode;
    }
};

TEST_F(qxKeyDatabasePosix, aNewDocumentIsItsOwnersAlone)
{
    ASSERT_TRUE(qxKeyDatabase::openLocalRegistry(url("new/test.reg").c_str()));
    ASSERT_TRUE(set("a", "x", "1"));
    EXPECT_EQ(modeOf("new/test.reg") & 07777, 0600U);
    EXPECT_EQ(modeOf("new") & 07777, 0700U);
}

TEST_F(qxKeyDatabasePosix, linkAndModeAreKept)
{
    folder.write("real/test.reg", "<r/>");
    chmod(url("real/test.reg").c_str(), 0640);
    ASSERT_EQ(symlink("real/test.reg", url().c_str()), 0);
    ASSERT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
    ASSERT_TRUE(set("a", "x", "1"));
    EXPECT_TRUE(S_ISLNK(modeOf("test.reg")));
    EXPECT_EQ(modeOf("real/test.reg") & 07777, 0640U);
    EXPECT_NE(folder.read("real/test.reg").find("<x>1</x>"), std::string::npos);
    EXPECT_EQ(folder.count(), 2U);
}

TEST_F(qxKeyDatabasePosix, aLinkToNothingIsFollowed)
{
    std::filesystem::create_directory(folder.path() / "real");
    ASSERT_EQ(symlink("real/test.reg", url().c_str()), 0);
    ASSERT_TRUE(qxKeyDatabase::openLocalRegistry(url().c_str()));
    ASSERT_TRUE(set("a", "x", "1"));
    EXPECT_TRUE(S_ISREG(modeOf("real/test.reg")));
}

// The system's superuser may read and write everything: it is somebody else meanwhile.
class SomebodyElse
{
public:
    explicit SomebodyElse(const TestFolder& folder) : m_was(geteuid())
    {
        if (m_was != 0) return;
        constexpr uid_t NOBODY = 65534;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            EXPECT_EQ(lchown(entry.path().c_str(), NOBODY, NOBODY), 0);
        EXPECT_EQ(lchown(folder.path().c_str(), NOBODY, NOBODY), 0);
        EXPECT_EQ(seteuid(NOBODY), 0);
    }
    ~SomebodyElse() { EXPECT_EQ(seteuid(m_was), 0); }
    SomebodyElse(const SomebodyElse&) = delete;
    SomebodyElse& operator=(const SomebodyElse&) = delete;

private:
    const uid_t m_was;
};

TEST_F(qxKeyDatabasePosix, respectsTheRightsOfTheDocument)
{
    ASSERT_TRUE(set("a", "x", "1"));
    const std::string before = content();
    const SomebodyElse user(folder);
    MessageRecorder recorder;
    ASSERT_EQ(chmod(url().c_str(), 0400), 0);
    EXPECT_FALSE(set("a", "x", "2"));
    EXPECT_EQ(get("a", "x"), "1");
    ASSERT_EQ(chmod(url().c_str(), 0), 0);
    EXPECT_FALSE(set("a", "x", "2"));
    EXPECT_FALSE(qxKeyDatabase::setLocalRegistry(url().c_str()));
    EXPECT_FALSE(set("a", "x", "2"));
    ASSERT_EQ(chmod(url().c_str(), 0600), 0);
    EXPECT_EQ(content(), before);
    ASSERT_EQ(chmod(folder.name().c_str(), 0500), 0);
    EXPECT_FALSE(set("a", "x", "2"));
    ASSERT_EQ(chmod(folder.name().c_str(), 0700), 0);
    EXPECT_EQ(content(), before);
}

TEST_F(qxKeyDatabasePosix, aFullDiskLeavesTheDocumentAsItWas)
{
    ASSERT_TRUE(set("a", "x", "1"));
    const std::string before = content();
    MessageRecorder recorder;
    struct rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN); // the write fails then, as it does on a full disk
    const struct rlimit small = {1000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_FALSE(set("a", "y", std::string(2000, 'y')));
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(recorder.texts(), Texts{"Could not save settings '" + url() + "' (File too large)"});
    EXPECT_EQ(content(), before);
    EXPECT_EQ(folder.count(), 2U);
    EXPECT_EQ(get("a", "x") + get("a", "y"), "1(none)");
    EXPECT_TRUE(set("a", "y", "2"));
}

TEST_F(qxKeyDatabasePosix, devicesAndPipesAreNoDocuments)
{
    ASSERT_EQ(mkfifo(url("pipe").c_str(), 0600), 0);
    MessageRecorder recorder;
    for (const std::string& name : {url("pipe"), std::string("/dev/zero"), std::string("/dev/full")}) {
        EXPECT_FALSE(qxKeyDatabase::openLocalRegistry(name.c_str()));
        EXPECT_EQ(recorder.texts(),
                  Texts{"Settings '" + name + "' are no file, or more than 16777216 bytes"});
        recorder.clear();
    }
}

TEST_F(qxKeyDatabasePosix, aLinkInThePlaceOfTheLockIsRefused)
{
    ASSERT_EQ(symlink(url("elsewhere").c_str(), url("test.reg.lock").c_str()), 0);
    MessageRecorder recorder;
    EXPECT_FALSE(set("a", "x", "1"));
    EXPECT_EQ(recorder.messages().size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "elsewhere"));
}

TEST_F(qxKeyDatabasePosix, waitsForTheLockOfAnotherProgram)
{
    const int lock = open(url("test.reg.lock").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    std::atomic<bool> isSet = false;
    TestLatch started(1);
    std::thread setter([&] {
        started.countDown();
        EXPECT_TRUE(set("a", "x", "1"));
        isSet = true;
    });
    started.wait();
    for (int i = 0; i < 100; ++i) { // others read and send messages meanwhile
        EXPECT_EQ(get("a", "x"), "(none)");
        qxMessage::message(QX_LEVEL_DEBUG, "x");
    }
    EXPECT_FALSE(isSet);
    close(lock);
    setter.join();
    EXPECT_EQ(get("a", "x"), "1");
}

} // namespace
