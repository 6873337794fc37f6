// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include "qxtestvalues.h"

#include <sstream>

namespace
{

TEST_F(Tool, packsEachTypeAndShowsItsBytes)
{
    const struct {
        const char* type;
        const char* values; // with blanks between them
        const char* lines;  // what dump prints, without offset and type
    } rows[] = {
        {"u8", "255 0x0f", "FF 255\n0F 15\n"},
        {"u16", "4660", "1234 4660\n"},
        {"u32", "0xFFFFFFFF", "FFFFFFFF 4294967295\n"},
        {"u64", "18446744073709551615", "FFFFFFFFFFFFFFFF 18446744073709551615\n"},
        {"f32", "0.1 -0 1e+20 inf", "3DCCCCCD 0.1\n80000000 -0\n60AD78EC 1e+20\n7F800000 inf\n"},
        {"f64", "0.1 5e-324 -inf", "3FB999999999999A 0.1\n0000000000000001 5e-324\nFFF0000000000000 -inf\n"},
        {"f32", "nan nan(ffc00001)", "7FC00000 nan\nFFC00001 nan(ffc00001)\n"},
        {"varint", "300 9223372036854775807", "AC02 300\nFFFFFFFFFFFFFFFF7F 9223372036854775807\n"},
        {"str", "abc", "61626300 \"abc\"\n"},
        {"guid", "00112233-4455-6677-8899-aabbccddeeff",
         "00112233445566778899AABBCCDDEEFF {00112233-4455-6677-8899-AABBCCDDEEFF}\n"},
        {"guid", "{00000000-0000-0000-0000-000000000000}",
         "00000000000000000000000000000000 {00000000-0000-0000-0000-000000000000}\n"},
        {"vec2", "1,-2.5", "3F800000C0200000 1,-2.5\n"},
        {"vec3", "0,0,nan", "00000000000000007FC00000 0,0,nan\n"},
        {"vec4", "0,0,0,1", "0000000000000000000000003F800000 0,0,0,1\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.type) + " " + row.values);
        std::istringstream values(row.values);
        std::istringstream lines(row.lines);
        std::string words;
        std::string types;
        std::string expected;
        std::size_t offset = 0;
        for (std::string value, bytes, shown; values >> value && lines >> bytes >> shown;) {
            words += std::string(" ") + row.type + "=" + value;
            types += std::string(row.type) + " ";
            expected += std::to_string(offset) + " " + bytes + " " + row.type + " " + shown + "\n";
            offset += bytes.size() / 2;
        }
        EXPECT_EQ(answer("bin pack -o f" + words), "");
        EXPECT_EQ(answer("bin dump f --as '" + types + "'"), expected);
    }
}

TEST_F(Tool, packsMatricesMemberByMember)
{
    const std::string nine = "1,2,3,4,5,6,7,8,9";
    const std::string sixteen = nine + ",10,11,12,13,14,15,16";
    ASSERT_EQ(answer("bin pack mat3=" + nine + " mat4=" + sixteen + " -o f"), "");
    EXPECT_EQ(content("f").size(), 100U);
    const std::string shown = answer("bin dump f --as 'mat3 mat4'");
    EXPECT_NE(shown.find(" mat3 " + nine + "\n36 "), std::string::npos) << shown;
    EXPECT_NE(shown.find(" mat4 " + sixteen + "\n"), std::string::npos) << shown;
}

TEST_F(Tool, packsNumbersInEitherOrderToStandardOutput)
{
    const std::string words =
        "u8=1 u16=2 u32=3 f32=1 vec2=1,2 varint=300 guid={00112233-4455-6677-8899-AABBCCDDEEFF}";
    ASSERT_EQ(run("bin pack " + words), 0);
    EXPECT_EQ(toHex(out), "01 00 02 00 00 00 03 3F 80 00 00 3F 80 00 00 40 00 00 00 AC 02 "
                          "00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF");
    ASSERT_EQ(run("bin pack --little " + words), 0);
    EXPECT_EQ(toHex(out), "01 02 00 03 00 00 00 00 00 80 3F 00 00 80 3F 00 00 00 40 AC 02 "
                          "00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF");
    expectAnswers(out,
                  "bin dump - --little --as 'u8 u16 u32 f32' => 0 01 u8 1\n1 0200 u16 2\n3 03000000 u32 3\n"
                  "7 0000803F f32 1\nqx: 26 bytes left at offset 11\n");
}

TEST_F(Tool, showsTheExampleOfTheManual)
{
    ASSERT_EQ(run("bin pack u16=4660 varint=300 str=abc vec2=1,-2.5"), 0);
    expectAnswers(out, "bin dump - --as 'u16 varint str f32' => 0 1234 u16 4660\n2 AC02 varint 300\n"
                       "4 61626300 str \"abc\"\n8 3F800000 f32 1\nqx: 4 bytes left at offset 12\n");
}

TEST_F(Tool, showsTextsAsItTakesThem)
{
    const std::string shown = R"("q\"\\\n\r\t\x01\x7F)"
                              "\xC3\xA9\"";
    ASSERT_EQ(answer("bin pack 'str=" + shown + "' str= 'str=a b=c\\n' -o f"), "");
    EXPECT_EQ(content("f"), std::string("q\"\\\n\r\t\x01\x7F\xC3\xA9\0\0a b=c\\n\0", 20));
    expectAnswers("", "bin dump f --as 'str str str' => 0 71225C0A0D09017FC3A900 str " + shown +
                          "\n11 00 str \"\"\n12 6120623D635C6E00 str \"a b=c\\\\n\"\n");
}

TEST_F(Tool, writesNothingWhenATypeCannotHoldAValue)
{
    file("old", "content");
    for (const char* const word : {"u8=256",
                                   "u8=-1",
                                   "u8=",
                                   "u8=1x",
                                   "u8= 1",
                                   "u8=0x",
                                   "u16=65536",
                                   "u16=0x10000",
                                   "u32=4294967296",
                                   "u64=18446744073709551616",
                                   "varint=9223372036854775808",
                                   "f32=1e39",
                                   "f64=1e309",
                                   "f32=",
                                   "f64=1,5",
                                   "f64=nan(0)",
                                   "f32=nan(1ffffffff)",
                                   "str=\"abc",
                                   "str=\"a\"b\"",
                                   "str=\"\\q\"",
                                   "str=\"\\x4\"",
                                   "str=\"\\x00\"",
                                   "guid=",
                                   "guid={00112233-4455-6677-8899-AABBCCDDEEF}",
                                   "guid=0",
                                   "vec2=1",
                                   "vec2=1,2,3",
                                   "vec3=1,,3",
                                   "mat3=1,2,3,4,5,6,7,8,",
                                   "u9=1",
                                   "=1",
                                   "u8"}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(run(std::string("bin pack u8=1 '") + word + "' -o old"), 2);
        EXPECT_EQ(out, "");
        EXPECT_FALSE(err.empty());
    }
    EXPECT_EQ(content("old"), "content");
    EXPECT_EQ(countFiles(), 1);
    expectAnswers("",
                  "bin pack u8=256 => 2 qx: error: '256' is no value of type u8; see qx bin pack --help\n",
                  "bin pack x => 2 qx: error: 'x' is not of the form TYPE=VALUE; see qx bin pack --help\n",
                  "bin pack int=1 => 2 qx: error: unknown type 'int'; see qx bin pack --help\n",
                  "bin pack => 2 qx: error: bin pack: TYPE=VALUE is missing; see qx bin pack --help\n",
                  "bin dump old => 2 qx: error: bin dump needs --as with a type; see qx bin dump --help\n",
                  "bin dump old --as 'u8 x' => 2 qx: error: unknown type 'x'; see qx bin dump --help\n",
                  "bin dump --as u8 => 2 qx: error: bin dump: FILE is missing; see qx bin dump --help\n");
}

TEST_F(Tool, tellsWhereAValueIsCutShort)
{
    expectAnswers(fromHex("01 80 80"), "bin dump - --as 'u8 varint' => 3 0 01 u8 1\n"
                                       "qx: error: -: varint at offset 1 is cut short\n");
    expectAnswers("abc", "bin dump - --as u32 => 3 qx: error: -: u32 at offset 0 is cut short\n",
                  "bin dump - --as vec2 => 3 qx: error: -: vec2 at offset 0 is cut short\n",
                  "bin dump - --as guid => 3 qx: error: -: guid at offset 0 is cut short\n",
                  "bin dump - --as str => 0 616263 str \"abc\"\n", // needs no terminator
                  "bin dump - --as 'str str' => 3 0 616263 str \"abc\"\n"
                  "qx: error: -: str at offset 3 is cut short\n",
                  "bin dump - --as u16 => 0 6162 u16 24930\nqx: 1 bytes left at offset 2\n");
}

TEST_F(Tool, showsAValueOfAtMost65536Bytes)
{
    const std::string longest(65535, 'x');
    file("f", longest + '\0' + "y");
    EXPECT_EQ(run("bin dump f --as str"), 0);
    EXPECT_EQ(err, "qx: 1 bytes left at offset 65536\n");
    expectAnswers(longest + "xx",
                  "bin dump - --as str => 5 qx: error: -: str at offset 0 is longer than 65535 bytes\n");
    expectAnswers(longest + "x",
                  "bin dump - --as str => 5 qx: error: -: str at offset 0 is longer than 65535 bytes\n");
    EXPECT_EQ(run("bin dump - --as varint", std::string(1000000, '\x80')), 5);
}

TEST_F(Tool, tellsWhichFileCannotBeRead)
{
    EXPECT_EQ(run("bin dump missing --as u8"), 4);
    EXPECT_EQ(run("bin pack u8=1 -o missing/f"), 4);
}

} // namespace
