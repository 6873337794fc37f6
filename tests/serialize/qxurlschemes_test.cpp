// SPDX-License-Identifier: see LICENSE

#include "serialize/qxurlschemes.h"

#include "qxtestsupport.h"

namespace
{

qxRefPointer<qxSerializeAdapter> openNothing(const qxString&, qxSerializeAction)
{
    return nullptr;
}

TEST(qxURLSchemes, aSchemeIsAddedOnce)
{
    EXPECT_FALSE(qxIsOwnURLScheme("added"));
    EXPECT_TRUE(qxAddURLScheme("added", openNothing));
    EXPECT_FALSE(qxAddURLScheme("added", openNothing));
    EXPECT_TRUE(qxIsOwnURLScheme("added"));
    EXPECT_EQ(qxFindURLOpener("added"), openNothing);
    EXPECT_EQ(qxFindURLOpener("adde"), nullptr);
}

TEST(qxURLSchemes, thoseOfThisFloorCanNotBeAdded)
{
    for (const char* const scheme : {"file", "mem", "con", "cache"}) {
        EXPECT_TRUE(qxIsOwnURLScheme(scheme)) << scheme;
        EXPECT_FALSE(qxAddURLScheme(scheme, openNothing)) << scheme;
    }
}

TEST(qxURLSchemes, moreThanThereIsRoomForAreRefused)
{
    static const char names[] = "q0\0q1\0q2\0q3\0q4\0q5\0q6\0q7\0q8\0q9\0qa\0qb\0qc\0qd\0qe\0qf\0qg";
    unsigned int added = 0;
    while (added < 17 && qxAddURLScheme(names + 3 * added, openNothing)) ++added;
    EXPECT_LE(added, 16U);
    EXPECT_GE(added, 15U);
    EXPECT_FALSE(qxIsOwnURLScheme("qg"));
}

TEST(qxURLSchemes, someAreForCallersOnly)
{
    for (const char* const url : {"mem:1,2", "MEM:", "con:", "Con:error", "tcp://host:1", "UDP:host:1"})
        EXPECT_TRUE(qxIsURLForCallersOnly(url)) << url;
    for (const char* const url : {"", "mem", "con/x", "file:mem:1", "./mem:1,2", "cache:a"})
        EXPECT_FALSE(qxIsURLForCallersOnly(url)) << url;
}

} // namespace
