// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <algorithm>
#include <sstream>

namespace
{

class IdTool : public Tool
{
protected:
    /// The new identifiers that these words give, each without its end of line.
    std::vector<std::string> makeIds(const std::string& words)
    {
        EXPECT_EQ(run("id new " + words), 0) << err;
        std::vector<std::string> ids;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);) ids.push_back(line);
        return ids;
    }
};

TEST_F(IdTool, makesIdsOfTheVersionAskedFor)
{
    const struct {
        const char* words;
        std::size_t count;
        char version;
    } rows[] = {
        {"", 1, '1'}, {"--v1 -n 3", 3, '1'}, {"-n=2 --v4", 2, '4'}, {"--v7 -n 5", 5, '7'}, {"-n 0", 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.words);
        std::vector<std::string> ids = makeIds(row.words);
        ASSERT_EQ(ids.size(), row.count);
        for (const std::string& id : ids) {
            EXPECT_EQ(id.size(), 38U);
            EXPECT_EQ(id.find_first_not_of("{0123456789ABCDEF-}"), std::string::npos) << id;
            EXPECT_EQ(id[15], row.version);
        }
        EXPECT_TRUE(row.version != '7' || std::is_sorted(ids.begin(), ids.end()));
        std::sort(ids.begin(), ids.end());
        EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
    }
}

TEST_F(IdTool, takesIdsApart)
{
    expectAnswers(
        "",
        "id show {1419d680-1dd2-11b2-9234-56789ABCDEF0} => guid {1419D680-1DD2-11B2-9234-56789ABCDEF0}\n"
        "variant standard\nversion 1\ntime 1970-01-01 00:00:01\nnode 56789ABCDEF0\n",
        "id show 00000000-0000-1000-C000-000000000000 => guid {00000000-0000-1000-C000-000000000000}\n"
        "variant microsoft\nversion 1\ntime 1582-10-15 00:00:00\nnode 000000000000\n",
        "id show 00000000-0000-0000-0000-000000000000 => guid {00000000-0000-0000-0000-000000000000}\n"
        "variant ncs\nversion 0\n",
        "id show 017F22E2-79B0-7CC3-98C4-DC0C0C07398F => guid {017F22E2-79B0-7CC3-98C4-DC0C0C07398F}\n"
        "variant standard\nversion 7\ntime 2022-02-22 19:22:22\n",
        "id show {FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF} => guid {FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}\n"
        "variant future\nversion 15\n",
        "id show FFFFFFFF-FFFF-7000-8000-000000000000 => guid {FFFFFFFF-FFFF-7000-8000-000000000000}\n"
        "variant standard\nversion 7\ntime 10889-08-02 05:31:50\n");
}

TEST_F(IdTool, tellsWhatIsWrongWithAnId)
{
    const std::string warning = "3 qx: warning: Malformed qxGUID ";
    expectAnswers("", "id show '' => " + warning + "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}\n",
                  "id show {00000000-0000-0000-0000-000000000000 => " + warning +
                      "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}\n",
                  "id show 00000000-000G-0000-0000-000000000000 => " + warning +
                      "{XXXXXXXX-????"
                      "-XXXX-XXXX-XXXXXXXXXXXX}\n",
                  "id show => 2 qx: error: id show: GUID is missing; see qx id show --help\n",
                  "id new -n 1x => 2 qx: error: '1x' is no count; see qx id new --help\n",
                  "id new --v4 --v7 => 2 qx: error: an id has one version only; see qx id new --help\n",
                  "id new {} => 2 qx: error: argument '{}' is one too many; see qx id new --help\n");
}

} // namespace
