// SPDX-License-Identifier: see LICENSE

#include "text/qxruleprogram.h"

#include <algorithm>

namespace
{

constexpr unsigned int NONE = qxRuleNode::NONE;
constexpr unsigned int DEEPEST_EXCLUSION = 8; // of those that are matched by recursion
constexpr std::size_t MOST_TABLES = 2048;     // of 256 bytes
constexpr unsigned int MOST_PASSES = 32;      // over rules that depend on each other; real ones need a few

} // namespace

void qxRuleStart::add(const qxRuleStart& other)
{
    for (unsigned int i = 0; i < std::size(bits); ++i) bits[i] |= other.bits[i];
    isAbove |= other.isAbove;
    mustRun |= other.mustRun;
    isImpure |= other.isImpure;
}

void qxRuleStart::add(const qxCharSet& set)
{
    for (unsigned int i = 0; i < std::size(bits); ++i) bits[i] |= set.getBits(i);
    isAbove |= set.hasAbove();
}

qxRuleProgram::qxRuleProgram(const qxRuleCode& code, const qxParserFunctions& functions)
    : m_code(code), m_functions(functions)
{
    for (const std::string_view name : m_code.names) {
        qxRuleTarget target = findSlowly(name);
        const qxTokenParser* const parser =
            target.kind == qxRuleTarget::BUILTIN ? qxFindTokenParser(target.function) : nullptr;
        if (parser && parser->isOne) {
            target.kind = qxRuleTarget::SET;
            target.index = addSet(parser->first);
        }
        m_targets.push_back(target);
    }
    m_main = findSlowly("main");
    for (const qxRuleNode& node : m_code.nodes) m_simple.push_back(isSimpleNode(node));
    m_operations.resize(m_code.nodes.size()); // they know each other by their addresses
    for (unsigned int node = 0; node < m_code.nodes.size(); ++node) m_operations[node] = makeOperation(node);
    m_alternatives.resize(m_code.alternatives.size());
    m_bodies.resize(m_code.bodies.size());
    m_circles.assign(m_code.rules.size(), 0);
    findImpureRules();
    if (findNullableBodies())
        findStarts();
    else
        startAnywhere();
    makeEntrances();
    findLastCalls();
}

qxRuleTarget qxRuleProgram::findSlowly(std::string_view name) const
{
    const auto known = m_code.nameIndex.find(name);
    if (known != m_code.nameIndex.end() && m_code.ruleOfName[known->second] != NONE) {
        qxRuleTarget target;
        target.kind = qxRuleTarget::RULE;
        target.index = m_code.ruleOfName[known->second];
        return target;
    }
    return findFunction(name);
}

qxRuleTarget qxRuleProgram::findFunction(std::string_view name) const
{
    qxRuleTarget target;
    const auto registered = m_functions.find(name);
    const qxTokenParser* parser = nullptr;
    if (registered != m_functions.end()) {
        target.function = registered->second;
        parser = qxFindTokenParser(target.function);
        target.kind = parser ? qxRuleTarget::BUILTIN : qxRuleTarget::OWNER;
    } else if ((parser = qxFindTokenParser(name))) {
        target.function = parser->function;
        target.kind = qxRuleTarget::BUILTIN;
    }
    return target;
}

unsigned int qxRuleProgram::addSet(std::string_view text)
{
    m_sets.push_back(qxCharSet::fromText(text));
    return static_cast<unsigned int>(m_sets.size() - 1);
}

bool qxRuleProgram::isSimpleNode(const qxRuleNode& node) const
{
    switch (node.kind) {
    case qxRuleNode::LITERAL:
    case qxRuleNode::SET:
        return true;
    case qxRuleNode::CALL: {
        const qxRuleTarget::Kind kind = m_targets[node.value].kind;
        return kind == qxRuleTarget::SET || kind == qxRuleTarget::BUILTIN;
    }
    case qxRuleNode::EXCLUSION:
        return node.depth <= DEEPEST_EXCLUSION && isSimpleNode(m_code.nodes[node.value]) &&
               isSimpleNode(m_code.nodes[node.other]);
    default:
        return false;
    }
}

