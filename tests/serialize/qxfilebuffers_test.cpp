// SPDX-License-Identifier: see LICENSE

#include "serialize/qxfilebuffers.h"

#include "qxserializeadapterfile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

namespace
{

TEST(qxFileBuffers, keepsAFewIdleOnes)
{
    std::vector<unsigned char*> buffers;
    for (int i = 0; i < 10; ++i) {
        buffers.push_back(qxFileBuffers::take());
        std::memset(buffers.back(), i, qxSerializeAdapterFile::QUEUE_SIZE); // all of it is ours
    }
    EXPECT_EQ(std::set<unsigned char*>(buffers.begin(), buffers.end()).size(), 10U);
    EXPECT_EQ(qxFileBuffers::getIdleCount(), 0U);

    for (unsigned char* const buffer : buffers) qxFileBuffers::giveBack(buffer);
    qxFileBuffers::giveBack(nullptr);
    EXPECT_EQ(qxFileBuffers::getIdleCount(), 8U);

    qxFileBuffers::giveBack(qxFileBuffers::take());
    EXPECT_EQ(qxFileBuffers::getIdleCount(), 8U);
    qxFileBuffers::freeIdle();
    EXPECT_EQ(qxFileBuffers::getIdleCount(), 0U);
}

} // namespace
