// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestsupport.h"

#include <string>

namespace
{

TEST(qxString, changesTheCaseOfAsciiLettersOnly)
{
    qxString text("aZ@[`{0\xC3\xA9\xE4");
    EXPECT_STREQ(text.toUpper(), "AZ@[`{0\xC3\xA9\xE4");
    EXPECT_STREQ(text.toLower(), "az@[`{0\xC3\xA9\xE4");
    EXPECT_STREQ(qxString().toUpper(), "");
}

TEST(qxString, reversesCharactersNotBytes)
{
    EXPECT_STREQ(qxString("abc").reverse(), "cba");
    EXPECT_STREQ(qxString("a\xC3\xA9\xE2\x82\xAC").reverse(), "\xE2\x82\xAC\xC3\xA9"
                                                              "a");
    EXPECT_STREQ(qxString("\xA9x\xC3").reverse(), "\xC3x\xA9"); // invalid bytes stand for themselves
}

TEST(qxString, makesRunsOfOneCharacter)
{
    EXPECT_STREQ(qxString::spaces(3), "   ");
    EXPECT_STREQ(qxString::spaces(2, '-'), "--");
    EXPECT_TRUE(qxString::spaces(0).isEmpty());
}

TEST(qxString, sortsByItsFirstBytes)
{
    EXPECT_EQ(qxString().sortval(), 0.0);
    EXPECT_EQ(qxString("\xFF").sortval(), 255.0);
    EXPECT_EQ(qxString("A\x80").sortval(), 65.5);
    EXPECT_EQ(qxString("\x01\x02\x03").sortval(), 1.0 + 2.0 / 256 + 3.0 / 65536);
    EXPECT_EQ(qxString("\0\0\0\0\0\0\0\0\x01", 9).sortval(), 1.0 / 18446744073709551616.0);
    EXPECT_LT(qxString("abc").sortval(), qxString("abd").sortval());
    EXPECT_LT(qxString("Z").sortval(), qxString("a").sortval());
}

TEST(qxString, makesIdentifiers)
{
    qxString text("before");
    EXPECT_STREQ(text.identifier(0), "_0");
    EXPECT_STREQ(text.identifier(42), "_42");
    EXPECT_STREQ(text.identifier(-42), "_n42");
    EXPECT_STREQ(text.identifier(-9223372036854775807LL - 1), "_n9223372036854775808");
}

TEST(qxString, convertsBetweenLatinAndUTF8)
{
    EXPECT_STREQ(qxString("a\xE9\xFF").convertAsciiToUTF8(), "a\xC3\xA9\xC3\xBF");
    EXPECT_STREQ(qxString("a\xC3\xA9\xC3\xBF").convertUTF8ToAscii(), "a\xE9\xFF");
    EXPECT_STREQ(qxString("1\xE2\x82\xAC").convertUTF8ToAscii(), "1?");
    EXPECT_STREQ(qxString("plain").convertUTF8ToAscii(), "plain");
    EXPECT_EQ(fatalText([] { qxString::spaces(40000, '\xE9').convertAsciiToUTF8(); }),
              "Too many characters in qxString");
}

TEST(qxString, stopsConvertingAtInvalidUTF8)
{
    MessageRecorder recorder;
    EXPECT_STREQ(qxString("\xC3\xA9 \xE9 rest").convertUTF8ToAscii(), "\xE9 ");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Utf decoding on faulty data input"});
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
        {"; ", "U+", "U+41; U+e9; U+20ac; U+1f600"},
    };
    const char* const text = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        EXPECT_STREQ(qxString(text).convertUTF8ToNumList(row.separator, row.prefix), row.list);
        EXPECT_STREQ(qxString(row.list).convertNumListToUTF8(), text);
    }
    EXPECT_STREQ(qxString("0X41, 0").convertNumListToUTF8(), "A");
    EXPECT_EQ(qxString("0X41, 0").convertNumListToUTF8().length(), 2);
}

TEST(qxString, refusesListsOfCodesThatDoNotExist)
{
    MessageRecorder recorder;
    EXPECT_STREQ(qxString("41 123456789abcdef 42").convertNumListToUTF8(), "AB");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Utf encoding on faulty data set"});
}

TEST(qxString, escapesControlCharacters)
{
    const struct {
        std::string text;
        const char* escaped;
    } rows[] = {
        {"plain \"text\"", "plain \"text\""},
        {"\a\b\t\n\v\f\r", "\\a\\b\\t\\n\\v\\f\\r"},
        {"back\\slash", "back\\\\slash"},
        {std::string("\0\x01\x1F\x7F", 4), "\\x00\\x01\\x1F\\x7F"},
        {"\\x41", "\\\\x41"},
        {"\xC3\xA9", "\xC3\xA9"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.escaped);
        qxString text(row.text.data(), row.text.size());
        EXPECT_STREQ(text.convertCtrlToText(), row.escaped);
        text.convertTextToCtrl();
        EXPECT_EQ(std::string(text.getString(), text.length()), row.text);
    }
    EXPECT_STREQ(qxString("\xC3\xA9").convertCtrlToText(true), "\\xC3\\xA9");
}

TEST(qxString, leavesWhatIsNoEscape)
{
    for (const char* text : {"\\", "\\q", "\\x4", "\\x4g", "a\\"}) {
        SCOPED_TRACE(text);
        EXPECT_STREQ(qxString(text).convertTextToCtrl(), text);
    }
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
                    ASSERT_EQ(std::string(text.getString(), text.length()), std::string(plain, sizeof plain));
                }
            }
        }
    }
}

TEST(qxString, findsEscapedUTF8)
{
    EXPECT_TRUE(qxString("caf\\xC3\\xA9").hasEscapedUTF8Chars());
    EXPECT_TRUE(qxString("\\xff").hasEscapedUTF8Chars());
    EXPECT_FALSE(qxString("\\x7F\\n").hasEscapedUTF8Chars());
    EXPECT_FALSE(qxString("caf\xC3\xA9").hasEscapedUTF8Chars());
    EXPECT_FALSE(qxString("\\\\xC3").hasEscapedUTF8Chars()); // an escaped backslash
    EXPECT_FALSE(qxString("\\xC").hasEscapedUTF8Chars());
}

TEST(qxString, knowsAscii)
{
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
