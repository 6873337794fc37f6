// SPDX-License-Identifier: see LICENSE

#include "qxserializebinary.h"

#include "qxtestsupport.h"
#include "qxtestvalues.h"

#include <limits>

namespace
{

enum Plain : unsigned int { PLAIN = 0x01020304 };
enum class Narrow : signed char { MINUS_TWO = -2 };

// The bytes of `value` in both orders, and the value read back from them behind which a byte stays.
template <class T>
void expectForms(T value, const std::string& big, const std::string& little)
{
    SCOPED_TRACE(big);
    for (const unsigned char bigEndian : BYTE_ORDERS) {
        const std::string& form = bigEndian ? big : little;
        qxSerializeBinary<T> data(value, bigEndian);
        EXPECT_EQ(wireOf(data), form);
        EXPECT_EQ(data.getDataSize(nullptr), fromHex(form).size());

        forEachStream(fromHex(form) + "!", [&](qxSerializeAdapter& stream) {
            qxSerializeBinary<T> other(T(), bigEndian);
            other.read(&stream);
            EXPECT_EQ(other.getValue(), value);
            EXPECT_EQ(readAll(stream), "!");
            EXPECT_FALSE(stream.hasError());
        });
    }
}

TEST(qxSerializeBinary, hasItsBytesInTheOrderOfItsFlag)
{
    expectForms<unsigned char>(0xA1, "A1", "A1");
    expectForms<unsigned short>(0xA1B2, "A1 B2", "B2 A1");
    expectForms<wchar_t>(L'\u20AC', "20 AC", "AC 20");
    expectForms<unsigned int>(0xA1B2C3D4, "A1 B2 C3 D4", "D4 C3 B2 A1");
    expectForms<qxUInt64>(0xA1B2C3D4E5F60718, "A1 B2 C3 D4 E5 F6 07 18", "18 07 F6 E5 D4 C3 B2 A1");
    expectForms<float>(-1.5F, "BF C0 00 00", "00 00 C0 BF");
    expectForms<double>(0.1, "3F B9 99 99 99 99 99 9A", "9A 99 99 99 99 99 B9 3F");
    expectForms<Plain>(PLAIN, "01 02 03 04", "04 03 02 01");
    expectForms<Narrow>(Narrow::MINUS_TWO, "FF FF FF FE", "FE FF FF FF");
    expectForms<short>(-2, "FF FE", "FE FF");
}

TEST(qxSerializeBinary, isBigEndianUnlessToldAndKeepsItsOrderWhenItIsSet)
{
    qxSerializeBinary<unsigned short> data;
    EXPECT_EQ(wireOf(data), "00 00");
    data = 0x0102;
    EXPECT_EQ(wireOf(data), "01 02");
    EXPECT_EQ(data + 1, 0x0103);

    data.setBigEndian(0);
    data = 0x0304;
    EXPECT_EQ(wireOf(data), "04 03");
    EXPECT_EQ(data.getBigEndian(), 0);
}

TEST(qxSerializeBinary, keepsEveryBitOfFloatingPointNumbers)
{
    for (const char* const form : {"7F F0 00 00 00 00 00 00", "80 00 00 00 00 00 00 00",
                                   "00 00 00 00 00 00 00 01", "7F F4 00 00 12 34 56 78"}) {
        LentBlock lent(fromHex(form));
        qxSerializeBinary<double> data;
        data.read(&lent.stream);
        EXPECT_EQ(wireOf(data), form);
    }
}

TEST(qxSerializeBinary, staysWhenTheDataEndsWithinIt)
{
    for (const char* const bytes : {"", "A1 B2 C3"}) {
        forEachStream(fromHex(bytes), [](qxSerializeAdapter& stream) {
            qxSerializeBinary<unsigned int> data(7);
            data.read(&stream);
            EXPECT_EQ(data, 7U);
            EXPECT_EQ(stream.length(), 0U);
        });
    }
    LentBlock lent("abc");
    qxSerializeBinary<unsigned int>().read(&lent.stream);
    EXPECT_STREQ(lent.stream.getError(), "Memory Adapter read beyond end");
}

TEST(qxSerializeBinary, aCharacterThatNeedsMoreThanTwoBytesIsReplacedWithAWarning)
{
    if constexpr (sizeof(wchar_t) > 2) {
        const MessageRecorder recorder;
        TestStream stream;
        qxSerializeBinary<wchar_t>(static_cast<wchar_t>(0xFFFF)).write(&stream);
        qxSerializeBinary<wchar_t>(static_cast<wchar_t>(0x1F600)).write(&stream);
        qxSerializeBinary<wchar_t>(static_cast<wchar_t>(-1)).write(&stream);
        EXPECT_EQ(toHex(stream.written), "FF FF FF FD FF FD");
        EXPECT_EQ(recorder.texts(),
                  (std::vector<std::string>{"Character 128512 does not fit two bytes",
                                            "Character 4294967295 does not fit two bytes"}));
    }
}

} // namespace
