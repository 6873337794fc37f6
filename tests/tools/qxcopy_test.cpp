// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <regex>

namespace
{

class CopyTool : public Tool
{
protected:
    /// The last line of standard error, with the rate as "R".
    std::string tally() const { return std::regex_replace(err, std::regex("[0-9.]+ MB/s"), "R MB/s"); }
};

TEST_F(CopyTool, catPrintsOneBehindTheOther)
{
    file("a", "1\r\n");
    file("b.hex", "0A 0D\n00");
    EXPECT_EQ(run("cat a b.hex?encoding=hex file:a - ", "in\n"), 0);
    EXPECT_EQ(out, std::string("1\r\n\n\r\0", 6) + "1\r\nin\n");
    EXPECT_EQ(err, "");
}

TEST_F(CopyTool, catGoesOnBehindWhatItCanNotRead)
{
    file("a", "text");
    file("b", "zz");
    EXPECT_EQ(
        answer("cat none a 'b?encoding=hex' a"),
        "4 texttextqx: warning: URL Adapter (none) Error:Could not open 'none' for reading (No such file or "
        "directory)\nqx: error: b?encoding=hex: No hexadecimal digit at offset 0\n");
    EXPECT_EQ(answer("cat 'b?encoding=hex'"),
              "3 qx: error: b?encoding=hex: No hexadecimal digit at offset 0\n");
    EXPECT_EQ(run("cat"), 2);
    EXPECT_EQ(run("cat mem:1,2"), 2);
    EXPECT_EQ(err, "qx: error: 'mem:1,2' names memory of another program; see qx cat --help\n");
}

TEST_F(CopyTool, copiesAnyBytes)
{
    std::string bytes(3000000, '\0');
    unsigned int value = 1;
    for (char& c : bytes) c = static_cast<char>((value = value * 69069U + 1U) >> 24);
    file("a", bytes);
    EXPECT_EQ(run("copy a b"), 0);
    EXPECT_TRUE(content("b") == bytes);
    EXPECT_EQ(run("copy - file:c", bytes), 0);
    EXPECT_TRUE(content("c") == bytes);
    EXPECT_EQ(run("copy a -"), 0);
    EXPECT_TRUE(out == bytes);
    EXPECT_EQ(tally(), "qx: 3000000 bytes, R MB/s, CRC-32 90B52042\n");
    EXPECT_EQ(run("copy - d", ""), 0);
    EXPECT_EQ(content("d"), "");
    EXPECT_EQ(tally(), "qx: 0 bytes, R MB/s, CRC-32 00000000\n");
}

TEST_F(CopyTool, decodesAndThenEncodes)
{
    for (const std::string form : {"b64", "hex", "gz"}) {
        SCOPED_TRACE(form);
        file("a", "hello hello");
        EXPECT_EQ(run("copy a coded --encode " + form), 0);
        EXPECT_EQ(tally(), "qx: 11 bytes, R MB/s, CRC-32 012DA640\n");
        EXPECT_EQ(run("copy coded hexed --decode " + form + " --encode hex"), 0);
        EXPECT_EQ(content("hexed"), "68656C6C6F2068656C6C6F");
        EXPECT_EQ(tally(), "qx: 11 bytes, R MB/s, CRC-32 012DA640\n");
        EXPECT_EQ(run("copy 'coded?encoding=" + form + "' 'hexed?encoding=hex'"), 0);
        EXPECT_EQ(content("hexed"), "68656C6C6F2068656C6C6F");
    }
    EXPECT_EQ(run("copy a a --encode b64"), 0); // onto itself
    EXPECT_EQ(content("a"), "aGVsbG8gaGVsbG8=");
    EXPECT_EQ(run("copy a b --encode rot13"), 2);
    EXPECT_EQ(run("copy a 'b?encoding=rot13'"), 2);
    EXPECT_EQ(err, "qx: error: unknown encoding 'rot13'; see qx copy --help\n");
}

TEST_F(CopyTool, whatFailsLeavesTheTarget)
{
    file("old", "old");
    file("large", std::string(200000, 'A') + "*");
    file("cut.gz", "\x1F\x8B\x08");
    const auto files = countFiles();
    const struct {
        const char* words;
        const char* answer;
    } rows[] = {
        {"copy large old --decode b64", "3 qx: error: large: No character of Base64 at offset 200000\n"},
        {"copy cut.gz old --decode gz", "3 qx: error: cut.gz: Compressed data ends too early at offset 3\n"},
        {"copy 'large?encoding=hex' old",
         "3 qx: error: large?encoding=hex: No hexadecimal digit at offset 200000\n"},
        {"copy large old --limit 200000", "5 qx: error: More than 200000 bytes\n"},
        {"copy large old --limit 195k", "5 qx: error: More than 199680 bytes\n"},
        {"copy large old --limit 10 --encode gz", "5 qx: error: More than 10 bytes\n"},
        {"copy none old",
         "4 qx: warning: URL Adapter (none) Error:Could not open 'none' for reading (No such file or "
         "directory)\n"},
        {"copy nobody:x old", "4 qx: warning: Could not create URL Adapter 'nobody:x'\n"},
        {"copy large old --limit 1T", "2 qx: error: '1T' is no size; see qx copy --help\n"},
        {"copy large old --limit 99999999999G",
         "2 qx: error: '99999999999G' is no size; see qx copy --help\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.words);
        EXPECT_EQ(answer(row.words), row.answer);
        EXPECT_EQ(content("old"), "old");
        EXPECT_EQ(countFiles(), files);
    }
    EXPECT_EQ(run("copy large none/a"), 4);
    EXPECT_TRUE(hasError("qx: error: Could not open 'none/a' for writing"));
    EXPECT_EQ(run("copy large ."), 4);
    EXPECT_EQ(run("copy large old --limit 200001"), 0);
    EXPECT_EQ(run("copy large old --limit 1m"), 0);
}

TEST_F(CopyTool, limitsWhatBecomesOfFewBytes)
{
    file("a", std::string(3000000, 'x'));
    ASSERT_EQ(run("copy a bomb --encode gz"), 0);
    EXPECT_LT(content("bomb").size(), 5000U);
    EXPECT_EQ(answer("copy bomb b --decode gz --limit 2M"), "5 qx: error: More than 2097152 bytes\n");
    EXPECT_EQ(content("b"), "(none)");
    EXPECT_EQ(run("copy bomb b --decode gz --limit 3M"), 0);
    EXPECT_EQ(content("b").size(), 3000000U);
}

} // namespace