/// The set of an element that matches one character; null for others.
const qxCharSet* qxRuleProgram::setOf(const qxRuleNode& node) const
{
    if (node.kind == qxRuleNode::SET) return &m_code.sets[node.value];
    if (node.kind != qxRuleNode::CALL) return nullptr;
    const qxRuleTarget& target = m_targets[node.value];
    return target.kind == qxRuleTarget::SET ? &m_sets[target.index] : nullptr;
}

qxRuleOperation qxRuleProgram::makeOperation(unsigned int index) const
{
    typedef qxRuleOperation Operation;
    const qxRuleNode& node = m_code.nodes[index];
    Operation operation;
    if (node.next != NONE) operation.next = &m_operations[node.next];
    operation.index = node.value;
    if (const qxCharSet* const set = setOf(node)) {
        operation.kind = node.isRepeated() ? Operation::SETS : Operation::SET;
        operation.data = set;
        operation.isOptional = node.min == 0;
        operation.min = node.min;
        operation.max = node.max;
    } else if (m_simple[index] && (node.kind != qxRuleNode::LITERAL || node.isRepeated())) {
        const bool isBuiltin = node.kind == qxRuleNode::CALL && !node.isRepeated();
        operation.kind = isBuiltin ? Operation::BUILTIN : Operation::SIMPLE;
        if (isBuiltin) operation.function = m_targets[node.value].function;
    } else if (node.kind == qxRuleNode::LITERAL) {
        const std::u16string& literal = m_code.literals[node.value];
        operation.kind = literal.size() == 1 ? Operation::TOKEN : Operation::LITERAL;
        operation.data = &literal;
        if (literal.size() == 1) operation.token = literal.front();
    } else if (node.kind == qxRuleNode::FAULT) {
        operation.kind = Operation::FAULT;
    } else {
        const bool isRule = node.kind == qxRuleNode::CALL && m_targets[node.value].kind == qxRuleTarget::RULE;
        operation.isOptional = node.min == 0 && node.max == 1 && !node.isCounted;
        if (isRule) operation.index = m_code.rules[m_targets[node.value].index].body;
        if (node.kind == qxRuleNode::CALL) operation.function = m_targets[node.value].function;
        if (node.isRepeated() && !(operation.isOptional && (isRule || node.kind == qxRuleNode::GROUP)))
            operation.kind = Operation::REPETITION;
        else if (node.kind == qxRuleNode::CALL)
            operation.kind = isRule ? Operation::RULE : Operation::FUNCTION;
        else if (node.kind == qxRuleNode::GROUP)
            operation.kind = Operation::GROUP;
        else if (node.kind == qxRuleNode::EXCLUSION)
            operation.kind = Operation::EXCLUSION;
        else
            operation.kind = node.kind == qxRuleNode::MARK ? Operation::MARK : Operation::MATCH_MARK;
    }
    return operation;
}

/// A rule is impure when it calls a function of the owner or an unknown one, when it has a fault, and when it calls an
/// impure rule.
void qxRuleProgram::findImpureRules()
{
    std::vector<std::vector<unsigned int>> callers(m_code.rules.size());
    std::vector<unsigned int> impure;
    m_impureRules.assign(m_code.rules.size(), 0);
    const auto mark = [&](unsigned int rule) {
        if (m_impureRules[rule]) return;
        m_impureRules[rule] = 1;
        impure.push_back(rule);
    };
    unsigned int rule = 0;
    for (const qxRuleNode& node : m_code.nodes) { // they stand in the order of the rules
        while (rule + 1 < m_code.rules.size() && node.begin >= m_code.rules[rule + 1].begin) ++rule;
        if (node.kind == qxRuleNode::FAULT) mark(rule);
        if (node.kind != qxRuleNode::CALL) continue;
        const qxRuleTarget& target = m_targets[node.value];
        if (target.kind == qxRuleTarget::RULE) callers[target.index].push_back(rule);
        if (target.kind == qxRuleTarget::OWNER || target.kind == qxRuleTarget::UNKNOWN) mark(rule);
    }
    while (!impure.empty()) {
        const unsigned int called = impure.back();
        impure.pop_back();
        for (const unsigned int caller : callers[called]) mark(caller);
    }
}

