// Looking into the table of unique strings without entering anything.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <atomic>

/// Counts the changes of the table: while it stays, so do the answers of the functions, which any thread may call.
extern std::atomic<unsigned int> qxUniqueChanges;

/// The ID of the text, which is not empty; 0 when it is not in the table.
unsigned short qxFindUniqueID(const char* text, unsigned int length);

/// Sets `text` to a copy of the one with this ID, which is not 0; false when there is none.
bool qxFindUniqueText(unsigned short id, qxString& text);
