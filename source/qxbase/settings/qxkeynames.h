// Names and paths of keys, and how they stand in documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <string>
#include <string_view>
#include <vector>

/// `path` with "/" for "\", one for several, and none at the ends.
std::string qxNormalKeyPath(std::string_view path);

/// Appends the name of the element that stands for `name`: each character that no element's name can have there is
/// _xHHHH_, its code in hexadecimal, and so is the "_" of "_x". False for what is no UTF-8 and for an empty name.
bool qxEncodeKeyName(std::string_view name, std::string& element);

/// The name that an element stands for: the element's own, unless qxEncodeKeyName makes it of another.
std::string qxDecodeKeyName(std::string_view element);

/// The parts of a normal path, and behind them a value's name, which stays one part.
std::vector<std::string> qxKeyWay(std::string_view path, std::string_view name);

/// The same from names as they stand in documents: each is decoded, and "/" in `name` separates, too. Empty when that makes
/// no difference.
std::vector<std::string> qxWrittenKeyWay(std::string_view path, std::string_view name);

/// A hash that differs from process to process, so that no document can be made for it.
unsigned long long qxHashKeyText(std::string_view text);
