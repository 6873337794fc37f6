// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfilelock.h"
#include "platform/qxplatformfolder.h"
#include "platform/qxplatformregistry.h"

#include "platform/qxplatformfiletest.h"
#include "qxtestthreads.h"

#include <memory>

namespace
{

class qxPlatformFolderTest : public qxPlatformFileTest
{
protected:
    qxPlatformFileIdentity identify(const char* name)
    {
        qxPlatformFileIdentity identity;
        EXPECT_TRUE(qxPlatformFileIdentify(path(name).c_str(), identity, error));
        EXPECT_EQ(error, 0);
        return identity;
    }
};

TEST_F(qxPlatformFolderTest, tellsStatesOfAFileApart)
{
    folder.write("file", "old");
    const qxPlatformFileIdentity old = identify("file");
    EXPECT_TRUE(old.exists && old.isPlain);
    EXPECT_EQ(old.size, 3U);
    EXPECT_EQ(identify("file"), old);
    ASSERT_TRUE(replace(path("file"))); // of the same size
    EXPECT_NE(identify("file"), old);
    EXPECT_FALSE(identify("missing").exists);
    EXPECT_FALSE(identify("missing/file").exists);
    EXPECT_TRUE(identify(".").exists);
    EXPECT_FALSE(identify(".").isPlain);
}

TEST_F(qxPlatformFolderTest, namedTemporariesTakeThePlaceOfThoseLeftBehind)
{
    folder.write("file.tmp", "left behind");
    std::string name;
    file = qxPlatformFileTemporaryNamed(path("file").c_str(), ".tmp", name, error);
    ASSERT_TRUE(file);
    EXPECT_EQ(fs::path(name), fs::path(path("file.tmp")));
    EXPECT_EQ(qxPlatformFileSize(file, error), 0U);
    close();
    EXPECT_FALSE(qxPlatformFileTemporaryNamed(path("no/file").c_str(), ".tmp", name, error));
    EXPECT_EQ(error, ENOENT);
}

TEST_F(qxPlatformFolderTest, namesBecomeFull)
{
    std::string full;
    ASSERT_TRUE(qxPlatformFileFullName("file", full, error));
    EXPECT_TRUE(fs::path(full).is_absolute());
    EXPECT_EQ(fs::path(full).filename(), "file");
    ASSERT_TRUE(qxPlatformFileFullName(path("file").c_str(), full, error));
    EXPECT_EQ(fs::path(full), fs::path(path("file")));
    EXPECT_FALSE(qxPlatformFileResolve("", full, error));
    EXPECT_EQ(error, ENOENT);
}

TEST_F(qxPlatformFolderTest, onlyOneHoldsALock)
{
    qxPlatformFileLock* const lock = qxPlatformFileLockTry(path("file").c_str(), error);
    ASSERT_TRUE(lock);
    EXPECT_FALSE(qxPlatformFileLockTry(path("file").c_str(), error));
    EXPECT_EQ(error, 0);
    qxPlatformFileLockRelease(lock);
    qxPlatformFileLock* const again = qxPlatformFileLockTry(path("file").c_str(), error);
    EXPECT_TRUE(again);
    qxPlatformFileLockRelease(again);
    EXPECT_FALSE(qxPlatformFileLockTry(path("no/file").c_str(), error));
    EXPECT_EQ(error, ENOENT);
}

TEST_F(qxPlatformFolderTest, makesTheFoldersOfAFile)
{
    EXPECT_TRUE(qxPlatformFolderCreateFor(path("a/b c/file").c_str(), error));
    EXPECT_TRUE(fs::is_directory(path("a/b c")));
    EXPECT_FALSE(fs::exists(path("a/b c/file")));
    EXPECT_TRUE(qxPlatformFolderCreateFor(path("a/b c/file").c_str(), error));
    EXPECT_TRUE(qxPlatformFolderCreateFor("file", error));
    folder.write("plain", "");
    EXPECT_FALSE(qxPlatformFolderCreateFor(path("plain/b/file").c_str(), error));
    EXPECT_NE(error, 0);
}

TEST_F(qxPlatformFolderTest, noticesFilesThatAreReplaced)
{
    const auto close = [](qxPlatformFolderWatch* watch) { qxPlatformFolderWatchClose(watch); };
    const std::unique_ptr<qxPlatformFolderWatch, decltype(close)> watch(
        qxPlatformFolderWatchOpen(path("file").c_str(), error), close);
    ASSERT_TRUE(watch);
    EXPECT_FALSE(qxPlatformFolderWatchIsBroken(watch.get()));
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(replace(path("file")));
        EXPECT_LT(secondsOf([&] { qxPlatformFolderWatchWait(watch.get(), 60000); }), 30.0);
    }
    qxPlatformFolderWatchWake(watch.get());
    EXPECT_LT(secondsOf([&] { qxPlatformFolderWatchWait(watch.get(), 60000); }), 30.0);
}

TEST_F(qxPlatformFolderTest, aMissingFolderCannotBeWatched)
{
    qxPlatformFolderWatch* const watch = qxPlatformFolderWatchOpen(path("no/file").c_str(), error);
    ASSERT_TRUE(watch);
    EXPECT_TRUE(qxPlatformFolderWatchIsBroken(watch));
    qxPlatformFolderWatchClose(watch);
}

TEST(qxPlatformRegistry, isThereOrAnswersFalse)
{
    std::string text;
    EXPECT_FALSE(qxPlatformRegistryGet(true, "software\\no\\such", "key", text));
    EXPECT_FALSE(qxPlatformRegistryRemove(true, "software\\no\\such", "key"));
    if (qxPlatformRegistryIsThere()) return;
    EXPECT_FALSE(qxPlatformRegistrySet(true, "software\\no\\such", "key", "text"));
}

} // namespace
