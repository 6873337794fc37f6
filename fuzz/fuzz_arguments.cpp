// Splits any bytes as a command line, whose first byte is the length of the option prefix, asks for all that it holds, and
// reads it as that of a program.
// SPDX-License-Identifier: see LICENSE

#include "qxargumentparser.h"
#include "qxcommandline.h"
#include "qxmessage.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

/// Every token has its place in one of the two lists.
void checkPlaces(const qxArgumentParser& parser)
{
    std::vector<unsigned int> seen(parser.getTokenCount());
    for (const auto& option : parser.getOptions()) ++seen.at(option.position);
    for (const auto& argument : parser.getArguments()) ++seen.at(argument.position);
    require(std::count(seen.begin(), seen.end(), 1U) == static_cast<std::ptrdiff_t>(seen.size()));
}

void askForAll(qxArgumentParser& parser)
{
    for (const auto& option : parser.getOptions()) {
        unsigned int position = 0;
        unsigned int count = 0;
        require(parser.hasOption(option.name, 1, &position, &count));
        require(position <= option.position && count > 0 && position + count <= parser.getTokenCount());
        require(parser.hasOption(option.name, 0, &position) && position <= option.position);
        parser.getOptionValue(option.name, 1);
        parser.getOptionValue(option.name, qxUInt64{1}, 1);
        parser.getOptionValue(option.name, 1.0F, 2, 0, 1);
    }
    for (unsigned int i = 0; i < parser.getArgumentCount(); ++i) {
        parser.getArgumentValue(i, 1.0);
        parser.getArgumentValue(i, static_cast<signed char>(1));
    }
}

void readDeclared(const qxArgumentParser& parser)
{
    qxCommandLine line("prog", "does");
    line.addOption("-v, --verbose", "", "tells more").addOption("--long", "one|two", "how", "two");
    line.addQuestion("--version", "", "which").addHeading("Files");
    line.addCommand("add", "adds").addOption("-x", "X", "what").addArgument("FILE", "which", QX_ARGUMENT_ANY);
    line.addCommand("prog", "again").addCommand("file", "one").addArgument("A", "first");
    const bool fits = line.parse(parser);
    const qxString error = line.getError();
    require(fits == error.isEmpty());
    require(error.find('\n') == error.length() && error.length() < 2000);
    require(std::strlen(line.getOptionText("--long")) == 3);
    for (unsigned int i = 0; i < line.getArgumentCount(); ++i)
        require(line.getArgument(i).length() >= std::strlen(line.getArgumentText(i)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    const std::size_t prefixSize = size == 0 ? 0 : data[0] % 4U;
    if (size < 1 + prefixSize || size > 2000) return 0;
    const char* const text = reinterpret_cast<const char*>(data);
    const qxString prefix(text + 1, prefixSize);
    qxArgumentParser parser(qxString(text + 1 + prefixSize, size - 1 - prefixSize), prefix);
    checkPlaces(parser);
    askForAll(parser);
    readDeclared(parser);

    // The same tokens as an array are the same. With "help" among them the process would end.
    if (parser.hasOption("help", 0) || parser.hasOption("h", 0)) return 0;
    std::vector<qxString> tokens(parser.getTokenCount());
    for (const auto& option : parser.getOptions()) tokens[option.position] = prefix + option.name;
    for (const auto& argument : parser.getArguments()) tokens[argument.position] = argument.text;
    std::vector<const char*> array;
    for (const qxString& token : tokens) {
        if (std::strlen(token.getString()) != token.length()) return 0; // an array cannot hold a zero
        array.push_back(token.getString());
    }
    const qxArgumentParser taken(static_cast<int>(array.size()), array.data(), "", prefix);
    require(taken.getOptionCount() == parser.getOptionCount());
    for (unsigned int i = 0; i < parser.getArgumentCount(); ++i)
        require(taken.getArgument(i) == parser.getArgument(i));
    return 0;
}
