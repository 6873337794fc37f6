// What the sources about files share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

#include <stdio.h>

struct qxPlatformFile {
    FILE* stream;    // only its descriptor is used: nothing is buffered
    bool isWritable; // there may be something to keep on the disk
};

/// The name of a file as the system takes it. URLs have a "/" before the drive: it goes.
std::wstring qxWideFileName(const char* name);