/// False when the rules depend on each other through too many others.
bool qxRuleProgram::findNullableBodies()
{
    for (unsigned int pass = 0; pass < MOST_PASSES; ++pass) {
        bool isDone = true;
        for (std::size_t i = 0; i < m_code.bodies.size(); ++i) {
            // Inner bodies come behind outer ones; passes in both directions follow calls either way.
            const std::size_t body = pass % 2 == 0 ? m_code.bodies.size() - 1 - i : i;
            for (unsigned int a = m_code.bodies[body].first; a != NONE; a = m_code.alternatives[a].next) {
                unsigned int node = m_code.alternatives[a].first;
                while (node != NONE && isNullableNow(m_code.nodes[node])) node = m_code.nodes[node].next;
                m_alternatives[a].isNullable = node == NONE;
                if (node != NONE || m_bodies[body].isNullable) continue;
                m_bodies[body].isNullable = true;
                isDone = false;
            }
        }
        if (isDone) return true;
    }
    return false;
}

bool qxRuleProgram::isNullableNow(const qxRuleNode& whole) const
{
    const qxRuleNode* place = &whole;
    while (place->min > 0 && place->kind == qxRuleNode::EXCLUSION) place = &m_code.nodes[place->value];
    const qxRuleNode& node = *place;
    if (node.min == 0) return true;
    switch (node.kind) {
    case qxRuleNode::LITERAL:
        return m_code.literals[node.value].empty();
    case qxRuleNode::SET:
    case qxRuleNode::FAULT:
        return false;
    case qxRuleNode::CALL: {
        const qxRuleTarget& target = m_targets[node.value];
        if (target.kind == qxRuleTarget::RULE) return m_bodies[m_code.rules[target.index].body].isNullable;
        return target.kind == qxRuleTarget::OWNER || target.kind == qxRuleTarget::UNKNOWN;
    }
    case qxRuleNode::GROUP:
        return m_bodies[node.value].isNullable;
    default:
        return true; // marks
    }
}

/// Rules are computed behind those that they may call before they look at a token; where that goes in a circle they
/// must run, and find out.
void qxRuleProgram::findStarts()
{
    const std::vector<std::vector<qxRuleLeftCall>> calls = findLeftCalls();
    struct Visit {
        unsigned int rule;
        unsigned int next;
    };
    std::vector<Visit> visits;
    std::vector<unsigned char> isVisited(calls.size(), 0);
    m_openRules.assign(calls.size(), 1);
    for (unsigned int root = 0; root < calls.size(); ++root) {
        if (isVisited[root]) continue;
        isVisited[root] = 1;
        visits.push_back({root, 0});
        while (!visits.empty()) {
            Visit& visit = visits.back();
            if (visit.next == calls[visit.rule].size()) {
                computeRule(visit.rule);
                m_openRules[visit.rule] = 0;
                visits.pop_back();
            } else if (const unsigned int called = calls[visit.rule][visit.next++].rule; !isVisited[called]) {
                isVisited[called] = 1;
                visits.push_back({called, 0});
            } else if (m_openRules[called]) {
                m_circles[called] = 1;
            }
        }
    }
}

std::vector<std::vector<qxRuleLeftCall>> qxRuleProgram::findLeftCalls() const
{
    std::vector<std::vector<qxRuleLeftCall>> calls(m_code.rules.size());
    for (const qxRuleBody& body : m_code.bodies) {
        for (unsigned int a = body.first; a != NONE; a = m_code.alternatives[a].next) {
            for (unsigned int n = m_code.alternatives[a].first; n != NONE; n = m_code.nodes[n].next) {
                addLeftCalls(n, calls[body.rule]);
                if (!isNullableNow(m_code.nodes[n])) break;
            }
        }
    }
    return calls;
}

