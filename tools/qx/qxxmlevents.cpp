// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoutput.h"
#include "qxtextsink.h"

#include "qxdynamictype.h"
#include "qxobject.h"
#include "qxxmlhandlers.h"

#include <charconv>

namespace
{

/// Takes the content of elements for objects and custom data, and keeps the last one.
class Contents final : public qxXmlObjectInterface, public qxXmlCustomDataInterface
{
public:
    explicit Contents(const qxCommandLine& line)
    {
        for (unsigned int i = 0; i < line.getOptionCount("--object"); ++i)
            qxXmlSax::registerObjectInterface(line.getOptionValue("--object", i), this);
        for (unsigned int i = 0; i < line.getOptionCount("--custom"); ++i)
            qxXmlSax::registerCustomDataInterface(line.getOptionValue("--custom", i), this);
    }

    ~Contents() override
    {
        qxXmlSax::unregisterObjectInterface(this);
        qxXmlSax::unregisterCustomDataInterface(this);
    }

    qxObject* readObject(const qxXmlSax&, qxSerializeAdapter& content) override { return take(content); }
    qxReference* readCustomData(const qxXmlSax&, qxSerializeAdapter& content) override
    {
        return take(content);
    }

    void writeObject(qxXmlSax&, qxObject&) override {} // never written
    void writeCustomData(qxXmlSax&, qxReference&) override {}

    const std::string& getLast() const { return m_last; }

private:
    qxObject* take(qxSerializeAdapter& content)
    {
        m_last.resize(static_cast<std::size_t>(content.length()));
        content.read(reinterpret_cast<unsigned char*>(m_last.data()),
                     static_cast<unsigned int>(m_last.size()));
        return new qxObject;
    }

    std::string m_last;
};

/// Writes one line for each call of the reader.
class EventLines : public qxXmlSax
{
public:
    explicit EventLines(const Contents& contents) : m_contents(contents) {}

    unsigned char onVersion(const qxString& version) override { return line("Version", {&version}); }
    unsigned char onEncoding(const qxString& encoding) override { return line("Encoding", {&encoding}); }

    unsigned char onStandalone(unsigned char standalone) override
    {
        return line("Standalone", {}, flagText(standalone));
    }

    unsigned char onElementStart(const qxString& name, unsigned int level) override
    {
        return line("ElementStart", {&name}, level);
    }

    unsigned char onElementAttributeEnd(const qxString& name, unsigned int level) override
    {
        return line("ElementAttributeEnd", {&name}, level);
    }

    unsigned char onElementContents(const qxString& name, const qxString& contents,
                                    unsigned int level) override
    {
        return line("ElementContents", {&name, &contents}, level);
    }

    unsigned char onElementContentsStart(const qxString& name, unsigned int level) override
    {
        return line("ElementContentsStart", {&name}, level);
    }

    unsigned char onElementContentsEnd(const qxString& name, unsigned int level) override
    {
        return line("ElementContentsEnd", {&name}, level);
    }

    unsigned char onElementEnd(const qxString& name, unsigned int level) override
    {
        return line("ElementEnd", {&name}, level);
    }

    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int level) override
    {
        return line("Attribute", {&name, &value}, level);
    }

    unsigned char onCharData(const qxString& text, unsigned int level) override
    {
        return line("CharData", {&text}, level);
    }

    unsigned char onEntityReference(const qxString& name, unsigned int level,
                                    unsigned char inAttribute) override
    {
        return line("EntityReference", {&name}, std::to_string(level) + " " + flagText(inAttribute));
    }

    unsigned char onProcessingInstruction(const qxString& target, const qxString& data,
                                          unsigned int level) override
    {
        return line("ProcessingInstruction", {&target, &data}, level);
    }

    unsigned char onCDATA(const qxString& text, unsigned int level) override
    {
        return line("CDATA", {&text}, level);
    }

    unsigned char onComment(const qxString& text, unsigned int level) override
    {
        return line("Comment", {&text}, level);
    }

    unsigned char onDynamicType(const qxDynamicType& value, const qxString& name, unsigned int level) override
    {
        qxTextSink sink;
        value.asJSON(&sink);
        const qxString tag = value.getDynamicType();
        return line("DynamicType", {&name, &tag}, sink.text + " " + std::to_string(level));
    }

    unsigned char onObject(qxObject*, const qxString& name, unsigned int level) override
    {
        return line("Object", {&name}, quote(m_contents.getLast()) + " " + std::to_string(level));
    }

    unsigned char onCustomData(qxReference*, const qxString& name, unsigned int level) override
    {
        return line("CustomData", {&name}, quote(m_contents.getLast()) + " " + std::to_string(level));
    }

private:
    static unsigned char line(const char* call, std::initializer_list<const qxString*> texts,
                              const std::string& rest = {})
    {
        std::string result = call;
        for (const qxString* const text : texts) result += " " + quote(viewOf(*text));
        if (!rest.empty()) result += " " + rest;
        writeOutput(result + "\n");
        return !isInterrupted();
    }

    static unsigned char line(const char* call, std::initializer_list<const qxString*> texts,
                              unsigned int level)
    {
        return line(call, texts, std::to_string(level));
    }

    const Contents& m_contents;
};

/// A number of 32 bits, decimal or with 0x before it hexadecimal.
unsigned int parseMask(const std::string& text)
{
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (isHexadecimal ? 2 : 0);
    const char* const end = text.data() + text.size();
    unsigned int number = 0;
    const auto result = std::from_chars(begin, end, number, isHexadecimal ? 16 : 10);
    if (begin == end || result.ec != std::errc() || result.ptr != end)
        throw qxUsageError("'" + text + "' is no mask");
    return number;
}

qxStatus runXmlEvents(qxReport& report, const qxCommandLine& line)
{
    const Contents contents(line);
    EventLines events(contents);
    if (line.hasOption("--mask")) {
        events.disableNotifyItemType(~0U);
        events.enableNotifyItemType(parseMask(line.getOptionText("--mask")));
    }
    if (line.hasOption("--all")) events.enableNotifyItemType(~0U);
    return readDocument(report, line.getArgumentText(0), events);
}

} // namespace

void declareXmlEvents(qxTool& tool)
{
    tool.add("xml events", "prints the calls that the reader makes", runXmlEvents)
        .addArgument("FILE", "the document")
        .addOption("--all", "", "asks for every kind of call")
        .addOption("--mask", "N", "asks for the kinds of a mask, decimal or with 0x hexadecimal")
        .addOption("--object", "NAME", "elements qxObj of this name hold objects; again for more")
        .addOption("--custom", "NAME", "elements NAME hold custom data; again for more");
}
