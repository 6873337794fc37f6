// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypeargumentparser.h"
#include "qxregkeyexpandparser.h"

#include "qxdynamictypes.h"
#include "qxtestrows.h"

#include <string>

namespace
{

/// The values of a text in brackets, each with its tag, and the error.
std::string valuesOf(const std::string& text)
{
    qxDynamicTypeArgumentParser parser;
    std::string answer;
    for (const qxDynamicType& value : parser.parseArguments(text.data(), text.size()))
        answer += std::string(value.getDynamicType()) + " " + value.asString(true).getString() + "; ";
    return answer + parser.getError().getString();
}

TEST(qxDynamicTypeArgumentParser, readsValues)
{
    expectRows(valuesOf, " => ", "1 => num 1; ", " -1.5e2 , +7  => num -150; num 7; ", "-0 => num 0; ",
               "4294967295,-4294967296 => num 4294967295; llnum -4294967296; ", "1e10 => num 1e+10; ",
               "99999999999999999999 => llnum 9223372036854775807; ",
               "\"it's\",'say \"no\"','' => str \"it's\"; str \"say \\x22no\\x22\"; str \"\"; ",
               "yes,No,TRUE,false => num 1; num 0; num 1; num 0; ",
               "{01234567-89ab-cdef-0123-456789abcdef} => guid {01234567-89AB-CDEF-0123-456789ABCDEF}; ",
               "[],[1,[2,'x'],[ ]] => array []; array [1,[2,\"x\"],[]]; ");
}

TEST(qxDynamicTypeArgumentParser, saysWhereItStopped)
{
    expectRows(valuesOf, "1,2,x => num 1; num 2; Not All arguments were parsed",
               "nose => Not All arguments were parsed", "[1,2 => Array not properly closed",
               "1,[2,[3] => num 1; Array not properly closed",
               "[1],[],x => array [1]; array []; Not All arguments were parsed",
               "1,\t2 => num 1; Not All arguments were parsed", "'a => Not All arguments were parsed",
               "{0123} => Not All arguments were parsed");
}

TEST(qxDynamicTypeArgumentParser, takesAnySeparator)
{
    qxDynamicTypeArgumentParser parser("';'");
    EXPECT_EQ(parser.parseArguments("1';'[2';'3]").entries(), 2U);
    EXPECT_FALSE(parser.hasError());
}

TEST(qxDynamicType, comesBackFromItsText)
{
    const qxDynamicType inner[] = {0.1, "a\"b\\x41\n"};
    const qxDynamicType items[] = {qxDynamicTypeInt64(1LL << 60), qxDynamicTypeArray(inner, 2),
                                   qxGUID(1, 2, 3, 4)};
    const qxDynamicType values[] = {qxDynamicType(), -1.5e300, "it's", qxDynamicTypeArray(items, 3),
                                    qxDynamicTypeArray(items, 0)};
    for (const qxDynamicType& value : values) {
        SCOPED_TRACE(value.asString(true).getString());
        bool ok = false;
        EXPECT_TRUE(qxDynamicType::fromString(value.asString(true), ",", &ok) == value);
        EXPECT_TRUE(ok);
    }
    EXPECT_STREQ(qxDynamicType::fromString("1; [2;yes]", ";", nullptr, false).asString(), "[1,[2,1]]");

    bool ok = true;
    const qxDynamicTypeError fault(qxDynamicType::fromString("1,2", ",", &ok));
    EXPECT_FALSE(ok);
    EXPECT_STREQ(fault.getError(), "Not All arguments were parsed");
}

TEST(qxRegKeyExpandParser, putsValuesInPlaceOfKeys)
{
    class Parser : public qxRegKeyExpandParser
    {
        qxString getKey(const qxString& key) override
        {
            return key == "none" ? qxString() : "<" + key + "$(x)>";
        }
    };
    expectRows(
        [](const std::string& text) -> std::string { return Parser().parse(text.c_str()).getString(); },
        " => ", "ab => ab", "a$(b)c$(d)$(none) => a<b$(x)>c<d$(x)>", "$() => <$(x)>", "a$b)$(c => a$b)$(c",
        "$(a)$(b => <a$(x)>$(b", "\xC3\xA9$(\xC3\xA9) => \xC3\xA9<\xC3\xA9$(x)>");
    Parser parser;
    EXPECT_TRUE(parser.parse(qxString::spaces(65528) + "$(key)").isEmpty());
    EXPECT_EQ(parser.getError(), "Too many characters in qxString");
}

} // namespace
