// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxdocument.h"
#include "qxoptions.h"

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

} // namespace

qxStatus runXmlFormat(qxReport& report, const std::vector<std::string>& words)
{
    const qxOptions options(
        words,
        {{"-o", true}, {"--plain", false}, {"--encoding", true}, {"--keep-space", false}, {"--trim", false}});
    if (options.getArguments().size() != 1) throw qxUsageError("xml format needs one file");
    const bool trims = options.has("--trim");
    if (trims && options.has("--keep-space"))
        throw qxUsageError("--trim and --keep-space exclude each other");

    const std::optional<std::string> encoding = options.get("--encoding");
    if (encoding) checkEncoding(*encoding);

    qxDocument document;
    document.setReadIncludedXml(false);
    if (!trims) {
        document.keepText();
        document.setMergeStandardReferences(false);
        document.setKeepMixedContent(true);
    }
    const qxStatus status = readDocument(report, options.getArguments()[0], document);
    if (status != qxStatus::DONE) return status;
    if (!trims && !options.has("--keep-space")) dropLayout(document);
    if (options.has("--plain")) document.setPlainOutput(true);
    if (encoding) document.setEncoding(encoding->c_str());
    return writeDocument(report, options.get("-o").value_or("-"), document);
}
