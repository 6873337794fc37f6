// SPDX-License-Identifier: see LICENSE

#include "qxcommandline.h"

#include "core/qxascii.h"
#include "text/qxcommandparts.h"

#include <algorithm>

namespace
{

/// Edits that make `left` into `right`: a character less, more, another, or two exchanged; more than `most` count as one
/// more than that.
std::size_t distanceOf(std::string_view left, std::string_view right, std::size_t most)
{
    if (left.size() > right.size() + most || right.size() > left.size() + most) return most + 1;
    std::vector<std::size_t> before(right.size() + 1);
    std::vector<std::size_t> last(right.size() + 1);
    std::vector<std::size_t> now(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j) last[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        now[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            now[j] = std::min(
                {last[j] + 1, now[j - 1] + 1, last[j - 1] + (left[i - 1] != right[j - 1] ? 1U : 0U)});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
                now[j] = std::min(now[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(now);
    }
    return std::min(last[right.size()], most + 1);
}

/// "; did you mean 'x'?" for the nearest of `names`, if one is near enough.
std::string suggest(std::string_view word, const std::vector<std::string>& names)
{
    const std::size_t letters = word.size() - std::min(word.find_first_not_of('-'), word.size());
    std::size_t nearest = std::max<std::size_t>(letters / 3, 1) + 1;
    const std::string* found = nullptr;
    for (const std::string& name : names) {
        const std::size_t distance = distanceOf(word, name, nearest - 1);
        if (distance >= nearest) continue;
        nearest = distance;
        found = &name;
        if (nearest == 0) break;
    }
    return found ? "; did you mean '" + *found + "'?" : std::string();
}

/// The word in quotes, on one line and not too long.
std::string shown(const std::string& word)
{
    constexpr std::size_t LONGEST = 200;
    qxString text(word.data(), std::min(word.size(), LONGEST));
    return "'" + qxCommandParts::bytesOf(text.convertCtrlToText()) + (word.size() > LONGEST ? "…'" : "'");
}

} // namespace

/// What a command line was found to be.
struct qxCommandLineResult {
    struct Given {
        const qxCommandParts::Option* option;
        std::string value;
    };
    struct Token {
        std::string text;
        bool isOption;
    };

    bool fail(const std::string& text)
    {
        error = text;
        return false;
    }
    bool read(const qxCommandParts& program, const std::vector<Token>& tokens);
    bool readOption(const std::vector<Token>& tokens, std::size_t& index);
    bool readArgument(const std::string& word);
    bool readCommand(const std::string& word);
    bool checkEnd();

    const Given* find(const qxString& name, unsigned int index) const
    {
        for (const Given& one : given)
            if (one.option->isNamed(qxCommandParts::bytesOf(name)) && index-- == 0) return &one;
        return nullptr;
    }

    /// The last value, or the standard; null when there is neither.
    const std::string* findValue(const qxString& name) const
    {
        for (auto one = given.rbegin(); one != given.rend(); ++one)
            if (one->option->isNamed(qxCommandParts::bytesOf(name))) return &one->value;
        const qxCommandParts::Option* const option = command->findOption(qxCommandParts::bytesOf(name));
        return option && !option->standard.empty() ? &option->standard : nullptr;
    }

    const qxCommandParts* command = nullptr;
    std::vector<Given> given;
    std::vector<std::string> arguments;
    std::string error;
};

bool qxCommandLineResult::read(const qxCommandParts& program, const std::vector<Token>& tokens)
{
    command = &program;
    bool isEnded = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        // A negative number is an option to the tokens where it is 0, and here where it is declared as one.
        const bool isDigit = token.text.size() == 2 && token.text[0] == '-' && qxIsDigit(token.text[1]);
        const bool isDeclared = !isEnded && isDigit && command->findOption(token.text);
        const bool isArgument =
            !isDeclared && (isEnded || !token.isOption || qxIsDigit(token.text[1]) || token.text[1] == '.');
        if (!isArgument && token.text == "--")
            isEnded = true;
        else if (!(isArgument ? readArgument(token.text) : readOption(tokens, i)))
            return false;
    }
    return checkEnd();
}

bool qxCommandLineResult::readOption(const std::vector<Token>& tokens, std::size_t& index)
{
    const std::string& word = tokens[index].text;
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const qxCommandParts::Option* const option = command->findOption(name);
    if (!option) {
        std::vector<std::string> names;
        for (const qxCommandParts::Option* const one : command->getAllOptions())
            for (const std::string& known : {one->shortName, one->longName})
                if (known.size() > 2) names.push_back(known);
        return fail("unknown option " + shown(name) + suggest(name, names));
    }
    std::string value;
    if (equals != word.npos) {
        if (option->value.empty()) return fail("option '" + name + "' takes no value");
        value = word.substr(equals + 1);
    } else if (!option->value.empty()) {
        if (++index == tokens.size()) return fail("option '" + name + "' needs a value");
        value = tokens[index].text;
    }
    const std::vector<std::string> choices = option->getChoices();
    if (!choices.empty() && std::find(choices.begin(), choices.end(), value) == choices.end())
        return fail("option '" + name + "' takes " + option->value + ", not " + shown(value) +
                    suggest(value, choices));
    given.push_back({option, value});
    return true;
}

bool qxCommandLineResult::readArgument(const std::string& word)
{
    if (!command->commands.empty()) return readCommand(word);
    const std::vector<qxCommandParts::Argument>& declared = command->arguments;
    if (arguments.size() >= declared.size() && (declared.empty() || !declared.back().isRepeated()))
        return fail("argument " + shown(word) + " is one too many");
    arguments.push_back(word);
    return true;
}

bool qxCommandLineResult::readCommand(const std::string& word)
{
    if (const qxCommandParts* const next = command->findCommand(word)) {
        command = next;
        return true;
    }
    if (word == "help") {
        given.push_back({command->findOption("--help"), ""});
        return true;
    }
    const std::string path = command->getPath();
    std::vector<std::string> names = {"help"};
    for (const auto& one : command->commands) names.push_back(qxCommandParts::of(*one).name);
    std::string hint = suggest(word, names);
    for (const auto& one : command->commands) { // the name of a group was left out
        const qxCommandParts* const beneath = qxCommandParts::of(*one).findCommand(word);
        if (beneath && hint.empty()) hint = "; did you mean '" + beneath->getPath() + "'?";
    }
    return fail("unknown command " + shown(path.empty() ? word : path + " " + word) + hint);
}

bool qxCommandLineResult::checkEnd()
{
    for (const Given& one : given)
        if (one.option->isQuestion) return true;
    const std::string path = command->getPath();
    if (!command->commands.empty())
        return fail(path.empty() ? "a command is missing" : "a command is missing behind '" + path + "'");
    const std::vector<qxCommandParts::Argument>& declared = command->arguments;
    if (arguments.size() < declared.size() && declared[arguments.size()].isNeeded())
        return fail((path.empty() ? "" : path + ": ") + declared[arguments.size()].name + " is missing");
    return true;
}

qxCommandLine::qxCommandLine(const qxString& name, const qxString& summary)
    : qxCommand(name, summary), m_result(std::make_unique<qxCommandLineResult>())
{
    qxCommandParts::Option help;
    help.summary = "shows this help";
    help.isQuestion = true;
    m_parts->add(help, "-h, --help");
    m_result->command = m_parts.get();
}

qxCommandLine::~qxCommandLine() = default;

namespace
{

typedef std::vector<qxCommandLineResult::Token> Tokens;

Tokens tokensOf(const qxArgumentParser& tokens)
{
    Tokens list;
    const auto* option = tokens.getOptions().begin();
    const auto* argument = tokens.getArguments().begin();
    for (unsigned int i = 0; i < tokens.getTokenCount(); ++i) {
        const bool isOption = option != tokens.getOptions().end() && option->position == i;
        const std::string text = isOption ? qxCommandParts::bytesOf(tokens.getOptionPrefix()) +
                                                qxCommandParts::bytesOf((option++)->name)
                                          : qxCommandParts::bytesOf((argument++)->text);
        list.push_back({text, isOption});
    }
    return list;
}

} // namespace

bool qxCommandLine::parse(const qxArgumentParser& tokens, unsigned int first)
{
    Tokens list = tokensOf(tokens);
    list.erase(list.begin(), list.begin() + std::min<std::ptrdiff_t>(first, std::ssize(list)));
    *m_result = {};
    return m_result->read(*m_parts, list);
}

bool qxCommandLine::parse(int count, const char* const* arguments)
{
    // A token has the length of a string at most: of a longer word its beginning tells what it is.
    std::vector<std::string> words(arguments + std::min(count, 1), arguments + count);
    std::vector<std::string> beginnings;
    std::vector<const char*> heads;
    for (const std::string& word : words) beginnings.push_back(word.substr(0, qxString::MAX_LENGTH));
    for (const std::string& beginning : beginnings) heads.push_back(beginning.c_str());
    Tokens list = tokensOf(qxArgumentParser(static_cast<int>(heads.size()), heads.data(), ""));
    for (std::size_t i = 0; i < list.size(); ++i) list[i].text = std::move(words[i]);
    *m_result = {};
    return m_result->read(*m_parts, list);
}

bool qxCommandLine::parse(int count, const wchar_t* const* arguments)
{
    return parse(qxArgumentParser(count, arguments, ""), 1);
}

qxString qxCommandLine::getError() const
{
    return {m_result->error.data(), m_result->error.size()};
}

qxString qxCommandLine::getCommand() const
{
    return m_result->command->getPath().c_str();
}

qxString qxCommandLine::getOption(const qxString& name, const qxString& whenMissing) const
{
    const std::string* const value = m_result->findValue(name);
    return value ? qxString(value->data(), value->size()) : whenMissing;
}

const char* qxCommandLine::getOptionText(const qxString& name, const char* whenMissing) const
{
    const std::string* const value = m_result->findValue(name);
    return value ? value->c_str() : whenMissing;
}

unsigned int qxCommandLine::getOptionCount(const qxString& name) const
{
    unsigned int count = 0;
    for (const qxCommandLineResult::Given& one : m_result->given)
        count += one.option->isNamed(qxCommandParts::bytesOf(name));
    return count;
}

qxString qxCommandLine::getOptionValue(const qxString& name, unsigned int index) const
{
    const qxCommandLineResult::Given* const given = m_result->find(name, index);
    return given ? qxString(given->value.data(), given->value.size()) : qxString();
}

unsigned int qxCommandLine::getArgumentCount() const
{
    return static_cast<unsigned int>(m_result->arguments.size());
}

qxString qxCommandLine::getArgument(unsigned int index) const
{
    if (index >= m_result->arguments.size()) return {};
    const std::string& argument = m_result->arguments[index];
    return {argument.data(), argument.size()};
}

const char* qxCommandLine::getArgumentText(unsigned int index) const
{
    return index < m_result->arguments.size() ? m_result->arguments[index].c_str() : "";
}
