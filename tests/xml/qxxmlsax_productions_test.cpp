// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"
#include "qxtestsupport.h"
#include "qxxmlsax.h"

#include <string>
#include <vector>

namespace
{

/// Runs single productions.
class Productions : public qxXmlSax
{
public:
    struct Row {
        const char* name;
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

#define ROW(NUMBER, ...)                                                                                     \
    {                                                                                                        \
#NUMBER, &Productions::XML_read_##NUMBER,                                                            \
        {                                                                                                    \
            __VA_ARGS__                                                                                      \
        }                                                                                                    \
    }
const Productions::Row Productions::ROWS[] = {
    ROW(02, "a^b", "\xF0\x9F\x98\x80^z", "^\x01"),
    ROW(03, " \t\r\n^x ", "^x"),
    ROW(04, ":^a", "\xF0\x90\x80\x80^z", "^-"),
    ROW(04a, "-^a", "\xC2\xB7^z", "^="),
    ROW(05, "a-b.9^=", "^-a"),
    ROW(06, "a b c^  d", "^ a"),
    ROW(07, "-9.a^ b", "^ "),
    ROW(08, "1 -2^ =", "^="),
    ROW(09, "'a%b;&c;<'^x", "^a"),
    ROW(10, "\"a'&lt;\"^x"),
    ROW(11, "'<&'^x"),
    ROW(12, "\"-'()\"^x", "!1201|'^\t'"),
    ROW(13, "%^a", "^{"),
    ROW(14, "a]b^<", "^<"),
    ROW(17, "xmla^?", "!1701|^xml?"),
    ROW(19, "<![CDATA[^a"),
    ROW(20, "a]]b^]]>c"),
    ROW(21, "]]>^c", "^]]c"),
    ROW(25, " = ^x"),
    ROW(26, "1.05^a", "^2.0"),
    ROW(28a, "%a;^ "),
    ROW(29, "<!-- a -->^b"),
    ROW(30, "<?xml encoding='UTF-8'?><!ELEMENT a ANY>^x"),
    ROW(31, "<!ELEMENT a ANY> <![INCLUDE[%p;]]>^]"),
    ROW(33, "en-GB-x^=", "!3301|en-^1"),
    ROW(34, "i-abc^-"),
    ROW(35, "en^x", "^e1"),
    ROW(36, "I-navajo^ ", "!3601|i-^"),
    ROW(37, "x-y^ ", "!3701|X-^"),
    ROW(38, "ab^1"),
    ROW(42, "^</a>"),
    ROW(43, "t<a/>&b;^</c>"),
    ROW(47, "a,b)*^x"),
    ROW(48, "(a|b)+^x", "a?^x", "^?"),
    ROW(49, "a|b)^x", "!4901|a^,b)x"),
    ROW(50, "a,b)^x", "!4901|a^|b)x"),
    ROW(61, "<![ IGNORE [<![x]]>]]>^y", "<![ INCLUDE [<![INCLUDE[]]>]]>^y"),
    ROW(62, "INCLUDE[ %a; ]]>^y", "^IGNORE[]]>"),
    ROW(63, "IGNORE[a]]>^y"),
    ROW(64, "a<![b]]>c^]]>"),
    ROW(65, "a]]b^<![c"),
    ROW(66, "&#x41;^a", "^&a;"),
    ROW(69, "%a;^b"),
    ROW(77, "<?xml version='1.0' encoding='UTF-8'?>^x", "!7701|<?xml version='1.0'^?>"),
    ROW(78, "<?xml encoding='UTF-8'?>t<a>u</a>^", "!4201|<a>^"),
    ROW(79, "<!ELEMENT a EMPTY>^x"),
    ROW(84, "a^", "^_"),
    ROW(85, "a^", "^\xE4\xB8\x80"),
    ROW(86, "\xE4\xB8\x80^z", "^a"),
    ROW(87, "\xCC\x80^z", "^a"),
    ROW(88, "1^a", "^a"),
    ROW(89, "\xC2\xB7^z", "^a"),
    ROW(91, "^a"),
    ROW(92, "^a"),
    ROW(93, "^a"),
    ROW(Test_ETag, "^<a"),
};
#undef ROW

TEST(qxXmlSaxProductions, takeTheirConstructOrNothing)
{
    const MessageRecorder messages;
    Productions sax;
    for (const Productions::Row& row : Productions::ROWS) {
        SCOPED_TRACE(row.name);
        for (const std::string& text : row.texts) {
            std::string plain = text.substr(text[0] == '!' ? text.find('|') + 1 : 0);
            EXPECT_EQ(sax.run(row.production, plain.erase(plain.find('^'), 1)), text);
        }
    }
}

} // namespace
