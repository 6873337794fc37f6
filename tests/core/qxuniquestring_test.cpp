// SPDX-License-Identifier: see LICENSE

#include "qxuniquestring.h"

#include "qxtesttexts.h"
#include "qxtestthreads.h"

#include <string>
#include <vector>

namespace
{

// Each test has the table for itself.
class qxUniqueStringTest : public testing::Test
{
protected:
    ~qxUniqueStringTest() override { qxUniqueString::cleanAllUniqueId(); }
};

TEST_F(qxUniqueStringTest, equalTextsShareOneEntry)
{
    qxString first("name");
    EXPECT_FALSE(first.isUnique());
    EXPECT_TRUE(first.makeUnique());
    const qxUniqueString second(qxString("name"));
    const qxString copy(second);
    qxString assigned("some other text");
    assigned = copy;

    EXPECT_EQ(first.hash(), qxString("name").hash());
    const qxString* const all[] = {&first, &second, &copy, &assigned};
    for (const qxString* text : all) {
        EXPECT_TRUE(text->isUnique());
        EXPECT_EQ(text->getUniqueID(), 1);
        EXPECT_EQ(text->getString(), first.getString());
        EXPECT_TRUE(*text == first);
    }
}

TEST_F(qxUniqueStringTest, takesTheLowestFreeId)
{
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);
    const qxUniqueString second("second", 2);
    EXPECT_EQ(qxUniqueString(qxString("first")).getUniqueID(), 1);
    EXPECT_EQ(qxUniqueString(qxString("third")).getUniqueID(), 3);

    EXPECT_EQ(qxUniqueString::getNextFreeId(), 4);
    EXPECT_FALSE(qxUniqueString::isFreeId(2));
    EXPECT_TRUE(qxUniqueString::isFreeId(65535));
    EXPECT_FALSE(qxUniqueString::isFreeId(0));
}

TEST_F(qxUniqueStringTest, oneTextHasOneIdAndOneIdOneText)
{
    qxString text("100%");
    EXPECT_TRUE(text.makeUnique(5));
    EXPECT_TRUE(text.makeUnique(5));
    EXPECT_TRUE(text.makeUnique(6)); // it is unique already
    EXPECT_TRUE(qxString("100%").makeUnique(5));

    qxString other("100%");
    EXPECT_EQ(fatalText([&] { other.makeUnique(6); }),
              "Bad unique string (\"100%\":6). String already used with ID (\"100%\":5)");
    EXPECT_FALSE(other.isUnique());
    EXPECT_TRUE(qxUniqueString::isFreeId(6));
    EXPECT_EQ(fatalText([] { qxUniqueString("%s", 5); }),
              "Bad unique string (\"%s\":5). ID already used with string (\"100%\":5)");
}

TEST_F(qxUniqueStringTest, anIdAloneFindsItsText)
{
    const qxUniqueString text("text", 7);
    EXPECT_EQ(qxUniqueString(7).getString(), text.getString());

    const qxUniqueString named(9);
    EXPECT_STREQ(named, "Unique(9)");
    EXPECT_EQ(named.getUniqueID(), 9);
    EXPECT_EQ(qxUniqueString("Unique(9)", 9).getString(), named.getString());

    const qxUniqueString inTheWay("Unique(8)", 3);
    EXPECT_EQ(fatalText([] { qxUniqueString(8); }),
              "Bad unique string (\"Unique(8)\":8). String already used with ID (\"Unique(8)\":3)");
}

TEST_F(qxUniqueStringTest, checkUniqueEntersNothing)
{
    qxString empty;
    EXPECT_FALSE(empty.makeUnique()); // without an ID an empty text stays ordinary
    EXPECT_FALSE(empty.checkUnique());
    qxString text("text");
    EXPECT_FALSE(text.checkUnique());
    EXPECT_FALSE(text.isUnique() || empty.isUnique());
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);

    const qxUniqueString unique("text", 3);
    EXPECT_TRUE(text.checkUnique());
    EXPECT_TRUE(text.checkUnique());
    EXPECT_EQ(text.getUniqueID(), 3);
    EXPECT_EQ(text.getString(), unique.getString());
}

