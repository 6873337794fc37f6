// SPDX-License-Identifier: see LICENSE

#include "qxlex.h"

#include "qxdynamictypes.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxserializebinary.h"

#include "qxtestfolder.h"
#include "qxtestrows.h"
#include "qxteststream.h"
#include "qxtesttexts.h"

#include <functional>
#include <limits>
#include <memory>

namespace
{

constexpr double INFINITE = std::numeric_limits<double>::infinity();

using Switches = std::function<void(qxSerializeLex& lexer)>;

/// The bytes that write gives.
std::string written(qxSerializeLex& lexer)
{
    TestStream stream;
    lexer.write(&stream);
    EXPECT_EQ(stream.written.size(), lexer.getDataSize(nullptr));
    return stream.written;
}

/// All tokens that are left, as "TYPE:VALUE". What was written of them is added to `bytes`.
std::string dump(qxSerializeLex& lexer, qxSerializeAdapter& adapter, std::string* bytes = nullptr)
{
    std::string text;
    for (lexer.read(&adapter); lexer.getDataType() != QX_LEX_NONE; lexer.read(&adapter)) {
        const qxLexTokenData token = lexer.getTokenData();
        text +=
            (text.empty() ? "" : " ") + std::to_string(token.type) + ":" + bytesOf(token.value.asString());
        if (bytes) *bytes += written(lexer);
    }
    return text;
}

/// The tokens of a text out of an adapter that lends bytes, one that gives blocks and one that drips.
std::string tokens(std::string text, const Switches& switches)
{
    TestBlock block(text);
    TestStream stream(text);
    qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
    std::string result = "none";
    for (qxSerializeAdapter* const adapter :
         std::initializer_list<qxSerializeAdapter*>{&memory, &block, &stream}) {
        qxSerializeLex lexer;
        switches(lexer);
        std::string bytes;
        const std::string now = dump(lexer, *adapter, &bytes);
        EXPECT_TRUE(result == "none" || now == result) << now;
        EXPECT_EQ(bytes, text);
        result = now;
    }
    return result;
}

template <class... Rows>
void expectTokens(const Switches& switches, const Rows&... rows)
{
    expectRows([&](const std::string& text) { return tokens(text, switches); }, rows...);
}

void plain(qxSerializeLex&) {}

TEST(qxSerializeLex, findsTokensThatAreAlwaysThere)
{
    expectTokens(plain, " => ", "a => 2:a", "_a9-b.c => 2:_a9 512:45 2:b 1:46 2:c", "9a => 16:9 2:a",
                 " \t\r\n => 256:32", "a  b => 2:a 256:32 2:b", "++ => 512:43 512:43", "a-5 => 2:a 16:-5",
                 "- 5 => 512:45 256:32 16:5", "\"a'[/#] => 1:34 2:a 1:39 1:91 1:47 1:35 1:93",
                 "\x80 => 1:128", std::string("a\0b => 2:a 1:0 2:b", 18));
}

TEST(qxSerializeLex, readsIntegers)
{
    expectTokens(
        plain, "0 => 16:0", "-0 => 16:0", "007 => 16:7", "08 => 16:8", "+5 => 16:5",
        "4294967295 => 16:4294967295", "-4294967295 => 16:-4294967295", "4294967296 => 64:4294967296",
        "-4294967296 => 64:-4294967296", "9223372036854775807 => 64:9223372036854775807",
        "9223372036854775808 => 64:9223372036854775807", "-9223372036854775808 => 64:-9223372036854775808",
        "-99999999999999999999 => 64:-9223372036854775808", "000000000000000000000000000001 => 16:1");
    expectTokens(plain, "0x1Fg => 16:31 2:g", "-0XfF => 16:-255", "0x => 16:0 2:x", "0xg => 16:0 2:xg",
                 "0x1.5 => 16:1 1:46 16:5", "0x100000000 => 64:4294967296", "0xFFFFFFFFFFFFFFFF => 64:-1",
                 "0x8000000000000000 => 64:-9223372036854775808",
                 "0x10000000000000000 => 64:9223372036854775807", "0x00000000000000000000a => 16:10");
}

TEST(qxSerializeLex, readsFractionsAndExponentsOnlyWhereDigitsFollow)
{
    expectTokens(plain, "1.1 => 32:1.1", "1.50 => 32:1.5", "-2.5e-1x => 32:-0.25 2:x", "1e3 => 32:1000",
                 "1E+2 => 32:100", "7. => 16:7 1:46", "7.x => 16:7 1:46 2:x", "5em => 16:5 2:em",
                 "3e+ => 16:3 2:e 512:43", "3e-x => 16:3 2:e 512:45 2:x", "1.5e => 32:1.5 2:e",
                 "1.2.3 => 32:1.2 1:46 16:3", ".5 => 1:46 16:5", "-.5 => 512:45 1:46 16:5",
                 "1,5 => 16:1 1:44 16:5", "00.5 => 32:0.5", "-0.0 => 32:0", "inf => 2:inf");
    const auto comma = [](qxSerializeLex& lexer) { lexer.useDecimalToken(','); };
    expectTokens(comma, "1,5 => 32:1.5", "1,x => 16:1 1:44 2:x", "1.5 => 16:1 1:46 16:5");
    const auto wide = [](qxSerializeLex& lexer) {
        lexer.useUtf8(1);
        lexer.useDecimalToken(0x20AC);
    };
    expectTokens(wide, "1\xE2\x82\xAC"
                       "5e1 => 32:15");
    const auto letter = [](qxSerializeLex& lexer) { lexer.useDecimalToken('e'); };
    expectTokens(letter, "1e5e2 => 32:150");
}

TEST(qxSerializeLex, numbersBeyondDoublesAreInfiniteOrZero)
{
    const struct {
        const char* text;
        double value;
    } rows[] = {{"1e400", INFINITE},  {"-1e400", -INFINITE},
                {"1e-400", 0.0},      {"-1e-400", 0.0},
                {"4.9e-324", 5e-324}, {"1.7976931348623157e308", 1.7976931348623157e308}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const qxArray<qxLexTokenData> found = getLexTokenDataArray(row.text, 0);
        EXPECT_TRUE(checkLexToken(found, 0, QX_LEX_REAL, row.value));
    }
}

TEST(qxSerializeLex, hexModeComesBeforeIdentifiers)
{
    const auto hex = [](qxSerializeLex& lexer) { lexer.useHexMode(1); };
    expectTokens(hex, "face => 16:64206", "fizz => 16:15 2:izz", "0x1F => 16:31", "12 => 16:18",
                 "-a => 16:-10", "+0xA => 16:10", "-g => 512:45 2:g", "1.5 => 16:1 1:46 16:5",
                 "1e5 => 16:485", "_a => 2:_a", "0xg => 16:0 2:xg", "f0000000f => 64:64424509455");
}

TEST(qxSerializeLex, readsStringsAndSets)
{
    const auto quoted = [](qxSerializeLex& lexer) { lexer.useStrings(1); };
    expectTokens(quoted, "\"a 'b'\"c => 4:a 'b' 2:c", "'\"' => 8:\"", "\"\" => 4:", "\"a\\\"b => 4:a\\ 2:b",
                 "it's => 2:it 1:39 2:s", "\"a\nb\" => 4:a\nb", "\"a 'b' => 1:34 2:a 256:32 8:b",
                 "\" => 1:34", "[a] => 1:91 2:a 1:93");
    const auto sets = [](qxSerializeLex& lexer) {
        lexer.useSet(1);
        lexer.useEscape(1);
    };
    expectTokens(sets, "[^a-z[]] => 1024:^a-z[ 1:93", "[\\]] => 1024:\\]", "[a => 1:91 2:a",
                 "[\\ => 1:91 1:92", "[\\] => 1:91 1:92 1:93", "[[] => 1024:[", "'a' => 1:39 2:a 1:39");
    const auto escaped = [](qxSerializeLex& lexer) {
        lexer.useStrings(1);
        lexer.useEscape(1);
    };
    expectTokens(escaped, "\"a\\\"b\" => 4:a\\\"b", "\"a\\\\\"b => 4:a\\\\ 2:b", "'\\'' => 8:\\'",
                 "\"a\\\" => 1:34 2:a 1:92 1:34", "\\\"a\" => 1:92 4:a");
}

TEST(qxSerializeLex, readsComments)
{
    const auto slashes = [](qxSerializeLex& lexer) { lexer.useSlashComment(1); };
    expectTokens(slashes, "//a b\r\nc => 128:a b 256:32 2:c", "//a\rb => 128:a\rb", "//a\r => 128:a\r",
                 "// => 128:", "/ => 1:47", "/*a => 1:47 1:42 2:a", "a//\n => 2:a 128: 256:32");
    const auto blocks = [](qxSerializeLex& lexer) { lexer.useComment(1); };
    expectTokens(blocks, "/*a\n*/b => 128:a\n 2:b", "/**/ => 128:", "/*/ => 128:/", "/***/ => 128:*",
                 "/*a* => 128:a*", "// => 1:47 1:47", "/ => 1:47");
    const auto hashes = [](qxSerializeLex& lexer) { lexer.useHashComment(1); };
    expectTokens(hashes, "a#b\n => 2:a 128:b 256:32", "//a => 1:47 1:47 2:a");
    const auto both = [](qxSerializeLex& lexer) {
        lexer.useSlashComment(1);
        lexer.useComment(1);
    };
    expectTokens(both, "/ /=/ => 1:47 256:32 1:47 1:61 1:47", "a/b => 2:a 1:47 2:b");
}

TEST(qxSerializeLex, theConstructorSwitchesStringsAndCommentsOn)
{
    std::string text = "'a'//b";
    qxSerializeAdapterMemory memory(text.data(), 6);
    qxSerializeLex lexer(1, 1);
    EXPECT_EQ(dump(lexer, memory), "8:a 128:b");
}

TEST(qxSerializeLex, readsPlainIdentifiers)
{
    const auto bytes = [](qxSerializeLex& lexer) { lexer.usePlainIdentifier(1); };
    expectTokens(bytes, "a-b.c_1+2 => 2:a-b.c_1 16:2", "-a => 512:45 2:a", ".a => 1:46 2:a",
                 "\x80z => 2:\xC2\x80z");
    const auto utf8 = [](qxSerializeLex& lexer) {
        lexer.usePlainIdentifier(1);
        lexer.useUtf8(1);
    };
    expectTokens(utf8, "\xC3\xA9t\xC3\xA9-1, => 2:\xC3\xA9t\xC3\xA9-1 1:44",
                 "a\xF0\x9F\x98\x80 => 2:a\xF0\x9F\x98\x80");
}

TEST(qxSerializeLex, tokensOnlyGivesEveryCharacter)
{
    const auto only = [](qxSerializeLex& lexer) {
        lexer.useTokensOnly(1);
        lexer.useStrings(1);
    };
    expectTokens(only, "a1 \"\" => 1:97 1:49 1:32 1:34 1:34");
}

TEST(qxSerializeLex, aLimitCutsTokens)
{
    const auto three = [](qxSerializeLex& lexer) {
        lexer.setMaxScanTokens(3);
        lexer.useStrings(1);
        lexer.useComment(1);
    };
    expectTokens(three, "abcdefg => 2:abc 2:def 2:g", "1234 => 16:123 16:4", "12.5 => 16:12 1:46 16:5",
                 "     => 256:32 256:32", "\"abcd\" => 4:ab 2:cd 1:34", "\"a\" => 4:a", "\"a => 1:34 2:a",
                 "/*ab*/ => 128:a 2:b 1:42 1:47");
    const auto one = [](qxSerializeLex& lexer) {
        lexer.setMaxScanTokens(1);
        lexer.useUtf8(1);
        lexer.usePlainIdentifier(1);
    };
    expectTokens(one, "\xC3\xA9z => 2:\xC3\xA9 2:z");
}

TEST(qxSerializeLex, decodesCharacters)
{
    const auto utf8 = [](qxSerializeLex& lexer) { lexer.useUtf8(1); };
    expectTokens(utf8, "\xC3\xA9\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF => 1:233 1:128512 1:1114111");
    const auto little = [](qxSerializeLex& lexer) {
        lexer.useUtf8(1);
        lexer.useUnicode(1);
        lexer.useStrings(1);
    };
    expectTokens(
        little, std::string("a\0001\0\"\0\xE9\0\x3D\xD8\x00\xDE\"\0 => 2:a1 4:\xC3\xA9\xF0\x9F\x98\x80", 31));
    const auto big = [](qxSerializeLex& lexer) { lexer.useUnicode(1, 1); };
    expectTokens(big, std::string("\0001\0.\0005\x20\xAC => 32:1.5 1:8364", 25));
}

/// How many messages a text sends, all of them the one, and its tokens.
std::string faults(const std::string& text, const Switches& switches)
{
    const MessageRecorder messages;
    const std::string result = tokens(text, switches);
    for (const RecordedMessage& message : messages.messages()) {
        EXPECT_EQ(message.level, 16384U);
        EXPECT_EQ(message.text, "Utf lex encoding on faulty data set");
    }
    EXPECT_EQ(messages.messages().size() % 3, 0U); // one for each adapter
    return std::to_string(messages.messages().size() / 3) + " " + result;
}

TEST(qxSerializeLex, oneMessageForEachFaultySequence)
{
    const auto inUTF8 = [](const std::string& text) {
        return faults(text, [](qxSerializeLex& lexer) {
            lexer.useUtf8(1);
            lexer.useStrings(1);
        });
    };
    expectRows(inUTF8,
               "a\xFF"
               "b => 1 2:a 1:0 2:b",
               "\x80\x80 => 2 1:0 1:0", "\xC0\x80z => 1 1:0 2:z", "\xE2\x82z => 1 1:0 2:z",
               "\xED\xA0\x80z => 1 1:0 2:z", "\xF4\x90\x80\x80z => 1 1:0 2:z",
               "\xF8\x88\x80\x80\x80z => 1 1:0 2:z", "z\xE2\x82 => 1 2:z 1:0", "\xFE\xFF => 2 1:0 1:0",
               std::string("\"\xC3\"\xC3\" => 2 4:\0 1:0 1:34", 23), "'\xFF => 1 1:39 1:0");
    const auto inUTF16 = [](const std::string& text) {
        return faults(text, [](qxSerializeLex& lexer) { lexer.useUnicode(1); });
    };
    expectRows(inUTF16, std::string("\x01\xDCz\0 => 1 1:0 2:z", 17),
               std::string("\x01\xD8z\0 => 1 1:0 2:z", 17), "z => 1 1:0", "\x01\xD8z => 2 1:0 1:0");
}

/// An adapter that lends its bytes, and a lexer.
class LexerTest : public testing::Test
{
protected:
    LexerTest() { lexer.useUtf8(1); }
    ~LexerTest() noexcept override {} // what the lexer holds raises nothing

