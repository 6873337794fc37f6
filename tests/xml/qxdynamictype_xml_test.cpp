// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "dynamic/qxdynamictest.h"
#include "qxxmltesttree.h"

#include <cmath>
#include <random>

namespace
{

qxDynamicType readXML(std::string text, bool& isValue, bool isSilent = false)
{
    qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
    return qxDynamicType::fromXML(&memory, &isValue, isSilent);
}

// What `text` is read as, or the error.
std::string readAs(const std::string& text)
{
    bool isValue = false;
    const qxDynamicType value = readXML(text, isValue, true);
    if (isValue) return tagOf(value) + " " + value.asString(true).getString();
    const std::string start = "qxDynamicType::fromXML: expected ";
    const std::string error = qxDynamicTypeError(value).getError().getString();
    EXPECT_EQ(error.substr(0, start.size()), start);
    return error.substr(std::min(start.size(), error.size()));
}

void expectSame(const qxDynamicType& value)
{
    TextSink sink;
    value.asXML(&sink);
    bool isValue = false;
    EXPECT_TRUE(readXML(sink.text, isValue) == value) << sink.text.substr(0, 1000);
    EXPECT_TRUE(isValue);
}

TEST(qxDynamicTypeXML, hasAFormForEachTag)
{
    std::string lines;
    for (const qxDynamicType& value : oneOfEach()) {
        expectSame(value);
        if (!value.is("ptr")) lines += std::string(value.asXML().getString()) + '\n';
    }
    EXPECT_EQ(lines, R"(<qxDyn type="void"/>
<qxDyn type="num">0.1</qxDyn>
<qxDyn type="llnum">9007199254740993</qxDyn>
<qxDyn type="str">a text of more than sixteen bytes</qxDyn>
<qxDyn type="vec2">1.5,-2</qxDyn>
<qxDyn type="vec3">1.5,-2,0.25</qxDyn>
<qxDyn type="vec4">1.5,-2,0.25,8</qxDyn>
<qxDyn type="guid">{00112233-4455-6677-8899-AABBCCDDEEFF}</qxDyn>
<qxDyn type="ref"/>
<qxDyn type="error">it broke</qxDyn>
<qxDyn type="array"><value type="num">1.5</value><value type="str">one, two</value><value type="llnum">-1</value></qxDyn>
<qxDyn type="chain"><value type="num">1.5</value><value type="str">one, two</value><value type="llnum">-1</value></qxDyn>
<qxDyn type="cont"><value name="size" type="num">1.5</value><value name="" type="str">one, two</value><value name="third" type="llnum">-1</value></qxDyn>
<qxDyn type="ttag" time="12.5"><value type="str">then</value></qxDyn>
<qxDyn type="color" encoding="b64">/4AA</qxDyn>
)");
}

TEST(qxDynamicTypeXML, anyTextComesBack)
{
    std::string bytes;
    for (int i = 255; i >= 0; --i) bytes += static_cast<char>(i);
    const std::string texts[] = {" \t\n",
                                 "\r",
                                 "a\r\nb\r",
                                 "function:a",
                                 "function:\rfunction:",
                                 "]]>",
                                 "&amp;<b/>'\"",
                                 "\xC3\xA9 \xF0\x9F\x98\x80",
                                 "\xEF\xBF\xBE",
                                 "\xED\xA0\x80",
                                 "\xC0\x80",
                                 "\xE2\x82",
                                 "\x01",
                                 std::string("a\0b", 3),
                                 bytes,
                                 std::string(65535, 'x'),
                                 std::string(65535, '\r')};
    for (const std::string& text : texts) {
        SCOPED_TRACE(toHex(text.substr(0, 100)));
        const qxString string(text.data(), text.size());
        expectSame(qxDynamicType(string));
        expectSame(qxDynamicTypeError(string));
        if (text.find('\0') != text.npos) continue;
        const qxDynamicType named(7);
        expectSame(qxDynamicTypeContainer(&string, &named, 1));
        expectSame(qxDynamicTypeCustom(string, reinterpret_cast<const unsigned char*>("\xFF"), 1));
    }
    const std::string block(200000, '\x80');
    expectSame(arrayOf(
        {qxDynamicTypeCustom("long", reinterpret_cast<const unsigned char*>(block.data()), block.size())}));
}

TEST(qxDynamicTypeXML, anyNumberComesBack)
{
    std::mt19937_64 random(1);
    std::vector<double> numbers = {0.0,           -0.0,   HUGE_VAL, -HUGE_VAL, std::nan(""),
                                   -std::nan(""), 0x1p53, 5e-324,   1e308};
    for (int i = 0; i < 1000; ++i) numbers.push_back(std::bit_cast<double>(random()));
    for (int i = 1; i < 5; ++i) // of those that are no numbers
        numbers.push_back(std::bit_cast<double>(random() >> 12 | 0x7FF0000000000000));
    for (const double number : numbers) {
        const auto part =
            std::bit_cast<float>(static_cast<unsigned int>(std::bit_cast<qxUInt64>(number) >> 32));
        expectSame(number);
        expectSame(qxDynamicTypeTimeTagged(qxVec2{part, 1.0F}, number));
        expectSame(qxDynamicTypeInt64(std::bit_cast<qxInt64>(number)));
    }
    EXPECT_STREQ(qxDynamicType(std::bit_cast<double>(0xFFF8000000000000)).asXML(),
                 "<qxDyn type=\"num\">nan:fff8000000000000</qxDyn>");
}

TEST(qxDynamicTypeXML, addressesAndObjectsDoNotTravel)
{
    int target = 0;
    const qxDynamicType value =
        arrayOf({qxDynamicType(static_cast<void*>(&target)), qxDynamicType(new TestObject)});
    expectSame(value);
    const qxArray<qxDynamicType> items = qxDynamicTypeArray(qxDynamicType::fromXML(value.asXML())).getArray();
    EXPECT_EQ(items[0].getPointer(), nullptr);
    EXPECT_EQ(items[1].getReference(), nullptr);
    EXPECT_NE(std::string(value.asXML().getString()).find("<value type=\"ref\" references=\"1\"/>"),
              std::string::npos);
}

TEST(qxDynamicTypeXML, readsMoreThanItWrites)
{
    expectRows(readAs, //
               "<qxDyn type='num'> \n1e3\t</qxDyn> => num 1000", "<a type='num'>.5</a> => num 0.5",
               "<?xml version='1.0'?><!--c--><a type='num'><!--c-->1<!--d-->2</a> => num 12",
               "<a name='x' type='&#x6e;um'>&#49;</a> => num 1", "<a type='str'/> => str \"\"",
               "<a type='str'></a> => str \"\"",
               "<a type='str'> a<![CDATA[<&]] ]]>&lt;]] </a> => str \" a<&]] <]] \"",
               "<a type='str' Encoding='HEX'>61 6A\n6b</a> => str \"ajk\"",
               "<a type='str' encoding='b64'>YQ = =</a> => str \"a\"", "<a type64='bnVt'>1</a> => num 1",
               "<a type='array'> <!--c--> <value type='vec2'> 1 , 2 </value > <!--c--> </a> => array [[1,2]]",
               "<a type='cont'><value name64='YQ==' type='array'/></a> => cont {\"a\":[]}",
               "<a type='num'>nan:7ff8000000000001</a> => num nan");
}

TEST(qxDynamicTypeXML, tellsWhatIsWrongAndWhere)
{
    const std::string item = "an element \"value\" or the end tag";
    const std::string end = "the end tag of the value";
    const auto inArray = [](const std::string& text) { return "<a type='array'>\n" + text + "</a> => "; };
    expectRows(readAs, //
               "<a/> => a type at (Line:1,Col:5)", "<a type=''/> => a type at (Line:1,Col:13)",
               "<a type='num' x='1'>1</a> => no other attributes than those of values at (Line:1,Col:21)",
               "<a type='num' type64='bnVt'>1</a> => one type, as it stands or in base64 at (Line:1,Col:29)",
               "<a type='num' time='1'>1</a> => a time where the type is \"ttag\", and only there at "
               "(Line:1,Col:24)",
               "<a type='num'>1x</a> => a number at (Line:1,Col:15)",
               "<a type='num'/> => a number at (Line:1,Col:16)",
               "<a type='num'>infinity</a> => a number at (Line:1,Col:15)",
               "<a type='num'>0x1</a> => a number at (Line:1,Col:15)",
               "<a type='num'>1e999</a> => a number at (Line:1,Col:15)",
               "<a type='num'>nan:1</a> => a number at (Line:1,Col:15)",
               "<a type='num'>nan:3ff8000000000001</a> => a number at (Line:1,Col:15)",
               "<a type='num' encoding='b64'>1</a> => no encoding for values of this type at (Line:1,Col:30)",
               "<a type='num'>1<b/></a> => " + end + " at (Line:1,Col:16)",
               "<a type='llnum'>9223372036854775808</a> => an integer of 64 bits at (Line:1,Col:17)",
               "<a type='vec2'>1</a> => two numbers with a comma between them at (Line:1,Col:16)",
               "<a type='vec3'>1,2,3,4</a> => three numbers with commas between them at (Line:1,Col:16)",
               "<a type='guid'>{0}</a> => a GUID in braces at (Line:1,Col:16)",
               "<a type='ptr'>0</a> => an address of 16 hexadecimal digits at (Line:1,Col:15)",
               "<a type='void'>x</a> => nothing at (Line:1,Col:16)",
               "<a type='str'>&foo;</a> => a predefined reference or one to a character at (Line:1,Col:15)",
               "<a type='own'>x</a> => bytes in base64 at (Line:1,Col:15)",
               "<a type='own' encoding='hex'>a</a> => bytes as hexadecimal digits at (Line:1,Col:30)",
               "<a type='own' encoding='b32'/> => the encoding \"b64\" or \"hex\" at (Line:1,Col:31)",
               inArray("1") + item + " at (Line:2,Col:1)", inArray("<b/>") + item + " at (Line:2,Col:1)",
               inArray(" <value type='num'>a</value>") + "a number at (Line:2,Col:20)",
               inArray("<value/>") + "a type at (Line:2,Col:1)",
               inArray("<value type='ref' references='-1'/>") + "a number of references at (Line:2,Col:1)",
               inArray("<value name='x' type='ref'/>") +
                   "names for the values in a \"cont\", and only for them at (Line:2,Col:1)",
               "<a type='cont'><value type='ref'/></a> => names for the values in a \"cont\", and only for "
               "them at (Line:1,Col:16)",
               "<a type='cont'><value name64='AA==' type='ref'/></a> => a name of at most 65,535 bytes and "
               "without a zero at "
               "(Line:1,Col:16)",
               "<a type='ttag' time='1'></a> => one value behind a time at (Line:1,Col:25)",
               "<a type='ttag' time='x'/> => a number as time at (Line:1,Col:26)",
               "<a type='ttag' time='1'><value type='ref' references='1'/></a> => no references behind a "
               "time at (Line:1,Col:25)",
               // what is wrong with the document comes first
               " => the root element at (Line:1,Col:1)", "<a type='num'>1 => an end tag at (Line:1,Col:16)",
               "<a type='str'>\x01</a> => a character that XML allows at (Line:1,Col:15)",
               "<a type='str'>]]></a> => no \"]]>\" in text at (Line:1,Col:15)",
               "<a type='num'>1</a>b => only comments, processing instructions and white space behind the "
               "root element at "
               "(Line:1,Col:20)");
    const std::string many(65536, 'x');
    EXPECT_EQ(readAs("<a type='str' encoding='hex'>" + many + many + "</a>"),
              "bytes as hexadecimal digits at (Line:1,Col:30)");
    std::string digits;
    for (int i = 0; i < 65536; ++i) digits += "61";
    EXPECT_EQ(readAs("<a type='str' encoding='hex'>" + digits + "</a>"),
              "a text of at most 65,535 bytes at (Line:1,Col:30)");
}

TEST(qxDynamicTypeXML, sendsTheErrorUnlessItIsToBeSilent)
{
    const MessageRecorder messages;
    bool ok = true;
    const std::string error = "qxDynamicType::fromXML: expected a number at (Line:1,Col:19)";
    EXPECT_STREQ(
        qxDynamicTypeError(qxDynamicType::fromXML("<qxDyn type=\"num\">x</qxDyn>", &ok, true)).getError(),
        error.c_str());
    EXPECT_FALSE(ok);
    qxDynamicType::fromXML("<qxDyn type=\"error\">x</qxDyn>", &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(messages.texts(), std::vector<std::string>{});
    qxDynamicType::fromXML("<qxDyn type=\"num\">x</qxDyn>");
    EXPECT_EQ(messages.texts(), std::vector<std::string>{error});
}

TEST(qxDynamicTypeXML, readsFromAnyStream)
{
    const std::string text = "<qxDyn type=\"array\"> <value type=\"num\">1</value> </qxDyn> ";
    forEachStream(text, [](qxSerializeAdapter& stream) {
        EXPECT_EQ(qxDynamicType::fromXML(&stream), arrayOf({1}));
        EXPECT_FALSE(stream.hasData());
    });
}

TEST(qxDynamicTypeXML, mayBeDeepAndLong)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr unsigned int LEVELS = 100000;
#else
    constexpr unsigned int LEVELS = 1000000;
#endif
    std::string text = "<qxDyn type=\"array\">";
    for (unsigned int i = 0; i < LEVELS; ++i)
        text += i % 2 ? "<value type=\"array\">" : "<value type=\"ttag\" time=\"1\">";
    const std::string open = text;
    text += "<value type=\"void\"/>";
    for (unsigned int i = 0; i < LEVELS; ++i) text += "</value>";
    text += "</qxDyn>";
    bool isValue = false;
    const qxDynamicType value = readXML(text, isValue);
    ASSERT_TRUE(isValue);
    TextSink sink;
    value.asXML(&sink);
    EXPECT_TRUE(sink.text == text);
    EXPECT_EQ(readAs(open),
              "an element \"value\" or the end tag at (Line:1,Col:" + std::to_string(open.size() + 1) + ")");
    EXPECT_THROW(value.asXML(), qxFatalError);
}

} // namespace
