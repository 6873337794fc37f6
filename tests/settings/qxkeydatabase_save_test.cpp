// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include "settings/qxsettingstest.h"
#include "settings/qxwriterprogram.h"

#include <chrono>
#include <random>
#include <set>
#include <string>

namespace
{

class qxKeyDatabaseSave : public Settings
{
protected:
    /// The names of the keys that the file holds.
    std::set<std::string> savedNames() const
    {
        EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
        std::set<std::string> names;
        for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys("a/b")) {
            EXPECT_EQ(entry.value, entry.name);
            names.insert(entry.name.getString());
        }
        return names;
    }
};

void spin(std::chrono::microseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {}
}

TEST_F(qxKeyDatabaseSave, aProgramThatIsKilledLosesNothingThatItHasSaved)
{
    std::minstd_rand random(7);
    std::set<std::string> said;
    for (int round = 0; round < WriterProgram::QUICK_ROUNDS; ++round) {
        SCOPED_TRACE(round);
        WriterProgram writer(url(), "k" + std::to_string(round) + "_", 1000000);
        for (auto left = random() % 3 + 1; left != 0; --left) said.insert(writer.readName());
        spin(std::chrono::microseconds(random() % 4000));
        writer.kill();
        for (std::string name = writer.readName(); !name.empty(); name = writer.readName()) said.insert(name);
        writer.wait();

        const std::set<std::string> saved = savedNames();
        for (const std::string& name : said) ASSERT_TRUE(saved.contains(name)) << name;
        ASSERT_LE(folder.count(), 3U); // the document, its lock, and what was being written
    }
    ASSERT_TRUE(set("a/b", "last", "last"));
    EXPECT_EQ(folder.count(), 2U);
}

TEST_F(qxKeyDatabaseSave, twoProgramsAtOnceLoseNoKey)
{
    WriterProgram one(url(), "one", 100);
    WriterProgram other(url(), "other", 100);
    EXPECT_EQ(one.wait(), 0);
    EXPECT_EQ(other.wait(), 0);
    EXPECT_EQ(savedNames().size(), 200U);
}

} // namespace
