// SPDX-License-Identifier: see LICENSE

#include "qxnumbertext.h"

#include "qxtesttexts.h"

#include <limits>
#include <string>

namespace
{

constexpr qxInt64 LOWEST = std::numeric_limits<qxInt64>::min();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

// Expects that `write` makes `text` in both kinds of characters and tells its length in both ways.
template <class Write>
void expectText(const Write& write, const std::string& text)
{
    SCOPED_TRACE(text);
    char narrow[401] = "before";
    wchar_t wide[401] = L"before";
    unsigned int length = 999;
    EXPECT_EQ(write(narrow, &length), text.size());
    EXPECT_EQ(length, text.size());
    EXPECT_EQ(narrow, text);
    EXPECT_EQ(write(wide, nullptr), text.size());
    EXPECT_EQ(wide, std::wstring(text.begin(), text.end()));
}

TEST(qxLtoA, writesEveryBase)
{
    const auto inBase = [](unsigned int base, unsigned int width, qxInt64 value, const std::string& text,
                           unsigned char isUnsigned = 0) {
        expectText(
            [&](auto* buffer, unsigned int* length) {
                return qxLtoA(buffer, value, base, width, length, isUnsigned);
            },
            text);
    };
    inBase(10, 0, 0, "0");
    inBase(16, 0, 255, "ff");
    inBase(2, 0, 255, "11111111");
    inBase(3, 0, 80, "2222");
    inBase(9, 0, -80, "-88");
    inBase(10, 3, 7, "007");
    inBase(10, 3, -7, "-07");
    inBase(10, 3, 1234, "1234");
    inBase(10, 0, 100, "100");
    inBase(16, 0, -1, "ffffffffffffffff", 1);
    inBase(10, 0, LOWEST, "-9223372036854775808");
    inBase(10, 0, LOWEST, "9223372036854775808", 1);
    inBase(2, 0, LOWEST, "-1" + std::string(63, '0'));
    inBase(10, 90, 1, std::string(89, '0').append("1"));
    inBase(1, 0, 5, "");
    inBase(17, 4, 5, "");
}

TEST(qxDtoA, writesFifteenDigits)
{
    const auto withPrecision = [](unsigned int precision, double value, const std::string& text) {
        expectText(
            [&](auto* buffer, unsigned int* length) { return qxDtoA(buffer, value, precision, length); },
            text);
    };
    withPrecision(0, 0.0, "0");
    withPrecision(2, -0.0, "-0.00");
    withPrecision(1, -12.345, "-12.3");
    withPrecision(20, 0.1, "0.10000000000000000000");
    withPrecision(18, 1.0 / 3, "0.333333333333333000");
    withPrecision(15, 2.0 / 3, "0.666666666666667");
    withPrecision(1, 123456789012345678.0, "123456789012346000.0");
    withPrecision(0, 1e22, "1" + std::string(22, '0'));
    withPrecision(350, 0.5, "0.5" + std::string(349, '0'));
    withPrecision(4, 1e-320, "0.0000");
}

TEST(qxDtoA, warnsOfWhatDoesNotFit)
{
    const struct {
        double value;
        unsigned int precision;
        unsigned int maxDigits;
    } rows[] = {{INFINITE, 0, 400}, {-INFINITE, 0, 400}, {INFINITE - INFINITE, 0, 400},
                {100.0, 0, 2},      {-10.0, 0, 2},       {1.0, 0xFFFFFFFF, 400}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        MessageRecorder recorder;
        expectText(
            [&](auto* buffer, unsigned int* length) {
                return qxDtoA(buffer, row.value, row.precision, length, row.maxDigits);
            },
            "");
        const RecordedMessage message{"QuaxoSDK", QX_LEVEL_WARNING, "Too large number for qxDtoA"};
        EXPECT_EQ(recorder.messages(), std::vector<RecordedMessage>(2, message));
    }
    char text[4];
    EXPECT_EQ(qxDtoA(text, 100.0, 0, nullptr, 3), 3u);
}

} // namespace
