// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"
#include "qxtestsupport.h"
#include "qxxmlsax.h"

#include <string>
#include <vector>

namespace
{

/// Runs single productions: those that no document comes to, and those that end in ways of their own.
class Productions : public qxXmlSax
{
public:
    struct Row {
        qxParseResult (Productions::*production)();
        std::vector<std::string> texts; // "^" behind what is taken; "!check|text", "^" where it is wrong
    };

    std::string run(qxParseResult (Productions::*production)(), std::string text)
    {
        qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
        reset();
        setAdapter(&memory);
        std::string result;
        try {
            const qxParseResult answer = (this->*production)();
            EXPECT_EQ(answer, getTokenPos() == 0 ? QX_PARSE_NO_MATCH : QX_PARSE_OK);
        } catch (const qxParserException& exception) {
            EXPECT_EQ(exception.getErrorCode(), qxParserException::SYNTAX);
            EXPECT_STREQ(exception.getErrorString().getString(), getError().getString());
            result = "!" + std::to_string(getErrorCheck()) + "|";
        }
        setAdapter(nullptr);
        return result + text.insert(text.size() - memory.length(), "^");
    }

    static const Row ROWS[];
};

typedef Productions P;
const Productions::Row Productions::ROWS[] = {
    {&P::XML_read_02, {"a^b", "\xF0\x9F\x98\x80^z", "^\x01"}},
    {&P::XML_read_04, {":^a", "\xF0\x90\x80\x80^z", "^-"}},
    {&P::XML_read_04a, {"-^a", "\xC2\xB7^z", "^="}},
    {&P::XML_read_06, {"a b c^  d", "^ a"}},
    {&P::XML_read_08, {"1 -2^ =", "^="}},
    {&P::XML_read_20, {"a]]b^]]>c"}},
    {&P::XML_read_30, {"<?xml encoding='UTF-8'?><!ELEMENT a ANY>^x"}},
    {&P::XML_read_31, {"<!ELEMENT a ANY> <![INCLUDE[%p;]]>^]"}},
    {&P::XML_read_33, {"en-GB-x^=", "!3301|en-^1"}},
    {&P::XML_read_34, {"i-abc^-"}},
    {&P::XML_read_35, {"en^x", "^e1"}},
    {&P::XML_read_36, {"I-navajo^ ", "!3601|i-^"}},
    {&P::XML_read_37, {"x-y^ ", "!3701|X-^"}},
    {&P::XML_read_38, {"ab^1"}},
    {&P::XML_read_43, {"t<a/>&b;^</c>"}},
    {&P::XML_read_47, {"a,b)*^x"}},
    {&P::XML_read_48, {"(a|b)+^x", "a?^x", "^?"}},
    {&P::XML_read_49, {"a|b)^x", "!4901|a^,b)x"}},
    {&P::XML_read_50, {"a,b)^x", "!4901|a^|b)x"}},
    {&P::XML_read_61, {"<![ IGNORE [<![x]]>]]>^y", "<![ INCLUDE [<![INCLUDE[]]>]]>^y"}},
    {&P::XML_read_62, {"INCLUDE[ %a; ]]>^y", "^IGNORE[]]>"}},
    {&P::XML_read_63, {"IGNORE[a]]>^y"}},
    {&P::XML_read_64, {"a<![b]]>c^]]>"}},
    {&P::XML_read_65, {"a]]b^<![c"}},
    {&P::XML_read_77, {"<?xml version='1.0' encoding='UTF-8'?>^x", "!7701|<?xml version='1.0'^?>"}},
    {&P::XML_read_78, {"<?xml encoding='UTF-8'?>t<a>u</a>^", "!4201|<a>^"}},
    {&P::XML_read_79, {"<!ELEMENT a EMPTY>^x"}},
    {&P::XML_read_84, {"a^", "^_"}},
    {&P::XML_read_85, {"a^", "^\xE4\xB8\x80"}},
    {&P::XML_read_86, {"\xE4\xB8\x80^z", "^a"}},
    {&P::XML_read_87, {"\xCC\x80^z", "^a"}},
    {&P::XML_read_88, {"1^a", "^a"}},
    {&P::XML_read_89, {"\xC2\xB7^z", "^a"}},
    {&P::XML_read_91, {"^a"}},
    {&P::XML_read_92, {"^a"}},
    {&P::XML_read_93, {"^a"}},
    {&P::XML_read_Test_ETag, {"^<a"}},
};

TEST(qxXmlSaxProductions, takeTheirConstructOrNothing)
{
    const MessageRecorder messages;
    Productions sax;
    for (const Productions::Row& row : Productions::ROWS) {
        for (const std::string& text : row.texts) {
            std::string plain = text.substr(text[0] == '!' ? text.find('|') + 1 : 0);
            EXPECT_EQ(sax.run(row.production, plain.erase(plain.find('^'), 1)), text);
        }
    }
}

} // namespace
