// What the tests of the XML reader share: a reader that writes its calls down.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictype.h"
#include "qxserializeadaptermemory.h"
#include "qxtestrows.h"
#include "qxxmlsax.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
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
        if (hasError())
            add("!" + what() + "@" + std::to_string(getErrorLine()) + ":" + std::to_string(getErrorColumn()));
        return events;
    }

    /// Reads a document and returns "check|document", or "text|document", with "^" where the error is.
    std::string mark(std::string document)
    {
        readText(document);
        if (!hasError()) return "accepted|" + document;
        std::size_t place = 0;
        for (unsigned int line = getErrorLine(); line > 1; --line) place = document.find('\n', place) + 1;
        for (unsigned int column = getErrorColumn(); column > 1 && place < document.size(); --column) {
            const auto lead = static_cast<unsigned char>(document[place]);
            place += lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        }
        return what() + "|" + document.insert(std::min(place, document.size()), "^");
    }

    /// Expects the calls of documents; each row is "document => calls".
    template <class... Rows>
    void expectEvents(const Rows&... rows)
    {
        expectRows([this](const std::string& document) { return readText(document); }, rows...);
    }

    /// Expects each of these to be marked as it stands.
    template <class... Rows>
    void expectMarks(const Rows&... rows)
    {
        for (const std::string& row : {std::string(rows)...}) {
            std::string document = row.substr(row.find('|') + 1);
            document.erase(document.find('^'), 1);
            EXPECT_EQ(mark(document), row);
        }
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
    unsigned char onDynamicType(const qxDynamicType& value, const qxString& name, unsigned int level) override
    {
        return call("dyn:" + textOf(name) + "{" + textOf(value.asString(true)) + "}", level);
    }

protected:
    void add(const std::string& word) { events += (events.empty() ? "" : " ") + word; }

private:
    std::string what() const
    {
        return getErrorCheck() != 0 ? std::to_string(getErrorCheck()) : getErrorText().getString();
    }
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
