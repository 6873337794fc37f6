// The patterns of a process, translated once, and parsers that run them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxmutex.h"
#include "qxstringparser.h"
#include "text/qxruleprogram.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// A pattern that was translated.
struct qxTranslatedPattern {
    std::shared_ptr<const qxRuleProgram> program; ///< null when the pattern makes no rules
    unsigned int malformedRule = 0;
};

/// Threads: all operations may be called from any thread at once.
class qxPatternParsers
{
public:
    /// Those of the process.
    static qxPatternParsers& get();

    /// A parser that is ready to run, and the pattern. The parser is null when the pattern makes no rules.
    std::unique_ptr<qxStringParser> take(std::string_view pattern, char16_t decimal,
                                         qxTranslatedPattern& translated);

    /// Gives a parser back for others to take.
    void giveBack(std::unique_ptr<qxStringParser> parser);

    void clear();

private:
    static constexpr std::size_t MOST_PATTERNS = 4096; // before all are forgotten
    static constexpr std::size_t MOST_PARSERS = 8;     // that wait for work

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    typedef std::unordered_map<std::string, qxTranslatedPattern, Hash, std::equal_to<>> Patterns;

    qxPatternParsers();
    qxTranslatedPattern translate(std::string_view pattern, char16_t decimal) const;

    qxParserFunctions m_functions;

    qxMutex m_lock; // guards the fields below
    std::unordered_map<char16_t, Patterns> m_patterns;
    std::vector<std::unique_ptr<qxStringParser>> m_parsers;
};
