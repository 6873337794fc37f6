// SPDX-License-Identifier: see LICENSE

#include "qxbasicparser.h"

#include "qxarray.h"
#include "qxprogress.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxtestfolder.h"
#include "qxtestrows.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <algorithm>
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

/// All tokens that are left: 0 as "?", others beyond ASCII as \uXXXX.
std::string tokensOf(qxBasicParser& parser)
{
    std::ostringstream text;
    while (parser.hasData()) {
        const unsigned int token = parser.getNextToken();
        if (token == 0 || (token >= 32 && token < 127))
            text << (token == 0 ? '?' : static_cast<char>(token));
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

/// Calls `body` with these bytes in an adapter that lends them, one that gives blocks and one that drips.
template <class Body>
void forEachAdapter(std::string bytes, Body&& body)
{
    TestBlock block(bytes);
    TestStream stream(bytes);
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
    for (qxSerializeAdapter* const adapter :
         std::initializer_list<qxSerializeAdapter*>{&memory, &block, &stream})
        body(*adapter);
}

std::string decode(Encoding encoding, std::string bytes)
{
    std::replace(bytes.begin(), bytes.end(), '.', '\0'); // so that rows can show that byte
    std::string tokens = "none";
    forEachAdapter(bytes, [&](qxSerializeAdapter& adapter) {
        qxBasicParser parser;
        setEncoding(parser, encoding);
        parser.setAdapter(&adapter);
        const std::string again = tokensOf(parser);
        EXPECT_TRUE(tokens == "none" || again == tokens) << again;
        tokens = again;
    });
    return tokens;
}

TEST(qxBasicParser, decodesBytesThatAreLentTakenOrDrippedOneByOne)
{
    const MessageRecorder messages;
    const auto in = [](Encoding encoding) {
        return [encoding](const std::string& bytes) { return decode(encoding, bytes); };
    };
    expectRows(in(BYTES), "a\x80\xFF => a\\u0080\\u00ff", "\xEF\xBB\xBF => \\u00ef\\u00bb\\u00bf");
    // Each byte that begins no character is a token 0; a mark is none at the start.
    expectRows(in(UTF8), "a\xC2\x80\xDF\xBF => a\\u0080\\u07ff",
               "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF => \\u0800\\ud7ff\\ue000\\uffff",
               "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF => \\ud800\\udc00\\udbff\\udfff", "a.b => a?b",
               "\x80z => ?z", "\xC0\x80z => ??z", "\xC1\xBFz => ??z", "\xC3z => ?z", "\xE0\x9F\xBFz => ???z",
               "\xE2\x82zz => ??zz", "\xED\xA0\x80z => ???z", "\xF0\x8F\xBF\xBFz => ????z",
               "\xF4\x90\x80\x80z => ????z", "\xF5\x80\x80\x80z => ????z", "\xFFz => ?z", "a\xC3 => a?",
               "a\xE2\x82 => a??", "a\xF0\x9F\x98 => a???", "\xEF\xBB\xBFz\xEF\xBB\xBF => z\\ufeff",
               "\xFF\xFEz.\xFF\xFE => z\\ufeff", "\xFE\xFF.z => z", "\xEF\xBB => ??", "\xEF\xBB\xBF => ",
               " => ");
    expectRows(in(LITTLE), "a.\xAC\x20.\xD8 => a\\u20ac\\ud800", "a.b => a?", "\xEF\xBB\xBFz => z");
    expectRows(in(BIG), ".a\x20\xAC => a\\u20ac", "\xFF\xFEz. => z");
}

TEST(qxBasicParser, faultyBytesSendAWarningWhenTheirTurnComes)
{
    const MessageRecorder messages;
    TextParser parser("ab\xFF");
    EXPECT_EQ(parser.getNextToken(), u'a');
    EXPECT_EQ(messages.texts(), std::vector<std::string>{});
    EXPECT_EQ(tokensOf(parser), "b?");
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
    const struct {
        unsigned int taken;
        unsigned int back;
    } rows[] = {{0, 0}, {18, 0}, {19, 0}, {16384, 0}, {40000, 17000}};
    for (const auto& [taken, back] : rows) {
        SCOPED_TRACE(taken);
        TextParser counter(text);
        counter.take(taken - back);
        qxArray<unsigned char> used;
        counter.getTokenData(0, taken - back, used);

        forEachAdapter(text, [&, count = taken, given = back](qxSerializeAdapter& adapter) {
            qxBasicParser parser;
            parser.useUtf8(1);
            parser.setAdapter(&adapter);
            for (unsigned int i = 0; i < count; ++i) parser.getNextToken();
            parser.pushBackTokens(given);
            parser.setAdapter(nullptr);
            EXPECT_EQ(readBlock(adapter, 40), text.substr(used.entries(), 40));
        });
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

    TextParser first(std::string(1100000, 'x')); // a million at first
    first.take(1100000);
    first.pushBackTokens(1048576);
    EXPECT_EQ(first.getTokenPos(), 1100000U - 1048576U);
}

TEST(qxBasicParser, tellsLineAndColumn)
{
    const auto place = [](std::string text) { // of the "^"
        const std::size_t mark = text.find('^');
        TextParser parser(text.erase(mark, 1));
        while (parser.getTokenData(0, static_cast<unsigned int>(parser.getTokenPos())).length() < mark)
            parser.take(1);
        return parser.place();
    };
    expectRows(place, "^ => 1:1", "a^b => 1:2", "ab^\ncd => 1:3", "ab\n^cd => 2:1", "ab\r\nc^d => 2:2",
               "\n\n\n^ => 4:1", "\xC3\xA9\xE2\x82\xAC^ => 1:3",
               "\xF0\x9F\x98\x80^z => 1:2", // one character of two tokens
               "\xF0\x9F\x98\x80\n\xF0\x9F\x98\x80z^ => 2:3");
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

TEST(qxBasicParser, runningOutOfDataIsAnErrorOfGetNextToken)
{
    TextParser blank(" ");
    TextParser empty("");
    qxBasicParser none;
    for (qxBasicParser* const parser : std::initializer_list<qxBasicParser*>{&blank, &empty, &none}) {
        EXPECT_EQ(parser->getNextToken(true), 0);
        EXPECT_FALSE(parser->hasData());
        EXPECT_STREQ(parser->getError().getString(), "Adapter out of Data");
    }
}

struct ParseRow {
    qxParseResult (qxBasicParser::*parse)();
    std::vector<std::string> texts; // "^" behind what is taken
};

typedef qxBasicParser P;
const ParseRow PARSE_ROWS[] = {
    {&P::parseAllExceptCREOL, {"ab^\r\n", "ab^\n", "ab^"}},
    {&P::parseAllWS, {" \t\r\n^x", "^x "}},
    {&P::parseAlpha, {"z^1", "^1", "^\xC3\xA9"}},
    {&P::parseAlphaNum, {"9^", "^_"}},
    {&P::parseCR, {"\r^\n", "^\n"}},
    {&P::parseCRLF, {"\r\n^", "^\rx", "^\r"}},
    {&P::parseCTL, {"\x1F^", "\x7F^", "^ "}},
    {&P::parseChar, {"\n^", "\xF0\x9F\x98\x80^z"}},
    {&P::parseDigit, {"0^", "^a"}},
    {&P::parseHT, {"\t^", "^ "}},
    {&P::parseHex, {"f^F", "F^", "^g"}},
    {&P::parseIdentifier, {"_a9^-b", "^9a"}},
    {&P::parseInteger, {"-12^.5", "+7^", "^-x", "^-"}},
    {&P::parseLF, {"\n^", "^\r"}},
    {&P::parseLoAlpha, {"a^", "^A"}},
    {&P::parseNumber, {"-12.5e+3^x", "12.^x", "12.e1^", "12^e+", "1E5^", "^.5"}},
    {&P::parsePlainIdentifier,
     {"a-b.c_1^ ", "\xC3\xA9-1^+", "_\xF0\x9F\x98\x80.^\x7F", "\xF0\x9F\x98\x80^", "^-a", "^.a", "^1"}},
    {&P::parseQuoteToken, {"\"a'b\"^ ", "\"a\\\"^ ", "^\"ab", "^a\"b\""}},
    {&P::parseQuoteTokenEscape, {"\"a\\\"\"^ ", "^\"a\\"}},
    {&P::parseSP, {" ^", "^\t"}},
    {&P::parseSetToken, {"[a[]^]"}},
    {&P::parseSetTokenEscape, {"[\\]]^]"}},
    {&P::parseSingleQuoteToken, {"'\"'^"}},
    {&P::parseSingleQuoteTokenEscape, {"'\\''^"}},
    {&P::parseToCREOL, {"a^\nb", "a^\rb", "ab^"}},
    {&P::parseToEOL, {"a\r^\nb", "ab^"}},
    {&P::parseUpAlpha, {"A^", "^a"}},
    {&P::parseWS, {" \t ^\r", "^x", "^\n"}},
};

TEST(qxBasicParser, parsesWhatStandsNextOrTakesNothing)
{
    for (const ParseRow& row : PARSE_ROWS) {
        std::vector<std::string> texts = row.texts;
        texts.push_back("^"); // at the end of the input
        for (const std::string& marked : texts) {
            std::string text = marked;
            TextParser parser(text.erase(text.find('^'), 1));
            const qxParseResult result = (parser.*row.parse)();
            const unsigned int taken =
                parser.getTokenData(0, static_cast<unsigned int>(parser.getTokenPos())).length();
            EXPECT_EQ(text.insert(taken, "^"), marked);
            EXPECT_EQ(result, taken == 0 ? QX_PARSE_NO_MATCH : QX_PARSE_OK);
            EXPECT_FALSE(parser.hasError());
        }
    }
    EXPECT_EQ(TextParser("\r\n").parseAllExceptCREOL(), QX_PARSE_OK); // of nothing
}

TEST(qxBasicParser, skips)
{
    TextParser parser(" \t\n \nxy\nz\r\nab\r\n.");
    parser.skipWS();
    EXPECT_EQ(parser.getTokenPos(), 2U);
    parser.skipAllWS();
    EXPECT_EQ(parser.getNextToken(), u'x');
    parser.skipToEOL();
    EXPECT_EQ(parser.getNextToken(true), u'z');
    parser.skipToCREOL();
    EXPECT_EQ(parser.getNextToken(true), u'a');
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
    EXPECT_TRUE(parser.checkTokens(L"\U0001F600", std::size(L"\U0001F600") - 1));
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

    const std::string place = " at (Line:2,Col:3)";
    const std::string text(65535 - place.size(), 'x');
    parser.setErrorText((text.substr(1) + "\xE2\x82\xAC" + std::string(place.size() - 2, 'y')).c_str());
    EXPECT_EQ(parser.error(), text.substr(1) + place); // no half character
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
