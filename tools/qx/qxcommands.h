// The commands of the tool, and how they are declared.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreport.h"
#include "qxstatus.h"
#include "qxusage.h"

#include "qxcommandline.h"

#include <map>
#include <string>
#include <vector>

/// What the tool can be asked for: all its commands, and what carries them out.
///
/// A command is declared beside its code by a function of its file, which is listed below and called in qxTool's
/// constructor, where its place in the help is:
///
///     qxStatus runEcho(qxReport&, const qxCommandLine& line)
///     {
///         const unsigned int times = parseNumber<unsigned int>(line.getOptionText("--times"), "count");
///         for (unsigned int i = 0; i < times; ++i) writeOutput(std::string(line.getArgumentText(0)) + "\n");
///         return qxStatus::DONE;
///     }
///
///     void declareEcho(qxTool& tool)
///     {
///         tool.add("echo", "prints a text", runEcho)
///             .addArgument("TEXT", "what is printed")
///             .addOption("--times", "N", "how often", "1");
///     }
///
/// A group is declared by tool.addCommand("group", "SUMMARY"), and its commands by tool.add("group name", ...); options of
/// the group are for all of them.
class qxTool : public qxCommandLine
{
public:
    /// Carries out the command that `line` holds. It raises qxUsageError for words that it cannot understand, and
    /// qxFileError for a stream that fails.
    using Run = qxStatus (*)(qxReport& report, const qxCommandLine& line);

    qxTool();

    /// Declares a command, or with two names one of a group that was declared by addCommand, and what carries it out.
    qxCommand& add(const char* name, const char* summary, Run run);

    /// Answers what was read last.
    qxStatus answer(qxReport& report) const;

private:
    std::map<std::string, Run> m_runs;
};

void declareXmlCheck(qxTool& tool);
void declareXmlEvents(qxTool& tool);
void declareXmlTree(qxTool& tool);
void declareXmlGet(qxTool& tool); // and set
void declareXmlFormat(qxTool& tool);
void declareId(qxTool& tool);
void declareTime(qxTool& tool);
void declareBin(qxTool& tool);
void declareCopy(qxTool& tool); // and cat
void declareLex(qxTool& tool);
void declareArgs(qxTool& tool);
void declareParse(qxTool& tool);
void declareScan(qxTool& tool);
void declareConf(qxTool& tool);
void declareNet(qxTool& tool);
void declareDemo(qxTool& tool);

/// The arguments from the one of index `first` on.
std::vector<std::string> argumentsFrom(const qxCommandLine& line, unsigned int first);

/// Runs the command line `words` (without the program's name) and shows its errors.
qxStatus runCommandLine(qxReport& report, const std::vector<std::string>& words);
