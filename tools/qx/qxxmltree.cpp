// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxdocument.h"
#include "qxoutput.h"

namespace
{

std::string elementLine(qxXmlElement& element)
{
    std::string line = "element " + quote(viewOf(element.getName()));
    qxString name;
    qxString value;
    element.resetAttributeIterator();
    while (element.getNextAttribute(name, value)) {
        line += " ";
        line += viewOf(name);
        line += "=" + quote(viewOf(value));
    }
    return line;
}

std::string itemLine(qxXmlItem& item)
{
    if (auto* const element = dynamic_cast<qxXmlElement*>(&item)) return elementLine(*element);
    if (auto* const text = dynamic_cast<qxXmlCharData*>(&item))
        return "char_data " + quote(viewOf(text->getCharData()));
    if (auto* const cdata = dynamic_cast<qxXmlCDATA*>(&item))
        return "cdata " + quote(viewOf(cdata->getCDATA()));
    if (auto* const comment = dynamic_cast<qxXmlComment*>(&item))
        return "comment " + quote(viewOf(comment->getComment()));
    if (auto* const reference = dynamic_cast<qxXmlEntityReference*>(&item))
        return "entity_ref " + quote(viewOf(reference->getName()));
    if (auto* const instruction = dynamic_cast<qxXmlPI*>(&item)) {
        return "pi " + quote(viewOf(instruction->getTarget())) + " " + quote(viewOf(instruction->getData()));
    }
    return "item " + quote(viewOf(item.getName()));
}

void printItems(qxXmlItem& root)
{
    std::size_t depth = 0;
    qxXmlItem* item = root.getFirstChild();
    while (item && item != &root && !isInterrupted()) { // the blanks before deep items are many
        writeOutput(std::string(2 * depth, ' ') + itemLine(*item) + "\n");
        if (item->getFirstChild()) {
            item = item->getFirstChild();
            ++depth;
            continue;
        }
        while (item != &root && !item->getNextSibling()) {
            item = item->getParent();
            --depth;
        }
        if (item != &root) item = item->getNextSibling();
    }
}

qxStatus runXmlTree(qxReport& report, const qxCommandLine& line)
{
    qxDocument document;
    if (line.hasOption("--keep-space")) document.setSkipWhiteSpaceCharData(false);
    if (line.hasOption("--no-merge")) document.setMergeStandardReferences(false);
    const qxStatus status = readDocument(report, line.getArgumentText(0), document);
    if (status == qxStatus::DONE) printItems(document);
    return status;
}

} // namespace

void declareXmlTree(qxTool& tool)
{
    tool.add("xml tree", "prints the items of the tree", runXmlTree)
        .addArgument("FILE", "the document")
        .addOption("--keep-space", "", "white space stays as it is")
        .addOption("--no-merge", "", "references stay apart from text");
}
