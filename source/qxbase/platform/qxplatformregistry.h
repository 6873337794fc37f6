// The registry of the operating system, where it has one.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>

// Paths have "\" between their parts. Texts are UTF-8. Threads: any.

/// Whether the system has a registry; the other functions answer false where it has none.
bool qxPlatformRegistryIsThere();

/// Gives the value `name` of the key `path` as text and returns true: texts as they are, 32 and 64 bits as a decimal number,
/// bytes in upper-case hexadecimal, anything else as an empty text. False when there is no such value, or it may not be
/// read.
bool qxPlatformRegistryGet(bool isUser, const char* path, const char* name, std::string& text);

/// Sets the value to a text; the key is made where it is missing.
bool qxPlatformRegistrySet(bool isUser, const char* path, const char* name, const char* text);

/// False as well when there is no such value.
bool qxPlatformRegistryRemove(bool isUser, const char* path, const char* name);
