// Saves keys until it has saved enough or is ended, and prints the name of each when it is kept.
// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include <cstdio>
#include <cstdlib>
#include <string>

// qxkeywriter URL PREFIX COUNT
int main(int count, char** words)
{
    if (count != 4) return 2;
    qxKeyDatabase::enableSystemRegistry(0);
    if (!qxKeyDatabase::openLocalRegistry(words[1])) return 3;
    const int keys = std::atoi(words[3]);
    for (int i = 0; i < keys; ++i) {
        const std::string name = words[2] + std::to_string(i);
        if (!qxKeyDatabase::setRegKey(QX_KEY_USER, "a/b", name.c_str(), name.c_str())) return 4;
        std::puts(name.c_str());
        std::fflush(stdout);
    }
    return 0;
}
