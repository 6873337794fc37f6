// SPDX-License-Identifier: see LICENSE

#include "qxserializebinary.h"
#include "qxserializeguid.h"
#include "qxserializestring.h"
#include "qxserializevector.h"
#include "qxvaruint64.h"

#include "qxtestdrawings.h"

namespace
{

// Sets the members to 1, 2, 3 and so on.
template <class Vector>
Vector counted(Vector vector)
{
    for (unsigned int i = 0; i < vector.SIZE / 4; ++i) vector[i] = static_cast<float>(i + 1);
    return vector;
}

TEST(qxSerializeData, hasTheFormsThatTheDocumentDraws)
{
    const std::vector<std::string> written = {
        DRAWING(qxSerializeBinary<unsigned char>(161)),
        DRAWING(qxSerializeBinary<unsigned short>(4660)),
        DRAWING(qxSerializeBinary<unsigned short>(4660, 0)),
        DRAWING(qxSerializeBinary<wchar_t>(L'\u20AC')),
        DRAWING(qxSerializeBinary<unsigned int>(0x12345678)),
        DRAWING(qxSerializeBinary<unsigned int>(0x12345678, 0)),
        DRAWING(qxSerializeBinary<qxUInt64>(0x123456789ABCDEF0)),
        DRAWING(qxSerializeBinary<float>(-1.5F)),
        DRAWING(qxSerializeBinary<double>(0.1)),
        DRAWING(qxSerializeBinary<qxSerializeAction>(QX_SERIALIZE_INPUT)),
        DRAWING(qxVarUInt64(0)),
        DRAWING(qxVarUInt64(127)),
        DRAWING(qxVarUInt64(128)),
        DRAWING(qxVarUInt64(300)),
        DRAWING(qxVarUInt64(16384)),
        DRAWING(qxVarUInt64(1ULL << 63)),
        DRAWING(qxSerializeString("abc")),
        DRAWING(qxSerializeString("\u20AC", 10)),
        DRAWING(qxSerializeString()),
        DRAWING(qxSerializeGUID(qxGUID("{00112233-4455-6677-8899-AABBCCDDEEFF}"))),
        DRAWING(counted(qxSerializeVec2())),
        DRAWING(counted(qxSerializeVec3())),
        DRAWING(counted(qxSerializeVec3(0))),
        DRAWING(counted(qxSerializeVec4())),
        DRAWING(counted(qxSerializeMatrix3())),
        DRAWING(counted(qxSerializeMatrix4())),
    };
    EXPECT_EQ(readDrawings(false), written);
}

} // namespace
