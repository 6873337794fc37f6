// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"
#include "qxtestsupport.h"
#include "qxxmlsax.h"

#include <functional>
#include <string>

namespace
{

/// Runs single productions.
class Productions : public qxXmlSax
{
public:
    struct Row {
        const char* name;
        qxParseResult (Productions::*production)();
        const char* text;
        const char* result; // what is left, "-" for no match, "!check@column" for an error
    };

    std::string run(const Row& row)
    {
        std::string bytes = row.text;
        qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
        reset();
        setAdapter(&memory);
        std::string result;
        try {
            const qxUInt64 start = getTokenPos();
            result = (this->*row.production)() == QX_PARSE_OK ? "" : "-";
            EXPECT_TRUE(result.empty() || getTokenPos() == start);
            if (result.empty()) {
                while (hasData()) result += static_cast<char>(getNextToken());
            }
        } catch (const qxParserException& exception) {
            EXPECT_EQ(exception.getErrorCode(), qxParserException::SYNTAX);
            EXPECT_EQ(std::string(exception.getErrorString().getString()), getError().getString());
            result = "!" + std::to_string(getErrorCheck()) + "@" + std::to_string(getErrorColumn());
        }
        setAdapter(nullptr);
        return result;
    }

    static const Row ROWS[];
};

#define ROW(NUMBER, TEXT, RESULT)                                                                            \
    {                                                                                                        \
#NUMBER, &Productions::XML_read_##NUMBER, TEXT, RESULT                                               \
    }
const Productions::Row Productions::ROWS[] = {
    ROW(02, "ab", "b"),
    ROW(02, "\xF0\x9F\x98\x80z", "z"),
    ROW(02, "\x01", "-"),
    ROW(03, " \t\r\nx ", "x "),
    ROW(03, "x", "-"),
    ROW(04, ":a", "a"),
    ROW(04, "\xF0\x90\x80\x80z", "z"),
    ROW(04, "-", "-"),
    ROW(04a, "-a", "a"),
    ROW(04a, "\xC2\xB7z", "z"),
    ROW(04a, "=", "-"),
    ROW(05, "a-b.9=", "="),
    ROW(05, "-a", "-"),
    ROW(06, "a b c  d", "  d"),
    ROW(06, " a", "-"),
    ROW(07, "-9.a b", " b"),
    ROW(07, " ", "-"),
    ROW(08, "1 -2 =", " ="),
    ROW(08, "=", "-"),
    ROW(09, "'a%b;&c;<'x", "x"),
    ROW(09, "a", "-"),
    ROW(10, "\"a'&lt;\"x", "x"),
    ROW(11, "'<&'x", "x"),
    ROW(12, "\"-'()\"x", "x"),
    ROW(12, "'\t'", "!1201@2"),
    ROW(13, "%a", "a"),
    ROW(13, "{", "-"),
    ROW(14, "a]b<", "<"),
    ROW(14, "<", "-"),
    ROW(17, "xmla?", "?"),
    ROW(17, "xml?", "!1701@1"),
    ROW(19, "<![CDATA[a", "a"),
    ROW(20, "a]]b]]>c", "]]>c"),
    ROW(21, "]]>c", "c"),
    ROW(21, "]]c", "-"),
    ROW(25, " = x", "x"),
    ROW(26, "1.05a", "a"),
    ROW(26, "2.0", "-"),
    ROW(28a, "%a; ", " "),
    ROW(29, "<!-- a -->b", "b"),
    ROW(30, "<?xml encoding='UTF-8'?><!ELEMENT a ANY>x", "x"),
    ROW(31, "<!ELEMENT a ANY> <![INCLUDE[%p;]]>]", "]"),
    ROW(33, "en-GB-x=", "="),
    ROW(33, "en-1", "!3301@4"),
    ROW(34, "i-abc-", "-"),
    ROW(35, "enx", "x"),
    ROW(35, "e1", "-"),
    ROW(36, "I-navajo ", " "),
    ROW(36, "i-", "!3601@3"),
    ROW(37, "x-y ", " "),
    ROW(37, "X-", "!3701@3"),
    ROW(38, "ab1", "1"),
    ROW(42, "</a>", "-"), // nothing is open
    ROW(43, "t<a/>&b;</c>", "</c>"),
    ROW(47, "a,b)*x", "x"),
    ROW(48, "(a|b)+x", "x"),
    ROW(48, "a?x", "x"),
    ROW(48, "?", "-"),
    ROW(49, "a|b)x", "x"),
    ROW(49, "a,b)x", "!4901@2"),
    ROW(50, "a,b)x", "x"),
    ROW(50, "a|b)x", "!4901@2"),
    ROW(61, "<![ IGNORE [<![x]]>]]>y", "y"),
    ROW(61, "<![ INCLUDE [<![INCLUDE[]]>]]>y", "y"),
    ROW(62, "INCLUDE[ %a; ]]>y", "y"),
    ROW(62, "IGNORE[]]>", "-"),
    ROW(63, "IGNORE[a]]>y", "y"),
    ROW(64, "a<![b]]>c]]>", "]]>"),
    ROW(65, "a]]b<![c", "<![c"),
    ROW(66, "&#x41;a", "a"),
    ROW(66, "&a;", "-"),
    ROW(69, "%a;b", "b"),
    ROW(77, "<?xml version='1.0' encoding='UTF-8'?>x", "x"),
    ROW(77, "<?xml version='1.0'?>", "!7701@20"),
    ROW(78, "<?xml encoding='UTF-8'?>t<a>u</a>", ""),
    ROW(78, "<a>", "!4201@4"),
    ROW(79, "<!ELEMENT a EMPTY>x", "x"),
    ROW(84, "a", ""),
    ROW(84, "_", "-"),
    ROW(85, "a", ""),
    ROW(85, "\xE4\xB8\x80", "-"),
    ROW(86, "\xE4\xB8\x80z", "z"),
    ROW(86, "a", "-"),
    ROW(87, "\xCC\x80z", "z"),
    ROW(87, "a", "-"),
    ROW(88, "1a", "a"),
    ROW(88, "a", "-"),
    ROW(89, "\xC2\xB7z", "z"),
    ROW(89, "a", "-"),
    ROW(91, "a", "-"),
    ROW(92, "a", "-"),
    ROW(93, "a", "-"),
    ROW(Test_ETag, "<a", "-"),
};
#undef ROW

TEST(qxXmlSaxProductions, takeTheirConstructOrNothing)
{
    const MessageRecorder messages;
    Productions sax;
    for (const Productions::Row& row : Productions::ROWS) {
        SCOPED_TRACE(std::string(row.name) + ": " + row.text);
        EXPECT_EQ(sax.run(row), row.result);
    }
}

} // namespace
