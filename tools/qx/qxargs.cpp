// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoptions.h"
#include "qxoutput.h"

#include "qxargumentparser.h"

namespace
{

qxString parseText(const std::string& text)
{
    if (text.size() > qxString::MAX_LENGTH) throw qxUsageError("a text of args has 65535 bytes at most");
    return {text.data(), text.size()};
}

} // namespace

qxStatus runArgs(qxReport&, const std::vector<std::string>& words)
{
    const qxOptions options(words, {{"--prefix", true}});
    if (options.getArguments().size() != 1) throw qxUsageError("args needs one text");
    const qxString prefix = parseText(options.get("--prefix").value_or("-"));
    const qxArgumentParser parser(parseText(options.getArguments()[0]), prefix);

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
