// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlwriter.h"

#include "qxxmlsax.h"

#include "core/qxutf8scan.h"
#include "xml/qxxmlreader.h"
#include "xml/qxxmlreferences.h"

namespace
{

constexpr std::size_t BLOCK_SIZE = 65536; // bytes that gather before they are handed on
constexpr std::size_t MAX_RUN = 65535;    // bytes of character data that a reader takes in one piece

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

qxString lowerCase(const qxString& text)
{
    qxString lower(text.getString());
    return lower.toLower();
}

} // namespace

// One write... operation: all of it reaches the output, or nothing of it.
class qxXmlWriterState::Operation
{
public:
    explicit Operation(qxXmlWriterState& writer)
        : m_writer(writer), m_state(writer.m_state), m_level(writer.m_nameStarts.size()),
          m_size(writer.m_output.getSize()), m_isFinished(false)
    {
        if (!writer.m_sax.getAdapter()) writer.refuse("No adapter to write to");
        if (writer.isReading()) writer.refuse("Parser is busy reading"); // the adapter is that of the input
        ++writer.m_operations;
    }

    ~Operation()
    {
        if (m_isFinished) return;
        --m_writer.m_operations;
        m_writer.m_output.cut(m_size);
        m_writer.m_state = m_state;
        // Only an element that was begun inside the operation can be there too much.
        while (m_writer.m_nameStarts.size() > m_level) {
            m_writer.m_names.resize(m_writer.m_nameStarts.back());
            m_writer.m_nameStarts.pop_back();
        }
    }

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    void finish(State state)
    {
        m_writer.m_state = state;
        m_writer.m_textRun = 0;
        m_isFinished = true;
        if (--m_writer.m_operations != 0) return;
        if (m_writer.m_batches == 0 || m_writer.m_output.getSize() >= BLOCK_SIZE) m_writer.flush();
    }

private:
    qxXmlWriterState& m_writer;
    State m_state;
    std::size_t m_level;
    std::size_t m_size;
    bool m_isFinished;
};

qxXmlWriterState& qxXmlWriterState::of(qxXmlSax& sax)
{
    if (!sax.m_writer) sax.m_writer = std::make_unique<qxXmlWriterState>(sax);
    return *sax.m_writer;
}

qxString qxXmlWriterState::getName(unsigned int level) const
{
    const std::size_t start = m_nameStarts[level - 1];
    const std::size_t end = level < m_nameStarts.size() ? m_nameStarts[level] : m_names.size();
    return qxString(m_names.data() + start, end - start);
}

bool qxXmlWriterState::isReading() const
{
    return m_sax.m_reader && m_sax.m_reader->isReading;
}

std::string_view qxXmlWriterState::getOpenName() const
{
    const std::string_view names = m_names;
    return names.substr(m_nameStarts.back());
}

void qxXmlWriterState::beginDocument()
{
    m_names.clear();
    m_nameStarts.clear();
    m_output.cut(0);
    readEncoding();
    Operation operation(*this);
    appendHeader();
    operation.finish(AT_START);
}

void qxXmlWriterState::writeXmlHeader()
{
    if (m_output.getForm() != qxXmlOutput::UTF16) readEncoding();
    Operation operation(*this);
    m_output.append("<?xml version=\"");
    m_output.appendGeneric(view(m_sax.getVersion()));
    m_output.append("\" encoding=\"");
    m_output.appendGeneric(view(m_sax.getEncoding()));
    m_output.append("\"?>");
    operation.finish(BEHIND_HEADER);
}

void qxXmlWriterState::writeElementStart(std::string_view name)
{
    Operation operation(*this);
    closeStartTag();
    if (isInStartTag() || !m_output.canHoldName(name)) refuse("Can not write element here");
    indent(getLevel());
    m_output.append('<');
    m_output.append(name);
    m_nameStarts.push_back(m_names.size());
    m_names += name;
    operation.finish(IN_START_TAG);
}

void qxXmlWriterState::writeAttribute(std::string_view name, std::string_view value, Meaning meaning)
{
    Operation operation(*this);
    if (!isInStartTag() || !m_output.canHoldName(name)) refuse("Can not write attribute here");
    m_output.append(' ');
    m_output.append(name);
    m_output.append("=\"");
    const unsigned int escaping =
        meaning == AS_TEXT ? qxXmlOutput::GUARD_START : qxXmlOutput::KEEP_REFERENCES;
    if (!m_output.appendEscaped(value, escaping)) refuse("Attribute value is malformed");
    m_output.append('"');
    operation.finish(BEHIND_ATTRIBUTE);
}

void qxXmlWriterState::writeCharData(std::string_view text, Meaning meaning)
{
    Operation operation(*this);
    closeStartTag();
    std::size_t run = m_textRun + text.size();
    // Together the texts may be too long for a reader, or begin with what neither of them begins with.
    const bool isApart =
        run > MAX_RUN || (m_textRun != 0 && m_textRun < std::string_view("function:").size());
    if (meaning == AS_TEXT && isApart) {
        appendReference(text);
        run = text.size();
    }
    const unsigned int escaping = meaning == AS_TEXT ? qxXmlOutput::GUARD_PIECES : qxXmlOutput::ESCAPE_ALL;
    if (!m_output.appendEscaped(text, escaping)) refuse("CharData is malformed");
    operation.finish(BEHIND_CONTENT);
    m_textRun = run;
}

