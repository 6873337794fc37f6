// The command-line tool of the library.
// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxconsole.h"
#include "qxoptions.h"
#include "qxoutput.h"

#include "qxerror.h"

#include <cstdio>
#include <new>

namespace
{

const char HELP[] = R"(usage: qx COMMAND …

Reads, searches, changes and writes documents; makes identifiers; tells the time; packs and shows values; takes
texts apart and matches them by rules and patterns.
Data goes to standard output, everything else to standard error.
FILE "-" is standard input, OUT "-" standard output. Options stand anywhere; "--" ends them.

  qx xml check FILE…                     says which documents are well-formed
  qx xml events FILE [--all] [--mask N]  prints the calls that the reader makes
  qx xml tree FILE [--keep-space] [--no-merge]
                                         prints the items of the tree
  qx xml get FILE PATH… [--count] [--all]
                                         prints the text at a path: "r/a", "r/a[2]", "r/a[name=x]", "r/a/@name"
  qx xml set FILE PATH=TEXT… [-o OUT]    changes texts and attributes, in FILE itself without -o
  qx xml format FILE [-o OUT] [--plain] [--encoding NAME] [--keep-space] [--trim]
                                         writes the document indented
  qx id new [-n N] [--v1|--v4|--v7]      makes identifiers: from the time, at random, or sortable
  qx id show GUID                        takes an identifier apart
  qx time [SECONDS] [--format F] [--local]
                                         prints now, or so many seconds after 1970, as a date
  qx bin pack TYPE=VALUE… [-o OUT] [--little]
                                         writes the bytes of values: u8 u16 u32 u64 f32 f64 varint str guid
                                         vec2 vec3 vec4 mat3 mat4
  qx bin dump FILE --as 'TYPE…' [--little]
                                         prints the values that the bytes of a file are
  qx lex FILE [--strings] [--comments] [--slash] [--hash] [--set] [--escape] [--hex] [--decimal C]
     [--tokens-only] [--bytes]           prints the tokens that a text is made of
  qx args [--prefix P] -- TEXT           prints how a command line is split
  qx parse RULES [INPUT] [--start NAME] [--fifo] [--trace] [--check] [--steps N]
                                         matches a text by the rules of a file, or with -e TEXT of TEXT
  qx scan PATTERN [FILE] [--decimal C] [--header A,B…] [--json] [-v]
                                         takes each line apart by a pattern: "%i = %n"
  qx demo                                shows some of these at work
  qx --version
  qx --help

Exit status: 0 done, 1 the answer is no, 2 wrong usage, 3 input malformed, 4 cannot open, read or write,
5 a limit was met, 70 fatal error, 130 interrupted.
)";

struct Command {
    const char* group; // null: the command stands alone
    const char* name;
    qxStatus (*run)(qxReport& report, const std::vector<std::string>& words);
};

const Command COMMANDS[] = {
    {"xml", "check", runXmlCheck}, {"xml", "events", runXmlEvents}, {"xml", "tree", runXmlTree},
    {"xml", "get", runXmlGet},     {"xml", "set", runXmlSet},       {"xml", "format", runXmlFormat},
    {"id", "new", runIdNew},       {"id", "show", runIdShow},       {nullptr, "time", runTime},
    {"bin", "pack", runBinPack},   {"bin", "dump", runBinDump},     {nullptr, "lex", runLex},
    {nullptr, "args", runArgs},    {nullptr, "parse", runParse},    {nullptr, "scan", runScan},
    {nullptr, "demo", runDemo},
};

qxStatus dispatch(qxReport& report, const std::vector<std::string>& words)
{
    const std::string first = words.empty() ? std::string() : words[0];
    if (first.empty()) throw qxUsageError("a command is missing");
    if (first == "--help" || first == "--version") {
        writeOutput(first == "--help" ? HELP : "qx " QX_VERSION "\n");
        return qxStatus::DONE;
    }
    bool isGroup = false;
    for (const Command& command : COMMANDS) {
        const std::size_t depth = command.group ? 2 : 1;
        isGroup = isGroup || (command.group && first == command.group);
        if (words.size() < depth || (command.group && first != command.group)) continue;
        if (words[depth - 1] != command.name) continue;
        return command.run(report, {words.begin() + static_cast<std::ptrdiff_t>(depth), words.end()});
    }
    if (!isGroup) throw qxUsageError("unknown command '" + first + "'");
    throw qxUsageError(words.size() < 2 ? "a command is missing behind '" + first + "'"
                                        : "unknown command '" + first + " " + words[1] + "'");
}

} // namespace

qxStatus runCommandLine(qxReport& report, const std::vector<std::string>& words)
{
    try {
        const qxStatus status = dispatch(report, words);
        flushOutput();
        return isInterrupted() ? qxStatus::INTERRUPTED : status;
    } catch (const qxUsageError& error) {
        report.printError(std::string(error.what()) + "; see qx --help");
        return qxStatus::USAGE;
    } catch (const qxFileError& error) {
        report.printError(error.what());
        return qxStatus::NO_FILE;
    } catch (const qxBaseError& error) {
        report.printError(error.getErrorString().getString());
        return qxStatus::FATAL;
    } catch (const std::bad_alloc&) {
        report.printError("out of memory");
        return qxStatus::FATAL;
    }
}

int main(int count, char** words)
{
    qxConsoleUseBinaryStreams();
    watchInterrupts();
    qxReport report;
    return static_cast<int>(runCommandLine(report, qxConsoleWords(count, words)));
}
