// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmlevents.h"

namespace
{

TEST(qxXmlSaxDocumentType, isReadWithoutCalls)
{
    XmlEvents sax;
    sax.enableNotifyItemType(4095);
    for (const std::string subset :
         {"", " \t\n", "<!ELEMENT a EMPTY><!ELEMENT b ANY ><!ELEMENT c (#PCDATA)><!ELEMENT d (#PCDATA)*>",
          "<!ELEMENT a ( #PCDATA | b | c )*>",
          "<!ELEMENT a (b)><!ELEMENT a (b?,c*,(d|e+)?)+><!ELEMENT a ((((b))))>",
          "<!ELEMENT a ( b | c | (d, e) )?>",
          "<!ATTLIST a><!ATTLIST a x CDATA #REQUIRED\n y ID #IMPLIED z NMTOKENS #FIXED 'v &amp; w'>",
          "<!ATTLIST a i IDREF #IMPLIED j IDREFS #IMPLIED k ENTITY #IMPLIED l ENTITIES #IMPLIED m NMTOKEN "
          "'1'>",
          "<!ATTLIST a x (p|q | 9-r) \"p\" y NOTATION (n | m) #IMPLIED >",
          "<!ENTITY e 'text &lt; &#65; &other;'><!ENTITY e \"'\"><!ENTITY f SYSTEM 'f' NDATA n >",
          "<!ENTITY e PUBLIC '-//X//Y' \"z\"><!ENTITY % p 'v'><!ENTITY % q SYSTEM \"q\">",
          "<!NOTATION n SYSTEM 's'><!NOTATION n PUBLIC 'p'><!NOTATION n PUBLIC \"p\" 's' >",
          "<!ENTITY % p ''> %p; <!-- c --><?p d?>",
          "<![INCLUDE[<!ELEMENT a ANY> <![ IGNORE [ x <![ y ]]> ]] ]]> %p; ]]>",
          "<![INCLUDE[<!ENTITY e '%p;'>]]>", "<![ IGNORE[<!ELEMENT <![[]]>]]>"})
        EXPECT_EQ(sax.readText("<!DOCTYPE a [" + subset + "] ><a/>"), "<a@1 |a@1 >a@1") << subset;
    for (const std::string type :
         {"", " ", " SYSTEM 'x'", " PUBLIC \"-//W3C//DTD\" 'x' []", "\nSYSTEM\t\"x\"[]\n"})
        EXPECT_EQ(sax.readText("<!--b--><!DOCTYPE a" + type + "><!--c--><a/>"),
                  "--:'b'@0 --:'c'@0 <a@1 |a@1 >a@1")
            << type;
}

/// Each row is a check, a bar, and the text behind "<!DOCTYPE a" with "^" where the error is.
template <class... Rows>
void checkErrors(const Rows&... rows)
{
    const MessageRecorder messages;
    XmlEvents sax;
    for (std::string row : {std::string(rows)...})
        sax.expectMarks(row.insert(row.find('|') + 1, "<!DOCTYPE a"));
}

TEST(qxXmlSaxDocumentType, refusesWhatIsMalformed)
{
    checkErrors(
        "101|>^<!DOCTYPE a><a/>", "2805| ^foo>", "2805| SYSTEM 's' ^x>", "2804| [^x",
        "4505| [<!ELEMENT a EMPTY^", "4504| [<!ELEMENT a^>", "4601| [<!ELEMENT a ^foo>",
        "4901| [<!ELEMENT a (b,c^|d)>", "4901| [<!ELEMENT a (b|c^,d)>", "4801| [<!ELEMENT a (^)>",
        "4801| [<!ELEMENT a (b,^)>", "4901| [<!ELEMENT a (b^>", "5104| [<!ELEMENT a (#PCDATA|b)^>",
        "5103| [<!ELEMENT a (#PCDATA^,b)*>", "5101| [<!ELEMENT a (#^pcdata)>", "2902| [<!E^XTRA>",
        "2901| [<!^FOO>", "2901| [^<a/>", "5301| [<!ATTLIST a x^>", "5401| [<!ATTLIST a x ^FOO 'y'>",
        "5302| [<!ATTLIST a x CDATA^>", "6001| [<!ATTLIST a x CDATA ^y>", "6001| [<!ATTLIST a x CDATA #REQ^>",
        "6002| [<!ATTLIST a x CDATA #FIXED^>", "1001| [<!ATTLIST a x CDATA '^<'>",
        "5204| [<!ATTLIST a x CDATA #IMPLIED^y>", "5901| [<!ATTLIST a x (^) #IMPLIED>",
        "5801| [<!ATTLIST a x NOTATION^(n) #IMPLIED>", "7002| [<!ENTITY^>", "7102| [<!ENTITY e^>",
        "7103| [<!ENTITY e ^foo>", "901| [<!ENTITY e 'x>^", "6801| [<!ENTITY e 'a &^ b'>",
        "902| [<!ENTITY e '^%p;'>", "7502| [<!ENTITY e SYSTEM^>", "7503| [<!ENTITY e SYSTEM ^x>",
        "7502| [<!ENTITY e PUBLIC 'p'^>", "1201| [<!ENTITY e PUBLIC '^{' 's'>", "7201| [<!ENTITY %^p 'x'>",
        "7205| [<!ENTITY % p SYSTEM 's' ^NDATA n>", "8204| [<!NOTATION n^>", "8205| [<!NOTATION n ^FOO>",
        "6902| [%p^", "6901| [%^ p;", "6101| [<![^FOO[]]>", "6201| [<![INCLUDE^]]>",
        "6202| [<![INCLUDE[^x]]>", "6302| [<![IGNORE[ <![ ]]>^", "1503| [<!-- --^ -->", "1701| [<?^xml x?>");
    const MessageRecorder messages;
    XmlEvents().expectMarks("2801|<!DOCTYP^ a>", "2802|<!DOCTYPE^>");
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
    const auto type = [](std::size_t length) {
        return "<!DOCTYPE a [<!ENTITY e '" + std::string(length, 'x') + "'>]>";
    };
    Keeping sax;
    sax.readText("<!--c-->" + type(65506) + "<a/>");
    EXPECT_EQ(std::string(sax.getDocumentType().getString()), type(65506)); // 65,535 bytes
    EXPECT_TRUE(messages.texts().empty());
    for (const std::size_t length : {65507U, 1000000U}) {
        EXPECT_EQ(sax.readText(type(length) + "<a/>"), "<a@1 >a@1");
        EXPECT_TRUE(sax.getDocumentType().isEmpty());
    }
    const char* const text = "A document type of more than 65535 bytes is not kept";
    EXPECT_EQ(messages.texts(), (std::vector<std::string>{text, text}));
}

} // namespace
