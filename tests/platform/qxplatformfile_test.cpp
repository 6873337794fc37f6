// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformfiletest.h"

#include <cerrno>

namespace
{

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
        close();
        fs::remove(path("missing"));
        EXPECT_FALSE(open(folder.name(), row.mode));
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
    close();
    EXPECT_TRUE(qxPlatformFileRemove(path("Grüße 世界").c_str(), error));
    EXPECT_EQ(error, 0);
    EXPECT_FALSE(qxPlatformFileRemove(path("Grüße 世界").c_str(), error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_FALSE(qxPlatformFileRemove(folder.name().c_str(), error));
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

TEST_F(qxPlatformFileTest, replacesOldFilesAndMakesNewOnes)
{
    folder.write("Grüße", "the old text");
    for (const char* name : {"Grüße", "new"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(qxPlatformFileIsReplaceable(path(name).c_str(), error));
        EXPECT_TRUE(replace(path(name)));
        EXPECT_EQ(error, 0);
        EXPECT_EQ(folder.read(name), "new");
    }
    EXPECT_EQ(folder.count(), 2U);
    EXPECT_FALSE(qxPlatformFileIsReplaceable(folder.name().c_str(), error));
    EXPECT_EQ(error, 0);
    EXPECT_FALSE(replace(folder.name()));
    EXPECT_EQ(error, EISDIR);
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
