// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "qxdynamictest.h"
#include "qxtestrows.h"

#include <cmath>
#include <limits>
#include <random>

namespace
{

// What a text is when it is written again, or the error.
std::string readAndWritten(const std::string& text)
{
    qxDynamicType value("before");
    qxString error;
    if (value.fromJSON(text.data(), text.size(), &error)) return value.asJSON().getString();
    EXPECT_EQ(value, qxDynamicType("before"));
    const std::string start = "qxDynamicType::fromJSON: ";
    EXPECT_EQ(std::string(error.getString()).substr(0, start.size()), start);
    return error.getString() + start.size();
}

TEST(qxDynamicType, readsJSON)
{
    expectRows(readAndWritten, //
               "null => null", "true => 1", "false => 0", " [ true , null ]\r\n\t => [1,null]",
               "\xEF\xBB\xBF[] => []", R"({"a":1,"":[],"a":{}} => {"a":1,"":[],"a":{}})",
               "[[],[[]],{}] => [[],[[]],{}]",
               R"({ "a" : { "b" : [ 1 , 2 ] } , "c" : "d" } => {"a":{"b":[1,2]},"c":"d"})",
               // numbers
               "0 => 0", "-0 => -0", "-0.50 => -0.5", "1e2 => 100", "1E+2 => 100", "12.5e-1 => 1.25",
               "0.1 => 0.1", "9007199254740991 => 9007199254740991", "9007199254740992 => 9007199254740992",
               "9007199254740993 => 9007199254740993", "-9223372036854775807 => -9223372036854775807",
               "-9223372036854775808 => -9223372036854775808", "9223372036854775808 => 9.223372036854776e+18",
               "1e999 => null", "-1e-999 => -0", "0e99999999999999999999 => 0",
               "1e99999999999999999999 => null", "1e-99999999999999999999 => 0", "0.0001e400 => null",
               "100000e-400 => 0",
               // texts
               R"("" => "")", R"("\"\\\/\b\f\n\r\t" => "\"\\/\b\f\n\r\t")",
               R"("\u0000\u001F\u00e9\u20AC" => "\u0000\u001f)"
               "\u00E9\u20AC\"",
               R"("\uD83D\uDE00 \uDBFF\uDFFF" => ")"
               "\U0001F600 \U0010FFFF\"",
               "\"\x7F\" => \"\x7F\"");
}

TEST(qxDynamicType, tellsWhatIsWrongWithJSONAndWhere)
{
    expectRows(
        readAndWritten, //
        " => a value is missing at (Line:1,Col:1)", "[1, => a value is missing at (Line:1,Col:4)",
        "[1,] => this is no value at (Line:1,Col:4)", "[1 2] => a comma or ] is missing at (Line:1,Col:4)",
        "[1} => a comma or ] is missing at (Line:1,Col:3)", "[ => a value is missing at (Line:1,Col:2)",
        "] => this is no value at (Line:1,Col:1)", "[] [] => only one value is allowed at (Line:1,Col:4)",
        "nul => this is no value at (Line:1,Col:1)", "True => this is no value at (Line:1,Col:1)",
        "nullx => only one value is allowed at (Line:1,Col:5)", "NaN => this is no value at (Line:1,Col:1)",
        "{1:2} => a name in quotes is missing at (Line:1,Col:2)",
        R"({"a" 1} => a colon is missing at (Line:1,Col:6))",
        R"({"a":1,} => a name in quotes is missing at (Line:1,Col:8))",
        R"({"a":1] => a comma or } is missing at (Line:1,Col:7))",
        R"({"\u0000":1} => a name cannot hold a zero at (Line:1,Col:2))",
        "- => a digit is missing at (Line:1,Col:2)", "01 => only one value is allowed at (Line:1,Col:2)",
        ".5 => this is no value at (Line:1,Col:1)", "1. => a digit is missing at (Line:1,Col:3)",
        "1e+ => a digit is missing at (Line:1,Col:4)", "+1 => this is no value at (Line:1,Col:1)",
        "-Infinity => a digit is missing at (Line:1,Col:2)",
        "0x10 => only one value is allowed at (Line:1,Col:2)",
        "[\n  \"abc => the text does not end at (Line:2,Col:3)",
        "\"\\ => the text does not end at (Line:1,Col:2)",
        "\"a\nb\" => control characters must be escaped at (Line:1,Col:3)",
        R"("\x" => this is no escape at (Line:1,Col:2))",
        R"("\u12" => \u needs four hexadecimal digits at (Line:1,Col:2))",
        R"("\u-123" => \u needs four hexadecimal digits at (Line:1,Col:2))",
        R"("\uD83D" => \u names half of a pair at (Line:1,Col:2))",
        R"("\uDE00\uD83D" => \u names half of a pair at (Line:1,Col:2))",
        R"("\uD83D\u0041" => \u names half of a pair at (Line:1,Col:2))",
        "\"\u20AC\xFF\" => this is no UTF-8 at (Line:1,Col:3)",
        "\"\xC0\x80\" => this is no UTF-8 at (Line:1,Col:2)",
        "\"\xED\xA0\x80\" => this is no UTF-8 at (Line:1,Col:2)",
        "\"\xF4\x90\x80\x80\" => this is no UTF-8 at (Line:1,Col:2)",
        "\"\xE2\x82 => this is no UTF-8 at (Line:1,Col:2)");
    EXPECT_EQ(readAndWritten(std::string("\0", 1)), "this is no value at (Line:1,Col:1)");
    const std::string text(65536, 'x');
    EXPECT_EQ(readAndWritten("[\"" + text + "\"]"), "the text has more than 65535 bytes at (Line:1,Col:2)");
}

