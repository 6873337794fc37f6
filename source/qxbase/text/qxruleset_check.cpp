// SPDX-License-Identifier: see LICENSE

#include "qxruleset.h"

#include "text/qxrulecheck.h"
#include "text/qxtextpiece.h"

#include <algorithm>
#include <string>
#include <vector>

namespace
{

constexpr unsigned int NONE = qxRuleNode::NONE;
constexpr unsigned int LONGEST_NAME = 255;      // bytes
constexpr unsigned int LONGEST_REST = 1000;     // bytes
constexpr unsigned int LONGEST_CIRCLE = 50;     // rules that are named
constexpr std::size_t LONGEST_LEAD = 64;        // characters
constexpr unsigned int MOST_COMPARED = 1000000; // pairs of alternatives

/// What an alternative certainly takes first, character by character.
struct Lead {
    std::vector<qxCharSet> characters;
    bool isAll = false; // it needs nothing else to match
};

struct Found {
    unsigned int place; // in the text
    unsigned int rule;
    qxString text;
    bool isFault;
};

class Checker
{
public:
    Checker(const qxRuleCode& code, const qxRuleProgram& program) : m_code(code), m_program(program) {}

    std::vector<Found> check()
    {
        findFaultsAndNames();
        findLeftRecursion();
        for (const qxRuleBody& body : m_code.bodies) compareAlternatives(body);
        std::stable_sort(m_found.begin(), m_found.end(),
                         [](const Found& a, const Found& b) { return a.place < b.place; });
        return std::move(m_found);
    }

private:
    qxString nameOf(unsigned int rule) const
    {
        return qxPieceOf(m_code.names[m_code.rules[rule].name], LONGEST_NAME);
    }

    unsigned int ruleAt(unsigned int place) const
    {
        const auto behind =
            std::upper_bound(m_code.rules.begin(), m_code.rules.end(), place,
                             [](unsigned int p, const qxRuleEntry& rule) { return p < rule.begin; });
        return static_cast<unsigned int>(behind - m_code.rules.begin()) - 1;
    }

    void findFaultsAndNames()
    {
        std::vector<unsigned char> isTold(m_code.names.size(), 0);
        for (const qxRuleNode& node : m_code.nodes) {
            if (node.kind == qxRuleNode::FAULT) {
                addFault(node);
            } else if (node.kind == qxRuleNode::CALL && !isTold[node.value] &&
                       m_program.getTarget(node.value).kind == qxRuleTarget::UNKNOWN) {
                isTold[node.value] = 1;
                m_found.push_back(
                    {node.begin, ruleAt(node.begin),
                     qxString::str("not defined: %s", qxPieceOf(m_code.textOf(node), LONGEST_NAME)), false});
            }
        }
    }

    void addFault(const qxRuleNode& node)
    {
        const qxRuleFault& fault = m_code.faults[node.value];
        const unsigned int rule = ruleAt(fault.place == m_code.text.size() ? fault.place - 1 : fault.place);
        const qxRulePlace place = m_code.placeIn(m_code.rules[rule], fault.place);
        m_found.push_back({fault.place, rule,
                           qxString::str(fault.format, nameOf(rule), place.line, place.column,
                                         qxPieceOf(place.rest, LONGEST_REST)),
                           true});
    }

    /// Follows the calls that come before anything is taken; one that leads back to a rule on the way closes a circle.
    void findLeftRecursion()
    {
        struct Visit {
            unsigned int rule;
            std::size_t next;
        };
        const std::vector<std::vector<qxRuleLeftCall>> calls = m_program.findLeftCalls();
        std::vector<unsigned char> state(calls.size(), 0); // 1: on the way, 2: done
        std::vector<Visit> way;
        for (unsigned int root = 0; root < calls.size(); ++root) {
            if (state[root] != 0) continue;
            way.push_back({root, 0});
            state[root] = 1;
            while (!way.empty()) {
                Visit& visit = way.back();
                if (visit.next == calls[visit.rule].size()) {
                    state[visit.rule] = 2;
                    way.pop_back();
                    continue;
                }
                const qxRuleLeftCall call = calls[visit.rule][visit.next++];
                if (state[call.rule] == 1) {
                    const auto start = std::find_if(way.begin(), way.end(),
                                                    [&](const Visit& v) { return v.rule == call.rule; });
                    std::vector<unsigned int> circle;
                    for (auto v = start; v != way.end(); ++v) circle.push_back(v->rule);
                    addCircle(circle, call.node);
                } else if (state[call.rule] == 0) {
                    state[call.rule] = 1;
                    way.push_back({call.rule, 0});
                }
            }
        }
    }

    void addCircle(const std::vector<unsigned int>& circle, unsigned int node)
    {
        qxString text = "left recursion: ";
        for (std::size_t i = 0; i < circle.size() && i < LONGEST_CIRCLE; ++i)
            text += nameOf(circle[i]) + " -> ";
        if (circle.size() > LONGEST_CIRCLE) text += "... -> ";
        const unsigned int place = m_code.nodes[node].begin;
        m_found.push_back({place, ruleAt(place), text + nameOf(circle.front()), false});
    }

