// SPDX-License-Identifier: see LICENSE

#include "qxconsole.h"

#include <fcntl.h>
#include <io.h>

bool qxConsoleIsTerminal(qxConsoleStream stream)
{
    return _isatty(static_cast<int>(stream)) != 0; // the streams' numbers are 0, 1 and 2
}

void qxConsoleUseBinaryStreams()
{
    _setmode(0, _O_BINARY);
    _setmode(1, _O_BINARY);
    _setmode(2, _O_BINARY);
}
