// SPDX-License-Identifier: see LICENSE

#include "qxutf8.h"

#include "qxtestsupport.h"

#include <string>

namespace
{

TEST(qxUTF8, encodesAndDecodesUpToSixBytes)
{
    const struct {
        unsigned int code;
        const char* bytes;
    } rows[] = {
        {0x7F, "\x7F"},
        {0x80, "\xC2\x80"},
        {0x7FF, "\xDF\xBF"},
        {0x800, "\xE0\xA0\x80"},
        {0xD800, "\xED\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        const std::string bytes = row.bytes;
        char out[6] = {};
        EXPECT_EQ(qxUInt32ToUTF8(out, row.code), bytes.size());
        EXPECT_EQ(std::string(out, bytes.size()), bytes);
        EXPECT_EQ(qxUTF8Size(row.code), bytes.size());
        EXPECT_EQ(qxUTF8Size(row.bytes), bytes.size());

        unsigned char size = 0;
        EXPECT_EQ(qxUTF8ToULong(row.bytes, &size), row.code);
        EXPECT_EQ(size, bytes.size());
        EXPECT_EQ(qxUTF8ToULong(row.bytes, nullptr), row.code);
    }
}

TEST(qxUTF8, encodesZeroAsOneByte)
{
    char out = 'x';
    EXPECT_EQ(qxUInt32ToUTF8(&out, 0), 1u);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(qxUTF8Size(""), 1u);
}

TEST(qxUTF8, decodesOverlongForms)
{
    unsigned char size = 0;
    EXPECT_EQ(qxUTF8ToULong("\xC0\xAF", &size), 0x2Fu);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(qxUTF8ToULong("\xFC\x80\x80\x80\x80\xAF", &size), 0x2Fu);
    EXPECT_EQ(size, 6);
}

TEST(qxUTF8, reportsInvalidData)
{
    for (const char* bytes :
         {"\x80", "\xBF", "\xFE", "\xFF", "\xC3", "\xC3x", "\xE2\x82", "\xE2x\x80", "\xFD\xBF\xBF"}) {
        SCOPED_TRACE(bytes);
        MessageRecorder recorder;
        unsigned char size = 9;
        EXPECT_EQ(qxUTF8ToULong(bytes, &size), 0u);
        EXPECT_EQ(size, 0);
        EXPECT_EQ(qxUTF8Size(bytes), 0u);
        const RecordedMessage message{"QuaxoSDK", QX_LEVEL_WARNING, "Utf decoding on faulty data input"};
        EXPECT_EQ(recorder.messages(), std::vector<RecordedMessage>(2, message));
    }
}

TEST(qxUTF8, reportsInvalidCodes)
{
    MessageRecorder recorder;
    char out = 'x';
    EXPECT_EQ(qxUInt32ToUTF8(&out, 0x80000000), 0u);
    EXPECT_EQ(qxUTF8Size(0xFFFFFFFFu), 0u);
    EXPECT_EQ(out, 'x');
    const RecordedMessage message{"QuaxoSDK", QX_LEVEL_WARNING, "Utf encoding on faulty data set"};
    EXPECT_EQ(recorder.messages(), std::vector<RecordedMessage>(2, message));
}

} // namespace
