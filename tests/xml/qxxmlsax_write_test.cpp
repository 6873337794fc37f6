// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <functional>
#include <map>
#include <sstream>
#include <utility>

namespace
{

/// Writes what a function says.
class Writer : public qxXmlSax
{
public:
    explicit Writer(std::function<void(Writer&)> writesWhat) : body(std::move(writesWhat)) {}
    unsigned char onWrite() override
    {
        body(*this);
        return 1;
    }

    /// Writes the words of a script, separated by "|": <element, name=value, 'text, [section, !comment,
    /// ?target~data, &reference, {text as it stands, ) for the end of a start tag, > for that of an element.
    void perform(const std::string& script)
    {
        const std::map<char, void (qxXmlSax::*)(const qxString&)> operations = {
            {'<', &qxXmlSax::writeElementStart},    {'\'', &qxXmlSax::writeCharData},
            {'[', &qxXmlSax::writeCDATA},           {'!', &qxXmlSax::writeComment},
            {'&', &qxXmlSax::writeEntityReference}, {'{', &qxXmlSax::writeGenericString}};
        std::istringstream words(script);
        for (std::string word; std::getline(words, word, '|');) {
            const std::size_t middle = word.find_first_of("=~");
            if (const auto operation = operations.find(word[0]); operation != operations.end())
                (this->*operation->second)(toString(word.substr(1)));
            else if (word[0] == '?')
                writePI(toString(word.substr(1, middle - 1)), toString(word.substr(middle + 1)));
            else if (word == ")")
                beginElementContents();
            else if (word == ">")
                writeElementEnd();
            else
                writeAttribute(toString(word.substr(0, middle)), toString(word.substr(middle + 1)));
        }
    }

