// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

#include <string>
#include <utility>

namespace
{

const char* const TOO_MANY = "Too many characters in qxString";

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
    EXPECT_EQ(text.getString()[5], 0);
    EXPECT_TRUE(text == "ab"); // a plain text ends at its first zero byte
    EXPECT_FALSE(text == qxString("ab"));
}

TEST(qxString, writesNumbers)
{
    EXPECT_STREQ(qxString(-255, 10, 0), "-255");
    EXPECT_STREQ(qxString(255, 16, 4), "00ff");
    EXPECT_STREQ(qxString(0xFFFFFFFFFFFFFFFFULL, 10, 0), "18446744073709551615");
    EXPECT_EQ(bytesOf(qxString(-7, 10, 100)), "-" + std::string(98, '0') + "7");
    EXPECT_EQ(qxString(1, 10, 65535).length(), 65535);
    EXPECT_STREQ(qxString(1, 17, 3), "");
    EXPECT_STREQ(qxString(2.5, "<%.2f>"), "<2.50>");
}

TEST(qxString, copyAndMove)
{
    qxString source("some text that is longer than a few bytes");
    const qxString copy(source);
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
    EXPECT_STREQ(target, "ABCDEFGHIJ");
    EXPECT_EQ(target.getString(), buffer);
}

TEST(qxString, takesPartsOfItself)
{
    const std::string all = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz";
    for (std::size_t start : {0U, 1U, 7U, 40U}) {
        qxString text(all.c_str());
        text = text.getString() + start;
        EXPECT_EQ(bytesOf(text), all.substr(start));
    }
    for (std::size_t length : {1U, 15U, 16U, 60U, 127U}) {
        SCOPED_TRACE(length);
        const std::string start(length, 'q');
        qxString text(start.c_str());
        const qxString& alias = text;
        text = alias;
        text += text;
        text.append(text.getString() + 1, text.length()); // with the terminator
        EXPECT_EQ(bytesOf(text), start + start + (start + start).substr(1) + std::string(1, '\0'));
    }
}

TEST(qxString, refusesTextsThatAreTooLong)
{
    const std::string longest(65535, 'x');
    const std::string tooLong(65536, 'x');
    qxString text(longest.c_str());
    const auto wide = [] { qxString(L"xx", std::size_t{65536} * 65536, 1); };
    const std::wstring euros(21846, L'\u20AC'); // three bytes each

    EXPECT_EQ(fatalText([&] { qxString(tooLong.c_str()); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString(tooLong.data(), 65536 + 4); }), TOO_MANY);
    EXPECT_EQ(fatalText(wide), TOO_MANY);
    EXPECT_EQ(fatalText([&] { qxString(euros.c_str()); }), TOO_MANY);
    EXPECT_EQ(qxString(euros.data(), 21845).length(), 65535);
    EXPECT_EQ(fatalText([] { qxString(1, 10, 65536); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text = tooLong.c_str(); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += 'x'; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += L'x'; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text += "x"; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text + text; }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text.format("%s%s", text, "x"); }), TOO_MANY);
    EXPECT_EQ(fatalText([&] { text.substitute("x", "xx"); }), TOO_MANY);
    EXPECT_EQ(fatalText([] { qxString::spaces(65536); }), TOO_MANY);
    EXPECT_EQ(fatalText([] { qxString::spaces(40000, '\xE9').convertAsciiToUTF8(); }), TOO_MANY);
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
        if (i % 1000 == 1) {
            ASSERT_EQ(bytesOf(text), expected);
        }
        const char c = static_cast<char>('a' + i % 26);
        text += c;
        expected += c;
    }
    EXPECT_EQ(bytesOf(text), expected);
    EXPECT_EQ(text.hash(), qxString(expected.c_str()).hash());
}

TEST(qxString, hashesFollowTheirRules)
{
    const auto hash = [](const std::string& text) {
        EXPECT_EQ(qxString(text.c_str()).hash(), qxString::hash(text.c_str(), 0)); // measured
        return bytesOf(
            qxString::str("%x", qxString::hash(text.data(), static_cast<unsigned int>(text.size()))));
    };
    expectRows(hash, "a => 62", "abcd => aca5a6b7", "abcdefgh => 958d8d97", "\xFF => fffffffe",
               "abcde\x80 => 9b9c9dbd", "\x80\x81\x7F => ffff817c", "caf\xC3\xA9 => 3c999e93");
    EXPECT_EQ(qxString("a\0b", 3).hash(), 0x610065u);

    const auto wrapHash = [](const std::string& text) {
        return bytesOf(qxString::str("%x", qxString(text.c_str()).wrapHash()));
    };
    expectRows(wrapHash, " => 0", "abcdefghi => 6867666564636208", "\x80 => ffffffffffffff80",
               "a\xFF => ffffffffffffff61");
}

