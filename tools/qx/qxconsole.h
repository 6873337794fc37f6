// What the tool asks of the terminal and of the system.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <vector>

enum class qxConsoleStream { INPUT, OUTPUT, ERRORS };

/// Whether a terminal is at the other end of the stream.
bool qxConsoleIsTerminal(qxConsoleStream stream);

/// Takes care that the bytes of standard input and output arrive as they are.
void qxConsoleUseBinaryStreams();

/// The words of the command line behind the program's name, in UTF-8. `words` are those of `main`, `count` of them.
std::vector<std::string> qxConsoleWords(int count, char** words);

/// Removes the file `leftOver`, unless that is empty, and ends the tool with `status`; for the handlers of signals. Does
/// nothing where a system does not let go of an open file.
void qxConsoleEnd(const char* leftOver, int status);
