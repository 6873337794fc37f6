// SPDX-License-Identifier: see LICENSE

#include "qxserializeguid.h"

#include "qxtestvalues.h"

namespace
{

const qxGUID SAMPLE(0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF});
const char SAMPLE_FORM[] = "00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF";

TEST(qxSerializeGUID, hasItsFieldsInTheOrderOfTheText)
{
    qxSerializeGUID data(SAMPLE);
    EXPECT_EQ(wireOf(data), SAMPLE_FORM);
    EXPECT_EQ(data.getDataSize(nullptr), 16U);

    qxSerializeGUID null;
    EXPECT_EQ(wireOf(null), toHex(std::string(16, '\0')));
}

TEST(qxSerializeGUID, isReadWholeOrStays)
{
    const std::string bytes = fromHex(SAMPLE_FORM);
    forEachStream(bytes + "!", [](qxSerializeAdapter& stream) {
        qxSerializeGUID data;
        data.read(&stream);
        EXPECT_EQ(static_cast<const qxGUID&>(data), SAMPLE);
        EXPECT_EQ(readAll(stream), "!");
    });
    forEachStream(bytes.substr(0, 15), [](qxSerializeAdapter& stream) {
        qxSerializeGUID data;
        data.read(&stream);
        EXPECT_TRUE(static_cast<qxGUID&>(data).isNull());
    });
}

} // namespace
