// SPDX-License-Identifier: see LICENSE

#include "qxbasicparser.h"

#include "qxarray.h"
#include "qxprogress.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <iomanip>
#include <memory>
#include <sstream>

namespace
{

/// A parser over a block of bytes.
class TextParser : public qxBasicParser
{
public:
    explicit TextParser(std::string bytes, bool utf8 = true) : m_bytes(std::move(bytes))
    {
        useUtf8(utf8);
        m_memory = std::make_unique<qxSerializeAdapterMemory>(m_bytes.data(),
                                                              static_cast<unsigned int>(m_bytes.size()));
        setAdapter(m_memory.get());
    }
    ~TextParser() override { setAdapter(nullptr); }

    void take(unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i) getNextToken();
    }

    std::string place() const { return std::to_string(getLine()) + ":" + std::to_string(getColumn()); }
    std::string error() const { return getError().getString(); }

private:
    std::string m_bytes;
    std::unique_ptr<qxSerializeAdapterMemory> m_memory;
};

/// All tokens that are left, those beyond ASCII as \uXXXX.
std::string tokensOf(qxBasicParser& parser)
{
    std::ostringstream text;
    while (parser.hasData()) {
        const unsigned int token = parser.getNextToken();
        if (token >= 32 && token < 127)
            text << static_cast<char>(token);
        else
            text << "\\u" << std::hex << std::setw(4) << std::setfill('0') << token;
    }
    return text.str();
}

enum Encoding { BYTES, UTF8, LITTLE, BIG };

void setEncoding(qxBasicParser& parser, Encoding encoding)
{
    parser.useUtf8(encoding == UTF8);
    parser.useUnicode(encoding == LITTLE || encoding == BIG, encoding == BIG);
}

struct DecodingRow {
    Encoding encoding;
    std::string bytes;
    const char* tokens;
};

