// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestsupport.h"

#include <random>
#include <string>

namespace
{

TEST(qxString, findsCharacters)
{
    const qxString text("abcabc");
    EXPECT_EQ(text.find('c'), 2u);
    EXPECT_EQ(text.find('c', 3), 5u);
    EXPECT_EQ(text.find('a', 4), 6u); // none: the length
    EXPECT_EQ(qxString("abc").find('z'), 3u);
    EXPECT_EQ(text.find('a', 9), 9u); // beyond the end: the start
    EXPECT_EQ(qxString().find('a'), 0u);
}

TEST(qxString, comparesBeginnings)
{
    const struct {
        const char* text;
        const char* other;
        bool caseSensitive;
        bool begins;
        unsigned short matched;
    } rows[] = {
        {"abc", "ab", true, true, 2},
        {"ab", "abc", true, false, 2},
        {"ABC", "abc", false, true, 3},
        {"ABC", "abc", true, false, 0},
        {"abc", "", true, true, 0},
        {"", "", true, true, 0},
        {"", "a", false, false, 0},
        {"0123456789abcdef", "0123456789abcdeX", true, false, 15},
        {"0123456789abcdef", "0123456X89abcdef", true, false, 7},
        {"0123456789ABCDEF", "0123456789abcdeX", false, false, 15},
        {"\xC3\xA9", "\xC3\x89", false, false, 1}, // only ASCII letters have a case
        {"[", "{", false, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " with " + row.other);
        unsigned short matched = 999;
        EXPECT_EQ(qxString(row.text).compare(row.other, row.caseSensitive, &matched), row.begins);
        EXPECT_EQ(matched, row.matched);
        EXPECT_EQ(qxString(row.text).compare(row.other, row.caseSensitive), row.begins);
        EXPECT_EQ(qxString(row.text).isFirst(qxString(row.other), row.caseSensitive), row.begins);
    }
}

TEST(qxString, containsTellsThePosition)
{
    const qxString text("one two one");
    unsigned short position = 77;
    EXPECT_TRUE(text.contains("one", 0, true, &position));
    EXPECT_EQ(position, 0);
    EXPECT_TRUE(text.contains("one", 1, true, &position));
    EXPECT_EQ(position, 8);
    EXPECT_TRUE(text.contains("TWO", 0, false, &position));
    EXPECT_EQ(position, 4);
    EXPECT_TRUE(text.contains("", 11, true, &position));
    EXPECT_EQ(position, 11);

    position = 77;
    EXPECT_FALSE(text.contains("TWO", 0, true, &position));
    EXPECT_FALSE(text.contains("one", 9, true, &position));
    EXPECT_FALSE(text.contains("", 12, true, &position));
    EXPECT_EQ(position, 77); // left alone
}

TEST(qxString, looksAtItsEnds)
{
    const qxString text("Header");
    EXPECT_TRUE(text.isFirst('H'));
    EXPECT_FALSE(text.isFirst('h'));
    EXPECT_TRUE(text.isFirst('h', false));
    EXPECT_TRUE(text.isLast('r'));
    EXPECT_TRUE(text.isLast('R', false));
    EXPECT_TRUE(text.isLast("der"));
    EXPECT_FALSE(text.isLast("DER"));
    EXPECT_TRUE(text.isLast("DER", false));
    EXPECT_TRUE(text.isLast(""));
    EXPECT_FALSE(text.isLast("a Header"));
    EXPECT_FALSE(qxString().isFirst('H'));
    EXPECT_FALSE(qxString().isLast('\0'));
}

TEST(qxString, slicesFromBothEnds)
{
    const struct {
        unsigned int count;
        const char* left;
        const char* leftInverse;
        const char* right;
        const char* rightInverse;
    } rows[] = {
        {0, "", "hello", "", "hello"},
        {2, "he", "llo", "lo", "hel"},
        {5, "hello", "", "hello", ""},
        {70000, "hello", "", "hello", ""},
    };
    const qxString text("hello");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.count);
        EXPECT_STREQ(text.left(row.count), row.left);
        EXPECT_STREQ(text.left(row.count, true), row.leftInverse);
        EXPECT_STREQ(text.right(row.count), row.right);
        EXPECT_STREQ(text.right(row.count, true), row.rightInverse);
    }
}