    void compareAlternatives(const qxRuleBody& body)
    {
        std::vector<Lead> leads;
        std::vector<unsigned int> places;
        for (unsigned int a = body.first; a != NONE; a = m_code.alternatives[a].next) {
            leads.push_back(leadOf(m_code.alternatives[a]));
            places.push_back(m_code.nodes[m_code.alternatives[a].first].begin);
        }
        for (std::size_t second = 1; second < leads.size(); ++second) {
            for (std::size_t first = 0; first < second && m_compared < MOST_COMPARED; ++first, ++m_compared) {
                if (!canBothMatch(leads[first], leads[second])) continue;
                m_found.push_back(
                    {places[second], body.rule,
                     qxString::str("alternatives %d and %d can both match", first + 1, second + 1), false});
            }
        }
    }

    Lead leadOf(const qxRuleAlternative& alternative) const
    {
        Lead lead;
        unsigned int n = alternative.first;
        while (n != NONE && addTo(lead, m_code.nodes[n])) n = m_code.nodes[n].next;
        if (n != NONE && isStarted(m_code.nodes[n])) n = m_code.nodes[n].next;
        while (n != NONE && m_program.isNullable(m_code.nodes[n])) n = m_code.nodes[n].next;
        lead.isAll = n == NONE && !alternative.holdsFault && !lead.characters.empty();
        return lead;
    }

    /// True for a set that may match on behind what it certainly takes.
    static bool isStarted(const qxRuleNode& node)
    {
        return node.kind == qxRuleNode::SET && node.max > node.min;
    }

    /// Adds what a node certainly takes; false when it is not known exactly what comes behind.
    bool addTo(Lead& lead, const qxRuleNode& node) const
    {
        if (node.kind == qxRuleNode::MARK || node.kind == qxRuleNode::MATCH_MARK) return true;
        if (node.kind == qxRuleNode::LITERAL && !node.isRepeated()) {
            for (const char16_t token : m_code.literals[node.value])
                if (!addTo(lead, qxCharSet::ofCharacter(token))) return false;
            return true;
        }
        if (node.kind != qxRuleNode::SET) return false;
        for (unsigned int i = 0; i < node.min; ++i)
            if (!addTo(lead, m_code.sets[node.value])) return false;
        return node.min == node.max;
    }

    static bool addTo(Lead& lead, const qxCharSet& set)
    {
        if (lead.characters.size() == LONGEST_LEAD) return false;
        lead.characters.push_back(set);
        return true;
    }

    /// True when all that one of the two needs can be what the other begins with.
    static bool canBothMatch(const Lead& a, const Lead& b)
    {
        const std::size_t common = std::min(a.characters.size(), b.characters.size());
        const bool isWhole =
            (a.isAll && a.characters.size() == common) || (b.isAll && b.characters.size() == common);
        if (!isWhole) return false;
        for (std::size_t i = 0; i < common; ++i) {
            if (!a.characters[i].overlaps(b.characters[i])) return false;
        }
        return true;
    }

    const qxRuleCode& m_code;
    const qxRuleProgram& m_program;
    std::vector<Found> m_found;
    unsigned int m_compared = 0;
};

} // namespace

qxArray<qxRuleFinding> qxCheckRules(const qxRuleCode& code, const qxParserFunctions& functions)
{
    const qxRuleProgram program(code, functions);
    const std::vector<Found> found = Checker(code, program).check();
    qxArray<qxRuleFinding> findings(found.size());
    const auto isCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    unsigned int counted = 0; // the place that line and column belong to
    unsigned int line = 1;
    unsigned int column = 1;
    for (std::size_t i = 0; i < found.size(); ++i) {
        std::string_view between = std::string_view(code.text).substr(counted, found[i].place - counted);
        counted = found[i].place;
        if (const std::size_t lineFeed = between.rfind('\n'); lineFeed != std::string_view::npos) {
            line += static_cast<unsigned int>(std::count(between.begin(), between.end(), '\n'));
            column = 1;
            between.remove_prefix(lineFeed + 1);
        }
        column += static_cast<unsigned int>(std::count_if(between.begin(), between.end(), isCharacter));
        findings[i].line = line;
        findings[i].column = column;
        findings[i].rule = qxPieceOf(code.names[code.rules[found[i].rule].name], LONGEST_NAME);
        findings[i].text = found[i].text;
        findings[i].isFault = found[i].isFault;
    }
    return findings;
}

qxArray<qxRuleFinding> qxRuleSet::check(const qxArray<qxString>& functions) const
{
    qxParserFunctions known;
    for (const qxString& name : functions) known[std::string(name.getString(), name.length())] = nullptr;
    return qxCheckRules(*m_code, known);
}
