// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <functional>
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

    std::function<void(Writer&)> body;
};

/// What `body` writes without a header.
std::string output(std::function<void(Writer&)> body, bool plain = true)
{
    Writer writer(std::move(body));
    writer.setEncoding("none");
    writer.setPlainOutput(plain);
    return written(writer);
}

/// The exception's text and code, then what was written before.
std::string refusal(std::function<void(Writer&)> body)
{
    Writer writer(std::move(body));
    writer.setEncoding("none");
    writer.setPlainOutput(true);
    TextSink sink;
    try {
        writer.write(&sink);
    } catch (const qxParserException& exception) {
        EXPECT_STREQ(writer.getError().getString(), exception.getErrorString().getString());
        return std::string(exception.getErrorString().getString()) + " " +
               std::to_string(exception.getErrorCode()) + ": " + sink.text;
    }
    return "not refused: " + sink.text;
}

TEST(qxXmlSaxWrite, theEncodingDecidesTheHeader)
{
    const struct {
        const char* encoding;
        bool standalone;
        std::string text;
    } rows[] = {
        {"UTF-8", true, "<?xml version=\"1.1\" encoding=\"UTF-8\" standalone=\"yes\" ?><a/>"},
        {"utf-8", false, "<?xml version=\"1.1\" encoding=\"utf-8\" standalone=\"no\" ?><a/>"},
        {"ISO-8859-1", true, "<?xml version=\"1.1\" encoding=\"ISO-8859-1\" standalone=\"yes\" ?><a/>"},
        {"none", true, "<a/>"},
        {"NONE", false, "<a/>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.encoding);
        Writer writer([](Writer& out) {
            out.writeElementStart("a");
            out.writeElementEnd();
        });
        writer.setPlainOutput(true);
        writer.setVersion("1.1");
        writer.setEncoding(row.encoding);
        writer.setStandalone(row.standalone);
        EXPECT_EQ(written(writer), row.text);
    }
}

TEST(qxXmlSaxWrite, utf16HasAMarkAndTheLowByteFirst)
{
    Writer writer([](Writer& out) { out.writeCharData("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"); });
    writer.setPlainOutput(true);
    writer.setEncoding("utf-16");
    const std::string text = written(writer);

    const std::string header = "<?xml version=\"1.0\" encoding=\"utf-16\" standalone=\"yes\" ?>";
    std::string expected = "\xFF\xFE";
    for (const char c : header) expected += {c, '\0'};
    expected += std::string("A\0\xE9\0\xAC\x20\x3D\xD8\0\xDE", 10);
    EXPECT_EQ(text, expected);
}

TEST(qxXmlSaxWrite, aShortHeaderCanBeWrittenByHand)
{
    EXPECT_EQ(output([](Writer& out) {
                  out.setEncoding("UTF-8");
                  out.writeXmlHeader();
                  out.writeCharDataElement("a", "t");
              }),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>t</a>");
}

TEST(qxXmlSaxWrite, indentsTagsCommentsSectionsAndInstructions)
{
    const std::string text = output(
        [](Writer& out) {
            out.writePI("p", "d");
            out.writeElementStart("a");
            out.writeAttribute("x", "1");
            out.writeElementStart("b");
            out.writeElementEnd();
            out.writeCharDataElement("c", "text");
            out.writeElementStart("d");
            out.writeComment("c");
            out.writeElementEnd();
            out.writeElementStart("e");
            out.writeElementStart("f");
            out.writeCDATA("c");
            out.writeEntityReference("r");
            out.writeElementEnd();
            out.writeElementEnd();
            out.writeElementEnd();
        },
        false);
    EXPECT_EQ(text, "\n<?p d?>"
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
    const struct {
        const char* value;
        const char* attribute;
        const char* text;
    } rows[] = {
        {"a<b>c&d\"e'f", "a&lt;b&gt;c&amp;d&quot;e&apos;f", "a&lt;b&gt;c&amp;d&quot;e&apos;f"},
        {"&lt;&gt;&amp;&quot;&apos;", "&lt;&gt;&amp;&quot;&apos;",
         "&amp;lt;&amp;gt;&amp;amp;&amp;quot;&amp;apos;"},
        {"&lt &foo; &#65; &;", "&amp;lt &amp;foo; &amp;#65; &amp;;", "&amp;lt &amp;foo; &amp;#65; &amp;;"},
        {"\t\r\n", "\t\r\n", "\t\r\n"},
        {"]]>", "]]&gt;", "]]&gt;"},
        {"0123456789abcdef0123456789abcdef<", "0123456789abcdef0123456789abcdef&lt;",
         "0123456789abcdef0123456789abcdef&lt;"},
        {"0123456789\xC3\xA9"
         "bcd&0123456789abcdef",
         "0123456789\xC3\xA9"
         "bcd&amp;0123456789abcdef",
         "0123456789\xC3\xA9"
         "bcd&amp;0123456789abcdef"},
        {"", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(output([&row](Writer& out) {
                      out.writeElementStart("a");
                      out.writeAttribute("x", row.value);
                      out.writeCharData(row.value);
                      out.writeElementEnd();
                  }),
                  std::string("<a x=\"") + row.attribute + "\">" + row.text + "</a>");
    }
}

TEST(qxXmlSaxWrite, otherEncodingsHaveOneByteForACharacter)
{
    Writer writer([](Writer& out) {
        out.writeElementStart("\xC3\xA9");
        out.writeAttribute("x", "\xC3\xBF\xC4\x80");
        out.writeCharData("\xE2\x82\xAC\xF0\x9F\x98\x80");
        out.writeComment("\xC2\xA0");
        out.writeElementEnd();
    });
    writer.setPlainOutput(true);
    writer.setEncoding("latin1");
    EXPECT_EQ(written(writer), "<?xml version=\"1.0\" encoding=\"latin1\" standalone=\"yes\" ?>"
                               "<\xE9 x=\"\xFF&#x100;\">&#x20AC;&#x1F600;<!--\xA0--></\xE9>");
}

TEST(qxXmlSaxWrite, otherEncodingsRefuseWhatTheyCanNotHold)
{
    const struct {
        const char* text;
        std::function<void(Writer&)> body;
    } rows[] = {
        {"Comment is malformed", [](Writer& out) { out.writeComment("\xC4\x80"); }},
        {"CDATA is malformed", [](Writer& out) { out.writeCDATA("\xC4\x80"); }},
        {"PI is malformed", [](Writer& out) { out.writePI("p", "\xC4\x80"); }},
        {"PI is malformed", [](Writer& out) { out.writePI("\xC4\x80", ""); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference("\xC4\x80"); }},
        {"Can not write element here", [](Writer& out) { out.writeElementStart("\xC4\x80"); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Writer writer(row.body);
        writer.setEncoding("ISO-8859-1");
        EXPECT_EQ(errorText<qxParserException>([&writer] { written(writer); }), row.text);
    }
}

TEST(qxXmlSaxWrite, refusesWhatIsOutOfPlace)
{
    EXPECT_EQ(refusal([](Writer& out) { out.writeElementEnd(); }), "Unmatched element tags 3: ");
    EXPECT_EQ(refusal([](Writer& out) { out.writeAttribute("x", "1"); }), "Can not write attribute here 3: ");
    EXPECT_EQ(refusal([](Writer& out) {
                  out.writeElementStart("a");
                  out.beginElementContents();
                  out.writeAttribute("x", "1");
              }),
              "Can not write attribute here 3: <a>");
    EXPECT_EQ(refusal([](Writer& out) {
                  out.writeElementStart("a");
                  out.writeElementEnd();
                  out.writeElementEnd();
              }),
              "Unmatched element tags 3: <a/>");
}

TEST(qxXmlSaxWrite, refusesWhatWouldNotBeWellFormed)
{
    const struct {
        const char* text;
        std::function<void(Writer&)> body;
    } rows[] = {
        {"CharData is malformed", [](Writer& out) { out.writeCharData("a\x01"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharData("0123456789abcdef\x1F"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharData("\xEF\xBF\xBE"); }}, // U+FFFE
        {"CharData is malformed", [](Writer& out) { out.writeCharData("\xED\xA0\x80"); }}, // a lone surrogate
        {"CharData is malformed", [](Writer& out) { out.writeCharData("\xC3"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharData("\xC0\x80"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharData("\xF4\x90\x80\x80"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharData(toString(std::string(1, '\0'))); }},
        {"Attribute value is malformed", [](Writer& out) { out.writeAttribute("x", "\x0B"); }},
        {"CDATA is malformed", [](Writer& out) { out.writeCDATA("a]]>b"); }},
        {"CDATA is malformed", [](Writer& out) { out.writeCDATA("\x02"); }},
        {"Comment is malformed", [](Writer& out) { out.writeComment("a--b"); }},
        {"Comment is malformed", [](Writer& out) { out.writeComment("a-"); }},
        {"Comment is malformed", [](Writer& out) { out.writeComment("\x80"); }},
        {"PI is malformed", [](Writer& out) { out.writePI("p", "a?>b"); }},
        {"PI is malformed", [](Writer& out) { out.writePI("xMl", ""); }},
        {"PI is malformed", [](Writer& out) { out.writePI("", "d"); }},
        {"PI is malformed", [](Writer& out) { out.writePI("a b", "d"); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference(""); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference("1a"); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference("#"); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference("#xD800"); }},
        {"Entity Reference is malformed", [](Writer& out) { out.writeEntityReference("#65a"); }},
        {"Can not write element here", [](Writer& out) { out.writeElementStart("a b"); }},
        {"Can not write element here", [](Writer& out) { out.writeElementStart(""); }},
        {"Can not write attribute here", [](Writer& out) { out.writeAttribute("-x", "1"); }},
        {"CharData is malformed", [](Writer& out) { out.writeCharDataElement("b", "\x01"); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(refusal([&row](Writer& out) {
                      out.writeElementStart("a");
                      row.body(out);
                  }),
                  std::string(row.text) + " 3: <a");
    }
}

TEST(qxXmlSaxWrite, goesOnAfterARefusalAsIfItHadNotBeen)
{
    EXPECT_EQ(output([](Writer& out) {
                  out.writeElementStart("a");
                  EXPECT_EQ(errorText<qxParserException>([&out] { out.writeCharDataElement("b", "\x01"); }),
                            "CharData is malformed");
                  EXPECT_EQ(out.getCurrentElementLevel(), 1U);
                  out.writeAttribute("x", "1");
                  out.writeElementEnd();
              }),
              "<a x=\"1\"/>");
}

TEST(qxXmlSaxWrite, referencesMayBeNamedOrNumbered)
{
    EXPECT_EQ(output([](Writer& out) {
                  out.writeElementStart("a");
                  for (const char* name : {"lt", "my.ref", "#65", "#x1F600"}) out.writeEntityReference(name);
                  out.writeElementEnd();
              }),
              "<a>&lt;&my.ref;&#65;&#x1F600;</a>");
}

TEST(qxXmlSaxWrite, genericTextIsWrittenAsItStands)
{
    EXPECT_EQ(output([](Writer& out) {
                  out.writeElementStart("a");
                  out.writeGenericString(" x='&'");
                  out.beginElementContents();
                  out.writeGenericString("<b/>");
                  out.writeElementEnd();
              }),
              "<a x='&'><b/></a>");
}

TEST(qxXmlSaxWrite, tellsTheOpenElements)
{
    output([](Writer& out) {
        EXPECT_EQ(out.getCurrentElementLevel(), 0U);
        out.writeElementStart("a");
        out.writeElementStart("bc");
        EXPECT_EQ(out.getCurrentElementLevel(), 2U);
        EXPECT_STREQ(out.getCurrentElementName().getString(), "bc");
        EXPECT_STREQ(out.getElementName(1).getString(), "a");
        out.writeElementEnd();
        EXPECT_STREQ(out.getCurrentElementName().getString(), "a");
        out.writeElementEnd();
    });
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

TEST(qxXmlSaxWrite, eachWriteBeginsANewDocument)
{
    Writer writer([](Writer& out) { out.writeElementStart("a"); });
    writer.setEncoding("none");
    EXPECT_EQ(written(writer), "\n<a");
    EXPECT_EQ(written(writer), "\n<a");

    EXPECT_EQ(errorText<qxParserException>([&writer] {
                  writer.body = [](Writer& out) { out.writeElementEnd(); };
                  written(writer);
              }),
              "Unmatched element tags");
    EXPECT_TRUE(writer.hasError());
    EXPECT_EQ(writer.getAdapter(), nullptr);
    writer.body = [](Writer& out) { out.writeElementStart("b"); };
    EXPECT_EQ(written(writer), "\n<b");
    EXPECT_FALSE(writer.hasError());
}

TEST(qxXmlSaxWrite, writingInsideWritingIsRefused)
{
    TextSink other;
    EXPECT_EQ(output([&other](Writer& out) {
                  out.write(&other);
                  EXPECT_STREQ(out.getErrorText().getString(), "Parser is busy reading");
                  out.writeCharDataElement("a", "t");
              }),
              "<a>t</a>");
    EXPECT_EQ(other.text, "");
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
