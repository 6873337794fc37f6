// SPDX-License-Identifier: see LICENSE

#include "core/qxascii.h"
#include "qxerror.h"
#include "text/qxcommandparts.h"

#include <algorithm>

namespace
{

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
    return name.starts_with("-") && isWord(name.substr(dashes)) &&
           (dashes == 2 ? !qxIsDigit(name[dashes]) : name.size() == 2);
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
        for (const Option& option : command->options)
            if (command == this || option.isInherited) all.push_back(&option);
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
    m_parts->name = qxCommandParts::bytesOf(name);
    m_parts->summary = qxCommandParts::bytesOf(summary);
    if (!isWord(m_parts->name)) qxExceptionThrows::qxThrowFatal("'%s' is no name of a command", name);
}

qxCommand::~qxCommand() = default;

qxCommand& qxCommand::addCommand(const qxString& name, const qxString& summary)
{
    const std::string path = qxCommandParts::bytesOf(name);
    if (const std::size_t blank = path.find(' '); blank != path.npos) {
        for (const auto& one : m_parts->commands) {
            if (one->m_parts->name == path.substr(0, blank))
                return one->addCommand(path.substr(blank + 1).c_str(), summary);
        }
    }
    if (!m_parts->arguments.empty() || m_parts->findCommand(path))
        qxExceptionThrows::qxThrowFatal("The command '%s' cannot be declared here", name);
    std::unique_ptr<qxCommand, qxCommandParts::Deleter> command(new qxCommand(name, summary));
    command->m_parts->parent = m_parts.get();
    command->m_parts->heading = m_parts->nextHeading;
    m_parts->commands.push_back(std::move(command));
    return *m_parts->commands.back();
}

qxCommand& qxCommand::addHeading(const qxString& heading)
{
    m_parts->nextHeading = qxCommandParts::bytesOf(heading);
    return *this;
}

void qxCommandParts::add(const Option& option, const qxString& names)
{
    const std::string both = qxCommandParts::bytesOf(names);
    const std::size_t comma = both.find(", ");
    options.push_back(option);
    Option& added = options.back();
    for (const std::string& word :
         {both.substr(0, comma), comma == both.npos ? "" : both.substr(comma + 2)}) {
        if (word.empty() && comma == both.npos && !both.empty()) continue;
        std::string& place = word.starts_with("--") ? added.longName : added.shortName;
        const bool isGood = isOptionName(word) && place.empty() && !findOption(word);
        if (!isGood) {
            options.pop_back();
            qxExceptionThrows::qxThrowFatal("The option '%s' cannot be declared here", names);
        }
        place = word;
    }
}

qxCommand& qxCommand::addOption(const qxString& names, const qxString& value, const qxString& summary,
                                const qxString& standard)
{
    qxCommandParts::Option option;
    option.value = qxCommandParts::bytesOf(value);
    option.summary = qxCommandParts::bytesOf(summary);
    option.standard = qxCommandParts::bytesOf(standard);
    const std::vector<std::string> choices = option.getChoices();
    const bool isChoice =
        choices.empty() || std::find(choices.begin(), choices.end(), option.standard) != choices.end();
    if (!option.standard.empty() && (option.value.empty() || !isChoice))
        qxExceptionThrows::qxThrowFatal("The option '%s' cannot have the value '%s'", names, standard);
    m_parts->add(option, names);
    return *this;
}

qxCommand& qxCommand::addQuestion(const qxString& names, const qxString& value, const qxString& summary)
{
    qxCommandParts::Option option;
    option.value = qxCommandParts::bytesOf(value);
    option.summary = qxCommandParts::bytesOf(summary);
    option.isQuestion = true;
    option.isInherited = false;
    m_parts->add(option, names);
    return *this;
}

qxCommand& qxCommand::addArgument(const qxString& name, const qxString& summary, qxArgumentNumber number)
{
    const qxCommandParts::Argument argument = {qxCommandParts::bytesOf(name),
                                               qxCommandParts::bytesOf(summary), number};
    const auto isEnd = [&](const qxCommandParts::Argument& last) {
        return last.isRepeated() || (!last.isNeeded() && argument.isNeeded());
    };
    const bool isBehind = !m_parts->arguments.empty() && isEnd(m_parts->arguments.back());
    if (isBehind || !m_parts->commands.empty() || name.isEmpty())
        qxExceptionThrows::qxThrowFatal("The argument '%s' cannot be declared here", name);
    m_parts->arguments.push_back(argument);
    return *this;
}

qxCommand& qxCommand::setDescription(const qxString& description)
{
    m_parts->description = qxCommandParts::bytesOf(description);
    return *this;
}

qxCommand& qxCommand::setFooter(const qxString& footer)
{
    m_parts->footer = qxCommandParts::bytesOf(footer);
    return *this;
}
