// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmlevents.h"

namespace
{

TEST(qxXmlSaxDocumentType, isReadWithoutCalls)
{
    const char* const subsets[] = {
        "",
        " \t\n",
        "<!ELEMENT a EMPTY><!ELEMENT b ANY ><!ELEMENT c (#PCDATA)><!ELEMENT d (#PCDATA)*>",
        "<!ELEMENT a ( #PCDATA | b | c )*>",
        "<!ELEMENT a (b)><!ELEMENT a (b?,c*,(d|e+)?)+><!ELEMENT a ((((b))))>",
        "<!ELEMENT a ( b | c | (d, e) )?>",
        "<!ATTLIST a><!ATTLIST a x CDATA #REQUIRED\n y ID #IMPLIED z NMTOKENS #FIXED 'v &amp; w'>",
        "<!ATTLIST a i IDREF #IMPLIED j IDREFS #IMPLIED k ENTITY #IMPLIED l ENTITIES #IMPLIED m NMTOKEN '1'>",
        "<!ATTLIST a x (p|q | 9-r) \"p\" y NOTATION (n | m) #IMPLIED >",
        "<!ENTITY e 'text &lt; &#65; &other;'><!ENTITY e \"'\"><!ENTITY f SYSTEM 'f' NDATA n >",
        "<!ENTITY e PUBLIC '-//X//Y' \"z\"><!ENTITY % p 'v'><!ENTITY % q SYSTEM \"q\">",
        "<!NOTATION n SYSTEM 's'><!NOTATION n PUBLIC 'p'><!NOTATION n PUBLIC \"p\" 's' >",
        "<!ENTITY % p ''> %p; <!-- c --><?p d?>",
        "<![INCLUDE[<!ELEMENT a ANY> <![ IGNORE [ x <![ y ]]> ]] ]]> %p; ]]>",
        "<![INCLUDE[<!ENTITY e '%p;'>]]>",
        "<![ IGNORE[<!ELEMENT <![[]]>]]>",
    };
    XmlEvents sax;
    sax.enableNotifyItemType(4095);
    for (const char* const subset : subsets) {
        SCOPED_TRACE(subset);
        EXPECT_EQ(sax.readText("<!DOCTYPE a [" + std::string(subset) + "] ><a/>"), "<a@1 |a@1 >a@1");
    }
    for (const char* const type :
         {"<!DOCTYPE a>", "<!DOCTYPE a >", "<!DOCTYPE a SYSTEM 'x'>",
          "<!DOCTYPE a PUBLIC \"-//W3C//DTD\" 'x' []>", "<!DOCTYPE a\nSYSTEM\t\"x\"[]\n>"}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(sax.readText("<!--b-->" + std::string(type) + "<!--c--><a/>"),
                  "--:'b'@0 --:'c'@0 <a@1 |a@1 >a@1");
    }
}

TEST(qxXmlSaxDocumentType, refusesWhatIsMalformed)
{
    const struct {
        const char* subset; // behind "<!DOCTYPE a [", which is 13 characters
        const char* error;
    } rows[] = {
        {"x", "2804@1:14"},
        {"<!ELEMENT a EMPTY", "4505@1:31"},
        {"<!ELEMENT a>", "4504@1:25"},
        {"<!ELEMENT a foo>", "4601@1:26"},
        {"<!ELEMENT a (b,c|d)>", "4901@1:30"},
        {"<!ELEMENT a (b|c,d)>", "4901@1:30"},
        {"<!ELEMENT a ()>", "4801@1:27"},
        {"<!ELEMENT a (b,)>", "4801@1:29"},
        {"<!ELEMENT a (b>", "4901@1:28"},
        {"<!ELEMENT a (#PCDATA|b)>", "5104@1:37"},
        {"<!ELEMENT a (#PCDATA,b)*>", "5103@1:34"},
        {"<!ELEMENT a (#pcdata)>", "5101@1:28"},
        {"<!EXTRA>", "2902@1:17"},
        {"<!FOO>", "2901@1:16"},
        {"<a/>", "2901@1:14"},
        {"<!ATTLIST a x>", "5301@1:27"},
        {"<!ATTLIST a x FOO 'y'>", "5401@1:28"},
        {"<!ATTLIST a x CDATA>", "5302@1:33"},
        {"<!ATTLIST a x CDATA y>", "6001@1:34"},
        {"<!ATTLIST a x CDATA #REQ>", "6001@1:38"},
        {"<!ATTLIST a x CDATA #FIXED>", "6002@1:40"},
        {"<!ATTLIST a x CDATA '<'>", "1001@1:35"},
        {"<!ATTLIST a x CDATA #IMPLIEDy>", "5204@1:42"},
        {"<!ATTLIST a x () #IMPLIED>", "5901@1:29"},
        {"<!ATTLIST a x NOTATION(n) #IMPLIED>", "5801@1:36"},
        {"<!ENTITY>", "7002@1:22"},
        {"<!ENTITY e>", "7102@1:24"},
        {"<!ENTITY e foo>", "7103@1:25"},
        {"<!ENTITY e 'x>", "901@1:28"},
        {"<!ENTITY e 'a & b'>", "6801@1:29"},
        {"<!ENTITY e '%p;'>", "902@1:26"},
        {"<!ENTITY e SYSTEM>", "7502@1:31"},
        {"<!ENTITY e SYSTEM x>", "7503@1:32"},
        {"<!ENTITY e PUBLIC 'p'>", "7502@1:35"},
        {"<!ENTITY e PUBLIC '{' 's'>", "1201@1:33"},
        {"<!ENTITY %p 'x'>", "7201@1:24"},
        {"<!ENTITY % p SYSTEM 's' NDATA n>", "7205@1:38"},
        {"<!NOTATION n>", "8204@1:26"},
        {"<!NOTATION n FOO>", "8205@1:27"},
        {"%p", "6902@1:16"},
        {"% p;", "6901@1:15"},
        {"<![FOO[]]>", "6101@1:17"},
        {"<![INCLUDE]]>", "6201@1:24"},
        {"<![INCLUDE[x]]>", "6202@1:25"},
        {"<![IGNORE[ <![ ]]>", "6302@1:32"},
        {"<!-- -- -->", "1503@1:21"},
        {"<?xml x?>", "1701@1:16"},
    };
    const MessageRecorder messages;
    XmlEvents sax;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.subset);
        EXPECT_EQ(sax.readText("<!DOCTYPE a [" + std::string(row.subset)), "!" + std::string(row.error));
    }
    EXPECT_EQ(sax.readText("<!DOCTYPE a><!DOCTYPE a><a/>"), "!101@1:13");
    EXPECT_EQ(sax.readText("<!DOCTYP a>"), "!2801@1:9");
    EXPECT_EQ(sax.readText("<!DOCTYPE>"), "!2802@1:10");
    EXPECT_EQ(sax.readText("<!DOCTYPE a foo>"), "!2805@1:13");
    EXPECT_EQ(sax.readText("<!DOCTYPE a SYSTEM 'x' x>"), "!2805@1:24");
}