const DecodingRow DECODING_ROWS[] = {
    {BYTES, "a\x80\xFF", "a\\u0080\\u00ff"},
    {BYTES, "\xEF\xBB\xBF", "\\u00ef\\u00bb\\u00bf"},
    {UTF8, "a\xC2\x80\xDF\xBF", "a\\u0080\\u07ff"},
    {UTF8, "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", "\\u0800\\ud7ff\\ue000\\uffff"},
    {UTF8, "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "\\ud800\\udc00\\udbff\\udfff"},
    {UTF8, std::string("a\0b", 3), "a\\u0000b"},
    // faulty: each byte that begins no character is a token 0
    {UTF8, "\x80z", "\\u0000z"},
    {UTF8, "\xC0\x80z", "\\u0000\\u0000z"},
    {UTF8, "\xC1\xBFz", "\\u0000\\u0000z"},
    {UTF8, "\xC3z", "\\u0000z"},
    {UTF8, "\xE0\x9F\xBFz", "\\u0000\\u0000\\u0000z"},
    {UTF8, "\xE2\x82zz", "\\u0000\\u0000zz"},
    {UTF8, "\xED\xA0\x80z", "\\u0000\\u0000\\u0000z"},
    {UTF8, "\xF0\x8F\xBF\xBFz", "\\u0000\\u0000\\u0000\\u0000z"},
    {UTF8, "\xF4\x90\x80\x80z", "\\u0000\\u0000\\u0000\\u0000z"},
    {UTF8, "\xF5\x80\x80\x80z", "\\u0000\\u0000\\u0000\\u0000z"},
    {UTF8, "\xFFz", "\\u0000z"},
    {UTF8, "a\xC3", "a\\u0000"},
    {UTF8, "a\xE2\x82", "a\\u0000\\u0000"},
    {UTF8, "a\xF0\x9F\x98", "a\\u0000\\u0000\\u0000"},
    {LITTLE, std::string("a\0\xAC\x20\x00\xD8", 6), "a\\u20ac\\ud800"},
    {LITTLE, std::string("a\0b", 3), "a\\u0000"},
    {BIG, std::string("\0a\x20\xAC", 4), "a\\u20ac"},
    // marks
    {UTF8, "\xEF\xBB\xBFz\xEF\xBB\xBF", "z\\ufeff"},
    {LITTLE, "\xEF\xBB\xBFz", "z"},
    {UTF8, std::string("\xFF\xFEz\0\xFF\xFE", 6), "z\\ufeff"},
    {UTF8, std::string("\xFE\xFF\0z", 4), "z"},
    {BIG, std::string("\xFF\xFEz\0", 4), "z"},
    {UTF8, "\xEF\xBB", "\\u0000\\u0000"},
    {UTF8, "\xEF\xBB\xBF", ""},
    {UTF8, "", ""},
};

TEST(qxBasicParser, decodesBytesThatAreLentTakenOrDrippedOneByOne)
{
    const MessageRecorder messages;
    for (const DecodingRow& row : DECODING_ROWS) {
        SCOPED_TRACE(row.tokens);
        std::string bytes = row.bytes;
        qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
        TestBlock block(row.bytes);
        TestStream stream(row.bytes);
        for (qxSerializeAdapter* const adapter :
             {static_cast<qxSerializeAdapter*>(&memory), static_cast<qxSerializeAdapter*>(&block),
              static_cast<qxSerializeAdapter*>(&stream)}) {
            qxBasicParser parser;
            setEncoding(parser, row.encoding);
            parser.setAdapter(adapter);
            EXPECT_EQ(tokensOf(parser), row.tokens);
        }
    }
}

TEST(qxBasicParser, faultyBytesSendAWarningWhenTheirTurnComes)
{
    const MessageRecorder messages;
    TextParser parser("ab\xFF");
    EXPECT_EQ(parser.getNextToken(), u'a');
    EXPECT_EQ(messages.texts(), std::vector<std::string>{});
    EXPECT_EQ(tokensOf(parser), "b\\u0000");
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"Utf lex encoding on faulty data set"});
    EXPECT_EQ(messages.messages().at(0).level, QX_LEVEL_WARNING);
    EXPECT_FALSE(parser.hasError());
}

/// Long enough for several blocks, with characters of every length that no block's length divides.
std::string longText()
{
    std::string text;
    for (unsigned int i = 0; text.size() < 70000; ++i)
        text += "abcdefghijklmnopq\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80" + std::string(i % 7, 'x') + "\n";
    return text;
}

TEST(qxBasicParser, blocksJoinWithoutASeam)
{
    const std::string text = longText();
    const TestFolder folder;
    const std::string name = folder.write("long", text);
    for (const bool seekMode : {false, true}) { // true: the file lends no more than one block at a time
        qxSerializeAdapterFile file(name.c_str());
        file.setSeekMode(seekMode);
        qxBasicParser parser;
        parser.useUtf8(1);
        parser.setAdapter(&file);
        qxArray<unsigned char> bytes;
        while (parser.hasData()) parser.getNextToken();
        ASSERT_TRUE(parser.getTokenData(0, static_cast<unsigned int>(parser.getTokenPos()), bytes));
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text);
    }
}

TEST(qxBasicParser, theAdapterStaysBehindTheLastTokenUsed)
{
    const std::string text = longText();
    for (const unsigned int taken : {0U, 18U, 19U, 16384U, 40000U}) {
        for (const unsigned int back : {0U, 17000U}) {
            if (back > taken) continue;
            SCOPED_TRACE(std::to_string(taken) + " - " + std::to_string(back));
            TextParser counter(text);
            counter.take(taken - back);
            qxArray<unsigned char> used;
            counter.getTokenData(0, taken - back, used);

            std::string bytes = text;
            qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
            TestBlock block(text);
            for (qxSerializeAdapter* const adapter :
                 {static_cast<qxSerializeAdapter*>(&memory), static_cast<qxSerializeAdapter*>(&block)}) {
                qxBasicParser parser;
                parser.useUtf8(1);
                parser.setAdapter(adapter);
                for (unsigned int i = 0; i < taken; ++i) parser.getNextToken();
                parser.pushBackTokens(back);
                parser.setAdapter(nullptr);
                EXPECT_EQ(adapter->length(), text.size() - used.entries());
                EXPECT_EQ(readBlock(*adapter, 40), text.substr(used.entries(), 40));
            }
        }
    }
}

