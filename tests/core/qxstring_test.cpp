// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestsupport.h"

#include <string>
#include <utility>

namespace
{

const char* const TOO_MANY = "Too many characters in qxString";

std::string bytesOf(const qxString& text)
{
    return std::string(text.getString(), text.length());
}

TEST(qxString, isSmall)
{
    EXPECT_EQ(sizeof(qxString), 24u);
}

TEST(qxString, emptyOwnsNoBuffer)
{
    const char* null = nullptr;
    const qxString empties[] = {qxString(),        qxString(""),  qxString(null),      qxString("abc", 0),
                                qxString(null, 5), qxString(L""), qxString(qxString())};
    for (const qxString& empty : empties) {
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_TRUE(!empty);
        EXPECT_EQ(empty.length(), 0);
        EXPECT_EQ(empty.hash(), 0u);
        EXPECT_STREQ(empty.getString(), "");
        EXPECT_EQ(empty.getString(), qxString().getString()); // the one shared empty text
    }
}

TEST(qxString, copiesExactlyTheBytesGiven)
{
    const qxString text("ab\0cd", 5);

    EXPECT_EQ(bytesOf(text), std::string("ab\0cd", 5));
    EXPECT_EQ(bytesOf(qxString("abcdef", 3)), "abc");
    EXPECT_EQ(text.getString()[5], 0);
    EXPECT_TRUE(text == "ab"); // a plain text ends at its first zero byte
    EXPECT_FALSE(text == qxString("ab"));
}

TEST(qxString, writesIntegersInABase)
{
    EXPECT_STREQ(qxString(-255, 10, 0), "-255");
    EXPECT_STREQ(qxString(255, 16, 4), "00ff");
    EXPECT_STREQ(qxString(5LL, 2, 8), "00000101");
    EXPECT_STREQ(qxString(0xFFFFFFFFFFFFFFFFULL, 10, 0), "18446744073709551615");
    EXPECT_EQ(bytesOf(qxString(-7, 10, 100)), "-" + std::string(98, '0') + "7");
    EXPECT_EQ(qxString(1, 10, 65535).length(), 65535);
    EXPECT_EQ(fatalText([] { qxString(1, 10, 65536); }), TOO_MANY);
    EXPECT_STREQ(qxString(1, 17, 3), "");
}

TEST(qxString, formatsADouble)
{
    EXPECT_STREQ(qxString(2.5, "<%.2f>"), "<2.50>");
}

TEST(qxString, copyAndMove)
{
    qxString source("some text that is longer than a few bytes");
    qxString copy(source);
    EXPECT_NE(copy.getString(), source.getString());
    EXPECT_EQ(copy.hash(), source.hash());

    const char* const buffer = source.getString();
    const qxString moved(std::move(source));
    EXPECT_EQ(moved.getString(), buffer);
    EXPECT_TRUE(source.isEmpty()); // deliberate: a moved string is empty
    EXPECT_TRUE(moved == copy);
}

TEST(qxString, assignmentKeepsTheBufferOfAnEqualLength)
{
    qxString target("0123456789");
    const char* const buffer = target.getString();

    const qxString source("abcdefghij");
    target = source;
    EXPECT_STREQ(target, "abcdefghij");
    target = "ABCDEFGHIJ";
    EXPECT_EQ(target.getString(), buffer);
    EXPECT_STREQ(target, "ABCDEFGHIJ");
    EXPECT_EQ(target.hash(), qxString("ABCDEFGHIJ").hash());
}

TEST(qxString, assignmentTakesPartsOfItself)
{
    for (std::size_t start : {0, 1, 7, 40}) {
        SCOPED_TRACE(start);
        const std::string all = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz";
        qxString text(all.c_str());
        text = text.getString() + start;
        EXPECT_EQ(bytesOf(text), all.substr(start));
    }
    qxString same("x");
    const qxString& alias = same;
    same = alias;
    EXPECT_STREQ(same, "x");
}

TEST(qxString, refusesTextsThatAreTooLong)
{
    const std::string longest(65535, 'x');
    const std::string tooLong(65536, 'x');
    qxString text(longest.c_str());
    EXPECT_EQ(text.length(), 65535);

    EXPECT_EQ(fatalText([&] { qxString(tooLong.c_str()); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString(tooLong.data(), 65536 + 4); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString(L"xx", std::size_t{65536} * 65536, 1); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString("kept") = tooLong.c_str(); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += 'x'; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += L'x'; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += "x"; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text + text; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text.format("%s%s", text, "x"); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text.substitute("x", "xx"); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString::spaces(65536); }), TOO_MANY);
    EXPECT_EQ(bytesOf(text), longest); // what failed changed nothing
}

TEST(qxString, appendsEveryKindOfText)
{
    qxString text("a");
    text += qxString("bc");
    text += "d";
    text += 'e';
    text += L'\u00E9';
    text += static_cast<const char*>(nullptr);
    EXPECT_STREQ(text, "abcde\xC3\xA9");

    EXPECT_STREQ(qxString("a") + qxString("b"), "ab");
    EXPECT_STREQ(qxString("a") + "b", "ab");
    EXPECT_STREQ("a" + qxString("b"), "ab");
    EXPECT_STREQ(qxString("a") + 'b', "ab");
    EXPECT_STREQ(qxString("a") + L'\u20AC', "a\xE2\x82\xAC");
}

TEST(qxString, growsByteByByteUpToTheLongest)
{
    qxString text;
    std::string expected;
    for (unsigned int i = 0; i < qxString::MAX_LENGTH; ++i) {
        const char c = static_cast<char>('a' + i % 26);
        text += c;
        expected += c;
        if (i % 1000 == 0) {
            ASSERT_EQ(bytesOf(text), expected);
        }
    }
    EXPECT_EQ(bytesOf(text), expected);
    EXPECT_EQ(text.hash(), qxString(expected.c_str()).hash());
}

TEST(qxString, appendsPartsOfItself)
{
    for (std::size_t length : {1, 15, 16, 60, 127}) {
        SCOPED_TRACE(length);
        const std::string start(length, 'q');
        qxString text(start.c_str());
        text += text;
        text.append(text.getString() + 1, text.length()); // with the terminator
        EXPECT_EQ(bytesOf(text), start + start + (start + start).substr(1) + std::string(1, '\0'));
    }
}

TEST(qxString, hashFollowsItsRule)
{
    const struct {
        const char* text;
        unsigned int length;
        unsigned int hash;
    } rows[] = {
        {"a", 1, 0x62},
        {"abcd", 4, 0xACA5A6B7},
        {"abcdefgh", 8, 0x958D8D97},
        {"\xFF", 1, 0xFFFFFFFE},
        {"abcde\x80", 6, 0x9B9C9DBD},
        {"\x80\x81\x7F", 3, 0xFFFF817C},
        {"caf\xC3\xA9", 5, 0x3C999E93},
        {"a\0b", 3, 0x610065},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(qxString::hash(row.text, row.length), row.hash);
        EXPECT_EQ(qxString(row.text, row.length).hash(), row.hash);
    }
    EXPECT_EQ(qxString::hash("abcd", 0), 0xACA5A6B7); // measured
}

TEST(qxString, wrapHashFollowsItsRule)
{
    EXPECT_EQ(qxString().wrapHash(), 0u);
    EXPECT_EQ(qxString("ab").wrapHash(), 0x6261u);
    EXPECT_EQ(qxString("abcdefghi").wrapHash(), 0x6867666564636208u);
    EXPECT_EQ(qxString("\x80").wrapHash(), 0xFFFFFFFFFFFFFF80u);
    EXPECT_EQ(qxString("a\xFF").wrapHash(), 0xFFFFFFFFFFFFFF61u);
}

TEST(qxString, everyChangeRefreshesTheHash)
{
    const struct {
        const char* name;
        void (*change)(qxString&);
    } rows[] = {
        {"+= char", [](qxString& s) { s += 'c'; }},
        {"+= text", [](qxString& s) { s += "text"; }},
        {"toUpper", [](qxString& s) { s.toUpper(); }},
        {"toLower", [](qxString& s) { s.toLower(); }},
        {"reverse", [](qxString& s) { s.reverse(); }},
        {"strip", [](qxString& s) { s.strip(' '); }},
        {"scramble", [](qxString& s) { s.scramble(5); }},
        {"escape", [](qxString& s) { s.convertCtrlToText(); }},
        {"format", [](qxString& s) { s.format("<%s>", s); }},
        {"identifier", [](qxString& s) { s.identifier(12); }},
        {"assign", [](qxString& s) { s = "other"; }},
        {"clear", [](qxString& s) { s.clear(); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        qxString text(" Some\ttext");
        text.hash();
        row.change(text);
        EXPECT_EQ(text.hash(), qxString(text.getString()).hash());
        EXPECT_TRUE(text == qxString(text.getString()));
    }
}

TEST(qxString, singleCharacterEditsKeepTheOldHash)
{
    for (bool isBuilt : {false, true}) { // with the hash known, and not yet computed
        SCOPED_TRACE(isBuilt);
        qxString text(isBuilt ? "ab" : "abc");
        if (isBuilt) text += 'c';
        text(0) = 'x';

        EXPECT_TRUE(text == "xbc");
        EXPECT_FALSE(text == qxString("xbc"));
        EXPECT_EQ(text.hash(), qxString("abc").hash());
        EXPECT_TRUE(qxString(text) == text); // a copy equals its source
        EXPECT_TRUE(qxString(text.getString()) == qxString("xbc"));
    }
    qxString text("abca");
    EXPECT_EQ(text.substitute('a', 'x'), 2u);
    EXPECT_TRUE(text == "xbcx");
    EXPECT_FALSE(qxString("xbcx") == text);
}

TEST(qxString, aStringBuiltToTheSameTextIsUnequalToAnEditedOne)
{
    qxString edited("abc");
    edited(0) = 'x';
    qxString built("xb");
    built += 'c'; // its hash is not known before the comparison

    EXPECT_FALSE(edited == built);
    EXPECT_FALSE(built == edited);
}

TEST(qxString, comparesForEquality)
{
    const char* const texts[] = {"", "a", "b", "ab", "abcdefgh", "abcdefgi", "\xC3\xA9"};
    for (const char* left : texts) {
        for (const char* right : texts) {
            SCOPED_TRACE(std::string(left) + " with " + right);
            const bool isSame = std::string(left) == right;
            qxString built(left);
            built += 'x';
            built = built.left(static_cast<unsigned int>(std::string(left).size()));
            EXPECT_EQ(qxString(left) == qxString(right), isSame);
            EXPECT_EQ(built == qxString(right), isSame);
            EXPECT_EQ(qxString(left) != qxString(right), !isSame);
            EXPECT_EQ(qxString(left) == right, isSame);
            EXPECT_EQ(left == qxString(right), isSame);
            EXPECT_EQ(left != qxString(right), !isSame);
        }
    }
    EXPECT_TRUE(qxString() == static_cast<const char*>(nullptr));
}

TEST(qxString, readsAndEditsCharacters)
{
    qxString text("abc");
    const qxString& constant = text;
    text(2) = 'C';

    EXPECT_EQ(constant(2), 'C');
    EXPECT_EQ(fatalText([&] { text(3) = 'x'; }), "qxString(index) out of bounds");
    EXPECT_EQ(fatalText([&] { constant(65536); }), "qxString(index) out of bounds");
    EXPECT_EQ(fatalText([&] { qxString()(0) = 'x'; }), "qxString(index) out of bounds");
}

TEST(qxString, cutsRanges)
{
    const qxString text("hello");
    EXPECT_STREQ(text(1, 3), "ell");
    EXPECT_STREQ(text(5, 0), "");
    EXPECT_STREQ(text(0, 5), "hello");

    const std::pair<unsigned int, unsigned int> outside[] = {
        {6, 0}, {5, 1}, {0, 6}, {65535, 2}, {4, 0xFFFFFFFF}};
    for (const auto& [index, count] : outside) {
        SCOPED_TRACE(index);
        EXPECT_EQ(fatalText([&, index = index, count = count] { text(index, count); }),
                  "qxString(index,len) out of bounds");
    }
}

TEST(qxString, convertsToTextAndTypes)
{
    const char* const plain = qxString("kept") == "kept" ? "yes" : "no";
    EXPECT_STREQ(plain, "yes");
    EXPECT_STREQ(qxString::getClassType()->getName(), "qxString");
    EXPECT_EQ(qxString::getClassType()->getParent(), nullptr);
    EXPECT_EQ(qxString("a").getType(), &qxString::s_type);
}

} // namespace
