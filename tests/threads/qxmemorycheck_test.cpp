// SPDX-License-Identifier: see LICENSE

#include "qxmemorycheck.h"

#include "qxtestthreads.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

TEST(qxMemoryCheck, watchesOutliveTheObject)
{
    auto object = std::make_unique<qxMemoryCheck>();
    qxMemoryCheck other;
    const qxMemoryWatch first(*object);
    qxMemoryWatch copy(first);
    EXPECT_TRUE(first.isAlive());
    object.reset();
    EXPECT_FALSE(first.isAlive());
    EXPECT_FALSE(copy.isAlive());
    copy = qxMemoryWatch(other);
    EXPECT_TRUE(copy.isAlive());
}

TEST(qxMemoryCheck, aCopyIsAnotherObject)
{
    auto object = std::make_unique<qxMemoryCheck>();
    qxMemoryCheck copy(*object);
    qxMemoryCheck assigned;
    const qxMemoryWatch watches[] = {qxMemoryWatch(copy), qxMemoryWatch(assigned)};
    assigned = *object;
    object.reset();
    for (const qxMemoryWatch& watch : watches) EXPECT_TRUE(watch.isAlive());
}

TEST(qxMemoryCheck, watchesMayBeOnSeveralThreads)
{
    auto object = std::make_unique<qxMemoryCheck>();
    const qxMemoryWatch watch(*object);
    onThreads(3, [&](unsigned int i) {
        for (int n = 0; n < 1000; ++n) {
            const qxMemoryWatch copy(watch);
            if (i == 0 && n == 500) object.reset();
        }
        EXPECT_TRUE(i != 0 || !watch.isAlive());
    });
}

} // namespace
