// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"
#include "qxxmldom.h"

#include "qxbench.h"
#include "qxxmldocuments.h"

#include <cstring>
#include <memory>

#if defined(QX_PEER_LIBXML2)
#include <libxml/parser.h>
#include <libxml/tree.h>
#endif
#if defined(QX_PEER_PUGIXML)
#include <pugixml.hpp>
#endif
#if defined(QX_PEER_TINYXML2)
#include <tinyxml2.h>
#endif

namespace
{

constexpr std::size_t SIZE = 4000000; // bytes of a document that is made

// What a tree is asked for: the attribute of the n-th child of that name, from 1, of the root element.
struct Question {
    const char* path; // ours
    const char* name;
    unsigned int index;
    const char* attribute;
};

constexpr Question SCENE = {"scene/node[2000]", "node", 2000, "id"};
constexpr Question SETTINGS = {"settings/group[2000]", "group", 2000, "name"};
constexpr Question MIME = {"mime-info/mime-type[300]", "mime-type", 300, "type"};
constexpr Question BOOK = {"book/p[500]", "p", 500, "none"};
constexpr Question MESSAGE = {"message/to", "to", 1, "host"};

std::uint64_t checksum(const char* text)
{
    return text ? qxBenchChecksum(text, std::strlen(text)) : 0;
}

void readOurs(qxXmlDom& document, const std::string& text)
{
    qxSerializeAdapterMemory adapter(const_cast<char*>(text.data()), static_cast<unsigned int>(text.size()));
    document.read(&adapter);
}

std::uint64_t askOurs(const std::string& text, const Question& question)
{
    qxXmlDom document;
    readOurs(document, text);
    auto* const found = static_cast<qxXmlElement*>(document.findItem(question.path));
    return found && found->hasAttribute(question.attribute)
               ? checksum(found->getAttribute(question.attribute).getString())
               : 0;
}

#if defined(QX_PEER_LIBXML2)
std::uint64_t askLibxml2(const std::string& text, const Question& question)
{
    xmlDocPtr document = xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, 0);
    unsigned int left = question.index;
    std::uint64_t result = 0;
    for (xmlNodePtr node = xmlDocGetRootElement(document)->children; node; node = node->next) {
        if (std::strcmp(reinterpret_cast<const char*>(node->name), question.name) != 0 || --left != 0)
            continue;
        xmlChar* const value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(question.attribute));
        result = checksum(reinterpret_cast<const char*>(value));
        xmlFree(value);
    }
    xmlFreeDoc(document);
    return result;
}
#endif

#if defined(QX_PEER_PUGIXML)
std::uint64_t askPugixml(const std::string& text, const Question& question)
{
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    unsigned int left = question.index;
    for (pugi::xml_node node : document.document_element().children(question.name)) {
        if (--left == 0) return checksum(node.attribute(question.attribute).as_string(nullptr));
    }
    return 0;
}
#endif

#if defined(QX_PEER_TINYXML2)
std::uint64_t askTinyxml2(const std::string& text, const Question& question)
{
    tinyxml2::XMLDocument document;
    document.Parse(text.data(), text.size());
    unsigned int left = question.index;
    const tinyxml2::XMLElement* element = document.RootElement()->FirstChildElement(question.name);
    for (; element; element = element->NextSiblingElement(question.name)) {
        if (--left == 0) return checksum(element->Attribute(question.attribute));
    }
    return 0;
}
#endif

/// Build from memory, one search, free.
void prepareTree(qxBenchCase& bench, std::string text, const Question& question)
{
    const auto input = std::make_shared<const std::string>(std::move(text));
    bench.amount = static_cast<double>(input->size());
    if (input->empty()) return;
    bench.add("qxbase", [=] { return askOurs(*input, question); });
#if defined(QX_PEER_LIBXML2)
    bench.add("libxml2", [=] { return askLibxml2(*input, question); });
#endif
#if defined(QX_PEER_PUGIXML)
    bench.add("pugixml", [=] { return askPugixml(*input, question); });
#endif
#if defined(QX_PEER_TINYXML2)
    bench.add("tinyxml2", [=] { return askTinyxml2(*input, question); });
#endif
}

const qxBenchEntry s_scene("xml-tree/scene", QX_BENCH_MEGABYTES,
                           [](qxBenchCase& bench) { prepareTree(bench, qxBenchScene(SIZE), SCENE); });
