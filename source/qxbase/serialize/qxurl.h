// What a URL is made of.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <string>
#include <string_view>

/// The URL of the folder of the file at `path`, with its final "/" if it has a name.
///
/// Threads, errors: any, none; as all functions here.
qxString qxURLFolderOfPath(const qxString& path);

/// The scheme of `url` as it stands there, without ":"; empty for paths and drives.
std::string_view qxURLScheme(std::string_view url);

/// Whether `name` can be a scheme: a letter, then at least one letter, digit, "+", "-" or ".".
bool qxURLIsScheme(std::string_view name);

/// What stands behind the "?" of `url`, up to a "#". Plain paths and "file:" with a path have attributes only where what
/// follows the last "?" looks like them, a name and "=" without a "/": otherwise it is part of the path.
std::string_view qxURLAttributes(std::string_view url);

/// `url` without its attributes and without what follows a "#"; a plain path or "file:" with a path keeps its "#".
std::string_view qxURLBody(std::string_view url);

/// The value of the attribute `name` among `attributes`, "name=value" joined by "&", with %HH decoded in both; false
/// when there is none.
bool qxURLAttribute(std::string_view attributes, std::string_view name, std::string& value);

/// The path that the "file:" URL or plain path `url`, without attributes, names; false for one on another machine and for a zero
/// byte in the name.
bool qxURLToPath(std::string_view url, std::string& path);

/// Reads "address,length", decimal or with 0x; false when it is not written so, or is no block of memory.
bool qxURLToMemory(std::string_view text, void*& address, unsigned int& length);
