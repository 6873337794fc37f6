// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterstring.h"

#include "qxteststream.h"
#include "qxtestsupport.h"

namespace
{

TEST(qxSerializeAdapterString, readsTheTextAndAppendsToIt)
{
    qxSerializeAdapterString adapter(qxString("ab\0c", 4));
    EXPECT_EQ(readBlock(adapter, 2), "ab");
    writeText(adapter, "def");
    adapter.write('g');
    EXPECT_EQ(adapter.length(), 6U);
    EXPECT_EQ(readAll(adapter), std::string("\0cdefg", 6));
    EXPECT_TRUE(adapter.getText() == qxString("ab\0cdefg", 8));
    EXPECT_FALSE(adapter.hasError());
}

TEST(qxSerializeAdapterString, keepsWhatFitsAString)
{
    qxSerializeAdapterString adapter(qxString::spaces(65530, 'x'));
    writeText(adapter, "12345");
    EXPECT_FALSE(adapter.hasError());
    writeText(adapter, "6");
    EXPECT_STREQ(adapter.getError(), "String Adapter written beyond 65535 bytes");
    EXPECT_TRUE(adapter.getText() == qxString::spaces(65530, 'x') + "12345");
}

TEST(qxSerializeAdapterString, movesWithinTheText)
{
    const struct {
        qxInt64 offset;
        qxOriginPos origin;
        qxUInt64 result;
    } rows[] = {
        {2, QX_ORIGIN_START, 2}, {-1, QX_ORIGIN_END, 4},     {1, QX_ORIGIN_CURRENT, 2},
        {5, QX_ORIGIN_START, 5}, {-6, QX_ORIGIN_END, ~0ULL}, {6, 0, ~0ULL},
        {-2, 1, ~0ULL},          {1LL << 62, 1, ~0ULL},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.offset);
        qxSerializeAdapterString adapter("abcde");
        adapter.read();
        adapter.pushBack('x');
        EXPECT_EQ(adapter.seek(row.offset, row.origin), row.result);
        const bool isMoved = row.result != ~0ULL;
        EXPECT_STREQ(adapter.getError(), isMoved ? "" : "String Adapter moved outside the text");
        EXPECT_EQ(adapter.length(), isMoved ? 5 - row.result : 5); // at its place with the byte given back
    }
}

TEST(qxSerializeAdapterString, aByteBehindTheEndIsAnError)
{
    qxSerializeAdapterString adapter("a");
    EXPECT_FALSE(adapter.hasData(2));
    EXPECT_EQ(readBlock(adapter, 5), "a");
    EXPECT_FALSE(adapter.hasError());
    EXPECT_EQ(adapter.read(), 0);
    EXPECT_STREQ(adapter.getError(), "String Adapter read beyond end");
}

TEST(qxSerializeAdapterString, takesAnotherText)
{
    qxSerializeAdapterString adapter("abc");
    adapter.pushBack('x');
    adapter.setText("de");
    EXPECT_EQ(readAll(adapter), "de");
}

TEST(qxSerializeAdapterString, aDerivedReadIsNotPassedBy)
{
    InvertedStream<qxSerializeAdapterString> adapter(qxString("\xF0\x0F"));
    EXPECT_EQ(readAll(adapter), "\x0F\xF0");
}

} // namespace
