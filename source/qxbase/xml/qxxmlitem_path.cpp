// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmltree.h"

#include <unordered_set>
#include <vector>

namespace
{

constexpr unsigned int DIGITS = 9; // of an index: no tree has more items of one parent

// One step of a path.
struct Step {
    enum Direction { DOWN, UP };
    enum Pick { EVERY, NUMBER, LAST, EXPRESSION };

    bool matches(const qxXmlItem& item)
    {
        const qxSharedName* const shared = qxXmlTree::getSharedName(item);
        if (shared == like && shared) return true;
        if (shared == unlike && shared) return false;
        const bool isLike = qxXmlTree::getName(item) == name;
        (isLike ? like : unlike) = shared;
        return isLike;
    }

    Direction direction = DOWN;
    bool isDeep = false; // at any depth below
    std::string_view name;
    Pick pick = EVERY;
    unsigned int number = 0;
    qxString nameText; // both for EXPRESSION
    qxString expression;

    // Items share their names: the two met last spare most comparisons of text.
    const qxSharedName* like = nullptr;
    const qxSharedName* unlike = nullptr;
};

// Splits a path into its steps.
class PathParser
{
public:
    explicit PathParser(std::string_view path) : m_rest(path) {}

    /// False when the path is malformed.
    bool parse(std::vector<Step>& steps)
    {
        bool isDeep = false;
        while (!m_rest.empty()) {
            std::size_t slashes = 0;
            while (slashes < m_rest.size() && m_rest[slashes] == '/') ++slashes;
            m_rest.remove_prefix(slashes);
            isDeep |= slashes > 1;
            if (m_rest.empty()) break;

            Step step;
            if (!parseStep(step)) return false;
            if (step.name == ".") continue; // what was any depth below stays so for the next step
            if (step.name == "..") step.direction = Step::UP;
            step.isDeep = isDeep && step.direction == Step::DOWN;
            isDeep = false;
            steps.push_back(std::move(step));
        }
        return true;
    }

private:
    bool parseStep(Step& step)
    {
        step.name = take(m_rest.find_first_of("/["));
        if (m_rest.empty() || m_rest.front() == '/') return true;

        m_rest.remove_prefix(1);
        std::string_view index = take(findBracketEnd());
        if (m_rest.empty() || step.name.empty() || step.name == "." || step.name == "..") return false;
        m_rest.remove_prefix(1);
        if (!m_rest.empty() && m_rest.front() != '/') return false;
        while (!index.empty() && index.front() == ' ') index.remove_prefix(1);
        while (!index.empty() && index.back() == ' ') index.remove_suffix(1);
        return parseIndex(step, index);
    }

    static bool parseIndex(Step& step, std::string_view index)
    {
        if (index == "last()") {
            step.pick = Step::LAST;
            return true;
        }
        if (!index.empty() && index.find_first_not_of("0123456789") == std::string_view::npos) {
            step.pick = Step::NUMBER;
            index.remove_prefix(std::min(index.find_first_not_of('0'), index.size()));
            if (index.empty() || index.size() > DIGITS) return false; // 0, or more than there can be
            for (const char digit : index)
                step.number = step.number * 10 + static_cast<unsigned int>(digit - '0');
            return true;
        }
        step.pick = Step::EXPRESSION;
        step.nameText = qxString(step.name.data(), step.name.size());
        step.expression = qxString(index.data(), index.size());
        return true;
    }

    /// The place of the "]" that closes the bracket just opened: one inside a quoted value does not.
    std::size_t findBracketEnd() const
    {
        const std::size_t equals = m_rest.find_first_of("=]");
        if (equals == std::string_view::npos || m_rest[equals] == ']') return equals;
        const std::size_t value = m_rest.find_first_not_of(' ', equals + 1);
        if (value == std::string_view::npos) return value;
        if (m_rest[value] != '"' && m_rest[value] != '\'') return m_rest.find(']', value);
        const std::size_t quote = m_rest.find(m_rest[value], value + 1);
        return quote == std::string_view::npos ? quote : m_rest.find(']', quote);
    }

    std::string_view take(std::size_t count)
    {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view m_rest;
};

// The items that one step leads to from one item, in document order.
class Candidates
{
public:
    Candidates(Step& step, qxXmlItem& from) : m_step(&step), m_from(&from), m_at(nullptr), m_isBare(false) {}

    /// Null at the end.
    qxXmlItem* next()
    {
        if (m_step->direction == Step::UP) {
            qxXmlItem* const parent = m_at ? nullptr : m_from->getParent();
            m_at = m_from;
            return parent;
        }
        while (advance()) {
            if (isPicked()) return m_at;
        }
        return nullptr;
    }

    /// Leaves out what is beneath the item given last.
    void skipBeneath() { m_isBare = true; }

    qxXmlItem* getItem() const { return m_at; }

