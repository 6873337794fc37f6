// What was read into a tree, written and read again is equal. The first byte of an input chooses how.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "qxserializeadaptermemory.h"
#include "qxxmldom.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr unsigned int LONGEST = 10000; // bytes: escapes in longer values could pass the limit of a value

class Sink : public qxSerializeAdapter
{
public:
    std::string text;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        text.append(reinterpret_cast<const char*>(bytes), count);
    }
    void write_imp(unsigned char byte) override { write_imp(&byte, 1); }
    unsigned char read_imp() override { return 0; }
    using qxSerializeAdapter::read_imp;
};

class Silence final : public qxMessageReceiverInterface
{
public:
    Silence() { qxMessage::addMessageReceiver(this); }
    ~Silence() override { qxMessage::removeMessageReceiver(this); }
    void onMessage(const qxString&, qxMessageLevel, const char*) override {}
};

/// Builds its tree from the reader's calls, where a plain document takes a shorter way.
class Called final : public qxXmlDom
{};

[[noreturn]] void fail(const char* what, const std::string& first, const std::string& second)
{
    std::fprintf(stderr, "%s\n--- first\n%s\n--- second\n%s\n", what, first.c_str(), second.c_str());
    std::abort();
}

bool read(qxXmlDom& document, const void* bytes, std::size_t count)
{
    std::vector<unsigned char> copy(count + 1);
    if (count != 0) std::memcpy(copy.data(), bytes, count);
    qxSerializeAdapterMemory adapter(copy.data(), static_cast<unsigned int>(count));
    document.read(&adapter);
    return !document.hasError();
}

std::string write(qxXmlDom& document)
{
    Sink sink;
    document.write(&sink);
    return sink.text;
}

std::string quoted(const qxString& text)
{
    return "{" + std::string(text.getString(), text.length()) + "}";
}

// The text that an item is part of, in which references to characters are characters; null for other items. Where
// such text is divided may change on the way.
bool addText(qxXmlItem& item, std::string& text)
{
    const bool isReference = dynamic_cast<qxXmlEntityReference*>(&item) != nullptr;
    if (!isReference && !dynamic_cast<qxXmlCharData*>(&item)) return false;
    const qxString value = item.asString();
    if (isReference && value.isFirst('&') && value.length() > 1) return false; // to an entity
    text.append(value.getString(), value.length());
    return true;
}

// Everything that has to survive, as text; `item` alone, without its children.
std::string tell(qxXmlItem& item)
{
    std::string text = quoted(item.getName());
    if (auto* element = dynamic_cast<qxXmlElement*>(&item)) {
        for (qxXmlAttribute* attribute : element->getAttributeList())
            text += " " + quoted(attribute->getName()) + "=" + quoted(attribute->getValue());
    } else {
        text += quoted(item.asString(QX_XML_STRING_ALL));
    }
    return text;
}

std::string dump(qxXmlDom& document)
{
    std::string text;
    qxXMLDomIterator next(document);
    bool isInText = false;
    const qxXmlItem* parent = nullptr;
    while (qxXmlItem* item = next()) {
        std::string piece;
        const bool isText = addText(*item, piece);
        if (isText && isInText && item->getParent() == parent) {
            text += piece;
            continue;
        }
        unsigned int depth = 0;
        for (const qxXmlItem* above = item->getParent(); above; above = above->getParent()) ++depth;
        text += "\n" + std::to_string(depth) + (isText ? "text " + piece : tell(*item));
        isInText = isText;
        parent = item->getParent();
    }
    return text;
}

void checkPaths(qxXmlDom& document)
{
    qxXMLDomIterator next(document);
    for (int count = 0; count < 50; ++count) {
        qxXmlItem* const item = next();
        if (!item) return;
        if (dynamic_cast<qxXmlDynamicType*>(item)) continue; // its name may be no step of a path
        const qxString path = next.getContext();
        if (document.findItem(path) != item) fail("an item is not at its path", path.getString(), "");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count)
{
    static Silence silence;
    if (count == 0 || count > LONGEST) return 0;
    const unsigned int choice = bytes[0];

    qxXmlDom document;
    Called called;
    for (qxXmlDom* tree : {&document, static_cast<qxXmlDom*>(&called)}) {
        tree->setReadIncludedXml(false);
        tree->setSkipWhiteSpaceCharData((choice & 1) != 0);
        tree->setMergeStandardReferences((choice & 2) == 0);
        read(*tree, bytes + 1, count - 1);
    }
    const bool isRead = !document.hasError();
    if (dump(called) != dump(document)) fail("calls give another tree", dump(document), dump(called));
    const qxRefPointer<qxXmlDom> copy(document.clone());
    if (dump(*copy) != dump(document)) fail("a clone differs", dump(document), dump(*copy));
    checkPaths(document);
    if (!isRead || document.getSkipWhiteSpaceCharData()) return 0; // by default white space may change

    // The answer of a function may make a value of what was none.
    const std::string_view input(reinterpret_cast<const char*>(bytes), count);
    if (input.find("qxDyn") != input.npos && input.find("function:") != input.npos) return 0;

    const bool keepsEncoding = (choice & 12) == 0;
    if (!keepsEncoding) document.setEncoding(choice & 4 ? "UTF-8" : "UTF-16");
    std::string text;
    try {
        text = write(document);
    } catch (const qxParserException& exception) {
        // Only the encoding that a document says it has may lack what its bytes brought.
        if (keepsEncoding) return 0;
        fail("what was read can not be written", exception.getErrorString().getString(), dump(document));
    }
    qxXmlDom again;
    again.setReadIncludedXml(false);
    again.setSkipWhiteSpaceCharData(false);
    again.setMergeStandardReferences(document.getMergeStandardReferences());
    if (!read(again, text.data(), text.size()))
        fail("what was written is malformed", text, again.getError().getString());
    if (dump(again) != dump(document)) fail("a document changed on its way", dump(document), dump(again));
    copy->setEncoding(document.getEncoding());
    if (write(*copy) != text) fail("a clone is written differently", text, write(*copy));
    return 0;
}
