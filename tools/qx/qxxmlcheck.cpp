// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoutput.h"

#include <algorithm>

namespace
{

/// Counts what a document holds. Text of any length is good here: it is not notified.
class Counter : public qxXmlSax
{
public:
    Counter()
    {
        disableNotifyItemType(~QX_XML_ELEMENT);
        enableNotifyItemType(QX_XML_ELEMENT);
    }

    unsigned char onElementStart(const qxString&, unsigned int level) override
    {
        ++elements;
        depth = std::max(depth, level);
        return !isInterrupted();
    }

    unsigned long long elements = 0;
    unsigned int depth = 0;
};

qxStatus checkOne(qxReport& report, const std::string& file)
{
    Counter counter;
    unsigned long long bytes = 0;
    const qxStatus status = readDocument(report, file, counter, &bytes);
    if (status != qxStatus::DONE) return status;
    writeOutput(file + ": ok (" + std::to_string(counter.elements) + " elements, depth " +
                std::to_string(counter.depth) + ", " + std::to_string(bytes) + " bytes)\n");
    return status;
}

qxStatus runXmlCheck(qxReport& report, const qxCommandLine& line)
{
    bool isMalformed = false;
    bool isLimited = false;
    bool isUnreadable = false;
    for (const std::string& file : argumentsFrom(line, 0)) {
        qxStatus status = qxStatus::NO_FILE;
        try {
            status = checkOne(report, file);
        } catch (const qxFileError& error) {
            report.printError(error.what());
        }
        if (status == qxStatus::INTERRUPTED) return status;
        isMalformed = isMalformed || status == qxStatus::MALFORMED;
        isLimited = isLimited || status == qxStatus::LIMIT;
        isUnreadable = isUnreadable || status == qxStatus::NO_FILE;
    }
    if (isMalformed) return qxStatus::MALFORMED;
    if (isLimited) return qxStatus::LIMIT;
    return isUnreadable ? qxStatus::NO_FILE : qxStatus::DONE;
}

} // namespace

void declareXmlCheck(qxTool& tool)
{
    tool.add("xml check", "says which documents are well-formed", runXmlCheck)
        .addArgument("FILE", "the documents", QX_ARGUMENT_SOME);
}
