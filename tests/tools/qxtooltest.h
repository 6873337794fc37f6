// Runs the command-line tool as users do and keeps what it says.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxtestfolder.h"
#include "qxtestrows.h"

#include "tools/qxprogram.h"

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

/// Runs the tool in a fresh folder.
class Tool : public testing::Test
{
protected:
    Tool() { std::filesystem::create_directory(m_folder.path() / "work"); }

    /// Makes a file of the folder the tool runs in.
    void file(const std::string& name, const std::string& content) const
    {
        m_folder.write("work/" + name, content);
    }

    std::string content(const std::string& name) const { return m_folder.read("work/" + name); }

    /// Runs `qx` with these words and standard input; keeps what it printed and returns its exit status. Blanks
    /// separate words, single quotes keep them together.
    int run(const std::string& words, const std::string& input = {})
    {
        file("../in", input);
        std::vector<std::string> line = {QX_TOOL};
        for (const std::string& word : split(words)) line.push_back(word);
        const int status = runProgram(line, m_folder.path() / "work");
        out = content("../out");
        err = content("../err");
        return status;
    }

    /// All that it printed, with the exit status before it unless that is 0.
    std::string answer(const std::string& words, const std::string& input = {})
    {
        const int status = run(words, input);
        return (status != 0 ? std::to_string(status) + " " : "") + out + err;
    }

    /// Each row is "words => answer", on standard input `input`.
    template <class... Rows>
    void expectAnswers(const std::string& input, const Rows&... rows)
    {
        expectRows([&](const std::string& words) { return answer(words, input); }, rows...);
    }

    bool hasError(const char* text) const { return err.find(text) != std::string::npos; }

    /// The number of files in the folder.
    std::ptrdiff_t countFiles() const
    {
        return std::distance(std::filesystem::directory_iterator(m_folder.path() / "work"), {});
    }

    std::string out;
    std::string err;

private:
    static std::vector<std::string> split(const std::string& text)
    {
        std::vector<std::string> words;
        bool isQuoted = false;
        bool isInWord = false;
        for (const char c : text) {
            if (c == '\'') isQuoted = !isQuoted;
            const bool isBlank = c == ' ' && !isQuoted;
            if (!isBlank && !isInWord) words.emplace_back();
            if (!isBlank && c != '\'') words.back() += c;
            isInWord = !isBlank;
        }
        return words;
    }

    TestFolder m_folder;
};
