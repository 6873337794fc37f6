// Command lines that are too long for Windows.
// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

namespace
{

TEST_F(Tool, packsATextOfAtMost65535Bytes)
{
    EXPECT_EQ(answer("bin pack -o f str=" + std::string(65535, 'x')), "");
    EXPECT_EQ(content("f"), std::string(65535, 'x') + '\0');
    EXPECT_EQ(run("bin pack -o g str=" + std::string(65536, 'x')), 2);
    EXPECT_EQ(countFiles(), 1);
}

} // namespace