TEST(qxString, singleCharacterEditsKeepTheOldHash)
{
    for (bool isBuilt : {false, true}) { // with the hash known, and not yet computed
        SCOPED_TRACE(isBuilt);
        qxString text(isBuilt ? "ab" : "abc");
        qxString other(isBuilt ? "xbc" : "xb");
        if (isBuilt) text += 'c';
        if (!isBuilt) other += 'c';
        text(0) = 'x';

        EXPECT_TRUE(text == "xbc");
        EXPECT_FALSE(text == other);
        EXPECT_FALSE(other == text);
        EXPECT_EQ(text.hash(), qxString("abc").hash());
        EXPECT_TRUE(qxString(text) == text); // a copy equals its source
        EXPECT_TRUE(qxString(text.getString()) == other);
    }
    qxString text("abca");
    EXPECT_EQ(text.substitute('a', 'x'), 2u);
    EXPECT_EQ(text.substitute('a', 'y'), 0u);
    EXPECT_TRUE(text == "xbcx");
    EXPECT_EQ(text.hash(), qxString("abca").hash());
}

TEST(qxString, comparesForEquality)
{
    const std::string texts[] = {"", "a", "b", "ab", "abcdefgh", "abcdefgi", "\xC3\xA9"};
    for (const std::string& left : texts) {
        for (const std::string& right : texts) {
            SCOPED_TRACE(left + " with " + right);
            const bool isSame = left == right;
            const qxString first(left.c_str());
            const qxString second(right.c_str());
            const qxString built = (first + 'x').left(first.length()); // its hash is not known yet
            EXPECT_EQ(first == second, isSame);
            EXPECT_EQ(built == second, isSame);
            EXPECT_EQ(first != second, !isSame);
            EXPECT_EQ(first == right.c_str(), isSame);
            EXPECT_EQ(left.c_str() != second, !isSame);
        }
    }
    EXPECT_TRUE(qxString() == static_cast<const char*>(nullptr));
}

// An edited copy has the hash of its source, so that the bytes alone tell them apart.
TEST(qxString, comparesEveryByte)
{
    for (unsigned int length = 1; length <= 140; ++length) {
        const qxString text = qxString::spaces(length);
        text.hash(); // known, so that it is compared first
        ASSERT_TRUE(text == qxString(text));
        for (unsigned int index = 0; index < length; ++index) {
            qxString edited(text);
            edited(index) = 'x';
            ASSERT_FALSE(text == edited) << length << ' ' << index;
        }
    }
}

TEST(qxString, readsAndEditsCharacters)
{
    qxString text("abc");
    const qxString& constant = text;
    text(2) = 'C';

    EXPECT_EQ(constant(2), 'C');
    EXPECT_EQ(fatalText([&] { text(3) = 'x'; }), "qxString(index) out of bounds");
    EXPECT_EQ(fatalText([&] { constant(65536); }), "qxString(index) out of bounds");
    EXPECT_EQ(fatalText([] { qxString()(0) = 'x'; }), "qxString(index) out of bounds");
}

TEST(qxString, cutsRanges)
{
    const qxString text("hello");
    EXPECT_STREQ(text(1, 3), "ell");
    EXPECT_STREQ(text(5, 0), "");
    for (const auto& [index, count] :
         {std::pair(6u, 0u), {5u, 1u}, {0u, 6u}, {65535u, 2u}, {4u, 0xFFFFFFFFu}}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(fatalText([&, index = index, count = count] { text(index, count); }),
                  "qxString(index,len) out of bounds");
    }
}

TEST(qxString, hasARootType)
{
    EXPECT_STREQ(qxString::getClassType()->getName(), "qxString");
    EXPECT_EQ(qxString::getClassType()->getParent(), nullptr);
    EXPECT_EQ(qxString("a").getType(), qxString::getClassType());
}

} // namespace
