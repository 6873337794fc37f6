// SPDX-License-Identifier: see LICENSE

#include "qxcommandline.h"

#include "core/qxascii.h"
#include "qxerror.h"
#include "text/qxcommandparts.h"

#include <algorithm>

namespace
{

std::string stringOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

bool isWordCharacter(char c)
{
    const char lower = qxToLower(c);
    return (lower >= 'a' && lower <= 'z') || qxIsDigit(c) || c == '-' || c == '_';
}

bool isWord(std::string_view text)
{
    return !text.empty() && text[0] != '-' && text[0] != '_' &&
           std::all_of(text.begin(), text.end(), isWordCharacter);
}

bool isOptionName(std::string_view name)
{
    const std::size_t dashes = name.starts_with("--") ? 2 : 1;
    return name.starts_with("-") && isWord(name.substr(dashes)) && (dashes == 2 || name.size() == 2) &&
           !qxIsDigit(name[dashes]); // that would be a number
}

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
    return "'" + stringOf(text.convertCtrlToText()) + (word.size() > LONGEST ? "…'" : "'");
}

} // namespace

std::vector<std::string> qxCommandParts::Option::getChoices() const
{
    std::vector<std::string> choices;
    if (value.find('|') == value.npos) return choices;
    for (std::size_t begin = 0; begin <= value.size();) {
        const std::size_t end = std::min(value.find('|', begin), value.size());
        choices.push_back(value.substr(begin, end - begin));
        begin = end + 1;
    }
    return choices;
}

const qxCommandParts::Option* qxCommandParts::findOption(std::string_view optionName) const
{
    for (const Option* const option : getAllOptions())
        if (option->isNamed(optionName)) return option;
    return nullptr;
}

std::vector<const qxCommandParts::Option*> qxCommandParts::getAllOptions() const
{
    std::vector<const Option*> all;
    for (const qxCommandParts* command = this; command; command = command->parent)
        for (const Option& option : command->options) all.push_back(&option);
    return all;
}

const qxCommandParts* qxCommandParts::findCommand(std::string_view word) const
{
    for (const auto& command : commands)
        if (of(*command).name == word) return &of(*command);
    return nullptr;
}

std::string qxCommandParts::getPath() const
{
    std::string path;
    for (const qxCommandParts* command = this; command->parent; command = command->parent)
        path = command->name + (path.empty() ? "" : " ") + path;
    return path;
}

qxCommand::qxCommand(const qxString& name, const qxString& summary)
    : m_parts(std::make_unique<qxCommandParts>())
{
    m_parts->name = stringOf(name);
    m_parts->summary = stringOf(summary);
    if (!isWord(m_parts->name)) qxExceptionThrows::qxThrowFatal("'%s' is no name of a command", name);
}

qxCommand::~qxCommand() = default;

qxCommand& qxCommand::addCommand(const qxString& name, const qxString& summary)
{
    if (!m_parts->arguments.empty() || m_parts->findCommand(stringOf(name)))
        qxExceptionThrows::qxThrowFatal("The command '%s' cannot be declared here", name);
    std::unique_ptr<qxCommand, qxCommandParts::Deleter> command(new qxCommand(name, summary));
    command->m_parts->parent = m_parts.get();
    m_parts->commands.push_back(std::move(command));
    return *m_parts->commands.back();
}

qxCommand& qxCommand::addOption(const qxString& names, const qxString& value, const qxString& summary)
{
    const std::string both = stringOf(names);
    const std::size_t comma = both.find(", ");
    qxCommandParts::Option option;
    for (const std::string& name :
         {both.substr(0, comma), comma == both.npos ? "" : both.substr(comma + 2)}) {
        if (name.empty() && comma == both.npos && !both.empty()) continue;
        std::string& place = name.starts_with("--") ? option.longName : option.shortName;
        if (!isOptionName(name) || !place.empty() || m_parts->findOption(name))
            qxExceptionThrows::qxThrowFatal("The option '%s' cannot be declared here", names);
        place = name;
    }
    option.value = stringOf(value);
    option.summary = stringOf(summary);
    m_parts->options.push_back(std::move(option));
    return *this;
}

qxCommand& qxCommand::addArgument(const qxString& name, const qxString& summary, qxArgumentNumber number)
{
    const bool isOpen = !m_parts->arguments.empty() && m_parts->arguments.back().number != QX_ARGUMENT_ONE;
    if (isOpen || !m_parts->commands.empty() || name.isEmpty())
        qxExceptionThrows::qxThrowFatal("The argument '%s' cannot be declared here", name);
    m_parts->arguments.push_back({stringOf(name), stringOf(summary), number});
    return *this;
}

qxCommand& qxCommand::setDescription(const qxString& description)
{
    m_parts->description = stringOf(description);
    return *this;
}

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
    bool checkEnd();

    const Given* find(const qxString& name, unsigned int index) const
    {
        for (const Given& one : given)
            if (one.option->isNamed(stringOf(name)) && index-- == 0) return &one;
        return nullptr;
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
        // A negative number is an option to the tokens where it is 0.
        const bool isArgument =
            isEnded || !token.isOption || qxIsDigit(token.text[1]) || token.text[1] == '.';
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
    if (!command->commands.empty()) {
        const qxCommandParts* const next = command->findCommand(word);
        const std::string path = command->getPath();
        if (!next) {
            std::vector<std::string> names;
            for (const auto& one : command->commands) names.push_back(qxCommandParts::of(*one).name);
            return fail("unknown command " + shown(path.empty() ? word : path + " " + word) +
                        suggest(word, names));
        }
        command = next;
        return true;
    }
    const std::vector<qxCommandParts::Argument>& declared = command->arguments;
    if (arguments.size() >= declared.size() && (declared.empty() || !declared.back().isRepeated()))
        return fail("argument " + shown(word) + " is one too many");
    arguments.push_back(word);
    return true;
}

bool qxCommandLineResult::checkEnd()
{
    if (find("--help", 0)) return true;
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
    addOption("-h, --help", "", "shows this help");
    m_result->command = m_parts.get();
}

qxCommandLine::~qxCommandLine() = default;

bool qxCommandLine::parse(const qxArgumentParser& tokens, unsigned int first)
{
    std::vector<qxCommandLineResult::Token> list;
    const auto* option = tokens.getOptions().begin();
    const auto* argument = tokens.getArguments().begin();
    for (unsigned int i = 0; i < tokens.getTokenCount(); ++i) {
        const bool isOption = option != tokens.getOptions().end() && option->position == i;
        const std::string text = isOption ? stringOf(tokens.getOptionPrefix()) + stringOf((option++)->name)
                                          : stringOf((argument++)->text);
        if (i >= first) list.push_back({text, isOption});
    }
    *m_result = {};
    return m_result->read(*m_parts, list);
}

bool qxCommandLine::parse(int count, const char* const* arguments)
{
    return parse(qxArgumentParser(count, arguments, ""), 1);
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
    const unsigned int count = getOptionCount(name);
    return count == 0 ? whenMissing : getOptionValue(name, count - 1);
}

unsigned int qxCommandLine::getOptionCount(const qxString& name) const
{
    unsigned int count = 0;
    for (const qxCommandLineResult::Given& one : m_result->given)
        count += one.option->isNamed(stringOf(name));
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