void qxXmlWriterState::writeCharDataElement(std::string_view name, std::string_view text)
{
    Operation operation(*this);
    writeElementStart(name);
    writeCharData(text, AS_MARKUP);
    writeElementEnd();
    operation.finish(m_state);
}

void qxXmlWriterState::writeCDATA(std::string_view text)
{
    Operation operation(*this);
    closeStartTag();
    if (!m_output.canHold(text) || text.find("]]>") != std::string_view::npos) refuse("CDATA is malformed");
    indent(getLevel());
    m_output.append("<![CDATA[");
    m_output.append(text);
    m_output.append("]]>");
    operation.finish(BEHIND_CONTENT);
}

void qxXmlWriterState::writeComment(std::string_view text)
{
    Operation operation(*this);
    closeStartTag();
    const bool hasDashes = text.find("--") != std::string_view::npos || text.ends_with('-');
    if (hasDashes || !m_output.canHold(text)) refuse("Comment is malformed");
    indent(getLevel());
    m_output.append("<!--");
    m_output.append(text);
    m_output.append("-->");
    operation.finish(BEHIND_CONTENT);
}

void qxXmlWriterState::writePI(std::string_view target, std::string_view data)
{
    Operation operation(*this);
    closeStartTag();
    const bool isReserved = lowerCase(qxString(target.data(), target.size())) == "xml";
    if (isReserved || !m_output.canHoldName(target) || !m_output.canHold(data) ||
        data.find("?>") != std::string_view::npos)
        refuse("PI is malformed");
    indent(getLevel());
    m_output.append("<?");
    m_output.append(target);
    m_output.append(' ');
    m_output.append(data);
    m_output.append("?>");
    operation.finish(BEHIND_CONTENT);
}

void qxXmlWriterState::writeEntityReference(std::string_view name)
{
    Operation operation(*this);
    closeStartTag();
    if (!m_output.canHoldName(name) && qxXmlNumberedCharacter(name) == 0)
        refuse("Entity Reference is malformed");
    m_output.append('&');
    m_output.append(name);
    m_output.append(';');
    operation.finish(BEHIND_CONTENT);
}

void qxXmlWriterState::writeElementEnd()
{
    Operation operation(*this);
    if (m_nameStarts.empty()) refuse("Unmatched element tags");
    if (isInStartTag()) {
        m_output.append("/>");
    } else {
        if (m_state == BEHIND_END_TAG) indent(getLevel() - 1);
        m_output.append("</");
        m_output.append(getOpenName());
        m_output.append('>');
    }
    m_names.resize(m_nameStarts.back());
    m_nameStarts.pop_back();
    operation.finish(BEHIND_END_TAG);
}

void qxXmlWriterState::writeGenericString(std::string_view text)
{
    Operation operation(*this);
    m_output.appendGeneric(text);
    operation.finish(m_state);
}

void qxXmlWriterState::beginElementContents()
{
    Operation operation(*this);
    closeStartTag();
    operation.finish(m_state);
}

void qxXmlWriterState::flush()
{
    qxSerializeAdapter* const adapter = m_sax.getAdapter();
    if (adapter && m_output.getSize() != 0) m_output.flush(*adapter);
}

void qxXmlWriterState::readEncoding()
{
    const qxString encoding = lowerCase(m_sax.getEncoding());
    if (encoding == "utf-16")
        m_output.setForm(qxXmlOutput::UTF16);
    else
        m_output.setForm(encoding == "utf-8" || encoding == "none" ? qxXmlOutput::UTF8 : qxXmlOutput::BYTES);
}

void qxXmlWriterState::appendHeader()
{
    if (m_output.getForm() == qxXmlOutput::UTF16) m_output.append("\xEF\xBB\xBF"); // the byte-order mark
    if (lowerCase(m_sax.getEncoding()) == "none") return;
    m_output.append("<?xml version=\"");
    m_output.appendGeneric(view(m_sax.getVersion()));
    m_output.append("\" encoding=\"");
    m_output.appendGeneric(view(m_sax.getEncoding()));
    m_output.append("\" standalone=\"");
    m_output.append(m_sax.isStandalone() ? "yes" : "no");
    m_output.append("\" ?>");
}

void qxXmlWriterState::closeStartTag()
{
    if (!isInStartTag()) return;
    m_output.append('>');
    m_state = BEHIND_CONTENT;
}

void qxXmlWriterState::indent(unsigned int level)
{
    if (m_sax.isPlainOutput()) return;
    m_output.append('\n');
    m_output.appendRun('\t', level);
}

// Takes the first character off the text and writes a reference to it: a reader acts on neither what it began nor
// on the length of what it continues.
void qxXmlWriterState::appendReference(std::string_view& text)
{
    unsigned int size = 0;
    const unsigned int code = qxReadUTF8(text.data(), text.size(), size);
    if (!qxXmlIsChar(code) || size == 0) return; // will be refused
    m_output.append("&#");
    m_output.append(std::to_string(code));
    m_output.append(';');
    text.remove_prefix(size);
}

void qxXmlWriterState::refuse(const char* text)
{
    const bool usesPlace = m_sax.isUsingErrorPlace(); // of input, which there is none of
    m_sax.useErrorPlace(0);
    m_sax.setErrorText(text);
    m_sax.useErrorPlace(usesPlace);
    throw qxParserException(text, qxParserException::MISUSE);
}
