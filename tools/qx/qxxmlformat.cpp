// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxdocument.h"
#include "qxoptions.h"

#include <cstring>

namespace
{

// White space alone, with the end of a line in it: what an editor puts between tags.
bool isLayout(const qxString& text)
{
    const char* const bytes = text.getString();
    return std::strspn(bytes, " \t\r\n") == text.length() && std::strpbrk(bytes, "\r\n");
}

void dropLayout(qxXmlDom& document)
{
    qxXMLDomIterator next(document);
    while (qxXmlItem* const item = next()) {
        const auto* const text = dynamic_cast<const qxXmlCharData*>(item);
        if (text && isLayout(text->getCharData())) next.remove();
    }
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
    if (const auto encoding = options.get("--encoding")) document.setEncoding(encoding->c_str());
    return writeDocument(report, options.get("-o").value_or("-"), document);
}
