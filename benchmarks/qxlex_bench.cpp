// SPDX-License-Identifier: see LICENSE

#include "qxlex.h"
#include "qxserializeadaptermemory.h"

#include "qxbench.h"
#if defined(QX_PEER_FLEX)
#include "qxlexpeer.h"
#endif

#include <iterator>
#include <regex>
#include <string>

namespace
{

constexpr std::size_t SIZE = 4000000; // bytes of the input

std::string makeArgumentLists()
{
    static const char* const texts[] = {"'a quoted text'", "\"another one\"", "yes", "no", "'x'", "name"};
    std::string lists;
    for (unsigned int i = 0; lists.size() < SIZE; ++i) {
        lists += std::to_string(i % 1000) + ", " + (i % 3 == 0 ? "-" : "") + std::to_string(i % 77) + "." +
                 std::to_string(i % 10) + ", " + texts[i % std::size(texts)] + ", [" + std::to_string(i) +
                 "," + std::to_string(i % 5) + "]\n";
    }
    return lists;
}

std::uint64_t add(std::uint64_t sum, unsigned int type, std::size_t length)
{
    return sum * 31 + type * 4096U + length;
}

std::uint64_t scanWithRegex(const std::regex& regex, const std::string& text)
{
    static constexpr unsigned int TYPES[] = {2, 4, 8, 32, 16, 256, 512, 1}; // in the order of the groups
    std::uint64_t sum = 0;
    for (std::sregex_iterator token(text.begin(), text.end(), regex, std::regex_constants::match_continuous),
         end;
         token != end; ++token) {
        std::size_t group = 1;
        while (!(*token)[group].matched) ++group;
        sum = add(sum, TYPES[group - 1], static_cast<std::size_t>(token->length()));
    }
    return sum;
}

void argumentLists(qxBenchCase& work)
{
    static std::string text = makeArgumentLists();
    work.amount = static_cast<double>(text.size());
    work.add("qxbase", [] {
        qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
        qxSerializeLex lexer(1);
        std::uint64_t sum = 0;
        for (lexer.read(&memory); lexer.getDataType() != QX_LEX_NONE; lexer.read(&memory))
            sum = add(sum, lexer.getDataType(), lexer.getDataSize(nullptr));
        return sum;
    });
#if defined(QX_PEER_FLEX)
    work.add("flex", [] { return qxScanWithPeer(text.data(), text.size()); });
#endif
    static const std::regex regex(R"re(([A-Za-z_]\w*)|("[^"]*")|('[^']*')|)re"
                                  R"re(([+-]?\d+(?:\.\d+(?:[eE][+-]?\d+)?|[eE][+-]?\d+))|)re"
                                  R"re(([+-]?(?:0[xX][\dA-Fa-f]+|\d+))|([ \t\r\n]+)|([+-])|([^]))re",
                                  std::regex::ECMAScript | std::regex::optimize);
    work.add("std::regex", [] { return scanWithRegex(regex, text); });
}
const qxBenchEntry ARGUMENT_LISTS("lex/argument-lists", QX_BENCH_MEGABYTES, argumentLists);

void withValues(qxBenchCase& work)
{
    static std::string text = makeArgumentLists();
    work.amount = static_cast<double>(text.size());
    work.add("qxbase", [] {
        qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
        qxSerializeLex lexer(1);
        std::uint64_t count = 0;
        for (lexer.read(&memory); lexer.getDataType() != QX_LEX_NONE; lexer.read(&memory), ++count)
            qxBenchKeep(lexer.getData());
        return count;
    });
}
const qxBenchEntry WITH_VALUES("lex/with-values", QX_BENCH_MEGABYTES, withValues);

} // namespace
