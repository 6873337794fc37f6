// Running a program, in each system's own way.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Runs `words[0]` with the other words, in UTF-8, as its arguments and `folder` as its working directory. The files
/// "in", "out" and "err" in the folder above are its standard streams. Returns its exit status, or -1 when it did not
/// run or did not end by itself.
int runProgram(const std::vector<std::string>& words, const std::filesystem::path& folder);
