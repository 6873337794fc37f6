// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"
#include "qxxmlsax.h"

#include "qxbench.h"
#include "qxxmldocuments.h"

#include <cstring>
#include <memory>

#if defined(QX_PEER_EXPAT)
#include <expat.h>
#endif
#if defined(QX_PEER_LIBXML2)
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#endif

namespace
{

constexpr std::size_t SIZE = 8000000; // bytes of a document that is made

// Every contender looks at each item that it is told. Elements and bytes of text make the checksum; names and
// attributes do not, since some contenders leave prefixes out or add the defaults of the document type.
struct Seen {
    std::uint64_t elements = 0;
    std::uint64_t names = 0;
    std::uint64_t text = 0;

    void addName(std::size_t length) { names += length; }

    std::uint64_t checksum() const
    {
        qxBenchKeep(names);
        return qxBenchChecksum(&text, sizeof text, elements);
    }
};

class Ours final : public qxXmlSax
{
public:
    Seen seen;

    unsigned char onElementStart(const qxString& name, unsigned int) override
    {
        ++seen.elements;
        seen.addName(name.length());
        return 1;
    }
    unsigned char onElementEnd(const qxString& name, unsigned int) override
    {
        seen.addName(name.length());
        return 1;
    }
    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int) override
    {
        seen.addName(std::size_t{name.length()} + value.length());
        return 1;
    }
    unsigned char onCharData(const qxString& text, unsigned int) override
    {
        seen.text += text.length();
        return 1;
    }
};

std::uint64_t readOurs(const std::string& text)
{
    Ours reader;
    qxSerializeAdapterMemory adapter(const_cast<char*>(text.data()), static_cast<unsigned int>(text.size()));
    reader.read(&adapter);
    return reader.hasError() ? 0 : reader.seen.checksum();
}

#if defined(QX_PEER_EXPAT)
void startOfExpat(void* seen, const XML_Char* name, const XML_Char** attributes)
{
    auto& to = *static_cast<Seen*>(seen);
    ++to.elements;
    to.addName(std::strlen(name));
    for (; *attributes; ++attributes) to.addName(std::strlen(*attributes));
}

void endOfExpat(void* seen, const XML_Char* name)
{
    static_cast<Seen*>(seen)->addName(std::strlen(name));
}

void textOfExpat(void* seen, const XML_Char*, int length)
{
    static_cast<Seen*>(seen)->text += static_cast<std::uint64_t>(length);
}

std::uint64_t readExpat(const std::string& text)
{
    Seen seen;
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         &XML_ParserFree);
    XML_SetUserData(parser.get(), &seen);
    XML_SetElementHandler(parser.get(), startOfExpat, endOfExpat);
    XML_SetCharacterDataHandler(parser.get(), textOfExpat);
    const XML_Status status = XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1);
    return status == XML_STATUS_OK ? seen.checksum() : 0;
}
#endif

#if defined(QX_PEER_LIBXML2)
std::size_t lengthOf(const xmlChar* text)
{
    return std::strlen(reinterpret_cast<const char*>(text));
}

void startOfLibxml2(void* seen, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**,
                    int count, int, const xmlChar** attributes)
{
    auto& to = *static_cast<Seen*>(seen);
    ++to.elements;
    to.addName(lengthOf(name));
    for (int i = 0; i < count; ++i, attributes += 5) { // name, prefix, space, begin and end of the value
        to.addName(lengthOf(attributes[0]));
        to.addName(static_cast<std::size_t>(attributes[4] - attributes[3]));
    }
}

void endOfLibxml2(void* seen, const xmlChar* name, const xmlChar*, const xmlChar*)
{
    static_cast<Seen*>(seen)->addName(lengthOf(name));
}

void textOfLibxml2(void* seen, const xmlChar*, int length)
{
    static_cast<Seen*>(seen)->text += static_cast<std::uint64_t>(length);
}

std::uint64_t readLibxml2(const std::string& text)
{
    Seen seen;
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = startOfLibxml2;
    handler.endElementNs = endOfLibxml2;
    handler.characters = textOfLibxml2;
    handler.ignorableWhitespace = textOfLibxml2;
    const int result = xmlSAXUserParseMemory(&handler, &seen, text.data(), static_cast<int>(text.size()));
    return result == 0 ? seen.checksum() : 0;
}
#endif

void compare(qxBenchCase& bench, std::string text)
{
    if (text.empty()) return;
    const auto shared = std::make_shared<const std::string>(std::move(text));
    bench.amount = static_cast<double>(shared->size());
    bench.add("qxbase", [shared] { return readOurs(*shared); });
#if defined(QX_PEER_EXPAT)
    bench.add("expat", [shared] { return readExpat(*shared); });
#endif
#if defined(QX_PEER_LIBXML2)
    bench.add("libxml2", [shared] { return readLibxml2(*shared); });
#endif
}

const qxBenchEntry s_scene("xml-events/scene", QX_BENCH_MEGABYTES,
                           [](qxBenchCase& bench) { compare(bench, qxBenchScene(SIZE)); });
const qxBenchEntry s_settings("xml-events/settings", QX_BENCH_MEGABYTES,
                              [](qxBenchCase& bench) { compare(bench, qxBenchSettings(SIZE)); });
const qxBenchEntry s_mime("xml-events/mime", QX_BENCH_MEGABYTES,
                          [](qxBenchCase& bench) { compare(bench, qxBenchMime()); });
const qxBenchEntry s_ascii("xml-events/prose-ascii", QX_BENCH_MEGABYTES,
                           [](qxBenchCase& bench) { compare(bench, qxBenchAsciiProse(SIZE)); });
const qxBenchEntry s_cyrillic("xml-events/prose-cyrillic", QX_BENCH_MEGABYTES,
                              [](qxBenchCase& bench) { compare(bench, qxBenchCyrillicProse(SIZE)); });
const qxBenchEntry s_chinese("xml-events/prose-chinese", QX_BENCH_MEGABYTES,
                             [](qxBenchCase& bench) { compare(bench, qxBenchChineseProse(SIZE)); });

} // namespace