TEST(qxString, slicesAtPatterns)
{
    const struct {
        const char* pattern;
        const char* leftShort;
        const char* leftLong;
        const char* rightShort;
        const char* rightLong;
    } rows[] = {
        {"/", "usr", "usr/local", "lib", "local/lib"},
        {"l", "usr/", "usr/local/", "ib", "ocal/lib"},
        {"LIB", "", "", "", ""}, // does not occur
        {"usr/local/lib", "", "", "", ""},
        {"", "", "usr/local/lib", "", "usr/local/lib"}, // occurs at 0 and at the end
    };
    const qxString text("usr/local/lib");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pattern);
        EXPECT_STREQ(text.leftOf(row.pattern), row.leftShort);
        EXPECT_STREQ(text.leftOf(row.pattern, false), row.leftLong);
        EXPECT_STREQ(text.rightOf(row.pattern), row.rightShort);
        EXPECT_STREQ(text.rightOf(row.pattern, false), row.rightLong);
    }
    EXPECT_STREQ(text.leftOf("LIB", true, false), "usr/local/");
    EXPECT_STREQ(text.rightOf("LOCAL", true, false), "/lib");
    EXPECT_STREQ(qxString("aaaa").rightOf("aa"), ""); // occurrences may overlap
    EXPECT_STREQ(qxString("aaaa").leftOf("aa", false), "aa");
}

// Every place a pattern can be found at, against the standard library's own search.
TEST(qxString, findsPatternsLikeTheStandardSearch)
{
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 40, 'a');
        std::string pattern(1 + random() % 5, 'a');
        for (char& c : text) c = static_cast<char>('a' + random() % 2);
        for (char& c : pattern) c = static_cast<char>('a' + random() % 2);
        SCOPED_TRACE(text + " / " + pattern);

        const std::size_t first = text.find(pattern);
        const std::size_t last = text.rfind(pattern);
        const qxString left = qxString(text.c_str()).leftOf(pattern.c_str());
        const qxString right = qxString(text.c_str()).rightOf(pattern.c_str());
        EXPECT_STREQ(left, first == std::string::npos ? "" : text.substr(0, first).c_str());
        EXPECT_STREQ(right, last == std::string::npos ? "" : text.substr(last + pattern.size()).c_str());
    }
}

// Texts in which nearly every position matches nearly the whole pattern.
TEST(qxString, findsInHostileTexts)
{
    const auto as = [](std::size_t count) { return std::string(count, 'a'); };
    const std::string b = "b";
    const struct {
        const char* name;
        std::string text;
        std::string pattern;
    } rows[] = {
        {"absent at the end", as(65535), as(30000) + b},
        {"absent at the start", as(65535), b + as(30000)},
        {"absent in the middle", as(65535), as(15000) + b + as(15000)},
        {"present at the end", as(65534) + b, as(30000) + b},
        {"present at the start", b + as(65534), b + as(30000)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const qxString text(row.text.data(), row.text.size());
        const qxString pattern(row.pattern.data(), row.pattern.size());
        const std::size_t expected = row.text.find(row.pattern);
        const std::size_t last = row.text.rfind(row.pattern);
        const bool isThere = expected != std::string::npos;
        unsigned short position = 0;
        EXPECT_EQ(text.contains(pattern, 0, true, &position), isThere);
        EXPECT_EQ(position, isThere ? expected : 0);
        EXPECT_EQ(text.leftOf(pattern, false).length(), isThere ? last : 0);
    }
}

TEST(qxString, stripsTheChosenEnds)
{
    const struct {
        bool leading;
        bool trailing;
        const char* character;
        const char* whiteSpace;
    } rows[] = {
        {true, true, "a-b", "x \v"},
        {true, false, "a-b--", "x \v\r\n"},
        {false, true, "--a-b", " \t\nx \v"},
        {false, false, "--a-b--", " \t\nx \v\r\n"},
    };
    for (const auto& row : rows) {
        qxString dashes("--a-b--");
        qxString blanks(" \t\nx \v\r\n");
        EXPECT_STREQ(dashes.strip('-', row.leading, row.trailing), row.character);
        EXPECT_STREQ(blanks.stripWhiteSpace(row.leading, row.trailing), row.whiteSpace);
    }
    EXPECT_TRUE(qxString("----").strip('-').isEmpty());
    EXPECT_TRUE(qxString(" \r\n").stripWhiteSpace().isEmpty());
}

TEST(qxString, substitutesTexts)
{
    const struct {
        const char* text;
        const char* from;
        const char* to;
        const char* result;
    } rows[] = {
        {"a.b.c", ".", "::", "a::b::c"}, {"aaa", "aa", "b", "ba"}, {"abc", "x", "y", "abc"},
        {"abc", "abc", "", ""},          {"abc", "", "x", "abc"},  {"aba", "a", "aa", "aabaa"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const qxString text(row.text);
        const qxString result = text.substitute(row.from, row.to);
        EXPECT_STREQ(result, row.result);
        EXPECT_STREQ(text, row.text);
        EXPECT_TRUE(result == qxString(row.result));
    }
}

TEST(qxString, substitutesCharacters)
{
    qxString text("a-b-c");
    EXPECT_EQ(text.substitute('-', '+'), 2u);
    EXPECT_EQ(text.substitute('x', 'y'), 0u);
    EXPECT_EQ(qxString().substitute('a', 'b'), 0u);
    EXPECT_STREQ(text, "a+b+c");
}

} // namespace
