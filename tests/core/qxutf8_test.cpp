// SPDX-License-Identifier: see LICENSE

#include "qxutf8.h"

#include "qxtesttexts.h"

#include <string>

namespace
{

typedef std::vector<RecordedMessage> Messages;

TEST(qxUTF8, encodesAndDecodesUpToSixBytes)
{
    const struct {
        unsigned int code;
        std::string bytes;
        bool isOverlong = false; // decoded, but never written
    } rows[] = {{0, std::string(1, '\0')},
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
                {0x2F, "\xC0\xAF", true},
                {0x2F, "\xFC\x80\x80\x80\x80\xAF", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        unsigned char size = 0;
        EXPECT_EQ(qxUTF8ToULong(row.bytes.c_str(), &size), row.code);
        EXPECT_EQ(size, row.bytes.size());
        EXPECT_EQ(qxUTF8ToULong(row.bytes.c_str(), nullptr), row.code);
        EXPECT_EQ(qxUTF8Size(row.bytes.c_str()), row.bytes.size());
        if (row.isOverlong) continue;
        char out[6] = {};
        EXPECT_EQ(qxUInt32ToUTF8(out, row.code), row.bytes.size());
        EXPECT_EQ(std::string(out, row.bytes.size()), row.bytes);
        EXPECT_EQ(qxUTF8Size(row.code), row.bytes.size());
    }
}

TEST(qxUTF8, reportsInvalidDataAndCodes)
{
    for (const char* bytes :
         {"\x80", "\xBF", "\xFE", "\xFF", "\xC3", "\xC3x", "\xE2\x82", "\xE2x\x80", "\xFD\xBF\xBF"}) {
        SCOPED_TRACE(bytes);
        MessageRecorder recorder;
        unsigned char size = 9;
        EXPECT_EQ(qxUTF8ToULong(bytes, &size), 0u);
        EXPECT_EQ(size, 0);
        EXPECT_EQ(qxUTF8Size(bytes), 0u);
        EXPECT_EQ(recorder.messages(),
                  Messages(2, {"QuaxoSDK", QX_LEVEL_WARNING, "Utf decoding on faulty data input"}));
    }
    MessageRecorder recorder;
    char out = 'x';
    EXPECT_EQ(qxUInt32ToUTF8(&out, 0x80000000), 0u);
    EXPECT_EQ(qxUTF8Size(0xFFFFFFFFu), 0u);
    EXPECT_EQ(out, 'x');
    EXPECT_EQ(recorder.messages(),
              Messages(2, {"QuaxoSDK", QX_LEVEL_WARNING, "Utf encoding on faulty data set"}));
}

} // namespace
