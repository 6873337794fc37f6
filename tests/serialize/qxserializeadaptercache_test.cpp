// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptercache.h"

#include "qxteststream.h"
#include "qxtestsupport.h"
#include "qxtestthreads.h"

namespace
{

constexpr qxUInt64 FAILED = qxSerializeAdapter::SEEK_FAILED;

/// An empty cache before and after each test.
class qxSerializeAdapterCacheTest : public testing::Test
{
protected:
    qxSerializeAdapterCacheTest() { qxSerializeAdapterCache::removeAll(); }
    ~qxSerializeAdapterCacheTest() noexcept override
    {
        qxSerializeAdapterCache::removeAll();
        qxSerializeAdapterCache::setLimit(qxSerializeAdapterCache::DEFAULT_LIMIT);
    }

    static void put(const qxString& name, const std::string& text,
                    qxSerializeAction action = QX_SERIALIZE_OUTPUT)
    {
        qxSerializeAdapterCache adapter(name, action);
        writeText(adapter, text);
    }
    static std::string get(const qxString& name)
    {
        qxSerializeAdapterCache adapter(name, QX_SERIALIZE_INPUT);
        return adapter.hasError() ? adapter.getError().getString() : readAll(adapter);
    }
};

TEST_F(qxSerializeAdapterCacheTest, othersReadWhatWasWritten)
{
    put("a", "one");
    put("b", "");
    put("a", "+two", QX_SERIALIZE_APPEND);
    EXPECT_EQ(get("a"), "one+two");
    EXPECT_EQ(get("b"), "");
    EXPECT_EQ(get("c"), "Could not open 'c' for reading (nothing was written under this name)");
    EXPECT_EQ(qxSerializeAdapterCache::getUsed(), 9U);
    EXPECT_TRUE(qxSerializeAdapterCache::remove("b"));
    EXPECT_FALSE(qxSerializeAdapterCache::remove("b"));
    EXPECT_FALSE(qxSerializeAdapterCache::has("b"));
    EXPECT_EQ(qxSerializeAdapterCache::getUsed(), 8U);
}

TEST_F(qxSerializeAdapterCacheTest, readersSeeWholeBlocks)
{
    put("a", "old");
    qxSerializeAdapterCache writer("a", QX_SERIALIZE_OUTPUT);
    writeText(writer, "new");
    EXPECT_EQ(get("a"), "old");
    qxSerializeAdapterCache reader("a", QX_SERIALIZE_INPUT);
    writer.flush();
    EXPECT_EQ(get("a"), "new");
    writeText(writer, "er");
    EXPECT_EQ(get("a"), "new");
    writer.flush();
    EXPECT_EQ(get("a"), "newer");
    qxSerializeAdapterCache::removeAll();
    EXPECT_EQ(readAll(reader), "old");
}

TEST_F(qxSerializeAdapterCacheTest, whatDoesNotFitIsNotKept)
{
    qxSerializeAdapterCache::setLimit(10);
    put("a", "12345");
    MessageRecorder recorder;
    put("b", "1234");
    put("c", "123456789012");
    EXPECT_EQ(recorder.texts(),
              (std::vector<std::string>{
                  "Could not flush to cache 'b' (all blocks together are limited to 10 bytes)",
                  "Could not flush to cache 'c' (all blocks together are limited to 10 bytes)"}));
    EXPECT_FALSE(qxSerializeAdapterCache::has("b"));
    put("a", "123456789"); // in the place of its old block
    EXPECT_EQ(get("a"), "123456789");
}

TEST_F(qxSerializeAdapterCacheTest, movesWhenReading)
{
    put("a", "abcde");
    qxSerializeAdapterCache adapter("a", QX_SERIALIZE_INPUT);
    EXPECT_EQ(adapter.seek(-2, QX_ORIGIN_END), 3U);
    EXPECT_EQ(readAll(adapter), "de");
    EXPECT_EQ(adapter.seek(6, QX_ORIGIN_START), FAILED);
    EXPECT_EQ(adapter.seek(-5, QX_ORIGIN_CURRENT), 0U);
    EXPECT_TRUE(adapter.hasData(5));
    EXPECT_EQ(qxSerializeAdapterCache("a", QX_SERIALIZE_APPEND).seek(0, QX_ORIGIN_START), FAILED);
}

TEST_F(qxSerializeAdapterCacheTest, theOtherDirectionIsAnError)
{
    put("a", "old");
    qxSerializeAdapterCache reader("a", QX_SERIALIZE_INPUT);
    writeText(reader, "x");
    EXPECT_STREQ(reader.getError(), "The stream is open for reading");
    qxSerializeAdapterCache writer("b", QX_SERIALIZE_OUTPUT);
    EXPECT_EQ(readBlock(writer, 1), "");
    EXPECT_STREQ(writer.getError(), "The stream is open for writing");
    writer.setError("");
}

TEST_F(qxSerializeAdapterCacheTest, threadsShareIt)
{
    onThreads(4, [](unsigned int number) {
        const std::string text(1000 + number, static_cast<char>('a' + number));
        for (int i = 0; i < 200; ++i) {
            put("shared", text);
            const std::string got = get("shared");
            ASSERT_EQ(got, std::string(got.size(), got[0])); // of one writer
            ASSERT_EQ(got.size(), 1000U + static_cast<unsigned int>(got[0] - 'a'));
        }
    });
    EXPECT_LE(qxSerializeAdapterCache::getUsed(), 1009U);
}

} // namespace
