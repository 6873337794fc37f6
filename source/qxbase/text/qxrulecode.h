// What a rule set is compiled to.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"
#include "text/qxcharset.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// One element of a rule.
struct qxRuleNode {
    enum Kind : unsigned char {
        LITERAL,    ///< tokens in a row
        SET,        ///< one character
        CALL,       ///< a rule or function by its name
        GROUP,      ///< a body of its own
        MARK,       ///< a mark in the input
        MATCH_MARK, ///< a mark that tells whether the match so far has succeeded
        EXCLUSION,  ///< one factor, unless another matches in its place
        FAULT       ///< here the text of the rule cannot be read
    };
    static constexpr unsigned int NONE = 0xFFFFFFFF;
    static constexpr unsigned int UNLIMITED = 0xFFFFFFFF;

    Kind kind = LITERAL;
    bool isCounted = false;  ///< repeated so often as a number says: input must be left each time
    unsigned char depth = 0; ///< of the exclusions in it
    unsigned int begin = 0;  ///< its text in the rule set
    unsigned int end = 0;
    unsigned int value = 0; ///< the index of the literal, set, name or body; the first factor of an exclusion
    unsigned int other = NONE; ///< the factor that is excluded
    unsigned int min = 1;
    unsigned int max = 1;
    unsigned int next = NONE; ///< in the alternative

    bool isRepeated() const { return isCounted || min != 1 || max != 1; }
};

/// Elements in a row.
struct qxRuleAlternative {
    unsigned int begin = 0; ///< its place in the rule set
    unsigned int first = qxRuleNode::NONE;
    unsigned int last = qxRuleNode::NONE;
    unsigned int next = qxRuleNode::NONE;
    bool holdsFault = false;
};

/// Alternatives, of a rule or of a group in it.
struct qxRuleBody {
    unsigned int rule = 0;
    unsigned int first = qxRuleNode::NONE;
    unsigned int last = qxRuleNode::NONE;
};

/// A rule: where its body stands in the text, and what that was compiled to.
struct qxRuleEntry {
    unsigned int name = 0;
    unsigned int begin = 0;
    unsigned int end = 0;
    unsigned int body = 0;
    unsigned int fault = qxRuleNode::NONE; ///< its node, if the text of the body is faulty
};

/// A fault in the text of a rule.
struct qxRuleFault {
    const char* format; ///< takes the rule, line, column and the rest of the line
    unsigned int place;
};

/// A place in a text, from 1, and the line's text from there on.
struct qxRulePlace {
    unsigned int line;
    unsigned int column; ///< in characters
    std::string_view rest;
};

/// All of a rule set. Places are bytes in `text`.
struct qxRuleCode {
    std::string text;
    std::vector<qxRuleNode> nodes;
    std::vector<qxRuleAlternative> alternatives;
    std::vector<qxRuleBody> bodies; ///< those of a rule stand together, outer ones before inner ones
    std::vector<qxRuleEntry> rules;
    std::vector<qxRuleFault> faults;
    std::vector<std::u16string> literals; ///< each once
    std::vector<qxCharSet> sets;          ///< each text once
    std::vector<std::string_view> names;  ///< in the text; each once
    std::unordered_map<std::string_view, unsigned int> nameIndex;
    std::vector<unsigned int> ruleOfName; ///< NONE where no rule has the name

    /// Null when there is no such rule.
    const qxRuleEntry* findRule(std::string_view name) const;

    /// The rule whose body holds a place.
    const qxRuleEntry& ruleAt(unsigned int place) const;

    std::string_view textOf(const qxRuleNode& node) const
    {
        return std::string_view(text).substr(node.begin, node.end - node.begin);
    }

    /// Where `place` stands in the text from `begin` to `end`.
    qxRulePlace placeOf(unsigned int begin, unsigned int place, unsigned int end) const;
    qxRulePlace placeIn(const qxRuleEntry& rule, unsigned int place) const
    {
        return placeOf(rule.begin, place, rule.end);
    }
};
