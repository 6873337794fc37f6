// What the tests of the XML reader share: a reader that writes its calls down.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadaptermemory.h"
#include "qxxmlsax.h"

#include <string>
#include <string_view>

/// Writes each call as a word or two with the texts in it and the level behind an "@": "<a@1 x=1@1 'text'@1 >a@1".
///
/// Errors end it as "!check@line:column", those with a text of their own as "!text@line:column".
class XmlEvents : public qxXmlSax
{
public:
    /// Reads a document and returns its calls.
    std::string readText(std::string_view document)
    {
        std::string bytes(document);
        qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
        return readFrom(memory);
    }

    std::string readFrom(qxSerializeAdapter& adapter)
    {
        events.clear();
        read(&adapter);
        if (hasError()) {
            const std::string what =
                getErrorCheck() != 0 ? std::to_string(getErrorCheck()) : getErrorText().getString();
            add("!" + what + "@" + std::to_string(getErrorLine()) + ":" + std::to_string(getErrorColumn()));
        }
        return events;
    }

    /// The call that is answered with false; empty for none.
    std::string refused;
    std::string events;

    unsigned char onVersion(const qxString& version) override { return call("version:" + textOf(version)); }
    unsigned char onEncoding(const qxString& encoding) override
    {
        return call("encoding:" + textOf(encoding));
    }
    unsigned char onStandalone(unsigned char standalone) override
    {
        return call(standalone ? "standalone:yes" : "standalone:no");
    }
    unsigned char onElementStart(const qxString& name, unsigned int level) override
    {
        return call("<" + textOf(name), level);
    }
    unsigned char onElementAttributeEnd(const qxString& name, unsigned int level) override
    {
        return call("|" + textOf(name), level);
    }
    unsigned char onElementContents(const qxString& name, const qxString& contents,
                                    unsigned int level) override
    {
        return call("contents:" + textOf(name) + "{" + textOf(contents) + "}", level);
    }
    unsigned char onElementContentsStart(const qxString& name, unsigned int level) override
    {
        return call("(" + textOf(name), level);
    }
    unsigned char onElementContentsEnd(const qxString& name, unsigned int level) override
    {
        return call(")" + textOf(name), level);
    }
    unsigned char onElementEnd(const qxString& name, unsigned int level) override
    {
        return call(">" + textOf(name), level);
    }
    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int level) override
    {
        return call(textOf(name) + "=" + textOf(value), level);
    }
    unsigned char onCharData(const qxString& text, unsigned int level) override
    {
        return call(quoted(text), level);
    }
    unsigned char onEntityReference(const qxString& name, unsigned int level,
                                    unsigned char inAttribute) override
    {
        return call((inAttribute ? "attr&:" : "&") + textOf(name), level);
    }
    unsigned char onProcessingInstruction(const qxString& target, const qxString& data,
                                          unsigned int level) override
    {
        return call("?" + textOf(target) + quoted(data), level);
    }
    unsigned char onCDATA(const qxString& text, unsigned int level) override
    {
        return call("cdata:" + quoted(text), level);
    }
    unsigned char onComment(const qxString& text, unsigned int level) override
    {
        return call("--:" + quoted(text), level);
    }

protected:
    void add(const std::string& word) { events += (events.empty() ? "" : " ") + word; }

private:
    static std::string textOf(const qxString& text) { return {text.getString(), text.length()}; }
    static std::string quoted(const qxString& text) { return "'" + textOf(text) + "'"; }

    unsigned char call(const std::string& word)
    {
        add(word);
        return word != refused;
    }
    unsigned char call(const std::string& word, unsigned int level)
    {
        return call(word + "@" + std::to_string(level));
    }
};