TEST(qxDynamicType, hasAJSONFormForEachTag)
{
    std::string lines;
    for (const qxDynamicType& value : oneOfEach()) {
        const std::string text = value.asJSON().getString();
        lines += tagOf(value) + ' ' + text + '\n';
        EXPECT_EQ(readAndWritten(text), text);
    }
    EXPECT_EQ(lines, R"(void null
num 0.1
llnum 9007199254740993
str "a text of more than sixteen bytes"
vec2 [1.5,-2]
vec3 [1.5,-2,0.25]
vec4 [1.5,-2,0.25,8]
guid "{00112233-4455-6677-8899-AABBCCDDEEFF}"
ptr null
ref null
error {"error":"it broke"}
array [1.5,"one, two",-1]
chain [1.5,"one, two",-1]
cont {"size":1.5,"":"one, two","third":-1}
ttag {"time":12.5,"value":"then"}
color null
)");
    for (const double none : {HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_STREQ(qxDynamicType(none).asJSON(), "null");
        EXPECT_STREQ(qxDynamicType(qxVec2{static_cast<float>(none), 0.1F}).asJSON(), "[null,0.1]");
    }
    EXPECT_STREQ(qxDynamicType("\xC3\xA9\xFF\xED\xA0\x80").asJSON(), "\"\u00E9\uFFFD\uFFFD\uFFFD\uFFFD\"");
}

TEST(qxDynamicType, anyNumberComesBackFromJSON)
{
    std::mt19937_64 random(1);
    std::vector<double> numbers = {0.0, -0.0, 0x1p53, 0x1p53 - 1, 0x1p63, -0x1p63, 1e15, 1e21, 5e-324};
    for (int i = 0; i < 2000; ++i) {
        numbers.push_back(std::bit_cast<double>(random())); // of any size
        numbers.push_back(static_cast<double>(static_cast<qxInt64>(random()) >> (i % 64)));
    }
    for (const double number : numbers) {
        if (!std::isfinite(number)) continue;
        qxDynamicType read;
        ASSERT_TRUE(read.fromJSON(qxDynamicType(number).asJSON()));
        EXPECT_EQ(read, qxDynamicType(number)) << number;
    }
    for (const qxInt64 number : {1LL << 53, -(1LL << 53), 0x2FBFFF636F6E7400LL, -(1LL << 62)}) {
        qxDynamicType read;
        ASSERT_TRUE(read.fromJSON(qxDynamicTypeInt64(number).asJSON()));
        EXPECT_EQ(read, qxDynamicTypeInt64(number)) << number;
    }
}

TEST(qxDynamicType, JSONMayBeDeepAndLong)
{
    constexpr unsigned int DEPTH = 1000000;
    std::string text;
    for (unsigned int i = 0; i < DEPTH; ++i) text += i % 2 ? "{\"a\":" : "[";
    const std::string open = text;
    for (unsigned int i = DEPTH; i-- > 0;) text += i % 2 ? '}' : ']';
    text.insert(open.size(), "[1]");

    TestBlock stream(text);
    qxDynamicType value;
    EXPECT_TRUE(value.fromJSON(text.data(), text.size()));
    value.asJSON(&stream);
    EXPECT_TRUE(stream.written == text);

    std::string bytes(value.getDataSize(nullptr), '\0');
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
    value.write(&memory);
    memory.seek(0, QX_ORIGIN_START);
    qxDynamicType read;
    read.read(&memory);
    EXPECT_TRUE(read == value);
    EXPECT_FALSE(memory.hasError());
    EXPECT_FALSE(value.fromJSON(open.data(), open.size()));
    EXPECT_THROW(value.asJSON(), qxFatalError);
}

TEST(qxDynamicType, readsJSONFromAnyStream)
{
    forEachStream("[1,\"two\"] ", [](qxSerializeAdapter& stream) {
        qxDynamicType value;
        EXPECT_TRUE(value.fromJSON(&stream));
        EXPECT_EQ(value, arrayOf({1, "two"}));
        EXPECT_FALSE(stream.hasError());
    });
    TestStream faulty("[1,");
    qxDynamicType value;
    EXPECT_FALSE(value.fromJSON(&faulty));
    EXPECT_STREQ(faulty.getError(), "qxDynamicType::fromJSON: a value is missing at (Line:1,Col:4)");
}

} // namespace
