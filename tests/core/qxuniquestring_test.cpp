// SPDX-License-Identifier: see LICENSE

#include "qxuniquestring.h"

#include "qxtestsupport.h"

#include <string>
#include <thread>
#include <vector>

namespace
{

// Each test has the table for itself.
class qxUniqueStringTest : public testing::Test
{
protected:
    ~qxUniqueStringTest() override { qxUniqueString::cleanAllUniqueId(); }

    static void fillTable()
    {
        for (unsigned int i = 0; i < 65535; ++i) ASSERT_TRUE(qxString(i, 16, 0).makeUnique());
    }
};

TEST_F(qxUniqueStringTest, equalTextsShareOneEntry)
{
    qxString first("name");
    qxString second("name");
    EXPECT_FALSE(first.isUnique());
    EXPECT_TRUE(first.makeUnique());
    EXPECT_TRUE(second.makeUnique());

    EXPECT_TRUE(first.isUnique());
    EXPECT_EQ(first.getUniqueID(), 1);
    EXPECT_EQ(second.getUniqueID(), 1);
    EXPECT_EQ(first.getString(), second.getString());
    EXPECT_EQ(first.hash(), qxString("name").hash());
}

TEST_F(qxUniqueStringTest, takesTheLowestFreeId)
{
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);
    const qxUniqueString second("second", 2);
    const qxUniqueString first(qxString("first"));
    const qxUniqueString third(qxString("third"));

    EXPECT_EQ(first.getUniqueID(), 1);
    EXPECT_EQ(third.getUniqueID(), 3);
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 4);
    EXPECT_FALSE(qxUniqueString::isFreeId(2));
    EXPECT_TRUE(qxUniqueString::isFreeId(65535));
    EXPECT_FALSE(qxUniqueString::isFreeId(0));
}

TEST_F(qxUniqueStringTest, oneTextHasOneId)
{
    qxString text("text");
    EXPECT_TRUE(text.makeUnique(5));
    EXPECT_TRUE(text.makeUnique(5));
    EXPECT_TRUE(text.makeUnique(6)); // it is unique already
    EXPECT_TRUE(qxString("text").makeUnique(5));

    qxString other("text");
    EXPECT_EQ(fatalText([&] { other.makeUnique(6); }),
              "Bad unique string (\"text\":6). String already used with ID (\"text\":5)");
    EXPECT_FALSE(other.isUnique());
    EXPECT_TRUE(qxUniqueString::isFreeId(6));
}

TEST_F(qxUniqueStringTest, oneIdHasOneText)
{
    const qxUniqueString text("100%", 5);
    EXPECT_EQ(fatalText([] { qxUniqueString("%s", 5); }),
              "Bad unique string (\"%s\":5). ID already used with string (\"100%\":5)");
}

TEST_F(qxUniqueStringTest, anIdAloneFindsItsText)
{
    const qxUniqueString text("text", 7);
    const qxUniqueString found(7);
    EXPECT_STREQ(found, "text");
    EXPECT_EQ(found.getString(), text.getString());

    const qxUniqueString named(9);
    EXPECT_STREQ(named, "Unique(9)");
    EXPECT_EQ(named.getUniqueID(), 9);
    EXPECT_EQ(qxUniqueString("Unique(9)", 9).getString(), named.getString());
}

TEST_F(qxUniqueStringTest, emptyTextsWithoutAnIdStayOrdinary)
{
    qxString empty;
    EXPECT_FALSE(empty.makeUnique());
    EXPECT_FALSE(empty.checkUnique());
    EXPECT_FALSE(qxUniqueString("").isUnique());
    EXPECT_FALSE(empty.isUnique());
}

TEST_F(qxUniqueStringTest, checkUniqueEntersNothing)
{
    qxString text("text");
    EXPECT_FALSE(text.checkUnique());
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);

    const qxUniqueString unique("text", 3);
    EXPECT_TRUE(text.checkUnique());
    EXPECT_EQ(text.getUniqueID(), 3);
    EXPECT_EQ(text.getString(), unique.getString());
    EXPECT_TRUE(text.checkUnique());
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

TEST_F(qxUniqueStringTest, copiesStayUniqueAndShareTheText)
{
    const qxUniqueString unique(qxString("text"));
    const qxString copy(unique);
    qxString assigned("some other text");
    assigned = unique;

    EXPECT_EQ(copy.getUniqueID(), unique.getUniqueID());
    EXPECT_EQ(copy.getString(), unique.getString());
    EXPECT_EQ(assigned.getString(), unique.getString());
    EXPECT_TRUE(assigned == copy);
}

// Every way to change a string, none of which may reach the table's text.
TEST_F(qxUniqueStringTest, changesNeverReachTheTable)
{
    const struct {
        const char* name;
        void (*change)(qxString&);
    } rows[] = {
        {"edit", [](qxString& s) { s(0) = 'X'; }},
        {"substitute", [](qxString& s) { s.substitute('t', 'X'); }},
        {"assign of the same length", [](qxString& s) { s = "XXXX"; }},
        {"assign a string", [](qxString& s) { s = qxString("XXXX"); }},
        {"+= char", [](qxString& s) { s += 'X'; }},
        {"+= itself", [](qxString& s) { s += s; }},
        {"toUpper", [](qxString& s) { s.toUpper(); }},
        {"reverse", [](qxString& s) { s.reverse(); }},
        {"strip", [](qxString& s) { s.strip('t'); }},
        {"scramble", [](qxString& s) { s.scramble(1); }},
        {"format", [](qxString& s) { s.format("%s", "XXXX"); }},
        {"clear", [](qxString& s) { s.clear(); }},
    };
    const qxUniqueString unique(qxString("text"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        qxString text(unique);
        row.change(text);
        EXPECT_FALSE(text.isUnique());
        EXPECT_FALSE(text == "text");
        EXPECT_STREQ(unique, "text");
        EXPECT_STREQ(qxUniqueString(unique.getUniqueID()), "text");
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

TEST_F(qxUniqueStringTest, aFullTableRefuses)
{
    fillTable();
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 0);

    qxString text("no hexadecimal number");
    EXPECT_FALSE(text.makeUnique());
    EXPECT_FALSE(text.isUnique());
    EXPECT_TRUE(qxString("abc").makeUnique()); // known
    EXPECT_EQ(qxUniqueString(static_cast<unsigned short>(65535)).getUniqueID(), 65535);
}

TEST_F(qxUniqueStringTest, cleaningEmptiesTheTable)
{
    fillTable();
    qxUniqueString::cleanAllUniqueId();
    EXPECT_EQ(qxUniqueString::getNextFreeId(), 1);
    EXPECT_FALSE(qxString("abc").checkUnique());
    EXPECT_EQ(qxUniqueString("abc", 77).getUniqueID(), 77);
}

TEST_F(qxUniqueStringTest, threadsEnterTheSameTexts)
{
    constexpr unsigned int TEXTS = 500;
    std::vector<std::vector<unsigned short>> ids(4);
    std::vector<std::thread> threads;
    for (std::vector<unsigned short>& mine : ids) {
        threads.emplace_back([&mine] {
            for (unsigned int i = 0; i < TEXTS; ++i)
                mine.push_back(qxUniqueString(qxString(i, 10, 0)).getUniqueID());
        });
    }
    for (std::thread& thread : threads) thread.join();

    for (const std::vector<unsigned short>& theirs : ids) EXPECT_EQ(theirs, ids[0]);
    EXPECT_EQ(qxUniqueString::getNextFreeId(), TEXTS + 1);
}

} // namespace
