// SPDX-License-Identifier: see LICENSE

#include "qxconsole.h"

#include <filesystem>

#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h> // wants the header above first

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

// Those of `main` are in the code page of the machine, which may lack the characters of a file's name.
std::vector<std::string> qxConsoleWords(int, char**)
{
    int count = 0;
    wchar_t** const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        const std::u8string word = std::filesystem::path(texts[i]).u8string();
        words.emplace_back(word.begin(), word.end());
    }
    LocalFree(texts);
    return words;
}

void qxConsoleEnd(const char*, int) {}