    std::function<void(Writer&)> body;
};

/// What `body` writes without a header; when it is refused, "text code: what was written before".
std::string output(std::function<void(Writer&)> body, bool plain = true, const char* encoding = "none")
{
    Writer writer(std::move(body));
    writer.setEncoding(encoding);
    writer.setPlainOutput(plain);
    TextSink sink;
    try {
        writer.write(&sink);
    } catch (const qxParserException& exception) {
        EXPECT_STREQ(writer.getError().getString(), exception.getErrorString().getString());
        return std::string(exception.getErrorString().getString()) + " " +
               std::to_string(exception.getErrorCode()) + ": " + sink.text;
    }
    return sink.text;
}

std::string scriptOutput(const std::string& script)
{
    return output([&script](Writer& out) { out.perform(script); });
}

TEST(qxXmlSaxWrite, theEncodingDecidesTheHeader)
{
    Writer writer([](Writer& out) { out.perform("<a|>"); });
    writer.setPlainOutput(true);
    writer.setVersion("1.1");
    const auto document = [&writer](const std::string& encoding) {
        writer.setEncoding(encoding.c_str());
        return written(writer);
    };
    expectRows(document, "UTF-8 => <?xml version=\"1.1\" encoding=\"UTF-8\" standalone=\"yes\" ?><a/>",
               "ISO-8859-1 => <?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\" ?><a/>",
               "none => <a/>", "NONE => <a/>");
    writer.setStandalone(false);
    expectRows(document, "utf-8 => <?xml version=\"1.1\" encoding=\"utf-8\" standalone=\"no\" ?><a/>");
}

TEST(qxXmlSaxWrite, utf16HasAMarkAndTheLowByteFirst)
{
    std::string expected = "\xFF\xFE";
    for (const char c : std::string("<?xml version=\"1.0\" encoding=\"utf-16\" standalone=\"yes\" ?>"))
        expected += {c, '\0'};
    expected += std::string("A\0\xE9\0\xAC\x20\x3D\xD8\0\xDE", 10);
    const auto body = [](Writer& out) { out.perform("'A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"); };
    EXPECT_EQ(output(body, true, "utf-16"), expected);
}

TEST(qxXmlSaxWrite, aShortHeaderCanBeWrittenByHand)
{
    const auto body = [](Writer& out) {
        out.setEncoding("UTF-8");
        out.writeXmlHeader();
        out.writeCharDataElement("a", "t");
    };
    EXPECT_EQ(output(body), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>t</a>");
}

TEST(qxXmlSaxWrite, indentsTagsCommentsSectionsAndInstructions)
{
    const auto body = [](Writer& out) {
        out.perform("?p~d|<a|x=1|<b|>|<c|'text|>|<d|!c|>|<e|<f|[c|&r|>|>|>");
    };
    EXPECT_EQ(output(body, false), "\n<?p d?>"
                                   "\n<a x=\"1\">"
                                   "\n\t<b/>"
                                   "\n\t<c>text</c>"
                                   "\n\t<d>"
                                   "\n\t\t<!--c--></d>"
                                   "\n\t<e>"
                                   "\n\t\t<f>"
                                   "\n\t\t\t<![CDATA[c]]>&r;</f>"
                                   "\n\t</e>"
                                   "\n</a>");
}

TEST(qxXmlSaxWrite, escapesMarkup)
{
    const auto attribute = [](const std::string& value) { return scriptOutput("<a|x=" + value).substr(5); };
    const auto text = [](const std::string& value) { return scriptOutput("'" + value); };
    expectRows(attribute, "a<b>c&d\"e'f => \"a&lt;b&gt;c&amp;d&quot;e&apos;f\"",
               "&lt;&gt;&amp;&quot;&apos; => \"&lt;&gt;&amp;&quot;&apos;\"",
               "&lt &foo; &#65; &; => \"&amp;lt &amp;foo; &amp;#65; &amp;;\"", "\t\r\n => \"\t\r\n\"",
               " => \"\"");
    expectRows(text, "a<b>c&d\"e'f => a&lt;b&gt;c&amp;d&quot;e&apos;f", "\t\r\n => \t\r\n", "]]> => ]]&gt;",
               " => ", "&lt;&gt;&amp;&quot;&apos; => &amp;lt;&amp;gt;&amp;amp;&amp;quot;&amp;apos;",
               "0123456789abcdef0123456789abcdef< => 0123456789abcdef0123456789abcdef&lt;",
               "0123456789\xC3\xA9.bcd&0123456789abcdef => 0123456789\xC3\xA9.bcd&amp;0123456789abcdef");
}

TEST(qxXmlSaxWrite, referencesAndGenericTextAreWrittenAsTheyStand)
{
    expectRows(scriptOutput, "<a|&lt|&my.ref|&#65|&#x1F600|> => <a>&lt;&my.ref;&#65;&#x1F600;</a>",
               "<a|{ x='&'|)|{<b/>|> => <a x='&'><b/></a>");
}

TEST(qxXmlSaxWrite, otherEncodingsHaveOneByteForACharacter)
{
    const auto latin1 = [](const std::string& script) {
        const std::string header = "<?xml version=\"1.0\" encoding=\"latin1\" standalone=\"yes\" ?>";
        std::string text = output([&script](Writer& out) { out.perform(script); }, true, "latin1");
        return text.erase(text.find(header), header.size());
    };
    expectRows(
        latin1,
        "<\xC3\xA9|x=\xC3\xBF\xC4\x80|'\xE2\x82\xAC\xF0\x9F\x98\x80|!\xC2\xA0|> => "
        "<\xE9 x=\"\xFF&#x100;\">&#x20AC;&#x1F600;<!--\xA0--></\xE9>",
        "!\xC4\x80 => Comment is malformed 3: ", "[\xC4\x80 => CDATA is malformed 3: ",
        "?p~\xC4\x80 => PI is malformed 3: ", "?\xC4\x80~ => PI is malformed 3: ",
        "&\xC4\x80 => Entity Reference is malformed 3: ", "<\xC4\x80 => Can not write element here 3: ");
}

TEST(qxXmlSaxWrite, refusesWhatIsOutOfPlace)
{
    expectRows(scriptOutput, "> => Unmatched element tags 3: ", "x=1 => Can not write attribute here 3: ",
               "<a|)|x=1 => Can not write attribute here 3: <a>", "<a|>|> => Unmatched element tags 3: <a/>");
}

TEST(qxXmlSaxWrite, refusesWhatWouldNotBeWellFormed)
{
    // Of texts: controls, U+FFFE, a lone surrogate, and bytes that are no character.
    expectRows(
        scriptOutput, "<a|'a\x01 => CharData is malformed 3: <a",
        "<a|'0123456789abcdef\x1F => CharData is malformed 3: <a",
        "<a|'\xEF\xBF\xBE => CharData is malformed 3: <a", "<a|'\xED\xA0\x80 => CharData is malformed 3: <a",
        "<a|'\xC3 => CharData is malformed 3: <a", "<a|'\xC0\x80 => CharData is malformed 3: <a",
        "<a|'\xF4\x90\x80\x80 => CharData is malformed 3: <a",
        std::string("<a|'\0 => CharData is malformed 3: <a", 36),
        "<a|x=\x0B => Attribute value is malformed 3: <a", "<a|[a]]>b => CDATA is malformed 3: <a",
        "<a|[\x02 => CDATA is malformed 3: <a", "<a|!a--b => Comment is malformed 3: <a",
        "<a|!a- => Comment is malformed 3: <a", "<a|!\x80 => Comment is malformed 3: <a",
        "<a|?p~a?>b => PI is malformed 3: <a", "<a|?xMl~ => PI is malformed 3: <a",
        "<a|?~d => PI is malformed 3: <a", "<a|?a b~d => PI is malformed 3: <a",
        "<a|& => Entity Reference is malformed 3: <a", "<a|&1a => Entity Reference is malformed 3: <a",
        "<a|&# => Entity Reference is malformed 3: <a", "<a|&#xD800 => Entity Reference is malformed 3: <a",
        "<a|&#65a => Entity Reference is malformed 3: <a", "<a|<a b => Can not write element here 3: <a",
        "<a|< => Can not write element here 3: <a", "<a|-x=1 => Can not write attribute here 3: <a");
}

TEST(qxXmlSaxWrite, goesOnAfterARefusalAsIfItHadNotBeen)
{
    const auto body = [](Writer& out) {
        out.perform("<a|<bc");
        EXPECT_EQ(errorText<qxParserException>([&out] { out.writeCharDataElement("b", "\x01"); }),
                  "CharData is malformed");
        EXPECT_EQ(out.getCurrentElementLevel(), 2U);
        EXPECT_STREQ(out.getCurrentElementName().getString(), "bc");
        EXPECT_STREQ(out.getElementName(1).getString(), "a");
        out.perform("x=1|>");
        EXPECT_STREQ(out.getCurrentElementName().getString(), "a");
        out.perform(">");
        EXPECT_EQ(out.getCurrentElementLevel(), 0U);
    };
    EXPECT_EQ(output(body), "<a><bc x=\"1\"/></a>");
}

TEST(qxXmlSaxWrite, eachWriteBeginsANewDocument)
{
    Writer writer([](Writer& out) { out.perform("<a"); });
    writer.setEncoding("none");
    EXPECT_EQ(written(writer), "\n<a");
    writer.body = [](Writer& out) { out.perform(">"); };
    EXPECT_EQ(errorText<qxParserException>([&writer] { written(writer); }), "Unmatched element tags");
    EXPECT_TRUE(writer.hasError());
    EXPECT_EQ(writer.getAdapter(), nullptr);
    writer.body = [](Writer& out) { out.perform("<b"); };
    EXPECT_EQ(written(writer), "\n<b");
    EXPECT_FALSE(writer.hasError());
}

TEST(qxXmlSaxWrite, writingInsideWritingIsRefused)
{
    TextSink other;
    const auto body = [&other](Writer& out) {
        out.write(&other);
        EXPECT_STREQ(out.getErrorText().getString(), "Parser is busy reading");
        out.perform("<a|>");
    };
    EXPECT_EQ(output(body), "<a/>");
    EXPECT_EQ(other.text, "");
}

TEST(qxXmlSaxWrite, worksDirectlyOnAnAttachedAdapter)
{
    TextSink sink;
    qxXmlSax writer;
    EXPECT_EQ(errorText<qxParserException>([&writer] { writer.writeElementStart("a"); }),
              "No adapter to write to");
    writer.setPlainOutput(true);
    writer.setAdapter(&sink);
    writer.writeElementStart("a");
    EXPECT_EQ(sink.text, "<a");
    writer.writeElementEnd();
    writer.setAdapter(nullptr);
    EXPECT_EQ(sink.text, "<a/>");
    EXPECT_EQ(sink.getRef(), 0U);
}

TEST(qxXmlSaxWrite, nothingIsWrittenIntoTheInputWhileItIsRead)
{
    class Mixed : public qxXmlSax
    {
        unsigned char onCharData(const qxString&, unsigned int) override
        {
            writeCharData("other");
            return 1;
        }
    };
    const MessageRecorder messages;
    std::string input = "<a>text</a>";
    qxSerializeAdapterMemory adapter(input.data(), static_cast<unsigned int>(input.size()));
    Mixed mixed;
    mixed.read(&adapter);
    EXPECT_EQ(input, "<a>text</a>");
    EXPECT_EQ(messages.texts(), std::vector<std::string>{"Parser is busy reading"});
}

TEST(qxXmlSaxWrite, whatTheLastHolderOfTheAdapterRaisesComesOut)
{
    struct Raising : TextSink {
        ~Raising() noexcept(false) override { throw 7; }
    };
    qxRefPointer<qxSerializeAdapter> sink(new Raising);
    Writer writer([&sink](Writer&) { sink = nullptr; });
    EXPECT_THROW(writer.write(sink), int);
}

TEST(qxXmlSaxWrite, isAValueOfAStream)
{
    Writer writer([](Writer& out) { out.writeCharDataElement("a", "text"); });
    writer.setEncoding("none");
    writer.setPlainOutput(true);
    TextSink stream;

    EXPECT_EQ(writer.getDataSize(&stream), 11U);
    writer.pushBack(&stream);
    EXPECT_EQ(stream.text, "");
    std::string back(11, ' ');
    EXPECT_EQ(stream.read(reinterpret_cast<unsigned char*>(back.data()), 11), 11U);
    EXPECT_EQ(back, "<a>text</a>");
}

TEST(qxXmlSaxWrite, manyLevelsAreOnlyCounted)
{
    constexpr unsigned int LEVELS = 200000;
    const std::string text = output([](Writer& out) {
        for (unsigned int i = 0; i < LEVELS; ++i) out.writeElementStart("a");
        for (unsigned int i = 0; i < LEVELS; ++i) out.writeElementEnd();
    });
    EXPECT_EQ(text.size(), (LEVELS - 1) * 7 + 4);
}

} // namespace
