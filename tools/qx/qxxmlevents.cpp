// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoptions.h"
#include "qxoutput.h"

namespace
{

/// Writes one line for each call of the reader.
class EventLines : public qxXmlSax
{
public:
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

    unsigned char onObject(qxObject*, const qxString& name, unsigned int level) override
    {
        return line("Object", {&name}, level);
    }

    unsigned char onCustomData(qxReference*, const qxString& name, unsigned int level) override
    {
        return line("CustomData", {&name}, level);
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
};

} // namespace

qxStatus runXmlEvents(qxReport& report, const std::vector<std::string>& words)
{
    const qxOptions options(words, {{"--all", false}, {"--mask", true}});
    if (options.getArguments().size() != 1) throw qxUsageError("xml events needs one file");
    EventLines events;
    if (const auto mask = options.get("--mask")) {
        events.disableNotifyItemType(~0U);
        events.enableNotifyItemType(parseMask(*mask));
    }
    if (options.has("--all")) events.enableNotifyItemType(~0U);
    return readDocument(report, options.getArguments()[0], events);
}
