// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "qxdynamictest.h"

namespace
{

TEST(qxDynamicType, hasATextForEachTag)
{
    std::string lines;
    for (const qxDynamicType& value : oneOfEach())
        lines += tagOf(value) + ' ' + value.asString(true).getString() + '\n';
    EXPECT_EQ(lines, R"(void 
num 0.1
llnum 9007199254740993
str "a text of more than sixteen bytes"
vec2 [1.5,-2]
vec3 [1.5,-2,0.25]
vec4 [1.5,-2,0.25,8]
guid {00112233-4455-6677-8899-AABBCCDDEEFF}
ptr 
ref 
error "it broke"
array [1.5,"one, two",-1]
chain [1.5,"one, two",-1]
cont {"size":1.5,"":"one, two","third":-1}
ttag {"time":12.5,"value":"then"}
color 
)");
    EXPECT_STREQ(qxDynamicType("a\\\"\n'\xC3\xA9\x7F").asString(true), "\"a\\\\\\x22\\x0A'\u00E9\\x7F\"");
    EXPECT_STREQ(qxDynamicType("a\\\"\n").asString(), "a\\\"\n");
}

TEST(qxDynamicType, aTextHasTheWantedSeparatorAndBrackets)
{
    const qxDynamicType value =
        arrayOf({1, arrayOf({2, "x", arrayOf({})}), qxVec2{3, 4}, qxDynamicType(), 5});
    EXPECT_STREQ(value.asString(), "[1,[2,x,[]],[3,4],,5]");
    EXPECT_STREQ(value.asString(true, false, "; "), "1; [2; \"x\"; []]; [3; 4]; ; 5");
    EXPECT_STREQ(arrayOf({}).asString(false, false), "");

    const std::string open(20000, '[');
    const std::string close(20000, ']');
    qxDynamicType deep;
    ASSERT_TRUE(deep.fromJSON((open + close).c_str()));
    EXPECT_EQ(deep.asString().getString(), open + close);
}

TEST(qxDynamicType, itemsHaveTextsToo)
{
    const qxDynamicType value = arrayOf({1, arrayOf({2, "x"}), "three"});
    EXPECT_STREQ(value.asString(0), "1");
    EXPECT_STREQ(value.asString(1U, true, false), "2,\"x\"");
    EXPECT_STREQ(value.asString(2), "three");
    EXPECT_STREQ(qxDynamicType("only").asString(0), "only");
    for (const int index : {3, -1})
        EXPECT_EQ(fatalText([&] { value.asString(index); }), "qxDynamicType::asString out of index size");
    EXPECT_EQ(fatalText([] { qxDynamicType("only").asString(1); }),
              "qxDynamicType::asString out of index size");
}

} // namespace
