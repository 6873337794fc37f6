// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "qxdynamictest.h"
#include "qxtestdrawings.h"
#include "qxuniquestring.h"

namespace
{

TEST(qxDynamicType, hasTheFormsThatTheDocumentDraws)
{
    const qxGUID guid("{00112233-4455-6677-8899-AABBCCDDEEFF}");
    const qxVec2 vector{1.0F, -1.5F};
    const qxDynamicType items[] = {qxDynamicType("a"), qxDynamicType()};
    const qxString names[] = {"x", "yz"};
    const unsigned char bytes[] = {0xFF, 0x80};
    const std::vector<std::string> written = {
        DRAWING(qxDynamicType()),
        DRAWING(qxDynamicType(0.1)),
        DRAWING(qxDynamicTypeInt64(-2)),
        DRAWING(qxDynamicType("abc")),
        DRAWING(qxDynamicType(vector)),
        DRAWING(qxDynamicType(guid)),
        DRAWING(qxDynamicTypeArray(items, 2)),
        DRAWING(qxDynamicType(qxDynamicTypeContainer(names, items, 2))),
        DRAWING(qxDynamicTypeTimeTagged(items[0], 0.5)),
        DRAWING(qxDynamicTypeCustom("color", bytes, 2)),
        DRAWING(qxDynamicTypeCustom(qxUniqueString("shape", 300), bytes, 1)),
        DRAWING(qxDynamicTypeCustom("\xFC+", bytes, 0)),
    };
    EXPECT_EQ(readDrawings(true), written);
}

} // namespace
