// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

#include <random>
#include <string>
#include <vector>

namespace
{

typedef std::vector<qxString> Texts;

// The parts of a question, which "|" divides.
Texts cut(const std::string& question)
{
    Texts texts;
    std::size_t start = 0;
    for (std::size_t end = 0; end != std::string::npos; start = end + 1) {
        end = question.find('|', start);
        texts.push_back(question.substr(start, end - start).c_str());
    }
    return texts;
}

TEST(qxString, findsCharacters)
{
    const qxString text("abcabc");
    EXPECT_EQ(text.find('c'), 2u);
    EXPECT_EQ(text.find('c', 3), 5u);
    EXPECT_EQ(text.find('a', 4), 6u); // none: the length
    EXPECT_EQ(text.find('a', 9), 9u); // beyond the end: the start
    EXPECT_EQ(qxString().find('a'), 0u);
}

TEST(qxString, comparesBeginnings)
{
    const auto compare = [](bool caseSensitive) {
        return [=](const std::string& question) {
            const Texts texts = cut(question);
            unsigned short matched = 999;
            const bool begins = texts[0].compare(texts[1], caseSensitive, &matched);
            EXPECT_EQ(texts[0].compare(texts[1], caseSensitive), begins);
            EXPECT_EQ(texts[0].isFirst(texts[1], caseSensitive), begins);
            return (begins ? "yes " : "no ") + std::to_string(matched);
        };
    };
    expectRows(compare(true), "abc|ab => yes 2", "ab|abc => no 2", "ABC|abc => no 0", "abc| => yes 0",
               "| => yes 0", "0123456789abcdef|0123456789abcdeX => no 15",
               "0123456789abcdef|0123456X89abcdef => no 7");
    expectRows(compare(false), "ABC|abc => yes 3", "|a => no 0", "0123456789ABCDEF|0123456789abcdeX => no 15",
               "\xC3\xA9|\xC3\x89 => no 1", "[|{ => no 0"); // only ASCII letters have a case
}

TEST(qxString, containsTellsThePosition)
{
    const struct {
        const char* pattern;
        unsigned int start;
        bool caseSensitive;
        unsigned short position; // 77: not found, and left alone
    } rows[] = {{"one", 0, true, 0},  {"one", 1, true, 8},  {"TWO", 0, false, 4}, {"", 11, true, 11},
                {"TWO", 0, true, 77}, {"one", 9, true, 77}, {"", 12, true, 77}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.position);
        unsigned short position = 77;
        EXPECT_EQ(qxString("one two one").contains(row.pattern, row.start, row.caseSensitive, &position),
                  row.position != 77);
        EXPECT_EQ(position, row.position);
    }
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
    const auto slice = [](const std::string& question) {
        const qxString text("hello");
        const auto count = static_cast<unsigned int>(std::stoul(question));
        return bytesOf(qxString::str("%s|%s|%s|%s", text.left(count), text.left(count, true),
                                     text.right(count), text.right(count, true)));
    };
    expectRows(slice, "0 => |hello||hello", "2 => he|llo|lo|hel", "70000 => hello||hello|");
}

TEST(qxString, slicesAtPatterns)
{
    const auto slice = [](bool caseSensitive) {
        return [=](const std::string& question) {
            const Texts texts = cut(question);
            const qxString& pattern = texts[1];
            return bytesOf(qxString::str("%s|%s|%s|%s", texts[0].leftOf(pattern, true, caseSensitive),
                                         texts[0].leftOf(pattern, false, caseSensitive),
                                         texts[0].rightOf(pattern, true, caseSensitive),
                                         texts[0].rightOf(pattern, false, caseSensitive)));
        };
    };
    expectRows(slice(true), "usr/local/lib|/ => usr|usr/local|lib|local/lib", "usr/local/lib|LIB => |||",
               "usr/local/lib|usr/local/lib => |||", "usr/local/lib| => |usr/local/lib||usr/local/lib",
               "aaaa|aa => |aa||aa"); // occurrences may overlap
    expectRows(slice(false), "usr/local/lib|L => usr/|usr/local/|ib|ocal/lib");
    EXPECT_STREQ(qxString("a.b.c").leftOf("."), "a"); // the shorter part without being asked
    EXPECT_STREQ(qxString("a.b.c").rightOf("."), "c");
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
        EXPECT_STREQ(qxString("--a-b--").strip('-', row.leading, row.trailing), row.character);
        EXPECT_STREQ(qxString(" \t\nx \v\r\n").stripWhiteSpace(row.leading, row.trailing), row.whiteSpace);
    }
    EXPECT_TRUE(qxString("----").strip('-').isEmpty());
    EXPECT_TRUE(qxString(" \r\n").stripWhiteSpace().isEmpty());
}

TEST(qxString, substitutesTexts)
{
    const auto substitute = [](const std::string& question) {
        const Texts texts = cut(question);
        const qxString result = texts[0].substitute(texts[1], texts[2]);
        EXPECT_EQ(result.hash(), qxString(result.getString()).hash());
        return bytesOf(result);
    };
    expectRows(substitute, "a.b.c|.|:: => a::b::c", "aaa|aa|b => ba", "abc|x|y => abc", "abc|abc| => ",
               "abc||x => abc", "aba|a|aa => aabaa");
}

} // namespace