TEST(qxBasicParser, theEncodingChangesBehindTheTokenJustTaken)
{
    TextParser parser("\xC3\xA9|\xC3\xA9|\xC3\xA9");
    parser.take(2);
    parser.useUtf8(0);
    EXPECT_EQ(parser.getNextToken(), 0xC3);
    parser.take(2);
    parser.useUtf8(1);
    EXPECT_EQ(tokensOf(parser), "\\u00e9");
}

TEST(qxBasicParser, aMarkedInputStaysUTF16)
{
    TextParser parser(std::string("\xFF\xFE"
                                  "a\0b\0",
                                  6));
    EXPECT_EQ(parser.getNextToken(), u'a');
    parser.useUtf8(0);
    EXPECT_EQ(parser.getNextToken(), u'b');
}

TEST(qxBasicParser, givesBackAsManyTokensAsItHolds)
{
    TextParser parser("abcdefgh");
    parser.setMaxBufferSize(4);
    parser.take(6);
    parser.pushBackTokens(4);
    EXPECT_EQ(parser.getTokenPos(), 2U);
    EXPECT_FALSE(parser.hasError());

    parser.pushBackTokens(1); // five behind the farthest
    EXPECT_EQ(parser.error(), "Too Large Pushback in basic parser");
    EXPECT_EQ(tokensOf(parser), "cdefgh");
    parser.reset();
    parser.pushBackTokens(1);
    EXPECT_EQ(parser.error(), "Too Large Pushback in basic parser");
}

TEST(qxBasicParser, holdsAMillionTokensAtFirst)
{
    const std::string text(1100000, 'x');
    TextParser parser(text);
    EXPECT_EQ(parser.getMaxBufferSize(), 1048576U);
    parser.take(1100000);
    parser.pushBackTokens(1048576);
    EXPECT_EQ(parser.getTokenPos(), 1100000U - 1048576U);
    EXPECT_FALSE(parser.hasError());
}