    void start(const std::string& text)
    {
        m_text = text;
        memory =
            std::make_unique<qxSerializeAdapterMemory>(m_text.data(), static_cast<unsigned int>(text.size()));
    }

    std::string rest() { return dump(lexer, *memory); }

    qxSerializeLex lexer;
    std::unique_ptr<qxSerializeAdapterMemory> memory;

private:
    std::string m_text;
};

TEST_F(LexerTest, binaryDataFollowsATokenAtOnce)
{
    for (const char* const number : {"7.\xFF", "7e+\xFF", "7\xFF", "7e\xFF"}) {
        SCOPED_TRACE(number);
        std::string text = number;
        TestStream stream(text);
        start(text);
        for (qxSerializeAdapter* const adapter :
             {static_cast<qxSerializeAdapter*>(memory.get()), static_cast<qxSerializeAdapter*>(&stream)}) {
            lexer.read(adapter);
            EXPECT_EQ(readAll(*adapter), text.substr(1));
        }
    }
    start(std::string("ab\x01\x02", 4));
    lexer.read(memory.get());
    qxSerializeBinary<unsigned short> number;
    number.read(memory.get());
    EXPECT_EQ(number.getValue(), 0x0102);
}

TEST_F(LexerTest, anUnclosedQuoteLeavesAllBehindItInTheAdapter)
{
    lexer.useStrings(1);
    for (const bool drips : {false, true}) {
        const std::string text = "'" + std::string(70000, 'x');
        TestStream stream(text);
        start(text);
        qxSerializeAdapter& adapter = drips ? static_cast<qxSerializeAdapter&>(stream) : *memory;
        lexer.read(&adapter);
        EXPECT_EQ(lexer.getDataType(), QX_LEX_CHAR);
        EXPECT_EQ(adapter.length(), 70000U);
    }
}

TEST_F(LexerTest, manyOpenersWithoutACloserTakeNoLongerThanTheText)
{
    lexer.useSet(1);
    lexer.useStrings(1);
    lexer.useEscape(1);
    for (const char* const openers : {"[", "\\\""}) {
        std::string text;
        while (text.size() < 400000) text += openers;
        start(text);
        unsigned int count = 0;
        for (lexer.read(memory.get()); lexer.getDataType() != QX_LEX_NONE; lexer.read(memory.get())) ++count;
        EXPECT_EQ(count, text.size());
    }
    // What is known of the rest ends where somebody changes it.
    start("[[[");
    lexer.read(memory.get());
    lexer.pushBack(memory.get(), ']');
    lexer.pushBack(memory.get(), '[');
    EXPECT_EQ(rest(), "1024: 1:91 1:91");
}

TEST_F(LexerTest, givesTokensBack)
{
    start("12.5ab 'x\xC3'");
    lexer.useStrings(1);
    const MessageRecorder messages;
    for (const char* const expected : {"12.5", "ab", " ", "'x\xC3'"}) {
        lexer.read(memory.get());
        lexer.pushBack(memory.get());
        EXPECT_EQ(lexer.getDataType(), QX_LEX_NONE);
        lexer.read(memory.get());
        EXPECT_EQ(written(lexer), expected);
    }
    lexer.pushBack(memory.get());
    EXPECT_EQ(readAll(*memory), "'x\xC3'");
    lexer.pushBack(memory.get()); // nothing
    EXPECT_FALSE(memory->hasData());
}

TEST_F(LexerTest, readsAndGivesBackCharacters)
{
    start("\xC3\xA9\xFFz");
    const MessageRecorder messages;
    EXPECT_EQ(lexer.getLexToken(memory.get()), 0xE9U);
    lexer.pushBack(memory.get(), 0xE9);
    EXPECT_EQ(lexer.getLexToken(memory.get()), 0xE9U);
    EXPECT_EQ(lexer.getLexToken(memory.get()), 0U);
    EXPECT_EQ(lexer.getDataType(), QX_LEX_CHAR);
    lexer.pushBack(memory.get(), 0); // goes back as the byte that it was
    EXPECT_EQ(memory->length(), 2U);
    EXPECT_EQ(memory->read(), 0xFF);
    lexer.pushBack(memory.get(), 0x20AC);
    EXPECT_EQ(readAll(*memory), "\xE2\x82\xACz");
    EXPECT_EQ(lexer.getLexToken(memory.get()), 0U);
    EXPECT_EQ(lexer.getDataType(), QX_LEX_NONE);
}

TEST_F(LexerTest, theQueueIsReadBeforeTheAdapter)
{
    start("c d");
    lexer.qPush('b');
    lexer.qPush(0xE9);
    lexer.qPushBack('a');
    EXPECT_EQ(rest(), "2:ab 1:233 2:c 256:32 2:d");

    start("xyz");
    for (const char c : {'5', 'e', '+'}) lexer.qPush(static_cast<unsigned char>(c));
    lexer.read(memory.get());
    EXPECT_EQ(written(lexer), "5");
    EXPECT_EQ(readAll(*memory), "xyz"); // the look ahead stayed in the queue
    EXPECT_EQ(rest(), "2:e 512:43");

    start("z");
    lexer.qPush('a');
    lexer.read(memory.get());
    lexer.qPush('b');
    lexer.pushBack(memory.get());
    lexer.pushBack(memory.get(), '_');
    EXPECT_EQ(rest(), "2:_azb");
}

TEST_F(LexerTest, tellsSizeAndTextOfAToken)
{
    start("// \xC3\xA9\xF0\x9F\x98\x80\r\n");
    lexer.useSlashComment(1);
    EXPECT_EQ(fatalText([this] { lexer.getScannedBuffer(); }), "qxQueue:pop out of data");
    lexer.read(memory.get());
    EXPECT_EQ(lexer.getTokenSize(), 6U);
    EXPECT_EQ(lexer.getDataSize(nullptr), 10U);
    EXPECT_EQ(bytesOf(lexer.getScannedBuffer()), "// \xC3\xA9\xF0\x9F\x98\x80\r");
    lexer.pushBack(memory.get());
    EXPECT_EQ(fatalText([this] { lexer.getScannedBuffer(); }), "qxQueue:pop out of data");
    rest();
    EXPECT_EQ(fatalText([this] { lexer.getScannedBuffer(); }), "qxQueue:pop out of data");
    EXPECT_TRUE(lexer.getData() == qxDynamicType());

    start("\xE9");
    lexer.useUtf8(0);
    lexer.read(memory.get());
    EXPECT_EQ(bytesOf(lexer.getScannedBuffer()), "\xC3\xA9");
}

TEST_F(LexerTest, countsLinesAndColumnsInCharacters)
{
    start("ab \n \xC3\xA9'x\n\xC3\xA9\xFF'y\n\n1,5z");
    lexer.useStrings(1);
    lexer.useDecimalToken(',');
    const MessageRecorder messages;
    std::string places;
    do {
        lexer.read(memory.get());
        places += std::to_string(lexer.getLine()) + ":" + std::to_string(lexer.getColumn()) + " ";
    } while (lexer.getDataType() != QX_LEX_NONE);
    EXPECT_EQ(places, "1:1 1:3 2:2 2:3 3:4 3:5 5:1 5:4 5:5 ");
    lexer.setLine(7);
    lexer.setColumn(3);
    start("\n\xC3\xA9");
    lexer.getLexToken(memory.get());
    lexer.pushBack(memory.get());
    rest();
    EXPECT_EQ(lexer.getLine(), 8U);
    EXPECT_EQ(lexer.getColumn(), 2U);
}

TEST_F(LexerTest, cutsTextsThatAreTooLongForAString)
{
    const std::string text = "'" + std::string(65534, 'x') + "\xC3\xA9'";
    start(text);
    lexer.useStrings(1);
    const MessageRecorder messages;
    lexer.read(memory.get());
    EXPECT_EQ(bytesOf(lexer.getData().getString()), std::string(65534, 'x'));
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"The text of a token is cut at 65535 bytes"});
    EXPECT_EQ(written(lexer), text);
}