const qxBenchEntry s_settings("xml-tree/settings", QX_BENCH_MEGABYTES, [](qxBenchCase& bench) {
    prepareTree(bench, qxBenchSettings(SIZE), SETTINGS);
});
const qxBenchEntry s_mime("xml-tree/mime", QX_BENCH_MEGABYTES,
                          [](qxBenchCase& bench) { prepareTree(bench, qxBenchMime(), MIME); });
const qxBenchEntry s_prose("xml-tree/prose", QX_BENCH_MEGABYTES,
                           [](qxBenchCase& bench) { prepareTree(bench, qxBenchAsciiProse(SIZE), BOOK); });

// What programs send each other: each is a document of its own.
const qxBenchEntry s_message("xml-tree/message", QX_BENCH_MEGABYTES, [](qxBenchCase& bench) {
    prepareTree(bench,
                "<?xml version=\"1.0\"?><message id=\"7\" kind=\"ping\"><from host=\"alpha\"/>"
                "<to host=\"beta\">are you there?</to></message>",
                MESSAGE);
});

const qxBenchEntry s_sceneMemory("xml-tree/memory-scene", QX_BENCH_MEMORY,
                                 [](qxBenchCase& bench) { prepareTree(bench, qxBenchScene(SIZE), SCENE); });
const qxBenchEntry s_settingsMemory("xml-tree/memory-settings", QX_BENCH_MEMORY, [](qxBenchCase& bench) {
    prepareTree(bench, qxBenchSettings(SIZE), SETTINGS);
});
const qxBenchEntry s_mimeMemory("xml-tree/memory-mime", QX_BENCH_MEMORY,
                                [](qxBenchCase& bench) { prepareTree(bench, qxBenchMime(), MIME); });

#if defined(QX_PEER_PUGIXML)
struct MemoryWriter : pugi::xml_writer {
    void write(const void* data, std::size_t count) override
    {
        text.append(static_cast<const char*>(data), count);
    }
    std::string text;
};
#endif

/// Write a tree to memory, plain and without a header: then the contenders write the same bytes.
void prepareWrite(qxBenchCase& bench, const std::string& text)
{
    const std::shared_ptr<qxXmlDom> ours(new qxXmlDom);
    readOurs(*ours, text);
    ours->setPlainOutput(true);
    ours->setEncoding("none");
    const auto room = std::make_shared<std::string>(2 * text.size(), ' ');
    bench.amount = static_cast<double>(text.size());
    bench.add("qxbase", [=] {
        qxSerializeAdapterMemory adapter(room->data(), static_cast<unsigned int>(room->size()));
        ours->write(&adapter);
        return qxBenchChecksum(room->data(), adapter.getCurrentPos());
    });
#if defined(QX_PEER_LIBXML2)
    const std::shared_ptr<xmlDoc> libxml2(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, XML_PARSE_NOBLANKS),
        xmlFreeDoc);
    bench.add("libxml2", [=] {
        xmlBufferPtr buffer = xmlBufferCreate();
        xmlNodeDump(buffer, libxml2.get(), xmlDocGetRootElement(libxml2.get()), 0, 0);
        const std::uint64_t result =
            qxBenchChecksum(xmlBufferContent(buffer), static_cast<std::size_t>(xmlBufferLength(buffer)));
        xmlBufferFree(buffer);
        return result;
    });
#endif
#if defined(QX_PEER_PUGIXML)
    const auto pugixml = std::make_shared<pugi::xml_document>();
    pugixml->load_buffer(text.data(), text.size());
    const auto writer = std::make_shared<MemoryWriter>();
    bench.add("pugixml", [=] {
        writer->text.clear();
        pugixml->save(*writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
        return qxBenchChecksum(writer->text.data(), writer->text.size());
    });
#endif
#if defined(QX_PEER_TINYXML2)
    const auto tinyxml2 = std::make_shared<tinyxml2::XMLDocument>();
    tinyxml2->Parse(text.data(), text.size());
    tinyxml2->DeleteChild(tinyxml2->FirstChild()); // the declaration
    bench.add("tinyxml2", [=] {
        tinyxml2::XMLPrinter printer(nullptr, true);
        tinyxml2->Print(&printer);
        return qxBenchChecksum(printer.CStr(), static_cast<std::size_t>(printer.CStrSize() - 1));
    });
#endif
}

const qxBenchEntry s_writeScene("xml-write/scene", QX_BENCH_MEGABYTES,
                                [](qxBenchCase& bench) { prepareWrite(bench, qxBenchScene(SIZE)); });
const qxBenchEntry s_writeSettings("xml-write/settings", QX_BENCH_MEGABYTES,
                                   [](qxBenchCase& bench) { prepareWrite(bench, qxBenchSettings(SIZE)); });
} // namespace
