// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace
{

TEST(qxGUIDOfTheSystem, goesWhereTheSystemTakesOne)
{
    const GUID known = {0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}};
    const qxGUID guid(known);
    EXPECT_TRUE(IsEqualGUID(guid, known));
    EXPECT_TRUE(guid == known && known == guid && guid == qxGUID(known));
    EXPECT_FALSE(guid != known || known != guid || guid != qxGUID(known));
}

} // namespace
