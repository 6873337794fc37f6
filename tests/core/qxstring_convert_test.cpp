// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtesttexts.h"

#include <string>

namespace
{

TEST(qxString, changesItsCharacters)
{
    const struct {
        qxString result;
        const char* expected;
    } rows[] = {
        // Only ASCII letters have a case.
        {qxString("aZ@[`{0\xC3\xA9\xE4").toUpper(), "AZ@[`{0\xC3\xA9\xE4"},
        {qxString("aZ@[`{0\xC3\xA9\xE4").toLower(), "az@[`{0\xC3\xA9\xE4"},
        {qxString().toUpper(), ""},
        {qxString("abc").reverse(), "cba"},
        {qxString("1\xC3\xA9\xE2\x82\xAC").reverse(), "\xE2\x82\xAC\xC3\xA9\x31"},
        {qxString("\xA9x\xC3").reverse(), "\xC3x\xA9"}, // invalid bytes stand for themselves
        {qxString("before").identifier(0), "_0"},
        {qxString().identifier(42), "_42"},
        {qxString().identifier(-9223372036854775807LL - 1), "_n9223372036854775808"},
        {qxString("a\xE9\xFF").convertAsciiToUTF8(), "a\xC3\xA9\xC3\xBF"},
        {qxString("a\xC3\xA9\xC3\xBF").convertUTF8ToAscii(), "a\xE9\xFF"},
        {qxString("1\xE2\x82\xAC").convertUTF8ToAscii(), "1?"},
        {qxString("plain").convertUTF8ToAscii(), "plain"},
        {qxString::spaces(3), "   "},
        {qxString::spaces(2, '-'), "--"},
        {qxString::spaces(0), ""},
    };
    for (const auto& row : rows) EXPECT_STREQ(row.result, row.expected);
}

TEST(qxString, sortsByItsFirstBytes)
{
    EXPECT_EQ(qxString().sortval(), 0.0);
    EXPECT_EQ(qxString("\xFF").sortval(), 255.0);
    EXPECT_EQ(qxString("\x01\x02\x03").sortval(), 1.0 + 2.0 / 256 + 3.0 / 65536);
    EXPECT_EQ(qxString("\0\0\0\0\0\0\0\0\x01", 9).sortval(), 1.0 / 18446744073709551616.0);
    EXPECT_LT(qxString("abc").sortval(), qxString("abd").sortval());
}

TEST(qxString, reportsWhatCannotBeConverted)
{
    MessageRecorder recorder;
    EXPECT_STREQ(qxString("\xC3\xA9 \xE9 rest").convertUTF8ToAscii(), "\xE9 ");
    EXPECT_STREQ(qxString("41 123456789abcdef 42").convertNumListToUTF8(), "AB");
    EXPECT_EQ(recorder.texts(), (std::vector<std::string>{"Utf decoding on faulty data input",
                                                          "Utf encoding on faulty data set"}));
}

TEST(qxString, writesAndReadsLists)
{
    const struct {
        const char* separator;
        const char* prefix;
        const char* list;
    } rows[] = {
        {",", "0x", "0x41,0xe9,0x20ac,0x1f600"},
        {" ", "", "41 e9 20ac 1f600"},
        {"", "\\u", "\\u41\\ue9\\u20ac\\u1f600"},
    };
    const char* const text = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        EXPECT_STREQ(qxString(text).convertUTF8ToNumList(row.separator, row.prefix), row.list);
        EXPECT_STREQ(qxString(row.list).convertNumListToUTF8(), text);
    }
    EXPECT_EQ(bytesOf(qxString("0X41, 0").convertNumListToUTF8()), std::string("A\0", 2));
}

TEST(qxString, escapesControlCharacters)
{
    const struct {
        std::string text;
        const char* escaped;
        bool escape8Bit = false;
    } rows[] = {
        {"plain \"text\"", "plain \"text\""},
        {"\a\b\t\n\v\f\r", "\\a\\b\\t\\n\\v\\f\\r"},
        {std::string("\0\x01\x1F\x7F", 4), "\\x00\\x01\\x1F\\x7F"},
        {"\\x41", "\\\\x41"},
        {"\xC3\xA9", "\xC3\xA9"},
        {"\xC3\xA9", "\\xC3\\xA9", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.escaped);
        qxString text(row.text.data(), row.text.size());
        EXPECT_STREQ(text.convertCtrlToText(row.escape8Bit), row.escaped);
        EXPECT_EQ(bytesOf(text.convertTextToCtrl()), row.text);
    }
    for (const char* text : {"\\", "\\q", "\\x4", "\\x4g", "a\\"}) // no escapes
        EXPECT_STREQ(qxString(text).convertTextToCtrl(), text);
}

// All texts of up to three bytes from those that escapes are made of.
TEST(qxString, escapingIsUndoneExactly)
{
    const std::string bytes("\0\n\\xnA\x80\x7F", 8);
    for (char a : bytes) {
        for (char b : bytes) {
            for (char c : bytes) {
                const char plain[] = {a, b, c, '4', '1'};
                for (bool escape8Bit : {false, true}) {
                    qxString text(plain, sizeof plain);
                    text.convertCtrlToText(escape8Bit).convertTextToCtrl();
                    ASSERT_EQ(bytesOf(text), std::string(plain, sizeof plain));
                }
            }
        }
    }
}

TEST(qxString, knowsEscapesAndAscii)
{
    for (const char* text : {"caf\\xC3\\xA9", "\\xff"}) EXPECT_TRUE(qxString(text).hasEscapedUTF8Chars());
    // The last but one holds an escaped backslash.
    for (const char* text : {"\\x7F\\n", "caf\xC3\xA9", "\\\\xC3", "\\xC"})
        EXPECT_FALSE(qxString(text).hasEscapedUTF8Chars());

    EXPECT_TRUE(qxString().isAsciiString());
    EXPECT_TRUE(qxString("\x01~\x7F").isAsciiString());
    EXPECT_FALSE(qxString("plain up to here \x80").isAsciiString());
}

TEST(qxString, scramblesAndUnscramblesUnderOneKey)
{
    const char* const original = "User_Name-07 \xC3\xA9!";
    for (unsigned int key : {0u, 1u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(key);
        qxString text(original);
        text.scramble(key);
        EXPECT_FALSE(text == original);
        EXPECT_EQ(text.length(), qxString(original).length());
        EXPECT_EQ(text.find('_'), 4u); // what is no letter or digit keeps its place
        EXPECT_FALSE(qxString(text).scramble(key + 1) == original);
        EXPECT_STREQ(text.scramble(key), original);
    }
}

} // namespace