TEST(qxSerializeLex, tokensCrossTheBuffersOfAFile)
{
    std::string text;
    for (unsigned int i = 0; text.size() < 600000; ++i)
        text += "name" + std::to_string(i) + ", " + std::to_string(i) + ".5 '" + std::string(i % 300, 'q') +
                "'\n";
    const TestFolder folder;
    qxSerializeAdapterFile file(folder.write("text", text).c_str());
    qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
    qxSerializeLex lexer(1);
    std::string bytes;
    const std::string found = dump(lexer, file, &bytes);
    EXPECT_TRUE(bytes == text);
    EXPECT_TRUE(found == dump(lexer, memory));
}

TEST(qxSerializeLex, listsTheTokensOfAText)
{
    const auto list = [](unsigned int flags) {
        std::string text;
        for (const qxLexTokenData& token : getLexTokenDataArray("'a' \"b\" #c\n//d\n/*e*/[f]\xC3\xA9", flags))
            text += std::to_string(token.type) + " ";
        return text;
    };
    EXPECT_EQ(list(0), "1 2 1 1 2 1 1 2 1 1 2 1 1 2 1 1 1 2 1 1 ");
    EXPECT_EQ(list(QX_LEX_STRING | QX_LEX_SINGLE_STRING | QX_LEX_COMMENT | QX_LEX_SET | QX_LEX_SPACE),
              "8 256 4 256 128 256 128 256 128 1024 1 ");
    EXPECT_EQ(list(QX_LEX_SINGLE_STRING | QX_LEX_COMMENT), "8 1 2 1 128 128 128 1 2 1 1 ");
    EXPECT_EQ(list(QX_LEX_STRING), "1 2 1 4 1 2 1 1 2 1 1 2 1 1 1 2 1 1 ");
    EXPECT_EQ(getLexTokenDataArray("", ~0U).entries(), 0U);
}