void qxRuleProgram::addLeftCalls(unsigned int node, std::vector<qxRuleLeftCall>& calls) const
{
    std::vector<unsigned int> open = {node};
    while (!open.empty()) {
        const unsigned int index = open.back();
        const qxRuleNode& next = m_code.nodes[index];
        open.pop_back();
        if (next.kind == qxRuleNode::EXCLUSION) {
            open.push_back(next.value);
            open.push_back(next.other);
        } else if (next.kind == qxRuleNode::CALL && m_targets[next.value].kind == qxRuleTarget::RULE) {
            calls.push_back({m_targets[next.value].index, index});
        }
    }
}

/// The starts of all bodies of a rule, inner ones first.
void qxRuleProgram::computeRule(unsigned int rule)
{
    const unsigned int first = m_code.rules[rule].body;
    unsigned int body = rule + 1 < m_code.rules.size() ? m_code.rules[rule + 1].body
                                                       : static_cast<unsigned int>(m_code.bodies.size());
    while (body-- > first) {
        for (unsigned int a = m_code.bodies[body].first; a != NONE; a = m_code.alternatives[a].next) {
            computeAlternative(a, m_alternatives[a]);
            m_bodies[body].add(m_alternatives[a]);
        }
    }
}

void qxRuleProgram::computeAlternative(unsigned int alternative, qxRuleStart& start) const
{
    bool isOpen = true;
    start.mustRun = start.isImpure = m_code.alternatives[alternative].holdsFault;
    for (unsigned int n = m_code.alternatives[alternative].first; n != NONE; n = m_code.nodes[n].next) {
        const qxRuleStart next = startOf(m_code.nodes[n]);
        start.isImpure |= next.isImpure;
        if (isOpen) start.add(next);
        isOpen = isOpen && next.isNullable;
    }
}

qxRuleStart qxRuleProgram::startOf(const qxRuleNode& node) const
{
    qxRuleStart start;
    if (node.kind == qxRuleNode::LITERAL && !m_code.literals[node.value].empty()) {
        start.add(qxCharSet::ofCharacter(m_code.literals[node.value][0]));
    } else if (node.kind == qxRuleNode::SET) {
        start.add(m_code.sets[node.value]);
    } else if (node.kind == qxRuleNode::GROUP) {
        start = m_bodies[node.value];
    } else if (node.kind == qxRuleNode::EXCLUSION) {
        // Deliberate: no look into the factors. An exclusion is tried whatever comes.
        start.mustRun = true;
        start.isImpure = !m_simple[static_cast<std::size_t>(&node - m_code.nodes.data())];
    } else if (node.kind == qxRuleNode::CALL) {
        const qxRuleTarget& target = m_targets[node.value];
        if (target.kind == qxRuleTarget::RULE) {
            start = m_bodies[m_code.rules[target.index].body];
            start.mustRun |= m_openRules[target.index] != 0;
            start.isImpure = m_impureRules[target.index] != 0;
        } else if (target.kind == qxRuleTarget::SET) {
            start.add(m_sets[target.index]);
        } else if (target.kind == qxRuleTarget::BUILTIN) {
            start.add(qxCharSet::fromText(qxFindTokenParser(target.function)->first));
        } else {
            start.mustRun = start.isImpure = true;
        }
    }
    start.isNullable = isNullableNow(node);
    return start;
}

/// Nothing is known: everything is tried.
void qxRuleProgram::startAnywhere()
{
    m_circles.assign(m_code.rules.size(), 1);
    for (std::vector<qxRuleStart>* starts : {&m_alternatives, &m_bodies}) {
        for (qxRuleStart& start : *starts) start.mustRun = start.isImpure = true;
    }
}

