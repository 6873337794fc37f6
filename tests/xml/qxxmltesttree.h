// Documents and trees as lines of text, for tests of the XML floor.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"
#include "qxserializeadaptermemory.h"
#include "qxtestrows.h"
#include "qxxmldom.h"

#include <string>

/// Takes what is written.
class TextSink : public qxSerializeAdapter
{
public:
    std::string text;
    unsigned int blocks = 0;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        ++blocks;
        text.append(reinterpret_cast<const char*>(bytes), count);
    }
    void write_imp(unsigned char byte) override { write_imp(&byte, 1); }
    unsigned char read_imp() override { return 0; }
    using qxSerializeAdapter::read_imp;
};

/// A qxString of any bytes.
inline qxString toString(const std::string& text)
{
    return qxString(text.data(), text.size());
}

/// Reads `text` and returns the error, empty when there is none.
inline std::string readText(qxXmlSax& reader, std::string text)
{
    qxSerializeAdapterMemory adapter(text.data(), static_cast<unsigned int>(text.size()));
    reader.read(&adapter);
    return reader.getError().getString();
}

inline std::string written(qxXmlSax& writer)
{
    TextSink sink;
    writer.write(&sink);
    return sink.text;
}

/// The document without a header and on one line.
inline std::string writtenPlain(qxXmlSax& writer)
{
    writer.setEncoding("none");
    writer.setPlainOutput(true);
    return written(writer);
}

/// An item and what is beneath it: `a x="1"("text" ![cdata] !--comment-- ?target data &name;)`.
inline std::string dump(qxXmlItem& item)
{
    std::string text;
    if (auto* data = dynamic_cast<qxXmlCharData*>(&item))
        text = "\"" + std::string(data->getCharData().getString()) + "\"";
    else if (auto* cdata = dynamic_cast<qxXmlCDATA*>(&item))
        text = "![" + std::string(cdata->getCDATA().getString()) + "]";
    else if (auto* comment = dynamic_cast<qxXmlComment*>(&item))
        text = "!--" + std::string(comment->getComment().getString()) + "--";
    else if (auto* reference = dynamic_cast<qxXmlEntityReference*>(&item))
        text = "&" + std::string(reference->getName().getString()) + ";";
    else if (auto* instruction = dynamic_cast<qxXmlPI*>(&item))
        text = "?" + std::string(instruction->getTarget().getString()) + " " +
               instruction->getData().getString();
    else
        text = item.getName().getString();

    if (auto* element = dynamic_cast<qxXmlElement*>(&item)) {
        for (qxXmlAttribute* attribute : element->getAttributeList())
            text += " " + std::string(attribute->getName().getString()) + "=\"" +
                    attribute->getValue().getString() + "\"";
    }
    if (!item.getFirstChild()) return text;
    text += "(";
    for (qxXmlItem* child = item.getFirstChild(); child; child = child->getNextSibling()) {
        if (child != item.getFirstChild()) text += " ";
        text += dump(*child);
    }
    return text + ")";
}

/// The tree that a document gives with the default switches.
inline std::string treeOf(const std::string& text)
{
    qxXmlDom document;
    const std::string error = readText(document, text);
    return error.empty() ? dump(document) : error;
}