TEST(qxSerializeLex, checksTokensOfAList)
{
    const qxArray<qxLexTokenData> list = getLexTokenDataArray("a 0 4294967296 \"b\"", QX_LEX_STRING);
    ASSERT_EQ(list.entries(), 4U);
    EXPECT_TRUE(checkLexToken(list, 0, QX_LEX_IDENTIFIER | QX_LEX_STRING, "a"));
    EXPECT_FALSE(checkLexToken(list, 0, QX_LEX_STRING, "a"));
    EXPECT_FALSE(checkLexToken(list, 0, QX_LEX_IDENTIFIER, "b"));
    EXPECT_TRUE(checkLexToken(list, 1, QX_LEX_INTEGER, 0));
    EXPECT_TRUE(checkLexToken(list, 2, QX_LEX_INT64, qxDynamicTypeInt64(4294967296)));
    EXPECT_FALSE(checkLexToken(list, 2, QX_LEX_INT64, 4294967296)); // that is a "num"
    EXPECT_FALSE(checkLexToken(list, 4, ~0U, "b"));

    qxDynamicType value;
    EXPECT_TRUE(checkLexToken(list, 3, QX_LEX_STRING, &value));
    EXPECT_STREQ(value.getString(), "b");
    EXPECT_FALSE(checkLexToken(list, 0, QX_LEX_STRING, &value));
    EXPECT_FALSE(checkLexToken(list, 4, ~0U, &value));
    EXPECT_STREQ(value.getString(), "b");
    EXPECT_TRUE(checkLexToken(list, 1, QX_LEX_INTEGER, nullptr));
}

} // namespace