void qxRuleProgram::makeEntrances()
{
    m_ways.reserve(m_code.alternatives.size()); // so that they stay where they are
    for (unsigned int body = 0; body < m_code.bodies.size(); ++body) {
        qxRuleEntrance entrance;
        entrance.ways = m_ways.data() + m_ways.size();
        entrance.closesCircle = m_circles[m_code.bodies[body].rule] != 0;
        for (unsigned int a = m_code.bodies[body].first; a != NONE; a = m_code.alternatives[a].next)
            m_ways.push_back({a, &m_operations[m_code.alternatives[a].first]});
        const qxRuleStart& start = m_bodies[body];
        entrance.isOnly = m_code.bodies[body].first == m_code.bodies[body].last;
        entrance.isOpen = entrance.isOnly && (start.mustRun || start.isNullable);
        qxRuleChoice choice;
        if (m_tables.size() < MOST_TABLES && makeChoice(body, choice)) {
            m_tables.push_back(choice);
            entrance.choice = &m_tables.back();
        }
        m_entrances.push_back(entrance);
    }
}

/// Marks the calls at the ends of alternatives. Not those of rules that go in circles, which are noticed by their frames,
/// and not where a fault would be met when the alternative fails.
void qxRuleProgram::findLastCalls()
{
    // The elements of an inner body may have become part of an outer one, which stands before it and so has the last word.
    for (std::size_t body = m_code.bodies.size(); body-- > 0;) {
        const bool isCircle = m_circles[m_code.bodies[body].rule] != 0;
        for (unsigned int a = m_code.bodies[body].first; a != NONE; a = m_code.alternatives[a].next) {
            const qxRuleAlternative& alternative = m_code.alternatives[a];
            qxRuleOperation& last = m_operations[alternative.last];
            const bool isCall = last.kind == qxRuleOperation::RULE || last.kind == qxRuleOperation::GROUP;
            last.isLast = isCall && !last.next && !alternative.holdsFault && !isCircle &&
                          !m_circles[m_code.bodies[last.index].rule];
        }
    }
}

/// False for bodies that must look at each alternative, and for those that are open.
bool qxRuleProgram::makeChoice(unsigned int body, qxRuleChoice& choice) const
{
    const qxRuleBody& alternatives = m_code.bodies[body];
    if (m_bodies[body].mustRun || (alternatives.first == alternatives.last && m_bodies[body].isNullable))
        return false;
    std::fill(std::begin(choice.first), std::end(choice.first), qxRuleChoice::NONE);
    unsigned int number = 0;
    for (unsigned int a = alternatives.first; a != NONE; a = m_code.alternatives[a].next, ++number) {
        if (number >= qxRuleChoice::NONE) return false;
        for (unsigned int token = 0; token < qxCharSet::BITS; ++token) {
            if (m_alternatives[a].isSureToFail(static_cast<char16_t>(token))) continue;
            unsigned int first = choice.first[token];
            if (first == qxRuleChoice::NONE)
                first = number;
            else
                first |= m_alternatives[a].isImpure ? qxRuleChoice::MORE | qxRuleChoice::MORE_IMPURE
                                                    : qxRuleChoice::MORE;
            choice.first[token] = static_cast<unsigned char>(first);
        }
    }
    return true;
}

std::shared_ptr<const qxRuleProgram> qxMakeRuleProgram(const qxRefPointer<qxRuleSet>& rules,
                                                       const qxParserFunctions& functions)
{
    struct Owned {
        const qxRefPointer<qxRuleSet> rules;
        const qxRuleProgram program;
        Owned(const qxRefPointer<qxRuleSet>& set, const qxParserFunctions& known)
            : rules(set), program(set->getCode(), known)
        {}
    };
    const auto owned = std::make_shared<const Owned>(rules, functions);
    return std::shared_ptr<const qxRuleProgram>(owned, &owned->program);
}
