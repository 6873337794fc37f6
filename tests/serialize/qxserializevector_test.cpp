// SPDX-License-Identifier: see LICENSE

#include "qxserializevector.h"

#include "qxtestsupport.h"
#include "qxtestvalues.h"

namespace
{

// Members 1, 2, 3 and so on in both orders, then read back.
template <class Vector>
void expectForms(unsigned int count)
{
    SCOPED_TRACE(count);
    std::string forms[2]; // little, big
    for (const unsigned char bigEndian : BYTE_ORDERS) {
        Vector data(bigEndian);
        for (unsigned int i = 0; i < count; ++i) {
            qxSerializeBinary<float> member(static_cast<float>(i + 1), bigEndian);
            data[i] = member.getValue();
            forms[bigEndian] += (i == 0 ? "" : " ") + wireOf(member);
        }
        EXPECT_EQ(wireOf(data), forms[bigEndian]);
        EXPECT_EQ(data.getDataSize(nullptr), 4 * count);

        forEachStream(fromHex(forms[bigEndian]) + "!", [&](qxSerializeAdapter& stream) {
            Vector other(bigEndian);
            other.read(&stream);
            EXPECT_EQ(wireOf(other), forms[bigEndian]);
            EXPECT_EQ(readAll(stream), "!");
        });
        forEachStream(fromHex(forms[bigEndian].substr(3)), [&](qxSerializeAdapter& stream) {
            Vector other(bigEndian);
            other.read(&stream); // a byte is missing
            EXPECT_EQ(wireOf(other), toHex(std::string(4 * count, '\0')));
        });
    }
    LentBlock lent(fromHex(forms[1]));
    Vector data;
    data.read(&lent.stream); // big-endian unless told
    EXPECT_EQ(data[count - 1], static_cast<float>(count));
}

TEST(qxSerializeVector, isItsMembersOneAfterTheOther)
{
    expectForms<qxSerializeVec2>(2);
    expectForms<qxSerializeVec3>(3);
    expectForms<qxSerializeVec4>(4);
    expectForms<qxSerializeMatrix3>(9);
    expectForms<qxSerializeMatrix4>(16);
}

TEST(qxSerializeVector, writesEachMemberInTheByteOrderOfItsFlag)
{
    qxSerializeVec2 data(0);
    data[0] = 1.0F;
    data[1] = qxSerializeBinary<float>(-2.5F, 1);
    EXPECT_EQ(wireOf(data), "00 00 80 3F C0 20 00 00");
}

TEST(qxSerializeVector, hasNoOtherMembers)
{
    qxSerializeVec3 data;
    EXPECT_EQ(fatalText([&] { data[3] = 1.0F; }), "Template-Index out of bounds in vector");
}

} // namespace
