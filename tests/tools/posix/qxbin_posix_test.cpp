// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

namespace
{

// Elsewhere a command line is shorter than that.
TEST_F(Tool, packsNoTextThatIsTooLongForAString)
{
    const std::string longest(65535, 'x');
    EXPECT_EQ(run("bin pack str=" + longest), 0);
    EXPECT_EQ(out, longest + std::string(1, '\0'));
    EXPECT_EQ(run("bin pack str=" + longest + "x -o new"), 2);
    EXPECT_EQ(countFiles(), 0);
}

} // namespace
