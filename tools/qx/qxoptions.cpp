// SPDX-License-Identifier: see LICENSE

#include "qxoptions.h"

#include <algorithm>
#include <charconv>

qxOptions::qxOptions(const std::vector<std::string>& words, std::initializer_list<Known> known)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") {
            m_arguments.insert(m_arguments.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                               words.end());
            return;
        }
        if (word.size() < 2 || word[0] != '-') {
            m_arguments.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto option =
            std::find_if(known.begin(), known.end(), [&](const Known& one) { return one.name == name; });
        if (option == known.end()) throw qxUsageError("unknown option '" + name + "'");
        std::string value;
        if (equals != std::string::npos) {
            if (!option->takesValue) throw qxUsageError("option '" + name + "' takes no value");
            value = word.substr(equals + 1);
        } else if (option->takesValue) {
            if (++i == words.size()) throw qxUsageError("option '" + name + "' needs a value");
            value = words[i];
        }
        m_given.push_back({name, value});
    }
}

std::optional<std::string> qxOptions::get(std::string_view name) const
{
    const auto given =
        std::find_if(m_given.rbegin(), m_given.rend(), [&](const Given& one) { return one.name == name; });
    if (given == m_given.rend()) return std::nullopt;
    return given->value;
}

unsigned int parseMask(const std::string& text)
{
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const char* const begin = text.data() + (isHexadecimal ? 2 : 0);
    const char* const end = text.data() + text.size();
    unsigned int number = 0;
    const auto result = std::from_chars(begin, end, number, isHexadecimal ? 16 : 10);
    if (begin == end || result.ec != std::errc() || result.ptr != end)
        throw qxUsageError("'" + text + "' is no mask");
    return number;
}
