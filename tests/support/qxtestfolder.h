// A fresh folder for the files of one test.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

/// A new empty folder, removed with everything in it at the end.
class TestFolder
{
public:
    TestFolder()
    {
        static std::atomic<unsigned int> s_number{0};
        std::random_device random;
        do {
            m_path = std::filesystem::temp_directory_path() /
                     ("qxtest-" + std::to_string(random()) + "-" + std::to_string(s_number++));
        } while (!std::filesystem::create_directory(m_path));
    }
    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// The full name of the folder, in UTF-8 and with "/" between its parts.
    std::string name() const { return textOf(m_path); }

    /// The full name of a file in it.
    std::string name(std::string_view file) const { return textOf(pathOf(file)); }

    /// Writes a file, with its folders, and returns its full name.
    std::string write(std::string_view file, std::string_view content) const
    {
        const std::filesystem::path path = pathOf(file);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return textOf(path);
    }

    /// The content of a file; "(none)" when there is no such file.
    std::string read(std::string_view file) const
    {
        std::ifstream in(pathOf(file), std::ios::binary);
        if (!in) return "(none)";
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    /// How many files and folders are directly inside.
    std::size_t count() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_path),
                                                      std::filesystem::directory_iterator()));
    }

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path pathOf(std::string_view file) const
    {
        return m_path / std::u8string(file.begin(), file.end());
    }
    static std::string textOf(const std::filesystem::path& path)
    {
        const std::u8string text = path.generic_u8string();
        return {text.begin(), text.end()};
    }

    std::filesystem::path m_path;
};
