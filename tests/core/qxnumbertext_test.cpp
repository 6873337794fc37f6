// SPDX-License-Identifier: see LICENSE

#include "qxnumbertext.h"

#include "qxtestsupport.h"

#include <limits>
#include <string>

namespace
{

constexpr qxInt64 LOWEST = std::numeric_limits<qxInt64>::min();

TEST(qxLtoA, writesEveryBase)
{
    const struct {
        qxInt64 value;
        unsigned int base;
        unsigned int width;
        unsigned char isUnsigned;
        std::string text;
    } rows[] = {
        {0, 10, 0, 0, "0"},
        {255, 16, 0, 0, "ff"},
        {255, 2, 0, 0, "11111111"},
        {80, 3, 0, 0, "2222"},
        {-80, 9, 0, 0, "-88"},
        {7, 10, 3, 0, "007"},
        {-7, 10, 3, 0, "-07"},
        {1234, 10, 3, 0, "1234"},
        {100, 10, 0, 0, "100"},
        {-1, 16, 0, 1, "ffffffffffffffff"},
        {LOWEST, 10, 0, 0, "-9223372036854775808"},
        {LOWEST, 10, 0, 1, "9223372036854775808"},
        {LOWEST, 2, 0, 0, "-1" + std::string(63, '0')},
        {1, 10, 90, 0, std::string(89, '0') + "1"},
        {5, 1, 0, 0, ""},
        {5, 17, 4, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        char text[91];
        wchar_t wide[91];
        unsigned int length = 999;
        EXPECT_EQ(qxLtoA(text, row.value, row.base, row.width, &length, row.isUnsigned), row.text.size());
        EXPECT_EQ(length, row.text.size());
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(qxLtoA(wide, row.value, row.base, row.width, nullptr, row.isUnsigned), row.text.size());
        EXPECT_EQ(wide, std::wstring(row.text.begin(), row.text.end()));
    }
}

TEST(qxDtoA, writesFifteenDigits)
{
    const struct {
        double value;
        unsigned int precision;
        std::string text;
    } rows[] = {
        {0.0, 0, "0"},
        {-0.0, 2, "-0.00"},
        {-12.345, 1, "-12.3"},
        {0.1, 20, "0.10000000000000000000"},
        {1.0 / 3, 18, "0.333333333333333000"},
        {2.0 / 3, 15, "0.666666666666667"},
        {123456789012345678.0, 1, "123456789012346000.0"},
        {1e22, 0, "1" + std::string(22, '0')},
        {0.5, 350, "0.5" + std::string(349, '0')},
        {1e-320, 4, "0.0000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        char text[401];
        wchar_t wide[401];
        unsigned int length = 999;
        EXPECT_EQ(qxDtoA(text, row.value, row.precision, &length), row.text.size());
        EXPECT_EQ(length, row.text.size());
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(qxDtoA(wide, row.value, row.precision), row.text.size());
        EXPECT_EQ(wide, std::wstring(row.text.begin(), row.text.end()));
    }
}

TEST(qxDtoA, warnsOfWhatDoesNotFit)
{
    const struct {
        double value;
        unsigned int precision;
        unsigned int maxDigits;
    } rows[] = {
        {std::numeric_limits<double>::infinity(), 0, 400},
        {-std::numeric_limits<double>::infinity(), 0, 400},
        {std::numeric_limits<double>::quiet_NaN(), 0, 400},
        {100.0, 0, 2},
        {-10.0, 0, 2},
        {1.0, 0xFFFFFFFF, 400},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        MessageRecorder recorder;
        char text[401] = "before";
        unsigned int length = 999;
        EXPECT_EQ(qxDtoA(text, row.value, row.precision, &length, row.maxDigits), 0u);
        EXPECT_EQ(length, 0u);
        EXPECT_STREQ(text, "");
        const RecordedMessage message{"QuaxoSDK", QX_LEVEL_WARNING, "Too large number for qxDtoA"};
        EXPECT_EQ(recorder.messages(), std::vector<RecordedMessage>{message});
    }
    char text[4];
    EXPECT_EQ(qxDtoA(text, 100.0, 0, nullptr, 3), 3u);
}

} // namespace