TEST(qxBasicParser, tellsLineAndColumn)
{
    const struct {
        const char* text;
        unsigned int taken;
        const char* place;
    } rows[] = {
        {"", 0, "1:1"},
        {"ab", 1, "1:2"},
        {"ab\ncd", 2, "1:3"},
        {"ab\ncd", 3, "2:1"},
        {"ab\r\ncd", 5, "2:2"},
        {"\n\n\n", 3, "4:1"},
        {"\xC3\xA9\xE2\x82\xAC", 2, "1:3"},
        {"\xF0\x9F\x98\x80z", 2, "1:2"}, // one character of two tokens
        {"\xF0\x9F\x98\x80\n\xF0\x9F\x98\x80z", 6, "2:3"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        TextParser parser(row.text);
        parser.take(row.taken);
        EXPECT_EQ(parser.place(), row.place);
    }
}

TEST(qxBasicParser, placesFollowTokensThatAreGivenBack)
{
    TextParser parser("ab\ncd\nef");
    parser.take(7);
    EXPECT_EQ(parser.place(), "3:2");
    parser.pushBackTokens(3);
    EXPECT_EQ(parser.place(), "2:2");
    parser.take(2);
    EXPECT_EQ(parser.place(), "3:1");
}

TEST(qxBasicParser, placesSurviveTheWindow)
{
    std::string text;
    for (int i = 0; i < 60000; ++i) text += "\xF0\x9F\x98\x80";
    text += "\n";
    for (int i = 0; i < 60000; ++i) text += "ab\n";
    text += "end";
    TextParser parser(text);
    parser.setMaxBufferSize(10);
    parser.take(120000);
    EXPECT_EQ(parser.place(), "1:60001");
    parser.take(1 + 3 * 60000 + 2);
    EXPECT_EQ(parser.place(), "60002:3");
}

TEST(qxBasicParser, placesCanBeSet)
{
    TextParser parser("ab\ncd\nef");
    parser.take(1);
    parser.setLine(10);
    parser.setColumn(21);
    EXPECT_EQ(parser.place(), "10:21");
    parser.take(1);
    EXPECT_EQ(parser.place(), "10:22");
    parser.take(2);
    EXPECT_EQ(parser.place(), "11:2");
    parser.pushBackTokens(4);
    EXPECT_EQ(parser.place(), "10:20");
}

TEST(qxBasicParser, cutsTextOut)
{
    TextParser parser("a\xC3\xA9\xF0\x9F\x98\x80z");
    parser.take(5);
    EXPECT_STREQ(parser.getTokenData(0, 5).getString(), "a\xC3\xA9\xF0\x9F\x98\x80z");
    EXPECT_STREQ(parser.getTokenData(1, 1).getString(), "\xC3\xA9");
    EXPECT_STREQ(parser.getTokenData(2, 1).getString(), "\xEF\xBF\xBD"); // half a character
    EXPECT_STREQ(parser.getTokenData(3, 2).getString(), "\xEF\xBF\xBDz");
    EXPECT_FALSE(parser.hasError());

    EXPECT_STREQ(parser.getTokenData(4, 2).getString(), "");
    EXPECT_EQ(parser.error(), "Too Large Pushback in basic parser");
}

TEST(qxBasicParser, aTextThatIsTooLongIsAnError)
{
    std::string text;
    for (int i = 0; i < 21846; ++i) text += "\xE2\x82\xAC"; // 65,538 bytes
    TextParser parser(text + std::string(70000, 'x'));
    parser.take(91846);
    EXPECT_EQ(parser.getTokenData(1, 21845).length(), 65535);
    EXPECT_FALSE(parser.hasError());
    EXPECT_EQ(parser.getTokenData(0, 21846).length(), 0);
    EXPECT_EQ(parser.error(), "Too many characters in qxString");

    parser.setErrorText("");
    EXPECT_EQ(parser.getTokenData(21846, 65536).length(), 0);
    EXPECT_EQ(parser.error(), "Too many characters in qxString");
    qxArray<unsigned char> bytes;
    EXPECT_TRUE(parser.getTokenData(0, 91846, bytes));
    EXPECT_EQ(bytes.entries(), text.size() + 70000);
}

TEST(qxBasicParser, runningOutOfDataIsAnErrorOfGetNextTokenOnly)
{
    TextParser parser(" ");
    EXPECT_EQ(parser.parseChar(), QX_PARSE_OK);
    EXPECT_EQ(parser.parseChar(), QX_PARSE_NO_MATCH);
    EXPECT_FALSE(parser.hasError());
    parser.pushBackTokens(1);
    EXPECT_EQ(parser.getNextToken(true), 0);
    EXPECT_EQ(parser.error(), "Adapter out of Data");

    qxBasicParser none;
    EXPECT_FALSE(none.hasData());
    EXPECT_EQ(none.getNextToken(), 0);
    EXPECT_STREQ(none.getError().getString(), "Adapter out of Data");
}

struct ParseRow {
    const char* name;
    qxParseResult (qxBasicParser::*parse)();
    const char* text;
    int taken; // −1: no match
};

#define ROW(NAME, TEXT, TAKEN)                                                                               \
    {                                                                                                        \
#NAME, &qxBasicParser::NAME, TEXT, TAKEN                                                             \
    }
const ParseRow PARSE_ROWS[] = {
    ROW(parseAllExceptCREOL, "ab\r\n", 2),
    ROW(parseAllExceptCREOL, "ab\n", 2),
    ROW(parseAllExceptCREOL, "\r\n", 0),
    ROW(parseAllExceptCREOL, "ab", 2),
    ROW(parseAllWS, " \t\r\nx", 4),
    ROW(parseAllWS, "x ", -1),
    ROW(parseAlpha, "z1", 1),
    ROW(parseAlpha, "1", -1),
    ROW(parseAlpha, "\xC3\xA9", -1),
    ROW(parseAlphaNum, "9", 1),
    ROW(parseAlphaNum, "_", -1),
    ROW(parseCR, "\r\n", 1),
    ROW(parseCR, "\n", -1),
    ROW(parseCRLF, "\r\n", 2),
    ROW(parseCRLF, "\rx", -1),
    ROW(parseCRLF, "\r", -1),
    ROW(parseCTL, "\x1F", 1),
    ROW(parseCTL, "\x7F", 1),
    ROW(parseCTL, " ", -1),
    ROW(parseChar, "\n", 1),
    ROW(parseChar, "\xF0\x9F\x98\x80z", 2),
    ROW(parseDigit, "0", 1),
    ROW(parseDigit, "a", -1),
    ROW(parseHT, "\t", 1),
    ROW(parseHT, " ", -1),
    ROW(parseHex, "fF", 1),
    ROW(parseHex, "F", 1),
    ROW(parseHex, "g", -1),
    ROW(parseIdentifier, "_a9-b", 3),
    ROW(parseIdentifier, "9a", -1),
    ROW(parseInteger, "-12.5", 3),
    ROW(parseInteger, "+7", 2),
    ROW(parseInteger, "-x", -1),
    ROW(parseInteger, "-", -1),
    ROW(parseLF, "\n", 1),
    ROW(parseLF, "\r", -1),
    ROW(parseLoAlpha, "a", 1),
    ROW(parseLoAlpha, "A", -1),
    ROW(parseNumber, "-12.5e+3x", 8),
    ROW(parseNumber, "12.x", 2),
    ROW(parseNumber, "12e+", 2),
    ROW(parseNumber, "1E5", 3),
    ROW(parseNumber, ".5", -1),
    ROW(parsePlainIdentifier, "a-b.c_1 ", 7),
    ROW(parsePlainIdentifier, "-a", -1),
    ROW(parseQuoteToken, "\"a'b\" ", 5),
    ROW(parseQuoteToken, "\"a\\\" ", 4),
    ROW(parseQuoteToken, "\"ab", -1),
    ROW(parseQuoteToken, "a\"b\"", -1),
    ROW(parseQuoteTokenEscape, "\"a\\\"\" ", 5),
    ROW(parseQuoteTokenEscape, "\"a\\", -1),
    ROW(parseSP, " ", 1),
    ROW(parseSP, "\t", -1),
    ROW(parseSetToken, "[a[]]", 4),
    ROW(parseSetTokenEscape, "[\\]]]", 4),
    ROW(parseSingleQuoteToken, "'\"'", 3),
    ROW(parseSingleQuoteTokenEscape, "'\\''", 4),
    ROW(parseToCREOL, "a\nb\r\nc", 5),
    ROW(parseToCREOL, "ab", 2),
    ROW(parseToEOL, "a\r\nb", 3),
    ROW(parseToEOL, "ab", 2),
    ROW(parseUpAlpha, "A", 1),
    ROW(parseUpAlpha, "a", -1),
    ROW(parseWS, "\r\n", 1),
    ROW(parseWS, "x", -1),
};
#undef ROW

TEST(qxBasicParser, parsesWhatStandsNextOrTakesNothing)
{
    for (const ParseRow& row : PARSE_ROWS) {
        SCOPED_TRACE(std::string(row.name) + " on " + row.text);
        TextParser parser(row.text);
        EXPECT_EQ((parser.*row.parse)(), row.taken < 0 ? QX_PARSE_NO_MATCH : QX_PARSE_OK);
        EXPECT_EQ(parser.getTokenPos(), static_cast<qxUInt64>(row.taken < 0 ? 0 : row.taken));
        EXPECT_FALSE(parser.hasError());

        TextParser atEnd("");
        EXPECT_EQ((atEnd.*row.parse)(), QX_PARSE_NO_MATCH);
        EXPECT_FALSE(atEnd.hasError());
    }
}

TEST(qxBasicParser, skips)
{
    TextParser parser(" \t\n \nxy\nz\r\nab\r\n.");
    parser.skipWS();
    EXPECT_EQ(parser.getTokenPos(), 2U);
    parser.skipAllWS();
    EXPECT_EQ(parser.getNextToken(), u'x');
    parser.skipToEOL();
    EXPECT_EQ(parser.getNextToken(), u'z');
    parser.skipToCREOL();
    EXPECT_EQ(parser.getNextToken(), u'a');
    parser.skipAllExceptCREOL();
    EXPECT_EQ(tokensOf(parser), "\\u000d\\u000a.");
}

TEST(qxBasicParser, aQuoteWithoutEndDoesNotFillTheMemory)
{
    TextParser parser("'" + std::string(100000, 'x'));
    parser.setMaxBufferSize(1000);
    EXPECT_EQ(parser.parseSingleQuoteToken(), QX_PARSE_ERROR);
    EXPECT_EQ(parser.error(), "Too Large Pushback in basic parser");
    EXPECT_LE(parser.getTokenPos(), 1002U);
}

TEST(qxBasicParser, checksTokens)
{
    TextParser parser("  ab\xF0\x9F\x98\x80z");
    EXPECT_FALSE(parser.checkTokens(u"ab", 2));
    EXPECT_FALSE(parser.checkTokens(u"ax", 2, true));
    EXPECT_EQ(parser.getTokenPos(), 0U);
    EXPECT_TRUE(parser.checkTokens(u"ab", 2, true));
    EXPECT_TRUE(parser.checkTokens(L"\U0001F600", 1));
    EXPECT_FALSE(parser.checkTokens(u"zz", 2));
    EXPECT_EQ(tokensOf(parser), "z");
    EXPECT_FALSE(parser.hasError());
}

TEST(qxBasicParser, anotherParserGoesOnAndHandsTheInputBack)
{
    TextParser first("ab\n\xC3\xA9"
                     "d");
    first.take(4);
    qxBasicParser second;
    second.continueParsingFrom(first);
    EXPECT_EQ(second.getLine(), 2U);
    EXPECT_EQ(second.getColumn(), 2U);
    second.pushBackTokens(3); // what was taken before can still be given back
    EXPECT_EQ(second.getNextToken(), u'b');
    EXPECT_EQ(second.getTokenPos(), 2U);

    first.continueParsingFrom(second);
    EXPECT_EQ(first.getTokenPos(), 2U);
    EXPECT_EQ(tokensOf(first), "\\u000a\\u00e9d");
}

TEST(qxBasicParser, resetStartsANewInputWhereTheParserStands)
{
    TextParser parser("ab\ncd");
    parser.take(3);
    parser.setErrorText("e");
    parser.setMaxBufferSize(77);
    parser.reset();
    EXPECT_FALSE(parser.hasError());
    EXPECT_EQ(parser.error(), "");
    EXPECT_EQ(parser.place(), "1:1");
    EXPECT_EQ(parser.getTokenPos(), 0U);
    EXPECT_EQ(parser.getMaxBufferSize(), 77U);
    EXPECT_EQ(tokensOf(parser), "cd");
}

TEST(qxBasicParser, errorsCarryTheirPlaceWhenTheyShould)
{
    TextParser parser("ab\ncd");
    parser.take(4);
    parser.setError("'%s' is no %d%%", qxString("100%s"), 5);
    EXPECT_EQ(parser.error(), "'100%s' is no 5%");

    parser.useErrorPlace(1);
    parser.setErrorText("100%s");
    EXPECT_EQ(parser.error(), "100%s at (Line:2,Col:2)");
    EXPECT_STREQ(parser.getErrorText().getString(), "100%s");
    parser.take(1);
    EXPECT_EQ(parser.getErrorLine(), 2U);
    EXPECT_EQ(parser.getErrorColumn(), 2U);
}

TEST(qxBasicParser, aLongErrorKeepsItsPlace)
{
    TextParser parser("");
    parser.useErrorPlace(1);
    std::string text(65534, 'x');
    parser.setErrorText((text.substr(0, 65532) + "\xE2\x82\xAC").c_str());
    const std::string place = " at (Line:1,Col:1)";
    EXPECT_EQ(parser.error(), text.substr(0, 65535 - place.size()) + place);
}

TEST(qxBasicParser, namesUnknownFunctionsAndResults)
{
    TextParser parser("");
    EXPECT_EQ(parser.parseFunction("f%d"), QX_PARSE_ERROR);
    EXPECT_EQ(parser.error(), "Unknow parse function 'f%d'");
    EXPECT_STREQ(qxBasicParser::parseResultString(QX_PARSE_ERROR), "Error");
    EXPECT_STREQ(qxBasicParser::parseResultString(QX_PARSE_OK), "OK");
    EXPECT_STREQ(qxBasicParser::parseResultString(QX_PARSE_NO_MATCH), "No Match");
    EXPECT_STREQ(qxBasicParser::parseResultString(static_cast<qxParseResult>(3)), "Unknown Error");
}

TEST(qxBasicParser, holdsAnAdapterOnlyWhileItIsAttached)
{
    char bytes[] = "ab";
    qxSerializeAdapterMemory onStack(bytes, 2);
    {
        qxBasicParser parser;
        parser.setAdapter(&onStack);
        EXPECT_EQ(onStack.getRef(), 1U);
    }
    EXPECT_EQ(onStack.getRef(), 0U);

    qxRefPointer<qxSerializeAdapter> shared(new qxSerializeAdapterMemory(bytes, 2));
    qxBasicParser parser;
    parser.setAdapter(shared);
    shared = nullptr;
    EXPECT_EQ(parser.getNextToken(), u'a');
    parser.setAdapter(nullptr); // was the last holder
}

/// Collects what is reported.
class ProgressRecorder final : public qxProgressInterface
{
public:
    ProgressRecorder() { qxProgress::setReceiver(this); }
    ~ProgressRecorder() override { qxProgress::setReceiver(nullptr); }
    void onProgress(const qxString& text, unsigned int percent, const char*) override
    {
        lines.push_back(std::string(text.getString()) + " " + std::to_string(percent));
    }

    std::vector<std::string> lines;
};

TEST(qxBasicParser, reportsEachPercentOnce)
{
    ProgressRecorder progress;
    TextParser parser(std::string(5 * 16384, 'x'));
    parser.setProgressMessage("Working");
    for (int i = 0; i < 5 * 16384; ++i) {
        parser.getNextToken();
        parser.reportProgress();
    }
    const std::vector<std::string> expected = {"Working 20", "Working 40", "Working 60", "Working 80"};
    EXPECT_EQ(progress.lines, expected);
    parser.useProgress(0);
    parser.reset();
    parser.reportProgress();
    EXPECT_EQ(progress.lines, expected);
}

TEST(qxBasicParser, survivesSomebodyElseReadingItsAdapter)
{
    std::string text(40000, 'x');
    qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
    qxBasicParser parser;
    parser.setAdapter(&memory);
    parser.getNextToken();
    memory.seek(39999, QX_ORIGIN_START);
    unsigned int count = 0;
    for (; parser.hasData(); ++count) parser.getNextToken();
    EXPECT_EQ(count, 16384U); // the rest of the block that was there, and the byte that is left
}

} // namespace
