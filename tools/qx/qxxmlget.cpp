// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxdocument.h"
#include "qxoutput.h"
#include "qxxmlpath.h"

namespace
{

std::string ownText(qxXmlItem& item)
{
    if (auto* const text = dynamic_cast<qxXmlCharData*>(&item)) return text->getCharData().getString();
    if (auto* const cdata = dynamic_cast<qxXmlCDATA*>(&item)) return cdata->getCDATA().getString();
    return {};
}

// The character data and CDATA of the item and beneath it, in document order.
std::string textOf(qxXmlItem& root)
{
    std::string text = ownText(root);
    qxXmlItem* item = root.getFirstChild();
    while (item) {
        text += ownText(*item);
        if (item->getFirstChild()) {
            item = item->getFirstChild();
            continue;
        }
        while (item != &root && !item->getNextSibling()) item = item->getParent();
        item = item == &root ? nullptr : item->getNextSibling();
    }
    return text;
}

std::string stripped(const std::string& text)
{
    const char* const space = " \t\n\r";
    const std::size_t begin = text.find_first_not_of(space);
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

std::string valueOf(qxXmlItem& item, const qxXmlPath& path)
{
    if (path.attribute.empty()) return stripped(textOf(item));
    return dynamic_cast<qxXmlElement&>(item).getAttribute(path.attribute.c_str()).getString();
}

// False, after a line on standard error, when the path leads nowhere.
bool printPath(qxReport& report, qxXmlDom& document, const qxXmlPath& path, const qxCommandLine& line)
{
    const std::vector<qxXmlItem*> found = findByPath(document, path);
    if (line.hasOption("--count")) writeOutput(std::to_string(found.size()) + "\n");
    if (found.empty()) {
        report.printNote("nothing found at '" + path.text + "'");
        return false;
    }
    if (line.hasOption("--count")) return true;
    for (qxXmlItem* const item : found) {
        writeOutput(valueOf(*item, path) + "\n");
        if (!line.hasOption("--all")) break;
    }
    return true;
}

// What `set` was asked to do at one path.
struct Change {
    qxXmlPath path;
    std::string text;
};

// Splits at the first "=" outside brackets.
Change parseChange(const std::string& word)
{
    int depth = 0;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] == '[') ++depth;
        if (word[i] == ']' && depth > 0) --depth;
        if (word[i] != '=' || depth != 0) continue;
        if (word.size() - i - 1 > qxString::MAX_LENGTH) throw qxUsageError("a text is too long");
        return {qxXmlPath(word.substr(0, i)), word.substr(i + 1)};
    }
    throw qxUsageError("'" + word + "' is not of the form PATH=TEXT");
}

bool isText(const qxXmlItem& item)
{
    return dynamic_cast<const qxXmlCharData*>(&item) || dynamic_cast<const qxXmlCDATA*>(&item) ||
           dynamic_cast<const qxXmlEntityReference*>(&item);
}

// All text of the element goes, and the new one stands where the first of it stood.
void replaceText(qxXmlElement& element, const std::string& text)
{
    qxRefPointer<qxXmlItem> kept = new qxXmlCharData(text.c_str());
    bool isPlaced = text.empty();
    const qxRefList<qxXmlItem> children = element.getChildList();
    element.removeChildren();
    for (qxXmlItem* const child : children) {
        if (!isText(*child)) {
            element.addChild(child);
        } else if (!isPlaced) {
            element.addChild(kept);
            isPlaced = true;
        }
    }
    if (!isPlaced) element.addChild(kept);
}

// False, after a line on standard error, when the path leads to nothing that can be changed.
bool apply(qxReport& report, qxXmlDom& document, const Change& change)
{
    qxXmlItem* const item = document.findItem(change.path.item.c_str());
    if (!item) {
        report.printNote("nothing found at '" + change.path.text + "'");
        return false;
    }
    auto* const element = dynamic_cast<qxXmlElement*>(item);
    if (!change.path.attribute.empty()) {
        if (element) element->setAttributeText(change.path.attribute.c_str(), change.text.c_str());
    } else if (auto* const text = dynamic_cast<qxXmlCharData*>(item)) {
        text->setCharData(change.text.c_str());
        return true;
    } else if (auto* const cdata = dynamic_cast<qxXmlCDATA*>(item)) {
        cdata->setCDATA(change.text.c_str());
        return true;
    } else if (element) {
        replaceText(*element, change.text);
    }
    if (!element) report.printNote("no element at '" + change.path.text + "'");
    return element != nullptr;
}

qxStatus runXmlGet(qxReport& report, const qxCommandLine& line)
{
    std::vector<qxXmlPath> paths;
    for (const std::string& path : argumentsFrom(line, 1)) paths.emplace_back(path);

    qxDocument document;
    document.keepText();
    qxStatus status = readDocument(report, line.getArgumentText(0), document);
    if (status != qxStatus::DONE) return status;
    for (const qxXmlPath& path : paths) {
        if (!printPath(report, document, path, line)) status = qxStatus::NO;
    }
    return status;
}

qxStatus runXmlSet(qxReport& report, const qxCommandLine& line)
{
    std::vector<Change> changes;
    for (const std::string& change : argumentsFrom(line, 1)) changes.push_back(parseChange(change));

    const std::string file = line.getArgumentText(0);
    qxDocument document;
    document.keepText();
    document.keepLayout();
    document.setMergeStandardReferences(false); // what is not changed comes back as it was
    document.setReadIncludedXml(false);
    const qxStatus status = readDocument(report, file, document);
    if (status != qxStatus::DONE) return status;
    for (const Change& change : changes) {
        if (!apply(report, document, change)) return qxStatus::NO;
    }
    return writeDocument(report, line.getOptionText("-o", file.c_str()), document);
}

} // namespace

void declareXmlGet(qxTool& tool)
{
    tool.add("xml get", "prints the text at a path", runXmlGet)
        .addArgument("FILE", "the document")
        .addArgument("PATH", "r/a, r/a[2], r/a[name=x], r/a/@name", QX_ARGUMENT_SOME)
        .addOption("--count", "", "prints how many places there are")
        .addOption("--all", "", "prints the text at each place; without it at the first");
    tool.add("xml set", "changes texts and attributes", runXmlSet)
        .addArgument("FILE", "the document")
        .addArgument("PATH=TEXT", "what is to stand where; paths as for 'xml get'", QX_ARGUMENT_SOME)
        .addOption("-o", "OUT", "the file for the changed document; without it FILE itself");
}
