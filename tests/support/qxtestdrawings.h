// The drawings of docs/formats.md beside what is written.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxtestvalues.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <vector>

/// The chapter of the document that draws dynamic values; those before it draw all else.
inline constexpr const char* DYNAMIC_CHAPTER = "## Dynamic values";

/// The drawings of the chapters before that of dynamic values, or of this one: a line each, the expression above it and
/// the bytes in its cells.
inline std::vector<std::string> readDrawings(bool ofDynamicValues)
{
    const auto home = std::filesystem::path(QX_TEST_DATA).parent_path().parent_path();
    std::ifstream document(home / "docs/formats.md");
    const std::regex expression("`(.*)`");
    const std::regex cell("\\| ([0-9A-F]{2}) (?=\\|)");
    std::vector<std::string> drawings;
    std::string last;
    bool isDrawing = false;
    bool isChapter = !ofDynamicValues;
    for (std::string text; std::getline(document, text);) {
        std::smatch match;
        if (text.starts_with("## ")) isChapter = (text == DYNAMIC_CHAPTER) == ofDynamicValues;
        if (text.starts_with("```")) {
            isDrawing = !isDrawing && isChapter;
            if (isDrawing) drawings.push_back(last + ":");
        } else if (isDrawing) {
            for (std::sregex_iterator i(text.begin(), text.end(), cell); i != std::sregex_iterator(); ++i)
                drawings.back() += " " + i->str(1);
        } else if (std::regex_match(text, match, expression)) {
            last = match.str(1);
        }
    }
    return drawings;
}

template <class Data>
std::string drawingOf(const char* expression, Data data)
{
    return std::string(expression) + ": " + wireOf(data);
}

/// The line that readDrawings should give for the expression.
#define DRAWING(expression) drawingOf(#expression, expression)
