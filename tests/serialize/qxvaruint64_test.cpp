// SPDX-License-Identifier: see LICENSE

#include "qxvaruint64.h"

#include "qxtestvalues.h"

namespace
{

constexpr qxUInt64 TOP_BIT = 1ULL << 63;

/// Always gives the same byte, also behind its end.
class Endless final : public TestStream
{
public:
    Endless(unsigned char byte, std::string start) : TestStream(std::move(start)), m_byte(byte) {}

    unsigned int beyond = 0; // bytes asked for behind the end

protected:
    using TestStream::read_imp;
    unsigned char read_imp() override
    {
        if (!content.empty()) return TestStream::read_imp();
        ++beyond;
        return m_byte;
    }

private:
    const unsigned char m_byte;
};

TEST(qxVarUInt64, takesAsManyBytesAsItNeeds)
{
    const struct {
        qxUInt64 value;
        const char* form;
    } rows[] = {
        {0, "00"},
        {127, "7F"},
        {128, "80 01"},
        {300, "AC 02"},
        {(1ULL << 14) - 1, "FF 7F"},
        {16384, "80 80 01"},
        {1ULL << 21, "80 80 80 01"},
        {1ULL << 28, "80 80 80 80 01"},
        {1ULL << 35, "80 80 80 80 80 01"},
        {1ULL << 42, "80 80 80 80 80 80 01"},
        {1ULL << 49, "80 80 80 80 80 80 80 01"},
        {(1ULL << 56) - 1, "FF FF FF FF FF FF FF 7F"},
        {1ULL << 56, "80 80 80 80 80 80 80 80 01"},
        {TOP_BIT - 1, "FF FF FF FF FF FF FF FF 7F"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        qxVarUInt64 data(row.value);
        EXPECT_EQ(wireOf(data), row.form);
        EXPECT_EQ(data.getDataSize(nullptr), fromHex(row.form).size());
        forEachStream(fromHex(row.form) + "!", [&](qxSerializeAdapter& stream) {
            qxVarUInt64 other(99);
            other.read(&stream);
            EXPECT_EQ(other, row.value);
            EXPECT_EQ(readAll(stream), "!");
        });
    }
}

TEST(qxVarUInt64, numbersWithTheTopBitTakeATenthByteWhenTheyAreRead)
{
    const struct {
        qxUInt64 value;
        const char* form;
        qxUInt64 readBefore7; // when a byte 07 follows
        qxUInt64 readAtTheEnd;
    } rows[] = {
        {TOP_BIT, "80 80 80 80 80 80 80 80 80", TOP_BIT, 0},
        {~0ULL, "FF FF FF FF FF FF FF FF FF", ~0ULL, TOP_BIT - 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.form);
        qxVarUInt64 data(row.value);
        EXPECT_EQ(wireOf(data), row.form);
        EXPECT_EQ(data.getDataSize(nullptr), 9U);
        forEachStream(fromHex(row.form) + "\x07!", [&](qxSerializeAdapter& stream) {
            data.read(&stream);
            EXPECT_EQ(data, row.readBefore7);
            EXPECT_EQ(readAll(stream), "!");
        });
        LentBlock lent(fromHex(row.form));
        data.read(&lent.stream);
        EXPECT_EQ(data, row.readAtTheEnd);
        EXPECT_STREQ(lent.stream.getError(), "Memory Adapter read beyond end");
    }
}

TEST(qxVarUInt64, readsLongFormsAndWrapsTheGroupsAround)
{
    const struct {
        std::string bytes;
        qxUInt64 value;
    } rows[] = {
        {"81 80 80 00", 1},
        {"80 80 80 80 80 80 80 80 80 7E", 0},     // bits above 63 are lost
        {"80 80 80 80 80 80 80 80 80 80 01", 64}, // the eleventh byte is shifted by 70 modulo 64
        {"81 80 80 80 80 80 80 80 80 82 01", 65},
        {toHex(std::string(64, '\x80')) + " 02", 2}, // 64 x 7 modulo 64
        {toHex(std::string(100000, '\x80')) + " 00", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes.substr(0, 40));
        forEachStream(fromHex(row.bytes) + "!", [&](qxSerializeAdapter& stream) {
            qxVarUInt64 data(99);
            data.read(&stream);
            EXPECT_EQ(data, row.value);
            EXPECT_EQ(readAll(stream), "!");
        });
    }
}

TEST(qxVarUInt64, takesWhatTheStreamGivesBehindItsEnd)
{
    LentBlock lent(fromHex("AC 82"));
    qxVarUInt64 data;
    data.read(&lent.stream);
    EXPECT_EQ(data, 300U); // memory gives 0
    EXPECT_STREQ(lent.stream.getError(), "Memory Adapter read beyond end");

    Endless seven(7, "\x80");
    data.read(&seven);
    EXPECT_EQ(data, 7U << 7);
}

TEST(qxVarUInt64, endsWhereTheStreamNeverWould)
{
    Endless stream(0xFF, "");
    qxVarUInt64().read(&stream);
    EXPECT_EQ(stream.beyond, 10U);

    Endless failed(0xFF, "\x80\x80");
    failed.setError("broken");
    qxVarUInt64 data;
    data.read(&failed);
    EXPECT_EQ(failed.beyond, 0U);
    EXPECT_EQ(data, 0U);
}

TEST(qxVarUInt64, anOldErrorOfTheStreamDoesNotCutIt)
{
    forEachStream(fromHex("80 80 01"), [](qxSerializeAdapter& stream) {
        stream.setError("earlier");
        qxVarUInt64 data;
        data.read(&stream);
        EXPECT_EQ(data, 16384U);
    });
}

} // namespace
