// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxdocument.h"

#include <algorithm>
#include <cstring>

namespace
{

// White space alone, with the end of a line in it: what an editor puts between tags.
bool isLayout(const qxString& text)
{
    const char* const bytes = text.getString();
    return std::strspn(bytes, " \t\r\n") == text.length() && std::strpbrk(bytes, "\r\n");
}

bool isLayout(const qxXmlItem& item)
{
    const auto* const text = dynamic_cast<const qxXmlCharData*>(&item);
    return text && isLayout(text->getCharData());
}

bool holdsText(const qxXmlItem& element)
{
    for (const qxXmlItem* child = element.getFirstChild(); child; child = child->getNextSibling()) {
        if (dynamic_cast<const qxXmlElement*>(child) || isLayout(*child)) continue;
        if (dynamic_cast<const qxXmlCharData*>(child) || dynamic_cast<const qxXmlCDATA*>(child) ||
            dynamic_cast<const qxXmlEntityReference*>(child))
            return true;
    }
    return false;
}

// What follows the item and all beneath it; null at the end.
const qxXmlItem* behind(const qxXmlItem* item)
{
    while (item && !item->getNextSibling()) item = item->getParent();
    return item ? item->getNextSibling() : nullptr;
}

// In an element that holds text of its own, the end of a line is a space between words, and stays.
void dropLayout(qxXmlDom& document)
{
    qxXMLDomIterator next(document);
    bool isProse = false;
    const qxXmlItem* proseEnd = nullptr;
    while (qxXmlItem* const item = next()) {
        if (isProse && item != proseEnd) continue;
        isProse = holdsText(*item);
        if (isProse)
            proseEnd = behind(item);
        else if (isLayout(*item))
            next.remove();
    }
}

// Another name would make the header malformed.
void checkEncoding(const std::string& name)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isOther = [&](char c) { return !isLetter(c) && !std::strchr("0123456789._-", c); };
    if (name.empty() || name.size() > qxString::MAX_LENGTH || !isLetter(name[0]) ||
        std::any_of(name.begin(), name.end(), isOther))
        throw qxUsageError("'" + name + "' is no name of an encoding");
}

qxStatus runXmlFormat(qxReport& report, const qxCommandLine& line)
{
    const bool trims = line.hasOption("--trim");
    if (trims && line.hasOption("--keep-space"))
        throw qxUsageError("--trim and --keep-space exclude each other");
    const bool isEncoded = line.hasOption("--encoding");
    if (isEncoded) checkEncoding(line.getOptionText("--encoding"));

    qxDocument document;
    document.setReadIncludedXml(false);
    if (!trims) {
        document.keepText();
        document.setMergeStandardReferences(false);
        document.setKeepMixedContent(true);
    }
    const qxStatus status = readDocument(report, line.getArgumentText(0), document);
    if (status != qxStatus::DONE) return status;
    if (!trims && !line.hasOption("--keep-space")) dropLayout(document);
    if (line.hasOption("--plain")) document.setPlainOutput(true);
    if (isEncoded) document.setEncoding(line.getOptionText("--encoding"));
    return writeDocument(report, line.getOptionText("-o"), document);
}

} // namespace

void declareXmlFormat(qxTool& tool)
{
    tool.add("xml format", "writes a document indented", runXmlFormat)
        .addArgument("FILE", "the document")
        .addOption("-o", "OUT", "the file for it", "-")
        .addOption("--plain", "", "without indentation")
        .addOption("--encoding", "NAME", "in this encoding; without it in its own")
        .addOption("--keep-space", "", "drops no white space")
        .addOption("--trim", "", "drops the white space around all text");
}
