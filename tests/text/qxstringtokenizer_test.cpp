// SPDX-License-Identifier: see LICENSE

#include "qxstringtokenizer.h"

#include "qxtesttexts.h"

#include <iterator>

namespace
{

std::string textOf(const qxLexTokenData& token)
{
    return std::to_string(token.type) + ":" + bytesOf(token.value.asString());
}

std::string rest(qxStringTokenizer& tokenizer)
{
    std::string text;
    while (tokenizer.hasData()) text += textOf(tokenizer.getTokenData()) + " ";
    return text;
}

TEST(qxStringTokenizer, eachQuestionTakesOneToken)
{
    qxStringTokenizer tokenizer(qxString("a 5 'b'"));
    tokenizer.useStrings(1);
    EXPECT_EQ(tokenizer.getDataType(), QX_LEX_IDENTIFIER);
    EXPECT_STREQ(tokenizer.getData().getString(), "a");
    EXPECT_EQ(textOf(tokenizer.getTokenData()), "256:32");
    EXPECT_EQ(textOf(tokenizer.getTokenData()), "16:5");
    EXPECT_EQ(tokenizer.getData().getNumber(), 5.0);
    EXPECT_EQ(tokenizer.getDataType(), QX_LEX_SPACE);
    EXPECT_TRUE(tokenizer.hasData());
    EXPECT_EQ(tokenizer.getDataType(), QX_LEX_SINGLE_STRING);
    EXPECT_FALSE(tokenizer.hasData());
    EXPECT_EQ(tokenizer.getDataType(), QX_LEX_NONE);
}

TEST(qxStringTokenizer, readsTextsOfEveryKindAsUTF8)
{
    const std::string expected = "1:233 1:128512 2:z ";
    const char narrow[] = "\xC3\xA9\xF0\x9F\x98\x80z";
    qxStringTokenizer ofString{qxString(narrow)};
    EXPECT_EQ(rest(ofString), expected);
    qxStringTokenizer ofBytes(narrow, sizeof narrow - 1);
    EXPECT_EQ(rest(ofBytes), expected);
    const wchar_t wide[] = L"\x00E9\U0001F600z";
    qxStringTokenizer ofUnits(wide, std::size(wide) - 1);
    EXPECT_EQ(rest(ofUnits), expected);
    const wchar_t half[] = {static_cast<wchar_t>(0xD83D), L'z'};
    qxStringTokenizer ofHalves(half, 2);
    EXPECT_EQ(rest(ofHalves), "1:65533 2:z ");
    const std::string longText(200000, 'x');
    qxStringTokenizer ofLongText(longText.data(), longText.size());
    EXPECT_EQ(ofLongText.getDataType(), QX_LEX_IDENTIFIER);
    EXPECT_EQ(ofLongText.getTokenSize(), 200000U);
    qxStringTokenizer ofNothing(static_cast<const char*>(nullptr), 0);
    EXPECT_FALSE(ofNothing.hasData());
}

TEST(qxStringTokenizer, givesTokensAndTextsBack)
{
    qxStringTokenizer tokenizer(qxString("12 b"));
    EXPECT_EQ(textOf(tokenizer.getTokenData()), "16:12");
    tokenizer.pushBack();
    EXPECT_STREQ(tokenizer.getRemainingBuffer(), "12 b");
    tokenizer.pushBack("a-");
    EXPECT_STREQ(tokenizer.getRemainingBuffer(), "a-12 b");
    EXPECT_EQ(rest(tokenizer), "2:a 16:-12 256:32 2:b ");
    tokenizer.pushBack("c");
    EXPECT_EQ(rest(tokenizer), "2:c ");
}

TEST(qxStringTokenizer, tellsWhatIsLeftWithoutTakingIt)
{
    qxStringTokenizer tokenizer(qxString("a\n1,5'b'"));
    tokenizer.useStrings(1);
    tokenizer.useDecimalToken(',');
    EXPECT_EQ(tokenizer.getRemainingTokens().entries(), 4U);
    tokenizer.getDataType();
    const qxArray<qxLexTokenData> left = tokenizer.getRemainingTokens();
    ASSERT_EQ(left.entries(), 3U);
    EXPECT_EQ(textOf(left[1]), "32:1.5");
    EXPECT_EQ(textOf(left[2]), "8:b");
    EXPECT_STREQ(tokenizer.getScannedBuffer(), "a");
    EXPECT_EQ(rest(tokenizer), "256:32 32:1.5 8:b ");
    EXPECT_EQ(tokenizer.getLine(), 2U);
    EXPECT_EQ(tokenizer.getColumn(), 4U);
    EXPECT_EQ(tokenizer.getRemainingTokens().entries(), 0U);
    EXPECT_TRUE(tokenizer.getRemainingBuffer().isEmpty());
}

} // namespace