    /// One item further, whether it is picked or not.
    bool advance()
    {
        qxXmlItem* next = m_at ? nullptr : m_from->getFirstChild();
        if (!m_at || (m_step->isDeep && !m_isBare && m_at->getFirstChild())) {
            if (m_at) next = m_at->getFirstChild();
            if (next) enter(*next);
        } else {
            next = m_at->getNextSibling();
            for (qxXmlItem* above = m_at; !next && m_step->isDeep; next = above->getNextSibling()) {
                above = above->getParent();
                if (above == m_from) break;
                leave();
            }
        }
        m_isBare = false;
        if (next) m_at = next;
        return next != nullptr;
    }

    bool isPicked()
    {
        if (!m_step->matches(*m_at)) return false;
        switch (m_step->pick) {
        case Step::EVERY:
            return true;
        case Step::NUMBER:
            return ++m_levels.back().seen == m_step->number;
        case Step::LAST:
            return m_levels.back().last == m_at;
        case Step::EXPRESSION:
            return m_at->indexEvalExpression(m_step->nameText, m_step->expression);
        }
        return false;
    }

private:
    // What an index needs to know of one list of children.
    struct Level {
        unsigned int seen;
        const qxXmlItem* last;
    };

    bool usesLevels() const { return m_step->pick == Step::NUMBER || m_step->pick == Step::LAST; }

    void enter(qxXmlItem& first)
    {
        if (!usesLevels()) return;
        Level level = {0, nullptr};
        if (m_step->pick == Step::LAST) {
            for (qxXmlItem* child = &first; child; child = child->getNextSibling()) {
                if (m_step->matches(*child)) level.last = child;
            }
        }
        m_levels.push_back(level);
    }

    void leave()
    {
        if (usesLevels()) m_levels.pop_back();
    }

    Step* m_step;
    qxXmlItem* m_from;
    qxXmlItem* m_at;
    bool m_isBare;
    std::vector<Level> m_levels;
};

// Follows a path from one item. Candidates are tried depth first, with a stack of its own.
//
// A path that goes up, or more than once to any depth, comes to the same item on several ways. What was tried
// there once need not be tried again, and must not: the time would grow with a power of the size of the document.
class PathSearch
{
public:
    explicit PathSearch(std::string_view path) { m_isValid = PathParser(path).parse(m_steps); }

    void start(qxXmlItem& item, bool fromTop)
    {
        if (!m_isValid) return;
        qxXmlItem* from = &item;
        while (fromTop && from->getParent()) from = from->getParent();
        if (m_steps.empty()) {
            m_whole = from;
            return;
        }
        unsigned int deep = 0;
        for (const Step& step : m_steps) {
            if (step.direction == Step::UP) m_isRepeating = true;
            if (step.isDeep) ++deep;
        }
        m_isRepeating |= deep > 1;
        m_tried.resize(m_isRepeating ? m_steps.size() + 1 : 0);
        m_walked.resize(m_tried.size());
        m_stack.emplace_back(m_steps.front(), *from);
    }

    /// The next item that the path leads to, null at the end.
    qxXmlItem* next()
    {
        if (m_whole) return std::exchange(m_whole, nullptr);
        while (!m_stack.empty()) {
            qxXmlItem* const item = nextCandidate();
            if (!item) {
                m_stack.pop_back();
                continue;
            }
            if (m_isRepeating && !m_tried[m_stack.size()].insert(item).second) continue;
            if (m_stack.size() == m_steps.size()) return item;
            m_stack.emplace_back(m_steps[m_stack.size()], *item);
        }
        return nullptr;
    }

private:
    qxXmlItem* nextCandidate()
    {
        Candidates& candidates = m_stack.back();
        if (!m_isRepeating || !m_steps[m_stack.size() - 1].isDeep) return candidates.next();
        while (candidates.advance()) {
            const bool isPicked = candidates.isPicked();
            const bool isNew = m_walked[m_stack.size()].insert(candidates.getItem()).second;
            if (!isNew) candidates.skipBeneath();
            if (isPicked && isNew) return candidates.getItem();
        }
        return nullptr;
    }

    std::vector<Step> m_steps;
    std::vector<Candidates> m_stack; // one for each step that is being tried
    bool m_isValid;
    bool m_isRepeating = false;
    qxXmlItem* m_whole = nullptr;                               // the answer to a path without steps
    std::vector<std::unordered_set<const qxXmlItem*>> m_tried;  // by step, when m_isRepeating
    std::vector<std::unordered_set<const qxXmlItem*>> m_walked; // by step to any depth
};

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

} // namespace

bool qxXmlItem::addItem(const qxString& path, qxXmlItem* item)
{
    qxXmlItem* const parent = findItem(path);
    return parent && parent->addChild(item);
}

qxXmlItem* qxXmlItem::findItem(const qxString& path)
{
    PathSearch search(view(path));
    search.start(*this, path.isFirst('/'));
    return search.next();
}

qxRefList<qxXmlItem> qxXmlItem::findItems(const qxString& path)
{
    qxRefList<qxXmlItem> found;
    PathSearch search(view(path));
    search.start(*this, path.isFirst('/'));
    while (qxXmlItem* const item = search.next()) found.insert(item);
    return found;
}

bool qxXmlItem::indexEvalExpression(const qxString&, const qxString&)
{
    return false;
}
