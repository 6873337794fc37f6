// The commands of the tool.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreport.h"
#include "qxstatus.h"

#include <string>
#include <vector>

// Each command takes the words behind its name; it raises qxUsageError for a wrong command line and qxFileError
// for a stream that fails.

qxStatus runXmlCheck(qxReport& report, const std::vector<std::string>& words);
qxStatus runXmlEvents(qxReport& report, const std::vector<std::string>& words);
qxStatus runXmlTree(qxReport& report, const std::vector<std::string>& words);
qxStatus runXmlGet(qxReport& report, const std::vector<std::string>& words);
qxStatus runXmlSet(qxReport& report, const std::vector<std::string>& words);
qxStatus runXmlFormat(qxReport& report, const std::vector<std::string>& words);
qxStatus runIdNew(qxReport& report, const std::vector<std::string>& words);
qxStatus runIdShow(qxReport& report, const std::vector<std::string>& words);
qxStatus runTime(qxReport& report, const std::vector<std::string>& words);
qxStatus runBinPack(qxReport& report, const std::vector<std::string>& words);
qxStatus runBinDump(qxReport& report, const std::vector<std::string>& words);
qxStatus runLex(qxReport& report, const std::vector<std::string>& words);
qxStatus runArgs(qxReport& report, const std::vector<std::string>& words);
qxStatus runParse(qxReport& report, const std::vector<std::string>& words);
qxStatus runScan(qxReport& report, const std::vector<std::string>& words);
qxStatus runDemo(qxReport& report, const std::vector<std::string>& words);

/// Runs the command line `words` (without the program's name) and shows its errors.
qxStatus runCommandLine(qxReport& report, const std::vector<std::string>& words);
