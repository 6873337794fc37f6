// The command-line tool of the library.
// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxconsole.h"
#include "qxoutput.h"

#include "qxerror.h"

#include <cstdio>
#include <new>

namespace
{

const char DESCRIPTION[] = R"(Data goes to standard output, everything else to standard error.
FILE "-" is standard input, OUT "-" standard output. Options stand anywhere; "--" ends them.)";

const char FOOTER[] = "Exit status: 0 done, 1 the answer is no, 2 wrong usage, 3 input malformed, 4 cannot "
                      "open, read or write, "
                      "5 a limit was met, 70 fatal error, 130 interrupted.";

/// `error`, and where the help on what was read last is to be had.
std::string withHint(const std::string& error, const qxTool& tool)
{
    const std::string command(viewOf(tool.getCommand()));
    return error + (error.ends_with('?') ? " See qx " : "; see qx ") +
           (command.empty() ? "" : command + " ") + "--help";
}

qxStatus parseAndAnswer(qxReport& report, qxTool& tool, const std::vector<std::string>& words)
{
    std::vector<const char*> line = {"qx"};
    for (const std::string& word : words) line.push_back(word.c_str());
    if (!tool.parse(static_cast<int>(line.size()), line.data()))
        throw qxUsageError(std::string(viewOf(tool.getError())));
    const qxStatus status = tool.answer(report);
    flushOutput();
    return isInterrupted() ? qxStatus::INTERRUPTED : status;
}

} // namespace

qxTool::qxTool()
    : qxCommandLine(
          "qx",
          "Reads, searches, changes and writes documents; makes identifiers; tells the time; packs and "
          "shows values; copies from any URL to any other; takes texts apart and matches them by rules and "
          "patterns; keeps settings; talks with other programs.")
{
    setDescription(DESCRIPTION);
    setFooter(FOOTER);
    addQuestion("--version", "", "tells the version");
    addQuestion("--completion", "", "prints what bash is to read so that it completes commands and options");

    addHeading("XML documents");
    addCommand("xml", "reads, searches, changes and writes XML documents");
    declareXmlCheck(*this);
    declareXmlEvents(*this);
    declareXmlTree(*this);
    declareXmlGet(*this);
    declareXmlFormat(*this);

    addHeading("Identifiers, time and bytes");
    declareId(*this);
    declareTime(*this);
    declareBin(*this);

    addHeading("Byte streams");
    declareCopy(*this);

    addHeading("Texts");
    declareLex(*this);
    declareArgs(*this);
    declareParse(*this);
    declareScan(*this);

    addHeading("Settings and network");
    declareConf(*this);
    declareNet(*this);

    addHeading("More");
    declareDemo(*this);
}

qxCommand& qxTool::add(const char* name, const char* summary, Run run)
{
    m_runs[name] = run;
    return addCommand(name, summary);
}

qxStatus qxTool::answer(qxReport& report) const
{
    if (isHelpAsked())
        writeOutput(viewOf(getHelp(getCommand())));
    else if (hasOption("--version"))
        writeOutput("qx " QX_VERSION "\n");
    else if (hasOption("--completion"))
        writeOutput(viewOf(getCompletion()));
    else
        return m_runs.at(std::string(viewOf(getCommand())))(report, *this);
    return qxStatus::DONE;
}

std::vector<std::string> argumentsFrom(const qxCommandLine& line, unsigned int first)
{
    std::vector<std::string> arguments;
    for (unsigned int i = first; i < line.getArgumentCount(); ++i)
        arguments.emplace_back(line.getArgumentText(i));
    return arguments;
}

qxStatus runCommandLine(qxReport& report, const std::vector<std::string>& words)
{
    try {
        qxTool tool;
        try {
            return parseAndAnswer(report, tool, words);
        } catch (const qxUsageError& error) {
            report.printError(withHint(error.what(), tool));
            return qxStatus::USAGE;
        }
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
