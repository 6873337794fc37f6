// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoutput.h"

#include "qxargumentparser.h"

namespace
{

qxString parseText(const std::string& text)
{
    if (text.size() > qxString::MAX_LENGTH) throw qxUsageError("a text of args has 65535 bytes at most");
    return {text.data(), text.size()};
}

qxStatus runArgs(qxReport&, const qxCommandLine& line)
{
    const qxArgumentParser parser(parseText(line.getArgumentText(0)),
                                  parseText(line.getOptionText("--prefix")));
    const auto* option = parser.getOptions().begin();
    const auto* argument = parser.getArguments().begin();
    for (unsigned int position = 0; position < parser.getTokenCount(); ++position) {
        const bool isOption = option != parser.getOptions().end() && option->position == position;
        const qxString& text = isOption ? (option++)->name : (argument++)->text;
        writeOutput(std::to_string(position) + (isOption ? " option " : " argument ") +
                    std::string(viewOf(text)) + "\n");
    }
    return qxStatus::DONE;
}

} // namespace

void declareArgs(qxTool& tool)
{
    tool.add("args", "prints how a command line is split", runArgs)
        .addArgument("TEXT", "the command line, as one word behind '--'")
        .addOption("--prefix", "P", "what options begin with", "-");
}
