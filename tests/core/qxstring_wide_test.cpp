// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "qxarray.h"
#include "qxtesttexts.h"

#include <string>
#include <thread>

namespace
{

const bool HAS_16_BIT_UNITS = sizeof(wchar_t) == 2;

TEST(qxString, convertsWideTextBothWays)
{
    const struct {
        std::wstring wide;
        const char* text;
        bool isPair = false; // two units that are one where units have 32 bits
    } rows[] = {
        {L"", ""},
        {L"plain", "plain"},
        {L"\u00E9", "\xC3\xA9"},
        {L"\u07FF\u0800\uFFFF", "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {L"0123456789abcdef0123456789abcdef\u20AC-123456789abcdef0123456789abcdef-",
         "0123456789abcdef0123456789abcdef\xE2\x82\xAC-123456789abcdef0123456789abcdef-"},
        {L"\U0001F600x", "\xF0\x9F\x98\x80x"},
        {{wchar_t(0xD83D), wchar_t(0xDE00)}, "\xF0\x9F\x98\x80", true},
        {{wchar_t(0xD83D), L'x'}, "\xED\xA0\xBDx"}, // a lone half is kept
        {{wchar_t(0xDE00)}, "\xED\xB8\x80"},
        {{wchar_t(0xD83D)}, "\xED\xA0\xBD"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const qxString text(row.wide.c_str());
        EXPECT_STREQ(text, row.text);
        EXPECT_STREQ(qxString(row.wide.data(), row.wide.size()), row.text);

        const std::wstring back = row.isPair ? L"\U0001F600" : row.wide;
        EXPECT_EQ(text.getWideStringLength(), back.size());
        EXPECT_EQ(text.getWideString(), back);
        std::wstring room(back.size() + 1, L'?'); // exactly as much as is needed
        EXPECT_EQ(text.getWideString(room.data()), back.size());
        EXPECT_EQ(room, back + std::wstring(1, L'\0'));
    }
}

TEST(qxString, decodesTheFirstCharacters)
{
    MessageRecorder recorder;
    const qxString text("a\xC3\xA9\xF0\x9F\x98\x80\x80"); // a fault behind them does not matter
    EXPECT_STREQ(text.getWideString(2), L"a\u00E9");
    EXPECT_STREQ(text.getWideString(3), L"a\u00E9\U0001F600");
    EXPECT_TRUE(recorder.texts().empty());
    EXPECT_STREQ(qxString("abc").getWideString(99), L"abc");
}

TEST(qxString, takesUnitsAsBytes)
{
    const wchar_t wide[] = {L'a', wchar_t(0xE9), wchar_t(0x1241), 0};
    const qxString text(wide, 4, 1);
    EXPECT_EQ(bytesOf(text), std::string("a\xE9\x41\0", 4));

    wchar_t units[5] = {};
    EXPECT_EQ(text.getWideString(units, 1), 4u);
    EXPECT_EQ(std::wstring(units, 5), std::wstring({L'a', wchar_t(0xE9), L'A', 0, 0}));
}

TEST(qxString, stopsAtInvalidUTF8)
{
    const char* const faults[] = {"ab\x80z", "ab\xC3z", "ab\xC3",        "ab\xE2\x82",
                                  "ab\xFEz", "ab\xFFz", "ab\xE2\x28\xA1"};
    for (const char* fault : faults) {
        SCOPED_TRACE(fault);
        MessageRecorder recorder;
        const qxString text(fault);
        EXPECT_EQ(text.getWideStringLength(), 2u);
        EXPECT_STREQ(text.getWideString(), L"ab");
        EXPECT_STREQ(text.getWideString(9), L"ab");
        EXPECT_EQ(recorder.texts(), std::vector<std::string>(3, "Utf decoding on faulty data input"));
    }
}

// Neither the sum of the sizes nor a single test of it tells whether a text is ASCII: each unit counts.
TEST(qxString, dropsUnitsThatAreNoCodes)
{
    if (HAS_16_BIT_UNITS) GTEST_SKIP() << "every 16-bit unit is a code";
    MessageRecorder recorder;
    const wchar_t wide[] = {static_cast<wchar_t>(0x80000000u), wchar_t(0xE9)};
    EXPECT_STREQ(qxString(wide, 2), "\xC3\xA9");
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"Utf encoding on faulty data set"});
}

TEST(qxString, keepsOneWideBufferAThread)
{
    const wchar_t* const mine = qxString("mine").getWideString();
    std::thread([] { EXPECT_STREQ(qxString("theirs").getWideString(), L"theirs"); }).join();
    EXPECT_STREQ(mine, L"mine");
    EXPECT_EQ(qxString("next").getWideString(), mine);
}

TEST(qxString, givesArraysWithATerminator)
{
    const qxArray<char> bytes = qxString("\xC3\xA9").getBSTR();
    ASSERT_EQ(bytes.entries(), 3u);
    EXPECT_STREQ(bytes.getData(), "\xC3\xA9");

    const qxArray<wchar_t> units = qxString("a\xC3\xA9").getWideBSTR();
    ASSERT_EQ(units.entries(), 3u);
    EXPECT_STREQ(units.getData(), L"a\u00E9");

    EXPECT_EQ(qxString().getBSTR().entries(), 1u);
    EXPECT_EQ(qxString().getWideBSTR().entries(), 1u);
}

} // namespace
