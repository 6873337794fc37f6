// SPDX-License-Identifier: see LICENSE

#include "qxconsole.h"

#include <algorithm>

#include <unistd.h>

bool qxConsoleIsTerminal(qxConsoleStream stream)
{
    const int descriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return isatty(descriptors[static_cast<int>(stream)]) == 1;
}

void qxConsoleUseBinaryStreams() {}

std::vector<std::string> qxConsoleWords(int count, char** words)
{
    return {words + std::min(count, 1), words + count};
}

void qxConsoleEnd(const char* leftOver, int status)
{
    if (*leftOver) unlink(leftOver);
    _exit(status);
}