TEST(qxXmlSaxDocumentType, nestedAsDeepAsOneWants)
{
    XmlEvents sax;
    const std::string open(200000, '(');
    const std::string close(200000, ')');
    EXPECT_EQ(sax.readText("<!DOCTYPE a [<!ELEMENT a " + open + "b" + close + ">]><a/>"), "<a@1 >a@1");

    std::string sections;
    std::string ends;
    for (int i = 0; i < 100000; ++i) {
        sections += "<![INCLUDE[";
        ends += "]]>";
    }
    EXPECT_EQ(sax.readText("<!DOCTYPE a [" + sections + "<![IGNORE[" + ends + ends.substr(0, 3) + "]><a/>"),
              "<a@1 >a@1");
}

TEST(qxXmlSaxDocumentType, isKeptForThoseWhoWantIt)
{
    class Keeping : public XmlEvents
    {
    public:
        Keeping() { keepDocumentType(true); }
    };
    const MessageRecorder messages;
    const std::string type = "<!DOCTYPE a [<!ENTITY e '" + std::string(65500, 'x') + "'>]>";
    Keeping sax;
    sax.readText("<!--c-->" + type + "<a/>");
    EXPECT_EQ(std::string(sax.getDocumentType().getString()), type);
    sax.readText("<a/>");
    EXPECT_TRUE(sax.getDocumentType().isEmpty());
    EXPECT_TRUE(messages.texts().empty());

    for (const std::size_t length : {65510U, 1000000U}) {
        sax.readText("<!DOCTYPE a [<!ENTITY e '" + std::string(length, 'x') + "'>]><a/>");
        EXPECT_TRUE(sax.getDocumentType().isEmpty());
        EXPECT_FALSE(sax.hasError());
    }
    EXPECT_EQ(messages.texts().size(), 2U);
}

} // namespace
