// SPDX-License-Identifier: see LICENSE

#include "qxconsole.h"

#include <unistd.h>

bool qxConsoleIsTerminal(qxConsoleStream stream)
{
    const int descriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return isatty(descriptors[static_cast<int>(stream)]) == 1;
}

void qxConsoleUseBinaryStreams() {}