TEST_F(qxUniqueStringTest, comparingTurnsAnEqualStringUnique)
{
    const qxUniqueString unique(qxString("text"));
    const qxString left("text");
    const qxString right("text");
    const qxString other("test");

    EXPECT_TRUE(left == unique);
    EXPECT_TRUE(unique == right);
    EXPECT_FALSE(other == unique);
    EXPECT_TRUE(left.isUnique());
    EXPECT_EQ(right.getString(), unique.getString());
    EXPECT_FALSE(other.isUnique());
    EXPECT_FALSE(qxUniqueString("test") == left);
}

// Every way to change a string. None may reach the table's text, and all refresh the hash but the edits of characters.
TEST_F(qxUniqueStringTest, aChangedStringHasItsOwnTextAndHash)
{
    const struct {
        const char* name;
        void (*change)(qxString&);
        bool isEdit = false;
    } rows[] = {
        {"edit", [](qxString& s) { s(0) = 'X'; }, true},
        {"substitute", [](qxString& s) { s.substitute('t', 'X'); }, true},
        {"assign of the same length", [](qxString& s) { s = "XXXXXXXXXX"; }},
        {"assign a string", [](qxString& s) { s = qxString("XXXXXXXXXX"); }},
        {"clear", [](qxString& s) { s.clear(); }},
        {"+= char", [](qxString& s) { s += 'X'; }},
        {"+= itself", [](qxString& s) { s += s; }},
        {"toUpper", [](qxString& s) { s.toUpper(); }},
        {"toLower", [](qxString& s) { s.toLower(); }},
        {"reverse", [](qxString& s) { s.reverse(); }},
        {"strip", [](qxString& s) { s.strip(' '); }},
        {"stripWhiteSpace", [](qxString& s) { s.stripWhiteSpace(); }},
        {"scramble", [](qxString& s) { s.scramble(1); }},
        {"escape", [](qxString& s) { s.convertCtrlToText(); }},
        {"format", [](qxString& s) { s.format("<%s>", s); }},
        {"identifier", [](qxString& s) { s.identifier(12); }},
    };
    const char* const original = " Some\ttext";
    const qxUniqueString unique{qxString(original)};
    for (const auto& row : rows) {
        for (const qxString& source : {qxString(original), qxString(unique)}) {
            SCOPED_TRACE(row.name);
            qxString text(source);
            text.hash();
            row.change(text);
            EXPECT_FALSE(text.isUnique());
            EXPECT_FALSE(text == original);
            EXPECT_EQ(text.hash(), qxString(row.isEdit ? original : text.getString()).hash());
            EXPECT_STREQ(unique, original);
        }
    }
}

TEST_F(qxUniqueStringTest, anEditedStringIsEnteredWithItsOwnHash)
{
    const qxUniqueString known("xbc", 4);
    qxString edited("abc");
    edited(0) = 'x';
    EXPECT_TRUE(edited.makeUnique());
    EXPECT_EQ(edited.getUniqueID(), 4);
    EXPECT_EQ(edited.hash(), qxString("xbc").hash());
}

TEST_F(qxUniqueStringTest, aFullTableRefusesUntilItIsCleaned)
{
    for (unsigned int i = 0; i < 65535; ++i) ASSERT_TRUE(qxString(i, 16, 0).makeUnique());
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 0);
    {
        qxString text("no hexadecimal number");
        EXPECT_FALSE(text.makeUnique());
        EXPECT_FALSE(text.isUnique());
        EXPECT_TRUE(qxString("abc").makeUnique()); // known
        EXPECT_EQ(qxUniqueString(static_cast<unsigned short>(65535)).getUniqueID(), 65535);
    }
    qxUniqueString::cleanAllUniqueId();
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);
    EXPECT_FALSE(qxString("abc").checkUnique());
    EXPECT_EQ(qxUniqueString("abc", 77).getUniqueID(), 77);
}

TEST_F(qxUniqueStringTest, threadsEnterTheSameTexts)
{
    constexpr unsigned int TEXTS = 500;
    std::vector<std::vector<unsigned short>> ids(4);
    onThreads(4, [&](unsigned int number) {
        for (unsigned int i = 0; i < TEXTS; ++i)
            ids[number].push_back(qxUniqueString(qxString(i, 10, 0)).getUniqueID());
    });
    for (const std::vector<unsigned short>& theirs : ids) EXPECT_EQ(theirs, ids[0]);
    EXPECT_EQ(qxUniqueString::getNextFreeId(), TEXTS + 1);
}

} // namespace
